#include "skeleton/SkeletonDef.h"

#include "scene/MO_Module.h"

#include <gtest/gtest.h>

namespace {

SkeletonJointDef makeJoint(std::string name, std::string parent, Math::Point3d position, int index)
{
    SkeletonJointDef j;
    j.name = std::move(name);
    j.parentName = std::move(parent);
    j.position = position;
    j.solvedPosition = position;
    j.index = index;
    return j;
}

TEST(SkeletonDef, DefaultJointHasEmptyModuleAndNoFlags)
{
    SkeletonJointDef const j;
    EXPECT_EQ(j.module.get(), nullptr);
    EXPECT_TRUE(j.name.empty());
    EXPECT_TRUE(j.parentName.empty());
    EXPECT_EQ(j.childCount, 0);
    EXPECT_EQ(j.position, Math::Point3d());
    EXPECT_FALSE(j.immobile);
    EXPECT_FALSE(j.isHandle);
}

TEST(SkeletonDef, FindMatchesTheFirstJointByExactBytesAndNeverAnEmptyName)
{
    SkeletonDef s;
    s.push_back(makeJoint("root", "", {0, 0, 0}, 0));
    s.push_back(makeJoint("", "root", {1, 0, 0}, 1));
    s.push_back(makeJoint("arm", "root", {2, 0, 0}, 2));
    s.push_back(makeJoint("arm", "root", {3, 0, 0}, 3));
    s.push_back(makeJoint("\xc3\xa9paule", "root", {4, 0, 0}, 4));  // UTF-8 bytes

    EXPECT_EQ(s.find("arm") - s.begin(), 2);
    EXPECT_EQ(s.find("Arm"), s.end());
    EXPECT_EQ(s.find("ar"), s.end());
    EXPECT_EQ(s.find(""), s.end());
    EXPECT_EQ(s.find("\xc3\xa9paule") - s.begin(), 4);
    SkeletonDef const &cs = s;
    EXPECT_EQ(cs.find("root"), cs.begin());
}

TEST(SkeletonDef, UpdateLocalReferentialsGivesBoneVectorsAndKeepsOrphansWhereTheyStand)
{
    SkeletonDef s;
    s.push_back(makeJoint("root", "", {1, 2, 3}, 0));
    s.push_back(makeJoint("a", "root", {4, 6, 3}, 1));
    s.push_back(makeJoint("b", "a", {4, 10, 5}, 2));
    s.push_back(makeJoint("orphan", "missing", {7, 8, 9}, 3));

    s.updateLocalReferentials();
    EXPECT_EQ(s[0].localPosition, Math::Point3d(1, 2, 3));
    EXPECT_EQ(s[1].localPosition, Math::Point3d(3, 4, 0));
    EXPECT_EQ(s[2].localPosition, Math::Point3d(0, 4, 2));
    EXPECT_EQ(s[3].localPosition, Math::Point3d(7, 8, 9));
    for (SkeletonJointDef const &j : s)
        EXPECT_FALSE(j.immobile) << j.name;

    // updateLocal touches one joint only; the end iterator is ignored.
    s[2].position = Math::Point3d(10, 10, 10);
    s.updateLocal(s.begin() + 2);
    s.updateLocal(s.end());
    EXPECT_EQ(s[2].localPosition, Math::Point3d(6, 4, 7));
    EXPECT_EQ(s[1].localPosition, Math::Point3d(3, 4, 0));
}

TEST(SkeletonDef, AChildCloserThanTwoToTheMinusTenMakesItsParentImmobile)
{
    double const limit = SkeletonJointDef::kImmobileDistance;
    EXPECT_EQ(limit, 1.0 / 1024.0);

    SkeletonDef s;
    s.push_back(makeJoint("root", "", {0, 0, 0}, 0));
    s.push_back(makeJoint("atLimit", "root", {limit, 0, 0}, 1));    // exactly 2^-10: stays mobile
    s.push_back(makeJoint("below", "atLimit", {limit, std::nextafter(limit, 0.0), 0}, 2));
    s[2].solvedPosition = Math::Point3d(limit, std::nextafter(limit, 0.0), 0);
    s.updateLocalReferentials();
    EXPECT_FALSE(s[0].immobile);
    EXPECT_TRUE(s[1].immobile);
    EXPECT_FALSE(s[2].immobile);
    EXPECT_FALSE(s[1].isMobile());

    // The mark is measured on solved positions and never cleared by a later pass.
    s[2].solvedPosition = Math::Point3d(5, 5, 0);
    s.updateLocalReferentials();
    EXPECT_TRUE(s[1].immobile);
}

TEST(SkeletonDef, EquivalenceComparesStructureAndModuleIdentityButNotPose)
{
    UT_SharedPtr<MO_Module> m1 = UT_MakeShared<MO_Module>();
    UT_SharedPtr<MO_Module> m2 = UT_MakeShared<MO_Module>();

    SkeletonDef a;
    a.push_back(makeJoint("root", "", {0, 0, 0}, 0));
    a.push_back(makeJoint("j_1", "root", {10, 0, 0}, 1));
    a[0].module = UT_SharedWeakPtr<MO_Module>(m1.get());
    a[0].childCount = 1;
    a[1].module = UT_SharedWeakPtr<MO_Module>(m2.get());

    SkeletonDef b = a;
    b[1].position = Math::Point3d(0, 10, 0);
    b[1].solvedPosition = Math::Point3d(3, 3, 3);
    b[1].immobile = true;
    b[1].isHandle = true;
    EXPECT_TRUE(a.isEquivalent(b));
    EXPECT_TRUE(SkeletonDef().isEquivalent(SkeletonDef()));
    EXPECT_FALSE(a.isEquivalent(SkeletonDef()));

    struct Change {
        char const *what;
        void (*apply)(SkeletonJointDef &);
    };
    Change const changes[] = {
        {"name", [](SkeletonJointDef &j) { j.name = "j_2"; }},
        {"parent", [](SkeletonJointDef &j) { j.parentName = "other"; }},
        {"index", [](SkeletonJointDef &j) { j.index = 5; }},
        {"child count", [](SkeletonJointDef &j) { j.childCount = 1; }},
        {"module", [](SkeletonJointDef &j) { j.module.reset(); }},
    };
    for (Change const &c : changes) {
        SkeletonDef changed = a;
        c.apply(changed[1]);
        EXPECT_FALSE(a.isEquivalent(changed)) << c.what;
    }

    // Another module object of the same kind is not the same reference, and a module that is gone
    // is still itself.
    SkeletonDef other = a;
    UT_SharedPtr<MO_Module> m3 = UT_MakeShared<MO_Module>();
    other[1].module = UT_SharedWeakPtr<MO_Module>(m3.get());
    EXPECT_FALSE(a.isEquivalent(other));
    m2.reset();
    EXPECT_TRUE(a.isEquivalent(b));
}

TEST(SkeletonDef, JointsWithoutJointAttributesGiveTheFallbacks)
{
    UT_SharedPtr<MO_Module> live = UT_MakeShared<MO_Module>();
    UT_SharedPtr<MO_Module> doomed = UT_MakeShared<MO_Module>();

    SkeletonJointDef plain = makeJoint("j_1", "root", {0, 0, 0}, 1);
    plain.module = UT_SharedWeakPtr<MO_Module>(live.get());
    SkeletonJointDef handle = plain;
    handle.isHandle = true;
    SkeletonJointDef deleted = plain;
    deleted.module = UT_SharedWeakPtr<MO_Module>(doomed.get());
    doomed.reset();
    SkeletonJointDef none = makeJoint("j_2", "root", {0, 0, 0}, 2);

    for (SkeletonJointDef const *j : {&plain, &handle, &deleted, &none}) {
        EXPECT_FALSE(j->hasPositionTask());
        EXPECT_FALSE(j->hasOrientationTask());
        EXPECT_FALSE(j->useActualPositionWhenInterpolating());
        EXPECT_FALSE(j->isBlocker());
        EXPECT_FALSE(j->isMobile());
        EXPECT_EQ(j->positionTaskWeight(), 1.0);
        EXPECT_EQ(j->orientationTaskWeight(), 1.0);
        EXPECT_EQ(j->mobilityWeight(), 1.0);
        EXPECT_EQ(j->jointAttr(), nullptr);
    }
}

TEST(SkeletonDef, GetAttributeIsNullOutOfRangeAndOnAnEmptyList)
{
    SkeletonDef s;
    EXPECT_EQ(s.getAttribute(0), nullptr);
    s.updateLocalReferentials();  // nothing to do on an empty list
    EXPECT_TRUE(s.empty());

    s.push_back(makeJoint("root", "", {0, 0, 0}, 0));
    for (int index : {-1, 1, 1000, INT32_MIN, INT32_MAX})
        EXPECT_EQ(s.getAttribute(index), nullptr) << index;
}

} // namespace
