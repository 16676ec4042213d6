// The IK tool's drawing primitives, painted into a small canvas and read back pixel by pixel at
// places computed from the camera chain.
#include "iktool/IKToolRendering.h"

#include "iktool/IKPreferences.h"

#include <gtest/gtest.h>

#include <limits>

using namespace IKToolRendering;
using Math::Point2d;
using Math::Point3d;

namespace {

VS_RGBA const kFill(200, 150, 100);
VS_RGBA const kLine(10, 20, 30);
VS_RGBA const kHalo(0, 0, 255);
VS_RGBA const kTransparent(0, 0, 0, 0);

bool same(VS_RGBA const &a, VS_RGBA const &b) { return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a; }

::testing::AssertionResult pixelIs(VS_Canvas const &canvas, Point2d const &at, VS_RGBA const &want)
{
    VS_RGBA const got = canvas.pixel(int(std::lround(at.x)), int(std::lround(at.y)));
    if (same(got, want))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "pixel (" << at.x << ", " << at.y << ") is " << int(got.r) << ","
                                         << int(got.g) << "," << int(got.b) << "," << int(got.a) << ", expected "
                                         << int(want.r) << "," << int(want.g) << "," << int(want.b) << ","
                                         << int(want.a);
}

// A view of `width` by `height` pixels, one pixel per scene unit, scene origin in the middle.
struct Scene {
    Scene(int width = 201, int height = 201) : canvas(width, height), binder(&canvas), painter(binder)
    {
        canvas.setAntialiasing(false);
        binder.setViewport(width, height);
        binder.setOrthographicProjection(1.0);
    }
    Point2d pixelOf(Point3d const &p) const
    {
        Point2d out;
        binder.cameraTransformChain().project(Math::CameraTransformChain::ModelFrame, p, out);
        return out;
    }
    // The scene point that lands on pixel `p`.
    Point3d sceneAt(Point2d const &p) const
    {
        Point2d const origin = pixelOf(Point3d(0, 0, 0));
        return Point3d(p.x - origin.x, origin.y - p.y, 0.0);
    }
    VS_Canvas canvas;
    CC_CameraChainTransformCanvasBinder binder;
    VU_Painter painter;
};

RenderSettings jointSettings(bool picking = false)
{
    RenderSettings s(picking);
    s.jointFillColor = kFill;
    s.jointLineColor = kLine;
    s.haloColor = kHalo;
    s.mobilityRatio = 1.0;
    s.holdPositionRatio = 1.0;
    return s;
}

}  // namespace

TEST(IKToolRenderingTest, SettingsStartWithTheDocumentedValues)
{
    RenderSettings const s(true);
    EXPECT_TRUE(s.picking);
    EXPECT_EQ(s.jointRadius, 11);
    EXPECT_DOUBLE_EQ(s.boneApex, 0.125);
    EXPECT_EQ(s.boneHalfWidth, 8);
    EXPECT_TRUE(s.reservedFlag);
    EXPECT_TRUE(same(s.gaugeColor, VS_RGBA(0, 0, 255, 255)));
    EXPECT_TRUE(same(s.haloColor, VS_RGBA(0, 0, 255, 255)));
    EXPECT_TRUE(s.darkBubble);
    EXPECT_FALSE(s.showApplyAltogether);
}

TEST(IKToolRenderingTest, JointDiscShadesItsFillByMobilityAndHalosWhenSelected)
{
    Scene scene;
    RenderSettings s = jointSettings();
    Point3d const at(0, 0, 0);
    Point2d const p = scene.pixelOf(at);

    drawJoint(scene.binder, s, scene.painter, at, false);
    EXPECT_TRUE(pixelIs(scene.canvas, p, kFill));
    EXPECT_TRUE(pixelIs(scene.canvas, p + Math::Vector2d(s.jointRadius + 3, 0), kTransparent));
    EXPECT_EQ(scene.painter.pointReferential(), VU_Painter::kSceneReferential);

    // Mobility 0: the fill darkened to a fifth.
    scene.canvas.clear();
    s.mobilityRatio = 0.0;
    drawJoint(scene.binder, s, scene.painter, at, false);
    EXPECT_TRUE(pixelIs(scene.canvas, p, VS_RGBA(40, 30, 20)));

    // Selected: the halo shows between the inner disc (r - 2) and the white ring (r + 2).
    scene.canvas.clear();
    s.mobilityRatio = 1.0;
    drawJoint(scene.binder, s, scene.painter, at, true);
    EXPECT_TRUE(pixelIs(scene.canvas, p, kFill));
    EXPECT_TRUE(pixelIs(scene.canvas, p + Math::Vector2d(s.jointRadius, 0), kHalo));
}

