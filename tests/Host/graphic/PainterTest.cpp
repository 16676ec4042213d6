// The painter: exact pixels of each primitive on small canvases, scene and pixel coordinates,
// the pick canvas, textured quads and refused input.
#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "graphic/VS_Canvas.h"
#include "graphic/VU_Painter.h"
#include "tool/SLB_PickEngine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <set>
#include <vector>

using Math::Point2d;
using Math::Point3d;

// Lets failures show colours as numbers.
static std::ostream &operator<<(std::ostream &os, VS_RGBA const &c)
{
    return os << "rgba(" << int(c.r) << ", " << int(c.g) << ", " << int(c.b) << ", " << int(c.a) << ")";
}

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

VS_RGBA const kNothing(0, 0, 0, 0);
VS_RGBA const kRed(255, 0, 0);
VS_RGBA const kBlue(0, 0, 255);

// A canvas of 33 by 33 pixels whose centre pixel (16, 16) is the scene origin, at 4 pixels per
// unit. Without anti-aliasing, so that every pixel is exact.
class PainterTest : public ::testing::Test {
protected:
    PainterTest() : canvas(33, 33), binder(&canvas)
    {
        canvas.setAntialiasing(false);
        EXPECT_TRUE(binder.setViewport(33, 33));
        EXPECT_TRUE(binder.setOrthographicProjection(4.0));
    }

    int countOf(VS_RGBA const &color) const
    {
        int n = 0;
        for (int y = 0; y < canvas.height(); ++y)
            for (int x = 0; x < canvas.width(); ++x)
                n += canvas.pixel(x, y) == color;
        return n;
    }

    VS_Canvas canvas;
    CC_CameraChainTransformCanvasBinder binder;
};

} // namespace

TEST_F(PainterTest, SquareAndRoundPointsCoverTheirSizeInPixels)
{
    for (int shape : {VU_Painter::SquarePoint, VU_Painter::RoundPoint}) {
        SCOPED_TRACE(shape);
        canvas.clear();
        VU_Painter painter(binder);
        ASSERT_TRUE(painter.setPointReferential(VU_Painter::kPixelReferential));
        ASSERT_TRUE(painter.setPointShape(shape));
        ASSERT_TRUE(painter.setPointSize(5.0));
        painter.setPointFillColor(kRed);
        painter.setPointStrokeColor(kRed);
        ASSERT_TRUE(painter.drawPoint(Point2d(10.0, 10.0)));

        // Five pixels across, from 8 to 12, in both shapes.
        for (int d = -2; d <= 2; ++d) {
            EXPECT_EQ(canvas.pixel(10 + d, 10), kRed) << d;
            EXPECT_EQ(canvas.pixel(10, 10 + d), kRed) << d;
        }
        EXPECT_EQ(canvas.pixel(7, 10), kNothing);
        EXPECT_EQ(canvas.pixel(13, 10), kNothing);
        EXPECT_EQ(canvas.pixel(10, 7), kNothing);
        EXPECT_EQ(canvas.pixel(10, 13), kNothing);
        // The corners tell the shapes apart.
        VS_RGBA const corner = shape == VU_Painter::SquarePoint ? kRed : kNothing;
        EXPECT_EQ(canvas.pixel(8, 8), corner);
        EXPECT_EQ(canvas.pixel(12, 12), corner);
        EXPECT_EQ(countOf(kRed), shape == VU_Painter::SquarePoint ? 25 : 21);
    }
}

TEST_F(PainterTest, PointsFillInsideARimOfTheStrokeColour)
{
    VU_Painter painter(binder);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    painter.setPointSize(7.0);
    painter.setPointFillColor(kRed);
    painter.setPointStrokeColor(kBlue);
    ASSERT_TRUE(painter.drawPoint(Point2d(10.0, 10.0)));
    EXPECT_EQ(canvas.pixel(10, 10), kRed);
    EXPECT_EQ(canvas.pixel(8, 12), kRed);
    EXPECT_EQ(canvas.pixel(7, 10), kBlue);
    EXPECT_EQ(canvas.pixel(13, 13), kBlue);
    EXPECT_EQ(canvas.pixel(6, 10), kNothing);
}

