// The memory that keyframe commands hold for undo: it grows with the keys a command changes, not
// with the length of the curve. Each command is made on a rotation of 1 key and of 20,000 keys,
// and the bytes it holds (counted by HeapCounter while it lives) are compared.
#include "AttrTestSupport.h"
#include "HeapCounter.h"

#include "scene/AT_AttrCmds.h"
#include "scene/AT_ValueAttr.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

struct MadeOn {
    char const *name;
    std::function<std::unique_ptr<CO_Command>(AT_Rotation3dAttr &)> make;
};

std::ostream &operator<<(std::ostream &os, MadeOn const &m) { return os << m.name; }

// The bytes a command holds, made on a rotation whose keys are at frames 1 to `keys`.
std::size_t heldBy(MadeOn const &command, int keys, int &changesTold)
{
    TestOwner owner;
    CO_CommandManager manager;
    owner.manager = &manager;
    AT_Rotation3dAttr rotation(&owner, AT_AttrMeta("rotation", "rotation"));
    owner.statics = {&rotation};
    for (int f = 1; f <= keys; ++f)
        rotation.setKeyframe(f, Math::Angle3d(0.0, 0.0, double(f)));
    std::unique_ptr<AT_AttrState> const before = rotation.saveState();

    std::size_t const start = HeapCounter::liveBytes();
    std::unique_ptr<CO_Command> made = command.make(rotation);
    std::size_t const held = HeapCounter::liveBytes() - start;
    EXPECT_NE(made, nullptr) << "on " << keys << " keys";
    if (!made)
        return held;

    // And it changes what it must, then puts back exactly the state it found.
    int const told = owner.changes;
    EXPECT_TRUE(made->execute());
    EXPECT_FALSE(rotation.saveState()->equals(*before));
    EXPECT_TRUE(made->unexecute());
    EXPECT_TRUE(rotation.saveState()->equals(*before));
    changesTold = owner.changes - told;
    return held;
}

class KeyframeUndoMemory : public ::testing::TestWithParam<MadeOn> {};

TEST_P(KeyframeUndoMemory, DoesNotGrowWithTheCurve)
{
    int toldShort = 0, toldLong = 0;
    std::size_t const onShort = heldBy(GetParam(), 1, toldShort);
    std::size_t const onLong = heldBy(GetParam(), 20000, toldLong);
    EXPECT_LT(onLong, 1024u) << "a copy of the curve is ~1.3 MB";
    EXPECT_LE(onLong, onShort + 64u);
    EXPECT_GE(toldLong, 2) << "execute and unexecute each tell the owner";
}

INSTANTIATE_TEST_SUITE_P(
    Commands, KeyframeUndoMemory,
    ::testing::Values(
        MadeOn{"SetValueOnAKey",
               [](AT_Rotation3dAttr &r) {
                   return Attr::Rotation3d::createSetValueCurrentFrameCmd(nullptr, &r, 1.0, Math::Angle3d(0, 0, -5));
               }},
        MadeOn{"SetValueMakingAKey",
               [](AT_Rotation3dAttr &r) {
                   return Attr::Rotation3d::createSetValueCurrentFrameCmd(nullptr, &r, -3.0, Math::Angle3d(0, 0, -5));
               }},
        MadeOn{"SetLocalValue",
               [](AT_Rotation3dAttr &r) {
                   return Attr::Rotation3d::createSetValueCurrentFrameCmd(nullptr, &r, 1.0, Math::Angle3d(0, 0, 7), false,
                                                                          true, false, true);
               }},
        MadeOn{"AddKeyframe", [](AT_Rotation3dAttr &r) { return r.addKeyframeCmd(-2, true, true, false); }},
        MadeOn{"ReplaceKeyframe", [](AT_Rotation3dAttr &r) { return r.addKeyframeCmd(1, false, true, true); }},
        MadeOn{"DeleteKeyframe", [](AT_Rotation3dAttr &r) { return AT_KeyframeCmds::DeleteKeyframe(1, 1, &r); }}),
    [](::testing::TestParamInfo<MadeOn> const &info) { return std::string(info.param.name); });

} // namespace
