// The IK tool driven as a view drives it: presses, moves and releases at view points of a real
// offscreen view of the arm example (three pegs in a chain, defined as a skeleton here), with the
// settings set in the test. Where a case needs a given joint, bone or constellation item under the
// pointer whatever the drawing, a view that also reports a scripted picking id of the tool stands in.
#include "iktool/IKTool.h"
#include "iktool/IKToolImpl.h"
#include "iktool/IKPreferences.h"
#include "IKToolTestScene.h"

#include "bridge/JointDefinition.h"

#include "scene/TUSceneFile.h"
#include "view/VW_View.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

namespace {

// A view whose pick, after its own scan, reports the ids that the test scripts, as the nearest hit.
class ScriptedView : public VW_View {
public:
    using VW_View::VW_View;
    std::function<std::vector<unsigned int>()> scripted;  // evaluated after the pick pass: ids change with it

    UT_SharedPtr<SLB_SelectableDescriptor> pick(UT_Point const &point, bool commit, int options) override
    {
        UT_SharedPtr<SLB_SelectableDescriptor> found = VW_View::pick(point, commit, options);
        if (scripted && tool())
            for (unsigned int id : scripted())
                tool()->oglScanHit(id, commit);
        return found;
    }
};

CX_ToolIds::ID toolId()
{
    static CX_ToolIds::ID const id = TO_ToolFactory::instance().registerTool(IKTool::descriptor(), IKTool::createGenerator());
    return id;
}

Math::Point2d const kEmpty(50, 280);  // a view point with nothing drawn under it

class IKToolArm : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(openExampleScene("arm.xml", session));
        upper = module("UpperArm-P");
        fore = module("Forearm-P");
        hand = module("Hand-P");
        CO_CommandManager *manager = session->commandManager();
        IKToolUtil::defineRoot(manager, upper, true);
        IKToolUtil::setParticipation(manager, fore, true);
        IKToolUtil::setParticipation(manager, hand, true);
        session->getSelection()->set({hand});
        session->setCurrentFrame(5);

        IKToolSettings &s = IKToolSettings::instance();
        s.setToolMode(IKToolSettings::ManipulationMode);
        s.setInterpolationEnabled(false);
        s.setUseCurrentFrame(false);
        s.setFrameRange(1, 12);
        s.setInterpolationType(IKToolSettings::MoveAll);
        s.setEnableRootTranslation(false);
        s.setSkeletonRoot(upper);

        PLUG_Services::setPluginPath(QStringLiteral("AnimationTool"), QStringLiteral(ANIM_SOURCE_DIR));
        view = std::make_unique<ScriptedView>(session.get());
        view->resize(400, 300);
        ASSERT_TRUE(view->setToolId(toolId()));
        view->render();
    }

    void TearDown() override
    {
        view.reset();
        closeExampleScene();
    }

    MO_Module *module(char const *name) const { return moduleNamed(*session, name); }
    IKTool &tool() const { return *static_cast<IKTool *>(view->tool()); }
    IKTool::Impl &impl() const { return tool().impl(); }
    std::vector<int> keys(MO_Module *m) const { return m->toAnimatedModule()->rotationAttr()->keyframes(); }

    // The index of the (non-handle) joint of `m` in the current skeleton.
    int jointOf(MO_Module *m) const
    {
        SkeletonDef const &skeleton = impl().skeleton();
        for (SkeletonJointDef const &joint : skeleton)
            if (joint.module.get() == m && !joint.isHandle)
                return joint.index;
        return -1;
    }
    unsigned int jointId(int k) const { return impl().record(impl().currentKey()).pickAdaptor.pickingId() + unsigned(k); }
    unsigned int boneId(int k) const { return jointId(int(impl().skeleton().size()) + k); }
    unsigned int itemId(int item) const { return impl().constellationPickAdaptor.pickingId() + unsigned(item); }

    // The next presses find the joint k (or nothing, with -1).
    void hitJoint(int k)
    {
        if (k < 0)
            view->scripted = nullptr;
        else
            view->scripted = [this, k] { return std::vector<unsigned int>{jointId(k)}; };
    }
    // Selects the joints as plain and then extending clicks would, released without a drag.
    void selectJoints(std::vector<int> const &joints)
    {
        for (std::size_t i = 0; i < joints.size(); ++i) {
            hitJoint(joints[i]);
            Qt::KeyboardModifiers const modifiers = i == 0 ? Qt::NoModifier : Qt::ShiftModifier;
            view->mousePress(kEmpty, modifiers);
            view->mouseRelease(kEmpty, modifiers);
        }
        hitJoint(-1);
        view->render();
    }
    std::set<int> selected() const
    {
        std::set<int> out;
        impl().selectedJoints(out);
        return out;
    }
    // What a drag left in the records before its release.
    struct Drag {
        std::map<int, std::vector<Math::Point3d>> solved;    // per frame, per joint index
        std::map<int, std::vector<Math::Point3d>> position;  // the pose the records were made from
        std::map<int, Math::Point3d> target;                 // per frame, of the task on `watched`
        Math::Vector3d delta;                                // scene delta of the last move
    };
    // Drags from kEmpty by (dx, dy) pixels in two moves and releases at the last point. The
    // release solves once more, from where the last move left the pose; with the iteration limit
    // at 0 that solve keeps the pose, so what the release writes is the last move's solve.
    Drag dragBy(double dx, double dy, int watched = -1)
    {
        IKToolSettings &s = IKToolSettings::instance();
        int const iterations = s.maxIterations();
        Drag d;
        view->mousePress(kEmpty);
        view->mouseMove(Math::Point2d(kEmpty.x + dx / 2, kEmpty.y + dy / 2));
        Math::Point2d const end(kEmpty.x + dx, kEmpty.y + dy);
        view->mouseMove(end);
        for (auto const &[f, r] : impl().frames) {
            for (SkeletonJointDef const &joint : r.skeleton) {
                d.solved[f].push_back(joint.solvedPosition);
                d.position[f].push_back(joint.position);
            }
            auto const task = r.positionTasks.find(watched);
            if (task != r.positionTasks.end() && task->second)
                d.target[f] = task->second->target;
        }
        Math::Point2d a;
        Math::Point2d b;
        EXPECT_TRUE(view->viewToScene(kEmpty, a) && view->viewToScene(end, b));
        d.delta = Math::Vector3d(b.x - a.x, b.y - a.y, 0.0);
        s.setMaxIterations(0);
        view->mouseRelease(end);
        s.setMaxIterations(iterations);
        view->render();
        return d;
    }

    std::unique_ptr<SC_Session> session;
    std::unique_ptr<ScriptedView> view;
    MO_Module *upper = nullptr;
    MO_Module *fore = nullptr;
    MO_Module *hand = nullptr;
};

