// Joint definition: roots and participation set and cleared by undoable commands, handles kept
// in the module's axes, and joint positions read at keyed frames against positions worked out by
// hand from the scene's transforms.
#include "bridge/JointDefinition.h"
#include "bridge/SetLocalValueCmd.h"

#include "scene/TUScene.h"
#include "scene/TUSceneFile.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

template <class T>
T *add(TUScene &scene, char const *name)
{
    auto node = UT_MakeShared<T>();
    node->setInstanceName(QLatin1String(name));
    return static_cast<T *>(scene.getRootGroup()->addNode(node));
}

JointAttr *jointOf(MO_Module *module)
{
    IKMetaData *metaData = IKToolUtil::getIKMetaDataForModule(module);
    return metaData ? metaData->skeletonMetaData()->jointAttr() : nullptr;
}

// The attribute that a recorded command changes, for commands made by setTextValue.
AT_Attr *target(CO_Command *command)
{
    auto const *change = dynamic_cast<AT_AttrChangeCmd const *>(command);
    return change ? change->attr() : nullptr;
}

void expectNear(Math::Point3d const &actual, Math::Point3d const &expected)
{
    EXPECT_NEAR(actual.x, expected.x, 1e-12);
    EXPECT_NEAR(actual.y, expected.y, 1e-12);
    EXPECT_NEAR(actual.z, expected.z, 1e-12);
}

// A chain top -> a -> (composite) -> second -> b, and a branch top -> side; all modules are
// pegs, and the composite is looked through.
struct Chain {
    TUScene scene;
    CO_CommandManager manager;
    MO_PegModule *top = add<MO_PegModule>(scene, "top");
    MO_PegModule *a = add<MO_PegModule>(scene, "a");
    MO_PegModule *second = add<MO_PegModule>(scene, "second");
    MO_PegModule *b = add<MO_PegModule>(scene, "b");
    MO_PegModule *side = add<MO_PegModule>(scene, "side");

    Chain()
    {
        auto composite = UT_MakeShared<MO_Node>(QStringLiteral("COMPOSITE"), 1, 1);
        MO_Node *c = scene.getRootGroup()->addNode(composite);
        EXPECT_TRUE(MO_Node::connect(top, 0, a, 0));
        EXPECT_TRUE(MO_Node::connect(a, 0, c, 0));
        EXPECT_TRUE(MO_Node::connect(c, 0, second, 0));
        EXPECT_TRUE(MO_Node::connect(second, 0, b, 0));
        EXPECT_TRUE(MO_Node::connect(top, 0, side, 0));
    }
};

TEST(JointDefinition, NullModulesAndModulesWithoutMetadataAnswerNoAndMakeNothing)
{
    Chain chain;
    for (MO_Module *module : {static_cast<MO_Module *>(nullptr), static_cast<MO_Module *>(chain.a)}) {
        EXPECT_FALSE(IKToolUtil::participates(module));
        EXPECT_FALSE(IKToolUtil::isRoot(module));
        EXPECT_EQ(IKToolUtil::handleOrientationForModule(module), Math::Vector3d(0.1, 0.0, 0.0));
    }
    QByteArray const before = TUSceneFile::write(chain.scene);
    IKToolUtil::defineRoot(&chain.manager, nullptr, true);
    IKToolUtil::setParticipation(&chain.manager, nullptr, true);
    IKToolUtil::setHandleOrientationForModule(&chain.manager, nullptr, {1, 0, 0}, 0.0);
    IKToolUtil::defineRoot(nullptr, chain.a, true);
    IKToolUtil::setParticipation(nullptr, chain.a, true);
    IKToolUtil::defineRoot(&chain.manager, chain.a, false);  // undefining a module without metadata
    EXPECT_EQ(chain.manager.undoCount(), 0);
    EXPECT_EQ(TUSceneFile::write(chain.scene), before);
    expectNear(IKToolUtil::getModuleJointPositionAtFrame(nullptr, 3), Math::Point3d());
    expectNear(IKToolUtil::getModuleOffsetJointAtFrame(nullptr, 3), Math::Point3d());
}

