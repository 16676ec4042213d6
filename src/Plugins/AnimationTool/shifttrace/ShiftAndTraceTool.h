// The Shift and Trace tool, as the host's tool factory knows it, and its action responder.
//
// The tool registers itself at library load whatever the host application; its polish and unpolish
// run only in the applications that show drawings (identities 2 and 3).
#pragma once

#include "host/HostAPI.h"
#include "shifttrace/ShiftAndTraceToolResponder.h"

class ShiftAndTraceTool : public TO_Tool {
    Q_OBJECT
public:
    // The identifier the factory gave at load.
    static CX_ToolIds::ID const Id;

    static TO_ToolFactory::ToolDescriptor descriptor();
    static std::unique_ptr<TO_ToolFactory::ToolGenerator> createGenerator();
    static CX_ToolIds::ID registerWithFactory();
    // The one responder of the tool's actions.
    static ShiftAndTraceToolResponder *responder();

    // Shortcuts, image folders, the toolbar "shiftAndTraceToolbar" and the icon folder.
    static void onPolish();
    // Removes the toolbar.
    static void onUnpolish();

    explicit ShiftAndTraceTool(TO_AbstractToolContext *context);
    ~ShiftAndTraceTool() override;
};
