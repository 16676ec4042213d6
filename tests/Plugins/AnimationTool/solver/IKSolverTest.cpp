#include "solver/IKSolver.h"

#include "SolverTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace TIK;
using namespace SolverTest;

constexpr int kIterations = 100;

Math::Point2d at(IKSolver &solver, char const *name)
{
    solver.updateJoints();
    return solver.joint(name)->position().toPoint2d();
}

void expectNear(Math::Point2d actual, Math::Point2d expected, double tolerance, char const *what)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance) << what;
    EXPECT_NEAR(actual.y, expected.y, tolerance) << what;
}

IKPositionTask *drag(IKSolver &solver, char const *joint, Math::Point2d target)
{
    IKPositionTask *task = solver.addPositionTask(joint, 0);
    task->setTarget(target.x, target.y, 0.0);
    task->setWeight(10.0);
    return task;
}

TEST(IKSolver, ControlValuesAreThoseOfTheMinimiserSetUp)
{
    std::unique_ptr<IKSolver> solver = createSolver();
    MinimiserControl const &c = solver->control();
    EXPECT_EQ(c.ftol, 1e-14);
    EXPECT_EQ(c.xtol, 1e-14);
    EXPECT_EQ(c.gtol, 1e-14);
    EXPECT_EQ(c.epsilon, 1e-14);
    EXPECT_EQ(c.stepbound, 100.0);
    EXPECT_EQ(c.maxcall, 100);
    EXPECT_NE(dynamic_cast<IKSolver_lm *>(solver.get()), nullptr);
}

TEST(IKSolver, SetSkeletonPlacesJointsFromTheLocalChainAndKeepsSolvedPositionsAsRest)
{
    SkeletonDef chain = makeChain({{0, 0, 2}, {10, 0, 0}, {10, 10, 0}});
    chain[1].solvedPosition = Math::Point3d(99, 99, 99);  // only rest positions see these
    chain[2].solvedPosition = Math::Point3d(-5, -5, -5);

    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    IKJoint *j2 = solver->joint("j_2");
    ASSERT_NE(j2, nullptr);
    EXPECT_EQ(j2->parent, solver->joint("j_1"));
    EXPECT_EQ(j2->index, 2);
    EXPECT_EQ(j2->position(), Math::Point3d(10, 10, 2));  // z carried from the root
    EXPECT_EQ(j2->restPosition, Math::Point3d(-5, -5, -5));
    EXPECT_EQ(j2->local, Math::Point3d(0, 10, 0));
    EXPECT_EQ(j2->angle, 0.0);
    EXPECT_EQ(solver->rootJoint(), solver->joint("root"));
    EXPECT_EQ(solver->joint("nobody"), nullptr);
    EXPECT_EQ(solver->joint(nullptr), nullptr);

    // resetToRest puts the solvedPosition values back, and updateJoints leaves them.
    solver->joint("root")->angle = 1.0;
    solver->resetToRest();
    solver->updateJoints();
    EXPECT_EQ(solver->joint("j_1")->position(), Math::Point3d(99, 99, 99));
    EXPECT_EQ(solver->joint("root")->angle, 0.0);
}

TEST(IKSolver, JointsWhoseParentNamesDoNotResolveBehaveAsRoots)
{
    SkeletonDef chain = makeChain({{0, 0, 0}, {10, 0, 0}, {20, 0, 0}});
    chain[1].parentName = "ghost";
    chain[2].parentName = "j_1";
    chain[1].localPosition = Math::Point3d(4, 5, 6);  // as extraction leaves an orphan: its own place

    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    EXPECT_EQ(solver->joint("j_1")->parent, nullptr);
    EXPECT_EQ(solver->joint("j_1")->position(), Math::Point3d(4, 5, 6));
    EXPECT_EQ(solver->joint("j_2")->position(), Math::Point3d(14, 5, 6));

    // Turning the real root moves nothing that hangs from the orphan.
    solver->joint("root")->angle = 1.0;
    solver->addPositionTask("root", 0);
    setRotationAxes(*solver, chain, 1.0);
    solver->joint("root")->setMobility(false, false, true, true);
    drag(*solver, "j_2", {0, 30});
    EXPECT_TRUE(solver->solve(kIterations, 0.5));
    EXPECT_EQ(solver->joint("root")->position(), Math::Point3d(0, 0, 0));
}

