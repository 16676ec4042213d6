#include "AttrTestSupport.h"

#include "scene/AT_AttrCmds.h"
#include "scene/AT_ValueAttr.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

AT_AttrMeta meta(QString const &keyword) { return AT_AttrMeta(keyword, keyword); }

TEST(AnimatedAttr, DoubleIsLinearBetweenKeysAndConstantOutside)
{
    TestOwner owner;
    AT_DoubleAttr attr(&owner, meta("angle"), 5.0);
    ASSERT_TRUE(attr.setKeyframe(10, 0.0));
    ASSERT_TRUE(attr.setKeyframe(20, 100.0));
    EXPECT_TRUE(attr.isAnimated());
    EXPECT_EQ(attr.keyframes(), (std::vector<int>{10, 20}));

    struct Case {
        double frame;
        double value;
        bool onKey;
        bool constant;
    } const cases[] = {
        {-3.0, 0.0, false, true},  // before the first key
        {10.0, 0.0, true, false},  // on a key that starts a moving segment
        {12.5, 25.0, false, false},
        {15.0, 50.0, false, false},
        {19.0, 90.0, false, false},
        {20.0, 100.0, true, true},  // the last key
        {1000.0, 100.0, false, true},
    };
    for (auto const &c : cases) {
        bool onKey = !c.onKey, constant = !c.constant;
        EXPECT_DOUBLE_EQ(attr.value(c.frame, &onKey, &constant), c.value) << c.frame;
        EXPECT_EQ(onKey, c.onKey) << c.frame;
        EXPECT_EQ(constant, c.constant) << c.frame;
    }
    EXPECT_DOUBLE_EQ(attr.localValue(), 5.0);  // keys leave the local value alone
}

TEST(AnimatedAttr, ConstantKeysAndEqualKeysHold)
{
    AT_DoubleAttr attr(nullptr, meta("d"));
    attr.setKeyframe(1, 4.0, true);
    attr.setKeyframe(5, 8.0);
    attr.setKeyframe(9, 8.0);
    bool constant = false;
    EXPECT_DOUBLE_EQ(attr.value(4.9, nullptr, &constant), 4.0);
    EXPECT_TRUE(constant);
    EXPECT_DOUBLE_EQ(attr.value(7.0, nullptr, &constant), 8.0);
    EXPECT_TRUE(constant);
}

TEST(AnimatedAttr, IntHoldsTheEarlierKey)
{
    AT_IntAttr attr(nullptr, meta("switch"));
    attr.setKeyframe(1, 2);
    attr.setKeyframe(10, 5);
    EXPECT_EQ(attr.value(0.0), 2);
    EXPECT_EQ(attr.value(9.99), 2);
    EXPECT_EQ(attr.value(10.0), 5);
}

TEST(AnimatedAttr, PositionsAndRotationsInterpolatePerComponent)
{
    AT_Position3dAttr position(nullptr, meta("position"));
    position.setKeyframe(0, Math::Point3d(0, 10, -2));
    position.setKeyframe(4, Math::Point3d(8, 30, 2));
    Math::Point3d p;
    bool onKey = true, constant = true;
    ASSERT_TRUE(position.getValue(1.0, p, &onKey, &constant));
    EXPECT_EQ(p, Math::Point3d(2, 15, -1));
    EXPECT_FALSE(onKey);
    EXPECT_FALSE(constant);

    AT_Position2dAttr offset(nullptr, meta("offset"), true, Math::Point2d(1.5, -2));
    double x = 0, y = 0;
    ASSERT_TRUE(offset.getValue(3.0, x, y, &constant));
    EXPECT_EQ(x, 1.5);
    EXPECT_EQ(y, -2.0);
    EXPECT_TRUE(constant);

    AT_Rotation3dAttr rotation(nullptr, meta("rotation"));
    rotation.setKeyframe(10, Math::Angle3d(0, 0, 350));
    rotation.setKeyframe(20, Math::Angle3d(0, 0, 10));
    Math::Angle3d a;
    rotation.getValue(15.0, a);
    EXPECT_EQ(a, Math::Angle3d(0, 0, 180));  // degrees, no wrapping
}

TEST(AnimatedAttr, LocalValueIsUsedWithoutKeys)
{
    TestOwner owner;
    AT_DoubleAttr attr(&owner, meta("weight"), 1.0);
    EXPECT_DOUBLE_EQ(attr.value(42.0), 1.0);
    EXPECT_FALSE(attr.setLocalValue(1.0));  // the same value
    EXPECT_EQ(owner.changes, 0);
    EXPECT_TRUE(attr.setLocalValue(2.5));
    EXPECT_EQ(owner.changes, 1);
    EXPECT_DOUBLE_EQ(attr.value(-7.0), 2.5);
}

