// Module manipulators: for each node kind, solved positions moved by a known offset or angle give
// the keyframe value worked out by hand; builds that must fail; the order of application, the
// incremental angle step, the held-parent rule for handles, and the lifecycle of a set.
#include "BridgeTestUtil.h"

#include "bridge/ModuleManipulator.h"
#include "solver/IKSolver.h"

#include <cmath>
#include <limits>

using namespace BridgeTest;

namespace {

int const kFrame = 4;

// One pose at kFrame: its skeleton and its manipulators.
struct Pose {
    SkeletonDef skeleton;
    ManipulatorSet set;
    bool built = false;

    explicit Pose(MO_Module *root, TIK::IKSolver *solver = nullptr)
    {
        skeleton = extract(root, poseSettings(kFrame));
        built = set.build(kFrame, root, solver, skeleton);
    }

    SkeletonJointDef &joint(MO_Module *module, bool handle = false)
    {
        SkeletonJointDef const *found = jointOf(skeleton, module, handle);
        EXPECT_NE(found, nullptr);
        return skeleton[std::size_t(found ? found->index : 0)];
    }
    // Turns the solved positions of the joints of `modules` (and their handles) about `centre`.
    void turn(std::initializer_list<MO_Module *> modules, Math::Point3d const &centre, double degrees)
    {
        for (SkeletonJointDef &j : skeleton)
            for (MO_Module *m : modules)
                if (j.module.get() == m)
                    j.solvedPosition = turned(j.solvedPosition, centre, degrees);
    }
    void moveAll(Math::Vector3d const &delta)
    {
        for (SkeletonJointDef &j : skeleton)
            j.solvedPosition += delta;
    }
    void commit(CO_CommandManager &manager)
    {
        CO_CommandAccumScope scope(&manager, QStringLiteral("IK Manipulation"));
        set.update();
        set.commit(&manager);
    }
};

void expectKeyOnlyAtFrame(AT_Attr const *attr)
{
    EXPECT_EQ(attr->keyframes(), std::vector<int>{kFrame});
}

// A bone of `length` field units, `orientation` degrees.
template <class Bone>
Bone *addBone(Graph &g, char const *name, double length, double orientation = 0.0)
{
    Bone *bone = g.add<Bone>(name);
    bone->lengthAttr()->setLocalValue(length);
    bone->orientationAttr()->setLocalValue(orientation);
    return bone;
}

struct RootAndArm {
    MO_PegModule *root;
    MO_PegModule *arm;
};

// A root peg at the origin and a joint peg `armX` field units to its right (24: at (2, 0)).
RootAndArm rootAndArm(Graph &g, double armX = 24.0)
{
    std::vector<MO_PegModule *> const pegs = g.pegChain({"root", "arm"});
    pegs[1]->positionAttr()->setLocalValue(Math::Point3d(armX, 0, 0));
    return {pegs[0], pegs[1]};
}

} // namespace

TEST(ModuleManipulator, ARootPegMovesByTheSolvedOffsetTakenIntoItsParentsAxes)
{
    Graph g;
    auto *parent = g.add<MO_PegModule>("parent");
    auto *root = g.add<MO_PegModule>("root");
    auto *arm = g.add<MO_PegModule>("arm");
    Graph::link(parent, root);
    Graph::link(root, arm);
    parent->rotationAttr()->setLocalValue(Math::Angle3d(0, 0, 90));
    root->positionAttr()->setLocalValue(Math::Point3d(12, 0, 0));
    arm->positionAttr()->setLocalValue(Math::Point3d(24, 0, 0));
    g.root(root);
    g.joint(arm);

    int const undoSteps = g.manager.undoCount();
    Pose pose(root);
    ASSERT_TRUE(pose.built);
    pose.moveAll(Math::Vector3d(1, 0, 0));
    pose.commit(g.manager);
    // (1, 0) in the scene is (0, -1) in the parent's axes turned a quarter: (0, -16) field units.
    expectNear(root->positionAttr()->valueAt(kFrame), Math::Point3d(12, -16, 0));
    expectKeyOnlyAtFrame(root->positionAttr());
    EXPECT_NEAR(root->rotationAttr()->valueAt(kFrame).z, 0.0, 1e-9);  // the arm followed the root
    EXPECT_EQ(g.manager.undoCount(), undoSteps + 1);
}

