// Onion skin and the drawing view: which drawings show, where, in which tint and alpha, and what
// a pick of an onion drawing gives.
//
// Pixels are computed by hand. The views are 101 by 81 pixels, so k = min(101 / 2, 81 / 1.5) =
// 50.5 pixels per OGL unit and the scene origin is the pixel (50, 40): a scene point (x, y) is the
// pixel (50 + 50.5 x, 40 - 50.5 y). Field units are 1/12 OGL unit in x and 1/16 in y.
#include "TracingTestScenes.h"
#include "base/Math/Matrix.h"
#include "preference/PR_Preference.h"
#include "scene/MO_Module.h"
#include "scene/TUScene.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "tool/SLB_Selectable.h"
#include "view/VW_OnionSkin.h"
#include "view/VW_View.h"

#include <gtest/gtest.h>

namespace {

using TracingTestScenes::sessionOf;

// "Ball" hangs under the peg "P", which moves along x: -6 field units (-0.5 OGL) at frame 1,
// +6 (0.5) at frame 9, +10.8 (0.9) at frame 13. Drawings "1", "9" and "13" are black squares of
// half side 0.05 around the origin; "5" is empty. Exposures: 1, 5, 9, 13, each its own drawing.
QByteArray const kBallScene = R"(<?xml version="1.0" encoding="UTF-8"?>
<scene version="1">
 <metrics fieldToOglX="0.08333333333333333" fieldToOglY="0.0625"/>
 <group name="Top">
  <node type="PEG" name="P">
   <attrs>
    <position x="0" y="0" z="0">
     <key frame="1" x="-6" y="0" z="0"/>
     <key frame="9" x="6" y="0" z="0"/>
     <key frame="13" x="10.8" y="0" z="0"/>
    </position>
   </attrs>
  </node>
  <node type="READ" name="Ball">
   <attrs/>
   <drawings>
    <drawing name="1">
     <polygon points="-0.05,-0.05 0.05,-0.05 0.05,0.05 -0.05,0.05" stroke="#ff000000" fill="#ff000000" thickness="0"/>
    </drawing>
    <drawing name="13">
     <polygon points="-0.05,-0.05 0.05,-0.05 0.05,0.05 -0.05,0.05" stroke="#ff000000" fill="#ff000000" thickness="0"/>
    </drawing>
    <drawing name="5"/>
    <drawing name="9">
     <polygon points="-0.05,-0.05 0.05,-0.05 0.05,0.05 -0.05,0.05" stroke="#ff000000" fill="#ff000000" thickness="0"/>
    </drawing>
   </drawings>
   <timing>
    <exposure frame="1" drawing="1"/>
    <exposure frame="5" drawing="5"/>
    <exposure frame="9" drawing="9"/>
    <exposure frame="13" drawing="13"/>
   </timing>
  </node>
 </group>
 <links>
  <link src="P" out="0" dst="Ball" in="0"/>
 </links>
</scene>
)";

// The colour over white paper of black tinted towards `tint` by 0.6 at `alpha`.
QColor onionOverPaper(VS_RGBA tint, double alpha)
{
    auto channel = [alpha](int t) { return int(std::lround(alpha * 0.6 * t + (1.0 - alpha) * 255.0)); };
    return QColor(channel(tint.r), channel(tint.g), channel(tint.b));
}

// Compares colours to within 2 per channel (the painter rounds its blending).
::testing::AssertionResult near(QColor const &actual, QColor const &expected)
{
    if (std::abs(actual.red() - expected.red()) <= 2 && std::abs(actual.green() - expected.green()) <= 2 &&
        std::abs(actual.blue() - expected.blue()) <= 2)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "found " << actual.name().toStdString() << ", expected "
                                         << expected.name().toStdString();
}

QColor const kPaper(255, 255, 255);

class OnionSkinTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        clearPreferences();
        view.resize(101, 81);
        session->setCurrentFrame(5);
    }
    void TearDown() override { clearPreferences(); }
    static void clearPreferences()
    {
        for (QString const &key : {VW_OnionSkinSettings::framesBeforeKey(), VW_OnionSkinSettings::framesAfterKey(),
                                   VW_OnionSkinSettings::opacityKey(), VW_OnionSkinSettings::falloffKey()})
            tuPref->remove(key);
    }
    QColor pixel(int x, int y) { return view.render().pixelColor(x, y); }

    std::unique_ptr<SC_Session> session = sessionOf(kBallScene);
    VW_View view{session.get()};
};

