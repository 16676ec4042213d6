#include "solver/IKTask.h"

#include "solver/IKJoint.h"

namespace TIK {

int IKPositionTask::residualCount() const
{
    return contributes() ? 2 : 0;
}

void IKPositionTask::evaluate(double *out) const
{
    if (!contributes())
        return;
    if (!joint) {
        out[0] = 0.0;
        out[1] = 0.0;
        return;
    }
    Math::Point3d const &p = joint->position();
    out[0] = (p.x - target.x) * weight;
    out[1] = (p.y - target.y) * weight;
}

int IKOrientationTask::residualCount() const
{
    return contributes() ? 1 : 0;
}

void IKOrientationTask::evaluate(double *out) const
{
    if (!contributes())
        return;
    out[0] = joint ? (joint->angle - targetAngle) * weight : 0.0;
}

void IKOrientationTask::setTarget(double x, double y, double z, double w)
{
    Math::Vector3d angles;
    Math::Quat(x, y, z, w).euler(angles, false);
    targetAngle = angles.z;
}

} // namespace TIK
