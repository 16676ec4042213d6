// Helpers shared by the scene tests: building small graphs and comparing matrices.
#pragma once

#include "scene/DeformerModules.h"
#include "scene/TUScene.h"

#include <gtest/gtest.h>

namespace SceneTest {

constexpr double kTolerance = 1e-12;

// Adds a new node of type T to the scene's root group under `name`.
template <class T, class... Args>
T *add(TUScene &scene, QString const &name, Args &&...args)
{
    auto node = UT_MakeShared<T>(std::forward<Args>(args)...);
    node->setInstanceName(name);
    return static_cast<T *>(scene.getRootGroup()->addNode(node));
}

inline Math::Matrix4x4 world(MO_Module const &module, double frame, bool withDeformation = true)
{
    MO_PortTransformPtr t = module.getPortTransformation(MO_BaseContext(MO_FrameKey(frame), 0));
    return t ? t->transformation().matrix(withDeformation) : Math::Matrix4x4();
}

inline Math::Point2d apply(Math::Matrix4x4 const &m, Math::Point2d const &p)
{
    return (m * Math::Point3d(p.x, p.y, 0.0)).toPoint2d();
}

inline void expectNear(Math::Point2d const &actual, Math::Point2d const &expected, double tol = kTolerance)
{
    EXPECT_NEAR(actual.x, expected.x, tol);
    EXPECT_NEAR(actual.y, expected.y, tol);
}

// The 2D part of the matrix against a plane map given row by row.
inline void expectPlaneMap(Math::Matrix4x4 const &actual, Math::Matrix2x3 const &expected)
{
    Math::Matrix2x3 const got = actual.getTransform2d();
    for (int r = 0; r < 2; ++r)
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(got(r, c), expected(r, c), kTolerance) << "row " << r << ", column " << c;
}

inline void expectPlaneMap(Math::Matrix2x3 const &actual, Math::Matrix2x3 const &expected)
{
    expectPlaneMap(Math::Matrix4x4(actual), expected);
}

} // namespace SceneTest