// Frame 1 puts the ball at x = -0.5 (pixel 50 - 25.25 = 25), frame 9 at 0.5 (pixel 75), frame 13
// at 0.9 (pixel 95); all at y = 0 (pixel 40).
TEST_F(OnionSkinTest, SeenFromFrameFiveTheNeighboursShowWhereTheirFramesPutThemFadedAndTinted)
{
    // Off: frame 5 exposes an empty drawing, so the paper shows everywhere.
    EXPECT_EQ(pixel(25, 40), kPaper);
    EXPECT_EQ(pixel(75, 40), kPaper);

    view.setOnionSkin(true);
    // Defaults: two before, two after, alpha 0.5 for the nearest, times 0.6 for the next.
    EXPECT_TRUE(near(pixel(25, 40), onionOverPaper(VW_OnionSkinSettings::kBeforeTint, 0.5)));
    EXPECT_TRUE(near(pixel(75, 40), onionOverPaper(VW_OnionSkinSettings::kAfterTint, 0.5)));
    EXPECT_TRUE(near(pixel(95, 40), onionOverPaper(VW_OnionSkinSettings::kAfterTint, 0.3)));
    EXPECT_EQ(pixel(50, 40), kPaper);  // where the peg stands at frame 5: the empty drawing
    EXPECT_EQ(pixel(25, 44), kPaper);  // beyond the half side of 2.5 pixels
    EXPECT_EQ(pixel(75, 36), kPaper);

    // The fading follows its preferences.
    tuPref->setDoubleValue(VW_OnionSkinSettings::opacityKey(), 0.8);
    tuPref->setDoubleValue(VW_OnionSkinSettings::falloffKey(), 0.25);
    EXPECT_TRUE(near(pixel(75, 40), onionOverPaper(VW_OnionSkinSettings::kAfterTint, 0.8)));
    EXPECT_TRUE(near(pixel(95, 40), onionOverPaper(VW_OnionSkinSettings::kAfterTint, 0.2)));
}

TEST_F(OnionSkinTest, TheCountsOfFramesChooseTheNeighboursAndZeroShowsNone)
{
    view.setOnionSkin(true);
    tuPref->setIntValue(VW_OnionSkinSettings::framesBeforeKey(), 0);
    tuPref->setIntValue(VW_OnionSkinSettings::framesAfterKey(), 0);
    QImage const none = view.render();
    for (int x : {25, 75, 95})
        EXPECT_EQ(none.pixelColor(x, 40), kPaper) << x;

    tuPref->setIntValue(VW_OnionSkinSettings::framesAfterKey(), 1);
    QImage const one = view.render();
    EXPECT_EQ(one.pixelColor(25, 40), kPaper);
    EXPECT_NE(one.pixelColor(75, 40), kPaper);
    EXPECT_EQ(one.pixelColor(95, 40), kPaper);

    // Out of range counts are clamped to 0..10, not refused.
    tuPref->setIntValue(VW_OnionSkinSettings::framesBeforeKey(), -3);
    tuPref->setIntValue(VW_OnionSkinSettings::framesAfterKey(), 50);
    VW_OnionSkinSettings const s = VW_OnionSkinSettings::fromPreferences();
    EXPECT_EQ(s.framesBefore, 0);
    EXPECT_EQ(s.framesAfter, VW_OnionSkinSettings::kMaxFrames);
}

TEST_F(OnionSkinTest, TheCurrentDrawingLiesOverTheOnionDrawings)
{
    // At frame 9 the current drawing stands at pixel 75; the onion drawing of frame 13 at 95 and
    // that of frame 1 at 25 (the empty one of frame 5 is the nearest before).
    session->setCurrentFrame(9);
    view.setOnionSkin(true);
    EXPECT_EQ(pixel(75, 40), QColor(0, 0, 0));
    EXPECT_TRUE(near(pixel(95, 40), onionOverPaper(VW_OnionSkinSettings::kAfterTint, 0.5)));
    EXPECT_TRUE(near(pixel(25, 40), onionOverPaper(VW_OnionSkinSettings::kBeforeTint, 0.3)));
}

TEST_F(OnionSkinTest, APickOfAnOnionDrawingGivesItsElementAndItsFrame)
{
    view.setOnionSkin(true);
    view.render();
    auto const *before = dynamic_cast<SLB_ModuleDescriptorWithFrame *>(view.pick(UT_Point(25, 40), true, 0).get());
    ASSERT_NE(before, nullptr);
    EXPECT_EQ(before->module()->instanceName(), QStringLiteral("Ball"));
    EXPECT_EQ(before->frame(), 1);
    auto const *after = dynamic_cast<SLB_ModuleDescriptorWithFrame *>(view.pick(UT_Point(95, 40), true, 0).get());
    ASSERT_NE(after, nullptr);
    EXPECT_EQ(after->frame(), 13);

    // The current drawing gives the current frame; without onion skin, nothing lies at 25.
    session->setCurrentFrame(9);
    auto const *current = dynamic_cast<SLB_ModuleDescriptorWithFrame *>(view.pick(UT_Point(75, 40), true, 0).get());
    ASSERT_NE(current, nullptr);
    EXPECT_EQ(current->frame(), 9);
    view.setOnionSkin(false);
    EXPECT_EQ(view.pick(UT_Point(25, 40), true, 0), nullptr);
}

