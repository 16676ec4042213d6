#include "base/Math/Shapes.h"

#include <algorithm>

namespace Math {

double Segment2d::GetProjectedRatio(Point2d const &p) const
{
    Vector2d const ab = b - a;
    double const lenSq = ab.lengthSq();
    if (lenSq == 0.0)
        return 0.0;
    return (p - a).dot(ab) / lenSq;
}

double Segment2d::GetDistanceSq(Point2d const &p) const
{
    double const t = std::clamp(GetProjectedRatio(p), 0.0, 1.0);
    return Interpolate(t).GetDistanceSq(p);
}

Box2d &Box2d::Add(Point2d const &p)
{
    if (empty_) {
        min_ = max_ = p;
        empty_ = false;
    } else {
        min_ = Point2d(std::min(min_.x, p.x), std::min(min_.y, p.y));
        max_ = Point2d(std::max(max_.x, p.x), std::max(max_.y, p.y));
    }
    return *this;
}

Box2d &Box2d::Add(Box2d const &box)
{
    if (!box.empty_) {
        Add(box.min_);
        Add(box.max_);
    }
    return *this;
}

Box2d &Box2d::Enlarge(double dx, double dy)
{
    if (!empty_) {
        min_ -= Vector2d(dx, dy);
        max_ += Vector2d(dx, dy);
    }
    return *this;
}

Box3d &Box3d::Add(Point3d const &p)
{
    if (empty_) {
        min_ = max_ = p;
        empty_ = false;
    } else {
        min_ = Point3d(std::min(min_.x, p.x), std::min(min_.y, p.y), std::min(min_.z, p.z));
        max_ = Point3d(std::max(max_.x, p.x), std::max(max_.y, p.y), std::max(max_.z, p.z));
    }
    return *this;
}

Box2d Box3d::asBox2d() const
{
    return empty_ ? Box2d() : Box2d(min_.toPoint2d(), max_.toPoint2d());
}

} // namespace Math
