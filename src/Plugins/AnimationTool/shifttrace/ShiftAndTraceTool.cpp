#include "shifttrace/ShiftAndTraceTool.h"

#include <QFile>

namespace {

class ShiftAndTraceToolGenerator : public TO_ToolFactory::ToolGenerator {
public:
    std::unique_ptr<TO_Tool> createTool(TO_AbstractToolContext *context) override
    {
        return std::make_unique<ShiftAndTraceTool>(context);
    }
};

bool shortcutsLoaded = false;  // the tool's shortcut file was loaded once

} // namespace

// Both made while the library loads; the responder lives to process exit.
CX_ToolIds::ID const ShiftAndTraceTool::Id = ShiftAndTraceTool::registerWithFactory();
static ShiftAndTraceToolResponder shiftAndTraceResponder;

ShiftAndTraceToolResponder *ShiftAndTraceTool::responder()
{
    return &shiftAndTraceResponder;
}

TO_ToolFactory::ToolDescriptor ShiftAndTraceTool::descriptor()
{
    TO_ToolFactory::ToolDescriptor d;
    d.kind = 3;
    d.label = QStringLiteral("Shift And Trace");
    d.name = QStringLiteral("ShiftAndTraceTool");
    d.icon = QStringLiteral("ShiftAndTrace/shiftandtracetool.svg");
    d.flag = 0;
    d.requestedId = CX_ToolIds::None;
    return d;
}

std::unique_ptr<TO_ToolFactory::ToolGenerator> ShiftAndTraceTool::createGenerator()
{
    return std::make_unique<ShiftAndTraceToolGenerator>();
}

CX_ToolIds::ID ShiftAndTraceTool::registerWithFactory()
{
    return TO_ToolFactory::instance().registerTool(descriptor(), createGenerator());
}

void ShiftAndTraceTool::onPolish()
{
    AC_Manager *actions = PLUG_Services::getActionManager();
    AC_ShortcutManager *shortcuts = actions ? actions->shortcutManager() : nullptr;
    if (shortcuts && !shortcutsLoaded) {
        shortcutsLoaded = true;
        shortcuts->loadShortcuts(PLUG_Services::getPluginPath(QStringLiteral("AnimationTool")) +
                                 QStringLiteral("/resources/shortcuts.xml"));
        shortcuts->applyShortcutSet(shortcuts->currentShortcutSetName());
    }

    QString const dir = PLUG_Services::getPluginPath(QStringLiteral("AnimationTool")) + QStringLiteral("/resources");
    QString const toolbarFile = dir + QStringLiteral("/ShiftAndTrace_toolbar.xml");
    if (actions) {
        actions->addImageFolder(dir);
        actions->addImageFolder(dir + QStringLiteral("/icons"));
    }
    PLUG_ToolbarService *toolbars = PLUG_Services::getToolbarService();
    if (toolbars && QFile::exists(toolbarFile))
        toolbars->loadToolbar(toolbarFile, QStringLiteral("shiftAndTraceToolbar"));
    WID_IconManager::instance().addSearchDirectory(dir);
}

void ShiftAndTraceTool::onUnpolish()
{
    if (PLUG_ToolbarService *toolbars = PLUG_Services::getToolbarService())
        toolbars->removeToolbar(QStringLiteral("shiftAndTraceToolbar"));
}

ShiftAndTraceTool::ShiftAndTraceTool(TO_AbstractToolContext *context) : TO_Tool(context) {}

ShiftAndTraceTool::~ShiftAndTraceTool() = default;

ShiftAndTraceToolResponder::ShiftAndTraceToolResponder()
    : AC_ResponderTemplateObject<QObject>(QStringLiteral("ShiftAndTraceToolResponder"))
{
    initActionManager(PLUG_Services::getActionManager());
}

void ShiftAndTraceToolResponder::onActionSelectShiftAndTraceTool()
{
    CX_ToolRecord record = CX_Context::GetInstance().data();
    record.toolId = ShiftAndTraceTool::Id;
    CX_Context::GetInstance().SetData(record, nullptr);
}
