// The solver's own planar joint.
//
// Geometry: a joint is a point in scene space. Each joint's `angle` (radians, counter-clockwise)
// turns what hangs below it about the z axis, not the joint itself. Forward kinematics places a
// joint at its parent's position plus its `local` offset rotated by the parent's world angle; z is
// carried from the root unchanged, so `local.z` counts for a joint without parent only. A joint
// without parent stands at `local`: for a root, the translation parameters move it in scene axes.
//
// Mobility: of the six axes only translation x, translation y and rotation z take part in a solve,
// with weights at indices 0, 1 and 5. Weights are in percent: 100 frees the axis wholly from the
// pull back to its reference; the other flags and weights are kept but read by nothing.
#pragma once

#include "host/HostGeometry.h"

#include <string>

namespace TIK {

class IKPositionTask;

class IKJoint {
public:
    enum WeightIndex { TranslationX = 0, TranslationY = 1, TranslationZ = 2, RotationX = 3, RotationY = 4, RotationZ = 5 };

    Math::Point3d const &position() const { return worldPosition; }

    // Writes the three rotation flags if `rotation`, else the three translation flags.
    void setMobility(bool x, bool y, bool z, bool rotation);
    // Translation x and y take `enabled` and z is cleared; with `enabled` and `clearRotation`, all
    // rotation flags are cleared first.
    void setTranslationEnabled(bool enabled, bool clearRotation);
    void setWeight(int index, double weight) { weights[index] = weight; }
    void setActivity(double a) { activity = a; }

    // Places this joint (and, first, its ancestors) if marked dirty. A joint already placed returns
    // at once. A parent chain that loops back ends instead of recursing forever.
    void forwardKinematics();

    std::string name;
    std::string parentName;
    IKJoint *parent = nullptr;          // null for a joint without (resolvable) parent
    Math::Point3d worldPosition;        // output of forward kinematics, scene space
    Math::Point3d local;                // offset from the parent in its frame at rest; x, y are parameters
    int index = -1;
    Math::Point3d restLocal;            // = local at set-up
    Math::Point3d restPosition;         // = position given at set-up, before any forward kinematics
    double angle = 0.0;                 // own rotation, radians; a parameter
    double startAngle = 0.0;            // = angle when the running solve began
    double worldAngle = 0.0;            // = angle + parent's worldAngle, output of forward kinematics
    bool translationFree[3] = {false, false, false};
    bool rotationFree[3] = {false, false, true};
    double weights[6] = {1.0, 1.0, 1.0, 1.0, 1.0, 1.0};
    double activity = 1.0;              // multiplier of all six weights: 1.0 takes part, 0.0 frozen
    IKPositionTask *shadowTask = nullptr;  // owned by the solver's task list
    bool dirty = false;                 // worldPosition and worldAngle are out of date
};

} // namespace TIK
