// Rotation quaternions of the host's geometry.
#pragma once

#include "base/Math/Vector.h"

namespace Math {

// The quaternion w + xi + yj + zk. Quat() is the identity rotation.
class Quat {
public:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    double w = 1.0;

    constexpr Quat() = default;
    constexpr Quat(double x_, double y_, double z_, double w_) : x(x_), y(y_), z(z_), w(w_) {}

    // Rotation of `radians` about `axis` (right-handed: counter-clockwise looking down the axis).
    // A zero axis gives the identity.
    static Quat fromAxisAngle(Vector3d const &axis, double radians);

    // The Euler angles of the rotation: angles.x about x (roll), angles.y about y (pitch),
    // angles.z about z (yaw), for the rotation Rz(yaw) * Ry(pitch) * Rx(roll). Radians, or
    // degrees when `inDegrees`. The quaternion is normalised first; the zero quaternion gives
    // zero angles. Pitch lies in [-pi/2, pi/2], roll and yaw in [-pi, pi].
    void euler(Vector3d &angles, bool inDegrees) const;
};

} // namespace Math