void expectEvaluatedMatchesSolved(std::map<int, std::vector<Math::Point3d>> const &solved,
                                  std::vector<MO_Module *> const &modules, std::vector<int> const &joints)
{
    for (auto const &[f, positions] : solved) {
        for (std::size_t i = 0; i < modules.size(); ++i) {
            Math::Point3d const evaluated = IKToolUtil::getModuleJointPositionAtFrame(modules[i], f);
            Math::Point3d const &expected = positions[std::size_t(joints[i])];
            EXPECT_NEAR(evaluated.x, expected.x, 1e-6) << "frame " << f << " joint " << joints[i];
            EXPECT_NEAR(evaluated.y, expected.y, 1e-6) << "frame " << f << " joint " << joints[i];
        }
    }
}

} // namespace

TEST_F(IKToolArm, TheArmIsOneSkeletonOfThreeJointsAndAHandle)
{
    SkeletonDef const &skeleton = impl().skeleton();
    ASSERT_EQ(skeleton.size(), 4u);
    EXPECT_EQ(jointOf(upper), 0);
    EXPECT_NE(jointOf(fore), -1);
    EXPECT_NE(jointOf(hand), -1);
    EXPECT_TRUE(skeleton[3].isHandle);
    EXPECT_EQ(impl().frames.size(), 1u);  // interpolation off: the current frame alone
}

TEST_F(IKToolArm, ADragWithoutInterpolationKeysTheCurrentFrameOnlyAndUndoesInOneStep)
{
    QByteArray const before = TUSceneFile::write(*session->scene());
    CO_CommandManager *manager = session->commandManager();
    int const steps = manager->undoCount();
    ASSERT_EQ(keys(upper), (std::vector<int>{1, 12}));
    selectJoints({jointOf(hand)});
    ASSERT_EQ(selected(), std::set<int>{jointOf(hand)});
    EXPECT_EQ(manager->undoCount(), steps);  // clicks on a joint change nothing in the scene

    Drag const d = dragBy(-30, 20, jointOf(hand));
    ASSERT_EQ(d.solved.size(), 1u);
    EXPECT_EQ(d.solved.begin()->first, 5);
    // MoveAll: the hand's own place plus the delta.
    Math::Point3d const expected = d.position.at(5)[std::size_t(jointOf(hand))] + d.delta;
    EXPECT_NEAR(d.target.at(5).x, expected.x, 1e-9);
    EXPECT_NEAR(d.target.at(5).y, expected.y, 1e-9);
    EXPECT_EQ(keys(upper), (std::vector<int>{1, 5, 12}));
    EXPECT_EQ(keys(fore), (std::vector<int>{1, 5, 12}));
    expectEvaluatedMatchesSolved(d.solved, {upper, fore, hand}, {jointOf(upper), jointOf(fore), jointOf(hand)});
    EXPECT_EQ(impl().state, IKTool::Impl::Idle);

    // One step for the whole gesture. The host names a drag's step after its press scope, the
    // outermost: the release's "IK Manipulation" scope is nested in it.
    EXPECT_EQ(manager->undoCount(), steps + 1);
    EXPECT_EQ(manager->undoName(), QStringLiteral("IK Tool"));
    ASSERT_TRUE(manager->undo());
    EXPECT_EQ(TUSceneFile::write(*session->scene()), before);
}

