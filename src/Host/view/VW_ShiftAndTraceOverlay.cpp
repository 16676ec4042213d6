#include "VW_ShiftAndTraceOverlay.h"

#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "graphic/VU_Painter.h"
#include "scene/AT_ShiftAndTraceUtil.h"
#include "scene/MO_Module.h"
#include "scene/SC_SceneMetrics.h"

namespace VW_ShiftAndTraceOverlay {

void drawPegs(VU_Painter &painter, CC_CameraChainTransformCanvasBinder &binder, MO_ElementModule &module,
              CA_CelKey const &key, int frame, Math::Matrix4x4 const &modelMatrix, bool pickMode)
{
    using namespace AT_ShiftAndTraceUtil;
    if (!pegsShown())
        return;
    ShiftAndTracePickingHandleGenerator *generator = shiftAndTracePickingHandleGenerator();
    if (pickMode && !generator)
        return;
    VS_RGBA const colour = pickMode ? generator->handleColor(&module, key, frame) : getOutlineColour();

    // The bar runs across the side of the field where it stands: along x below and above, along y
    // left and right.
    SC_SceneMetrics const &metrics = module.sceneMetrics();
    Position_t const place = shiftAndTracePegPosition();
    bool const horizontal = place == PegsBottom || place == PegsTop;
    Math::Point2d const c = getCenterPegPosition();
    Math::Vector2d const along = horizontal ? Math::Vector2d(kSidePegDistance, 0.0) : Math::Vector2d(0.0, kSidePegDistance);
    Math::Point2d const centre = metrics.toOGL(c);
    Math::Point2d const first = metrics.toOGL(c - along);
    Math::Point2d const second = metrics.toOGL(c + along);

    CC_CameraChainTransformCanvasBinder::Scope scope(binder);
    binder.setModelMatrix(displayModelMatrix(module, key, modelMatrix));
    painter.setPointReferential(VU_Painter::kSceneReferential);
    painter.setLineStrokeColor(colour);
    painter.setLineThickness(pickMode ? 5.0 : 2.0);
    painter.drawLine(first, second);
    painter.setPointFillColor(colour);
    painter.setPointStrokeColor(colour);
    painter.setPointShape(VU_Painter::SquarePoint);
    painter.setPointSize(kSidePegSize);
    painter.drawPoint(first);
    painter.drawPoint(second);
    painter.setPointShape(VU_Painter::RoundPoint);
    painter.setPointSize(kCenterPegSize);
    painter.drawPoint(centre);
}

void drawCrossHairs(VU_Painter &painter, CC_CameraChainTransformCanvasBinder &binder, MO_ElementModule &module,
                    CA_CelKey const &key, Math::Matrix4x4 const &modelMatrix)
{
    using namespace AT_ShiftAndTraceUtil;
    ShiftAndTraceAbstractSelection *selection = ShiftAndTraceAbstractSelection::instance();
    if (!crossHairsShown() || crossHairList().empty() || !selection || !selection->isSelected(&module, key))
        return;
    SC_SceneMetrics const &metrics = module.sceneMetrics();
    CC_CameraChainTransformCanvasBinder::Scope scope(binder);
    binder.setModelMatrix(displayModelMatrix(module, key, modelMatrix));
    painter.setLineStrokeColor(getOutlineColour());
    painter.setLineThickness(1.0);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    for (Math::Point2d const &p : crossHairList()) {
        // Arms of a fixed size on screen, whatever the zoom and the drawing's scale.
        Math::Point2d at;
        if (!binder.cameraTransformChain().project(Math::CameraTransformChain::ModelFrame, metrics.toOGL(p), at))
            continue;
        painter.drawLine(Math::Point2d(at.x - kCrossHairArm, at.y), Math::Point2d(at.x + kCrossHairArm, at.y));
        painter.drawLine(Math::Point2d(at.x, at.y - kCrossHairArm), Math::Point2d(at.x, at.y + kCrossHairArm));
        painter.drawCircle(at, kCrossHairArm / 2.0);
    }
    painter.setPointReferential(VU_Painter::kSceneReferential);
}

}  // namespace VW_ShiftAndTraceOverlay