TEST(ModuleManipulator, BoneAndGameBoneRootsMoveTheirOffset)
{
    for (bool game : {false, true}) {
        Graph g;
        BendyBoneModule *bone =
            game ? addBone<GameBoneModule>(g, "bone", 24) : addBone<BendyBoneModule>(g, "bone", 24);
        auto *tip = g.add<MO_PegModule>("tip");
        Graph::link(bone, tip);
        bone->offsetAttr()->setLocalValue(Math::Point2d(12, 16));
        g.root(bone);
        g.joint(tip);

        Pose pose(bone);
        ASSERT_TRUE(pose.built) << game;
        testing::internal::CaptureStdout();
        pose.set.dump();
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  "Root Bendy Bone Manipulator : frame: 4.000000\n  x: 12.000000 y: 16.000000\n"
                  "Animated Module Handle Manipulator : frame: 4.000000\n  angleZ: 0.000000\n");
        pose.moveAll(Math::Vector3d(0.5, 0.25, 0));
        pose.commit(g.manager);
        EXPECT_EQ(bone->offsetAttr()->valueAt(kFrame), Math::Point2d(18, 20)) << game;
        expectKeyOnlyAtFrame(bone->offsetAttr());
    }
}

TEST(ModuleManipulator, AnOffsetRootMovesItsOffsetAndTurnsForItsChild)
{
    Graph g;
    auto *offset = g.add<OffsetModule>("offset");
    auto *tip = g.add<MO_PegModule>("tip");
    Graph::link(offset, tip);
    offset->offsetAttr()->setLocalValue(Math::Point2d(12, 0));
    tip->positionAttr()->setLocalValue(Math::Point3d(12, 0, 0));  // at (2, 0) in the scene
    g.root(offset);
    g.joint(tip);

    Pose pose(offset);
    ASSERT_TRUE(pose.built);
    pose.moveAll(Math::Vector3d(0.5, 0.25, 0));
    pose.turn({tip}, Math::Point3d(1.5, 0.25, 0), 30.0);
    pose.commit(g.manager);
    EXPECT_EQ(offset->offsetAttr()->valueAt(kFrame), Math::Point2d(18, 4));
    EXPECT_NEAR(offset->orientationAttr()->valueAt(kFrame), 30.0, 1e-9);
    expectKeyOnlyAtFrame(offset->orientationAttr());
}

TEST(ModuleManipulator, APegTurnsItsParentPegAndItsHandleTurnsItself)
{
    Graph g;
    auto [root, arm] = rootAndArm(g);

    Pose pose(root);
    ASSERT_TRUE(pose.built);
    pose.turn({arm}, Math::Point3d(0, 0, 0), 30.0);
    SkeletonJointDef &handle = pose.joint(arm, true);
    handle.solvedPosition = turned(handle.solvedPosition, pose.joint(arm).solvedPosition, -45.0);
    pose.commit(g.manager);
    EXPECT_NEAR(root->rotationAttr()->valueAt(kFrame).z, 30.0, 1e-9);
    EXPECT_NEAR(arm->rotationAttr()->valueAt(kFrame).z, -45.0, 1e-9);
    expectKeyOnlyAtFrame(root->rotationAttr());
    expectKeyOnlyAtFrame(arm->rotationAttr());
    expectKeyOnlyAtFrame(root->positionAttr());  // the root writes even when it did not move
    EXPECT_EQ(root->positionAttr()->valueAt(kFrame), Math::Point3d());
}

TEST(ModuleManipulator, BonesTurnTheirParentBoneAndTheirHandleTurnsThemselves)
{
    Graph g;
    auto *upper = addBone<BendyBoneModule>(g, "upper", 24);
    auto *lower = addBone<BendyBoneModule>(g, "lower", 24);
    Graph::link(upper, lower);
    g.root(upper);
    g.joint(lower);

    Pose pose(upper);
    ASSERT_TRUE(pose.built);
    EXPECT_EQ(pose.set.size(), 3);
    testing::internal::CaptureStdout();
    pose.set.dump();
    // The scalar classes print nothing.
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Root Bendy Bone Manipulator : frame: 4.000000\n  x: 0.000000 y: 0.000000\n");
    pose.turn({lower}, Math::Point3d(0, 0, 0), 30.0);
    SkeletonJointDef &handle = pose.joint(lower, true);
    handle.solvedPosition = turned(handle.solvedPosition, pose.joint(lower).solvedPosition, 20.0);
    pose.commit(g.manager);
    EXPECT_NEAR(upper->orientationAttr()->valueAt(kFrame), 30.0, 1e-9);
    EXPECT_NEAR(lower->orientationAttr()->valueAt(kFrame), 20.0, 1e-9);
    expectKeyOnlyAtFrame(upper->orientationAttr());
    expectKeyOnlyAtFrame(lower->orientationAttr());
}