TEST_F(IKToolArm, ADragOverARangeKeysEveryFrameWithTheTargetsOfEachInterpolationType)
{
    IKToolSettings &s = IKToolSettings::instance();
    s.setInterpolationEnabled(true);
    s.setFrameRange(1, 12);
    for (int type = 0; type < 4; ++type) {
        SCOPED_TRACE(type);
        QByteArray const before = TUSceneFile::write(*session->scene());
        s.setInterpolationType(type);
        view->render();
        int const k = jointOf(hand);
        selectJoints({k});
        Drag const d = dragBy(-30, 20, k);
        ASSERT_EQ(d.solved.size(), 12u);

        // Targets worked out from the records' own positions, frame by frame.
        auto const at = [&](int f) { return d.position.at(f)[std::size_t(k)]; };
        Math::Point3d const start = at(1);
        Math::Point3d const end = at(12);
        Math::Point3d const target = at(5) + d.delta;
        std::map<int, Math::Point3d> expected;
        if (type == 0) {
            for (int f : {1, 3, 5, 8, 12})
                expected[f] = target;
        } else if (type == 1) {
            for (int f : {1, 3, 5, 8, 12})
                expected[f] = at(f) + d.delta;
        } else if (type == 2) {
            expected = {{1, start},
                        {3, start + (target - start) * 0.5},
                        {5, target},
                        {8, target + (end - target) * (3.0 / 7.0)},
                        {12, end}};
        } else {
            // The parabola with start at u 0, target at 0.5, end at 1; u is 0.25 at frame 3 and
            // 5/7 at frame 8. Written as the Lagrange form through the three points.
            auto const curve = [&](double u) {
                double const l0 = 2 * (u - 0.5) * (u - 1), l1 = -4 * u * (u - 1), l2 = 2 * u * (u - 0.5);
                return Math::Point3d(l0 * start.x + l1 * target.x + l2 * end.x, l0 * start.y + l1 * target.y + l2 * end.y,
                                     (1 - u) * start.z + u * end.z);
            };
            expected = {{1, curve(0)}, {3, curve(0.25)}, {5, curve(0.5)}, {8, curve(5.0 / 7.0)}, {12, curve(1)}};
        }
        for (auto const &[f, e] : expected) {
            EXPECT_NEAR(d.target.at(f).x, e.x, 1e-9) << "frame " << f;
            EXPECT_NEAR(d.target.at(f).y, e.y, 1e-9) << "frame " << f;
            EXPECT_NEAR(d.target.at(f).z, e.z, 1e-9) << "frame " << f;
        }

        std::vector<int> all;
        for (int f = 1; f <= 12; ++f)
            all.push_back(f);
        EXPECT_EQ(keys(upper), all);
        EXPECT_EQ(keys(fore), all);
        expectEvaluatedMatchesSolved(d.solved, {upper, fore, hand}, {jointOf(upper), jointOf(fore), jointOf(hand)});

        ASSERT_TRUE(session->commandManager()->undo());
        EXPECT_EQ(TUSceneFile::write(*session->scene()), before);
    }
}

TEST_F(IKToolArm, AMoveOf4Point9StartsNothingAndOf5Point0StartsTheDrag)
{
    selectJoints({jointOf(hand)});
    int const steps = session->commandManager()->undoCount();
    view->mousePress(kEmpty);
    EXPECT_EQ(impl().state, IKTool::Impl::Pressed);
    view->mouseMove(Math::Point2d(kEmpty.x + 4.9, kEmpty.y));
    EXPECT_EQ(impl().state, IKTool::Impl::Pressed);
    EXPECT_EQ(session->commandManager()->undoCount(), steps);
    view->mouseMove(Math::Point2d(kEmpty.x, kEmpty.y + 5.0));
    EXPECT_EQ(impl().state, IKTool::Impl::Dragging);
    EXPECT_EQ(impl().frames.at(5).positionTasks.size(), 1u);
    view->mouseRelease(Math::Point2d(kEmpty.x, kEmpty.y + 5.0));
    EXPECT_EQ(impl().state, IKTool::Impl::Idle);
    EXPECT_EQ(session->commandManager()->undoCount(), steps + 1);
}

TEST_F(IKToolArm, APressOnOneOfSeveralSelectedJointsNarrowsTheSelectionOnlyWithoutADrag)
{
    int const f = jointOf(fore);
    int const h = jointOf(hand);
    selectJoints({f, h});
    ASSERT_EQ(selected(), (std::set<int>{f, h}));

    // A drag moves both. The press selects the pressed joint's module in the host.
    hitJoint(f);
    CO_CommandManager *manager = session->commandManager();
    int const steps = manager->undoCount();
    view->mousePress(kEmpty);
    EXPECT_EQ(session->getSelection()->nodes(), std::vector<MO_Node *>{fore});
    EXPECT_EQ(manager->undoCount(), steps + 1);
    EXPECT_EQ(manager->undoName(), QStringLiteral("Selection"));
    view->mouseMove(Math::Point2d(kEmpty.x + 20, kEmpty.y));
    EXPECT_EQ(impl().frames.at(5).positionTasks.size(), 2u);
    view->mouseRelease(Math::Point2d(kEmpty.x + 20, kEmpty.y));
    EXPECT_EQ(selected(), (std::set<int>{f, h}));

    // A click, without a drag, leaves only the clicked joint selected, at its release; the host
    // selection is already the joint's module, and the scene does not change.
    view->render();
    int const afterDrag = manager->undoCount();
    view->mousePress(kEmpty);
    EXPECT_EQ(selected(), (std::set<int>{f, h}));
    view->mouseRelease(kEmpty);
    EXPECT_EQ(selected(), std::set<int>{f});
    EXPECT_EQ(manager->undoCount(), afterDrag);
}

TEST_F(IKToolArm, ExtendTogglesJointsAndABonePickSelectsTheJointAtItsEndAlone)
{
    int const f = jointOf(fore);
    int const h = jointOf(hand);
    selectJoints({h});
    hitJoint(f);
    view->mousePress(kEmpty, Qt::ShiftModifier);
    view->mouseRelease(kEmpty, Qt::ShiftModifier);
    EXPECT_EQ(selected(), (std::set<int>{f, h}));
    view->render();
    hitJoint(h);
    view->mousePress(kEmpty, Qt::ShiftModifier);
    view->mouseRelease(kEmpty, Qt::ShiftModifier);
    EXPECT_EQ(selected(), std::set<int>{f});
    EXPECT_FALSE(impl().bonePicked);

    // A bone id ignores the modifier.
    view->render();
    view->scripted = [this, h] { return std::vector<unsigned int>{boneId(h)}; };
    view->mousePress(kEmpty, Qt::ShiftModifier);
    EXPECT_EQ(selected(), std::set<int>{h});
    EXPECT_TRUE(impl().bonePicked);
    view->mouseRelease(kEmpty, Qt::ShiftModifier);

    // A plain press on nothing empties the selection; an extending one keeps it.
    view->render();
    hitJoint(-1);
    view->mousePress(kEmpty, Qt::ShiftModifier);
    view->mouseRelease(kEmpty, Qt::ShiftModifier);
    EXPECT_EQ(selected(), std::set<int>{h});
}

