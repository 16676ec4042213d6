#include "shifttrace/ShiftAndTraceManipulator.h"

#include "bridge/ModuleEvaluation.h"
#include "shifttrace/ShiftAndTracePositionMath.h"
#include "shifttrace/ShiftAndTraceSelection.h"
#include "shifttrace/ShiftAndTraceTool.h"

using Chain = Math::CameraTransformChain;
using AT_ShiftAndTraceUtil::ShiftAndTraceAttr;
using ShiftAndTraceToolUtils::PositionData;

namespace {

// What every drag record holds: the drawing and the matrices it was pressed under.
struct DragRecord {
    double frame = -1.0;
    MO_ElementModule *module = nullptr;
    Math::Matrix4x4 modelMatrix;  // the model matrix at mouse down
    Math::Matrix4x4 viewMatrix;   // the view matrix at mouse down
};

struct MoveDrag : DragRecord {
    Math::Point2d lastPoint;  // model frame
};
struct ScaleDrag : DragRecord {
    Math::Point2d centre;     // view pixels
    Math::Point2d lastPoint;  // view pixels
};
struct RotateDrag : DragRecord {
    Math::Point2d pivot;           // OGL, the drawing's own frame
    Math::Point2d lastPoint;       // the drawing's own frame
    Math::Matrix4x4 offsetMatrix;  // at mouse down
};
struct PivotDrag : DragRecord {
    Math::Point2d lastPoint;       // the drawing's own frame
    Math::Matrix4x4 offsetMatrix;  // at mouse down
};
struct PegDrag : DragRecord {
    Math::Point3d lastPoint;  // world OGL
    Math::Point3d pegPoint;   // world OGL
};

OC_Drawing const *drawingAt(MO_ElementModule const *module, double frame)
{
    OC_Drawing const *drawing = module->oglDrawing(frame).drawing();
    if (!drawing)
        drawing = module->load(MO_BaseContext(MO_FrameKey(frame), 0)).drawing();
    return drawing;
}

} // namespace

struct ShiftAndTraceManipulator::Impl {
    HandleBlock block;  // refreshed at every draw
    MO_ElementModule *module = nullptr;  // not owned
    int frame = -1;
    MoveDrag moveDrag;
    ScaleDrag scaleDrag;
    RotateDrag rotateDrag;
    PivotDrag pivotDrag;
    PegDrag pegDrag;
    bool hasMoved = false;  // a move arrived since the last mouse down
};

ShiftAndTraceManipulator::ShiftAndTraceManipulator(MO_ElementModule *module, int frame) : d_(std::make_unique<Impl>())
{
    d_->module = module;
    d_->frame = frame;
}

ShiftAndTraceManipulator::~ShiftAndTraceManipulator() = default;

ShiftAndTraceManipulator &ShiftAndTraceSelection::SelectionElement::manipulator() const
{
    if (!manipulatorPtr)
        manipulatorPtr = UT_MakeShared<ShiftAndTraceManipulator>(module.get(), frame);
    return *manipulatorPtr;
}

MO_ElementModule *ShiftAndTraceManipulator::module() const
{
    return d_->module;
}

int ShiftAndTraceManipulator::frame() const
{
    return d_->frame;
}

Math::Matrix4x4 ShiftAndTraceManipulator::modelMatrix(TO_AbstractToolContext *ctx) const
{
    if (ctx->viewKind() == TO_AbstractToolContext::DrawingView || !d_->module)
        return AT_ShiftAndTraceUtil::drawingViewModelMatrix();
    return IKToolUtil::worldMatrix(d_->module, MO_BaseContext(MO_FrameKey(d_->frame), 0));
}

namespace {

// The view matrix a drawing of `frame` is handled under: the camera of its own frame when the view
// shows another one (an onion drawing stays in place), else the view's.
Math::Matrix4x4 viewMatrixFor(TO_AbstractToolContext *ctx, MO_ElementModule const *module, int frame)
{
    Math::Matrix4x4 view = ctx->canvasBinder()->viewMatrix();
    SC_SceneCommon *scene = module ? module->sceneCommon() : nullptr;
    if (ctx->viewKind() != TO_AbstractToolContext::DrawingView && scene &&
        SC_Frames::toInt(ctx->currentFrame()) != frame) {
        try {
            view = scene->cameraMatrix(MO_FrameKey(frame)).getInverse();
        } catch (Math::SingularMatrixError const &) {
            // a singular camera: keep the view's matrix
        }
    }
    return view;
}

// Maps a view point into the binder's model frame; false when the map cannot be made (a singular
// matrix on the way, a point that is not finite).
bool toModel(CC_CameraChainTransformCanvasBinder &binder, Math::Point2d const &view, Math::Point2d &model)
{
    return binder.cameraTransformChain().transform(Chain::ViewFrame, view, Chain::ModelFrame, model);
}

// Sets the binder for a drag step of `record`, with an extra offset over the model matrix.
void enter(CC_CameraChainTransformCanvasBinder &binder, DragRecord const &record,
           Math::Matrix4x4 const &offset = Math::Matrix4x4())
{
    binder.setViewMatrix(record.viewMatrix);
    binder.setModelMatrix(record.modelMatrix * offset);
}

// Maps the pointer into the frame of a drag step: the record's matrices with `offset` over its model
// matrix. False when the drag has no drawing or the point cannot be mapped.
bool pointerIn(CC_CameraChainTransformCanvasBinder &binder, DragRecord const &record, Math::Matrix4x4 const &offset,
               Math::Point2d const &view, Math::Point2d &model)
{
    if (!record.module)
        return false;
    enter(binder, record, offset);
    return toModel(binder, view, model);
}

} // namespace

