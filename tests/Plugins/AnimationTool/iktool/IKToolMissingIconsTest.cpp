// The IK tool's drawing when its icon files cannot be read: plain quads of 64 by 64 in place of
// every icon, and no second attempt at loading. A program of its own, as the icons are loaded
// once per process.
#include "iktool/IKToolRendering.h"

#include <gtest/gtest.h>

using namespace IKToolRendering;
using Math::Point2d;

TEST(IKToolMissingIcons, IconsThatCannotBeReadArePlainSquaresOf64AndAreNotLoadedAgain)
{
    VS_Canvas canvas(401, 401);
    canvas.setAntialiasing(false);
    PLUG_Services::setPluginPath(QStringLiteral("AnimationTool"), QStringLiteral("/nonexistent/folder"));
    prepareTextures(&canvas);
    for (int id = 0; id < TextureCount; ++id) {
        EXPECT_FALSE(texture(id).texture) << id;
        EXPECT_EQ(texture(id).width, 64) << id;
        EXPECT_EQ(texture(id).height, 64) << id;
    }
    // The real folder later changes nothing: loading is not tried again.
    PLUG_Services::setPluginPath(QStringLiteral("AnimationTool"), QStringLiteral(ANIM_SOURCE_DIR));
    prepareTextures(&canvas);
    EXPECT_FALSE(texture(MobilityTexture).texture);

    // The bubble is a plain quad in its tint, the use actual position button a white 64 by 64 square.
    CC_CameraChainTransformCanvasBinder binder(&canvas);
    binder.setViewport(401, 401);
    binder.setOrthographicProjection(1.0);
    VU_Painter painter(binder);
    RenderSettings s(false);
    s.itemFlags[0] = false;
    Point2d const q(200, 200);  // scene origin: the middle of the view
    drawConstellation(binder, s, painter, Math::Point3d(0, 0, 0));
    double const left = q.x - 100, top = q.y - 160;
    VS_RGBA const bubble = canvas.pixel(int(q.x + 90), int(q.y - 150));
    EXPECT_EQ(int(bubble.r), 70);
    EXPECT_EQ(int(bubble.a), 255);
    VS_RGBA const button = canvas.pixel(int(left + 170 + 30), int(top + 108 + 30));
    EXPECT_EQ(int(button.r), 255);
    VS_RGBA const outside = canvas.pixel(int(left + 170), int(top + 108 - 34));
    EXPECT_EQ(int(outside.r), 70);
}
