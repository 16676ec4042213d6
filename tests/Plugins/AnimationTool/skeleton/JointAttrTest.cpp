// JointAttr: the fourteen attributes, their order in the group and the file, the element metas,
// the joint id, the reset to defaults, and the XML round trip.
#include "SkeletonTestUtil.h"

#include "skeleton/JointAttr.h"

#include <QRegularExpression>
#include <QStringList>

#include <cmath>
#include <limits>

namespace {

using namespace SkeletonTest;

struct Expected {
    AT_Attr *attr;
    char const *keyword;
    char const *displayName;
    char const *typeName;
    char const *defaultText;
};

TEST(JointAttr, EachAttributeHasItsKeywordDisplayNameKindAndDefault)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointAttr const joint(module.get(), JointAttr::getMeta(0), false);
    JointAttr const root(module.get(), JointAttr::getMeta(1), true);

    Expected const table[] = {
        {joint.jointType(), "jointType", "Type", "STRING", ""},
        {joint.isRoot(), "isRoot", "Is Root", "BOOL", "false"},
        {root.isRoot(), "isRoot", "Is Root", "BOOL", "true"},
        {joint.useActualPositionAttr(), "useActualPosition", "Use Actual Position", "BOOL", "false"},
        {joint.isCustomType(), "customType", "Is Custom Type", "BOOL", "true"},
        {joint.activeAttr(), "active", "Active", "BOOL", "true"},
        {joint.holdOrientationAttr(), "holdOrientation", "Hold Orientation", "BOOL", "false"},
        {joint.holdPositionAttr(), "holdPosition", "Hold Position", "BOOL", "false"},
        {joint.weightAttr(), "weight", "Weight", "DOUBLE", "1"},
        {joint.holdPositionGainAttr(), "holdpositiongain", "Hold Position Gain", "DOUBLE", "1"},
        {joint.holdOrientationGainAttr(), "holdorientationgain", "Hold Orientation Gain", "DOUBLE", "1"},
        {joint.setupPositionAttr(), "setupPosition", "Setup Position", "POSITION_2D", "0, 0"},
        {joint.handlePositionX(), "handlepositionx", "Handle X", "DOUBLE", "1"},
        {joint.handlePositionY(), "handlepositiony", "Handle Y", "DOUBLE", "0"},
        {joint.isBlocker(), "blocker", "Blocker", "BOOL", "false"},
    };
    for (Expected const &e : table) {
        SCOPED_TRACE(e.keyword);
        ASSERT_NE(e.attr, nullptr);
        EXPECT_EQ(e.attr->keyword(), QLatin1String(e.keyword));
        EXPECT_EQ(e.attr->displayName(), QLatin1String(e.displayName));
        EXPECT_EQ(e.attr->typeName(), QLatin1String(e.typeName));
        EXPECT_EQ(e.attr->textValue(0.0), QLatin1String(e.defaultText));
        EXPECT_EQ(e.attr->node(), module.get());
        EXPECT_FALSE(e.attr->isAnimatable()) << "constraints are read as local values only";
    }
    EXPECT_EQ(joint.typeName(), AT_GroupAttr::TypeString());
}

TEST(JointAttr, ThirteenAttributesAreRegisteredInFileOrderWithoutUseActualPosition)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointAttr joint(module.get(), JointAttr::getMeta(3), false);
    QStringList const order = {"customType",   "jointType",           "isRoot",       "active",
                               "weight",       "holdpositiongain",    "holdorientationgain",
                               "holdPosition", "holdOrientation",     "setupPosition",
                               "handlepositionx", "handlepositiony",  "blocker"};
    QStringList registered;
    for (AT_Attr *attr : joint.registeredAttrs())
        registered << attr->keyword();
    EXPECT_EQ(registered, order);

    // The file follows the same order, and the unregistered flag is not saved.
    joint.useActualPositionAttr()->setLocalValue(true);
    QString const xml = QString::fromUtf8(toXml(joint));
    int last = -1;
    for (QString const &keyword : order) {
        int const at = xml.indexOf(QRegularExpression(QStringLiteral("<%1[ />]").arg(keyword)));
        EXPECT_GT(at, last) << keyword.toStdString();
        last = at;
    }
    EXPECT_FALSE(xml.contains(QLatin1String("useActualPosition")));
    EXPECT_TRUE(joint.useActualPositionAttr()->localValue()) << "the accessor works all the same";
}

TEST(JointAttr, WeightsRunFromZeroToHundredAndTheHandleTakesAnyFiniteValue)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointAttr joint(module.get(), JointAttr::getMeta(0), false);
    double const inf = std::numeric_limits<double>::infinity();
    for (AT_DoubleAttr *weight : {joint.weightAttr(), joint.holdPositionGainAttr(), joint.holdOrientationGainAttr()}) {
        SCOPED_TRACE(weight->keyword().toStdString());
        ASSERT_NE(weight->meta().doubleContainer(), nullptr);
        EXPECT_EQ(weight->meta().doubleContainer()->stepPreference, QLatin1String("IK_WEIGHT_STEP"));
        EXPECT_EQ(weight->meta().doubleContainer()->editorMax, 1000.0);
        for (double refused : {-0.5, 100.5, std::nan(""), inf}) {
            EXPECT_FALSE(weight->setLocalValue(refused)) << refused;
            EXPECT_EQ(weight->localValue(), 1.0);
        }
        EXPECT_TRUE(weight->setLocalValue(100.0));
        EXPECT_TRUE(weight->setLocalValue(0.0));
        EXPECT_FALSE(weight->setKeyframe(5, 2.0)) << "no keyframes";
    }
    for (AT_DoubleAttr *handle : {joint.handlePositionX(), joint.handlePositionY()}) {
        EXPECT_TRUE(handle->setLocalValue(-250.0));
        EXPECT_EQ(handle->localValue(), -250.0);
        EXPECT_FALSE(handle->setLocalValue(std::nan("")));
        EXPECT_FALSE(handle->setLocalValue(-inf));
        EXPECT_EQ(handle->localValue(), -250.0);
    }
}

