// The TurnTool plug-in's entry points. animhost opens libTurnTool.so (its preferences are loaded
// and its services set up by then), calls PLUG_Init and PLUG_Polish, and PLUG_Unpolish before it
// quits. This plug-in only registers its tool.
#include "TurnTool.h"

#define TURNTOOL_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

CX_ToolIds::ID turnToolId = CX_ToolIds::None;  // None while the tool is not registered

} // namespace

TURNTOOL_EXPORT void PLUG_Init()
{
    TO_ToolFactory::ToolDescriptor descriptor;
    descriptor.label = QStringLiteral("Turn");
    descriptor.name = QStringLiteral("TurnTool");  // what scripts and settings know it by
    turnToolId = TO_ToolFactory::instance().registerTool(descriptor, TurnTool::createGenerator());
}

TURNTOOL_EXPORT void PLUG_Polish() {}

TURNTOOL_EXPORT void PLUG_Unpolish()
{
    TO_ToolFactory::instance().unregisterTool(turnToolId);
    turnToolId = CX_ToolIds::None;
}
