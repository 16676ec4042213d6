// Tool properties panels: the widgets that show and edit a tool's settings in the application's
// tool properties dock.
//
// A receiver is the place where panels live (the dock's content): it holds one panel per tool and
// shows the panel of the current tool. Panel factories are registered once, usually by a plug-in;
// each factory is called for every receiver, those that exist when it is added and those made
// later, and makes its panel there (registerPanelForTool, addPanelInPlaceholder).
//
// A panel builds its widgets once, in load(), usually from a ".ui" file (createContentWidget), and
// refreshes them in refresh_internal() whenever it is shown or updateStatus() is called while it
// is visible.
#pragma once

#include "tool/CX_Context.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>

class QStackedWidget;
class TP_ToolPropertiesReceiver;

class TP_ToolPropertiesPanel : public QObject {
    Q_OBJECT
public:
    explicit TP_ToolPropertiesPanel(TP_ToolPropertiesReceiver *receiver);
    ~TP_ToolPropertiesPanel() override;

    // Builds the widgets on the first call (load_internal); later calls do nothing.
    void load();
    bool isLoaded() const { return loaded_; }

    // Builds the widget tree of a ".ui" file as this panel's content and gives it; null, with a
    // message naming the file on standard error, when the file cannot be read. A second call
    // replaces the content.
    QWidget *createContentWidget(QString const &uiFile);
    // The content built by createContentWidget; null before. The receiver shows it.
    QWidget *contentWidget() const;
    TP_ToolPropertiesReceiver *receiver() const { return receiver_; }

    // Called by the receiver when the panel becomes the visible one: refreshes it.
    virtual void show();
    // Refreshes the panel if it is the visible one.
    virtual void updateStatus();
    bool isShown() const;

protected:
    // Builds the widgets; called once by load().
    virtual void load_internal();
    // Brings the widgets up to date.
    virtual void refresh_internal();
    // True for a panel that wants updateStatus on every selection change.
    virtual bool monitorSelectionChange();

private:
    friend class TP_ToolPropertiesReceiver;
    TP_ToolPropertiesReceiver *receiver_;
    QPointer<QWidget> content_;  // owned by the receiver's widget tree
    bool loaded_ = false;
};

class TP_ToolPropertiesReceiver : public QWidget {
    Q_OBJECT
public:
    explicit TP_ToolPropertiesReceiver(QWidget *parent = nullptr);
    ~TP_ToolPropertiesReceiver() override;

    // The panel of a tool, or null.
    TP_ToolPropertiesPanel *panelForTool(CX_ToolIds::ID tool) const;
    // Shows the panel of `tool` (an empty page when it has none) and refreshes it.
    void setCurrentTool(CX_ToolIds::ID tool);
    CX_ToolIds::ID currentTool() const;
    // The panel shown now, or null.
    TP_ToolPropertiesPanel *currentPanel() const;

    // Called on every selection change: refreshes the current panel if it asks for it.
    void selectionChanged();
    // Refreshes the current panel, if any.
    void updateStatus();

private:
    friend class TP_ToolPropertiesPanelFactory;
    void registerPanel(CX_ToolIds::ID tool, TP_ToolPropertiesPanel *panel);
    void placePanel(TP_ToolPropertiesPanel *panel);

    struct Impl;
    std::unique_ptr<Impl> d_;
};

class TP_ToolPropertiesPanelFactory {
public:
    virtual ~TP_ToolPropertiesPanelFactory();

    // Makes this factory's panel in `receiver`.
    virtual void create(TP_ToolPropertiesReceiver *receiver) = 0;

    // Keeps the factory (taking ownership) and calls it for every receiver that exists now; later
    // receivers call it when they are made. A null factory is ignored.
    static void addPanelFactory(std::unique_ptr<TP_ToolPropertiesPanelFactory> factory);
    // Ties `panel` to `tool` in `receiver`, which takes ownership of it. A second panel for the
    // same tool replaces the first. Null arguments are ignored.
    static void registerPanelForTool(TP_ToolPropertiesReceiver *receiver, CX_ToolIds::ID tool, TP_ToolPropertiesPanel *panel);
    // Puts the panel's content in the receiver's place for panels (it stays hidden until its tool
    // is current).
    static void addPanelInPlaceholder(TP_ToolPropertiesReceiver *receiver, TP_ToolPropertiesPanel *panel);
    // Forgets every factory. For the end of the application, before plug-ins are unloaded.
    static void clearPanelFactories();
    static int panelFactoryCount();
};