CA_CelKey ShiftAndTraceManipulator::currentCelKey() const
{
    OC_Drawing const *drawing = d_->module ? drawingAt(d_->module, d_->frame) : nullptr;
    return drawing ? drawing->celKey() : CA_CelKey();
}

Math::Box2d ShiftAndTraceManipulator::drawingBounds() const
{
    OC_Drawing const *drawing = d_->module ? drawingAt(d_->module, d_->frame) : nullptr;
    if (!drawing)
        return Math::Box2d().Add(Math::Point2d(-0.25, -0.25)).Add(Math::Point2d(0.25, 0.25));
    Math::Box2d box = drawing->boundingBox(CC_Transformation()).asBox2d();
    if (box.isEmpty())
        box.Add(Math::Point2d(0.0, 0.0));
    if (box.isEmpty() || box.area() == 0.0)
        box.Enlarge(0.25, 0.25);
    return box;
}

namespace {

// Reads, changes and stores the shift of the drawing `record` was pressed on; emits onShiftChange
// when `notify`. Nothing without a module, an attribute or a drawing.
template <class Change>
void writeShift(DragRecord const &record, Change change, bool notify = true)
{
    if (!record.module)
        return;
    ShiftAndTraceAttr *attr = AT_ShiftAndTraceUtil::addShiftAndTrace(record.module);
    OC_Drawing const *drawing = attr ? drawingAt(record.module, record.frame) : nullptr;
    if (!drawing)
        return;
    PositionData data = attr->positionFor(drawing->celKey());
    if (!change(data, record.module->sceneMetrics()))
        return;
    attr->setPositionFor(drawing->celKey(), data);
    if (notify)
        ShiftAndTraceTool::responder()->emitOnShiftChange();
}

} // namespace

bool ShiftAndTraceManipulator::onMouseDown(TO_AbstractToolContext *ctx, GR_StylusPoint const &point)
{
    d_->hasMoved = false;
    CC_CameraChainTransformCanvasBinder &binder = *ctx->canvasBinder();
    CC_CameraChainTransformCanvasBinder::Scope scope(binder);
    auto start = [&](DragRecord &record) {
        record.module = d_->module;
        record.frame = d_->frame;
        record.modelMatrix = modelMatrix(ctx);
        record.viewMatrix = viewMatrixFor(ctx, d_->module, d_->frame);
        enter(binder, record);
    };
    MO_ElementModule *module = d_->module;
    // Made here if no paint made it yet: an attribute without shifts is no undo step and not saved.
    ShiftAndTraceAttr *attr = AT_ShiftAndTraceUtil::addShiftAndTrace(module);
    OC_Drawing const *drawing = module ? drawingAt(module, d_->frame) : nullptr;
    Math::Point2d const &at = point.position();
    // The press in the drawing's own frame: under its offset as it is at the press.
    auto startInDrawingFrame = [&](DragRecord &record, Math::Matrix4x4 &offset, Math::Point2d &lastPoint) {
        start(record);
        offset = Math::Matrix4x4();
        if (attr && drawing)
            offset = AT_ShiftAndTraceUtil::renderingOffsetMatrixForDrawing(module, drawing->celKey());
        binder.transformModel(offset);
        toModel(binder, at, lastPoint);
    };
    switch (selectedHandleType()) {
    case HandleMove:
        start(d_->moveDrag);
        toModel(binder, at, d_->moveDrag.lastPoint);
        break;
    case HandlePivot:
        startInDrawingFrame(d_->pivotDrag, d_->pivotDrag.offsetMatrix, d_->pivotDrag.lastPoint);
        break;
    case HandleRotate: {
        RotateDrag &drag = d_->rotateDrag;
        startInDrawingFrame(drag, drag.offsetMatrix, drag.lastPoint);
        drag.pivot = Math::Point2d(0.0, 0.0);
        if (attr && drawing)
            drag.pivot = ShiftAndTraceToolUtils::pivotOgl(attr->positionFor(drawing->celKey()), module->sceneMetrics());
        break;
    }
    case HandleScale: {
        ScaleDrag &drag = d_->scaleDrag;
        start(drag);
        Math::Point2d c(0.0, 0.0);
        if (attr && drawing)
            c = ShiftAndTraceToolUtils::shownPivotOgl(attr->positionFor(drawing->celKey()), module->sceneMetrics());
        binder.cameraTransformChain().transform(Chain::ModelFrame, c, Chain::ViewFrame, drag.centre);
        drag.lastPoint = at;
        break;
    }
    case HandlePeg: {
        PegDrag &drag = d_->pegDrag;
        start(drag);
        Math::Point2d w;
        toModel(binder, at, w);
        drag.lastPoint = drag.modelMatrix * Math::Point3d(w.x, w.y, 0.0);
        if (attr && drawing) {
            Math::Point2d const peg = module->sceneMetrics().toOGL(AT_ShiftAndTraceUtil::getCenterPegPosition());
            drag.pegPoint = drag.modelMatrix *
                            (AT_ShiftAndTraceUtil::renderingOffsetMatrixForDrawing(module, drawing->celKey()) *
                             Math::Point3d(peg.x, peg.y, 0.0));
        }
        break;
    }
    }
    return true;
}