TEST(IKToolRenderingTest, HoldPositionJointIsASquareAndABlockerAddsARedTriangle)
{
    Scene scene;
    RenderSettings s = jointSettings();
    s.holdPosition = true;
    s.holdPositionRatio = 0.5;
    s.blocker = true;
    Point3d const at(0, 0, 0);
    Point2d const p = scene.pixelOf(at);
    int const r = s.jointRadius;
    drawJoint(scene.binder, s, scene.painter, at, false);
    // Half way between the fill and its fifth: 120, 90, 60.
    EXPECT_TRUE(pixelIs(scene.canvas, p, VS_RGBA(120, 90, 60)));
    // A corner of the square lies outside a disc of the same radius.
    EXPECT_TRUE(pixelIs(scene.canvas, p + Math::Vector2d(r - 2, r - 2), VS_RGBA(120, 90, 60)));
    // The triangle reaches out to 2r on each side, just above its base.
    EXPECT_TRUE(pixelIs(scene.canvas, p + Math::Vector2d(1.5 * r, r - 2), VS_RGBA(255, 0, 0)));
    EXPECT_TRUE(pixelIs(scene.canvas, p + Math::Vector2d(1.5 * r, -r), kTransparent));
    EXPECT_EQ(scene.painter.pointReferential(), VU_Painter::kSceneReferential);
}

TEST(IKToolRenderingTest, PickedJointIsAPlainDiscInItsIdColour)
{
    Scene scene;
    scene.canvas.setPickingMode(true);
    RenderSettings s = jointSettings(true);
    s.blocker = true;  // ignored when picking
    Point3d const at(20, -10, 0);
    Point2d const p = scene.pixelOf(at);
    drawJoint(scene.binder, s, scene.painter, at, true);
    EXPECT_TRUE(pixelIs(scene.canvas, p, kFill));
    EXPECT_TRUE(pixelIs(scene.canvas, p + Math::Vector2d(s.jointRadius - 2, 0), kFill));
    EXPECT_TRUE(pixelIs(scene.canvas, p + Math::Vector2d(1.5 * s.jointRadius, s.jointRadius - 2), kTransparent));
}

TEST(IKToolRenderingTest, BoneIsAKiteWidestAtItsApexBetweenTheJointRims)
{
    Scene scene;
    RenderSettings s(false);
    s.boneLineColor = kLine;
    s.boneFillColor = kFill;
    Point3d const from(-60, 0, 0), to(60, 0, 0);
    drawBone(scene.binder, s, scene.painter, from, to);
    Point2d const a = scene.pixelOf(from) + Math::Vector2d(s.jointRadius, 0);
    Point2d const b = scene.pixelOf(to) - Math::Vector2d(s.jointRadius, 0);
    Point2d const apex = a + (b - a) * s.boneApex;
    // Just past the apex, beside the line drawn across it.
    EXPECT_TRUE(pixelIs(scene.canvas, apex + Math::Vector2d(2, s.boneHalfWidth - 2), kFill));
    EXPECT_TRUE(pixelIs(scene.canvas, apex + Math::Vector2d(2, -(s.boneHalfWidth - 2)), kFill));
    EXPECT_TRUE(pixelIs(scene.canvas, apex + Math::Vector2d(0, s.boneHalfWidth + 2), kTransparent));
    EXPECT_TRUE(pixelIs(scene.canvas, apex + Math::Vector2d(0, s.boneHalfWidth - 2), kLine));
    // Near the child the kite is thin; inside the parent's rim nothing is drawn.
    EXPECT_TRUE(pixelIs(scene.canvas, b + Math::Vector2d(-10, 4), kTransparent));
    EXPECT_TRUE(pixelIs(scene.canvas, a - Math::Vector2d(3, 0), kTransparent));
    EXPECT_EQ(scene.painter.pointReferential(), VU_Painter::kSceneReferential);
}

