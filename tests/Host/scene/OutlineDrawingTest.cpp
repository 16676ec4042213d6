// A drawing painting itself into a drawing context, as it is and as a one-colour outline.
#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "graphic/VS_Canvas.h"
#include "scene/CA_Drawing.h"
#include "scene/MO_Context.h"

#include <gtest/gtest.h>

namespace {

// A square polygon of side 2 (red fill, black stroke) and a short open line, on a 33 by 33
// canvas at 4 pixels per unit: the square covers pixels 12 to 20.
class DrawingIntoContext : public ::testing::Test {
protected:
    DrawingIntoContext()
        : canvas(33, 33), binder(&canvas),
          drawing(CA_CelKey(QStringLiteral("E"), QStringLiteral("1")),
                  {{OC_VectorShape::Kind::Polygon, {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}, QColor(0, 0, 0), QColor(255, 0, 0), 1.0},
                   {OC_VectorShape::Kind::Polyline, {{-3, 3}, {3, 3}}, QColor(0, 0, 255), QColor(0, 0, 0, 0), 1.0}})
    {
        canvas.setAntialiasing(false);
        binder.setViewport(33, 33);
        binder.setOrthographicProjection(4.0);
        canvas.clear(VS_RGBA(255, 255, 255));
    }
    MO_OGLContext context(int outlineThickness = 2)
    {
        return MO_OGLContext(&binder, &canvas, nullptr, nullptr, 1.0, 1, 0, outlineThickness, nullptr, Math::Box2d(), false);
    }

    VS_Canvas canvas;
    CC_CameraChainTransformCanvasBinder binder;
    OC_Drawing drawing;
};

TEST_F(DrawingIntoContext, AsItIsTheShapesAreFilledAndStrokedInTheirColours)
{
    MO_OGLContext ctx = context();
    drawing.draw(ctx);
    EXPECT_EQ(canvas.pixel(16, 16), VS_RGBA(255, 0, 0));  // inside the square
    EXPECT_EQ(canvas.pixel(16, 4), VS_RGBA(0, 0, 255));   // on the line at y = 3
}

TEST_F(DrawingIntoContext, AsAnOutlineEveryShapeIsStrokedInTheOutlineColourAndNothingIsFilled)
{
    MO_OGLContext ctx = context();
    ctx.internal().setOutlineMode(true);
    ctx.internal().setOutlineColour(0xFF00A0FFu);
    drawing.draw(ctx);
    VS_RGBA const outline(0x00, 0xA0, 0xFF);
    EXPECT_EQ(canvas.pixel(16, 16), VS_RGBA(255, 255, 255));  // not filled
    EXPECT_EQ(canvas.pixel(12, 16), outline);                 // the square's left side
    EXPECT_EQ(canvas.pixel(16, 20), outline);                 // its bottom side: the polygon is closed
    EXPECT_EQ(canvas.pixel(16, 4), outline);                  // the open line too
}

TEST_F(DrawingIntoContext, WithoutABinderNothingIsPainted)
{
    MO_OGLContext ctx(nullptr, &canvas, nullptr, nullptr, 1.0, 1, 0, 2, nullptr, Math::Box2d(), false);
    drawing.draw(ctx);
    for (int y = 0; y < 33; ++y)
        for (int x = 0; x < 33; ++x)
            ASSERT_EQ(canvas.pixel(x, y), VS_RGBA(255, 255, 255)) << x << ", " << y;
}

}  // namespace