TEST(JointDefinition, DefiningARootCreatesTheMetadataThenSetsTheRootFlagAndUndoRemovesIt)
{
    Chain chain;
    QByteArray const before = TUSceneFile::write(chain.scene);
    CO_MacroCommand recorded;
    {
        CO_CommandAccumScope scope(&chain.manager, QStringLiteral("Define IK Joint"), &recorded);
        IKToolUtil::defineRoot(&chain.manager, chain.top, true);
    }
    // The participation flag is born true, so setting it makes no command of the host.
    ASSERT_EQ(recorded.count(), 2);
    EXPECT_NE(dynamic_cast<IKCreateAttrCmd *>(recorded.at(0)), nullptr);
    EXPECT_EQ(target(recorded.at(1)), jointOf(chain.top)->isRoot());
    EXPECT_TRUE(IKToolUtil::isRoot(chain.top));
    EXPECT_TRUE(IKToolUtil::participates(chain.top));
    EXPECT_FALSE(IKToolUtil::participates(chain.a));

    ASSERT_TRUE(recorded.unexecute());
    EXPECT_EQ(IKToolUtil::getIKMetaDataForModule(chain.top), nullptr);
    EXPECT_EQ(TUSceneFile::write(chain.scene), before);

    // Through the manager: one undo step holds it all.
    {
        CO_CommandAccumScope scope(&chain.manager, QStringLiteral("Define IK Joint"));
        IKToolUtil::defineRoot(&chain.manager, chain.a, true);
    }
    EXPECT_EQ(chain.manager.undoCount(), 1);
    QByteArray const defined = TUSceneFile::write(chain.scene);
    ASSERT_TRUE(chain.manager.undo());
    EXPECT_EQ(TUSceneFile::write(chain.scene), before);
    ASSERT_TRUE(chain.manager.redo());
    EXPECT_EQ(TUSceneFile::write(chain.scene), defined);
}

TEST(JointDefinition, DefiningARootThatDidNotParticipateSetsTheRootFlagThenParticipation)
{
    Chain chain;
    IKToolUtil::setParticipation(&chain.manager, chain.a, false);
    ASSERT_NE(IKToolUtil::getIKMetaDataForModule(chain.a), nullptr) << "asking to take no part still marks the module";
    EXPECT_FALSE(IKToolUtil::participates(chain.a));

    CO_MacroCommand recorded;
    {
        CO_CommandAccumScope scope(&chain.manager, QStringLiteral("Define IK Joint"), &recorded);
        IKToolUtil::defineRoot(&chain.manager, chain.a, true);
    }
    ASSERT_EQ(recorded.count(), 2);
    EXPECT_EQ(target(recorded.at(0)), jointOf(chain.a)->isRoot());
    EXPECT_EQ(target(recorded.at(1)), IKToolUtil::getIKMetaDataForModule(chain.a)->skeletonMetaData()->participates());
    EXPECT_TRUE(IKToolUtil::isRoot(chain.a));
    EXPECT_TRUE(IKToolUtil::participates(chain.a));

    // Defining again changes nothing and records nothing.
    int const steps = chain.manager.undoCount();
    IKToolUtil::defineRoot(&chain.manager, chain.a, true);
    IKToolUtil::setParticipation(&chain.manager, chain.a, true);
    EXPECT_EQ(chain.manager.undoCount(), steps);
}

TEST(JointDefinition, UndefiningARootClearsParticipationBelowItOtherRootsIncluded)
{
    Chain chain;
    IKToolUtil::defineRoot(&chain.manager, chain.top, true);
    for (MO_Module *m : {static_cast<MO_Module *>(chain.a), static_cast<MO_Module *>(chain.b),
                         static_cast<MO_Module *>(chain.side)})
        IKToolUtil::setParticipation(&chain.manager, m, true);
    IKToolUtil::defineRoot(&chain.manager, chain.second, true);
    QByteArray const defined = TUSceneFile::write(chain.scene);
    int const steps = chain.manager.undoCount();

    {
        CO_CommandAccumScope scope(&chain.manager, QStringLiteral("Define IK Joint"));
        IKToolUtil::defineRoot(&chain.manager, chain.top, false);
    }
    EXPECT_FALSE(IKToolUtil::isRoot(chain.top));
    EXPECT_TRUE(IKToolUtil::participates(chain.top)) << "the module's own participation stays";
    for (MO_Module *m : {static_cast<MO_Module *>(chain.a), static_cast<MO_Module *>(chain.second),
                         static_cast<MO_Module *>(chain.b), static_cast<MO_Module *>(chain.side)}) {
        SCOPED_TRACE(m->instanceName().toStdString());
        EXPECT_FALSE(IKToolUtil::participates(m));
    }
    EXPECT_TRUE(IKToolUtil::isRoot(chain.second)) << "a root below keeps its flag";

    EXPECT_EQ(chain.manager.undoCount(), steps + 1);
    ASSERT_TRUE(chain.manager.undo());
    EXPECT_EQ(TUSceneFile::write(chain.scene), defined);
}