TEST(IKToolRenderingTest, HandleBoneIsANarrowRectangleWithSwappedColours)
{
    Scene scene;
    RenderSettings s(false);
    s.boneLineColor = kLine;
    s.boneFillColor = kFill;
    s.handleBone = true;
    drawBone(scene.binder, s, scene.painter, Point3d(-60, 0, 0), Point3d(60, 0, 0));
    Point2d const near_b = scene.pixelOf(Point3d(40, 0, 0));
    // Full width (0.75 of the half width, that is 6) right up to the child's rim, filled in the line colour.
    EXPECT_TRUE(pixelIs(scene.canvas, near_b + Math::Vector2d(0, 4), kLine));
    EXPECT_TRUE(pixelIs(scene.canvas, near_b + Math::Vector2d(0, 8), kTransparent));
}

TEST(IKToolRenderingTest, OrientationGaugeGrowsWithThePercentAndGhostsHaveNone)
{
    VS_RGBA const gauge(0, 0, 255);
    for (bool ghost : {false, true}) {
        Scene scene;
        RenderSettings s(false);
        s.boneLineColor = kLine;
        s.boneFillColor = kFill;
        s.holdOrientation = true;
        s.holdOrientationPercent = 50.0;
        s.ghost = ghost;
        drawBone(scene.binder, s, scene.painter, Point3d(-60, 0, 0), Point3d(60, 0, 0));
        Point2d const a = scene.pixelOf(Point3d(-49, 0, 0));
        Point2d const b = scene.pixelOf(Point3d(49, 0, 0));
        Point2d const m = a + (b - a) * s.boneApex;
        Point2d const gaugeEnd = m + (b - m) * 0.5;
        // On the gauge, and past its end where only the thin bone line runs.
        EXPECT_EQ(same(scene.canvas.pixel(int(gaugeEnd.x) - 3, int(gaugeEnd.y) + 1), gauge), !ghost) << ghost;
        EXPECT_FALSE(same(scene.canvas.pixel(int(gaugeEnd.x) + 10, int(gaugeEnd.y) + 1), gauge)) << ghost;
    }
}

TEST(IKToolRenderingTest, BonesThatDoNotReachPastTheJointRadiusDrawNothing)
{
    Scene scene;
    RenderSettings s(false);
    s.boneLineColor = kLine;
    s.boneFillColor = kFill;
    drawBone(scene.binder, s, scene.painter, Point3d(0, 0, 0), Point3d(s.jointRadius, 0, 0));
    QImage blank(scene.canvas.image().size(), scene.canvas.image().format());
    blank.fill(Qt::transparent);
    EXPECT_EQ(scene.canvas.image(), blank);
}

TEST(IKToolRenderingTest, PointsThatAreNotFiniteDrawNothingAndKeepTheSceneReferential)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const inf = std::numeric_limits<double>::infinity();
    Point3d const bad[] = {{nan, 0, 0}, {0, nan, 0}, {inf, 0, 0}, {0, -inf, 0}};
    for (Point3d const &p : bad) {
        Scene scene;
        RenderSettings s = jointSettings();
        s.boneLineColor = kLine;
        s.boneFillColor = kFill;
        s.blocker = true;
        drawJoint(scene.binder, s, scene.painter, p, true);
        drawBone(scene.binder, s, scene.painter, p, Point3d(50, 50, 0));
        drawBone(scene.binder, s, scene.painter, Point3d(-50, -50, 0), p);
        drawConstellation(scene.binder, s, scene.painter, p);
        QImage blank(scene.canvas.image().size(), scene.canvas.image().format());
        blank.fill(Qt::transparent);
        EXPECT_EQ(scene.canvas.image(), blank) << p.x << " " << p.y;
        EXPECT_EQ(scene.painter.pointReferential(), VU_Painter::kSceneReferential);
    }
}

TEST(IKToolRenderingTest, StylesReadTheirOwnPreferences)
{
    RenderingStyle const manipulation(7);
    SetupRenderingStyle const setup(7);
    InterpolationRenderingStyle const ghost(7, VS_RGBA(1, 2, 3, 40), VS_RGBA(4, 5, 6, 50));
    EXPECT_EQ(manipulation.boneThickness(), 7);
    EXPECT_TRUE(manipulation.bonesInPickPass());
    EXPECT_FALSE(setup.bonesInPickPass());
    EXPECT_FALSE(ghost.bonesInPickPass());
    EXPECT_EQ(setup.boneThickness(), IKPreferences::setupBoneThickness());
    EXPECT_EQ(ghost.boneThickness(), IKPreferences::interpolationBoneThickness());
    EXPECT_EQ(manipulation.jointSize(true), IKPreferences::jointPickSize());
    EXPECT_EQ(manipulation.jointSize(false), IKPreferences::jointSize());
    EXPECT_EQ(setup.jointSize(true), IKPreferences::setupJointPickSize());
    EXPECT_EQ(ghost.jointSize(true), IKPreferences::interpolationJointSize());
    EXPECT_TRUE(same(setup.noModuleJointColor(), IKPreferences::setupExtraColor()));
    EXPECT_TRUE(same(manipulation.noModuleJointColor(), IKPreferences::extraColor()));
    EXPECT_TRUE(same(ghost.boneColor(), VS_RGBA(1, 2, 3, 40)));
    EXPECT_TRUE(same(ghost.jointColor(), VS_RGBA(1, 2, 3, 40)));
    EXPECT_TRUE(same(ghost.selectedJointColor(), VS_RGBA(4, 5, 6, 50)));
    EXPECT_TRUE(same(ghost.jointFillColor(), VS_RGBA(4, 5, 6, 50)));
}

