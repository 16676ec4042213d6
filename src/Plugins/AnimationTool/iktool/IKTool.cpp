#include "iktool/IKTool.h"

#include "iktool/IKToolImpl.h"

#include "bridge/JointDefinition.h"
#include "bridge/SkeletonExtraction.h"

#include <QCursor>
#include <QPixmap>

#include <algorithm>
#include <cmath>

namespace {

QString &resourceFolderStorage()
{
    static QString folder;
    return folder;
}

// The cursor value the host gave the tool's own cursor; 0 until it is registered.
int &customCursorStorage()
{
    static int cursor = TO_Enums::NoCursor;
    return cursor;
}

class IKToolGenerator : public TO_ToolFactory::ToolGenerator {
public:
    std::unique_ptr<TO_Tool> createTool(TO_AbstractToolContext *context) override
    {
        return std::make_unique<IKTool>(context);
    }
};

SC_InteractiveDragManager *dragManager()
{
    SC_SessionContext *session = PLUG_Services::getSessionContext();
    return session ? session->dragManager() : nullptr;
}

// The offset of `id` in the adaptor's block, or -1 when the id is not the adaptor's.
int offsetIn(SLB_SelectablePickAdaptor const &adaptor, unsigned int id)
{
    std::uint32_t const first = adaptor.pickingId();
    if (id < first || id - first >= std::uint32_t(adaptor.nbHandles()))
        return -1;
    return int(id - first);
}

// A pointer position that is not finite comes from a broken device or caller: it is ignored, so
// that it never reaches a target, a slider or a handle.
bool isFinite(Math::Point2d const &point)
{
    return std::isfinite(point.x) && std::isfinite(point.y);
}

bool validJoint(SkeletonDef const &skeleton, int index)
{
    return index >= 0 && index < int(skeleton.size()) && skeleton[std::size_t(index)].module.get();
}

} // namespace

// Registered while the library loads.
CX_ToolIds::ID const IKTool::Id = IKTool::registerWithFactory();

TO_ToolFactory::ToolDescriptor IKTool::descriptor()
{
    TO_ToolFactory::ToolDescriptor d;
    d.kind = 2;
    d.label = QStringLiteral("New IK Tool");
    d.name = QStringLiteral("NewIKTool");
    d.icon = QStringLiteral("IKTool.png");
    d.flag = 1;
    d.requestedId = kRequestedId;
    return d;
}

std::unique_ptr<TO_ToolFactory::ToolGenerator> IKTool::createGenerator()
{
    return std::make_unique<IKToolGenerator>();
}

CX_ToolIds::ID IKTool::registerWithFactory()
{
    if (!tuPref->getBoolValue(QStringLiteral("QV_HAS_NEW_IK_TOOL"), false))
        return kRequestedId;
    return TO_ToolFactory::instance().registerTool(descriptor(), createGenerator());
}

void IKTool::setResourceFolder(QString const &folder)
{
    resourceFolderStorage() = folder;
}

QString const &IKTool::resourceFolder()
{
    return resourceFolderStorage();
}

IKToolPickAdaptor::IKToolPickAdaptor() : SLB_SelectablePickAdaptor(1)
{
    reserveHandles(2);
}

UT_SharedPtr<SLB_SelectableDescriptor> IKToolPickAdaptor::scanHits(std::uint32_t, bool, QFlags<Qt::KeyboardModifier>)
{
    return {};
}

IKConstellationPickAdaptor::IKConstellationPickAdaptor() : SLB_SelectablePickAdaptor(1)
{
    reserveHandles(IKTool::Impl::ItemCount);
}

UT_SharedPtr<SLB_SelectableDescriptor> IKConstellationPickAdaptor::scanHits(std::uint32_t, bool,
                                                                            QFlags<Qt::KeyboardModifier>)
{
    return {};
}

IKTool::IKTool(TO_AbstractToolContext *context) : TO_Tool(context), impl_(std::make_unique<Impl>(this))
{
    IKToolSettings &settings = IKToolSettings::instance();
    connect(&settings, SIGNAL(settingsChanged()), this, SLOT(toolSettingChanged()));
    settings.setJointSource(impl_.get());
}

IKTool::~IKTool()
{
    IKToolSettings::instance().clearJointSource(impl_.get());
}

IKTool::Impl &IKTool::impl() const
{
    return *impl_;
}

void IKTool::toolSettingChanged()
{
    context()->requestRedraw();
}

void IKTool::resetTool() {}

