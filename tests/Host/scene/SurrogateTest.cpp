#include "AttrTestSupport.h"

#include "scene/AT_AttrCmds.h"
#include "scene/AT_AttrSurrogate.h"
#include "scene/AT_ValueAttr.h"

#include <gtest/gtest.h>

namespace {

AT_AttrMeta meta(QString const &keyword) { return AT_AttrMeta(keyword, keyword); }

TEST(Surrogate, ReplacesEveryEvaluationAndMakesNoCommand)
{
    TestOwner owner;
    CO_CommandManager manager;
    owner.manager = &manager;
    AT_DoubleAttr angle(&owner, meta("orientation"), 2.0);
    angle.setKeyframe(0, 0.0);
    angle.setKeyframe(10, 10.0);

    bool onKey = false, constant = false;
    angle.value(5.0, &onKey, &constant);
    auto surrogate = std::make_shared<AT_ScalarSimpleAttrSurrogate>(&angle, 7.5, false, 5, constant, onKey);
    int const changes = owner.changes;
    ASSERT_TRUE(angle.setSurrogate(surrogate));
    EXPECT_EQ(owner.changes, changes + 1);
    EXPECT_EQ(angle.surrogate(), surrogate);
    EXPECT_EQ(surrogate->attachedTo(), &angle);

    EXPECT_DOUBLE_EQ(angle.value(0.0), 7.5);
    EXPECT_DOUBLE_EQ(angle.value(100.0, &onKey, &constant), 7.5);
    EXPECT_FALSE(onKey);
    EXPECT_FALSE(constant);
    EXPECT_EQ(angle.textValue(3.0), "7.5");
    EXPECT_DOUBLE_EQ(angle.localValue(), 2.0);  // storage is untouched

    EXPECT_EQ(angle.setTextValue(5.0, "1"), nullptr);
    EXPECT_EQ(Attr::Double::createSetValueCurrentFrameCmd(nullptr, &angle, 5.0, 1.0), nullptr);
    EXPECT_EQ(manager.undoCount(), 0);

    EXPECT_FALSE(surrogate->isDirty());
    surrogate->setValue(9.0);
    EXPECT_TRUE(surrogate->isDirty());
    EXPECT_EQ(owner.changes, changes + 2);
    EXPECT_DOUBLE_EQ(angle.value(5.0), 9.0);
    EXPECT_EQ(surrogate->intValue(), 9);
    EXPECT_TRUE(surrogate->boolValue());

    angle.resetSurrogate();
    EXPECT_EQ(angle.surrogate(), nullptr);
    EXPECT_EQ(surrogate->attachedTo(), nullptr);
    EXPECT_DOUBLE_EQ(angle.value(5.0), 5.0);
    int const after = owner.changes;
    surrogate->setValue(1.0);  // detached: tells nobody
    EXPECT_EQ(owner.changes, after);
}

TEST(Surrogate, PositionAndRotationSurrogates)
{
    AT_Position3dAttr position(nullptr, meta("position"), true, Math::Point3d(1, 2, 3));
    auto p3 = std::make_shared<AT_Position3dAttrSurrogate>(&position, Math::Point3d(4, 5, 6), false, 0, true, false);
    ASSERT_TRUE(position.setSurrogate(p3));
    Math::Point3d p;
    bool constant = false;
    position.getValue(12.0, p, nullptr, &constant);
    EXPECT_EQ(p, Math::Point3d(4, 5, 6));
    EXPECT_TRUE(constant);
    p3->setValue(Math::Point3d(0, 0, 1));
    EXPECT_EQ(position.value(0), Math::Point3d(0, 0, 1));
    EXPECT_EQ(Attr::Position3d::createSetValueCurrentFrameCmd(nullptr, &position, 0, 9, 9, 9), nullptr);

    AT_Position2dAttr offset(nullptr, meta("offset"));
    auto p2 = std::make_shared<AT_Position2dAttrSurrogate>(&offset, Math::Point2d(-1, 1));
    ASSERT_TRUE(offset.setSurrogate(p2));
    double x = 0, y = 0;
    offset.getValue(3.0, x, y);
    EXPECT_EQ(x, -1.0);
    EXPECT_EQ(y, 1.0);

    AT_Rotation3dAttr rotation(nullptr, meta("rotation"));
    auto r = std::make_shared<AT_Rotation3dAttrSurrogate>(&rotation, Math::Angle3d(0, 0, 45));
    ASSERT_TRUE(rotation.setSurrogate(r));
    Math::Angle3d a = r->getValue(7.0);
    a.z += 10;
    r->setValue(a);
    EXPECT_EQ(rotation.value(1.0), Math::Angle3d(0, 0, 55));
    EXPECT_EQ(rotation.textValue(1.0), "0, 0, 55");
}

TEST(Surrogate, AttributesRefuseSurrogatesOfAnotherKind)
{
    AT_Position3dAttr position(nullptr, meta("position"));
    AT_Position2dAttr offset(nullptr, meta("offset"));
    AT_StringAttr name(nullptr, meta("name"));
    AT_DoubleAttr angle(nullptr, meta("angle"));
    auto p2 = std::make_shared<AT_Position2dAttrSurrogate>(&offset, Math::Point2d(1, 1));
    auto scalar = std::make_shared<AT_ScalarSimpleAttrSurrogate>(&angle, 1.0);
    EXPECT_FALSE(position.setSurrogate(p2));
    EXPECT_FALSE(position.setSurrogate(scalar));
    EXPECT_FALSE(name.setSurrogate(scalar));
    EXPECT_FALSE(angle.setSurrogate(p2));
    EXPECT_FALSE(angle.setSurrogate(nullptr));
    EXPECT_EQ(angle.surrogate(), nullptr);

    // Attaching replaces what was attached.
    auto second = std::make_shared<AT_ScalarSimpleAttrSurrogate>(&angle, 2.0);
    ASSERT_TRUE(angle.setSurrogate(scalar));
    ASSERT_TRUE(angle.setSurrogate(second));
    EXPECT_EQ(scalar->attachedTo(), nullptr);
    EXPECT_DOUBLE_EQ(angle.value(0), 2.0);
}

TEST(Surrogate, OutlivesItsAttributeSafely)
{
    auto surrogate = std::make_shared<AT_ScalarSimpleAttrSurrogate>(nullptr, 1.0);
    {
        AT_IntAttr count(nullptr, meta("count"), 3);
        auto mine = std::make_shared<AT_ScalarSimpleAttrSurrogate>(&count, 4.9);
        ASSERT_TRUE(count.setSurrogate(mine));
        EXPECT_EQ(count.value(0), 4);  // truncated
        surrogate = mine;
    }
    EXPECT_EQ(surrogate->attachedTo(), nullptr);
    surrogate->setValue(5.0);  // must not reach the dead attribute
    EXPECT_TRUE(surrogate->isDirty());
}

}  // namespace