TEST_F(IKToolArm, AFlagClickCopiesTheFirstJointsNewValueToEverySelectedJointInOneStep)
{
    std::vector<int> const joints = {0, jointOf(fore), jointOf(hand)};
    selectJoints(joints);
    SkeletonDef const &skeleton = impl().skeleton();
    // The forearm already holds its position: it keeps it and makes no command.
    CO_CommandManager *manager = session->commandManager();
    ASSERT_TRUE(manager->execute(skeleton.getAttribute(jointOf(fore))->holdPositionAttr()->setTextValue(0.0, "true")));
    int const steps = manager->undoCount();

    view->scripted = [this] { return std::vector<unsigned int>{itemId(IKTool::Impl::HoldPositionFlag)}; };
    view->mousePress(kEmpty);
    EXPECT_EQ(impl().state, IKTool::Impl::ConstellationClick);
    view->mouseMove(Math::Point2d(kEmpty.x + 40, kEmpty.y));  // ignored
    view->mouseRelease(Math::Point2d(kEmpty.x + 40, kEmpty.y));
    EXPECT_EQ(impl().state, IKTool::Impl::Idle);
    for (int k : joints)
        EXPECT_TRUE(impl().skeleton().getAttribute(k)->holdPositionAttr()->localValue()) << k;
    EXPECT_EQ(manager->undoCount(), steps + 1);
    EXPECT_EQ(manager->undoName(), QStringLiteral("IK Joint Settings"));
    EXPECT_EQ(keys(upper), (std::vector<int>{1, 12}));  // no pose was written
}

TEST_F(IKToolArm, SlidersWriteTheClampedPercentageToEverySelectedJoint)
{
    std::vector<int> const joints = {jointOf(fore), jointOf(hand)};
    selectJoints(joints);
    impl().sliderSegments[0] = Math::Segment2d(Math::Point2d(100, 280), Math::Point2d(200, 280));
    CO_CommandManager *manager = session->commandManager();
    int const steps = manager->undoCount();
    auto const weights = [&] {
        std::vector<double> out;
        for (int k : joints)
            out.push_back(impl().skeleton().getAttribute(k)->weightAttr()->localValue());
        return out;
    };

    view->scripted = [this] { return std::vector<unsigned int>{itemId(IKTool::Impl::MobilitySlider)}; };
    view->mousePress(kEmpty);  // before the track's start
    EXPECT_EQ(impl().state, IKTool::Impl::ConstellationSlider);
    EXPECT_EQ(weights(), (std::vector<double>{0, 0}));
    view->mouseMove(Math::Point2d(175, 300));
    EXPECT_EQ(weights(), (std::vector<double>{75, 75}));
    view->mouseMove(Math::Point2d(900, 280));
    EXPECT_EQ(weights(), (std::vector<double>{100, 100}));
    view->mouseRelease(Math::Point2d(900, 280));
    EXPECT_EQ(weights(), (std::vector<double>{100, 100}));
    EXPECT_EQ(impl().state, IKTool::Impl::Idle);
    EXPECT_EQ(manager->undoCount(), steps + 1);
    EXPECT_EQ(manager->undoName(), QStringLiteral("IK Joint Setting"));
}

TEST_F(IKToolArm, ClearKeyframesKeepsTheEndsAndTheCurrentFrameOfEveryAttributeADragKeys)
{
    IKToolSettings &s = IKToolSettings::instance();
    s.setInterpolationEnabled(true);
    s.setFrameRange(1, 12);
    view->render();
    selectJoints({jointOf(hand)});
    dragBy(-30, 20);
    std::vector<int> all;
    for (int f = 1; f <= 12; ++f)
        all.push_back(f);
    ASSERT_EQ(keys(upper), all);
    ASSERT_EQ(keys(fore), all);
    std::vector<int> const handKeys = keys(hand);

    view->render();
    ASSERT_TRUE(impl().canClearKeyframes());
    s.jointSource()->clearKeyframes();
    // Every attribute the drag keyed loses its keys but at the ends and the current frame: the
    // upper arm's and the root's, and also the forearm's and the hand's, whose joints the solve
    // froze (the hand is the parent of a handle that is not dragged) but which the drag keyed
    // all the same.
    std::vector<int> kept;
    for (int f : handKeys)
        if (f == 1 || f == 5 || f == 12)
            kept.push_back(f);
    EXPECT_EQ(keys(upper), (std::vector<int>{1, 5, 12}));
    EXPECT_EQ(upper->toAnimatedModule()->positionAttr()->keyframes(), (std::vector<int>{1, 5, 12}));
    EXPECT_EQ(keys(fore), (std::vector<int>{1, 5, 12}));
    EXPECT_EQ(keys(hand), kept);
    // Nothing is left to clear: the action is no longer offered.
    view->render();
    EXPECT_FALSE(impl().canClearKeyframes());
    EXPECT_TRUE(selected().empty());
    EXPECT_EQ(session->commandManager()->undoName(), QStringLiteral("IK Clear All Affected Keyframes"));

    // A range of 1 to 3 around frame 2 protects every key.
    session->setCurrentFrame(2);
    s.setFrameRange(1, 3);
    view->render();
    EXPECT_FALSE(impl().canClearKeyframes());
}

