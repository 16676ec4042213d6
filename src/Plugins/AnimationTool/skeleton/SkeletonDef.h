// The skeleton as the IK tool sees it at one moment.
//
// A SkeletonDef is a plain, copyable, flat list of SkeletonJointDef, one per joint; the tree is held
// only by names (`parentName`). Extraction from the node graph fills it, the solver set-up reads it,
// and the tool writes the solved positions back into it after each solve.
//
// A skeleton owns no scene data. Each joint refers weakly to the module that produced it, and every
// constraint (hold position, hold orientation, mobility, blocker, gains) is read live from that
// module's joint attributes each time a predicate is asked: nothing is cached, so changing a joint's
// attribute changes the next answer at once. A joint whose module is gone, or carries no joint
// attributes, answers with the fallbacks documented on each predicate.
//
// Positions are in scene (OGL) space, at the frame the skeleton was extracted at.
//
// Invariants after extraction (not enforced here, and nothing fails without them): the first joint
// is named "root"; a parent stands before its children; `index` is the joint's place in the list;
// names are unique.
#pragma once

#include "host/HostGeometry.h"

#include <optional>
#include <string>
#include <vector>

class JointAttr;

// The constraints of one joint, as its module's joint attributes hold them at the moment of reading.
struct JointConstraints {
    bool holdPosition = false;
    bool holdOrientation = false;
    bool useActualPosition = false;
    bool blocker = false;
    bool active = false;
    double positionGain = 1.0;
    double orientationGain = 1.0;
    double mobility = 1.0;
};

class SkeletonJointDef {
public:
    // Shortest distance from a joint to its child, in scene units, below which the joint has no
    // bone to turn and is marked immobile: 2^-10.
    static constexpr double kImmobileDistance = 0.0009765625;

    UT_SharedWeakPtr<MO_Module> module;  // the joint's module; a handle shares its parent's
    std::string name;                    // unique key; "root" for the first joint
    std::string parentName;              // name of the parent joint; empty for the root
    int index = -1;                      // place in the list when appended; the appender sets it
    int childCount = 0;                  // joints appended with this one as parent, handles included
    Math::Point3d position;              // scene position at the extraction frame (defines the bones)
    Math::Point3d localPosition;         // = position - parent's position, or position without parent
    Math::Point3d solvedPosition;        // last position the solver gave; = position on extraction
    bool immobile = false;               // a child sits on this joint: see updateLocalReferentials
    bool isHandle = false;               // synthetic joint at the tip of a childless joint

    // Constraint predicates, read live from the module's joint attributes (their local values; the
    // frame plays no part). A handle joint has no tasks of its own: the three task predicates give
    // false for it, while the others answer from the module it shares with its parent.
    bool hasPositionTask() const;                     // fallback false
    bool hasOrientationTask() const;                  // fallback false
    bool useActualPositionWhenInterpolating() const;  // fallback false
    bool isBlocker() const;                           // fallback false
    bool isMobile() const;                            // fallback false; always false when immobile
    double positionTaskWeight() const;                // fallback 1.0
    double orientationTaskWeight() const;             // fallback 1.0
    double mobilityWeight() const;                    // fallback 1.0

    // The joint attributes of the module, or null when the module is gone or carries none.
    JointAttr *jointAttr() const;

    // Same structure: the same module object (by identity, alive or not), name, parent name, index
    // and child count. Positions and the two flags are left out on purpose, so that two skeletons of
    // one structure at different poses are equivalent.
    bool isEquivalent(SkeletonJointDef const &other) const;

private:
    // The constraints read now, or nothing when the joint has no module or joint attributes.
    std::optional<JointConstraints> readConstraints() const;
};

class SkeletonDef : public std::vector<SkeletonJointDef> {
public:
    using std::vector<SkeletonJointDef>::vector;

    // The first joint named `name`, byte for byte; end() when there is none. An empty name gives
    // end() at once, so a root's parent is never found even if some joint has an empty name.
    iterator find(std::string const &name);
    const_iterator find(std::string const &name) const;

    // The joint attributes of the joint at `index`; null for an index out of range or a joint
    // without joint attributes.
    JointAttr *getAttribute(int index) const;

    // Same size, and every pair of joints in list order equivalent.
    bool isEquivalent(SkeletonDef const &other) const;

    // Recomputes the local position of one joint from the positions; end() does nothing.
    void updateLocal(iterator joint);

    // One pass in list order: recomputes every local position, and marks immobile each joint that
    // has a child closer than kImmobileDistance in solved position. The mark is set, never cleared.
    void updateLocalReferentials();
};
