// The plane map Matrix2x3, its bridge to Matrix4x4, and Box3d.
#include "base/Math/Matrix.h"
#include "base/Math/Shapes.h"

#include <gtest/gtest.h>

namespace {

void expectNear(Math::Point2d const &actual, Math::Point2d const &expected)
{
    EXPECT_NEAR(actual.x, expected.x, 1e-12);
    EXPECT_NEAR(actual.y, expected.y, 1e-12);
}

TEST(MathMatrix2x3, OperationsComposeOnTheRightLikeMatrix4x4)
{
    Math::Matrix2x3 m;
    m.translate(3.0, 4.0).rotateDegrees(90.0).scale(2.0, 1.0);
    // (1, 1) is scaled to (2, 1), turned to (-1, 2), moved to (2, 6).
    expectNear(m * Math::Point2d(1.0, 1.0), Math::Point2d(2.0, 6.0));
    Math::Vector2d const v = m * Math::Vector2d(1.0, 0.0);
    EXPECT_NEAR(v.x, 0.0, 1e-12);
    EXPECT_NEAR(v.y, 2.0, 1e-12);
    EXPECT_EQ(m.origin(), Math::Point2d(3.0, 4.0));

    Math::Matrix4x4 big;
    big.translate(3.0, 4.0).rotateDegrees(90.0).scale(2.0, 1.0);
    Math::Matrix2x3 const flat = big.getTransform2d();
    for (int r = 0; r < 2; ++r)
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(flat(r, c), m(r, c), 1e-12) << r << "," << c;
}

TEST(MathMatrix2x3, ExtensionToSpaceKeepsZAndRoundTrips)
{
    Math::Matrix2x3 m(0.0, -1.0, 5.0, 1.0, 0.0, -2.0);
    Math::Matrix4x4 const big(m);
    Math::Point3d const p = big * Math::Point3d(1.0, 2.0, 7.0);
    EXPECT_EQ(p, Math::Point3d(3.0, -1.0, 7.0));
    EXPECT_EQ(big.getTransform2d(), m);
    // The product of the extensions is the extension of the product.
    Math::Matrix2x3 n;
    n.rotateDegrees(30.0).translate(1.0, 1.0);
    EXPECT_EQ(Math::Matrix4x4(m * n).getTransform2d(), (Math::Matrix4x4(m) * Math::Matrix4x4(n)).getTransform2d());
}

TEST(MathBox3d, GrowsFromEmptyAndFlattensToBox2d)
{
    Math::Box3d box;
    EXPECT_TRUE(box.isEmpty());
    EXPECT_TRUE(box.asBox2d().isEmpty());
    box.Add(Math::Point3d(1.0, 5.0, -1.0)).Add(Math::Point3d(-2.0, 3.0, 4.0));
    EXPECT_EQ(box.min(), Math::Point3d(-2.0, 3.0, -1.0));
    EXPECT_EQ(box.max(), Math::Point3d(1.0, 5.0, 4.0));
    EXPECT_EQ(box.asBox2d(), Math::Box2d(Math::Point2d(-2.0, 3.0), Math::Point2d(1.0, 5.0)));
}

} // namespace