TEST_F(PainterTest, LinesRunFromEndPixelToEndPixel)
{
    VU_Painter painter(binder);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    painter.setLineStrokeColor(kBlue);
    ASSERT_TRUE(painter.setLineThickness(1.0));
    ASSERT_TRUE(painter.drawLine(Point2d(2.0, 5.0), Point2d(12.0, 5.0)));
    EXPECT_EQ(canvas.pixel(2, 5), kBlue);
    EXPECT_EQ(canvas.pixel(12, 5), kBlue);
    EXPECT_EQ(canvas.pixel(1, 5), kNothing);
    EXPECT_EQ(canvas.pixel(13, 5), kNothing);
    EXPECT_EQ(canvas.pixel(7, 4), kNothing);
    EXPECT_EQ(canvas.pixel(7, 6), kNothing);
    EXPECT_EQ(countOf(kBlue), 11);
}

TEST_F(PainterTest, ScenePointsGoThroughTheBindersMatricesAtDrawingTime)
{
    VU_Painter painter(binder);
    EXPECT_EQ(painter.pointReferential(), VU_Painter::kSceneReferential);
    painter.setPointFillColor(kRed);
    painter.setPointStrokeColor(kRed);
    ASSERT_TRUE(painter.setPointSize(1.0));
    // (1, -2) is 4 pixels right of the centre pixel and 8 down.
    ASSERT_TRUE(painter.drawPoint(Point2d(1.0, -2.0)));
    EXPECT_EQ(canvas.pixel(20, 24), kRed);

    // A model matrix set after the painter was made is the one used.
    Math::Matrix4x4 model;
    model.translate(-2.0, 0.0);
    ASSERT_TRUE(binder.setModelMatrix(model));
    ASSERT_TRUE(painter.drawPoint(Point3d(1.0, -2.0, 3.0)));
    EXPECT_EQ(canvas.pixel(12, 24), kRed);
    EXPECT_EQ(countOf(kRed), 2);
    EXPECT_EQ(painter.pointReferential(), VU_Painter::kSceneReferential);

    // Thicknesses and radii in scene units scale with the zoom: 1 unit is 4 pixels.
    canvas.clear();
    auto columnCount = [&](int x, VS_RGBA const &color) {
        int n = 0;
        for (int y = 0; y < canvas.height(); ++y)
            n += canvas.pixel(x, y) == color;
        return n;
    };
    ASSERT_TRUE(binder.setModelMatrix(Math::Matrix4x4()));
    painter.setLineStrokeColor(kBlue);
    ASSERT_TRUE(painter.setLineThickness(1.0, VU_Painter::kSceneReferential));
    ASSERT_TRUE(painter.drawLine(Point3d(-1.0, 2.0, 0.0), Point3d(1.0, 2.0, 0.0)));  // on row 8
    EXPECT_EQ(columnCount(16, kBlue), 4);
    EXPECT_EQ(canvas.pixel(16, 8), kBlue);
    EXPECT_EQ(canvas.pixel(16, 12), kNothing);
    canvas.clear();
    ASSERT_TRUE(painter.drawFilledDisc(Point2d(0.0, 0.0), 1.0, kBlue));
    EXPECT_EQ(canvas.pixel(19, 16), kBlue);
    EXPECT_EQ(canvas.pixel(21, 16), kNothing);
}

