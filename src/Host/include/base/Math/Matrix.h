// 4x4 matrices of the host's geometry, for the transforms of the scene graph.
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

class Matrix4x4 {
public:
    // The identity.
    Matrix4x4();
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

    // The inverse. Throws SingularMatrixError when the matrix is singular to working precision.
    Matrix4x4 getInverse() const;

private:
    double m_[16];  // column-major: m_[column * 4 + row]
};

} // namespace Math
