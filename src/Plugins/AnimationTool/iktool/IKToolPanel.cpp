#include "iktool/IKToolPanel.h"

#include "iktool/IKTool.h"

IKToolPanel::IKToolPanel(TP_ToolPropertiesReceiver *receiver, QString resourceFolder)
    : TP_ToolPropertiesPanel(receiver), resourceFolder_(std::move(resourceFolder))
{
}

IKToolPanel::~IKToolPanel() = default;

void IKToolPanel::load_internal()
{
    createContentWidget(resourceFolder_ + QStringLiteral("/ikToolProperties.ui"));
}

IKToolPanelFactory::IKToolPanelFactory(QString resourceFolder) : resourceFolder_(std::move(resourceFolder)) {}

void IKToolPanelFactory::create(TP_ToolPropertiesReceiver *receiver)
{
    auto *panel = new IKToolPanel(receiver, resourceFolder_);  // the receiver takes it
    panel->load();
    registerPanelForTool(receiver, IKTool::Id, panel);
    addPanelInPlaceholder(receiver, panel);
}