namespace {

// The icons of the source tree, loaded once for the whole test program.
void useProjectIcons(VS_Canvas &canvas)
{
    PLUG_Services::setPluginPath("AnimationTool", ANIM_SOURCE_DIR);
    prepareTextures(&canvas);
}

RenderSettings menuSettings(bool picking)
{
    RenderSettings s(picking);
    for (int i = 0; i < 9; ++i)
        s.itemColors[i] = VS_RGBA(std::uint8_t(10 + 20 * i), 1, 2);
    s.itemFlags[0] = true;   // mobile: its slider shows in the pick pass
    s.itemFlags[1] = false;  // hold position off: its slider is left out of the pick pass
    s.sliderValues[0] = 0.25f;
    s.showApplyAltogether = true;
    return s;
}

}  // namespace

TEST(IKToolRenderingTest, TexturesComeFromTheIconFilesOnceForTheProcess)
{
    VS_Canvas first(10, 10), second(10, 10);
    useProjectIcons(first);
    for (int id = 0; id < TextureCount; ++id) {
        QImage const file(QString(ANIM_SOURCE_DIR) + "/resources/icons/" + textureFileName(id));
        ASSERT_FALSE(file.isNull()) << textureFileName(id);
        TextureRecord const record = texture(id);
        ASSERT_TRUE(record.texture) << textureFileName(id);
        EXPECT_EQ(record.width, file.width());
        EXPECT_EQ(record.height, file.height());
    }
    VS_TexturePtr const before = texture(MobilityTexture).texture;
    prepareTextures(&second);
    EXPECT_EQ(texture(MobilityTexture).texture.get(), before.get());
    EXPECT_FALSE(texture(TextureCount).texture);
    EXPECT_EQ(texture(-1).width, 64);
}

TEST(IKToolRenderingTest, SliderTrackAndKnobFollowTheValue)
{
    Scene scene;
    useProjectIcons(scene.canvas);
    TextureRecord const track = texture(SliderBackgroundTexture);
    TextureRecord const knob = texture(SliderCursorTexture);
    Point2d const at(40, 100);
    VS_RGBA const tint(50, 50, 50);
    Math::Segment2d segment;
    drawSlider(scene.binder, scene.painter, at, 150, 12, 0.75f, VS_RGBA(), tint, false, segment);
    EXPECT_DOUBLE_EQ(segment.a.x, at.x);
    EXPECT_DOUBLE_EQ(segment.b.x, at.x + track.width);
    EXPECT_DOUBLE_EQ(segment.b.y, at.y);
    Point2d const centre = segment.Interpolate(0.75);
    // The knob's rim, above the track, tinted; the same height elsewhere along the track is empty.
    double const above = -(knob.height / 2) + 2;
    EXPECT_TRUE(pixelIs(scene.canvas, centre + Math::Vector2d(-2, above), tint));
    EXPECT_TRUE(pixelIs(scene.canvas, segment.Interpolate(0.25) + Math::Vector2d(0, above), kTransparent));

    // A pick pass: one plain quad in the tint over the track, no knob.
    Scene pick;
    pick.canvas.setPickingMode(true);
    VS_RGBA const id(9, 8, 7);
    drawSlider(pick.binder, pick.painter, at, 150, 12, 0.75f, VS_RGBA(), id, true, segment);
    EXPECT_TRUE(pixelIs(pick.canvas, at + Math::Vector2d(track.width / 2.0, 1), id));
    EXPECT_TRUE(pixelIs(pick.canvas, centre + Math::Vector2d(-2, above), kTransparent));
    EXPECT_EQ(pick.painter.pointReferential(), VU_Painter::kSceneReferential);
}

