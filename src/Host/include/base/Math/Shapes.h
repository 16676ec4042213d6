// Segments and boxes of the plane and of space, used for picking, hit tests and drawing bounds.
#pragma once

#include "base/Math/Vector.h"

namespace Math {

// The segment from `a` to `b`. A degenerate segment (a == b) behaves as the point a.
class Segment2d {
public:
    Point2d a;
    Point2d b;

    constexpr Segment2d() = default;
    constexpr Segment2d(Point2d const &a_, Point2d const &b_) : a(a_), b(b_) {}

    // Parameter t of the orthogonal projection of p on the segment's line, a at 0 and b at 1. Not
    // clamped: a point beyond b gives t > 1. A degenerate segment gives 0.
    double GetProjectedRatio(Point2d const &p) const;
    // Squared distance from p to the nearest point of the segment (ends included).
    double GetDistanceSq(Point2d const &p) const;
    // a at t = 0, b at t = 1.
    constexpr Point2d Interpolate(double t) const
    {
        return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
    }
    double length() const { return a.GetDistance(b); }
    constexpr bool operator==(Segment2d const &o) const { return a == o.a && b == o.b; }
};

// An axis-aligned box. A default box is empty: it contains nothing and adding a point makes it
// that point. An empty box has no centre or size: those read as zero.
class Box2d {
public:
    constexpr Box2d() = default;
    constexpr Box2d(Point2d const &p0, Point2d const &p1)
        : min_(p0.x < p1.x ? p0.x : p1.x, p0.y < p1.y ? p0.y : p1.y),
          max_(p0.x < p1.x ? p1.x : p0.x, p0.y < p1.y ? p1.y : p0.y), empty_(false)
    {
    }

    constexpr bool isEmpty() const { return empty_; }
    constexpr Point2d const &min() const { return min_; }
    constexpr Point2d const &max() const { return max_; }
    constexpr double width() const { return empty_ ? 0.0 : max_.x - min_.x; }
    constexpr double height() const { return empty_ ? 0.0 : max_.y - min_.y; }
    constexpr double area() const { return width() * height(); }
    constexpr Point2d GetCenter() const
    {
        return empty_ ? Point2d() : Point2d((min_.x + max_.x) * 0.5, (min_.y + max_.y) * 0.5);
    }
    constexpr bool contains(Point2d const &p) const
    {
        return !empty_ && p.x >= min_.x && p.x <= max_.x && p.y >= min_.y && p.y <= max_.y;
    }

    // Grows the box to hold p (or box). Adding an empty box changes nothing.
    Box2d &Add(Point2d const &p);
    Box2d &Add(Box2d const &box);
    // Grows each side outwards by dx (left and right) and dy (bottom and top). An empty box
    // stays empty.
    Box2d &Enlarge(double dx, double dy);

    constexpr bool operator==(Box2d const &o) const
    {
        return empty_ == o.empty_ && (empty_ || (min_ == o.min_ && max_ == o.max_));
    }

private:
    Point2d min_;        // lower-left corner; meaningful only when !empty_
    Point2d max_;        // upper-right corner; min_.x <= max_.x and min_.y <= max_.y
    bool empty_ = true;
};

// An axis-aligned box of space, for bounds taken under a 3D transform. Empty by default, like
// Box2d.
class Box3d {
public:
    constexpr Box3d() = default;

    constexpr bool isEmpty() const { return empty_; }
    constexpr Point3d const &min() const { return min_; }
    constexpr Point3d const &max() const { return max_; }

    Box3d &Add(Point3d const &p);
    // The box seen from above: x and y, z dropped. Empty stays empty.
    Box2d asBox2d() const;

    constexpr bool operator==(Box3d const &o) const
    {
        return empty_ == o.empty_ && (empty_ || (min_ == o.min_ && max_ == o.max_));
    }

private:
    Point3d min_;        // meaningful only when !empty_
    Point3d max_;        // min_ <= max_ on each axis
    bool empty_ = true;
};

} // namespace Math
