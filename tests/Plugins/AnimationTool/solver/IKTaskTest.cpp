#include "solver/IKJoint.h"
#include "solver/IKTask.h"

#include "SolverTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace TIK;
using SolverTest::kPi;

TEST(IKTask, PositionTaskResidualsAreWeightedOffsetsInXAndYOnly)
{
    IKJoint joint;
    joint.worldPosition = Math::Point3d(3.0, -2.0, 7.0);
    IKPositionTask task(&joint, 0);
    task.setTarget(1.0, 1.0, 100.0);
    task.setWeight(10.0);
    EXPECT_EQ(task.residualCount(), 2);
    double out[2] = {};
    task.evaluate(out);
    EXPECT_EQ(out[0], 20.0);
    EXPECT_EQ(out[1], -30.0);
}

TEST(IKTask, WeightZeroOrInactiveAddsNoResidualAndWritesNothing)
{
    IKJoint joint;
    joint.worldPosition = Math::Point3d(1, 1, 0);
    joint.angle = 0.3;
    IKPositionTask position(&joint, 0);
    IKOrientationTask orientation(&joint, 0);
    for (IKTask *task : {static_cast<IKTask *>(&position), static_cast<IKTask *>(&orientation)}) {
        task->setWeight(0.0);
        EXPECT_EQ(task->residualCount(), 0);
        double out[2] = {-7.0, -7.0};
        task->evaluate(out);
        EXPECT_EQ(out[0], -7.0);

        task->setWeight(2.0);
        task->active = false;
        EXPECT_EQ(task->residualCount(), 0);
        task->evaluate(out);
        EXPECT_EQ(out[0], -7.0);
        task->active = true;
        EXPECT_GT(task->residualCount(), 0);
    }
}

TEST(IKTask, TasksWithoutAJointGiveZeroResiduals)
{
    IKPositionTask position(nullptr, 0);
    position.setTarget(5, 5, 0);
    double out[2] = {-1.0, -1.0};
    position.evaluate(out);
    EXPECT_EQ(out[0], 0.0);
    EXPECT_EQ(out[1], 0.0);

    IKOrientationTask orientation(nullptr, 0);
    orientation.targetAngle = 1.0;
    orientation.evaluate(out);
    EXPECT_EQ(out[0], 0.0);
}

TEST(IKTask, OrientationTaskHoldsTheJointsOwnAngleAgainstTheQuaternionsZAngle)
{
    IKJoint parent;
    IKJoint joint;
    joint.parent = &parent;
    parent.angle = 1.0;
    joint.angle = 0.25;
    joint.worldAngle = 1.25;  // not read: the task holds the turn relative to the parent

    IKOrientationTask task(&joint, 0);
    task.setTarget(0.0, 0.0, 0.0, 1.0);
    EXPECT_EQ(task.targetAngle, 0.0);
    task.setWeight(4.0);
    double out = 0.0;
    task.evaluate(&out);
    EXPECT_EQ(out, 1.0);

    task.setTarget(0.0, 0.0, std::sin(kPi / 4.0), std::cos(kPi / 4.0));
    EXPECT_NEAR(task.targetAngle, kPi / 2.0, 1e-15);
}

TEST(IKJoint, DefaultsFreeOnlyRotationZAndWeighEverythingOne)
{
    IKJoint const j;
    EXPECT_FALSE(j.translationFree[0] || j.translationFree[1] || j.translationFree[2]);
    EXPECT_FALSE(j.rotationFree[0] || j.rotationFree[1]);
    EXPECT_TRUE(j.rotationFree[2]);
    for (double w : j.weights)
        EXPECT_EQ(w, 1.0);
    EXPECT_EQ(j.activity, 1.0);
    EXPECT_EQ(j.parent, nullptr);
    EXPECT_EQ(j.shadowTask, nullptr);
}

TEST(IKJoint, MobilityAndTranslationSwitches)
{
    IKJoint j;
    j.setMobility(true, true, true, false);
    EXPECT_TRUE(j.translationFree[0] && j.translationFree[1] && j.translationFree[2]);
    EXPECT_TRUE(j.rotationFree[2]);

    j.setTranslationEnabled(true, false);  // z is cleared, rotation kept
    EXPECT_TRUE(j.translationFree[0] && j.translationFree[1]);
    EXPECT_FALSE(j.translationFree[2]);
    EXPECT_TRUE(j.rotationFree[2]);

    j.setMobility(true, true, true, true);
    j.setTranslationEnabled(false, true);  // clearRotation only acts with enabled
    EXPECT_TRUE(j.rotationFree[0] && j.rotationFree[2]);
    EXPECT_FALSE(j.translationFree[0] || j.translationFree[1]);

    j.setTranslationEnabled(true, true);
    EXPECT_FALSE(j.rotationFree[0] || j.rotationFree[1] || j.rotationFree[2]);
    EXPECT_TRUE(j.translationFree[0] && j.translationFree[1]);
}

TEST(IKJoint, AnAngleTurnsTheChildrenNotTheJointAndZComesFromTheRoot)
{
    IKJoint root, a, b;
    root.local = Math::Point3d(1.0, 1.0, 0.0);
    a.parent = &root;
    a.local = Math::Point3d(10.0, 0.0, 3.0);
    b.parent = &a;
    b.local = Math::Point3d(10.0, 0.0, 5.0);  // z of a non-root joint is discarded
    a.angle = kPi / 2.0;
    b.angle = 0.5;
    for (IKJoint *j : {&b, &a, &root})  // any order: a joint climbs to its parent itself
        j->dirty = true;

    b.forwardKinematics();
    EXPECT_EQ(a.position(), Math::Point3d(11.0, 1.0, 0.0));  // a's own angle does not move it
    EXPECT_NEAR(b.position().x, 11.0, 1e-14);
    EXPECT_NEAR(b.position().y, 11.0, 1e-14);
    EXPECT_EQ(b.position().z, 0.0);
    EXPECT_EQ(b.worldAngle, kPi / 2.0 + 0.5);
    EXPECT_FALSE(root.dirty || a.dirty || b.dirty);

    // A clean joint is not recomputed.
    a.angle = 0.0;
    b.forwardKinematics();
    EXPECT_NEAR(b.position().y, 11.0, 1e-14);
}

TEST(IKJoint, AParentLoopEndsInsteadOfRecursingForever)
{
    IKJoint a, b;
    a.parent = &b;
    b.parent = &a;
    a.local = Math::Point3d(1, 0, 0);
    b.local = Math::Point3d(0, 1, 0);
    a.dirty = b.dirty = true;
    a.forwardKinematics();
    EXPECT_FALSE(a.dirty || b.dirty);
    EXPECT_TRUE(std::isfinite(a.position().x) && std::isfinite(b.position().y));
}

} // namespace