TEST(OnionDrawings, ComeFarthestFirstWithSignedDistancesAndTheFramesTheirExposuresStartAt)
{
    std::unique_ptr<SC_Session> session = sessionOf(kBallScene);
    auto *ball = dynamic_cast<MO_ElementModule *>(session->scene()->getRootGroup()->findNode(QStringLiteral("Ball")));
    ASSERT_NE(ball, nullptr);
    auto summary = [ball](double frame, int before, int after) {
        std::vector<std::pair<int, int>> s;  // (distance, frame)
        for (VW_OnionDrawing const &d : VW_onionDrawings(*ball, frame, before, after))
            s.emplace_back(d.distance, d.frame);
        return s;
    };
    using S = std::vector<std::pair<int, int>>;
    EXPECT_EQ(summary(5, 2, 2), (S{{2, 13}, {-1, 1}, {1, 9}}));
    EXPECT_EQ(summary(7.9, 2, 2), (S{{2, 13}, {-1, 1}, {1, 9}}));  // frame 7.9 lies in the exposure of 5
    // Frame 11 lies in the exposure of 9, the current one: it is no onion drawing.
    EXPECT_EQ(summary(11, 10, 10), (S{{-2, 1}, {-1, 5}, {1, 13}}));
    EXPECT_EQ(summary(13, 1, 3), (S{{-1, 9}}));
    EXPECT_EQ(summary(0, 1, 1), (S{{1, 1}}));  // before the first exposure: only later ones
    EXPECT_EQ(summary(5, 0, 0), S{});
}

class DrawingViewTest : public ::testing::Test {
protected:
    void SetUp() override { view.resize(101, 81); }
    MO_Node *bar() const { return session->scene()->getRootGroup()->findNode(QStringLiteral("Bar")); }

    std::unique_ptr<SC_Session> session = sessionOf(TracingTestScenes::kPeggedBar);
    VW_View view{session.get()};
};

// The peg turns the bar 90 degrees and scales it by 2 (TracingTestScenes::kPeggedBar): in the camera
// view it points up from (0.5, 0.25) to (0.5, 1.05).
TEST_F(DrawingViewTest, ShowsTheSelectedElementsDrawingWithoutThePegAboveIt)
{
    QColor const blue(0, 0, 255);
    // Camera view: the bar points up from (0.5, 0.25): pixels (75, 27) to (75, -13), so (75, 10)
    // is on it, and the scene origin is not.
    QImage camera = view.render();
    EXPECT_EQ(camera.pixelColor(75, 10), blue);
    EXPECT_EQ(camera.pixelColor(60, 40), kPaper);

    // Drawing view: the drawing in its own space, from (0, 0) to (0.4, 0): pixels (50, 40) to
    // (70, 40). Nothing shows before an element is selected.
    view.setViewKind(TO_AbstractToolContext::DrawingView);
    EXPECT_EQ(view.viewKind(), TO_AbstractToolContext::DrawingView);
    EXPECT_EQ(view.render().pixelColor(60, 40), kPaper);
    session->getSelection()->set({bar()});
    QImage const drawing = view.render();
    EXPECT_EQ(drawing.pixelColor(60, 40), blue);
    EXPECT_EQ(drawing.pixelColor(68, 40), blue);
    EXPECT_EQ(drawing.pixelColor(50, 30), kPaper);  // not turned: nothing above the origin
    EXPECT_EQ(drawing.pixelColor(75, 10), kPaper);
    // The camera does not move it either.
    Math::Matrix4x4 camera2;
    camera2.translate(0.3, 0.0);
    session->setCameraMatrix(camera2);
    EXPECT_EQ(view.render().pixelColor(60, 40), blue);

    // A pick there finds the element at the current frame.
    auto const *hit = dynamic_cast<SLB_ModuleDescriptorWithFrame *>(view.pick(UT_Point(60, 40), true, 0).get());
    ASSERT_NE(hit, nullptr);
    EXPECT_EQ(hit->module(), bar());

    // Any other kind is the camera view.
    view.setViewKind(7);
    EXPECT_EQ(view.viewKind(), TO_AbstractToolContext::CameraView);
}

} // namespace