TEST_F(PainterTest, FilledDiscsCoverTheirRadiusAndCirclesOnlyTheirRim)
{
    VU_Painter painter(binder);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    ASSERT_TRUE(painter.drawFilledDisc(Point2d(15.0, 15.0), 5.0, kRed));
    EXPECT_EQ(canvas.pixel(15, 15), kRed);
    EXPECT_EQ(canvas.pixel(15, 11), kRed);
    EXPECT_EQ(canvas.pixel(18, 18), kRed);   // 4.2 from the centre
    EXPECT_EQ(canvas.pixel(11, 11), kNothing);  // 5.7 from the centre
    EXPECT_EQ(canvas.pixel(15, 21), kNothing);

    canvas.clear();
    painter.setLineStrokeColor(kBlue);
    painter.setLineThickness(1.0);
    ASSERT_TRUE(painter.drawCircle(Point2d(15.0, 15.0), 5.0));
    EXPECT_EQ(canvas.pixel(15, 15), kNothing);
    EXPECT_EQ(canvas.pixel(15, 12), kNothing);
    EXPECT_EQ(canvas.pixel(20, 15), kBlue);
    EXPECT_EQ(canvas.pixel(15, 10), kBlue);
    EXPECT_EQ(canvas.pixel(22, 15), kNothing);
}

TEST_F(PainterTest, AreasFillThenTakeTheLineAsOutline)
{
    VU_Painter painter(binder);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    painter.setLineStrokeColor(kBlue);
    painter.setLineThickness(1.0);
    ASSERT_TRUE(painter.drawQuad(Point2d(2.0, 2.0), Point2d(12.0, 2.0), Point2d(12.0, 12.0), Point2d(2.0, 12.0), kRed));
    EXPECT_EQ(canvas.pixel(7, 7), kRed);
    EXPECT_EQ(canvas.pixel(2, 7), kBlue);
    EXPECT_EQ(canvas.pixel(12, 12), kBlue);
    EXPECT_EQ(canvas.pixel(14, 7), kNothing);

    // Thickness 0: no outline at all; the fill without a colour argument is the point fill.
    canvas.clear();
    painter.setLineThickness(0.0);
    painter.setPointFillColor(kRed);
    ASSERT_TRUE(painter.drawTriangle(Point2d(2.0, 20.0), Point2d(30.0, 20.0), Point2d(16.0, 6.0)));
    EXPECT_EQ(canvas.pixel(16, 15), kRed);
    EXPECT_EQ(countOf(kBlue), 0);
    EXPECT_EQ(canvas.pixel(3, 6), kNothing);
}

TEST_F(PainterTest, ThePickCanvasHoldsOnlyExactIdColours)
{
    auto paintAll = [&](VU_Painter &painter, std::vector<VS_RGBA> &used) {
        canvas.clear();
        used.clear();
        std::uint32_t id = 41;
        auto next = [&] {
            VS_RGBA const c = SLB_PickEngine::idToColor(id++);
            used.push_back(c);
            return c;
        };
        painter.setPointReferential(VU_Painter::kSceneReferential);
        painter.setLineThickness(3.0);
        for (int shape : {0, 1}) {
            painter.setPointShape(shape);
            painter.setPointSize(9.0);
            VS_RGBA const c = next();
            painter.setPointFillColor(c);
            painter.setPointStrokeColor(c);
            painter.drawPoint(Point2d(-2.2 + 3.1 * shape, 1.7));
        }
        painter.setLineStrokeColor(next());
        painter.drawLine(Point2d(-3.9, -3.3), Point2d(3.7, 2.9));
        painter.setLineStrokeColor(next());
        painter.drawCircle(Point2d(0.3, -0.4), 2.6);
        painter.drawFilledDisc(Point2d(-1.1, -2.3), 1.3, next());
        painter.setLineStrokeColor(next());
        painter.drawTriangle(Point2d(0.2, 0.1), Point2d(3.3, -1.4), Point2d(2.1, 3.6), next());
        painter.drawQuad(Point2d(-3.4, 3.0), Point2d(-1.0, 3.9), Point2d(-0.3, 2.2), Point2d(-2.7, 1.1), next());
    };

    std::vector<VS_RGBA> used;
    canvas.setPickingMode(true);
    {
        VU_Painter painter(binder);
        paintAll(painter, used);
    }
    std::set<std::uint32_t> allowed{kNothing.value()};
    for (VS_RGBA const &c : used)
        allowed.insert(c.value());
    std::set<std::uint32_t> seen;
    for (int y = 0; y < canvas.height(); ++y)
        for (int x = 0; x < canvas.width(); ++x) {
            VS_RGBA const c = canvas.pixel(x, y);
            seen.insert(c.value());
            EXPECT_TRUE(allowed.count(c.value())) << "pixel " << x << ", " << y << " is " << c;
        }
    EXPECT_EQ(seen, allowed) << "every primitive left some pixel of its own";

    // The same painting on an anti-aliased canvas blends its edges: the switch is what keeps ids
    // exact.
    canvas.setPickingMode(false);
    canvas.setAntialiasing(true);
    VU_Painter painter(binder);
    paintAll(painter, used);
    int blended = 0;
    for (int y = 0; y < canvas.height(); ++y)
        for (int x = 0; x < canvas.width(); ++x)
            blended += !allowed.count(canvas.pixel(x, y).value());
    EXPECT_GT(blended, 0);
}

