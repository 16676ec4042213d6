// Drag targets over a range, against values worked out by hand: a joint that stands at
// (f, 0, f / 10) at frame f of the range 1..12, current frame 5, dragged by (0, 2, 0).
#include "iktool/JointPath.h"

#include <gtest/gtest.h>

namespace {

constexpr int kFirst = 1;
constexpr int kLast = 12;
constexpr int kCurrent = 5;
Math::Vector3d const kDelta(0.0, 2.0, 0.0);

Math::Point3d positionAt(int f)
{
    return Math::Point3d(f, 0.0, f / 10.0);
}

JointPath pathOf(int first, int last, int current, Math::Vector3d const &delta)
{
    JointPath path;
    path.start = positionAt(first);
    path.end = positionAt(last);
    path.base = positionAt(current);
    path.target = path.base + delta;
    IKToolUtil::fitPath(path);
    return path;
}

void expectPoint(Math::Point3d const &actual, Math::Point3d const &expected, int frame)
{
    EXPECT_NEAR(actual.x, expected.x, 1e-9) << "frame " << frame;
    EXPECT_NEAR(actual.y, expected.y, 1e-9) << "frame " << frame;
    EXPECT_NEAR(actual.z, expected.z, 1e-9) << "frame " << frame;
}

struct Expected {
    int frame;
    Math::Point3d target;
};

void expectTargets(int type, std::vector<Expected> const &table)
{
    JointPath const path = pathOf(kFirst, kLast, kCurrent, kDelta);
    for (Expected const &e : table) {
        Math::Point3d const got = IKToolUtil::dragTarget(type, positionAt(e.frame), positionAt(kCurrent), &path, kDelta,
                                                         e.frame, kCurrent, kFirst, kLast);
        expectPoint(got, e.target, e.frame);
    }
}

} // namespace

TEST(JointPath, AltogetherGivesEveryFrameTheCurrentFramesTarget)
{
    expectTargets(0, {{1, {5, 2, 0.5}}, {3, {5, 2, 0.5}}, {5, {5, 2, 0.5}}, {8, {5, 2, 0.5}}, {12, {5, 2, 0.5}}});
}

TEST(JointPath, MoveAllShiftsEachFramesOwnPosition)
{
    expectTargets(1, {{1, {1, 2, 0.1}}, {3, {3, 2, 0.3}}, {5, {5, 2, 0.5}}, {8, {8, 2, 0.8}}, {12, {12, 2, 1.2}}});
}

TEST(JointPath, LinearKeepsTheEndsAndRunsStraightThroughTheTarget)
{
    // Frame 3 is half way from start to target; frame 8 is 3/7 of the way from target to end.
    expectTargets(2, {{1, {1, 0, 0.1}},
                      {3, {3, 1, 0.3}},
                      {5, {5, 2, 0.5}},
                      {8, {8, 2.0 - 6.0 / 7.0, 0.5 + 0.7 * 3.0 / 7.0}},
                      {12, {12, 0, 1.2}}});
}

TEST(JointPath, CubicRunsOnTheParabolaThroughStartTargetAndEnd)
{
    // x(u) = 1 + 5u + 6u^2, y(u) = 8u - 8u^2; u = 0.25 at frame 3 and 5/7 at frame 8.
    JointPath const path = pathOf(kFirst, kLast, kCurrent, kDelta);
    EXPECT_FALSE(path.straight);
    double const expected[6] = {1, 5, 6, 0, 8, -8};
    for (int i = 0; i < 6; ++i)
        EXPECT_NEAR(path.coefficients[i], expected[i], 1e-12) << i;
    expectTargets(3, {{1, {1, 0, 0.1}},
                      {3, {2.625, 1.5, 0.75 * 0.1 + 0.25 * 1.2}},
                      {5, {5, 2, 0.1 * 0.5 + 1.2 * 0.5}},
                      {8, {374.0 / 49.0, 80.0 / 49.0, 2.0 / 7.0 * 0.1 + 5.0 / 7.0 * 1.2}},
                      {12, {12, 0, 1.2}}});
}