TEST(IKSolver, LaterJointOfADuplicateNameWinsTheLookup)
{
    SkeletonDef chain = makeChain({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}});
    chain[2].name = "j_1";
    chain[2].parentName = "root";
    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    EXPECT_EQ(solver->joint("j_1")->index, 2);
}

TEST(IKSolver, ResidualLayoutIsJointPullsInParameterOrderThenTasksInCreationOrder)
{
    SkeletonDef chain = makeChain({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    IKJoint *root = solver->rootJoint();
    IKJoint *j1 = solver->joint("j_1");
    solver->setRootTranslationEnabled(true);
    root->setWeight(IKJoint::TranslationX, 20.0);  // pull (1 - 0.2) * 25 = 20
    solver->joint("j_2")->setMobility(false, false, false, true);
    j1->setWeight(IKJoint::RotationZ, 50.0);       // pull 0.5

    IKPositionTask *task = solver->addPositionTask("j_2", 0);
    task->setTarget(10, 0, 0);
    task->setWeight(3.0);
    solver->addOrientationTask("j_1", 0)->setWeight(2.0);

    // Parameters: root x, root y, root rotation, j_1 rotation. Move them by hand.
    root->local.x = 1.0;
    root->local.y = -2.0;
    root->angle = 0.0;
    j1->angle = 0.5;
    EXPECT_EQ(solver->parameterCount(), 4);
    EXPECT_EQ(solver->residualCount(), 4 + 2 + 1);

    std::vector<double> const r = solver->currentResiduals();
    ASSERT_EQ(r.size(), 7u);
    EXPECT_EQ(r[0], (0.0 - 1.0) * 20.0);          // rest minus current, x
    EXPECT_EQ(r[1], (0.0 + 2.0) * 24.75);         // weight 1: (1 - 0.01) * 25
    EXPECT_EQ(r[2], 0.0);                         // root rotation at its start
    EXPECT_EQ(r[3], 0.5 * 0.5);                   // current minus start, rotation
    // j_2 stands at root + (10, 0) + (0, 10) turned by 0.5 about j_1.
    double const x2 = 1.0 + 10.0 - 10.0 * std::sin(0.5);
    double const y2 = -2.0 + 10.0 * std::cos(0.5);
    EXPECT_DOUBLE_EQ(r[4], (x2 - 10.0) * 3.0);
    EXPECT_DOUBLE_EQ(r[5], (y2 - 0.0) * 3.0);
    EXPECT_EQ(r[6], 0.5 * 2.0);                   // orientation task on j_1's own angle
}

TEST(IKSolver, AJointOfActivityZeroHasNoParameterAndStaysWhereItIs)
{
    SkeletonDef const chain = makeChain({{0, 0, 0}, {10, 0, 0}, {16, 8, 0}, {26, 8, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    setRotationAxes(*solver, chain, 100.0);
    EXPECT_EQ(solver->parameterCount(), 3);
    solver->rootJoint()->setActivity(0.0);
    solver->setRootTranslationEnabled(true);  // flags set, yet no parameter at activity 0
    EXPECT_EQ(solver->parameterCount(), 2);

    drag(*solver, "j_3", {20, -9});
    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    EXPECT_EQ(solver->rootJoint()->angle, 0.0);
    EXPECT_EQ(solver->rootJoint()->local, Math::Point3d(0, 0, 0));
    EXPECT_EQ(at(*solver, "j_1"), Math::Point2d(10, 0));
}

TEST(IKSolver, ADragReachesItsTargetAlongATwoBoneChainAsTheLawOfCosinesSays)
{
    // Bones of length 10 and 10, bent counter-clockwise at the elbow; rotation weight 100 frees the
    // joints of their pull, so the hand reaches a target 15 away exactly.
    SkeletonDef const chain = makeChain({{0, 0, 0}, {10, 0, 0}, {16, 8, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    setRotationAxes(*solver, chain, 100.0);
    Math::Point2d const target(12, 9);
    drag(*solver, "j_2", target);

    ASSERT_TRUE(solve(solver.get(), kIterations, 0.5));
    expectNear(at(*solver, "j_2"), target, 1e-9, "hand");
    expectNear(at(*solver, "j_1"), twoBoneElbow({0, 0}, target, 10, 10, true), 1e-7, "elbow");
    EXPECT_EQ(at(*solver, "root"), Math::Point2d(0, 0));
    EXPECT_GT(solver->lastEvaluationCount(), 0);
}

TEST(IKSolver, WithItsDefaultWeightTheRotationPullMeetsTheDragHalfway)
{
    // One bone of length 10 turned towards (0, 10) by a task of weight 10 against a rotation pull of
    // 0.99. The sum of squares is 0.9801 t^2 + 100 ((10 cos t)^2 + (10 sin t - 10)^2); its
    // derivative vanishes where 0.9801 t = 10000 cos t.
    SkeletonDef const chain = makeChain({{0, 0, 0}, {10, 0, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    setRotationAxes(*solver, chain, 1.0);
    drag(*solver, "j_1", {0, 10});

    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    double const first = bisect([](double t) { return 0.9801 * t - 10000.0 * std::cos(t); }, 0.0, kPi);
    expectNear(at(*solver, "j_1"), {10.0 * std::cos(first), 10.0 * std::sin(first)}, 1e-9, "first solve");
    EXPECT_GT(at(*solver, "j_1").x, 1e-3);  // the pull keeps it measurably short of the target

    // A second solve without a new set-up creeps on: the pull now starts from the first answer.
    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    double const second = bisect([first](double t) { return 0.9801 * (t - first) - 10000.0 * std::cos(t); }, 0.0, kPi);
    EXPECT_GT(second, first);
    expectNear(at(*solver, "j_1"), {10.0 * std::cos(second), 10.0 * std::sin(second)}, 1e-9, "second solve");

    // Weight 100 removes the pull altogether.
    solver->setSkeleton(chain, 0);
    setRotationAxes(*solver, chain, 100.0);
    drag(*solver, "j_1", {0, 10});
    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    expectNear(at(*solver, "j_1"), {0, 10}, 1e-9, "free");
    EXPECT_EQ(solver->currentResiduals()[0], 0.0);
}

TEST(IKSolver, AHeldPositionStaysWhileTheRestOfTheChainReaches)
{
    // root -> j_1 -> j_2 -> j_3, bones of 10, bent clockwise at j_2. j_1 is held where it stands, so
    // the root cannot turn, and j_1..j_3 solve as a two-bone chain from (10, 0).
    SkeletonDef const chain = makeChain({{0, 0, 0}, {10, 0, 0}, {16, 8, 0}, {26, 8, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    setRotationAxes(*solver, chain, 100.0);
    Math::Point2d const target(22, -9);
    drag(*solver, "j_3", target);
    IKPositionTask *hold = solver->addPositionTask("j_1", 0);
    hold->setTarget(10, 0, 0);

    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    expectNear(at(*solver, "j_1"), {10, 0}, 1e-9, "held joint");
    expectNear(at(*solver, "j_3"), target, 1e-9, "hand");
    expectNear(at(*solver, "j_2"), twoBoneElbow({10, 0}, target, 10, 10, false), 1e-7, "elbow");
}

TEST(IKSolver, AHeldOrientationKeepsTheJointsTurnWhileTheChainReaches)
{
    // Holding j_1's own angle at 0 makes root -> j_1 -> j_2 rigid: a bone of length |(16, 8)| from
    // the root, then the last bone of 10 from j_2.
    SkeletonDef const chain = makeChain({{0, 0, 0}, {10, 0, 0}, {16, 8, 0}, {26, 8, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    setRotationAxes(*solver, chain, 100.0);
    IKOrientationTask *hold = solver->addOrientationTask("j_1", 0);
    hold->setTarget(0.0, 0.0, 0.0, 1.0);
    Math::Point2d const target(20, 10);
    drag(*solver, "j_3", target);

    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    EXPECT_NEAR(solver->joint("j_1")->angle, 0.0, 1e-9);
    expectNear(at(*solver, "j_3"), target, 1e-9, "hand");
    expectNear(at(*solver, "j_2"), twoBoneElbow({0, 0}, target, std::hypot(16.0, 8.0), 10, false), 1e-7, "j_2");

    // The bend at j_1 is the one of the set-up: from (10, 0) to (6, 8).
    Math::Vector2d const a = at(*solver, "j_1") - at(*solver, "root");
    Math::Vector2d const b = at(*solver, "j_2") - at(*solver, "j_1");
    EXPECT_NEAR(std::atan2(a.cross(b), a.dot(b)), std::atan2(8.0, 6.0), 1e-9);
}

TEST(IKSolver, RootTranslationGainDecidesHowFreelyTheRootMoves)
{
    SkeletonDef const chain = makeChain({{5, 5, 0}, {15, 5, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    auto setUp = [&](double gain) {
        solver->setSkeleton(chain, 0);
        for (char const *name : {"root", "j_1"})
            solver->joint(name)->setMobility(false, false, false, true);
        solver->setRootTranslationEnabled(true);
        solver->rootJoint()->setWeight(IKJoint::TranslationX, gain);
        solver->rootJoint()->setWeight(IKJoint::TranslationY, gain);
        drag(*solver, "root", {8, 1});
    };

    // Gain 100: the axes are parameters with a residual identically 0; nothing holds the root.
    setUp(100.0);
    EXPECT_EQ(solver->parameterCount(), 2);
    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    expectNear(at(*solver, "root"), {8, 1}, 1e-9, "gain 100");
    expectNear(at(*solver, "j_1"), {18, 1}, 1e-9, "gain 100 child");

    // Gain 0 removes the axes: no parameter is left, and the solve refuses, changing nothing.
    setUp(0.0);
    EXPECT_EQ(solver->parameterCount(), 0);
    EXPECT_FALSE(solver->solve(kIterations, 0.5));
    EXPECT_EQ(at(*solver, "root"), Math::Point2d(5, 5));

    // Gain 1: a pull of 24.75 towards the set-up against the task's 10. Per axis the optimum of
    // (24.75 (x - x0))^2 + (10 (x - t))^2 is the weighted mean; a second solve gives the same,
    // since translation is pulled to the set-up and not to the last answer.
    setUp(1.0);
    double const k = 24.75 * 24.75, w = 100.0;
    Math::Point2d const expected((k * 5 + w * 8) / (k + w), (k * 5 + w * 1) / (k + w));
    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    expectNear(at(*solver, "root"), expected, 1e-9, "gain 1");
    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    expectNear(at(*solver, "root"), expected, 1e-9, "gain 1, again");
}

TEST(IKSolver, NothingToSolveGivesFalseAndChangesNothing)
{
    std::unique_ptr<IKSolver> solver = createSolver();
    EXPECT_FALSE(solver->solve(kIterations, 0.5));  // never set up
    solver->setSkeleton(SkeletonDef(), 0);
    EXPECT_FALSE(solver->solve(kIterations, 0.5));
    EXPECT_EQ(solver->rootJoint(), nullptr);
    EXPECT_EQ(solver->addPositionTask("root", 0), nullptr);
    EXPECT_FALSE(solve(nullptr, kIterations, 0.5));

    SkeletonDef const chain = makeChain({{0, 0, 0}, {10, 0, 0}, {20, 0, 0}});
    solver->setSkeleton(chain, 0);
    drag(*solver, "j_2", {0, 20});
    for (char const *name : {"root", "j_1", "j_2"})
        solver->joint(name)->setActivity(0.0);
    EXPECT_FALSE(solver->solve(kIterations, 0.5));
    EXPECT_EQ(solver->lastEvaluationCount(), 0);
    EXPECT_EQ(at(*solver, "j_2"), Math::Point2d(20, 0));
}

TEST(IKSolver, OneFreeJointWithoutTasksKeepsItsAngle)
{
    SkeletonDef const chain = makeChain({{0, 0, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    EXPECT_EQ(solver->parameterCount(), 1);
    EXPECT_EQ(solver->residualCount(), 1);
    EXPECT_EQ(solver->currentResiduals(), std::vector<double>{0.0});
    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    EXPECT_EQ(solver->rootJoint()->angle, 0.0);
}

TEST(IKSolver, NoIterationAllowedLeavesTheParametersAsPackedAndStillSucceeds)
{
    SkeletonDef const chain = makeChain({{0, 0, 0}, {10, 0, 0}, {20, 0, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    for (int maxIterations : {0, -1, -1000}) {
        solver->setSkeleton(chain, 0);
        setRotationAxes(*solver, chain, 100.0);
        solver->joint("j_1")->angle = 0.25;
        drag(*solver, "j_2", {0, 20});
        EXPECT_TRUE(solver->solve(maxIterations, 0.5)) << maxIterations;
        EXPECT_EQ(solver->lastEvaluationCount(), 0);
        EXPECT_EQ(solver->joint("j_1")->angle, 0.25);
        EXPECT_EQ(solver->rootJoint()->angle, 0.0);
        EXPECT_EQ(solver->control().maxcall, maxIterations);
    }
}

TEST(IKSolver, EvaluationsStayWithinTheCallLimit)
{
    SkeletonDef const chain = makeChain({{0, 0, 0}, {10, 0, 0}, {20, 0, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    setRotationAxes(*solver, chain, 1.0);
    drag(*solver, "j_2", {-20, 0.5});
    int const n = solver->parameterCount();
    ASSERT_TRUE(solver->solve(2, 0.5));
    // lmdif checks the limit after each trial step, so it may end one evaluation past it.
    EXPECT_LE(solver->lastEvaluationCount(), 2 * (n + 1) + 1);
    EXPECT_GE(solver->lastEvaluationCount(), n + 1);
}

TEST(IKSolver, ShadowTasksFollowEachSolvesStartAndAreOnlySwitchedAfterwards)
{
    SkeletonDef const chain = makeChain({{0, 0, 0}, {10, 0, 0}, {20, 0, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    setRotationAxes(*solver, chain, 100.0);
    drag(*solver, "j_2", {10, 10});
    int const before = solver->residualCount();

    solver->setShadowPosing(true);
    IKPositionTask *shadow = solver->joint("j_1")->shadowTask;
    ASSERT_NE(shadow, nullptr);
    EXPECT_EQ(shadow->weight, 0.001);
    EXPECT_EQ(shadow->target, Math::Point3d(10, 0, 0));
    EXPECT_EQ(solver->residualCount(), before + 3 * 2);

    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    Math::Point3d const afterFirst = solver->joint("j_1")->position();
    ASSERT_TRUE(solver->solve(kIterations, 0.5));
    EXPECT_EQ(shadow->target, afterFirst);  // retargeted at the start of the second solve

    solver->setShadowPosing(false);
    EXPECT_FALSE(shadow->active);
    EXPECT_EQ(solver->residualCount(), before);
    solver->setShadowPosing(true);
    EXPECT_EQ(solver->joint("j_1")->shadowTask, shadow);  // switched back on, not made again
    EXPECT_EQ(solver->residualCount(), before + 3 * 2);
}

TEST(IKSolver, TasksOnUnknownJointsAreRefusedAndAddNothing)
{
    SkeletonDef const chain = makeChain({{0, 0, 0}, {10, 0, 0}});
    std::unique_ptr<IKSolver> solver = createSolver();
    solver->setSkeleton(chain, 0);
    int const before = solver->residualCount();
    EXPECT_EQ(solver->addPositionTask("j_9", 0), nullptr);
    EXPECT_EQ(solver->addOrientationTask("", 0), nullptr);
    EXPECT_EQ(solver->addPositionTask(nullptr, 0), nullptr);
    EXPECT_EQ(solver->residualCount(), before);
}

} // namespace