TEST_F(PainterTest, ThePickCanvasWritesTranslucentColoursWithoutBlending)
{
    canvas.setPickingMode(true);
    VU_Painter painter(binder);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    ASSERT_TRUE(painter.drawFilledDisc(Point2d(10.0, 10.0), 4.0, SLB_PickEngine::idToColor(7)));
    ASSERT_TRUE(painter.drawFilledDisc(Point2d(10.0, 10.0), 2.0, VS_RGBA(0, 0, 200, 128)));
    // Not a mix of two ids that would read as a third: a translucent pixel reads as no id.
    EXPECT_EQ(canvas.pixel(10, 10).a, 128);
    EXPECT_EQ(SLB_PickEngine::colorToId(canvas.pixel(10, 10)), SLB_PickEngine::kNoId);
    EXPECT_EQ(SLB_PickEngine::colorToId(canvas.pixel(10, 7)), 7u);
}

namespace {

// 2 by 2 pixels, rows top first: red, green / blue, white. Nearest sampling.
VS_TexturePtr fourColourTexture(VS_Canvas &canvas)
{
    VS_RGBA const pixels[4] = {kRed, VS_RGBA(0, 255, 0), kBlue, VS_RGBA(255, 255, 255)};
    return canvas.createTexture(VS_Canvas::kTexture2D, VS_Canvas::kFormatRGBA, 2, 2, 0, VS_Canvas::kFormatRGBA,
                                VS_Canvas::kTypeUnsignedByte, pixels, VS_Texture::ClampToEdge,
                                VS_Texture::ClampToEdge, VS_Texture::Nearest, VS_Texture::Nearest,
                                VS_Canvas::kNoMipmaps);
}

// The quad whose outer edges are those of pixels 0 to 9 both ways, corners clockwise on screen
// from the top left.
VU_TexturedQuad tenPixelQuad()
{
    VU_TexturedQuad quad;
    quad.corners[0] = Point2d(-0.5, -0.5);
    quad.corners[1] = Point2d(9.5, -0.5);
    quad.corners[2] = Point2d(9.5, 9.5);
    quad.corners[3] = Point2d(-0.5, 9.5);
    return quad;
}

} // namespace

TEST_F(PainterTest, TexturedQuadsShowThePictureUprightAndMirrorWithTheirCoordinates)
{
    VS_TexturePtr const texture = fourColourTexture(canvas);
    ASSERT_TRUE(texture);
    VU_Painter painter(binder);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    VU_TexturedQuad quad = tenPixelQuad();
    ASSERT_TRUE(painter.drawTexturedQuads(texture, {quad}));
    EXPECT_EQ(canvas.pixel(0, 0), kRed);
    EXPECT_EQ(canvas.pixel(9, 0), VS_RGBA(0, 255, 0));
    EXPECT_EQ(canvas.pixel(0, 9), kBlue);
    EXPECT_EQ(canvas.pixel(9, 9), VS_RGBA(255, 255, 255));
    EXPECT_EQ(canvas.pixel(10, 10), kNothing);

    // Mirrored horizontally, as a bubble on the other side of its joint.
    canvas.clear();
    for (Point2d &uv : quad.texCoords)
        uv.x = 1.0 - uv.x;
    ASSERT_TRUE(painter.drawTexturedQuads(texture, {quad}));
    EXPECT_EQ(canvas.pixel(0, 0), VS_RGBA(0, 255, 0));
    EXPECT_EQ(canvas.pixel(9, 9), kBlue);
}

