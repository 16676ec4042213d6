// Undoable changes of attributes: the keyframe commands, the set-value-at-frame commands, the
// creation of dynamic attributes, and the one state-swapping command they are built on.
//
// The SC_SceneCommon arguments are the scene of the attribute, taken for callers' convenience;
// these functions reach what they need through the attribute's owner.
#pragma once

#include "base/Math/Vector.h"
#include "command/CO_Command.h"
#include "scene/AT_AttrMeta.h"

#include <QString>

#include <memory>

class AT_Attr;
class AT_AttrOwner;
class AT_AttrState;
class AT_DoubleAttr;
class AT_Position2dAttr;
class AT_Position3dAttr;
class AT_Rotation3dAttr;
class SC_SceneCommon;

// A command that changes one attribute's value or keyframes: every command the attributes make.
class AT_AttrChangeCmd : public CO_Command {
public:
    virtual AT_Attr *attr() const = 0;
};

// Puts an attribute in one whole state on execute and back in another on unexecute. Exact: the
// states hold the local value and every keyframe.
class AT_AttrStateCmd : public AT_AttrChangeCmd {
public:
    AT_AttrStateCmd(AT_Attr *attr, std::unique_ptr<AT_AttrState> before,
                    std::unique_ptr<AT_AttrState> after);
    ~AT_AttrStateCmd() override;

    // Null when the two states are equal or `attr` is null.
    static std::unique_ptr<CO_Command> make(AT_Attr *attr, std::unique_ptr<AT_AttrState> before,
                                            std::unique_ptr<AT_AttrState> after);

    AT_Attr *attr() const override;
    bool execute() override;
    bool unexecute() override;

private:
    AT_Attr *attr_;
    std::unique_ptr<AT_AttrState> before_;
    std::unique_ptr<AT_AttrState> after_;
};

namespace AT_KeyframeCmds {

// Adds a keyframe at `frame` holding the value the attribute has there, at once; gives whether it
// did. When the attribute's owner has a command manager the change is recorded there (in the
// accumulation that is open), so that undo removes the key again.
//   useCurrentValue: the key takes the value at the frame; false, the local value.
//   constantSegment: the new key holds its value up to the next key.
//   replace: an existing key at the frame is set again; false leaves it and gives false.
//   quiet: do not tell the owner (the caller will).
bool AddKeyframe(SC_SceneCommon *scene, int frame, AT_Attr *attr, bool useCurrentValue = true,
                 bool constantSegment = false, bool replace = false, bool quiet = false);

// A command that removes the keyframes in [from, to]; null when there are none or `attr` is null.
std::unique_ptr<CO_Command> DeleteKeyframe(int from, int to, AT_Attr *attr);

}  // namespace AT_KeyframeCmds

// Commands that set the value of an attribute at a frame (see AT_AnimatedAttr::setValueCmd):
// null for a null attribute, a refused value, no change, or an attached surrogate.
//   relative: the value is added to the value at the frame.
//   createKeyframe: make a key at the frame even when the attribute is not animated yet.
//   constantSegment: a new key holds its value up to the next key.
//   localOnly: write the local value even when the attribute is animated.
namespace Attr {

struct Double {
    static std::unique_ptr<CO_Command> createSetValueCurrentFrameCmd(
        SC_SceneCommon *scene, AT_DoubleAttr *attr, double frame, double value,
        bool relative = false, bool createKeyframe = true, bool constantSegment = false,
        bool localOnly = false);
};

struct Rotation3d {
    static std::unique_ptr<CO_Command> createSetValueCurrentFrameCmd(
        SC_SceneCommon *scene, AT_Rotation3dAttr *attr, double frame, Math::Angle3d const &value,
        bool relative = false, bool createKeyframe = true, bool constantSegment = false,
        bool localOnly = false);
};

// Positions make a key at the frame only when already animated.
struct Position3d {
    static std::unique_ptr<CO_Command> createSetValueCurrentFrameCmd(
        SC_SceneCommon *scene, AT_Position3dAttr *attr, double frame, double x, double y,
        double z, bool relative = false);
};

struct Position2d {
    static std::unique_ptr<CO_Command> createSetValueCurrentFrameCmd(
        SC_SceneCommon *scene, AT_Position2dAttr *attr, double frame, double x, double y,
        bool relative = false);
};

}  // namespace Attr

namespace tu_node {

// Adds a dynamic attribute, made by AT_AttrFactorySingleton from `typeName` with `meta`, to a
// node. Undo takes the attribute out again and keeps it, so that redo puts back the very same
// object (commands recorded after this one may point to it).
//   replaceExisting: an attribute of the same keyword is taken out (and put back on undo); false,
//   such an attribute makes execute do nothing.
// Execute does nothing (false) for an unknown type name, a null node or an owner that refuses.
class CreateAttrCmd : public CO_Command {
public:
    CreateAttrCmd(AT_AttrOwner *node, AT_AttrMeta const &meta, QString const &typeName,
                  bool replaceExisting);
    ~CreateAttrCmd() override;

    AT_Attr *attr() const;  // the attribute made, once executed; null before or on failure
    bool execute() override;
    bool unexecute() override;

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

}  // namespace tu_node
