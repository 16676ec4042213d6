// One joint's IK constraints, stored on a scene node as a group attribute.
//
// The host saves a JointAttr with its node, undoes changes to it and shows it in its editors. The
// skeleton predicates (SkeletonJointDef) read its values live, always through local values: the
// frame plays no part. Every node that takes part in a skeleton holds one, inside its IKMetaData.
//
// Thirteen of the fourteen attributes are registered in the group, which fixes their order in the
// scene file: customType, jointType, isRoot, active, weight, holdpositiongain,
// holdorientationgain, holdPosition, holdOrientation, setupPosition, handlepositionx,
// handlepositiony, blocker. useActualPosition is left out on purpose: it exists and its accessor
// works, but it is not saved and does not show in editors; its value lasts as long as the node.
#pragma once

#include "host/HostAPI.h"

#include <QString>

#include <memory>

class JointAttr : public AT_GroupAttr {
public:
    // Flags of an element meta (getMeta): NodeDirtyOnChange | Builtin | NotAnimatable.
    static constexpr int kElementFlags = 13;

    // Builds the fourteen attributes on the node that owns the group; `isRoot` is the default of
    // isRoot(). The joint id is copied from the node's joint name (IKJointNameAttr), which is
    // registered on the node if it has none yet.
    JointAttr(AT_AttrOwner *node, AT_AttrMeta const &meta, bool isRoot);
    ~JointAttr() override;

    AT_StringAttr *jointType() const;               // "jointType", empty
    AT_BoolAttr *isRoot() const;                    // "isRoot", the constructor's argument
    AT_BoolAttr *useActualPositionAttr() const;     // "useActualPosition", false; not registered
    AT_BoolAttr *isCustomType() const;              // "customType", true
    AT_BoolAttr *activeAttr() const;                // "active", true
    AT_BoolAttr *holdOrientationAttr() const;       // "holdOrientation", false
    AT_BoolAttr *holdPositionAttr() const;          // "holdPosition", false
    AT_DoubleAttr *weightAttr() const;              // "weight", 1
    AT_DoubleAttr *holdPositionGainAttr() const;    // "holdpositiongain", 1
    AT_DoubleAttr *holdOrientationGainAttr() const; // "holdorientationgain", 1
    AT_Position2dAttr *setupPositionAttr() const;   // "setupPosition", (0, 0)
    AT_DoubleAttr *handlePositionX() const;         // "handlepositionx", 1; field units, module axes
    AT_DoubleAttr *handlePositionY() const;         // "handlepositiony", 0
    AT_BoolAttr *isBlocker() const;                 // "blocker", false

    // "root" while the local value of isRoot() is true, else the id copied at construction.
    QString jointId() const;

    // The meta of the element at `index` of a joint array: keyword "jointattr<index>" (decimal,
    // no leading zeros), display name "Joint", flags kElementFlags.
    static AT_AttrMeta getMeta(int index);

    // Puts the constraints back to their defaults through commands run on `manager`, each with an
    // empty name, in this order: useActualPosition, active, holdOrientation, holdPosition, weight,
    // holdorientationgain, holdpositiongain, blocker. Values already at their default make no
    // command. The type, the root flag, the setup position and the handle are kept. A null
    // manager changes nothing.
    void resetDefaultValues(CO_CommandManager *manager);

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};
