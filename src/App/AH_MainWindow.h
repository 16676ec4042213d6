// The window of animhost: the camera view in the middle, the node list on the left, the tool
// properties dock on the right, the timeline below (AH_Timeline), a tool bar of the registered
// tools, and the menus and toolbars that plug-ins merge in (their entries trigger actions through
// AC_Manager and take their enabled and checked marks from the actions' validate twins).
//
// The View menu and the +/- keys zoom the view (VW_View's camera), the status bar shows the zoom.
// Keys that neither the view's tool nor a widget takes go to the actions' shortcuts, then to the
// timeline's frame keys (AH_Workspace::stepFrameForKey), then to the zoom keys. Closing, opening
// or starting a new scene with unsaved changes asks Save, Discard or Cancel; the recent files are
// kept in the preferences.
#pragma once

#include <QMainWindow>

#include <memory>

class AH_Host;
class AH_Workspace;
class TP_ToolPropertiesReceiver;

class AH_MainWindow : public QMainWindow {
    Q_OBJECT
public:
    AH_MainWindow(AH_Workspace &workspace, AH_Host &host, QWidget *parent = nullptr);
    ~AH_MainWindow() override;

    // The tool properties dock's content.
    TP_ToolPropertiesReceiver *toolProperties() const;
    // Shows a failure to the user.
    void reportError(QString const &title, QString const &message);
    // With unsaved changes, asks whether to save them first: true to go on (saved, or discarded),
    // false when the user cancels or the save failed.
    bool maybeSave();
    // Opens a scene after maybeSave(); a failure is reported. True when the scene opened.
    bool openScene(QString const &path);
    // The scenes opened or saved last, newest first (absolute paths, at most eight).
    QStringList recentFiles() const;

protected:
    void closeEvent(QCloseEvent *event) override;
    // Keys that neither the view's tool nor a widget used go to the shortcuts of the actions.
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void onOpen();
    bool onSave();
    bool onSaveAs();
    void onFillRecentMenu();
    void onCameraChanged();
    void onPreferences();
    void onSessionChanged();
    void onDocumentChanged();
    void onSelectionChanged();
    void onFrameChanged();
    void onNodeListSelectionChanged();
    void onToolChanged();
    void onValidateActions();
    void onPluginMenusChanged();
    void onPluginToolbarsChanged();

private:
    void rememberFile(QString const &path);
    // Zooms the view by `factor`, about the pointer when it is over the view and `aboutPointer`
    // is asked, else about the view's centre.
    void zoomBy(double factor, bool aboutPointer);

    struct Impl;
    std::unique_ptr<Impl> d_;
};
