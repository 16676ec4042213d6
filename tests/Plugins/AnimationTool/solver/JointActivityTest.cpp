#include "solver/JointActivity.h"

#include "SolverTestUtil.h"

#include <gtest/gtest.h>

namespace {

using TIK::jointActivities;
using Activity = std::vector<double>;

// root -> j_1 -> j_2 -> j_3, and j_4 a second branch under j_1.
SkeletonDef makeTree()
{
    SkeletonDef s = SolverTest::makeChain({{0, 0, 0}, {10, 0, 0}, {20, 0, 0}, {30, 0, 0}, {10, 10, 0}});
    s[4].parentName = "j_1";
    s[3].childCount = 0;
    return s;
}

TEST(JointActivity, WithoutBlockersOrHandlesEveryJointTakesPart)
{
    SkeletonDef const s = makeTree();
    EXPECT_EQ(jointActivities(s, {3}, {}, false), Activity(5, 1.0));
    EXPECT_EQ(jointActivities(SkeletonDef(), {0}, {}, false), Activity());
}

TEST(JointActivity, APickOnABoneFreesOnlyEachDraggedJointAndItsParent)
{
    SkeletonDef const s = makeTree();
    EXPECT_EQ(jointActivities(s, {3}, {}, true), (Activity{0, 0, 1, 1, 0}));
    EXPECT_EQ(jointActivities(s, {3, 4}, {}, true), (Activity{0, 1, 1, 1, 1}));
    // The root has no parent: nothing takes part. Blockers play no part in a bone pick.
    EXPECT_EQ(jointActivities(s, {0}, {true, true, true, true, true}, true), Activity(5, 0.0));
}

TEST(JointActivity, TheFirstBlockerAboveADraggedJointFreezesEverythingOutsideItsSubtree)
{
    SkeletonDef const s = makeTree();
    std::vector<bool> const blockerAtJ1 = {false, true, false, false, false};
    EXPECT_EQ(jointActivities(s, {3}, blockerAtJ1, false), (Activity{0, 1, 1, 1, 1}));

    // Only the first blocker climbing up counts, and the dragged joint itself is not tested.
    std::vector<bool> const twoBlockers = {false, true, true, true, false};
    EXPECT_EQ(jointActivities(s, {3}, twoBlockers, false), (Activity{0, 0, 1, 1, 0}));

    // A dragged joint with no blocker above it, in the same drag as one with a blocker, is frozen.
    std::vector<bool> const blockerAtJ2 = {false, false, true, false, false};
    EXPECT_EQ(jointActivities(s, {3, 4}, blockerAtJ2, false), (Activity{0, 0, 1, 1, 0}));

    // A blocker that no dragged joint climbs through changes nothing.
    std::vector<bool> const blockerAtJ4 = {false, false, false, false, true};
    EXPECT_EQ(jointActivities(s, {3}, blockerAtJ4, false), Activity(5, 1.0));
}

TEST(JointActivity, HandlesThatAreNotDraggedAreFrozenWithTheirParent)
{
    SkeletonDef s = makeTree();
    s[3].isHandle = true;  // j_3 is the handle of j_2
    EXPECT_EQ(jointActivities(s, {4}, {}, false), (Activity{1, 1, 0, 0, 1}));
    EXPECT_EQ(jointActivities(s, {3}, {}, false), Activity(5, 1.0));
    EXPECT_EQ(jointActivities(s, {2}, {}, true), (Activity{0, 1, 0, 0, 0}));
}

TEST(JointActivity, BadIndicesAndParentLoopsAreHarmless)
{
    SkeletonDef s = makeTree();
    for (std::vector<int> const &dragged : {std::vector<int>{-1}, std::vector<int>{5}, std::vector<int>{INT32_MAX}})
        EXPECT_EQ(jointActivities(s, dragged, {}, true), Activity(5, 0.0));

    s[0].parentName = "j_3";  // root -> ... -> j_3 -> root
    std::vector<bool> const blockerAtJ4 = {false, false, false, false, true};
    EXPECT_EQ(jointActivities(s, {3}, blockerAtJ4, false), Activity(5, 1.0));
}

} // namespace
