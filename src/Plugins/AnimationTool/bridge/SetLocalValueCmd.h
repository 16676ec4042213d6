// Undoable change of an attribute's local value, and the plug-in's own creation command.
//
// SetLocalValueCmd swaps: each run puts its value in the attribute and keeps the value it
// replaced, so execute and unexecute are one routine. It writes the local value even when the
// attribute is animated, and it makes no keyframe.
#pragma once

#include "host/HostAPI.h"

namespace tu_attr {

template <class Attr>
class SetLocalValueCmd : public CO_Command {
public:
    using Value = typename Attr::ValueType;

    SetLocalValueCmd(Attr *attr, Value value) : attr_(attr), value_(value) {}

    bool execute() override { return swap(); }
    bool unexecute() override { return swap(); }

private:
    // False, and nothing changed, when the attribute refuses the value or already holds it.
    // Otherwise tells the scene that the node changed, marks it dirty if the meta asks for it,
    // and keeps the old value for the next run.
    bool swap()
    {
        if (!attr_)
            return false;
        Value const old = attr_->localValue();
        if (!attr_->setLocalValue(value_))
            return false;
        if (MO_Node *node = attr_->node()) {
            if (SC_SceneCommon const *scene = node->sceneCommon())
                if (TUSceneChangeManager *changes = scene->changeManager())
                    changes->emitNodeChanged(node);
            if (attr_->meta().isNodeDirtyOnChange())
                node->setDirty();
        }
        value_ = old;
        return true;
    }

    Attr *attr_;   // not owned; lives with its node
    Value value_;  // the value the next run puts in
};

} // namespace tu_attr

// The command with which the plug-in adds its metadata to a node: the host's creation command
// under a class of the plug-in's own.
class IKCreateAttrCmd : public tu_node::CreateAttrCmd {
public:
    using tu_node::CreateAttrCmd::CreateAttrCmd;
};