TEST(ModuleManipulator, ACurveTurnsItsSecondPieceForItsChildAndForItsHandle)
{
    for (bool withChild : {true, false}) {
        Graph g;
        auto *root = g.add<MO_PegModule>("root");
        auto *curve = g.add<CurveModule>("curve");
        Graph::link(root, curve);
        curve->length0Attr()->setLocalValue(24);  // the elbow at (2, 0)
        curve->length1Attr()->setLocalValue(24);
        g.root(root);
        g.joint(curve);
        MO_PegModule *tip = nullptr;
        if (withChild) {
            tip = g.add<MO_PegModule>("tip");
            Graph::link(curve, tip);
            tip->positionAttr()->setLocalValue(Math::Point3d(12, 0, 0));  // (3, 0)
            g.joint(tip);
        }

        Pose pose(root);
        ASSERT_TRUE(pose.built) << withChild;
        Math::Point3d const elbow(2, 0, 0);
        expectNear(pose.joint(curve).position, elbow);
        if (withChild)
            pose.turn({tip}, elbow, 30.0);
        else
            pose.joint(curve, true).solvedPosition = turned(pose.joint(curve, true).solvedPosition, elbow, 30.0);
        pose.commit(g.manager);
        EXPECT_NEAR(curve->orientation1()->valueAt(kFrame), 30.0, 1e-9) << withChild;
        EXPECT_NEAR(curve->orientation0()->valueAt(kFrame), 0.0, 1e-9);
        expectKeyOnlyAtFrame(curve->orientation1());
    }
}

TEST(ModuleManipulator, AnOffsetUnderAPegTurnsForItsChild)
{
    Graph g;
    auto *root = g.add<MO_PegModule>("root");
    auto *offset = g.add<OffsetModule>("offset");
    auto *tip = g.add<MO_PegModule>("tip");
    Graph::link(root, offset);
    Graph::link(offset, tip);
    offset->offsetAttr()->setLocalValue(Math::Point2d(12, 0));  // (1, 0)
    tip->positionAttr()->setLocalValue(Math::Point3d(12, 0, 0));
    g.root(root);
    g.joint(offset);
    g.joint(tip);

    Pose pose(root);
    ASSERT_TRUE(pose.built);
    pose.turn({tip}, Math::Point3d(1, 0, 0), -60.0);
    pose.commit(g.manager);
    EXPECT_NEAR(offset->orientation()->valueAt(kFrame), -60.0, 1e-9);
    EXPECT_NEAR(root->rotationAttr()->valueAt(kFrame).z, 0.0, 1e-9);
}

TEST(ModuleManipulator, ATurnBeyondAQuarterTakesMoreThanOneUpdate)
{
    Graph g;
    auto [root, arm] = rootAndArm(g);

    int const undoSteps = g.manager.undoCount();
    Pose pose(root);
    ASSERT_TRUE(pose.built);
    pose.turn({arm}, Math::Point3d(0, 0, 0), 120.0);
    pose.set.update();
    EXPECT_NEAR(root->rotationAttr()->valueAt(kFrame).z, 60.0, 1e-9);  // asin(sin 120)
    pose.set.update();
    EXPECT_NEAR(root->rotationAttr()->valueAt(kFrame).z, 120.0, 1e-9);
    pose.set.update();
    EXPECT_NEAR(root->rotationAttr()->valueAt(kFrame).z, 120.0, 1e-9);
    EXPECT_TRUE(root->rotationAttr()->keyframes().empty());  // surrogates only, so far
    EXPECT_EQ(g.manager.undoCount(), undoSteps);
}

TEST(ModuleManipulator, AHandleOfAParentHeldStillFollowsThePoseAndNotTheSolvedTip)
{
    for (double activity : {0.0, 1.0}) {
        Graph g;
        auto [root, arm] = rootAndArm(g);
        IKToolUtil::getIKMetaDataForModule(arm)->skeletonMetaData()->jointAttr()->holdOrientationAttr()->setLocalValue(true);

        SkeletonDef skeleton = extract(root, poseSettings(kFrame));
        std::unique_ptr<TIK::IKSolver> solver = TIK::createSolver();
        solver->setSkeleton(skeleton, 0);
        solver->joint(nameOf(arm).c_str())->setActivity(activity);
        Pose pose(root, solver.get());
        ASSERT_TRUE(pose.built);
        SkeletonJointDef &handle = pose.joint(arm, true);
        handle.solvedPosition = turned(handle.solvedPosition, pose.joint(arm).solvedPosition, 40.0);
        pose.commit(g.manager);
        EXPECT_NEAR(arm->rotationAttr()->valueAt(kFrame).z, activity == 0.0 ? 0.0 : 40.0, 1e-9) << activity;
    }
}