TEST(JointDefinition, UndefiningARootBelowLeavesWhatIsAboveIt)
{
    Chain chain;
    IKToolUtil::defineRoot(&chain.manager, chain.top, true);
    IKToolUtil::setParticipation(&chain.manager, chain.a, true);
    IKToolUtil::defineRoot(&chain.manager, chain.second, true);
    IKToolUtil::setParticipation(&chain.manager, chain.b, true);

    IKToolUtil::defineRoot(&chain.manager, chain.second, false);
    EXPECT_FALSE(IKToolUtil::participates(chain.b));
    EXPECT_TRUE(IKToolUtil::participates(chain.a));
    EXPECT_TRUE(IKToolUtil::isRoot(chain.top));
    EXPECT_TRUE(IKToolUtil::participates(chain.second));
}

TEST(JointDefinition, HandlesAreKeptInTheModulesAxesInFieldUnits)
{
    TUScene scene;
    CO_CommandManager manager;
    MO_PegModule *peg = add<MO_PegModule>(scene, "peg");
    peg->rotationAttr()->setLocalValue(Math::Angle3d(0, 0, 90));
    peg->scaleAttr()->setLocalValue(Math::Point2d(2, 2));

    IKToolUtil::setParticipation(&manager, peg, true);
    JointAttr *joint = jointOf(peg);
    joint->handlePositionX()->setLocalValue(0.0);
    EXPECT_EQ(IKToolUtil::handleOrientationForModule(peg), Math::Vector3d(0, 0, 0));
    joint->handlePositionX()->setLocalValue(12.0);
    joint->handlePositionY()->setLocalValue(-8.0);
    EXPECT_EQ(IKToolUtil::handleOrientationForModule(peg), Math::Vector3d(1.0, -0.5, 0.0)) << "1/12 and 1/16";

    // Scene vector (1, 0): the peg turns by 90 degrees and scales by 2, so its own axes see
    // (0, -0.5) in scene units, that is (0, -8) field units.
    int const steps = manager.undoCount();
    IKToolUtil::setHandleOrientationForModule(&manager, peg, Math::Vector3d(1.0, 0.0, 5.0), 0.0);
    EXPECT_NEAR(joint->handlePositionX()->localValue(), 0.0, 1e-12);
    EXPECT_NEAR(joint->handlePositionY()->localValue(), -8.0, 1e-12);
    EXPECT_EQ(manager.undoCount(), steps + 1) << "the y value did not change; only x made a command";

    IKToolUtil::setHandleOrientationForModule(&manager, peg, Math::Vector3d(0.0, 0.25, 0.0), 0.0);
    EXPECT_NEAR(joint->handlePositionX()->localValue(), 1.5, 1e-12);
    EXPECT_NEAR(joint->handlePositionY()->localValue(), 0.0, 1e-12);
    manager.undo();
    manager.undo();
    manager.undo();
    EXPECT_EQ(joint->handlePositionX()->localValue(), 12.0);
    EXPECT_EQ(joint->handlePositionY()->localValue(), -8.0);
}

TEST(JointDefinition, SettingAHandleMakesTheJointTakePartEvenWhenTheMatrixHasNoInverse)
{
    TUScene scene;
    CO_CommandManager manager;
    MO_PegModule *flat = add<MO_PegModule>(scene, "flat");
    flat->scaleAttr()->setLocalValue(Math::Point2d(0, 1));

    IKToolUtil::setHandleOrientationForModule(&manager, flat, Math::Vector3d(1, 1, 0), 0.0);
    ASSERT_NE(jointOf(flat), nullptr);
    EXPECT_TRUE(IKToolUtil::participates(flat));
    EXPECT_EQ(jointOf(flat)->handlePositionX()->localValue(), 1.0) << "the handle keeps its default";
    EXPECT_EQ(jointOf(flat)->handlePositionY()->localValue(), 0.0);
}

