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

    // The pixel that holds p: coordinates rounded to the nearest integer, halves away from zero.
    static UT_Point fromPoint2d(Math::Point2d const &p)
    {
        return UT_Point(static_cast<int>(std::lround(p.x)), static_cast<int>(std::lround(p.y)));
    }
    constexpr Math::Point2d toPoint2d() const { return Math::Point2d(x, y); }
    constexpr bool operator==(UT_Point const &o) const { return x == o.x && y == o.y; }
};