TEST_F(PainterTest, TexturedQuadsAreTintedCornerByCorner)
{
    VU_Painter painter(binder);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    VU_TexturedQuad quad = tenPixelQuad();
    for (VS_RGBA &tint : quad.tints)
        tint = VS_RGBA(70, 70, 70, 255);
    // A null texture is plain white: the tint alone shows, exactly.
    ASSERT_TRUE(painter.drawTexturedQuads(nullptr, {quad}));
    EXPECT_EQ(canvas.pixel(5, 5), VS_RGBA(70, 70, 70));
    EXPECT_EQ(canvas.pixel(0, 9), VS_RGBA(70, 70, 70));

    // One red corner among blue ones: red dominates at its corner and fades across.
    canvas.clear();
    for (VS_RGBA &tint : quad.tints)
        tint = kBlue;
    quad.tints[0] = kRed;
    VS_RGBA const white[4] = {VS_RGBA(255, 255, 255), VS_RGBA(255, 255, 255), VS_RGBA(255, 255, 255),
                              VS_RGBA(255, 255, 255)};
    VS_TexturePtr const texture = canvas.createTexture(1, 7, 2, 2, 0, 7, 0, white, 2, 2, 2, 2, 0);
    ASSERT_TRUE(painter.drawTexturedQuads(texture, {quad}));
    VS_RGBA const corner = canvas.pixel(0, 0);
    EXPECT_GT(corner.r, 200);
    EXPECT_LT(corner.b, 55);
    VS_RGBA const far = canvas.pixel(9, 9);
    EXPECT_LE(far.r, 2);  // 0.05 * 0.05 of red is left at the far pixel
    EXPECT_GE(far.b, 253);
    VS_RGBA const middle = canvas.pixel(4, 4);
    EXPECT_GT(middle.r, 40);
    EXPECT_LT(middle.r, corner.r);
}

TEST_F(PainterTest, SettersRefuseBadValuesAndKeepTheirState)
{
    VU_Painter painter(binder);
    ASSERT_TRUE(painter.setPointReferential(1));
    ASSERT_TRUE(painter.setPointShape(1));
    ASSERT_TRUE(painter.setPointSize(4.0));
    ASSERT_TRUE(painter.setLineThickness(2.0, 6));

    for (int referential : {0, 7, -1, 100})
        EXPECT_FALSE(painter.setPointReferential(referential)) << referential;
    for (int shape : {-1, 2, 3})
        EXPECT_FALSE(painter.setPointShape(shape)) << shape;
    for (double size : {0.0, -1.0, kNaN, kInf, -kInf})
        EXPECT_FALSE(painter.setPointSize(size)) << size;
    for (double thickness : {-0.5, kNaN, kInf})
        EXPECT_FALSE(painter.setLineThickness(thickness)) << thickness;
    EXPECT_FALSE(painter.setLineThickness(1.0, 0));
    EXPECT_FALSE(painter.setLineThickness(1.0, 9));

    EXPECT_EQ(painter.pointReferential(), 1);
    EXPECT_EQ(painter.pointShape(), 1);
    EXPECT_EQ(painter.pointSize(), 4.0);
    EXPECT_EQ(painter.lineThickness(), 2.0);
    EXPECT_EQ(painter.lineThicknessReferential(), 6);
}

