#include "shifttrace/ShiftAndTraceSelectionManipulator.h"

#include "shifttrace/ShiftAndTraceManipulator.h"
#include "shifttrace/ShiftAndTracePositionMath.h"
#include "shifttrace/ShiftAndTraceSelection.h"
#include "shifttrace/ShiftAndTraceTool.h"

#include <QCoreApplication>

using Chain = Math::CameraTransformChain;
using Element = ShiftAndTraceSelection::SelectionElement;

namespace {

VS_RGBA const kGroupColour(244, 104, 60, 255);

std::set<Element> &selected()
{
    return ShiftAndTraceSelection::instance().elements();
}

bool singleDrawing()
{
    return selected().size() == 1;
}

// The view point in world OGL: the model frame under an identity model matrix.
bool toWorld(TO_AbstractToolContext *ctx, Math::Point2d const &view, Math::Point2d &world)
{
    CC_CameraChainTransformCanvasBinder &binder = *ctx->canvasBinder();
    CC_CameraChainTransformCanvasBinder::Scope scope(binder);
    binder.setModelMatrix(Math::Matrix4x4());
    return binder.cameraTransformChain().transform(Chain::ViewFrame, view, Chain::ModelFrame, world);
}

// The first element whose manipulator has a handle selected, or null.
Element const *elementWithHandle()
{
    for (Element const &e : selected())
        if (e.manipulator().selectedHandleType() != ShiftAndTraceManipulatorBase::HandleMove)
            return &e;
    return nullptr;
}

// Hands a gesture to the first element whose manipulator has a handle, or else to every element.
template <class Gesture>
void forwardToElements(Gesture gesture)
{
    if (Element const *e = elementWithHandle()) {
        gesture(e->manipulator());
        return;
    }
    for (Element const &e : selected())
        gesture(e.manipulator());
}

SC_SceneMetrics metricsOf(Element const &e)
{
    MO_ElementModule *module = e.module.get();
    return module ? module->sceneMetrics() : SC_SceneMetrics();
}

} // namespace

struct ShiftAndTraceSelectionManipulator::Impl {
    HandleBlock block;  // pivotPoint: field units; boundingBox: world OGL; offsetMatrix: the drag so far
    struct GroupDrag {
        bool active = false;
        HandleType_t handleType = HandleMove;
        Math::Point2d lastPoint;  // world OGL
    } groupDrag;
    bool groupPivotValid = false;       // block.pivotPoint belongs to the drawings of lastCelKeys
    std::vector<CA_CelKey> lastCelKeys;  // drawings of the last group box, in selection order
    HandleType_t overrideHandleType = HandleMove;
    std::unique_ptr<CO_CommandAccumScope> accumScope;  // open from mouse down to mouse up

    void startGroupDrag(TO_AbstractToolContext *ctx, Math::Point2d const &view, HandleType_t handle);
    void groupStep(TO_AbstractToolContext *ctx, Math::Point2d const &view);
    Math::Box2d selectionBounds(TO_AbstractToolContext *ctx, std::vector<CA_CelKey> &keys) const;
};

ShiftAndTraceSelectionManipulator::ShiftAndTraceSelectionManipulator() : d_(std::make_unique<Impl>()) {}

ShiftAndTraceSelectionManipulator::~ShiftAndTraceSelectionManipulator() = default;

void ShiftAndTraceSelectionManipulator::setOverride(HandleType_t handle)
{
    d_->overrideHandleType = handle;
}

ShiftAndTraceManipulatorBase::HandleType_t ShiftAndTraceSelectionManipulator::overrideHandle() const
{
    return d_->overrideHandleType;
}

Math::Point2d ShiftAndTraceSelectionManipulator::groupPivot() const
{
    return d_->block.pivotPoint;
}

Math::Box2d ShiftAndTraceSelectionManipulator::groupBox() const
{
    return d_->block.boundingBox;
}

ShiftAndTraceManipulatorBase::HandleType_t ShiftAndTraceSelectionManipulator::selectedHandle() const
{
    if (selectedHandleType() != HandleMove)
        return selectedHandleType();
    Element const *e = elementWithHandle();
    return e ? e->manipulator().selectedHandleType() : HandleMove;
}

void ShiftAndTraceSelectionManipulator::resetSelectedHandle()
{
    for (Element const &e : selected())
        e.manipulator().resetSelectedHandle();
    ShiftAndTraceManipulatorBase::resetSelectedHandle();
}

UT_SharedPtr<SLB_SelectableDescriptor> ShiftAndTraceSelectionManipulator::scanHits(std::uint32_t id, bool commit,
                                                                                   QFlags<Qt::KeyboardModifier> modifiers)
{
    for (Element const &e : selected()) {
        if (UT_SharedPtr<SLB_SelectableDescriptor> hit = e.manipulator().scanHits(id, commit, modifiers))
            return hit;  // the elements behind the hit are not asked
    }
    return ShiftAndTraceManipulatorBase::scanHits(id, commit, modifiers);
}