TEST(SetLocalValueCmd, SwapsTheLocalValueAndTellsTheNode)
{
    TUScene scene;
    CO_CommandManager manager;
    MO_PegModule *peg = add<MO_PegModule>(scene, "peg");
    IKToolUtil::setParticipation(&manager, peg, true);
    AT_DoubleAttr *weight = jointOf(peg)->weightAttr();

    unsigned long const dirty = peg->dirtyCount();
    ASSERT_TRUE(manager.execute(std::make_unique<tu_attr::SetLocalValueCmd<AT_DoubleAttr>>(weight, 7.0)));
    EXPECT_EQ(weight->localValue(), 7.0);
    EXPECT_GT(peg->dirtyCount(), dirty);
    manager.undo();
    EXPECT_EQ(weight->localValue(), 1.0);
    manager.redo();
    EXPECT_EQ(weight->localValue(), 7.0);

    // Refused values and unchanged values make nothing.
    for (double refused : {7.0, 101.0, -1.0, std::nan(""), HUGE_VAL}) {
        tu_attr::SetLocalValueCmd<AT_DoubleAttr> cmd(weight, refused);
        EXPECT_FALSE(cmd.execute()) << refused;
        EXPECT_EQ(weight->localValue(), 7.0);
    }
    tu_attr::SetLocalValueCmd<AT_DoubleAttr> none(nullptr, 1.0);
    EXPECT_FALSE(none.execute());
}

// Joint positions. Default metrics: 1 field unit is 1/12 in x and 1/16 in y. A parent peg at
// field (0, 16) puts everything below it one scene unit up; its position is keyed at frames 0
// and 10 so that the reads must use the frame.
class JointPositions : public ::testing::Test {
protected:
    void SetUp() override
    {
        parent->positionAttr()->setKeyframe(0, Math::Point3d(0, 16, 0));
        parent->positionAttr()->setKeyframe(10, Math::Point3d(12, 16, 0));
    }

    // The parent's translation at the keyed frames, in scene units.
    static Math::Point3d lift(int frame) { return Math::Point3d(frame == 10 ? 1.0 : 0.0, 1.0, 0.0); }
    static Math::Point3d plus(Math::Point3d const &a, double x, double y) { return Math::Point3d(a.x + x, a.y + y, 0.0); }

    template <class T>
    T *child(char const *name)
    {
        T *module = add<T>(scene, name);
        EXPECT_TRUE(MO_Node::connect(parent, 0, module, 0));
        return module;
    }

    TUScene scene;
    MO_PegModule *parent = add<MO_PegModule>(scene, "parent");
};

TEST_F(JointPositions, PegsTurnAboutTheirPivot)
{
    MO_PegModule *peg = child<MO_PegModule>("peg");
    peg->pivotAttr()->setLocalValue(Math::Point2d(6, 8));  // (0.5, 0.5) in scene units
    peg->rotationAttr()->setKeyframe(0, Math::Angle3d(0, 0, 0));
    peg->rotationAttr()->setKeyframe(10, Math::Angle3d(0, 0, 90));
    MO_PegModule *below = add<MO_PegModule>(scene, "below");
    ASSERT_TRUE(MO_Node::connect(peg, 0, below, 0));

    for (int frame : {0, 10}) {
        SCOPED_TRACE(frame);
        expectNear(IKToolUtil::getModuleJointPositionAtFrame(peg, frame), plus(lift(frame), 0.5, 0.5));
    }
    // The peg below has its pivot at its origin: the origin of `peg` turned about (0.5, 0.5).
    expectNear(IKToolUtil::getModuleJointPositionAtFrame(below, 0), plus(lift(0), 0.0, 0.0));
    expectNear(IKToolUtil::getModuleJointPositionAtFrame(below, 10), plus(lift(10), 1.0, 0.0));
}

