#include "AttrTestSupport.h"

#include "scene/AT_AttrCmds.h"
#include "scene/AT_AttrFactory.h"
#include "scene/AT_ValueAttr.h"

#include <gtest/gtest.h>

namespace {

AT_AttrMeta meta(QString const &keyword) { return AT_AttrMeta(keyword, keyword); }

// A node with one attribute of each kind, recorded by a command manager.
struct Fixture : ::testing::Test {
    TestOwner owner;
    CO_CommandManager manager;
    AT_DoubleAttr angle{&owner, meta("angle"), 0.0};
    AT_IntAttr index{&owner, meta("index"), 1};
    AT_BoolAttr flag{&owner, meta("flag"), true};
    AT_StringAttr name{&owner, meta("name"), "arm"};
    AT_Position2dAttr offset{&owner, meta("offset")};
    AT_Position3dAttr position{&owner, meta("position")};
    AT_Rotation3dAttr rotation{&owner, meta("rotation")};

    void SetUp() override
    {
        owner.manager = &manager;
        owner.statics = {&angle, &index, &flag, &name, &offset, &position, &rotation};
        position.setKeyframe(5, Math::Point3d(1, 1, 0));
    }

    void run(std::unique_ptr<CO_Command> command)
    {
        ASSERT_NE(command, nullptr);
        EXPECT_TRUE(manager.execute(std::move(command)));
    }
};

using AttrCmds = Fixture;

TEST_F(AttrCmds, AddKeyframeTakesTheValueAtTheFrameAndIsUndoneWithItsStep)
{
    angle.setKeyframe(0, 0.0);
    angle.setKeyframe(10, 10.0);
    {
        CO_CommandAccumScope scope(&manager, "Key", nullptr, 0);
        EXPECT_TRUE(AT_KeyframeCmds::AddKeyframe(nullptr, 4, &angle, true, false, false, false));
        EXPECT_FALSE(AT_KeyframeCmds::AddKeyframe(nullptr, 4, &angle, true, false, false, false));
        EXPECT_FALSE(AT_KeyframeCmds::AddKeyframe(nullptr, 4, &flag, true, false, false, false));
        EXPECT_FALSE(AT_KeyframeCmds::AddKeyframe(nullptr, 4, nullptr));
    }
    EXPECT_EQ(angle.keyframes(), (std::vector<int>{0, 4, 10}));
    bool onKey = false;
    EXPECT_DOUBLE_EQ(angle.value(4.0, &onKey), 4.0);
    EXPECT_TRUE(onKey);
    ASSERT_EQ(manager.undoNames(), (QStringList{"Key"}));
    manager.undo();
    EXPECT_EQ(angle.keyframes(), (std::vector<int>{0, 10}));

    // Without a command manager the key is added all the same.
    AT_DoubleAttr loose(nullptr, meta("loose"), 3.0);
    EXPECT_TRUE(AT_KeyframeCmds::AddKeyframe(nullptr, 2, &loose, false, true, false, false));
    bool constant = false;
    EXPECT_DOUBLE_EQ(loose.value(2.0, nullptr, &constant), 3.0);
    EXPECT_TRUE(constant);
}

TEST_F(AttrCmds, QuietAddKeyframeTellsNobody)
{
    int const changes = owner.changes;
    EXPECT_TRUE(AT_KeyframeCmds::AddKeyframe(nullptr, 1, &angle, true, false, false, true));
    EXPECT_EQ(owner.changes, changes);
    EXPECT_TRUE(angle.hasKeyframe(1));
}

TEST_F(AttrCmds, DeleteKeyframeRemovesARangeAndUndoRestoresItExactly)
{
    angle.setKeyframe(1, 1.0, true);
    angle.setKeyframe(2, 2.0);
    angle.setKeyframe(3, 3.0);
    angle.setKeyframe(7, 7.0);
    std::unique_ptr<AT_AttrState> const before = angle.saveState();
    EXPECT_EQ(AT_KeyframeCmds::DeleteKeyframe(4, 6, &angle), nullptr);
    EXPECT_EQ(AT_KeyframeCmds::DeleteKeyframe(3, 1, &angle), nullptr);
    EXPECT_EQ(AT_KeyframeCmds::DeleteKeyframe(1, 3, nullptr), nullptr);
    run(AT_KeyframeCmds::DeleteKeyframe(1, 3, &angle));
    EXPECT_EQ(angle.keyframes(), (std::vector<int>{7}));
    manager.undo();
    EXPECT_TRUE(angle.saveState()->equals(*before));
    bool constant = false;
    angle.value(1.5, nullptr, &constant);
    EXPECT_TRUE(constant);  // the constant flag came back too
}

TEST_F(AttrCmds, SetValueAtFrameCommands)
{
    // Double with a key requested: the key is made at the truncated frame.
    run(Attr::Double::createSetValueCurrentFrameCmd(nullptr, &angle, 12.9, 30.0, false, true, false, false));
    EXPECT_EQ(angle.keyframes(), (std::vector<int>{12}));
    EXPECT_DOUBLE_EQ(angle.localValue(), 0.0);
    // Relative: added to the value at the frame.
    run(Attr::Double::createSetValueCurrentFrameCmd(nullptr, &angle, 12.0, 5.0, true));
    EXPECT_DOUBLE_EQ(angle.value(12.0), 35.0);
    // Local only: the local value changes even though the attribute is animated.
    run(Attr::Double::createSetValueCurrentFrameCmd(nullptr, &angle, 12.0, 8.0, false, true, false, true));
    EXPECT_DOUBLE_EQ(angle.localValue(), 8.0);
    EXPECT_DOUBLE_EQ(angle.value(12.0), 35.0);
    EXPECT_EQ(Attr::Double::createSetValueCurrentFrameCmd(nullptr, &angle, 12.0, 35.0), nullptr);
    EXPECT_EQ(Attr::Double::createSetValueCurrentFrameCmd(nullptr, nullptr, 12.0, 1.0), nullptr);

    // A position without keys takes the local value; an animated one gets a key.
    run(Attr::Position2d::createSetValueCurrentFrameCmd(nullptr, &offset, 3.0, 0.5, -0.5, false));
    EXPECT_FALSE(offset.isAnimated());
    EXPECT_EQ(offset.localValue(), Math::Point2d(0.5, -0.5));
    run(Attr::Position3d::createSetValueCurrentFrameCmd(nullptr, &position, 9.0, 2, 3, 4, false));
    EXPECT_EQ(position.keyframes(), (std::vector<int>{5, 9}));
    EXPECT_EQ(position.value(9.0), Math::Point3d(2, 3, 4));

    run(Attr::Rotation3d::createSetValueCurrentFrameCmd(nullptr, &rotation, 4.0, Math::Angle3d(0, 0, 90), false, true, false, false));
    EXPECT_EQ(rotation.value(100.0), Math::Angle3d(0, 0, 90));
    EXPECT_EQ(Attr::Rotation3d::createSetValueCurrentFrameCmd(nullptr, nullptr, 4.0, Math::Angle3d()), nullptr);
    EXPECT_EQ(Attr::Position2d::createSetValueCurrentFrameCmd(nullptr, nullptr, 4.0, 0, 0), nullptr);
}

// Undo restores exactly: after undoing every step the node writes the same bytes as before, and
// redoing everything gives the bytes of after.
TEST_F(AttrCmds, UndoAndRedoRestoreTheNodeByteForByte)
{
    QByteArray const original = owner.toXml();
    {
        CO_CommandAccumScope outer(&manager, "Pose", nullptr, 0);
        AT_KeyframeCmds::AddKeyframe(nullptr, 5, &angle);
        run(Attr::Double::createSetValueCurrentFrameCmd(nullptr, &angle, 5.0, 12.25));
        {
            CO_CommandAccumScope inner(&manager, "Inner", nullptr, 0);
            run(index.setTextValue(0, "4"));
            run(flag.setTextValue(0, "false"));
            run(name.setTextValue(0, "forearm"));
        }
        run(AT_KeyframeCmds::DeleteKeyframe(5, 5, &position));
        run(rotation.setTextValue(2.0, "0, 0, 30"));
    }
    run(offset.setTextValue(0.0, "1, 2"));
    run(std::make_unique<tu_node::CreateAttrCmd>(&owner, meta("extra"), AT_DoubleAttr::TypeString(), false));
    QByteArray const changed = owner.toXml();
    ASSERT_NE(changed, original);
    EXPECT_EQ(manager.undoNames(), (QStringList{"Pose", "", ""}));

    while (manager.canUndo())
        manager.undo();
    EXPECT_EQ(owner.toXml(), original);
    while (manager.canRedo())
        manager.redo();
    EXPECT_EQ(owner.toXml(), changed);
}

TEST_F(AttrCmds, CreateAttrCmdAddsTheSameAttributeAgainOnRedo)
{
    auto command = std::make_unique<tu_node::CreateAttrCmd>(&owner, meta("extra"), "INT", false);
    tu_node::CreateAttrCmd *create = command.get();
    run(std::move(command));
    AT_Attr *made = create->attr();
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(made->isDynamic());
    EXPECT_EQ(made->typeName(), "INT");
    EXPECT_EQ(owner.findAttr("extra"), made);
    manager.undo();
    EXPECT_EQ(owner.findAttr("extra"), nullptr);
    manager.redo();
    EXPECT_EQ(owner.findAttr("extra"), made);

    // An existing keyword is left alone unless replacing is asked for.
    EXPECT_FALSE(manager.execute(std::make_unique<tu_node::CreateAttrCmd>(&owner, meta("extra"), "BOOL", false)));
    EXPECT_FALSE(manager.execute(std::make_unique<tu_node::CreateAttrCmd>(&owner, meta("angle"), "BOOL", true)));
    auto replace = std::make_unique<tu_node::CreateAttrCmd>(&owner, meta("extra"), "BOOL", true);
    run(std::move(replace));
    EXPECT_EQ(owner.findAttr("extra")->typeName(), "BOOL");
    manager.undo();
    EXPECT_EQ(owner.findAttr("extra"), made);

    int const steps = manager.undoCount();
    EXPECT_FALSE(manager.execute(std::make_unique<tu_node::CreateAttrCmd>(&owner, meta("x"), "NO_SUCH_TYPE", false)));
    EXPECT_FALSE(manager.execute(std::make_unique<tu_node::CreateAttrCmd>(nullptr, meta("x"), "INT", false)));
    EXPECT_EQ(manager.undoCount(), steps);
}

}  // namespace
