// Points and vectors of the host's geometry: plain doubles with value semantics.
//
// Conventions used throughout the host and the plug-in:
//   - A point is a place, a vector a displacement. Point minus point gives a vector; point plus
//     vector gives a point. Nothing converts between them implicitly.
//   - Angles given in radians are counter-clockwise for positive values in a frame whose y axis
//     points up (scene "OGL" space): RotateRadian(pi/2) takes (1, 0) to (0, 1).
//   - Normalize of a zero vector leaves it zero; no operation here produces NaN from finite input.
#pragma once

#include <cmath>

namespace Math {

class Vector2d {
public:
    double x = 0.0;
    double y = 0.0;

    constexpr Vector2d() = default;
    constexpr Vector2d(double x_, double y_) : x(x_), y(y_) {}

    double length() const { return std::hypot(x, y); }
    constexpr double lengthSq() const { return x * x + y * y; }
    constexpr double dot(Vector2d const &o) const { return x * o.x + y * o.y; }
    // z of the 3D cross product: positive when o lies counter-clockwise of this vector.
    constexpr double cross(Vector2d const &o) const { return x * o.y - y * o.x; }

    // Scales to unit length in place; a zero vector stays zero.
    Vector2d &Normalize();
    // Rotates in place, counter-clockwise by `radians`.
    Vector2d &RotateRadian(double radians);

    constexpr Vector2d operator+(Vector2d const &o) const { return {x + o.x, y + o.y}; }
    constexpr Vector2d operator-(Vector2d const &o) const { return {x - o.x, y - o.y}; }
    constexpr Vector2d operator-() const { return {-x, -y}; }
    constexpr Vector2d operator*(double s) const { return {x * s, y * s}; }
    constexpr Vector2d operator/(double s) const { return {x / s, y / s}; }
    Vector2d &operator+=(Vector2d const &o) { x += o.x; y += o.y; return *this; }
    Vector2d &operator-=(Vector2d const &o) { x -= o.x; y -= o.y; return *this; }
    Vector2d &operator*=(double s) { x *= s; y *= s; return *this; }
    constexpr bool operator==(Vector2d const &o) const { return x == o.x && y == o.y; }
    constexpr bool operator!=(Vector2d const &o) const { return !(*this == o); }
};

class Vector3d {
public:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    constexpr Vector3d() = default;
    constexpr Vector3d(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}

    double length() const { return std::sqrt(lengthSq()); }
    constexpr double lengthSq() const { return x * x + y * y + z * z; }
    constexpr double dot(Vector3d const &o) const { return x * o.x + y * o.y + z * o.z; }
    constexpr Vector3d cross(Vector3d const &o) const
    {
        return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
    }

    // Scales to unit length in place; a zero vector stays zero.
    Vector3d &Normalize();

    constexpr Vector3d operator+(Vector3d const &o) const { return {x + o.x, y + o.y, z + o.z}; }
    constexpr Vector3d operator-(Vector3d const &o) const { return {x - o.x, y - o.y, z - o.z}; }
    constexpr Vector3d operator-() const { return {-x, -y, -z}; }
    constexpr Vector3d operator*(double s) const { return {x * s, y * s, z * s}; }
    constexpr Vector3d operator/(double s) const { return {x / s, y / s, z / s}; }
    Vector3d &operator+=(Vector3d const &o) { x += o.x; y += o.y; z += o.z; return *this; }
    Vector3d &operator-=(Vector3d const &o) { x -= o.x; y -= o.y; z -= o.z; return *this; }
    Vector3d &operator*=(double s) { x *= s; y *= s; z *= s; return *this; }
    constexpr bool operator==(Vector3d const &o) const { return x == o.x && y == o.y && z == o.z; }
    constexpr bool operator!=(Vector3d const &o) const { return !(*this == o); }
};

class Point2d {
public:
    double x = 0.0;
    double y = 0.0;

    constexpr Point2d() = default;
    constexpr Point2d(double x_, double y_) : x(x_), y(y_) {}

    double GetDistance(Point2d const &o) const { return (*this - o).length(); }
    constexpr double GetDistanceSq(Point2d const &o) const { return (*this - o).lengthSq(); }
    // Rounds both coordinates to the nearest integer, halves away from zero.
    Point2d &Round();

    constexpr Vector2d operator-(Point2d const &o) const { return {x - o.x, y - o.y}; }
    constexpr Point2d operator+(Vector2d const &v) const { return {x + v.x, y + v.y}; }
    constexpr Point2d operator-(Vector2d const &v) const { return {x - v.x, y - v.y}; }
    Point2d &operator+=(Vector2d const &v) { x += v.x; y += v.y; return *this; }
    Point2d &operator-=(Vector2d const &v) { x -= v.x; y -= v.y; return *this; }
    constexpr bool operator==(Point2d const &o) const { return x == o.x && y == o.y; }
    constexpr bool operator!=(Point2d const &o) const { return !(*this == o); }
};

class Point3d {
public:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    constexpr Point3d() = default;
    constexpr Point3d(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}

    // a at t = 0, b at t = 1, linear in between and beyond.
    static constexpr Point3d interpolate(double t, Point3d const &a, Point3d const &b)
    {
        return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
    }

    constexpr Point2d toPoint2d() const { return {x, y}; }

    constexpr Vector3d operator-(Point3d const &o) const { return {x - o.x, y - o.y, z - o.z}; }
    constexpr Point3d operator+(Vector3d const &v) const { return {x + v.x, y + v.y, z + v.z}; }
    constexpr Point3d operator-(Vector3d const &v) const { return {x - v.x, y - v.y, z - v.z}; }
    Point3d &operator+=(Vector3d const &v) { x += v.x; y += v.y; z += v.z; return *this; }
    Point3d &operator-=(Vector3d const &v) { x -= v.x; y -= v.y; z -= v.z; return *this; }
    constexpr bool operator==(Point3d const &o) const { return x == o.x && y == o.y && z == o.z; }
    constexpr bool operator!=(Point3d const &o) const { return !(*this == o); }
};

// Euler angles in degrees about x, y and z, as the rotation attributes hold them.
class Angle3d {
public:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    constexpr Angle3d() = default;
    constexpr Angle3d(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}
    constexpr bool operator==(Angle3d const &o) const { return x == o.x && y == o.y && z == o.z; }
    constexpr bool operator!=(Angle3d const &o) const { return !(*this == o); }
};

} // namespace Math