TEST(ModuleManipulator, OfTwoManipulatorsOnOneAttributeTheLastWritesAndABoneHandleSaysWhy)
{
    Graph g;
    auto *upper = addBone<BendyBoneModule>(g, "upper", 24);
    auto *lower = addBone<BendyBoneModule>(g, "lower", 24);
    Graph::link(upper, lower);
    g.root(upper);
    g.joint(lower);

    Pose pose(upper);
    SkeletonDef const source = pose.skeleton;
    IKToolUtil::copyHandlesToSkeleton(pose.skeleton, source, kFrame);  // a second handle on lower
    ASSERT_EQ(pose.skeleton.size(), 4u);
    ASSERT_TRUE(pose.set.build(kFrame, upper, nullptr, pose.skeleton));
    EXPECT_EQ(pose.set.size(), 4);
    pose.skeleton[3].solvedPosition = turned(pose.skeleton[3].solvedPosition, pose.skeleton[1].solvedPosition, 10.0);
    testing::internal::CaptureStdout();
    pose.commit(g.manager);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Preventing second update on attribute of lower...\n");
    EXPECT_NEAR(lower->orientationAttr()->valueAt(kFrame), 10.0, 1e-9);
    expectKeyOnlyAtFrame(lower->orientationAttr());
}

TEST(ModuleManipulator, TwoChildrenOfOneParentMakeOneManipulatorDrivenByTheFirst)
{
    Graph g;
    auto *root = g.add<MO_PegModule>("root");
    auto *first = g.add<MO_PegModule>("first");
    auto *second = g.add<MO_PegModule>("second");
    Graph::link(root, first);
    Graph::link(root, second);
    first->positionAttr()->setLocalValue(Math::Point3d(24, 0, 0));
    second->positionAttr()->setLocalValue(Math::Point3d(0, 32, 0));
    g.root(root);
    g.joint(first);
    g.joint(second);

    Pose pose(root);
    ASSERT_TRUE(pose.built);
    EXPECT_EQ(pose.set.size(), 4);  // root, one turn of the root, two handles
    MO_Module *driver = pose.skeleton[1].module.get();
    MO_Module *other = driver == first ? static_cast<MO_Module *>(second) : first;
    pose.turn({driver}, Math::Point3d(), 25.0);
    pose.turn({other}, Math::Point3d(), -70.0);  // no influence
    pose.commit(g.manager);
    EXPECT_NEAR(root->rotationAttr()->valueAt(kFrame).z, 25.0, 1e-9);
}

TEST(ModuleManipulator, BuildsFailForKindsWithoutManipulator)
{
    ManipulatorSet set;
    SkeletonDef empty;
    EXPECT_FALSE(set.build(kFrame, nullptr, nullptr, empty));
    EXPECT_FALSE(set.isValid());

    {  // a curve cannot be a root
        Graph g;
        auto *curve = g.add<CurveModule>("curve");
        auto *tip = g.add<MO_PegModule>("tip");
        Graph::link(curve, tip);
        g.root(curve);
        g.joint(tip);
        Pose pose(curve);
        ASSERT_EQ(pose.skeleton.size(), 3u);
        EXPECT_FALSE(pose.built);
        EXPECT_FALSE(pose.set.isValid());
        EXPECT_EQ(pose.set.size(), 0);
        EXPECT_EQ(curve->orientation1()->surrogate(), nullptr);  // nothing left attached
    }
    {  // an offset has no handle manipulator
        Graph g;
        auto *root = g.add<MO_PegModule>("root");
        auto *offset = g.add<OffsetModule>("offset");
        Graph::link(root, offset);
        g.root(root);
        g.joint(offset);
        Pose pose(root);
        ASSERT_EQ(pose.skeleton.size(), 3u);
        EXPECT_FALSE(pose.built);
        EXPECT_EQ(root->rotationAttr()->surrogate(), nullptr);
    }
    {  // a parent of a kind that cannot turn: a mini peg root
        Graph g;
        auto *mini = g.add<MiniPegModule>("mini");
        g.root(mini);
        Pose pose(mini);
        ASSERT_EQ(pose.skeleton.size(), 1u);
        EXPECT_FALSE(pose.built);
    }
}