namespace {

// The rotation about the centre peg that takes the peg drag from its last point to `view`.
Math::Matrix4x4 pegRotationMatrix(CC_CameraChainTransformCanvasBinder &binder, PegDrag &drag, Math::Point2d const &view)
{
    if (!drag.module)
        return Math::Matrix4x4();
    CC_CameraChainTransformCanvasBinder::Scope scope(binder);
    enter(binder, drag);
    Math::Point2d m;
    if (!toModel(binder, view, m))
        return Math::Matrix4x4();
    Math::Point3d const w = drag.modelMatrix * Math::Point3d(m.x, m.y, 0.0);
    Math::Vector3d const prev = drag.lastPoint - drag.pegPoint;
    Math::Vector3d const cur = w - drag.pegPoint;
    drag.lastPoint = w;
    double degrees = 0.0;
    if (!ShiftAndTraceToolUtils::rotationStepDegrees({prev.x, prev.y}, {cur.x, cur.y}, degrees))
        return Math::Matrix4x4();
    Math::Matrix4x4 rotation;
    rotation.translate(drag.pegPoint.x, drag.pegPoint.y, drag.pegPoint.z)
        .rotateDegrees(degrees)
        .translate(-drag.pegPoint.x, -drag.pegPoint.y, -drag.pegPoint.z);
    return rotation;
}

} // namespace

bool ShiftAndTraceManipulator::onMouseMove(TO_AbstractToolContext *ctx, std::vector<GR_StylusPoint> const &points)
{
    if (points.empty())
        return false;
    d_->hasMoved = true;
    Math::Point2d const &at = points.back().position();
    CC_CameraChainTransformCanvasBinder &binder = *ctx->canvasBinder();
    CC_CameraChainTransformCanvasBinder::Scope scope(binder);
    switch (selectedHandleType()) {
    case HandleMove: {
        MoveDrag &drag = d_->moveDrag;
        Math::Point2d p;
        if (!pointerIn(binder, drag, Math::Matrix4x4(), at, p))
            break;
        Math::Vector2d const delta = p - drag.lastPoint;
        drag.lastPoint = p;
        writeShift(drag, [&](PositionData &data, SC_SceneMetrics const &metrics) {
            ShiftAndTraceToolUtils::addMove(data, delta, metrics);
            return true;
        });
        break;
    }
    case HandleRotate: {
        RotateDrag &drag = d_->rotateDrag;
        Math::Point2d p;
        if (!pointerIn(binder, drag, drag.offsetMatrix, at, p))
            break;
        Math::Vector2d const prev = drag.lastPoint - drag.pivot;
        Math::Vector2d const cur = p - drag.pivot;
        drag.lastPoint = p;
        double degrees = 0.0;
        if (!ShiftAndTraceToolUtils::rotationStepDegrees(prev, cur, degrees))
            break;
        writeShift(drag, [&](PositionData &data, SC_SceneMetrics const &) {
            data.rotation += degrees;
            return true;
        });
        break;
    }
    case HandleScale: {
        ScaleDrag &drag = d_->scaleDrag;
        if (!drag.module)
            break;
        double const now = at.GetDistance(drag.centre);
        if (now == 0.0)
            break;
        double before = drag.centre.GetDistance(drag.lastPoint);
        if (before == 0.0)
            before = 1.0;
        double const ratio = now / before;
        drag.lastPoint = at;
        writeShift(drag, [&](PositionData &data, SC_SceneMetrics const &) {
            return ShiftAndTraceToolUtils::scaleBy(data, ratio);
        });
        break;
    }
    case HandlePivot: {
        PivotDrag &drag = d_->pivotDrag;
        Math::Point2d p;
        if (!pointerIn(binder, drag, drag.offsetMatrix, at, p))
            break;
        Math::Vector2d const delta = p - drag.lastPoint;
        drag.lastPoint = p;
        writeShift(drag, [&](PositionData &data, SC_SceneMetrics const &metrics) {
            Math::Vector3d const d = metrics.fromOGL(Math::Vector3d(delta.x, delta.y, 0.0));
            ShiftAndTraceToolUtils::movePivotKeepingImage(data, {d.x, d.y}, metrics);
            return true;
        });
        break;
    }
    case HandlePeg:
        applyTransform(ctx, pegRotationMatrix(binder, d_->pegDrag, at));
        break;
    }
    return true;
}

