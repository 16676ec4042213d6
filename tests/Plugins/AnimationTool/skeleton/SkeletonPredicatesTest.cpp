// The skeleton predicates read the module's joint attributes live: a change of an attribute
// changes the next answer, handle joints have no tasks of their own, and a joint whose module
// lost its metadata or is gone falls back.
#include "SkeletonTestUtil.h"

#include "skeleton/SkeletonDef.h"

namespace {

using namespace SkeletonTest;

SkeletonJointDef jointFor(MO_Module *module, std::string name, int index)
{
    SkeletonJointDef joint;
    joint.module = UT_SharedWeakPtr<MO_Module>(module);
    joint.name = std::move(name);
    joint.index = index;
    return joint;
}

class LivePredicates : public ::testing::Test {
protected:
    void SetUp() override
    {
        module = add<MO_PegModule>(scene, QStringLiteral("elbow"));
        attr = addMetaData(module, manager) ? jointOf(module) : nullptr;
        ASSERT_NE(attr, nullptr);
        joint = jointFor(module, "j", 1);
        handle = joint;
        handle.name = "j_handle";
        handle.isHandle = true;
    }

    TUScene scene;
    CO_CommandManager manager;
    MO_Module *module = nullptr;
    JointAttr *attr = nullptr;
    SkeletonJointDef joint;
    SkeletonJointDef handle;
};

TEST_F(LivePredicates, DefaultsOfANewJoint)
{
    EXPECT_EQ(joint.jointAttr(), attr);
    EXPECT_FALSE(joint.hasPositionTask());
    EXPECT_FALSE(joint.hasOrientationTask());
    EXPECT_FALSE(joint.useActualPositionWhenInterpolating());
    EXPECT_FALSE(joint.isBlocker());
    EXPECT_TRUE(joint.isMobile());
    EXPECT_EQ(joint.positionTaskWeight(), 1.0);
    EXPECT_EQ(joint.orientationTaskWeight(), 1.0);
    EXPECT_EQ(joint.mobilityWeight(), 1.0);
}

TEST_F(LivePredicates, EachAnswerFollowsItsAttributeAtOnce)
{
    struct Case {
        char const *what;
        AT_Attr *attr;
        char const *text;
        std::function<double(SkeletonJointDef const &)> read;
        double before, after;
    };
    Case const cases[] = {
        {"holdPosition", attr->holdPositionAttr(), "true", [](auto const &j) { return double(j.hasPositionTask()); }, 0, 1},
        {"holdOrientation", attr->holdOrientationAttr(), "true", [](auto const &j) { return double(j.hasOrientationTask()); }, 0, 1},
        {"useActualPosition", attr->useActualPositionAttr(), "true",
         [](auto const &j) { return double(j.useActualPositionWhenInterpolating()); }, 0, 1},
        {"blocker", attr->isBlocker(), "true", [](auto const &j) { return double(j.isBlocker()); }, 0, 1},
        {"active", attr->activeAttr(), "false", [](auto const &j) { return double(j.isMobile()); }, 1, 0},
        {"holdpositiongain", attr->holdPositionGainAttr(), "2.5", [](auto const &j) { return j.positionTaskWeight(); }, 1, 2.5},
        {"holdorientationgain", attr->holdOrientationGainAttr(), "0.75", [](auto const &j) { return j.orientationTaskWeight(); }, 1, 0.75},
        {"weight", attr->weightAttr(), "42", [](auto const &j) { return j.mobilityWeight(); }, 1, 42},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.read(joint), c.before);
        ASSERT_TRUE(manager.execute(c.attr->setTextValue(0.0, QLatin1String(c.text))));
        EXPECT_EQ(c.read(joint), c.after);
        SkeletonJointDef const copy = joint;  // a copy reads the same attributes
        EXPECT_EQ(c.read(copy), c.after);
        manager.undo();
        EXPECT_EQ(c.read(joint), c.before);
    }
}

