#include "shifttrace/ShiftAndTraceManipulatorBase.h"

#include "shifttrace/ShiftAndTracePositionMath.h"

#include "graphic/VU_Painter.h"

#include <cmath>

namespace {

using Chain = Math::CameraTransformChain;

VS_RGBA const kSelectedHandle(0, 255, 255, 255);  // cyan
VS_RGBA const kHandle(0, 0, 255, 255);  // blue

void setPointColour(VU_Painter &painter, VS_RGBA const &colour)
{
    painter.setPointFillColor(colour);
    painter.setPointStrokeColor(colour);
}

} // namespace

ShiftAndTraceManipulatorBase::ShiftAndTraceManipulatorBase() : SLB_SelectablePickAdaptor(kHandleCount) {}

ShiftAndTraceManipulatorBase::~ShiftAndTraceManipulatorBase() = default;

void ShiftAndTraceManipulatorBase::resetSelectedHandle()
{
    selectedHandleType_ = HandleMove;
}

UT_SharedPtr<SLB_SelectableDescriptor> ShiftAndTraceManipulatorBase::scanHits(std::uint32_t id, bool commit,
                                                                              QFlags<Qt::KeyboardModifier>)
{
    std::uint32_t const base = pickingId();
    if (id >= base && id < base + static_cast<std::uint32_t>(nbHandles())) {
        auto const handle = static_cast<HandleType_t>(id - base);
        if (commit)
            selectedHandleType_ = handle;
        return UT_MakeShared<ShiftAndTraceSelectable>(handle);
    }
    if (commit)
        selectedHandleType_ = HandleMove;
    return nullptr;
}

void ShiftAndTraceManipulatorBase::drawHandles(TO_AbstractToolContext *ctx, HandleBlock const &block, bool pickMode,
                                               std::uint32_t base, HandleType_t selected,
                                               SC_SceneMetrics const &metrics, VS_RGBA const &outline)
{
    CC_CameraChainTransformCanvasBinder *binder = ctx->canvasBinder();
    if (!binder || block.boundingBox.isEmpty())
        return;
    CC_CameraChainTransformCanvasBinder::Scope scope(*binder);
    binder->transformModel(block.offsetMatrix);
    Chain const &chain = binder->cameraTransformChain();
    Math::Point2d o, x;
    if (!chain.transform(Chain::ModelFrame, Math::Point2d(0, 0), Chain::ViewFrame, o) ||
        !chain.transform(Chain::ModelFrame, Math::Point2d(1, 0), Chain::ViewFrame, x))
        return;
    double const ppu = o.GetDistance(x);  // view pixels per unit of the block's space
    if (ppu == 0.0 || !std::isfinite(ppu))
        return;

    Math::Box2d const &box = block.boundingBox;
    Math::Point2d const a(box.min().x, box.min().y), b(box.min().x, box.max().y);
    Math::Point2d const c(box.max().x, box.max().y), d(box.max().x, box.min().y);
    Math::Point2d const mid(c.x, (c.y + d.y) / 2.0);
    Math::Point2d const knob(mid.x + 20.0 / ppu, mid.y);

    VU_Painter painter(*binder);
    if (!pickMode) {
        painter.setLineStrokeColor(outline);
        painter.drawLine(a, b);
        painter.drawLine(b, c);
        painter.drawLine(c, d);
        painter.drawLine(d, a);
        painter.drawLine(mid, knob);
    }
    auto colourOf = [&](HandleType_t handle) {
        if (pickMode)
            return SLB_PickEngine::idToColor(base + static_cast<std::uint32_t>(handle));
        return handle == selected ? kSelectedHandle : kHandle;
    };

    painter.setPointShape(1);
    painter.setPointSize(10);
    setPointColour(painter, colourOf(HandlePivot));
    painter.drawPoint(ShiftAndTraceToolUtils::fieldToOgl(block.pivotPoint, metrics));

    painter.setPointSize(pickMode ? 10 : 7);
    setPointColour(painter, colourOf(HandleRotate));
    painter.drawPoint(knob);

    painter.setPointShape(0);
    if (pickMode) {
        // Invisible zones just outside each corner that rotate.
        static double const k = 5.125 * std::sqrt(2.0);
        double const e = k / ppu;
        painter.setPointSize(20);
        painter.drawPoint(Math::Point2d(a.x - e, a.y - e));
        painter.drawPoint(Math::Point2d(b.x - e, b.y + e));
        painter.drawPoint(Math::Point2d(c.x + e, c.y + e));
        painter.drawPoint(Math::Point2d(d.x + e, d.y - e));
        painter.setPointSize(10);
    }
    setPointColour(painter, colourOf(HandleScale));
    for (Math::Point2d const &corner : {a, b, c, d})
        painter.drawPoint(corner);
}
