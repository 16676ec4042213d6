#include "shifttrace/ShiftAndTraceTool.h"

#include "shifttrace/ShiftAndTraceManipulator.h"
#include "shifttrace/ShiftAndTraceSelection.h"
#include "shifttrace/ShiftAndTraceSelectionManipulator.h"
#include "shifttrace/ShiftAndTraceToolPanel.h"

#include <QFile>

#include <map>

namespace ST = AT_ShiftAndTraceUtil;
using Handle = ShiftAndTraceManipulatorBase::HandleType_t;

namespace {

class ShiftAndTraceToolGenerator : public TO_ToolFactory::ToolGenerator {
public:
    std::unique_ptr<TO_Tool> createTool(TO_AbstractToolContext *context) override
    {
        return std::make_unique<ShiftAndTraceTool>(context);
    }
};

// The peg table: one picking id per drawing shown with pegs, kept for the life of the process,
// with the frame of the last peg drawn. Ordered by module identity, then drawing.
struct PegKey {
    UT_SharedWeakPtr<MO_ElementModule> module;
    std::uintptr_t address = 0;  // = module's address when the entry was made
    CA_CelKey celKey;
    bool operator<(PegKey const &o) const { return address != o.address ? address < o.address : celKey < o.celKey; }
};
struct PegEntry {
    std::uint32_t id = 0;
    int frame = 0;
};
std::map<PegKey, PegEntry> &pegPickTable()
{
    static std::map<PegKey, PegEntry> table;
    return table;
}

class ShiftAndTraceHandleGenerator : public ST::ShiftAndTracePickingHandleGenerator {
public:
    VS_RGBA handleColor(MO_ElementModule *module, CA_CelKey const &key, int frame) override
    {
        PegKey pegKey{UT_SharedWeakPtr<MO_ElementModule>(module), reinterpret_cast<std::uintptr_t>(module), key};
        auto it = pegPickTable().find(pegKey);
        if (it != pegPickTable().end() && it->first.module.get() != module) {
            pegPickTable().erase(it);  // a dead module's entry, whose address a new module took
            it = pegPickTable().end();
        }
        if (it == pegPickTable().end())
            it = pegPickTable().emplace(pegKey, PegEntry{SLB_PickEngine::generateIdForPickingObject(1), frame}).first;
        it->second.frame = frame;
        return SLB_PickEngine::idToColor(it->second.id);
    }
};
ShiftAndTraceHandleGenerator handleGenerator;

bool shortcutsLoadedAtInit = false;    // onInit loaded the tool's shortcuts
bool shortcutsLoadedAtPolish = false;  // onPolish loaded them
bool panelFactoryMade = false;         // onPolish gave the panel's factory to the host

void loadShortcuts(bool &done)
{
    AC_Manager *actions = PLUG_Services::getActionManager();
    AC_ShortcutManager *shortcuts = actions ? actions->shortcutManager() : nullptr;
    if (!shortcuts || done)
        return;
    done = true;
    shortcuts->loadShortcuts(PLUG_Services::getPluginPath(QStringLiteral("AnimationTool")) +
                             QStringLiteral("/resources/shortcuts.xml"));
    shortcuts->applyShortcutSet(shortcuts->currentShortcutSetName());
}

// Whether the key bound to the action is down now.
bool actionKeyDown(QString const &action)
{
    AC_Manager *actions = PLUG_Services::getActionManager();
    if (!actions)
        return false;
    int const code = actions->shortcutKeyCode(action) & 0x1ffffff;
    return code != 0 && BUIAPP_Application::instance().isKeyPressed(code);
}

constexpr int kKeyControl = 0x1000021;
constexpr int kKeyAlt = 0x1000023;
constexpr int kKeyLeft = 0x1000012;
constexpr int kKeyUp = 0x1000013;
constexpr int kKeyRight = 0x1000014;
constexpr int kKeyDown = 0x1000015;
constexpr double kDragThreshold = 5.0;  // pixels the pointer must go beyond before a drag starts

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

void ShiftAndTraceTool::registerPickingHandleGenerator()
{
    ST::setShiftAndTracePickingHandleGenerator(&handleGenerator);
}

void ShiftAndTraceTool::unregisterPickingHandleGenerator()
{
    ST::setShiftAndTracePickingHandleGenerator(nullptr);
}

void ShiftAndTraceTool::onInit()
{
    loadShortcuts(shortcutsLoadedAtInit);
}

void ShiftAndTraceTool::onPolish()
{
    registerPickingHandleGenerator();
    loadShortcuts(shortcutsLoadedAtPolish);
    QString const dir = PLUG_Services::getPluginPath(QStringLiteral("AnimationTool")) + QStringLiteral("/resources");
    QString const toolbarFile = dir + QStringLiteral("/ShiftAndTrace_toolbar.xml");
    AC_Manager *actions = PLUG_Services::getActionManager();
    if (actions) {
        actions->addImageFolder(dir);
        actions->addImageFolder(dir + QStringLiteral("/icons"));
    }
    PLUG_ToolbarService *toolbars = PLUG_Services::getToolbarService();
    if (toolbars && QFile::exists(toolbarFile))
        toolbars->loadToolbar(toolbarFile, QStringLiteral("shiftAndTraceToolbar"));
    if (actions)
        actions->addImageFolder(dir);
    WID_IconManager::instance().addSearchDirectory(dir);
    // The panel factory, once (the host keeps it); the reset actions run the panel's clearing.
    if (!panelFactoryMade) {
        panelFactoryMade = true;
        TP_ToolPropertiesPanelFactory::addPanelFactory(std::make_unique<ShiftAndTraceToolPanelFactory>(dir));
        responder()->setClearShiftActions(&ShiftAndTraceToolPanel::onClearCurrentShiftImpl,
                                          &ShiftAndTraceToolPanel::onClearAllShiftsImpl);
    }
    responder()->readPreferences();
}

void ShiftAndTraceTool::onUnpolish()
{
    responder()->writePreferences();
    unregisterPickingHandleGenerator();
    if (PLUG_ToolbarService *toolbars = PLUG_Services::getToolbarService())
        toolbars->removeToolbar(QStringLiteral("shiftAndTraceToolbar"));
}

struct ShiftAndTraceTool::Impl {
    Math::Point2d mouseDownPoint;
    bool dragStarted = false;  // the pointer went beyond the threshold since the press
    ShiftAndTraceSelectionManipulator manipulator;
    MO_ElementModule *pickedModule = nullptr;  // the peg hit by the current press
    int pickedFrame = 0;
    CA_CelKey pickedCelKey;
};

ShiftAndTraceTool::ShiftAndTraceTool(TO_AbstractToolContext *context) : TO_Tool(context), d_(std::make_unique<Impl>()) {}

ShiftAndTraceTool::~ShiftAndTraceTool() = default;

ShiftAndTraceSelectionManipulator &ShiftAndTraceTool::manipulator()
{
    return d_->manipulator;
}

bool ShiftAndTraceTool::guarded() const
{
    return context()->viewKind() == TO_AbstractToolContext::DrawingView &&
           !PR_CachedPreferences::_HasNewShiftandTraceInDrawingView;
}

void ShiftAndTraceTool::applyOverride()
{
    if (actionKeyDown(QStringLiteral("SHIFT_AND_TRACE_TOOL_ROTATE_OVERRIDE")))
        d_->manipulator.setOverride(Handle::HandleRotate);  // rotate wins over scale
    else if (actionKeyDown(QStringLiteral("SHIFT_AND_TRACE_TOOL_SCALE_OVERRIDE")))
        d_->manipulator.setOverride(Handle::HandleScale);
    else
        d_->manipulator.setOverride(Handle::HandleMove);
}

void ShiftAndTraceTool::draw(PickMode mode)
{
    if (guarded() || !ST::shiftAndTraceEnabled())
        return;
    ShiftAndTraceSelection::instance().validate(SC_Frames::toInt(context()->currentFrame()));
    d_->manipulator.draw(context(), mode != NormalMode);
}

int ShiftAndTraceTool::oglScanHit(unsigned int id, bool press)
{
    for (auto const &[key, entry] : pegPickTable()) {
        MO_ElementModule *module = key.module.get();
        if (entry.id != id || !module)
            continue;  // a dead module's entry is passed over
        if (press) {
            d_->pickedModule = module;
            d_->pickedCelKey = key.celKey;
            d_->pickedFrame = entry.frame;
        }
        return Handle::HandlePeg;
    }
    UT_SharedPtr<SLB_SelectableDescriptor> hit = d_->manipulator.scanHits(id, press, {});
    auto const *handle = dynamic_cast<ShiftAndTraceSelectable const *>(hit.get());
    return handle ? handle->handle() : -1;
}

bool ShiftAndTraceTool::onMouseDown(GR_StylusPoint const &point)
{
    if (guarded())
        return false;
    TO_AbstractToolContext *ctx = context();
    d_->mouseDownPoint = point.position();
    d_->dragStarted = false;
    bool const extend = ctx->extendModifier();
    bool const second = ctx->keepModifier();
    int const frame = SC_Frames::toInt(ctx->currentFrame());
    d_->pickedModule = nullptr;
    d_->pickedFrame = 0;

    ShiftAndTraceSelection &selection = ShiftAndTraceSelection::instance();
    UT_SharedPtr<SLB_SelectableDescriptor> hit = ctx->pick(UT_Point::fromPoint2d(point.position()), true, 5);
    bool changed = false;
    if (d_->pickedModule) {
        // A peg: its drawing, at the peg's frame, rotates about its centre peg.
        if (!selection.isSelected(d_->pickedModule, d_->pickedCelKey)) {
            selection.add(d_->pickedModule, d_->pickedFrame, !extend);
            changed = true;
        }
        if (auto const *element = selection.find(d_->pickedModule, d_->pickedCelKey))
            element->manipulator().setSelectedHandleType(Handle::HandlePeg);
    } else if (hit) {
        // A plain click on anything with a selection in place drags that selection.
        if (selection.elements().empty() || second || extend) {
            if (auto const *withFrame = dynamic_cast<SLB_ModuleDescriptorWithFrame const *>(hit.get())) {
                selection.add(dynamic_cast<MO_ElementModule *>(withFrame->module()), withFrame->frame(), !extend);
                changed = true;
            } else if (auto const *module = dynamic_cast<SLB_ModuleDescriptor const *>(hit.get())) {
                selection.add(dynamic_cast<MO_ElementModule *>(module->module()), frame, !extend);
                changed = true;
            }
        }
    } else if (second) {
        SL_SelectionUtil::clear(PLUG_Services::getSelection());
        changed = true;
    }
    if (changed)
        responder()->emitOnShiftChange();

    applyOverride();
    d_->manipulator.onMouseDown(ctx, point);
    ctx->requestRedraw();
    if (PLUG_InteractiveViewManager *views = PLUG_Services::getInteractiveViewManager())
        views->redrawViewsAtFrame(frame);
    return true;
}

bool ShiftAndTraceTool::onMouseMove(std::vector<GR_StylusPoint> const &points)
{
    if (guarded())
        return false;
    if (points.empty())
        return false;
    if (!d_->dragStarted && points.back().position().GetDistance(d_->mouseDownPoint) > kDragThreshold)
        d_->dragStarted = true;
    if (!d_->dragStarted)
        return true;  // below the threshold the manipulator sees no motion at all
    d_->manipulator.onMouseMove(context(), points);
    context()->dragStepDone();
    return true;
}

bool ShiftAndTraceTool::onMouseUp(GR_StylusPoint const &point)
{
    if (guarded())
        return false;
    d_->manipulator.onMouseUp(context(), point);
    d_->manipulator.resetSelectedHandle();
    d_->dragStarted = false;
    return true;
}

bool ShiftAndTraceTool::onKeyDown(int key, bool)
{
    if (guarded())
        return false;
    if (key == kKeyControl || key == kKeyAlt) {
        responder()->refreshViews();
        return false;
    }
    Math::Vector2d step;
    switch (key) {
    case kKeyLeft: step = {-1.0, 0.0}; break;
    case kKeyRight: step = {1.0, 0.0}; break;
    case kKeyUp: step = {0.0, -1.0}; break;
    case kKeyDown: step = {0.0, 1.0}; break;
    default: return false;
    }
    if (context()->extendModifier())
        step = step * 10.0;
    step = step * PR_CachedPreferences::_SPTranslateScaleFactor;
    applyOverride();
    if ((key == kKeyUp || key == kKeyDown) && d_->manipulator.overrideHandle() == Handle::HandleRotate)
        step = -step;
    // A drag of the step's length in view pixels, with no threshold. Careful: unlike a real release
    // this does not reset the selected handle, so a handle forced by an override stays until the
    // next release of the pointer.
    Math::Point2d const origin(0.0, 0.0);
    GR_StylusPoint const end(origin + step, 1.0);
    d_->manipulator.onMouseDown(context(), GR_StylusPoint(origin, 1.0));
    d_->manipulator.onMouseMove(context(), {end});
    // The step is reported as a real drag's is: the host then knows the key moved something and
    // gives it to nothing else (an arrow key would otherwise also step the frame).
    context()->dragStepDone();
    d_->manipulator.onMouseUp(context(), end);
    responder()->refreshViews();
    return false;
}

bool ShiftAndTraceTool::onKeyUp(int key)
{
    if (key == kKeyControl || key == kKeyAlt)
        responder()->refreshViews();
    return false;
}

void ShiftAndTraceTool::resetTool()
{
    ST::setShiftAndTraceShowPegsIfSelected(CX_Context::GetInstance().data().toolId == Id);
}

void ShiftAndTraceTool::activateTool()
{
    resetTool();
}

bool ShiftAndTraceTool::shouldBeEnabledBasedOnKeyPressed()
{
    bool const down = actionKeyDown(QStringLiteral("SHIFT_AND_TRACE_TOOL")) ||
                      actionKeyDown(QStringLiteral("SHIFT_AND_TRACE_TOOL_ROTATE_OVERRIDE")) ||
                      actionKeyDown(QStringLiteral("SHIFT_AND_TRACE_TOOL_SCALE_OVERRIDE"));
    if (down && !ST::shiftAndTraceEnabled())
        ST::setShiftAndTraceEnabled(true);
    return down;
}

TO_Enums::Cursor ShiftAndTraceTool::getCursor(Math::Point2d const &point)
{
    // The host's cursors for the tool's roles: inactive, add cross-hair, nothing to work on,
    // move, rotate, pivot and scale.
    if (guarded() || !ST::shiftAndTraceEnabled())
        return TO_Enums::Forbidden;
    ShiftAndTraceSelection &selection = ShiftAndTraceSelection::instance();
    if (responder()->isAddCrossHairMode())
        return selection.elements().size() == 1 ? TO_Enums::Crosshair : TO_Enums::Forbidden;
    UT_SharedPtr<SLB_SelectableDescriptor> hit = context()->pick(UT_Point::fromPoint2d(point), false, 5);
    switch (context()->pickedHandle(hit)) {
    case -1: return selection.elements().empty() && !hit ? TO_Enums::Arrow : TO_Enums::SizeAll;
    case Handle::HandleRotate: return TO_Enums::Rotate;
    case Handle::HandlePivot: return TO_Enums::Cross;
    case Handle::HandlePeg: return TO_Enums::Rotate;
    default: return TO_Enums::Scale;
    }
}