Math::Point3d IKTool::viewToScene(Math::Point2d const &point) const
{
    CC_CameraChainTransformCanvasBinder *binder = context()->canvasBinder();
    if (!binder)
        return {};
    CC_CameraChainTransformCanvasBinder::Scope scope(*binder);
    binder->setModelMatrix(Math::Matrix4x4());
    Math::Point2d scene;
    binder->cameraTransformChain().transform(Math::CameraTransformChain::ViewFrame, point,
                                             Math::CameraTransformChain::ModelFrame, scene);
    return Math::Point3d(scene.x, scene.y, 0.0);
}

int IKTool::oglScanHit(unsigned int id, bool press)
{
    Impl &d = *impl_;
    bool extend = IKToolSettings::instance().toolMode() == IKToolSettings::ManipulationMode && context()->extendModifier();
    d.constellationHit = false;
    d.hoverJoint = -1;

    FrameRecord &current = d.record(d.currentKey());
    int k = offsetIn(current.pickAdaptor, id);
    if (k >= 0) {
        bool bone = false;
        int const n = int(current.skeleton.size());
        if (k >= n) {
            if (n == 0)
                return -1;  // a bone id comes from a drawn skeleton; none is left to resolve it
            bone = true;
            k %= n;
            extend = false;
        }
        d.hoverJoint = k;
        d.hoverFromSetup = false;
        if (!press)
            return -1;
        if (extend) {
            if (!d.selectedJointMap.erase(k))
                d.selectedJointMap.emplace(k, Math::Point3d());
        } else if (d.selectedJointMap.count(k)) {
            d.pendingJoint = k;
        } else {
            d.selectedJointMap.clear();
            d.selectedJointMap.emplace(k, Math::Point3d());
        }
        d.bonePicked = bone;
    } else if ((k = offsetIn(d.setupPickAdaptor, id)) >= 0) {
        d.hoverJoint = k;
        d.hoverFromSetup = true;
        if (press)
            d.setupJoint = k;
    } else if ((k = offsetIn(d.constellationPickAdaptor, id)) >= 0) {
        d.constellationHit = true;
        d.constellationItem = k;
    } else if (press && !extend) {
        d.selectedJointMap.clear();
    }
    return -1;
}

bool IKTool::onMouseDown(GR_StylusPoint const &point)
{
    Impl &d = *impl_;
    if (!isFinite(point.position()))
        return true;
    d.lastPoint = point.position();
    IKToolSettings &settings = IKToolSettings::instance();
    int const mode = settings.toolMode();
    settings.setJointSource(impl_.get());
    bool const keepConstellation = context()->thirdModifier();

    d.pendingJoint = -1;
    UT_SharedPtr<SLB_SelectableDescriptor> const hit =
        context()->pick(UT_Point::fromPoint2d(point.position()), true, 0);
    MO_Module *module = IKToolUtil::moduleFromSelectable(hit);
    if (module && !module->selected())
        d.selectModule(module);

    bool const wasVisible = d.constellationVisible;
    d.constellationVisible = true;

    if (mode == IKToolSettings::SetupMode) {
        d.setupPress();
        return true;
    }

    SkeletonDef const &skeleton = d.skeleton();
    if (validJoint(skeleton, d.pendingJoint)) {
        MO_Module *pending = skeleton[std::size_t(d.pendingJoint)].module.get();
        if (!pending->selected())
            d.selectModule(pending);
    }

    d.pressed = true;
    d.pressPoint = point.position();

    if (d.constellationHit) {
        if (d.constellationItem <= Impl::UseActualPositionFlag)
            d.flagClick();
        else if (d.constellationItem == Impl::ApplyAltogetherButton)
            applyAltogether();
        else
            d.sliderPress();
        return true;
    }

    if ((!hit && d.pendingJoint == -1 && !keepConstellation) || wasVisible)
        d.constellationVisible = false;
    if (!d.selectedJointMap.empty())
        d.state = Impl::Pressed;
    return true;
}

