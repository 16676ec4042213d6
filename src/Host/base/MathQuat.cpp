#include "base/Math/Quat.h"

#include <algorithm>

namespace Math {

namespace {
constexpr double kRadiansToDegrees = 57.29577951308232;  // 180 / pi
}

Quat Quat::fromAxisAngle(Vector3d const &axis, double radians)
{
    Vector3d unit = axis;
    unit.Normalize();
    if (unit.lengthSq() == 0.0)
        return Quat();
    double const s = std::sin(radians * 0.5);
    return Quat(unit.x * s, unit.y * s, unit.z * s, std::cos(radians * 0.5));
}

// Tait-Bryan angles of the z-y'-x'' sequence from a unit quaternion (the standard conversion, e.g.
// Diebel, "Representing Attitude", 2006, eq. 290):
//   roll  = atan2(2(wx + yz), 1 - 2(x^2 + y^2))
//   pitch = asin(2(wy - zx))
//   yaw   = atan2(2(wz + xy), 1 - 2(y^2 + z^2))
// The argument of asin is clamped, as rounding can push it just past +-1 near gimbal lock.
void Quat::euler(Vector3d &angles, bool inDegrees) const
{
    double const norm = std::sqrt(x * x + y * y + z * z + w * w);
    if (norm == 0.0) {
        angles = Vector3d();
        return;
    }
    double const qx = x / norm, qy = y / norm, qz = z / norm, qw = w / norm;

    double const roll = std::atan2(2.0 * (qw * qx + qy * qz), 1.0 - 2.0 * (qx * qx + qy * qy));
    double const pitch = std::asin(std::clamp(2.0 * (qw * qy - qz * qx), -1.0, 1.0));
    double const yaw = std::atan2(2.0 * (qw * qz + qx * qy), 1.0 - 2.0 * (qy * qy + qz * qz));

    double const k = inDegrees ? kRadiansToDegrees : 1.0;
    angles = Vector3d(roll * k, pitch * k, yaw * k);
}

} // namespace Math
