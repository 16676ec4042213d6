// A point of a view, in whole pixels, origin at the top left, y down.
#pragma once

#include "base/Math/Vector.h"

#include <cmath>

class UT_Point {
public:
    int x = 0;
    int y = 0;

    constexpr UT_Point() = default;
    constexpr UT_Point(int x_, int y_) : x(x_), y(y_) {}

    // How far from the origin a view point may lie, in pixels, either way. Views are far smaller;
    // points beyond are brought to the limit, so that a point, its pixel and the pixels around it
    // are always within int (a plain cast of 3e9, or 2147483647 + 1, is undefined).
    static constexpr int kLimit = 1 << 24;

    // p with each coordinate brought within +-kLimit; NaN becomes 0.
    static Math::Point2d clamped(Math::Point2d const &p)
    {
        return Math::Point2d(clampedCoordinate(p.x), clampedCoordinate(p.y));
    }
    // This point with each coordinate brought within +-kLimit.
    constexpr UT_Point clamped() const { return UT_Point(clampedCoordinate(x), clampedCoordinate(y)); }

    // The pixel that holds p: coordinates rounded to the nearest integer, halves away from zero,
    // after clamped().
    static UT_Point fromPoint2d(Math::Point2d const &p)
    {
        Math::Point2d const c = clamped(p);
        return UT_Point(static_cast<int>(std::lround(c.x)), static_cast<int>(std::lround(c.y)));
    }
    constexpr Math::Point2d toPoint2d() const { return Math::Point2d(x, y); }
    constexpr bool operator==(UT_Point const &o) const { return x == o.x && y == o.y; }

private:
    static double clampedCoordinate(double v)
    {
        if (std::isnan(v))
            return 0.0;
        return v < -kLimit ? double(-kLimit) : v > kLimit ? double(kLimit) : v;
    }
    static constexpr int clampedCoordinate(int v) { return v < -kLimit ? -kLimit : v > kLimit ? kLimit : v; }
};
