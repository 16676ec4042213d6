// From solved joint positions back to the scene's attributes.
//
// A joint cannot be placed directly: it moves because its parent turns. So for each joint of one
// pose (one SkeletonDef at one frame) a manipulator owns the one attribute that moves it: the
// root's translation, or the rotation of the parent joint's module (a peg's rotation, a bone's or an
// offset's orientation, a curve's second orientation). A handle joint turns the module it is the tip
// of.
//
// Values are previewed through attribute surrogates: while attached they replace the attribute's
// value in every evaluation and make no command. commit() then writes each value as a keyframe at
// the pose's frame through commands on the given manager, which the caller gathers in one undo
// scope. Destroying a set (or an abandoned drag) detaches every surrogate and leaves the scene as
// it was.
//
// Manipulators are applied in a fixed order, so that one sweep of update() is right: the root
// first, then the rotations from the top of the tree down (each computed with the ones above
// already in force), then the handles. A parent with several child joints is turned by the first
// child in list order alone.
#pragma once

#include "host/HostAPI.h"

#include <memory>

class SkeletonDef;

namespace TIK {
class IKSolver;
}

class ManipulatorSet {
public:
    ManipulatorSet();
    ~ManipulatorSet();
    ManipulatorSet(ManipulatorSet const &) = delete;
    ManipulatorSet &operator=(ManipulatorSet const &) = delete;

    // Makes one manipulator per joint of `skeleton` at `frame` and attaches their surrogates. Fails
    // (false, set empty and invalid) for an empty skeleton or a joint whose node kind has no
    // manipulator: a root on a curve, a handle on an offset, a parent of another kind. Joints whose
    // module is gone are skipped. `solver` and `skeleton` are kept, not owned: they must outlive
    // the set's use.
    bool build(double frame, MO_Module *root, TIK::IKSolver *solver, SkeletonDef &skeleton);
    bool isValid() const;
    double frame() const;
    MO_Module *root() const;
    int size() const;

    // Detaches every surrogate (the scene shows its stored animation again).
    void reset();
    // Computes every value from the joints' solved positions into the surrogates, in order.
    void update();
    // Writes each value as a keyframe at the frame, then empties the set (valid, frame 0, no root).
    void commit(CO_CommandManager *manager);
    // Removes the keyframe at the frame from each manipulated attribute, then empties the set.
    void clearKeyframes(CO_CommandManager *manager);
    // Whether some manipulated attribute holds a keyframe at the frame (what clearKeyframes removes).
    bool hasKeyframes() const;

    // Debug print of each manipulator, in order, on standard output.
    void dump() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
