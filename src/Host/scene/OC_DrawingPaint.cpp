// OC_Drawing::draw: a drawing painting itself into a drawing context.
#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "graphic/VU_Painter.h"
#include "scene/CA_Drawing.h"
#include "scene/MO_Context.h"

namespace {

VS_RGBA rgba(QColor const &c)
{
    return VS_RGBA(std::uint8_t(c.red()), std::uint8_t(c.green()), std::uint8_t(c.blue()), std::uint8_t(c.alpha()));
}

VS_RGBA fromArgb(std::uint32_t argb)
{
    return VS_RGBA(std::uint8_t(argb >> 16), std::uint8_t(argb >> 8), std::uint8_t(argb), std::uint8_t(argb >> 24));
}

}  // namespace

void OC_Drawing::draw(MO_OGLContext &context) const
{
    CC_CameraChainTransformCanvasBinder *binder = context.binder();
    if (!binder)
        return;
    VU_Painter painter(*binder);
    bool const outline = context.internal().mode() == MO_OGLInternalContext::Mode::Outline;
    VS_RGBA const outlineColour = fromArgb(context.internal().outlineColour());
    for (OC_VectorShape const &shape : shapes_) {
        bool const closed = shape.kind == OC_VectorShape::Kind::Polygon;
        if (outline) {
            painter.setLineThickness(context.outlineThickness());
            painter.setLineStrokeColor(outlineColour);
            std::vector<Math::Point2d> points = shape.points;
            if (closed && !points.empty())
                points.push_back(points.front());
            painter.drawPolyline(points);
            continue;
        }
        painter.setLineThickness(shape.thickness * context.lineScale());
        painter.setLineStrokeColor(rgba(shape.stroke));
        if (closed)
            painter.drawPolygon(shape.points, rgba(shape.fill));
        else
            painter.drawPolyline(shape.points);
    }
}