bool IKTool::onMouseMove(std::vector<GR_StylusPoint> const &points)
{
    Impl &d = *impl_;
    if (d.state == Impl::ConstellationClick || d.state == Impl::ApplyingAltogether)
        return true;
    if (points.empty())
        return false;
    Math::Point2d const point = points.back().position();  // only the newest sample counts
    if (!isFinite(point))
        return true;
    d.lastPoint = point;

    if (d.state == Impl::ConstellationSlider) {
        SC_InteractiveDragManager::Scope scope(dragManager(), SC_InteractiveDragManager::MOVE);
        d.applySlider(point);
        return true;
    }
    if (d.state == Impl::DraggingHandle) {
        SC_InteractiveDragManager::Scope scope(dragManager(), SC_InteractiveDragManager::MOVE);
        dragSetupHandle(point);
        return true;
    }
    if (d.state == Impl::Pressed) {
        if (point.GetDistance(d.pressPoint) < Impl::kDragThreshold)
            return true;
        d.pendingJoint = -1;
        SC_InteractiveDragManager::Scope scope(dragManager(), SC_InteractiveDragManager::PRESS_ACCUM,
                                               QStringLiteral("IK Tool"));
        dragStart(d.pressPoint);  // from the press, not from where the threshold was crossed
    }
    SC_InteractiveDragManager::Scope scope(dragManager(), SC_InteractiveDragManager::MOVE);
    d.lastPoint = point;
    if (d.state == Impl::Dragging)
        drag(point, true);
    return true;
}

bool IKTool::onMouseUp(GR_StylusPoint const &stylus)
{
    Impl &d = *impl_;
    // A release at a point that is not finite still ends the gesture, where the last move left it.
    Math::Point2d const point = isFinite(stylus.position()) ? stylus.position() : d.lastPoint;
    IKToolSettings::instance().setJointSource(impl_.get());
    if (d.state == Impl::ConstellationClick) {
        d.state = Impl::Idle;
        return true;
    }
    if (d.state == Impl::ConstellationSlider) {
        SC_InteractiveDragManager::Scope scope(dragManager(), SC_InteractiveDragManager::RELEASE);
        d.applySlider(point);
        d.state = Impl::Idle;
        return true;
    }
    SC_InteractiveDragManager::Scope release(dragManager(), SC_InteractiveDragManager::RELEASE);
    if (d.state == Impl::DraggingHandle) {
        dragSetupHandle(point);
        d.state = Impl::Idle;
        return true;
    }
    d.lastPoint = point;
    d.pressed = false;
    if (d.state == Impl::ApplyingAltogether) {
        SC_InteractiveDragManager::Scope second(dragManager(), SC_InteractiveDragManager::RELEASE);
        d.state = Impl::Idle;
        d.clearFrames();
        return true;
    }
    if (d.state == Impl::Dragging) {
        dragEnd(point);
        SC_InteractiveDragManager::Scope second(dragManager(), SC_InteractiveDragManager::RELEASE);
    } else if (d.pendingJoint != -1) {
        // A click on one of several selected joints, with no drag, narrows the selection to it.
        std::map<int, Math::Point3d> narrowed;
        auto const it = d.selectedJointMap.find(d.pendingJoint);
        narrowed.emplace(d.pendingJoint, it != d.selectedJointMap.end() ? it->second : Math::Point3d());
        d.selectedJointMap = std::move(narrowed);
        d.pendingJoint = -1;
    }
    d.state = Impl::Idle;
    d.clearFrames();
    return true;
}

void IKTool::dragStart(Math::Point2d const &point)
{
    Impl &d = *impl_;
    d.constellationVisible = false;
    MO_Module *root = IKToolUtil::skeletonFromSelection();
    if (!root || d.state != Impl::Pressed)
        return;
    d.state = Impl::Dragging;
    if (!d.currentSolver()) {
        d.state = Impl::Idle;
        return;
    }
    if (!d.buildManipulators(root))
        d.state = Impl::Idle;
    d.resetSolvers();
    d.setUpTasks();
    d.dragOrigin = viewToScene(point);
}

void IKTool::drag(Math::Point2d const &point, bool interactive)
{
    Impl &d = *impl_;
    MO_Module *root = IKToolUtil::skeletonFromSelection();
    if (!root || !d.currentSolver())
        return;
    d.moveTargets(viewToScene(point) - d.dragOrigin);
    d.solveFrames(!interactive);
    if (CO_CommandManager *manager = IKToolUtil::commandManagerForModule(root)) {
        d.commitFrames(manager, d.currentKey());
        d.buildManipulators(root);
    }
    if (interactive)
        context()->requestRedraw();
}

void IKTool::dragEnd(Math::Point2d const &point)
{
    Impl &d = *impl_;
    MO_Module *root = IKToolUtil::skeletonFromSelection();
    if (!root)
        return;
    drag(point, false);
    if (CO_CommandManager *manager = IKToolUtil::commandManagerForModule(root)) {
        CO_CommandAccumScope scope(manager, QStringLiteral("IK Manipulation"));
        d.commitFrames(manager, d.currentKey());
    }
}