TEST_F(PainterTest, PrimitivesWithBadInputPaintNothing)
{
    struct Case {
        char const *what;
        std::function<bool(VU_Painter &)> draw;
    };
    Point2d const ok(10.0, 10.0);
    Point2d const nan(kNaN, 10.0);
    Point2d const inf(10.0, kInf);
    VU_TexturedQuad badCorner = tenPixelQuad();
    badCorner.corners[2] = nan;
    VU_TexturedQuad badCoords = tenPixelQuad();
    badCoords.texCoords[1] = Point2d(kNaN, 0.0);
    Case const cases[] = {
        {"point at NaN", [&](VU_Painter &p) { return p.drawPoint(nan); }},
        {"point of space at NaN depth", [&](VU_Painter &p) { return p.drawPoint(Point3d(1.0, 1.0, kNaN)); }},
        {"line to infinity", [&](VU_Painter &p) { return p.drawLine(ok, inf); }},
        {"line of space from NaN", [&](VU_Painter &p) { return p.drawLine(Point3d(kNaN, 0.0, 0.0), Point3d(1.0, 1.0, 0.0)); }},
        {"polyline of one point", [&](VU_Painter &p) { return p.drawPolyline({ok}); }},
        {"polygon of two points", [&](VU_Painter &p) { return p.drawPolygon({ok, Point2d(12.0, 12.0)}, kRed); }},
        {"triangle with a NaN corner", [&](VU_Painter &p) { return p.drawTriangle(ok, nan, Point2d(0.0, 0.0), kRed); }},
        {"quad with an infinite corner", [&](VU_Painter &p) { return p.drawQuad(ok, ok, inf, ok, kRed); }},
        {"circle of radius 0", [&](VU_Painter &p) { return p.drawCircle(ok, 0.0); }},
        {"circle of negative radius", [&](VU_Painter &p) { return p.drawCircle(ok, -3.0); }},
        {"disc of NaN radius", [&](VU_Painter &p) { return p.drawFilledDisc(ok, kNaN, kRed); }},
        {"disc of infinite radius", [&](VU_Painter &p) { return p.drawFilledDisc(ok, kInf, kRed); }},
        {"disc at NaN", [&](VU_Painter &p) { return p.drawFilledDisc(nan, 3.0, kRed); }},
        {"textured quad with a NaN corner", [&](VU_Painter &p) { return p.drawTexturedQuads(nullptr, {tenPixelQuad(), badCorner}); }},
        {"textured quad with NaN coordinates", [&](VU_Painter &p) { return p.drawTexturedQuads(nullptr, {badCoords}); }},
    };

    VU_Painter painter(binder);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    painter.setLineStrokeColor(kBlue);
    painter.setPointFillColor(kRed);
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        canvas.clear();
        EXPECT_FALSE(c.draw(painter));
        EXPECT_EQ(countOf(kNothing), 33 * 33);
    }
}

TEST_F(PainterTest, ShapesReachingFarOutsideTheViewPaintOnlyWhatTheyCover)
{
    VU_Painter painter(binder);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    painter.setLineStrokeColor(kBlue);
    painter.setLineThickness(1.0);
    ASSERT_TRUE(painter.drawLine(Point2d(16.0, -1e9), Point2d(16.0, 1e9)));
    EXPECT_EQ(countOf(kBlue), 33);
    EXPECT_EQ(canvas.pixel(16, 0), kBlue);
    EXPECT_EQ(canvas.pixel(16, 32), kBlue);

    canvas.clear();
    painter.setLineThickness(0.0);
    painter.drawTriangle(Point2d(-1e12, -1e12), Point2d(-1e12 + 5.0, -1e12), Point2d(-1e12, -1e12 + 5.0), kRed);
    EXPECT_EQ(countOf(kNothing), 33 * 33);
    painter.drawTriangle(Point2d(-1e12, -1e12), Point2d(1e12, -1e12), Point2d(0.0, 1e12), kRed);
    EXPECT_EQ(countOf(kRed), 33 * 33);
}

