// Matrices of the host's geometry: 4x4 matrices for the transforms of the scene graph, and 2x3
// affine matrices of the plane for the local frames of deformers.
//
// Convention: points are column vectors, p' = M * p. A product A * B applies B first, then A.
// Elements are addressed as m(row, column); the translation sits in column 3.
#pragma once

#include "base/Math/Vector.h"

#include <stdexcept>

namespace Math {

// Thrown by Matrix4x4::getInverse for a matrix that has no inverse. Nothing else in the geometry
// values throws.
class SingularMatrixError : public std::runtime_error {
public:
    SingularMatrixError() : std::runtime_error("Math::Matrix4x4: the matrix is singular") {}
};

// An affine map of the plane: the upper two rows of a 3x3 matrix whose last row is (0 0 1).
// Same conventions as Matrix4x4: p' = M * p, A * B applies B first, translation in column 2.
class Matrix2x3 {
public:
    // The identity.
    constexpr Matrix2x3() = default;
    constexpr Matrix2x3(double m00, double m01, double m02, double m10, double m11, double m12)
        : m_{m00, m01, m02, m10, m11, m12}
    {
    }

    constexpr double operator()(int row, int column) const { return m_[row * 3 + column]; }
    double &operator()(int row, int column) { return m_[row * 3 + column]; }

    Matrix2x3 operator*(Matrix2x3 const &o) const;
    constexpr Point2d operator*(Point2d const &p) const
    {
        return {m_[0] * p.x + m_[1] * p.y + m_[2], m_[3] * p.x + m_[4] * p.y + m_[5]};
    }
    constexpr Vector2d operator*(Vector2d const &v) const  // translation does not apply
    {
        return {m_[0] * v.x + m_[1] * v.y, m_[3] * v.x + m_[4] * v.y};
    }
    bool operator==(Matrix2x3 const &o) const;
    bool operator!=(Matrix2x3 const &o) const { return !(*this == o); }

    // Each of these multiplies on the right: the new operation applies to points first.
    Matrix2x3 &translate(double dx, double dy);
    Matrix2x3 &scale(double sx, double sy);
    Matrix2x3 &rotateRadians(double radians);  // counter-clockwise
    Matrix2x3 &rotateDegrees(double degrees);  // counter-clockwise

    // The origin of the frame this matrix maps to, and the images of its two unit axes.
    constexpr Point2d origin() const { return {m_[2], m_[5]}; }
    constexpr Vector2d xAxis() const { return {m_[0], m_[3]}; }
    constexpr Vector2d yAxis() const { return {m_[1], m_[4]}; }

private:
    double m_[6] = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0};  // row-major: m_[row * 3 + column]
};

class Matrix4x4 {
public:
    // The identity.
    Matrix4x4();
    // The plane map extended to space: x and y as `m`, z kept, no projection.
    explicit Matrix4x4(Matrix2x3 const &m);
    static Matrix4x4 fromRowMajor(double const (&values)[16]);

    double operator()(int row, int column) const { return m_[column * 4 + row]; }
    double &operator()(int row, int column) { return m_[column * 4 + row]; }
    // The 16 elements in column-major order.
    double const *data() const { return m_; }

    Matrix4x4 operator*(Matrix4x4 const &o) const;
    Point3d operator*(Point3d const &p) const;    // with w = 1, then divided by the resulting w
    Vector3d operator*(Vector3d const &v) const;  // with w = 0: translation does not apply
    bool operator==(Matrix4x4 const &o) const;
    bool operator!=(Matrix4x4 const &o) const { return !(*this == o); }

    // Each of these multiplies on the right: the new operation applies to points first.
    Matrix4x4 &translate(double dx, double dy, double dz = 0.0);
    Matrix4x4 &scale(double sx, double sy, double sz = 1.0);
    Matrix4x4 &rotateRadians(double radians);  // about z, counter-clockwise
    Matrix4x4 &rotateDegrees(double degrees);  // about z, counter-clockwise

    // The part acting on the plane z = 0 seen from above: rows and columns x, y and the
    // translation. Exact for matrices built from 2D operations; z terms are dropped.
    Matrix2x3 getTransform2d() const;

    // The inverse. Throws SingularMatrixError when the matrix is singular to working precision.
    Matrix4x4 getInverse() const;

private:
    double m_[16];  // column-major: m_[column * 4 + row]
};

} // namespace Math
