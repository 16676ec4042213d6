#include "base/Math/Vector.h"

namespace Math {

Vector2d &Vector2d::Normalize()
{
    double const len = length();
    if (len > 0.0) {
        x /= len;
        y /= len;
    }
    return *this;
}

Vector2d &Vector2d::RotateRadian(double radians)
{
    double const c = std::cos(radians);
    double const s = std::sin(radians);
    double const rx = x * c - y * s;
    double const ry = x * s + y * c;
    x = rx;
    y = ry;
    return *this;
}

Vector3d &Vector3d::Normalize()
{
    double const len = length();
    if (len > 0.0) {
        x /= len;
        y /= len;
        z /= len;
    }
    return *this;
}

Point2d &Point2d::Round()
{
    x = std::round(x);
    y = std::round(y);
    return *this;
}

} // namespace Math
