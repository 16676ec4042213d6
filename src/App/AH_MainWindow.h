// The window of animhost: the camera view in the middle, the node list on the left, the tool
// properties dock on the right, the timeline below, a tool bar of the registered tools, and the
// menus and toolbars that plug-ins merge in (their entries trigger actions through AC_Manager and
// take their enabled and checked marks from the actions' validate twins).
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

protected:
    void closeEvent(QCloseEvent *event) override;
    // Keys that neither the view's tool nor a widget used go to the shortcuts of the actions.
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void onOpen();
    void onSave();
    void onSaveAs();
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
    struct Impl;
    std::unique_ptr<Impl> d_;
};