TEST_F(JointPositions, MiniPegsUseTheirLocalReferential)
{
    auto *miniPeg = child<MiniPegModule>("mini");
    miniPeg->offsetAttr()->setKeyframe(0, Math::Point2d(12, 0));
    miniPeg->offsetAttr()->setKeyframe(10, Math::Point2d(24, 32));
    expectNear(IKToolUtil::getModuleJointPositionAtFrame(miniPeg, 0), plus(lift(0), 1.0, 0.0));
    expectNear(IKToolUtil::getModuleJointPositionAtFrame(miniPeg, 10), plus(lift(10), 2.0, 2.0));
}

TEST_F(JointPositions, BonesStartAtTheirPosedOffset)
{
    for (auto *bone : {static_cast<BendyBoneModule *>(child<BendyBoneModule>("bendy")),
                       static_cast<BendyBoneModule *>(child<GameBoneModule>("game"))}) {
        SCOPED_TRACE(bone->typeKeyword().toStdString());
        bone->offsetAttr()->setLocalValue(Math::Point2d(36, 0));  // the rest value must not be used
        bone->offsetAttr()->setKeyframe(0, Math::Point2d(12, 0));
        bone->offsetAttr()->setKeyframe(10, Math::Point2d(24, 16));
        bone->orientationAttr()->setLocalValue(90.0);
        bone->lengthAttr()->setLocalValue(24.0);
        expectNear(IKToolUtil::getModuleOffsetJointAtFrame(bone, 0), plus(lift(0), 1.0, 0.0));
        expectNear(IKToolUtil::getModuleOffsetJointAtFrame(bone, 10), plus(lift(10), 2.0, 1.0));
    }
}

TEST_F(JointPositions, CurvesHaveTheirJointAtTheElbow)
{
    auto *curve = child<CurveModule>("curve");
    curve->offsetAttr()->setLocalValue(Math::Point2d(12, 16));  // start at (1, 1) in scene units
    curve->length0Attr()->setKeyframe(0, 12.0);                 // one scene unit along x
    curve->length0Attr()->setKeyframe(10, 24.0);
    curve->orientation1()->setLocalValue(45.0);  // turns the second piece only
    curve->length1Attr()->setLocalValue(12.0);
    expectNear(IKToolUtil::getModuleOffsetJointAtFrame(curve, 0), plus(lift(0), 2.0, 1.0));
    expectNear(IKToolUtil::getModuleOffsetJointAtFrame(curve, 10), plus(lift(10), 3.0, 1.0));
}

TEST_F(JointPositions, OffsetsSitAtTheirOffset)
{
    auto *offset = child<OffsetModule>("offset");
    offset->offsetAttr()->setKeyframe(0, Math::Point2d(12, 16));
    offset->offsetAttr()->setKeyframe(10, Math::Point2d(-12, 48));
    offset->orientationAttr()->setLocalValue(30.0);
    expectNear(IKToolUtil::getModuleOffsetJointAtFrame(offset, 0), plus(lift(0), 1.0, 1.0));
    expectNear(IKToolUtil::getModuleOffsetJointAtFrame(offset, 10), plus(lift(10), -1.0, 3.0));
}

TEST_F(JointPositions, ADeformerWithNoInputWorksInSceneSpace)
{
    auto *bone = add<BendyBoneModule>(scene, "alone");
    bone->offsetAttr()->setLocalValue(Math::Point2d(12, 16));
    expectNear(IKToolUtil::getModuleOffsetJointAtFrame(bone, 4), Math::Point3d(1.0, 1.0, 0.0));
    auto *offset = add<OffsetModule>(scene, "loose");
    offset->offsetAttr()->setLocalValue(Math::Point2d(-24, 8));
    expectNear(IKToolUtil::getModuleOffsetJointAtFrame(offset, 4), Math::Point3d(-2.0, 0.5, 0.0));
    // A kind that is no deformer gives the origin of its input space.
    MO_PegModule *peg = add<MO_PegModule>(scene, "peg");
    peg->positionAttr()->setLocalValue(Math::Point3d(12, 0, 0));
    expectNear(IKToolUtil::getModuleOffsetJointAtFrame(peg, 0), Math::Point3d());
}

} // namespace