bool ShiftAndTraceManipulator::onMouseUp(TO_AbstractToolContext *ctx, GR_StylusPoint const &point)
{
    if (!d_->hasMoved)
        return true;
    onMouseMove(ctx, {point});
    if (ShiftAndTraceAttr *attr = AT_ShiftAndTraceUtil::addShiftAndTrace(d_->module))
        attr->makeDirty();
    return true;
}

void ShiftAndTraceManipulator::applyTransform(TO_AbstractToolContext *ctx, Math::Matrix4x4 const &transform)
{
    if (!d_->module)
        return;
    Math::Matrix4x4 const model = modelMatrix(ctx);
    Math::Matrix4x4 inverse;
    try {
        inverse = model.getInverse();
    } catch (Math::SingularMatrixError const &) {
        return;  // an element scaled to nothing: no plane of its own to carry the transform into
    }
    Math::Matrix2x3 const t = (inverse * transform * model).getTransform2d();
    CA_CelKey const key = currentCelKey();
    ShiftAndTraceAttr *attr = AT_ShiftAndTraceUtil::addShiftAndTrace(d_->module);
    if (!attr || !key.isValid())
        return;
    PositionData data = attr->positionFor(key);
    if (ShiftAndTraceToolUtils::applyPlaneTransform(data, t, d_->module->sceneMetrics()))
        attr->setPositionFor(key, data);
}

void ShiftAndTraceManipulator::draw(TO_AbstractToolContext *ctx, bool pickMode, bool showHandles)
{
    MO_ElementModule *module = d_->module;
    if (!module)
        return;
    CC_CameraChainTransformCanvasBinder &binder = *ctx->canvasBinder();
    CC_CameraChainTransformCanvasBinder::Scope scope(binder);
    binder.setModelMatrix(modelMatrix(ctx));
    binder.setViewMatrix(viewMatrixFor(ctx, module, d_->frame));

    CA_CelKey const key = currentCelKey();
    d_->block.boundingBox = drawingBounds();
    d_->block.offsetMatrix = AT_ShiftAndTraceUtil::renderingOffsetMatrixForDrawing(module, key);
    AT_ShiftAndTraceUtil::addShiftAndTrace(module);
    PositionData data;
    AT_ShiftAndTraceUtil::renderingOffsetForFrame(module, d_->frame, data);
    d_->block.pivotPoint = Math::Point2d(data.pivotX, data.pivotY);

    ShiftAndTraceToolResponder const *responder = ShiftAndTraceTool::responder();
    VS_RGBA const outline = AT_ShiftAndTraceUtil::getOutlineColour();
    if (responder->isShowOutline()) {
        CC_CameraChainTransformCanvasBinder::Scope outlineScope(binder);
        binder.transformModel(d_->block.offsetMatrix);
        if (OC_Drawing const *drawing = drawingAt(module, d_->frame)) {
            MO_OGLContext context(&binder, binder.canvas(), module->sceneCommon(),
                                  PLUG_Services::getEditionStackInterface(), d_->frame, 1, 0, 2, nullptr,
                                  Math::Box2d(), false);
            context.internal().setOutlineMode(true);
            context.internal().setOutlineColour(0xFF000000u | (std::uint32_t(outline.r) << 16) |
                                                (std::uint32_t(outline.g) << 8) | std::uint32_t(outline.b));
            drawing->draw(context);
        }
    }
    if (responder->isShowManipulator() && showHandles && !responder->isAddCrossHairMode())
        drawHandles(ctx, d_->block, pickMode, pickingId(), selectedHandleType(), module->sceneMetrics(), outline);
}