TEST(IKToolRenderingTest, ConstellationPickPassPlacesEachItemWhereItsButtonIs)
{
    Scene scene(401, 301);
    scene.canvas.setPickingMode(true);
    useProjectIcons(scene.canvas);
    RenderSettings s = menuSettings(true);
    Point2d const q(150, 200);
    drawConstellation(scene.binder, s, scene.painter, scene.sceneAt(q));
    double const left = q.x - 100, top = q.y - 160;
    EXPECT_TRUE(pixelIs(scene.canvas, Point2d(left + 13, top + 27), s.itemColors[0]));
    EXPECT_TRUE(pixelIs(scene.canvas, Point2d(left + 13, top + 54), s.itemColors[1]));
    EXPECT_TRUE(pixelIs(scene.canvas, Point2d(left + 13, top + 81), s.itemColors[2]));
    EXPECT_TRUE(pixelIs(scene.canvas, Point2d(left + 13, top + 108), s.itemColors[3]));
    EXPECT_TRUE(pixelIs(scene.canvas, Point2d(left + 170, top + 108), s.itemColors[4]));
    EXPECT_TRUE(pixelIs(scene.canvas, Point2d(left + 127, top + 108), s.itemColors[8]));
    int const trackMiddle = texture(SliderBackgroundTexture).width / 2;
    EXPECT_TRUE(pixelIs(scene.canvas, Point2d(left + 45 + trackMiddle, top + 28), s.itemColors[5]));
    EXPECT_TRUE(pixelIs(scene.canvas, Point2d(left + 45 + trackMiddle, top + 55), kTransparent));
    EXPECT_DOUBLE_EQ(s.sliderTracks[0].a.x, left + 45);
    EXPECT_DOUBLE_EQ(s.sliderTracks[0].a.y, top + 27);
    EXPECT_EQ(scene.painter.pointReferential(), VU_Painter::kSceneReferential);
}

TEST(IKToolRenderingTest, ConstellationMovesAwayFromTheViewEdges)
{
    struct Case {
        int width, height;
        Point2d joint;
        Point2d expectedCentre;  // q after the adjustment
    };
    Case const cases[] = {
        {401, 301, {50, 200}, {160, 200}},   // near the left edge: to the right of the joint
        {401, 301, {1, 200}, {102, 200}},    // on the very edge
        {401, 301, {350, 200}, {240, 200}},  // near the right edge: to the left
        {401, 301, {150, 100}, {150, 275}},  // near the top: below the joint
        {200, 301, {50, 200}, {50, 200}},    // narrow view: no horizontal move
    };
    for (Case const &c : cases) {
        Scene scene(c.width, c.height);
        scene.canvas.setPickingMode(true);
        useProjectIcons(scene.canvas);
        RenderSettings s = menuSettings(true);
        drawConstellation(scene.binder, s, scene.painter, scene.sceneAt(c.joint));
        double const left = c.expectedCentre.x - 100, top = c.expectedCentre.y - 160;
        EXPECT_TRUE(pixelIs(scene.canvas, Point2d(left + 170, top + 108), s.itemColors[4]))
            << c.width << " " << c.joint.x << "," << c.joint.y;
        EXPECT_DOUBLE_EQ(s.sliderTracks[0].a.x, left + 45) << c.width << " " << c.joint.x << "," << c.joint.y;
    }
}

TEST(IKToolRenderingTest, ConstellationBubbleUsesTheSideShapeBesideTheJoint)
{
    // Low in the bubble, off its pointer: the side bubble is solid there, the one above the joint
    // is not.
    for (bool nearEdge : {false, true}) {
        Scene scene(401, 301);
        useProjectIcons(scene.canvas);
        RenderSettings s = menuSettings(false);
        s.showApplyAltogether = false;
        Point2d const joint(nearEdge ? 50 : 200, 200);
        drawConstellation(scene.binder, s, scene.painter, scene.sceneAt(joint));
        Point2d const q(nearEdge ? 160 : 200, 200);
        VS_RGBA const low = scene.canvas.pixel(int(q.x - 112 + 40), int(q.y - 160 + 138));
        EXPECT_EQ(low.a != 0, nearEdge);
        // Dark tint: the bubble's light body comes out dark grey.
        VS_RGBA const body = scene.canvas.pixel(int(q.x + 40), int(q.y - 100));
        EXPECT_GT(body.a, 200);
        EXPECT_LT(body.r, 90);
    }
}