void IKTool::dragSetupHandle(Math::Point2d const &point)
{
    Impl &d = *impl_;
    if (!validJoint(d.setupSkeleton, d.setupJoint))
        return;
    SkeletonJointDef const &joint = d.setupSkeleton[std::size_t(d.setupJoint)];
    auto const parent = d.setupSkeleton.find(joint.parentName);
    if (parent == d.setupSkeleton.end())
        return;
    Math::Vector3d const direction = viewToScene(point) - parent->solvedPosition;
    MO_Module *module = joint.module.get();
    if (CO_CommandManager *manager = IKToolUtil::commandManagerForModule(module))
        IKToolUtil::setHandleOrientationForModule(manager, module, direction, context()->currentFrame());
}

TO_Enums::Cursor IKTool::getCursor(Math::Point2d const &point)
{
    Impl &d = *impl_;
    int &custom = customCursorStorage();
    if (custom == TO_Enums::NoCursor && !resourceFolder().isEmpty()) {
        QPixmap const pixmap(resourceFolder() + QStringLiteral("/cursors/ikmanipulator.png"));
        int const registered = context()->registerCursor(new QCursor(pixmap, -1, -1));  // the view owns it
        custom = registered != TO_Enums::NoCursor ? registered : int(TO_Enums::Crosshair);
    }
    d.hoverJoint = -1;
    d.constellationHit = false;
    context()->pick(UT_Point::fromPoint2d(point), false, 0);

    if (d.state == Impl::ConstellationSlider)
        return TO_Enums::SizeHorizontal;
    if (d.constellationHit) {
        if (d.constellationItem == Impl::ApplyAltogetherButton)
            return TO_Enums::PointingHand;
        return d.constellationItem <= Impl::UseActualPositionFlag ? TO_Enums::OpenHand : TO_Enums::SizeHorizontal;
    }
    if (!d.pressed)
        return d.hoverJoint < 0 ? TO_Enums::Arrow : TO_Enums::OpenHand;
    return TO_Enums::Cursor(custom);
}

void IKTool::applyAltogether()
{
    Impl &d = *impl_;
    MO_Module *root = IKToolUtil::skeletonFromSelection();
    if (!root)
        return;
    if (!d.currentSolver()) {
        d.state = Impl::Idle;
        return;
    }
    if (!d.buildManipulators(root))
        return;
    d.state = Impl::ApplyingAltogether;
    d.resetSolvers();
    d.setUpTasks();
    d.moveTargets(Math::Vector3d());  // every frame takes the current frame's place of each joint
    d.solveFrames(false);
    if (CO_CommandManager *manager = IKToolUtil::commandManagerForModule(root)) {
        CO_CommandAccumScope scope(manager, QStringLiteral("IK Apply Altogether"));
        d.commitFrames(manager, d.currentKey());
    }
}

// The tool's state: selection changes, setup presses and the constellation.

IKTool::Impl::Impl(IKTool *owner) : tool(owner) {}

IKTool::Impl::~Impl() = default;

void IKTool::Impl::selectModule(MO_Module *module)
{
    SC_ProjectCommon *project = module ? module->projectCommon() : nullptr;
    if (!project)
        return;
    CO_CommandAccumScope accum(project->commandManager(), QStringLiteral("Selection"));
    SL_SelectionCommands::Scope scope(project->commandManager(), project->getSelection());
    SL_SelectionUtil::clear(project->getSelection());
    IKToolUtil::addModuleToSelection(module);
}

void IKTool::Impl::setupPress()
{
    if (!validJoint(setupSkeleton, setupJoint))
        return;
    SkeletonJointDef const &joint = setupSkeleton[std::size_t(setupJoint)];
    MO_Module *module = joint.module.get();
    if (joint.isHandle) {
        // The scope opens the undo step that the moves and the release add to.
        SC_InteractiveDragManager::Scope scope(dragManager(), SC_InteractiveDragManager::PRESS_ACCUM,
                                               QStringLiteral("IK Define Handle"));
        state = DraggingHandle;
        return;
    }
    if (!IKToolUtil::isRoot(module)) {
        if (CO_CommandManager *manager = IKToolUtil::commandManagerForModule(module)) {
            CO_CommandAccumScope scope(manager, QStringLiteral("Define IK Joint"));
            IKToolUtil::setParticipation(manager, module, !IKToolUtil::participates(module));
        }
    }
    if (!module->selected())
        selectModule(module);
}

