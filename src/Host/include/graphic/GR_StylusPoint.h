// One sample of the pointer (mouse or stylus) as a view hands it to a tool.
#pragma once

#include "base/Math/Vector.h"

class GR_StylusPoint {
public:
    GR_StylusPoint() = default;
    explicit GR_StylusPoint(Math::Point2d const &position, double pressure = 1.0)
        : position_(position), pressure_(pressure)
    {
    }

    // Where the pointer is, in view pixels (origin top left, y down).
    Math::Point2d const &position() const { return position_; }
    // Pressure from 0 to 1; a mouse gives 1.
    double pressure() const { return pressure_; }

private:
    Math::Point2d position_;
    double pressure_ = 1.0;
};
