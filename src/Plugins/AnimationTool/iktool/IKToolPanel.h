// The IK tool's properties panel and the factory that makes it in each tool properties dock.
//
// The panel is built from the form "/ikToolProperties.ui" of the resource folder.
#pragma once

#include "host/HostAPI.h"

class IKToolPanel : public TP_ToolPropertiesPanel {
    Q_OBJECT
public:
    IKToolPanel(TP_ToolPropertiesReceiver *receiver, QString resourceFolder);
    ~IKToolPanel() override;

protected:
    void load_internal() override;

private:
    QString resourceFolder_;
};

class IKToolPanelFactory : public TP_ToolPropertiesPanelFactory {
public:
    explicit IKToolPanelFactory(QString resourceFolder);

    // Makes the panel, loads it and ties it to the IK tool in `receiver`.
    void create(TP_ToolPropertiesReceiver *receiver) override;

private:
    QString resourceFolder_;
};
