#include "solver/IKJoint.h"

namespace TIK {

void IKJoint::setMobility(bool x, bool y, bool z, bool rotation)
{
    bool *flags = rotation ? rotationFree : translationFree;
    flags[0] = x;
    flags[1] = y;
    flags[2] = z;
}

void IKJoint::setTranslationEnabled(bool enabled, bool clearRotation)
{
    if (enabled && clearRotation)
        rotationFree[0] = rotationFree[1] = rotationFree[2] = false;
    translationFree[0] = enabled;
    translationFree[1] = enabled;
    translationFree[2] = false;
}

void IKJoint::forwardKinematics()
{
    if (!dirty)
        return;
    // Cleared before climbing, not after: on a parent chain that loops back to this joint the
    // climb then stops here. For a proper tree the result is the same.
    dirty = false;
    worldAngle = angle;
    worldPosition = local;
    if (parent) {
        parent->forwardKinematics();
        worldAngle += parent->worldAngle;
        // The parent's angle turns this joint's bone; this joint's own angle turns its children.
        Math::Vector2d bone(local.x, local.y);
        bone.RotateRadian(parent->worldAngle);
        Math::Point3d const &base = parent->worldPosition;
        worldPosition = Math::Point3d(base.x + bone.x, base.y + bone.y, base.z);
    }
}

} // namespace TIK
