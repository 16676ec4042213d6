#include "base/Math/Matrix.h"

#include <Eigen/Core>
#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace Math {

namespace {
using EigenMap = Eigen::Map<Eigen::Matrix4d>;             // column-major, like m_
using ConstEigenMap = Eigen::Map<Eigen::Matrix4d const>;
constexpr double kDegreesToRadians = 0.017453292519943295;  // pi / 180
} // namespace

Matrix4x4::Matrix4x4()
{
    EigenMap(m_).setIdentity();
}

Matrix2x3 Matrix2x3::operator*(Matrix2x3 const &o) const
{
    Matrix2x3 r;
    for (int row = 0; row < 2; ++row) {
        for (int column = 0; column < 3; ++column) {
            double v = (*this)(row, 0) * o(0, column) + (*this)(row, 1) * o(1, column);
            if (column == 2)
                v += (*this)(row, 2);
            r(row, column) = v;
        }
    }
    return r;
}

bool Matrix2x3::operator==(Matrix2x3 const &o) const
{
    return std::equal(m_, m_ + 6, o.m_);
}

Matrix2x3 &Matrix2x3::translate(double dx, double dy)
{
    return *this = *this * Matrix2x3(1.0, 0.0, dx, 0.0, 1.0, dy);
}

Matrix2x3 &Matrix2x3::scale(double sx, double sy)
{
    return *this = *this * Matrix2x3(sx, 0.0, 0.0, 0.0, sy, 0.0);
}

Matrix2x3 &Matrix2x3::rotateRadians(double radians)
{
    double const c = std::cos(radians);
    double const s = std::sin(radians);
    return *this = *this * Matrix2x3(c, -s, 0.0, s, c, 0.0);
}

Matrix2x3 &Matrix2x3::rotateDegrees(double degrees)
{
    return rotateRadians(degrees * kDegreesToRadians);
}

Matrix4x4::Matrix4x4(Matrix2x3 const &m) : Matrix4x4()
{
    for (int row = 0; row < 2; ++row) {
        (*this)(row, 0) = m(row, 0);
        (*this)(row, 1) = m(row, 1);
        (*this)(row, 3) = m(row, 2);
    }
}

Matrix2x3 Matrix4x4::getTransform2d() const
{
    Matrix4x4 const &m = *this;
    return Matrix2x3(m(0, 0), m(0, 1), m(0, 3), m(1, 0), m(1, 1), m(1, 3));
}

Matrix4x4 Matrix4x4::fromRowMajor(double const (&values)[16])
{
    Matrix4x4 result;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            result(row, column) = values[row * 4 + column];
    return result;
}

Matrix4x4 Matrix4x4::operator*(Matrix4x4 const &o) const
{
    Matrix4x4 result;
    EigenMap(result.m_).noalias() = ConstEigenMap(m_) * ConstEigenMap(o.m_);
    return result;
}

Point3d Matrix4x4::operator*(Point3d const &p) const
{
    Eigen::Vector4d const r = ConstEigenMap(m_) * Eigen::Vector4d(p.x, p.y, p.z, 1.0);
    double const w = r.w() != 0.0 ? r.w() : 1.0;
    return Point3d(r.x() / w, r.y() / w, r.z() / w);
}

Vector3d Matrix4x4::operator*(Vector3d const &v) const
{
    Eigen::Vector4d const r = ConstEigenMap(m_) * Eigen::Vector4d(v.x, v.y, v.z, 0.0);
    return Vector3d(r.x(), r.y(), r.z());
}

bool Matrix4x4::operator==(Matrix4x4 const &o) const
{
    return std::equal(m_, m_ + 16, o.m_);
}

Matrix4x4 &Matrix4x4::translate(double dx, double dy, double dz)
{
    Matrix4x4 t;
    t(0, 3) = dx;
    t(1, 3) = dy;
    t(2, 3) = dz;
    return *this = *this * t;
}

Matrix4x4 &Matrix4x4::scale(double sx, double sy, double sz)
{
    Matrix4x4 s;
    s(0, 0) = sx;
    s(1, 1) = sy;
    s(2, 2) = sz;
    return *this = *this * s;
}

Matrix4x4 &Matrix4x4::rotateRadians(double radians)
{
    double const c = std::cos(radians);
    double const s = std::sin(radians);
    Matrix4x4 r;
    r(0, 0) = c;
    r(0, 1) = -s;
    r(1, 0) = s;
    r(1, 1) = c;
    return *this = *this * r;
}

Matrix4x4 &Matrix4x4::rotateDegrees(double degrees)
{
    return rotateRadians(degrees * kDegreesToRadians);
}

Matrix4x4 Matrix4x4::getInverse() const
{
    // Full pivoting decides invertibility against a threshold relative to the largest pivot, so
    // that a uniformly small but regular matrix (a scale of 1e-4) still inverts.
    Eigen::FullPivLU<Eigen::Matrix4d> const lu{ConstEigenMap(m_)};
    if (!lu.isInvertible() || !lu.matrixLU().allFinite())
        throw SingularMatrixError();
    Matrix4x4 result;
    EigenMap(result.m_) = lu.inverse();
    return result;
}

} // namespace Math