TEST_F(PainterTest, NothingIsPaintedWithoutACanvasOrAViewport)
{
    // Scene coordinates need a viewport; pixels do not.
    CC_CameraChainTransformCanvasBinder unsized(&canvas);
    VU_Painter painter(unsized);
    EXPECT_FALSE(painter.drawPoint(Point2d(0.0, 0.0)));
    EXPECT_FALSE(painter.drawFilledDisc(Point2d(0.0, 0.0), 1.0, kRed));
    EXPECT_EQ(countOf(kNothing), 33 * 33);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    EXPECT_TRUE(painter.drawPoint(Point2d(3.0, 3.0)));

    CC_CameraChainTransformCanvasBinder blind;
    blind.setViewport(33, 33);
    VU_Painter nowhere(blind);
    nowhere.setPointReferential(VU_Painter::kPixelReferential);
    EXPECT_FALSE(nowhere.drawPoint(Point2d(3.0, 3.0)));
    EXPECT_FALSE(nowhere.drawTexturedQuads(nullptr, {tenPixelQuad()}));

    // A pick canvas takes no textures.
    canvas.clear();
    canvas.setPickingMode(true);
    EXPECT_FALSE(painter.drawTexturedQuads(nullptr, {tenPixelQuad()}));
    EXPECT_EQ(countOf(kNothing), 33 * 33);
}

TEST(VS_Canvas, TexturesRefuseArgumentsOutsideTheirConstants)
{
    VS_Canvas canvas(4, 4);
    VS_RGBA const pixels[4] = {kRed, kRed, kRed, kRed};
    struct Case {
        char const *what;
        int args[12];  // target, internal format, width, height, border, format, type, wrapS, wrapT, min, mag, mipmaps
        bool withPixels;
    };
    Case const cases[] = {
        {"target 0", {0, 7, 2, 2, 0, 7, 0, 2, 2, 2, 2, 0}, true},
        {"internal format 6", {1, 6, 2, 2, 0, 7, 0, 2, 2, 2, 2, 0}, true},
        {"format 6", {1, 7, 2, 2, 0, 6, 0, 2, 2, 2, 2, 0}, true},
        {"width 0", {1, 7, 0, 2, 0, 7, 0, 2, 2, 2, 2, 0}, true},
        {"negative height", {1, 7, 2, -2, 0, 7, 0, 2, 2, 2, 2, 0}, true},
        {"border 1", {1, 7, 2, 2, 1, 7, 0, 2, 2, 2, 2, 0}, true},
        {"type 1", {1, 7, 2, 2, 0, 7, 1, 2, 2, 2, 2, 0}, true},
        {"wrap 3", {1, 7, 2, 2, 0, 7, 0, 3, 2, 2, 2, 0}, true},
        {"filter 0", {1, 7, 2, 2, 0, 7, 0, 2, 2, 2, 0, 0}, true},
        {"mipmaps 1", {1, 7, 2, 2, 0, 7, 0, 2, 2, 2, 2, 1}, true},
        {"no pixels", {1, 7, 2, 2, 0, 7, 0, 2, 2, 2, 2, 0}, false},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        int const *a = c.args;
        EXPECT_FALSE(canvas.createTexture(a[0], a[1], a[2], a[3], a[4], a[5], a[6], c.withPixels ? pixels : nullptr,
                                          a[7], a[8], a[9], a[10], a[11]));
    }
    VS_TexturePtr const texture = canvas.createTexture(1, 7, 2, 2, 0, 7, 0, pixels, 2, 2, 2, 2, 0);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->width(), 2);
    EXPECT_EQ(texture->sample(0.5, 0.5, false), kRed);
}