TEST(ModuleManipulator, ASetPreviewsThroughSurrogatesAndStartsOverAfterCommit)
{
    Graph g;
    auto [root, arm] = rootAndArm(g);
    int const undoSteps = g.manager.undoCount();

    {  // abandoned: nothing stays
        Pose pose(root);
        ASSERT_TRUE(pose.built);
        EXPECT_EQ(pose.set.root(), root);
        pose.turn({arm}, Math::Point3d(), 30.0);
        pose.set.update();
        EXPECT_NEAR(root->rotationAttr()->valueAt(kFrame).z, 30.0, 1e-9);
        expectNear(IKToolUtil::getModuleJointPositionAtFrame(arm, kFrame), pose.joint(arm).solvedPosition);
        pose.set.reset();
        EXPECT_EQ(root->rotationAttr()->surrogate(), nullptr);
        EXPECT_NEAR(root->rotationAttr()->valueAt(kFrame).z, 0.0, 1e-9);
        pose.set.update();
    }
    EXPECT_EQ(root->rotationAttr()->surrogate(), nullptr);
    EXPECT_EQ(root->rotationAttr()->valueAt(kFrame), Math::Angle3d());
    EXPECT_EQ(g.manager.undoCount(), undoSteps);

    Pose pose(root);
    pose.turn({arm}, Math::Point3d(), 30.0);
    pose.commit(g.manager);
    EXPECT_TRUE(pose.set.isValid());
    EXPECT_EQ(pose.set.size(), 0);
    EXPECT_EQ(pose.set.root(), nullptr);
    EXPECT_EQ(pose.set.frame(), 0.0);
    pose.set.update();  // nothing to do
    EXPECT_EQ(g.manager.undoCount(), undoSteps + 1);
    ASSERT_TRUE(g.manager.undo());
    EXPECT_TRUE(root->rotationAttr()->keyframes().empty());
    EXPECT_TRUE(root->positionAttr()->keyframes().empty());
    EXPECT_EQ(root->rotationAttr()->valueAt(kFrame), Math::Angle3d());
}

TEST(ModuleManipulator, ClearingKeyframesRemovesTheKeyAtTheFrameOnly)
{
    Graph g;
    auto [root, arm] = rootAndArm(g, 0.0);
    ASSERT_TRUE(root->rotationAttr()->setKeyframe(2, Math::Angle3d(0, 0, 5)));
    ASSERT_TRUE(root->rotationAttr()->setKeyframe(kFrame, Math::Angle3d(0, 0, 15)));

    Pose pose(root);
    ASSERT_TRUE(pose.built);
    {
        CO_CommandAccumScope scope(&g.manager, QStringLiteral("IK Clear All Affected Keyframes"));
        pose.set.clearKeyframes(&g.manager);
    }
    EXPECT_EQ(root->rotationAttr()->keyframes(), std::vector<int>{2});
    EXPECT_TRUE(pose.set.isValid());
    EXPECT_EQ(pose.set.size(), 0);
    ASSERT_TRUE(g.manager.undo());
    EXPECT_EQ(root->rotationAttr()->keyframes(), (std::vector<int>{2, kFrame}));
}

TEST(ModuleManipulator, SolvedPositionsThatAreNotFiniteLeaveTheValuesAsTheyWere)
{
    double const inf = std::numeric_limits<double>::infinity();
    for (double bad : {std::nan(""), inf, -inf}) {
        Graph g;
        auto [root, arm] = rootAndArm(g);
        Pose pose(root);
        ASSERT_TRUE(pose.built);
        for (SkeletonJointDef &joint : pose.skeleton)
            joint.solvedPosition = Math::Point3d(bad, 1.0, 0.0);
        auto expectUnchanged = [&, root = root, arm = arm] {
            EXPECT_EQ(root->positionAttr()->valueAt(kFrame), Math::Point3d()) << bad;
            EXPECT_EQ(root->rotationAttr()->valueAt(kFrame), Math::Angle3d()) << bad;
            EXPECT_EQ(arm->rotationAttr()->valueAt(kFrame), Math::Angle3d()) << bad;
        };
        pose.set.update();
        expectUnchanged();  // the preview
        pose.commit(g.manager);
        expectUnchanged();  // the keys
    }
}
