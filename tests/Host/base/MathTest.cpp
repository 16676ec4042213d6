#include "base/Math/Matrix.h"
#include "base/Math/Quat.h"
#include "base/Math/Shapes.h"
#include "base/Math/Vector.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double kPi = 3.14159265358979323846;

TEST(MathVector, PointDifferenceIsAVectorAndPointPlusVectorIsAPoint)
{
    Math::Point3d const a(1.0, 2.0, 3.0);
    Math::Point3d const b(4.0, 6.0, 3.0);
    Math::Vector3d const ab = b - a;
    EXPECT_EQ(ab, Math::Vector3d(3.0, 4.0, 0.0));
    EXPECT_EQ(ab.length(), 5.0);
    EXPECT_EQ(a + ab, b);
}

TEST(MathVector, NormalizeGivesUnitLengthAndLeavesZeroAtZero)
{
    Math::Vector2d v(3.0, 4.0);
    v.Normalize();
    EXPECT_DOUBLE_EQ(v.x, 0.6);
    EXPECT_DOUBLE_EQ(v.y, 0.8);

    Math::Vector2d zero2;
    zero2.Normalize();
    EXPECT_EQ(zero2, Math::Vector2d(0.0, 0.0));

    Math::Vector3d zero3;
    zero3.Normalize();
    EXPECT_EQ(zero3, Math::Vector3d(0.0, 0.0, 0.0));
    EXPECT_FALSE(std::isnan(zero3.x));

    Math::Vector3d v3(0.0, 0.0, -2.0);
    v3.Normalize();
    EXPECT_EQ(v3, Math::Vector3d(0.0, 0.0, -1.0));
}

TEST(MathVector, RotateRadianTurnsCounterClockwise)
{
    Math::Vector2d v(1.0, 0.0);
    v.RotateRadian(kPi / 2.0);
    EXPECT_NEAR(v.x, 0.0, 1e-15);
    EXPECT_NEAR(v.y, 1.0, 1e-15);

    Math::Vector2d w(10.0, 0.0);
    w.RotateRadian(kPi / 6.0);  // 30 degrees: (10 cos 30, 10 sin 30)
    EXPECT_NEAR(w.x, 8.660254037844386, 1e-14);
    EXPECT_NEAR(w.y, 5.0, 1e-14);
    EXPECT_NEAR(w.length(), 10.0, 1e-14);
}

TEST(MathVector, InterpolateAndRound)
{
    Math::Point3d const a(0.0, 10.0, 2.0), b(10.0, 20.0, 4.0);
    EXPECT_EQ(Math::Point3d::interpolate(0.0, a, b), a);
    EXPECT_EQ(Math::Point3d::interpolate(1.0, a, b), b);
    EXPECT_EQ(Math::Point3d::interpolate(0.25, a, b), Math::Point3d(2.5, 12.5, 2.5));
    EXPECT_EQ(Math::Point3d::interpolate(2.0, a, b), Math::Point3d(20.0, 30.0, 6.0));

    Math::Point2d p(2.5, -2.5);
    p.Round();
    EXPECT_EQ(p, Math::Point2d(3.0, -3.0));
    EXPECT_EQ(Math::Point2d(0, 0).GetDistance(Math::Point2d(6, 8)), 10.0);
}

TEST(MathSegment, ProjectionDistanceAndInterpolation)
{
    Math::Segment2d const s(Math::Point2d(0, 0), Math::Point2d(10, 0));
    EXPECT_EQ(s.GetProjectedRatio(Math::Point2d(2.5, 7.0)), 0.25);
    EXPECT_EQ(s.GetProjectedRatio(Math::Point2d(15.0, 1.0)), 1.5);   // beyond b: not clamped
    EXPECT_EQ(s.GetDistanceSq(Math::Point2d(5.0, 3.0)), 9.0);        // over the middle
    EXPECT_EQ(s.GetDistanceSq(Math::Point2d(13.0, 4.0)), 25.0);      // beyond b: to the end point
    EXPECT_EQ(s.GetDistanceSq(Math::Point2d(-3.0, -4.0)), 25.0);     // before a
    EXPECT_EQ(s.Interpolate(0.3), Math::Point2d(3.0, 0.0));

    Math::Segment2d const point(Math::Point2d(1, 1), Math::Point2d(1, 1));
    EXPECT_EQ(point.GetProjectedRatio(Math::Point2d(5, 5)), 0.0);
    EXPECT_EQ(point.GetDistanceSq(Math::Point2d(4, 5)), 25.0);
}