int IKTool::Impl::constellationTarget() const
{
    if (constellationJoint != -1)
        return constellationJoint;
    return selectedJointMap.empty() ? -1 : selectedJointMap.begin()->first;
}

namespace {

AT_BoolAttr *flagOf(JointAttr *attr, int item)
{
    switch (item) {
    case IKTool::Impl::MobileFlag: return attr->activeAttr();
    case IKTool::Impl::HoldPositionFlag: return attr->holdPositionAttr();
    case IKTool::Impl::HoldOrientationFlag: return attr->holdOrientationAttr();
    case IKTool::Impl::BlockerFlag: return attr->isBlocker();
    case IKTool::Impl::UseActualPositionFlag: return attr->useActualPositionAttr();
    default: return nullptr;
    }
}

bool flagOf(SkeletonJointDef const &joint, int item)
{
    switch (item) {
    case IKTool::Impl::MobileFlag: return joint.isMobile();
    case IKTool::Impl::HoldPositionFlag: return joint.hasPositionTask();
    case IKTool::Impl::HoldOrientationFlag: return joint.hasOrientationTask();
    case IKTool::Impl::BlockerFlag: return joint.isBlocker();
    default: return joint.useActualPositionWhenInterpolating();
    }
}

AT_DoubleAttr *sliderOf(JointAttr *attr, int item)
{
    switch (item) {
    case IKTool::Impl::MobilitySlider: return attr->weightAttr();
    case IKTool::Impl::HoldPositionSlider: return attr->holdPositionGainAttr();
    case IKTool::Impl::HoldOrientationSlider: return attr->holdOrientationGainAttr();
    default: return nullptr;
    }
}

void executeIfAny(CO_CommandManager *manager, std::unique_ptr<CO_Command> command)
{
    if (command)
        manager->execute(std::move(command), QString());
}

} // namespace

void IKTool::Impl::flagClick()
{
    SkeletonDef &current = skeleton();
    int const index = constellationTarget();
    if (index >= 0 && index < int(current.size())) {
        SkeletonJointDef const &joint = current[std::size_t(index)];
        CO_CommandManager *manager = IKToolUtil::commandManagerForModule(joint.module.get());
        if (!manager)
            return;  // the press ends here, still pressed
        CO_CommandAccumScope scope(manager, QStringLiteral("IK Joint Settings"));
        // The clicked joint's new value goes to every selected joint; none is toggled on its own.
        bool const value = !flagOf(joint, constellationItem);
        QString const text = value ? QStringLiteral("true") : QStringLiteral("false");
        for (auto const &entry : selectedJointMap) {
            JointAttr *attr = current.getAttribute(entry.first);
            AT_BoolAttr *flag = attr ? flagOf(attr, constellationItem) : nullptr;
            if (flag && flag->localValue() != value)
                executeIfAny(manager, flag->setTextValue(0.0, text));
        }
    }
    state = ConstellationClick;
    pressed = false;
}

void IKTool::Impl::sliderPress()
{
    SC_InteractiveDragManager::Scope scope(dragManager(), SC_InteractiveDragManager::PRESS_ACCUM,
                                           QStringLiteral("IK Joint Setting"));
    state = ConstellationSlider;
    pressed = false;
    activeSlider = constellationItem;
    applySlider(pressPoint);
}

void IKTool::Impl::applySlider(Math::Point2d const &point)
{
    if (!constellationVisible || activeSlider < MobilitySlider || activeSlider > HoldOrientationSlider)
        return;
    Math::Segment2d const &track = sliderSegments[activeSlider - MobilitySlider];
    double const ratio = std::clamp(track.GetProjectedRatio(point), 0.0, 1.0) * 100.0;
    SkeletonDef &current = skeleton();
    if (!validJoint(current, constellationTarget()))
        return;
    CO_CommandManager *manager = IKToolUtil::commandManagerForModule(current[std::size_t(constellationTarget())].module.get());
    if (!manager)
        return;
    QString const text = QString::number(ratio, 'g', 6);
    for (auto const &entry : selectedJointMap) {
        JointAttr *attr = current.getAttribute(entry.first);
        AT_DoubleAttr *slider = attr ? sliderOf(attr, activeSlider) : nullptr;
        if (slider && slider->localValue() != ratio)
            executeIfAny(manager, slider->setTextValue(0.0, text));
    }
}