TEST(JointPath, ATargetNearTheChordOrEndsTooCloseLeaveThePathStraight)
{
    // The chord from (1, 0) to (12, 0) is 11 long: within 0.11 of it is on the line.
    EXPECT_TRUE(pathOf(kFirst, kLast, kCurrent, Math::Vector3d(0, 0.1, 0)).straight);
    EXPECT_FALSE(pathOf(kFirst, kLast, kCurrent, Math::Vector3d(0, 0.12, 0)).straight);

    JointPath closeEnds;
    closeEnds.start = Math::Point3d(1, 1, 0);
    closeEnds.end = Math::Point3d(1.00005, 1.00005, 5);
    closeEnds.target = Math::Point3d(3, 4, 0);
    IKToolUtil::fitPath(closeEnds);
    EXPECT_TRUE(closeEnds.straight);

    // A straight path under Cubic takes the straight pieces: frame 3 half way to the target.
    JointPath const straight = pathOf(kFirst, kLast, kCurrent, Math::Vector3d(0, 0.1, 0));
    expectPoint(IKToolUtil::interpolatedTarget(straight, 3, 3, kCurrent, kFirst, kLast), {3, 0.05, 0.3}, 3);
}

TEST(JointPath, CubicAtEitherEndOfTheRangeFallsBackToLinear)
{
    EXPECT_EQ(IKToolUtil::effectiveInterpolation(false, 12, 3, 1, 1, 12), 2);
    EXPECT_EQ(IKToolUtil::effectiveInterpolation(false, 12, 3, 12, 1, 12), 2);
    EXPECT_EQ(IKToolUtil::effectiveInterpolation(false, 12, 3, 5, 1, 12), 3);
    EXPECT_EQ(IKToolUtil::effectiveInterpolation(false, 12, 2, 5, 1, 12), 2);
    EXPECT_EQ(IKToolUtil::effectiveInterpolation(false, 12, 0, 1, 1, 12), 0);
    EXPECT_EQ(IKToolUtil::effectiveInterpolation(false, 12, 1, 5, 1, 12), 1);
    // One record moves like MoveAll, whatever the choice; applying altogether is always 0.
    EXPECT_EQ(IKToolUtil::effectiveInterpolation(false, 1, 3, 5, 5, 5), 1);
    EXPECT_EQ(IKToolUtil::effectiveInterpolation(false, 0, 0, 5, 5, 5), 1);
    EXPECT_EQ(IKToolUtil::effectiveInterpolation(true, 12, 3, 5, 1, 12), 0);

    // Current frame 1 with Cubic chosen: frame 1 moves, frame 12 stays, frame 8 on the line.
    JointPath const path = pathOf(1, 12, 1, kDelta);
    int const type = IKToolUtil::effectiveInterpolation(false, 12, 3, 1, 1, 12);
    expectPoint(IKToolUtil::interpolatedTarget(path, type, 1, 1, 1, 12), {1, 2, 0.1}, 1);
    expectPoint(IKToolUtil::interpolatedTarget(path, type, 12, 1, 1, 12), {12, 0, 1.2}, 12);
    expectPoint(IKToolUtil::interpolatedTarget(path, type, 8, 1, 1, 12), {8, 2.0 * 4.0 / 11.0, 0.8}, 8);
}

TEST(JointPath, LinearAndCubicWithoutAPathAbort)
{
    EXPECT_DEATH(IKToolUtil::dragTarget(2, {}, {}, nullptr, kDelta, 3, kCurrent, kFirst, kLast), "");
    // MoveAll and Altogether need no path.
    expectPoint(IKToolUtil::dragTarget(1, positionAt(3), positionAt(5), nullptr, kDelta, 3, kCurrent, kFirst, kLast),
                {3, 2, 0.3}, 3);
}
