// The IK tool's properties panel and the factory that makes it in each tool properties dock.
//
// The panel holds no settings of its own: it shows IKToolSettings and the joint attributes of the
// selected joints, and turns each gesture into a settings call or into undoable attribute
// commands. One refresh rebuilds the state of every widget from those sources; it changes widgets
// with their signals blocked, so a refresh never comes back into valueChanged().
//
// The widgets come from the form "/ikToolProperties.ui" of the resource folder and are found by
// object name. A form that lacks one of them leaves the panel unconnected: a message on standard
// error, and every entry point then does nothing.
#pragma once

#include "host/HostAPI.h"

#include <memory>

class IKToolPanel : public TP_ToolPropertiesPanel {
    Q_OBJECT
public:
    IKToolPanel(TP_ToolPropertiesReceiver *receiver, QString resourceFolder);
    ~IKToolPanel() override;

    // True once load() found every widget of the form.
    bool isComplete() const;

public slots:
    void settingsChanged();                       // refreshes
    void modeChanged();                           // the mode buttons and the extraction filters
    void onSelectionChanged();                    // refreshes
    void valueChanged();                          // every other gesture, by its sender
    void onShowHideJointProperties(bool shown);   // the joint properties container

protected:
    void load_internal() override;
    void refresh_internal() override;

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

class IKToolPanelFactory : public TP_ToolPropertiesPanelFactory {
public:
    explicit IKToolPanelFactory(QString resourceFolder);

    // Makes the panel, loads it and ties it to the IK tool in `receiver`.
    void create(TP_ToolPropertiesReceiver *receiver) override;

private:
    QString resourceFolder_;
};