TEST_F(IKToolArm, TheCursorTellsWhatLiesUnderThePointer)
{
    IKTool::setResourceFolder(QStringLiteral(ANIM_SOURCE_DIR "/resources"));
    EXPECT_EQ(tool().getCursor(kEmpty), TO_Enums::Arrow);
    hitJoint(jointOf(hand));
    EXPECT_EQ(tool().getCursor(kEmpty), TO_Enums::OpenHand);
    EXPECT_EQ(impl().hoverJoint, jointOf(hand));
    EXPECT_TRUE(selected().empty());  // a hover selects nothing
    struct Case {
        int item;
        TO_Enums::Cursor cursor;
    };
    for (Case c : {Case{0, TO_Enums::OpenHand}, Case{4, TO_Enums::OpenHand}, Case{5, TO_Enums::SizeHorizontal},
                   Case{7, TO_Enums::SizeHorizontal}, Case{8, TO_Enums::PointingHand}}) {
        view->scripted = [this, c] { return std::vector<unsigned int>{itemId(c.item)}; };
        EXPECT_EQ(tool().getCursor(kEmpty), c.cursor) << c.item;
    }

    // While a drag is under way: the tool's own cursor, registered with the view.
    selectJoints({jointOf(hand)});
    view->mousePress(kEmpty);
    view->mouseMove(Math::Point2d(kEmpty.x + 10, kEmpty.y));
    int const custom = tool().getCursor(kEmpty);
    EXPECT_GE(custom, int(TO_Enums::CustomFirst));
    EXPECT_FALSE(view->cursorFor(custom).pixmap().isNull());
    view->mouseRelease(Math::Point2d(kEmpty.x + 10, kEmpty.y));
    IKTool::setResourceFolder(QString());
}

TEST_F(IKToolArm, ViewPointsBecomeScenePointsOfTheViewsCamera)
{
    for (Math::Point2d const p : {Math::Point2d(0, 0), Math::Point2d(200, 150), Math::Point2d(17.5, 290)}) {
        Math::Point2d expected;
        ASSERT_TRUE(view->viewToScene(p, expected));
        Math::Point3d const got = tool().viewToScene(p);
        EXPECT_NEAR(got.x, expected.x, 1e-12);
        EXPECT_NEAR(got.y, expected.y, 1e-12);
        EXPECT_EQ(got.z, 0.0);
    }
}

TEST_F(IKToolArm, SetupModeTogglesParticipationAndDragsHandlesInOneStepEach)
{
    IKToolSettings &s = IKToolSettings::instance();
    s.setToolMode(IKToolSettings::SetupMode);
    view->render();
    auto const setupIndex = [this](MO_Module *m, bool handle) {
        for (SkeletonJointDef const &joint : impl().setupSkeleton)
            if (joint.module.get() == m && joint.isHandle == handle)
                return joint.index;
        return -1;
    };
    auto const hitSetup = [this](int k) {
        view->scripted = [this, k] { return std::vector<unsigned int>{impl().setupPickAdaptor.pickingId() + unsigned(k)}; };
    };
    CO_CommandManager *manager = session->commandManager();

    int const f = setupIndex(fore, false);
    ASSERT_NE(f, -1);
    hitSetup(f);
    view->mousePress(kEmpty);
    view->mouseRelease(kEmpty);
    EXPECT_FALSE(IKToolUtil::participates(fore));
    EXPECT_EQ(session->getSelection()->nodes(), std::vector<MO_Node *>{fore});
    EXPECT_EQ(manager->undoName(), QStringLiteral("Selection"));
    ASSERT_TRUE(manager->undo());
    EXPECT_EQ(manager->undoName(), QStringLiteral("Define IK Joint"));
    ASSERT_TRUE(manager->undo());
    EXPECT_TRUE(IKToolUtil::participates(fore));

    // The root is never toggled by a click.
    view->render();
    hitSetup(setupIndex(upper, false));
    view->mousePress(kEmpty);
    view->mouseRelease(kEmpty);
    EXPECT_TRUE(IKToolUtil::isRoot(upper));
    EXPECT_TRUE(IKToolUtil::participates(upper));

    // A handle follows the pointer from its parent joint, in one step.
    session->getSelection()->set({hand});
    view->render();
    int const handle = setupIndex(hand, true);
    ASSERT_NE(handle, -1);
    Math::Vector3d const before = IKToolUtil::handleOrientationForModule(hand);
    int const steps = manager->undoCount();
    hitSetup(handle);
    view->mousePress(kEmpty);
    EXPECT_EQ(impl().state, IKTool::Impl::DraggingHandle);
    view->mouseMove(Math::Point2d(kEmpty.x + 10, kEmpty.y));
    view->mouseMove(Math::Point2d(kEmpty.x + 20, kEmpty.y - 30));
    view->mouseRelease(Math::Point2d(kEmpty.x + 20, kEmpty.y - 30));
    EXPECT_EQ(impl().state, IKTool::Impl::Idle);
    EXPECT_NE(IKToolUtil::handleOrientationForModule(hand), before);
    EXPECT_EQ(manager->undoCount(), steps + 1);
    EXPECT_EQ(manager->undoName(), QStringLiteral("IK Define Handle"));
    EXPECT_TRUE(selected().empty());  // setup mode holds no selection
}