void ShiftAndTraceSelectionManipulator::Impl::startGroupDrag(TO_AbstractToolContext *ctx, Math::Point2d const &view,
                                                             HandleType_t handle)
{
    groupDrag.active = false;
    block.offsetMatrix = Math::Matrix4x4();
    toWorld(ctx, view, groupDrag.lastPoint);  // also wanted by a plain move: the group pivot follows
    if (selected().empty())
        return;
    if (singleDrawing() && ShiftAndTraceTool::responder()->isShowManipulator())
        return;
    groupDrag.handleType = handle;
    groupDrag.active = handle != HandleMove;
}

bool ShiftAndTraceSelectionManipulator::onMouseDown(TO_AbstractToolContext *ctx, GR_StylusPoint const &point)
{
    if (selected().empty())
        return true;
    ShiftAndTraceToolResponder *responder = ShiftAndTraceTool::responder();
    if (responder->isAddCrossHairMode()) {
        if (singleDrawing()) {
            AT_ShiftAndTraceUtil::crossHairList().push_back(Math::Point2d(0.0, 0.0));
            setLastCrossHair(ctx, point.position());
            responder->refreshViews();
        }
        return true;
    }
    if (d_->overrideHandleType != HandleMove) {
        if (!singleDrawing())
            setSelectedHandleType(d_->overrideHandleType);
        else if (responder->isShowManipulator())
            selected().begin()->manipulator().setSelectedHandleType(d_->overrideHandleType);
        else
            setSelectedHandleType(d_->overrideHandleType);
    }
    d_->accumScope.reset();
    MO_ElementModule *first = selected().begin()->module.get();
    SC_SceneCommon *scene = first ? first->sceneCommon() : nullptr;
    d_->accumScope = std::make_unique<CO_CommandAccumScope>(
        scene ? scene->commandManager() : nullptr,
        QCoreApplication::translate("ShiftAndTraceSelectionManipulator", "Move Shift and Trace"));

    d_->startGroupDrag(ctx, point.position(), selectedHandleType());
    if (!d_->groupDrag.active)
        forwardToElements([&](ShiftAndTraceManipulator &m) { m.onMouseDown(ctx, point); });
    return true;
}

void ShiftAndTraceSelectionManipulator::Impl::groupStep(TO_AbstractToolContext *ctx, Math::Point2d const &view)
{
    Math::Point2d p;
    if (!toWorld(ctx, view, p))
        return;
    SC_SceneMetrics const metrics = metricsOf(*selected().begin());
    Math::Point2d const pivot = ShiftAndTraceToolUtils::fieldToOgl(block.pivotPoint, metrics);
    Math::Matrix4x4 m;
    switch (groupDrag.handleType) {
    case HandlePivot: {
        Math::Vector2d const delta = p - groupDrag.lastPoint;
        block.pivotPoint += Math::Vector2d(delta.x * metrics.oglToFieldX(), delta.y * metrics.oglToFieldY());
        groupDrag.lastPoint = p;
        return;  // no drawing changes
    }
    case HandleRotate: {
        Math::Vector2d const prev = groupDrag.lastPoint - pivot;
        Math::Vector2d const cur = p - pivot;
        groupDrag.lastPoint = p;
        double degrees = 0.0;
        if (!ShiftAndTraceToolUtils::rotationStepDegrees(prev, cur, degrees))
            return;
        m.translate(pivot.x, pivot.y).rotateDegrees(degrees).translate(-pivot.x, -pivot.y);
        break;
    }
    case HandleScale: {
        double before = groupDrag.lastPoint.GetDistance(pivot);
        double now = p.GetDistance(pivot);
        if (before == 0.0)
            before = 0.001;
        if (now == 0.0)
            now = 0.001;
        double const s = now / before;
        groupDrag.lastPoint = p;
        m.translate(pivot.x, pivot.y).scale(s, s, 1.0).translate(-pivot.x, -pivot.y);
        break;
    }
    default:
        break;
    }
    block.offsetMatrix = block.offsetMatrix * m;
    for (Element const &e : selected())
        e.manipulator().applyTransform(ctx, m);
}

bool ShiftAndTraceSelectionManipulator::onMouseMove(TO_AbstractToolContext *ctx, std::vector<GR_StylusPoint> const &points)
{
    if (points.empty())
        return false;
    Math::Point2d const &at = points.back().position();
    if (ShiftAndTraceTool::responder()->isAddCrossHairMode()) {
        if (singleDrawing())
            setLastCrossHair(ctx, at);
        return true;
    }
    if (d_->groupDrag.active) {
        d_->groupStep(ctx, at);
        return true;
    }
    bool const onAHandle = elementWithHandle() != nullptr;
    forwardToElements([&](ShiftAndTraceManipulator &m) { m.onMouseMove(ctx, points); });
    if (onAHandle)
        return true;
    Math::Point2d p;
    if (d_->groupPivotValid && !selected().empty() && toWorld(ctx, at, p)) {
        // The group pivot travels with the drawings.
        SC_SceneMetrics const metrics = metricsOf(*selected().rbegin());
        Math::Vector2d const delta = p - d_->groupDrag.lastPoint;
        d_->block.pivotPoint += Math::Vector2d(delta.x * metrics.oglToFieldX(), delta.y * metrics.oglToFieldY());
        d_->groupDrag.lastPoint = p;
    }
    return true;
}

