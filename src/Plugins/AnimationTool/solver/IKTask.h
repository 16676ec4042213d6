// The tasks of the IK problem: objects that each add weighted residuals to the least-squares
// problem that IKSolver minimises.
//
// A position task pulls a joint's scene position towards a target point (2 residuals, x and y; z
// plays no part). An orientation task holds a joint's own turn, relative to its parent, at a target
// angle (1 residual): it reads IKJoint::angle, not the joint's direction in the scene.
//
// Units: scene units for positions, radians for angles. A task that is inactive or of weight 0 adds
// no residual at all (not a zero entry), so the residual vector shrinks; making it active again
// restores its place in the solver's task order.
#pragma once

#include "host/HostGeometry.h"

namespace TIK {

class IKJoint;

class IKTask {
public:
    IKTask(IKJoint *joint, int level) : level(level), joint(joint) {}
    virtual ~IKTask() = default;

    // Number of residuals this task adds now: 0 when inactive or of weight 0.
    virtual int residualCount() const = 0;
    // Writes residualCount() residuals at `out`; writes nothing when it adds none.
    virtual void evaluate(double *out) const = 0;

    void setWeight(double w) { weight = w; }

    int level = 0;               // given at creation; kept for the caller, read by nothing here
    double weight = 1.0;         // multiplier of the residuals
    bool active = true;
    IKJoint *joint = nullptr;    // the joint acted on; not owned (the solver owns both)

protected:
    bool contributes() const { return active && weight != 0.0; }
};

class IKPositionTask : public IKTask {
public:
    using IKTask::IKTask;

    int residualCount() const override;
    // out[0] = (position.x - target.x) * weight, out[1] = (position.y - target.y) * weight; both 0
    // without a joint.
    void evaluate(double *out) const override;

    void setTarget(double x, double y, double z) { target = Math::Point3d(x, y, z); }

    Math::Point3d target;
};

class IKOrientationTask : public IKTask {
public:
    using IKTask::IKTask;

    int residualCount() const override;
    // out[0] = (angle - targetAngle) * weight; 0 without a joint.
    void evaluate(double *out) const override;

    // Takes the angle about z of the rotation quaternion (x, y, z, w). The identity gives 0.
    void setTarget(double x, double y, double z, double w);

    double targetAngle = 0.0;  // radians
};

} // namespace TIK