TEST_F(IKToolArm, ApplyAltogetherGivesEveryFrameTheCurrentPoseOfTheSelectedJointOnThePress)
{
    IKToolSettings &s = IKToolSettings::instance();
    s.setInterpolationEnabled(true);
    s.setFrameRange(1, 12);
    s.setInterpolationType(IKToolSettings::Linear);  // applying altogether overrides the type
    view->render();
    int const h = jointOf(hand);
    selectJoints({h});
    Math::Point3d const atCurrent = IKToolUtil::getModuleJointPositionAtFrame(hand, 5);
    CO_CommandManager *manager = session->commandManager();
    int const steps = manager->undoCount();

    view->scripted = [this] { return std::vector<unsigned int>{itemId(IKTool::Impl::ApplyAltogetherButton)}; };
    view->mousePress(kEmpty);
    EXPECT_EQ(impl().state, IKTool::Impl::ApplyingAltogether);
    EXPECT_EQ(manager->undoCount(), steps + 1);
    EXPECT_EQ(manager->undoName(), QStringLiteral("IK Apply Altogether"));
    for (auto const &[f, r] : impl().frames) {
        TIK::IKPositionTask const *task = r.positionTasks.at(h);
        EXPECT_EQ(task->target.x, atCurrent.x) << f;
        EXPECT_EQ(task->target.y, atCurrent.y) << f;
    }
    view->mouseMove(Math::Point2d(kEmpty.x + 50, kEmpty.y));  // ignored
    view->mouseRelease(Math::Point2d(kEmpty.x + 50, kEmpty.y));
    EXPECT_EQ(impl().state, IKTool::Impl::Idle);
    EXPECT_EQ(manager->undoCount(), steps + 1);

    // The hand now stands near its frame 5 place all through the range (the solve pulls each
    // frame's pose towards it from where that frame stood).
    for (int f : {1, 12}) {
        Math::Point3d const p = IKToolUtil::getModuleJointPositionAtFrame(hand, f);
        EXPECT_LT(std::hypot(p.x - atCurrent.x, p.y - atCurrent.y), 0.05) << f;
    }
}

TEST_F(IKToolArm, ASolveWithEveryJointFrozenPrintsTwoLinesAndKeepsThePose)
{
    // A bone pick of the root: no dragged joint has a parent, so every joint is frozen.
    view->scripted = [this] { return std::vector<unsigned int>{boneId(0)}; };
    view->mousePress(kEmpty);
    view->mouseRelease(kEmpty);
    view->scripted = nullptr;
    view->render();
    ASSERT_EQ(selected(), std::set<int>{0});
    ASSERT_TRUE(impl().bonePicked);
    Math::Point3d const before = IKToolUtil::getModuleJointPositionAtFrame(fore, 5);

    testing::internal::CaptureStdout();
    view->mousePress(kEmpty);
    view->mouseMove(Math::Point2d(kEmpty.x + 20, kEmpty.y));
    std::string const out = testing::internal::GetCapturedStdout();
    view->mouseRelease(Math::Point2d(kEmpty.x + 20, kEmpty.y));
    EXPECT_EQ(out, "######################################\nsolve returned: 0\n");
    Math::Point3d const after = IKToolUtil::getModuleJointPositionAtFrame(fore, 5);
    EXPECT_NEAR(after.x, before.x, 1e-12);
    EXPECT_NEAR(after.y, before.y, 1e-12);
}

TEST_F(IKToolArm, PointsThatAreNotFiniteAndIdsOfNothingAreRefusedAndChangeNothing)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const inf = std::numeric_limits<double>::infinity();
    int const h = jointOf(hand);
    selectJoints({h});
    QByteArray const before = TUSceneFile::write(*session->scene());
    int const steps = session->commandManager()->undoCount();

    struct Case {
        char const *what;
        Math::Point2d point;
    };
    for (Case const &c : {Case{"NaN x", {nan, 280}}, Case{"NaN y", {50, nan}}, Case{"+inf", {inf, 280}},
                          Case{"-inf", {50, -inf}}}) {
        SCOPED_TRACE(c.what);
        // A press there is ignored.
        EXPECT_TRUE(tool().onMouseDown(GR_StylusPoint(c.point)));
        EXPECT_EQ(impl().state, IKTool::Impl::Idle);
        // A move there, in a press, neither starts nor moves a drag; a release there ends it.
        view->mousePress(kEmpty);
        ASSERT_EQ(impl().state, IKTool::Impl::Pressed);
        EXPECT_TRUE(tool().onMouseMove({GR_StylusPoint(c.point)}));
        EXPECT_EQ(impl().state, IKTool::Impl::Pressed);
        EXPECT_TRUE(tool().onMouseUp(GR_StylusPoint(c.point)));
        EXPECT_EQ(impl().state, IKTool::Impl::Idle);
        EXPECT_EQ(selected(), std::set<int>{h});
        view->render();
    }
    EXPECT_FALSE(tool().onMouseMove({}));

    // Ids that belong to nothing of the tool: a hover over them changes nothing.
    for (unsigned int id : {0u, 0xFFFFFFu, 0xFFFFFFFFu}) {
        EXPECT_EQ(tool().oglScanHit(id, false), -1);
        EXPECT_EQ(selected(), std::set<int>{h});
    }
    // A bone id against an empty skeleton has nothing to resolve to.
    view->scripted = nullptr;
    tool().getCursor(kEmpty);  // a pick pass reserves the ids of the joints and bones
    unsigned int const bone = boneId(h);
    impl().skeleton().clear();
    EXPECT_EQ(tool().oglScanHit(bone, true), -1);
    EXPECT_EQ(selected(), std::set<int>{h});
    // A constellation joint that no longer exists: the click writes nothing.
    view->render();
    impl().constellationJoint = 99;
    view->scripted = [this] { return std::vector<unsigned int>{itemId(IKTool::Impl::BlockerFlag)}; };
    view->mousePress(kEmpty);
    view->mouseRelease(kEmpty);

    EXPECT_EQ(session->commandManager()->undoCount(), steps);
    EXPECT_EQ(TUSceneFile::write(*session->scene()), before);
}

TEST_F(IKToolArm, APressOnASelectedJointTogglesTheConstellationAndADragHidesIt)
{
    int const h = jointOf(hand);
    selectJoints({h});
    hitJoint(h);
    view->mousePress(kEmpty);
    EXPECT_TRUE(impl().constellationVisible);
    view->mouseRelease(kEmpty);
    view->render();
    view->mousePress(kEmpty);
    EXPECT_FALSE(impl().constellationVisible);
    view->mouseRelease(kEmpty);
    view->render();
    view->mousePress(kEmpty);
    EXPECT_TRUE(impl().constellationVisible);
    view->mouseMove(Math::Point2d(kEmpty.x + 10, kEmpty.y));
    EXPECT_FALSE(impl().constellationVisible);
    view->mouseRelease(Math::Point2d(kEmpty.x + 10, kEmpty.y));

    // An empty press hides it, unless the third modifier is held.
    view->render();
    hitJoint(-1);
    impl().constellationVisible = false;
    view->mousePress(kEmpty, Qt::AltModifier);
    EXPECT_TRUE(impl().constellationVisible);
    view->mouseRelease(kEmpty, Qt::AltModifier);
}

