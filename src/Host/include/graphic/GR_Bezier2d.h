// Bezier curves of the plane, as the curve deformer gives its two pieces.
//
// A curve is made of `segmentCount` segments of degree `degree`. With shared ends (the default)
// consecutive segments share their end control point and the curve holds degree * segments + 1
// control points; without, each segment holds its own degree + 1 points.
#pragma once

#include "base/Math/Vector.h"

#include <algorithm>
#include <vector>

class GR_Bezier2d {
public:
    GR_Bezier2d(int degree = 3, int segmentCount = 1, int sharedEnds = 1)
        : degree_(std::max(1, degree)), segments_(std::max(1, segmentCount)), shared_(sharedEnds != 0),
          points_(static_cast<std::size_t>(shared_ ? degree_ * segments_ + 1 : (degree_ + 1) * segments_))
    {
    }

    int degree() const { return degree_; }
    int segmentCount() const { return segments_; }
    int controlPointCount() const { return static_cast<int>(points_.size()); }

    // Control point i, or the origin for an index out of range.
    Math::Point2d controlPoint(int i) const
    {
        return i >= 0 && i < controlPointCount() ? points_[static_cast<std::size_t>(i)] : Math::Point2d();
    }
    // Sets control point i; an index out of range changes nothing and gives false.
    bool setControlPoint(int i, Math::Point2d const &p)
    {
        if (i < 0 || i >= controlPointCount())
            return false;
        points_[static_cast<std::size_t>(i)] = p;
        return true;
    }

    // The point of segment `segment` at parameter t in [0, 1] (de Casteljau). A segment out of
    // range gives the origin.
    Math::Point2d pointAt(int segment, double t) const
    {
        if (segment < 0 || segment >= segments_)
            return {};
        int const first = shared_ ? segment * degree_ : segment * (degree_ + 1);
        std::vector<Math::Point2d> work(points_.begin() + first, points_.begin() + first + degree_ + 1);
        for (int level = degree_; level > 0; --level)
            for (int i = 0; i < level; ++i)
                work[static_cast<std::size_t>(i)] = work[static_cast<std::size_t>(i)] +
                    (work[static_cast<std::size_t>(i) + 1] - work[static_cast<std::size_t>(i)]) * t;
        return work.front();
    }

private:
    int degree_;                         // >= 1
    int segments_;                       // >= 1
    bool shared_;
    std::vector<Math::Point2d> points_;  // size fixed by degree, segments and sharing
};