TEST(JointAttr, ElementMetasNumberTheKeywordInDecimal)
{
    for (int index : {0, 7, 12, 105}) {
        AT_AttrMeta const meta = JointAttr::getMeta(index);
        EXPECT_EQ(meta.keyword(), QStringLiteral("jointattr") + QString::number(index));
        EXPECT_EQ(meta.displayName(), QLatin1String("Joint"));
        EXPECT_EQ(meta.flags(), 13);
    }
    EXPECT_EQ(JointAttr::getMeta(12).keyword(), QLatin1String("jointattr12"));
}

TEST(JointAttr, JointIdIsTheNodesJointNameOrRootWhileTheFlagIsSet)
{
    TUScene scene;
    MO_Module *module = add<MO_PegModule>(scene, QStringLiteral("arm"));
    JointAttr joint(module, JointAttr::getMeta(0), false);
    IKJointNameAttr const *name = IKJointNameAttr::forNode(module);
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(joint.jointId().toStdString(), name->name);

    EXPECT_TRUE(joint.isRoot()->setLocalValue(true));
    EXPECT_EQ(joint.jointId(), QLatin1String("root"));
    EXPECT_TRUE(joint.isRoot()->setLocalValue(false));
    EXPECT_EQ(joint.jointId().toStdString(), name->name);

    JointAttr const root(module, JointAttr::getMeta(1), true);
    EXPECT_EQ(root.jointId(), QLatin1String("root"));
}

TEST(JointAttr, ResetPutsConstraintsBackByUndoableCommandsAndKeepsTheRest)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointAttr joint(module.get(), JointAttr::getMeta(0), false);
    CO_CommandManager manager;

    joint.resetDefaultValues(&manager);
    EXPECT_EQ(manager.undoCount(), 0) << "values at their defaults make no command";

    joint.useActualPositionAttr()->setLocalValue(true);
    joint.activeAttr()->setLocalValue(false);
    joint.holdOrientationAttr()->setLocalValue(true);
    joint.holdPositionAttr()->setLocalValue(true);
    joint.weightAttr()->setLocalValue(3.0);
    joint.holdOrientationGainAttr()->setLocalValue(4.0);
    joint.holdPositionGainAttr()->setLocalValue(5.0);
    joint.isBlocker()->setLocalValue(true);
    joint.handlePositionX()->setLocalValue(-2.0);
    joint.handlePositionY()->setLocalValue(7.0);
    joint.setupPositionAttr()->setLocalValue(Math::Point2d(1.0, 2.0));
    joint.jointType()->setLocalValue(QStringLiteral("elbow"));
    joint.isCustomType()->setLocalValue(false);
    joint.isRoot()->setLocalValue(true);
    QByteArray const changed = toXml(joint);

    joint.resetDefaultValues(nullptr);
    EXPECT_EQ(toXml(joint), changed) << "a null manager changes nothing";

    joint.resetDefaultValues(&manager);
    EXPECT_EQ(manager.undoCount(), 8);
    EXPECT_FALSE(joint.useActualPositionAttr()->localValue());
    EXPECT_TRUE(joint.activeAttr()->localValue());
    EXPECT_FALSE(joint.holdOrientationAttr()->localValue());
    EXPECT_FALSE(joint.holdPositionAttr()->localValue());
    EXPECT_EQ(joint.weightAttr()->localValue(), 1.0);
    EXPECT_EQ(joint.holdOrientationGainAttr()->localValue(), 1.0);
    EXPECT_EQ(joint.holdPositionGainAttr()->localValue(), 1.0);
    EXPECT_FALSE(joint.isBlocker()->localValue());
    EXPECT_EQ(joint.handlePositionX()->localValue(), -2.0);
    EXPECT_EQ(joint.handlePositionY()->localValue(), 7.0);
    EXPECT_EQ(joint.setupPositionAttr()->localValue(), Math::Point2d(1.0, 2.0));
    EXPECT_EQ(joint.jointType()->localValue(), QLatin1String("elbow"));
    EXPECT_FALSE(joint.isCustomType()->localValue());
    EXPECT_TRUE(joint.isRoot()->localValue());

    while (manager.canUndo())
        manager.undo();
    EXPECT_EQ(toXml(joint), changed);
    EXPECT_TRUE(joint.useActualPositionAttr()->localValue()) << "undo restores the unsaved flag too";
}

TEST(JointAttr, WrittenAndReadBackGivesAnEquivalentJoint)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointAttr source(module.get(), JointAttr::getMeta(0), false);
    source.isRoot()->setLocalValue(true);
    source.holdPositionAttr()->setLocalValue(true);
    source.weightAttr()->setLocalValue(0.25);
    source.handlePositionX()->setLocalValue(-0.125);
    source.handlePositionY()->setLocalValue(3.5);
    source.setupPositionAttr()->setLocalValue(Math::Point2d(-1.0, 4.0));
    source.jointType()->setLocalValue(QStringLiteral("knee"));

    JointAttr target(module.get(), JointAttr::getMeta(0), false);
    EXPECT_FALSE(target.isEquivalent(source));
    EXPECT_EQ(fromXml(target, toXml(source)), QString());
    EXPECT_TRUE(target.isEquivalent(source));
    EXPECT_EQ(target.handlePositionX()->localValue(), -0.125);
    EXPECT_EQ(target.jointType()->localValue(), QLatin1String("knee"));
}

} // namespace