TEST_F(IKToolArm, ARangeWithoutTheCurrentFrameHasNoPoseToDragAndWritesNothing)
{
    int const h = jointOf(hand);
    selectJoints({h});  // the selection outlives the change of range
    IKToolSettings &s = IKToolSettings::instance();
    s.setInterpolationEnabled(true);
    s.setFrameRange(7, 12);
    view->render();
    EXPECT_EQ(impl().frames.begin()->first, 7);
    EXPECT_EQ(impl().frames.size(), 6u);
    ASSERT_EQ(selected(), std::set<int>{h});
    QByteArray const before = TUSceneFile::write(*session->scene());
    view->mousePress(kEmpty);
    view->mouseMove(Math::Point2d(kEmpty.x + 20, kEmpty.y));
    EXPECT_EQ(impl().state, IKTool::Impl::Idle);  // the current frame's record is empty
    view->mouseRelease(Math::Point2d(kEmpty.x + 20, kEmpty.y));
    EXPECT_EQ(TUSceneFile::write(*session->scene()), before);
}

TEST_F(IKToolArm, AHeldJointRunsFromItsFirstToItsLastPlaceUnlessItFollowsItsActualPosition)
{
    IKToolSettings &s = IKToolSettings::instance();
    s.setInterpolationEnabled(true);
    s.setFrameRange(1, 12);
    view->render();
    int const f = jointOf(fore);
    int const h = jointOf(hand);
    selectJoints({h});
    JointAttr *attr = impl().skeleton().getAttribute(f);
    CO_CommandManager *manager = session->commandManager();
    ASSERT_TRUE(manager->execute(attr->holdPositionAttr()->setTextValue(0.0, "true")));

    // The tasks as a drag sets them up: the hand's drag task, then the forearm's hold task. Before
    // any solve, the hold task's residual is the forearm's place minus the task's target.
    for (bool actual : {false, true}) {
        SCOPED_TRACE(actual);
        if (actual) {
            ASSERT_TRUE(manager->execute(attr->useActualPositionAttr()->setTextValue(0.0, "true")));
        }
        view->render();
        impl().resetSolvers();
        impl().setUpTasks();
        Math::Point3d const first = impl().frames.at(1).skeleton[std::size_t(f)].position;
        Math::Point3d const last = impl().frames.at(12).skeleton[std::size_t(f)].position;
        for (int frame : {1, 4, 9, 12}) {
            FrameRecord &r = impl().frames.at(frame);
            Math::Point3d const here = r.skeleton[std::size_t(f)].position;
            double const t = (frame - 1) / 11.0;
            Math::Point3d const target =
                actual ? here : Math::Point3d(first.x + (last.x - first.x) * t, first.y + (last.y - first.y) * t, 0);
            std::vector<double> const residuals = r.solver->currentResiduals();
            std::size_t const hold = std::size_t(r.solver->parameterCount()) + 2;
            ASSERT_GT(residuals.size(), hold + 1);
            EXPECT_NEAR(residuals[hold], here.x - target.x, 1e-12) << frame;
            EXPECT_NEAR(residuals[hold + 1], here.y - target.y, 1e-12) << frame;
        }
        // Frame 4 is not on the line from frame 1 to 12: the two cases differ there.
        if (!actual) {
            TIK::IKSolver *solver = impl().frames.at(4).solver.get();
            EXPECT_GT(std::abs(solver->currentResiduals()[std::size_t(solver->parameterCount()) + 2]), 1e-6);
        }
    }
}

// Drawing: the tool's pose painted in the view, and found again by the view's real pick pass.

namespace {

VS_RGBA pixelAt(QImage const &image, Math::Point2d const &p)
{
    QColor const c = image.pixelColor(int(std::lround(p.x)), int(std::lround(p.y)));
    return VS_RGBA(std::uint8_t(c.red()), std::uint8_t(c.green()), std::uint8_t(c.blue()), std::uint8_t(c.alpha()));
}

bool sameColour(VS_RGBA const &a, VS_RGBA const &b) { return a.r == b.r && a.g == b.g && a.b == b.b; }

}  // namespace

TEST_F(IKToolArm, AJointIsPaintedAtItsPlaceAndARealPickThereSelectsIt)
{
    hitJoint(-1);  // the view's own pick pass alone
    int const f = jointOf(fore);
    ASSERT_GE(f, 0);
    Math::Point2d const p = pixelOf(*view, impl().skeleton()[std::size_t(f)].solvedPosition);
    QImage const &image = view->render();
    // Every weight is at the scale's maximum, so the disc shows the fill colour itself.
    EXPECT_TRUE(sameColour(pixelAt(image, p), IKPreferences::jointFillColor()));
    EXPECT_TRUE(selected().empty());

    view->mousePress(p);
    view->mouseRelease(p);
    EXPECT_EQ(selected(), std::set<int>{f});
    // The pick pass reserved an id for each joint and each bone.
    EXPECT_GE(impl().record(impl().currentKey()).pickAdaptor.nbHandles(), 2 * int(impl().skeleton().size()));

    // Selected, the joint wears a halo just inside its rim.
    QImage const &haloed = view->render();
    int const r = IKPreferences::jointSize();
    EXPECT_TRUE(sameColour(pixelAt(haloed, p + Math::Vector2d(r, 0)), IKPreferences::selectedJointColor()));
}