TEST(MathBox, EmptyBoxGrowsFromItsFirstPoint)
{
    Math::Box2d box;
    EXPECT_TRUE(box.isEmpty());
    EXPECT_FALSE(box.contains(Math::Point2d(0, 0)));
    box.Enlarge(1.0, 1.0);
    EXPECT_TRUE(box.isEmpty());

    box.Add(Math::Point2d(2, 3));
    EXPECT_FALSE(box.isEmpty());
    EXPECT_EQ(box.area(), 0.0);
    box.Add(Math::Point2d(-2, 5));
    EXPECT_EQ(box.min(), Math::Point2d(-2, 3));
    EXPECT_EQ(box.max(), Math::Point2d(2, 5));
    EXPECT_EQ(box.GetCenter(), Math::Point2d(0, 4));

    box.Enlarge(0.25, 0.5);
    EXPECT_EQ(box.min(), Math::Point2d(-2.25, 2.5));
    EXPECT_EQ(box.max(), Math::Point2d(2.25, 5.5));
    EXPECT_TRUE(box.contains(Math::Point2d(2.25, 5.5)));

    Math::Box2d other(Math::Point2d(10, 10), Math::Point2d(9, 8));
    EXPECT_EQ(other.min(), Math::Point2d(9, 8));
    box.Add(other).Add(Math::Box2d());
    EXPECT_EQ(box.max(), Math::Point2d(10, 10));
}

TEST(MathQuat, EulerOfIdentityIsZeroAndOfAZTurnIsItsAngle)
{
    Math::Vector3d angles(9, 9, 9);
    Math::Quat(0.0, 0.0, 0.0, 1.0).euler(angles, false);
    EXPECT_EQ(angles, Math::Vector3d(0.0, 0.0, 0.0));

    // Rotation of 60 degrees about z: (0, 0, sin 30, cos 30).
    Math::Quat const q60(0.0, 0.0, 0.5, std::sqrt(3.0) / 2.0);
    q60.euler(angles, false);
    EXPECT_NEAR(angles.x, 0.0, 1e-15);
    EXPECT_NEAR(angles.y, 0.0, 1e-15);
    EXPECT_NEAR(angles.z, kPi / 3.0, 1e-15);
    q60.euler(angles, true);
    EXPECT_NEAR(angles.z, 60.0, 1e-13);

    // A non-unit quaternion gives the angles of its direction.
    Math::Quat(0.0, 0.0, 1.0, std::sqrt(3.0)).euler(angles, true);
    EXPECT_NEAR(angles.z, 60.0, 1e-13);

    // The three axes stay apart: 30 degrees about x alone.
    Math::Quat::fromAxisAngle(Math::Vector3d(1, 0, 0), kPi / 6.0).euler(angles, true);
    EXPECT_NEAR(angles.x, 30.0, 1e-13);
    EXPECT_NEAR(angles.y, 0.0, 1e-13);
    EXPECT_NEAR(angles.z, 0.0, 1e-13);

    Math::Quat(0, 0, 0, 0).euler(angles, false);
    EXPECT_EQ(angles, Math::Vector3d(0.0, 0.0, 0.0));
}

TEST(MathMatrix, OperationsComposeOnTheRight)
{
    // translate then rotate: the rotation applies to the point first.
    Math::Matrix4x4 m;
    m.translate(10.0, 0.0).rotateDegrees(90.0);
    Math::Point3d const p = m * Math::Point3d(1.0, 0.0, 0.0);
    EXPECT_NEAR(p.x, 10.0, 1e-15);
    EXPECT_NEAR(p.y, 1.0, 1e-15);
    EXPECT_EQ(p.z, 0.0);

    Math::Vector3d const v = m * Math::Vector3d(1.0, 0.0, 0.0);  // no translation for a vector
    EXPECT_NEAR(v.x, 0.0, 1e-15);
    EXPECT_NEAR(v.y, 1.0, 1e-15);

    Math::Matrix4x4 s;
    s.scale(2.0, 3.0);
    EXPECT_EQ(s * Math::Point3d(1.0, 1.0, 1.0), Math::Point3d(2.0, 3.0, 1.0));
}

TEST(MathMatrix, InverseUndoesTheTransform)
{
    Math::Matrix4x4 m;
    m.translate(3.0, -2.0, 1.0).rotateDegrees(30.0).scale(2.0, 0.5);
    Math::Matrix4x4 const inv = m.getInverse();
    Math::Matrix4x4 const product = m * inv;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_NEAR(product(r, c), r == c ? 1.0 : 0.0, 1e-14) << r << "," << c;

    // A small but regular scale still inverts.
    Math::Matrix4x4 tiny;
    tiny.scale(1e-4, 1e-4, 1e-4);
    EXPECT_NEAR(tiny.getInverse()(0, 0), 1e4, 1e-8);
}

TEST(MathMatrix, SingularOrNonFiniteMatricesAreRefusedWithoutChange)
{
    struct Case {
        char const *what;
        double values[16];
    };
    double const inf = std::numeric_limits<double>::infinity();
    double const nan = std::numeric_limits<double>::quiet_NaN();
    Case const cases[] = {
        {"zero", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"flattened x", {0, 0, 0, 5, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        {"equal rows", {1, 2, 0, 0, 1, 2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        {"NaN", {nan, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        {"infinity", {inf, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    };
    for (Case const &c : cases) {
        Math::Matrix4x4 const m = Math::Matrix4x4::fromRowMajor(c.values);
        Math::Matrix4x4 const before = m;
        EXPECT_THROW(m.getInverse(), Math::SingularMatrixError) << c.what;
        if (c.what != std::string("NaN")) {  // NaN never compares equal to itself
            EXPECT_EQ(m, before) << c.what;
        }
    }
}

} // namespace