// A batch shares one QPainter between primitives; what they paint must not depend on it. The
// sequence mixes a textured quad (which moves the QPainter's transform) with translucent areas,
// outlines and points, anti-aliased, in scene and pixel coordinates, so that a state left behind
// by one primitive shows in the next.
TEST_F(PainterTest, ABatchPaintsTheSamePixelsAsPrimitivesPaintedOneByOne)
{
    canvas.setAntialiasing(true);
    VS_TexturePtr const texture = fourColourTexture(canvas);
    ASSERT_TRUE(texture);
    auto paintSequence = [&](VU_Painter &painter) {
        painter.setPointReferential(VU_Painter::kPixelReferential);
        VU_TexturedQuad quad = tenPixelQuad();
        quad.corners[2] = Point2d(12.3, 11.1);  // not a rectangle: a real projective map
        EXPECT_TRUE(painter.drawTexturedQuads(texture, {quad}));
        painter.setLineStrokeColor(VS_RGBA(0, 0, 0, 200));
        painter.setLineThickness(1.5);
        EXPECT_TRUE(painter.drawQuad(Point2d(3.2, 4.7), Point2d(20.1, 2.3), Point2d(25.4, 18.9), Point2d(6.6, 22.2),
                                     VS_RGBA(40, 200, 90, 128)));
        EXPECT_TRUE(painter.drawLine(Point2d(0.3, 30.2), Point2d(31.7, 1.4)));
        painter.setPointReferential(VU_Painter::kSceneReferential);
        EXPECT_TRUE(painter.drawFilledDisc(Point2d(1.3, -0.6), 2.2, VS_RGBA(200, 30, 30, 160)));
        EXPECT_TRUE(painter.drawCircle(Point2d(-1.1, 1.7), 1.4));
        painter.setPointShape(VU_Painter::RoundPoint);
        painter.setPointSize(6.0);
        painter.setPointFillColor(kBlue);
        painter.setPointStrokeColor(VS_RGBA(255, 255, 0, 255));
        EXPECT_TRUE(painter.drawPoint(Point3d(2.4, 2.6, 0.0)));
        EXPECT_TRUE(painter.drawTriangle(Point2d(-3.0, -3.0), Point2d(-1.0, -3.5), Point2d(-2.2, -1.2),
                                         VS_RGBA(0, 0, 0, 90)));
    };

    {
        VU_Painter painter(binder);
        paintSequence(painter);
    }
    QImage const oneByOne = canvas.image().copy();
    ASSERT_GT(countOf(kNothing), 0);
    ASSERT_LT(countOf(kNothing), canvas.width() * canvas.height() / 2);

    canvas.clear();
    VU_Painter batched(binder);
    {
        VU_Painter::Batch const outer(batched);
        VU_Painter::Batch const inner(batched);  // batches nest
        paintSequence(batched);
    }
    EXPECT_TRUE(canvas.image() == oneByOne);

    // Once the batch has ended, another painter can paint on the canvas again, while the batched
    // painter still lives.
    VU_Painter other(binder);
    other.setPointReferential(VU_Painter::kPixelReferential);
    ASSERT_TRUE(other.drawFilledDisc(Point2d(30.0, 30.0), 2.0, kRed));
    EXPECT_EQ(canvas.pixel(30, 30), kRed);
}

// The canvas going to picking mode within a batch takes effect at the next primitive: it is
// written without blending, as it would be by a painter of its own.
TEST_F(PainterTest, ABatchFollowsTheCanvasIntoPickingMode)
{
    VU_Painter painter(binder);
    VU_Painter::Batch const batch(painter);
    painter.setPointReferential(VU_Painter::kPixelReferential);
    painter.setLineThickness(0.0);
    EXPECT_TRUE(painter.drawQuad(Point2d(0, 0), Point2d(9, 0), Point2d(9, 9), Point2d(0, 9), kRed));
    canvas.setPickingMode(true);
    VS_RGBA const translucent(0, 0, 255, 100);
    EXPECT_TRUE(painter.drawQuad(Point2d(0, 0), Point2d(4, 0), Point2d(4, 4), Point2d(0, 4), translucent));
    EXPECT_EQ(canvas.pixel(2, 2), translucent);
    EXPECT_EQ(canvas.pixel(7, 7), kRed);
}