TEST(AnimatedAttr, OnlyAnimatableKindsHoldKeys)
{
    AT_BoolAttr flag(nullptr, meta("flag"), true);
    EXPECT_FALSE(flag.isAnimatable());
    EXPECT_FALSE(flag.setKeyframe(1, false));

    AT_DoubleAttr fixed(nullptr, meta("fixed"), 0.0, false);
    EXPECT_FALSE(fixed.isAnimatable());
    EXPECT_FALSE(fixed.setKeyframe(1, 3.0));

    AT_DoubleAttr flagged(nullptr, AT_AttrMeta("f", "f", AT_AttrMetaContainer::NotAnimatable));
    EXPECT_FALSE(flagged.isAnimatable());
    EXPECT_FALSE(flagged.isAnimated());
}

TEST(AnimatedAttr, TextValuesUseSixSignificantDigits)
{
    AT_DoubleAttr third(nullptr, meta("d"), 1.0 / 3.0);
    EXPECT_EQ(third.textValue(0), "0.333333");
    AT_DoubleAttr big(nullptr, meta("d"), 1234567.0);
    EXPECT_EQ(big.textValue(0), "1.23457e+06");
    AT_BoolAttr flag(nullptr, meta("b"), true);
    EXPECT_EQ(flag.textValue(0), "true");
    AT_IntAttr count(nullptr, meta("i"), -42);
    EXPECT_EQ(count.textValue(0), "-42");
    AT_Position3dAttr position(nullptr, meta("p"), true, Math::Point3d(1.5, 2, 0));
    EXPECT_EQ(position.textValue(0), "1.5, 2, 0");
}

TEST(AnimatedAttr, SetTextValueGivesACommandOnlyForAChange)
{
    TestOwner owner;
    AT_BoolAttr flag(&owner, meta("active"), true);
    EXPECT_EQ(flag.setTextValue(0.0, "true"), nullptr);
    std::unique_ptr<CO_Command> command = flag.setTextValue(0.0, "false");
    ASSERT_NE(command, nullptr);
    EXPECT_TRUE(flag.localValue());  // nothing happens before execute
    EXPECT_TRUE(command->execute());
    EXPECT_FALSE(flag.localValue());
    EXPECT_TRUE(command->unexecute());
    EXPECT_TRUE(flag.localValue());

    AT_DoubleAttr weight(&owner, meta("weight"), 1.0);
    EXPECT_EQ(weight.setTextValue(0.0, "1"), nullptr);
    EXPECT_EQ(weight.setTextValue(0.0, "1.000000"), nullptr);
    auto set = weight.setTextValue(0.0, "0.25");
    ASSERT_NE(set, nullptr);
    set->execute();
    EXPECT_DOUBLE_EQ(weight.localValue(), 0.25);

    AT_Position2dAttr offset(&owner, meta("offset"));
    auto move = offset.setTextValue(0.0, " 3, -4 ");
    ASSERT_NE(move, nullptr);
    move->execute();
    EXPECT_EQ(offset.localValue(), Math::Point2d(3, -4));
}

TEST(AnimatedAttr, SetTextValueOnAnAnimatedAttributeSetsTheKeyAtTheTruncatedFrame)
{
    AT_DoubleAttr attr(nullptr, meta("d"));
    attr.setKeyframe(0, 0.0);
    attr.setKeyframe(20, 20.0);
    auto command = attr.setTextValue(15.7, "3");
    ASSERT_NE(command, nullptr);
    command->execute();
    EXPECT_EQ(attr.keyframes(), (std::vector<int>{0, 15, 20}));
    EXPECT_DOUBLE_EQ(attr.value(15.0), 3.0);
    EXPECT_DOUBLE_EQ(attr.localValue(), 0.0);
    auto negative = attr.setTextValue(-0.5, "7");  // truncation towards zero: the key at 0
    ASSERT_NE(negative, nullptr);
    negative->execute();
    EXPECT_EQ(attr.keyframes(), (std::vector<int>{0, 15, 20}));
    EXPECT_DOUBLE_EQ(attr.value(0.0), 7.0);
}

