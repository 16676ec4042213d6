#include "iktool/IKToolResponder.h"
#include "iktool/IKToolSettings.h"

#include "bridge/JointDefinition.h"
#include "skeleton/SkeletonDef.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

#include <climits>

#include <functional>

namespace {

// The settings are one process-wide object: each test starts from the defaults it needs.
class IKToolSettingsTest : public ::testing::Test {
protected:
    IKToolSettings &s = IKToolSettings::instance();
    void SetUp() override
    {
        s.setToolMode(IKToolSettings::ManipulationMode);
        s.setInterpolationEnabled(false);
        s.setFrameRange(1, 12);
        s.setUseCurrentFrame(true);
        s.setInterpolationType(IKToolSettings::Linear);
        s.setSkeletonRoot(nullptr);
    }
};

TEST_F(IKToolSettingsTest, StartsWithTheDefaults)
{
    // Values no test of this file changes.
    EXPECT_EQ(s.maxIterations(), 120);
    EXPECT_EQ(s.rootTranslationGain(), 1.0);
    EXPECT_TRUE(s.enableRootTranslation());
    EXPECT_TRUE(s.enableShadowPosing());
    EXPECT_TRUE(s.usePeg());
    EXPECT_FALSE(s.useRead());
    EXPECT_TRUE(s.useDeformer());
    ASSERT_EQ(s.smartKeywords().size(), 3u);
    EXPECT_EQ(s.smartKeywords()[0].keyword, "hand");
    EXPECT_EQ(s.smartKeywords()[1].label, "Foot");
    EXPECT_FALSE(s.smartKeywords()[2].flags[1]);
}

TEST_F(IKToolSettingsTest, EachSetterSignalsByItsOwnRule)
{
    struct Case {
        char const *what;
        std::function<void()> sameValue;  // sets the value the settings already hold
        int expectedSignals;              // from one call with the same value
    };
    Case const cases[] = {
        {"tool mode", [&] { s.setToolMode(s.toolMode()); }, 0},
        {"iterations", [&] { s.setMaxIterations(s.maxIterations()); }, 0},
        {"gain", [&] { s.setRootTranslationGain(s.rootTranslationGain()); }, 0},
        {"root translation", [&] { s.setEnableRootTranslation(s.enableRootTranslation()); }, 0},
        {"shadow posing", [&] { s.setEnableShadowPosing(s.enableShadowPosing()); }, 0},
        {"frame range", [&] { s.setFrameRange(s.fromFrame(), s.toFrame()); }, 0},
        {"use current frame", [&] { s.setUseCurrentFrame(s.useCurrentFrame()); }, 0},
        {"use peg", [&] { s.setUsePeg(s.usePeg()); }, 1},
        {"use read", [&] { s.setUseRead(s.useRead()); }, 1},
        {"use deformer", [&] { s.setUseDeformer(s.useDeformer()); }, 1},
        {"interpolation", [&] { s.setInterpolationEnabled(!s.interpolationEnabled()); }, 0},
        {"interpolation type", [&] { s.setInterpolationType(IKToolSettings::Cubic); }, 0},
    };
    for (Case const &c : cases) {
        QSignalSpy spy(&s, &IKToolSettings::settingsChanged);
        c.sameValue();
        EXPECT_EQ(spy.count(), c.expectedSignals) << c.what;
    }

    QSignalSpy spy(&s, &IKToolSettings::settingsChanged);
    s.setMaxIterations(60);
    s.setRootTranslationGain(0.5);
    s.setFrameRange(5, 5);  // both ends in one signal
    s.setFrameRange(5, 5);
    EXPECT_EQ(spy.count(), 3);
    s.setMaxIterations(120);
    s.setRootTranslationGain(1.0);
}

TEST_F(IKToolSettingsTest, TheExtractionFiltersDecideTheIgnoredKeywords)
{
    std::set<QString> ignored = IKToolUtil::getIgnoredKeywords();
    EXPECT_EQ(ignored.count("READ"), 1u);
    EXPECT_EQ(ignored.count("PEG"), 0u);
    s.setUseRead(true);
    s.setUsePeg(false);
    ignored = IKToolUtil::getIgnoredKeywords();
    EXPECT_EQ(ignored.count("READ"), 0u);
    EXPECT_EQ(ignored.count("PEG"), 1u);
    EXPECT_TRUE(s.useRead());
    EXPECT_FALSE(s.usePeg());
    s.setUseRead(false);
    s.setUsePeg(true);
}

TEST_F(IKToolSettingsTest, OnlyTheTwoModesAreStored)
{
    s.setToolMode(IKToolSettings::SetupMode);
    EXPECT_EQ(s.toolMode(), IKToolSettings::SetupMode);
    s.setToolMode(7);
    EXPECT_EQ(s.toolMode(), IKToolSettings::ManipulationMode);
}

TEST_F(IKToolSettingsTest, TheActiveRangeFollowsModeInterpolationAndTheCurrentFrame)
{
    int from = 0, to = 0;
    s.activeFrameRange(7.9, from, to);  // no interpolation: the current frame, cut towards zero
    EXPECT_EQ(from, 7);
    EXPECT_EQ(to, 7);

    s.setInterpolationEnabled(true);
    s.activeFrameRange(7.9, from, to);  // to replaced by the current frame
    EXPECT_EQ(from, 1);
    EXPECT_EQ(to, 7);
    s.setUseCurrentFrame(false);
    s.activeFrameRange(7.9, from, to);
    EXPECT_EQ(from, 1);
    EXPECT_EQ(to, 12);

    s.setFrameRange(20, 3);  // stored as given, used swapped
    EXPECT_EQ(s.fromFrame(), 20);
    EXPECT_EQ(s.toFrame(), 3);
    s.activeFrameRange(7.0, from, to);
    EXPECT_EQ(from, 3);
    EXPECT_EQ(to, 20);

    s.setToolMode(IKToolSettings::SetupMode);  // setup mode: the current frame only
    s.activeFrameRange(-2.5, from, to);
    EXPECT_EQ(from, -2);
    EXPECT_EQ(to, -2);
}

// Frames beyond the frame limits (SC_Frames) are brought to the nearest limit rather than cast to
// an int they may not fit (3e9 once was, undefined).
TEST_F(IKToolSettingsTest, FramesBeyondTheLimitsAreBroughtToTheNearestLimit)
{
    int from = 0, to = 0;
    s.activeFrameRange(3e9, from, to);
    EXPECT_EQ(from, SC_Frames::kLast);
    EXPECT_EQ(to, SC_Frames::kLast);
    s.activeFrameRange(-1e300, from, to);
    EXPECT_EQ(from, SC_Frames::kFirst);
    EXPECT_EQ(to, SC_Frames::kFirst);

    s.setInterpolationEnabled(true);
    s.setUseCurrentFrame(false);
    s.setFrameRange(INT_MIN, INT_MAX);
    EXPECT_EQ(s.fromFrame(), SC_Frames::kFirst);
    EXPECT_EQ(s.toFrame(), SC_Frames::kLast);
    s.activeFrameRange(5.0, from, to);
    EXPECT_EQ(to - from, SC_Frames::kLast - SC_Frames::kFirst);
}

TEST(IKToolSettingsRules, KeyframesCanBeClearedOnlyWhenAFrameIsLeftBetween)
{
    EXPECT_FALSE(IKToolSettings::canClearKeyframes(1, 3, 2));
    EXPECT_TRUE(IKToolSettings::canClearKeyframes(1, 3, 1));
    EXPECT_TRUE(IKToolSettings::canClearKeyframes(1, 3, 3));
    EXPECT_FALSE(IKToolSettings::canClearKeyframes(1, 2, 1));
    EXPECT_TRUE(IKToolSettings::canClearKeyframes(1, 4, 2));
    EXPECT_FALSE(IKToolSettings::canClearKeyframes(5, 5, 5));
}

class FakeSource : public IKToolSettings::SelectionJointSource {
public:
    void selectedJoints(std::set<int> &out) override { out = {1}; }
    double currentFrame() override { return 1.0; }
    SkeletonDef &skeleton() override { return skeleton_; }
    bool canClearKeyframes() override { return false; }
    void clearKeyframes() override {}

private:
    SkeletonDef skeleton_;
};

TEST_F(IKToolSettingsTest, OnlyTheCurrentSourceCanWithdrawItself)
{
    FakeSource a, b;
    QSignalSpy spy(&s, &IKToolSettings::jointSelectionChanged);
    s.setJointSource(&a);
    s.setJointSource(&a);
    EXPECT_EQ(spy.count(), 2);
    s.clearJointSource(&b);
    EXPECT_EQ(s.jointSource(), &a);
    s.clearJointSource(&a);
    EXPECT_EQ(s.jointSource(), nullptr);
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(IKToolSettingsTest, TheSkeletonRootCountsOnlyWhileItIsARootAndAlive)
{
    CO_CommandManager manager;
    auto root = UT_MakeShared<MO_PegModule>();
    IKToolUtil::defineRoot(&manager, root.get(), true);
    s.setSkeletonRoot(root.get());
    EXPECT_EQ(s.skeletonRoot(), root.get());

    // A change of the root's node repaints through settingsChanged; other nodes do not.
    QSignalSpy spy(&s, &IKToolSettings::settingsChanged);
    auto other = UT_MakeShared<MO_PegModule>();
    IKToolResponder::instance().onNodesChanged(TUNodeSet{other.get()});
    EXPECT_EQ(spy.count(), 0);
    IKToolResponder::instance().onNodesChanged(TUNodeSet{other.get(), root.get()});
    EXPECT_EQ(spy.count(), 1);

    IKToolUtil::defineRoot(&manager, root.get(), false);  // lost its root status
    EXPECT_EQ(s.skeletonRoot(), nullptr);
    IKToolResponder::instance().onNodesChanged(TUNodeSet{root.get()});
    EXPECT_EQ(spy.count(), 1);
    manager.undo();
    EXPECT_EQ(s.skeletonRoot(), root.get());

    root.reset();  // gone
    EXPECT_EQ(s.skeletonRoot(), nullptr);
}

TEST_F(IKToolSettingsTest, TheResponderFollowsTheSelectionToItsSkeletonsRoot)
{
    SC_Session session(std::make_unique<TUScene>());
    auto shoulder = UT_MakeShared<MO_PegModule>();
    auto elbow = UT_MakeShared<MO_PegModule>();
    session.scene()->getRootGroup()->addNode(shoulder);
    session.scene()->getRootGroup()->addNode(elbow);
    ASSERT_TRUE(MO_Node::connect(shoulder.get(), 0, elbow.get(), 0));
    IKToolUtil::defineRoot(session.commandManager(), shoulder.get(), true);
    IKToolUtil::setParticipation(session.commandManager(), elbow.get(), true);

    PLUG_Services::setSessionContext(&session);
    PLUG_Services::setSelection(session.getSelection());
    IKToolResponder::instance().makeConnections();
    IKToolResponder::instance().makeConnections();  // a second polish connects nothing twice

    SL_SelectionUtil::addToSelection(session.getSelection(), elbow.get());
    EXPECT_EQ(s.skeletonRoot(), shoulder.get());
    SL_SelectionUtil::clear(session.getSelection());
    EXPECT_EQ(s.skeletonRoot(), nullptr);

    QObject::disconnect(session.changeManager(), nullptr, &IKToolResponder::instance(), nullptr);
    PLUG_Services::reset();
}

} // namespace