TEST_F(IKToolArm, ARealPickOnTheConstellationFlipsTheFlagOfTheButtonUnderThePointer)
{
    hitJoint(-1);
    int const f = jointOf(fore);
    Math::Point2d const p = pixelOf(*view, impl().skeleton()[std::size_t(f)].solvedPosition);
    view->mousePress(p);
    view->mouseRelease(p);
    ASSERT_EQ(selected(), std::set<int>{f});
    view->render();
    if (!impl().constellationVisible) {  // a press that leaves it hidden shows it the next time
        view->mousePress(p);
        view->mouseRelease(p);
        view->render();
    }
    ASSERT_TRUE(impl().constellationVisible);
    EXPECT_EQ(impl().constellationJoint, f);
    // The mobility button sits 32 pixels left of its slider's track.
    Math::Segment2d const track = impl().sliderSegments[0];
    EXPECT_GT(track.b.x, track.a.x);
    Math::Point2d const button = track.a - Math::Vector2d(32, 0);
    bool const mobile = impl().skeleton()[std::size_t(f)].isMobile();
    view->mousePress(button);
    view->mouseRelease(button);
    view->render();
    EXPECT_EQ(impl().skeleton()[std::size_t(f)].isMobile(), !mobile);
    EXPECT_EQ(selected(), std::set<int>{f});
}

TEST_F(IKToolArm, SetupModeEmptiesTheSelectionAndPicksOnlySetupJoints)
{
    hitJoint(-1);
    int const f = jointOf(fore);
    Math::Point2d const p = pixelOf(*view, impl().skeleton()[std::size_t(f)].solvedPosition);
    view->mousePress(p);
    view->mouseRelease(p);
    ASSERT_EQ(selected(), std::set<int>{f});
    IKToolSettings::instance().setToolMode(IKToolSettings::SetupMode);
    view->render();
    EXPECT_TRUE(selected().empty());
    EXPECT_FALSE(impl().constellationVisible && impl().constellationJoint >= 0);
    ASSERT_FALSE(impl().setupSkeleton.empty());
    view->pick(UT_Point::fromPoint2d(p), false, 0);
    EXPECT_TRUE(impl().hoverFromSetup);
    EXPECT_GE(impl().hoverJoint, 0);
    // Setup bones are not offered to picking: the middle of a bone finds no joint.
    Math::Point2d const b = pixelOf(*view, impl().skeleton()[std::size_t(jointOf(hand))].solvedPosition);
    view->pick(UT_Point::fromPoint2d(p + (b - p) * 0.5), false, 0);
    EXPECT_EQ(impl().hoverJoint, -1);
}

TEST(IKToolGhosts, GhostsFadeFromBesideTheCurrentFrameToTheFarEnds)
{
    struct Case {
        int frame;
        int alpha;
        bool after;
    };
    // A range of 1 to 5 with the current frame at 3.
    Case const cases[] = {{1, 12, false}, {2, 76, false}, {4, 140, true}, {5, 76, true}};
    for (Case const &c : cases) {
        VS_RGBA const colour = IKTool::Impl::ghostColour(1, 3, 5, c.frame);
        VS_RGBA const base =
            c.after ? IKPreferences::interpolationBaseColorAfter() : IKPreferences::interpolationBaseColorBefore();
        EXPECT_EQ(int(colour.a), c.alpha) << c.frame;
        EXPECT_TRUE(sameColour(colour, base)) << c.frame;
    }
    // A current frame outside the range, or a range of one frame, keeps the alpha between the ends.
    struct Odd {
        int from, current, to, frame;
    };
    Odd const odd[] = {{5, 2, 9, 1}, {5, 4, 5, 9}, {3, 3, 3, 3}, {1, 8, 5, 3}, {1, 8, 5, 12}};
    for (Odd const &o : odd) {
        int const alpha = IKTool::Impl::ghostColour(o.from, o.current, o.to, o.frame).a;
        EXPECT_GE(alpha, 12) << o.from << " " << o.current << " " << o.to << " " << o.frame;
        EXPECT_LE(alpha, 204) << o.from << " " << o.current << " " << o.to << " " << o.frame;
    }
}

TEST_F(IKToolArm, GhostsOfTheOtherFramesAreDrawnUnderThePose)
{
    hitJoint(-1);
    IKToolSettings &s = IKToolSettings::instance();
    s.setInterpolationEnabled(true);
    s.setFrameRange(1, 12);
    QImage const withGhosts = view->render();
    s.setInterpolationEnabled(false);
    QImage const alone = view->render();
    // The arm has no keys that move it, so the ghosts sit under the pose; they tint its bones.
    int const f = jointOf(fore);
    Math::Point2d const a = pixelOf(*view, impl().skeleton()[std::size_t(f)].solvedPosition);
    EXPECT_NE(withGhosts, alone);
    EXPECT_TRUE(sameColour(pixelAt(alone, a), pixelAt(withGhosts, a)));  // the pose is on top
}

TEST_F(IKToolArm, ARealPickOnABoneSelectsTheJointItLeadsTo)
{
    hitJoint(-1);
    int const f = jointOf(fore);
    int const h = jointOf(hand);
    Math::Point2d const a = pixelOf(*view, impl().skeleton()[std::size_t(f)].solvedPosition);
    Math::Point2d const b = pixelOf(*view, impl().skeleton()[std::size_t(h)].solvedPosition);
    Math::Point2d const middle = a + (b - a) * 0.5;
    ASSERT_GT(a.GetDistance(b), 3.0 * IKPreferences::jointPickSize());
    view->mousePress(middle);
    EXPECT_TRUE(impl().bonePicked);
    view->mouseRelease(middle);
    EXPECT_EQ(selected(), std::set<int>{h});
}