TEST_F(LivePredicates, AHandleHasNoTasksButSharesItsModulesOtherAnswers)
{
    attr->holdPositionAttr()->setLocalValue(true);
    attr->holdOrientationAttr()->setLocalValue(true);
    attr->useActualPositionAttr()->setLocalValue(true);
    attr->isBlocker()->setLocalValue(true);
    attr->weightAttr()->setLocalValue(3.0);
    attr->holdPositionGainAttr()->setLocalValue(4.0);
    attr->holdOrientationGainAttr()->setLocalValue(5.0);

    EXPECT_TRUE(joint.hasPositionTask());
    EXPECT_FALSE(handle.hasPositionTask());
    EXPECT_FALSE(handle.hasOrientationTask());
    EXPECT_FALSE(handle.useActualPositionWhenInterpolating());
    EXPECT_TRUE(handle.isBlocker());
    EXPECT_TRUE(handle.isMobile());
    EXPECT_EQ(handle.mobilityWeight(), 3.0);
    EXPECT_EQ(handle.positionTaskWeight(), 4.0);
    EXPECT_EQ(handle.orientationTaskWeight(), 5.0);
    attr->activeAttr()->setLocalValue(false);
    EXPECT_FALSE(handle.isMobile());
}

TEST_F(LivePredicates, AnImmobileJointStaysImmobileWhateverItsActiveFlag)
{
    SkeletonDef skeleton;
    skeleton.push_back(jointFor(module, "root", 0));
    skeleton.push_back(jointFor(module, "tip", 1));
    skeleton[1].parentName = "root";
    skeleton[0].solvedPosition = Math::Point3d(1, 1, 0);
    skeleton[1].solvedPosition = Math::Point3d(1, 1 + SkeletonJointDef::kImmobileDistance / 2, 0);
    skeleton.updateLocalReferentials();
    EXPECT_TRUE(attr->activeAttr()->localValue());
    EXPECT_FALSE(skeleton[0].isMobile());
    EXPECT_TRUE(skeleton[1].isMobile());
}

TEST_F(LivePredicates, GetAttributeAnswersThroughTheModulesMetadata)
{
    MO_Module *bare = add<MO_PegModule>(scene, QStringLiteral("bare"));
    SkeletonDef skeleton;
    skeleton.push_back(jointFor(module, "root", 0));
    skeleton.push_back(jointFor(bare, "j", 1));
    skeleton.push_back(handle);
    EXPECT_EQ(skeleton.getAttribute(0), attr);
    EXPECT_EQ(skeleton.getAttribute(1), nullptr);
    EXPECT_EQ(skeleton.getAttribute(2), attr) << "a handle shares its parent's module";
    EXPECT_EQ(skeleton.getAttribute(3), nullptr);
    EXPECT_EQ(skeleton.getAttribute(-1), nullptr);
}

TEST_F(LivePredicates, LosingTheMetadataOrTheModuleGivesTheFallbacks)
{
    attr->holdPositionAttr()->setLocalValue(true);
    attr->weightAttr()->setLocalValue(9.0);
    EXPECT_TRUE(joint.hasPositionTask());

    manager.undo();  // takes the metadata off the module
    EXPECT_EQ(joint.jointAttr(), nullptr);
    EXPECT_FALSE(joint.hasPositionTask());
    EXPECT_FALSE(joint.isMobile());
    EXPECT_EQ(joint.mobilityWeight(), 1.0);

    manager.redo();
    EXPECT_TRUE(joint.hasPositionTask()) << "the same attributes come back";
    EXPECT_EQ(joint.mobilityWeight(), 9.0);

    manager.clear();  // the history holds no command that points at the module
    scene.getRootGroup()->removeNode(module);
    EXPECT_EQ(joint.module.get(), nullptr);
    EXPECT_FALSE(joint.hasPositionTask());
    EXPECT_FALSE(joint.isBlocker());
    EXPECT_FALSE(joint.isMobile());
    EXPECT_EQ(joint.mobilityWeight(), 1.0);
    EXPECT_EQ(joint.positionTaskWeight(), 1.0);
    EXPECT_EQ(joint.orientationTaskWeight(), 1.0);
}

} // namespace