// Inputs from outside: each is refused and leaves the attribute exactly as it was.
TEST(AnimatedAttr, InvalidInputsAreRefusedAndChangeNothing)
{
    TestOwner owner;
    AT_DoubleAttr weight(&owner, AT_DoubleAttrMeta("weight", "Weight", "IK_WEIGHT_STEP", 0, 100, 0, 1000), 1.0);
    AT_IntAttr size(&owner, meta("Size"), 3, INT_MIN, INT_MAX, 1);
    size.setMinValue(0);
    AT_BoolAttr flag(&owner, meta("flag"), false);
    AT_Position3dAttr position(&owner, meta("position"));

    struct Case {
        AT_Attr *attr;
        char const *text;
        double frame;
    } const cases[] = {
        {&weight, "abc", 0}, {&weight, "", 0}, {&weight, "nan", 0}, {&weight, "inf", 0},
        {&weight, "-inf", 0}, {&weight, "150", 0}, {&weight, "-0.001", 0}, {&weight, "1 2", 0},
        {&weight, "5", std::numeric_limits<double>::quiet_NaN()},
        {&weight, "5", std::numeric_limits<double>::infinity()}, {&weight, "5", 3e9},
        {&size, "-1", 0}, {&size, "1.5", 0}, {&size, "99999999999", 0},
        {&flag, "yes", 0}, {&flag, "TRUE", 0},
        {&position, "1, 2", 0}, {&position, "1, nan, 3", 0}, {&position, "1, 2, 3, 4", 0},
    };
    for (auto const &c : cases) {
        std::unique_ptr<AT_AttrState> const before = c.attr->saveState();
        int const changes = owner.changes;
        EXPECT_EQ(c.attr->setTextValue(c.frame, c.text), nullptr) << c.attr->keyword().toStdString() << " '" << c.text << "'";
        EXPECT_TRUE(c.attr->saveState()->equals(*before));
        EXPECT_EQ(owner.changes, changes);
    }

    double const badValues[] = {std::nan(""), std::numeric_limits<double>::infinity(), -1.0, 100.5};
    for (double v : badValues) {
        EXPECT_FALSE(weight.setLocalValue(v)) << v;
        EXPECT_FALSE(weight.setKeyframe(1, v)) << v;
    }
    EXPECT_DOUBLE_EQ(weight.localValue(), 1.0);
    EXPECT_FALSE(weight.isAnimated());
    EXPECT_FALSE(size.setLocalValue(-1));
    EXPECT_FALSE(position.setLocalValue(Math::Point3d(0, std::nan(""), 0)));
    EXPECT_EQ(size.localValue(), 3);
}

TEST(AnimatedAttr, EquivalenceComparesValuesAndKeys)
{
    AT_DoubleAttr a(nullptr, meta("a"), 1.0), b(nullptr, meta("b"), 1.0);
    AT_IntAttr i(nullptr, meta("i"), 1);
    EXPECT_TRUE(a.isEquivalent(b));
    EXPECT_FALSE(a.isEquivalent(i));
    b.setKeyframe(3, 1.0);
    EXPECT_FALSE(a.isEquivalent(b));
    AT_StringAttr s(nullptr, meta("s"), "x"), t(nullptr, meta("t"), "x");
    EXPECT_TRUE(s.isEquivalent(t));
    t.setLocalValue("y");
    EXPECT_FALSE(s.isEquivalent(t));
}

TEST(StringAttr, TextIsTheValue)
{
    TestOwner owner;
    AT_StringAttr type(&owner, meta("jointType"));
    EXPECT_EQ(type.textValue(0), "");
    EXPECT_EQ(type.setTextValue(0, ""), nullptr);
    auto command = type.setTextValue(0, "elbow");
    ASSERT_NE(command, nullptr);
    command->execute();
    EXPECT_EQ(type.localValue(), "elbow");
    EXPECT_EQ(type.value(12.0), "elbow");
    command->unexecute();
    EXPECT_EQ(type.localValue(), "");
    EXPECT_EQ(owner.changes, 2);
}

TEST(ComplexAttr, RegisteredAttributesKeepTheirOrderAndMove)
{
    TestOwner owner;
    AT_GroupAttr group(&owner, meta("joint"));
    AT_BoolAttr a(&owner, meta("a"));
    AT_DoubleAttr b(&owner, AT_AttrMeta("b", "bXml", "B", 0));
    AT_StringAttr c(&owner, meta("c"), "s");
    EXPECT_TRUE(group.registerAttr(&a));
    EXPECT_TRUE(group.registerAttr(&b));
    EXPECT_TRUE(group.registerAttr(&c));
    EXPECT_FALSE(group.registerAttr(&a));
    EXPECT_FALSE(group.registerAttr(nullptr));

    int place = 0;
    EXPECT_EQ(group.findRegisteredAttr("bXml", &place), &b);
    EXPECT_EQ(place, 1);
    EXPECT_EQ(group.findRegisteredAttr("b", &place), &b);
    EXPECT_EQ(group.findRegisteredAttr("", &place), nullptr);
    EXPECT_EQ(place, -1);

    EXPECT_EQ(group.textValue(0), "false;0;s");
    EXPECT_FALSE(group.moveRegisteredAttr(1, 1));
    EXPECT_FALSE(group.moveRegisteredAttr(0, 3));
    EXPECT_TRUE(group.moveRegisteredAttr(2, 0));
    EXPECT_EQ(group.registeredAttr(0), &c);
    EXPECT_EQ(group.registeredAttr(3), nullptr);
    EXPECT_TRUE(group.unregisterAttr(&a));
    EXPECT_EQ(group.registeredCount(), 2);
    EXPECT_EQ(group.setTextValue(0, "x"), nullptr);
}

}  // namespace