bool ShiftAndTraceSelectionManipulator::onMouseUp(TO_AbstractToolContext *ctx, GR_StylusPoint const &point)
{
    if (ShiftAndTraceTool::responder()->isAddCrossHairMode()) {
        if (singleDrawing())
            setLastCrossHair(ctx, point.position());
        return true;
    }
    d_->overrideHandleType = HandleMove;
    if (d_->groupDrag.active) {
        d_->groupDrag.active = false;
        d_->groupDrag.handleType = HandleMove;
        d_->block.offsetMatrix = Math::Matrix4x4();
        for (Element const &e : selected())
            if (auto *attr = AT_ShiftAndTraceUtil::addShiftAndTrace(e.module.get()))
                attr->makeDirty();
    } else {
        forwardToElements([&](ShiftAndTraceManipulator &m) { m.onMouseUp(ctx, point); });
    }
    d_->accumScope.reset();  // closes the undo step
    return true;
}

void ShiftAndTraceSelectionManipulator::setLastCrossHair(TO_AbstractToolContext *ctx, Math::Point2d const &point)
{
    std::vector<Math::Point2d> &crossHairs = AT_ShiftAndTraceUtil::crossHairList();
    if (!singleDrawing() || crossHairs.empty())
        return;
    Element const &e = *selected().begin();
    MO_ElementModule *module = e.module.get();
    if (!module)
        return;
    CC_CameraChainTransformCanvasBinder &binder = *ctx->canvasBinder();
    CC_CameraChainTransformCanvasBinder::Scope scope(binder);
    binder.setModelMatrix(e.manipulator().modelMatrix(ctx));
    binder.transformModel(AT_ShiftAndTraceUtil::renderingOffsetMatrixForFrame(module, e.frame));
    Math::Point2d model;
    if (binder.cameraTransformChain().transform(Chain::ViewFrame, point, Chain::ModelFrame, model))
        crossHairs.back() = module->sceneMetrics().fromOGL(model);
}

Math::Box2d ShiftAndTraceSelectionManipulator::Impl::selectionBounds(TO_AbstractToolContext *ctx,
                                                                     std::vector<CA_CelKey> &keys) const
{
    Math::Box2d box;
    keys.clear();
    for (Element const &e : selected()) {
        keys.push_back(e.celKey);
        ShiftAndTraceManipulator &m = e.manipulator();
        Math::Box2d const own = m.drawingBounds();
        Math::Matrix4x4 const toWorld =
            m.modelMatrix(ctx) * AT_ShiftAndTraceUtil::renderingOffsetMatrixForDrawing(e.module.get(), e.celKey);
        for (Math::Point2d const &c : {own.min(), own.max(), Math::Point2d(own.min().x, own.max().y),
                                       Math::Point2d(own.max().x, own.min().y)})
            box.Add((toWorld * Math::Point3d(c.x, c.y, 0.0)).toPoint2d());
    }
    if (box.isEmpty())
        box.Enlarge(0.0, 0.0);
    else
        box.Enlarge(0.05 * box.width(), 0.05 * box.height());
    return box;
}

void ShiftAndTraceSelectionManipulator::draw(TO_AbstractToolContext *ctx, bool pickMode)
{
    bool const single = singleDrawing();
    SC_SceneMetrics metrics;
    for (Element const &e : selected()) {
        e.manipulator().draw(ctx, pickMode, single);
        metrics = metricsOf(e);
    }
    if (selected().empty())
        d_->groupPivotValid = false;
    if (!ShiftAndTraceTool::responder()->isShowManipulator() || selected().size() < 2)
        return;
    CC_CameraChainTransformCanvasBinder &binder = *ctx->canvasBinder();
    CC_CameraChainTransformCanvasBinder::Scope scope(binder);
    binder.setModelMatrix(Math::Matrix4x4());
    if (!d_->groupDrag.active) {
        std::vector<CA_CelKey> keys;
        d_->block.boundingBox = d_->selectionBounds(ctx, keys);
        if (!d_->groupPivotValid || keys != d_->lastCelKeys) {
            d_->lastCelKeys = std::move(keys);
            d_->groupPivotValid = true;
            d_->block.pivotPoint = metrics.fromOGL(d_->block.boundingBox.GetCenter());
        }
    }
    drawHandles(ctx, d_->block, pickMode, pickingId(), selectedHandleType(), metrics, kGroupColour);
}
