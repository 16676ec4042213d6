// The camera chain: frames, the maps between them, bad input, and the binder's scope.
#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "graphic/CameraTransformChain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using Math::CameraTransformChain;
using Math::Matrix4x4;
using Math::Point2d;
using Math::Point3d;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kTol = 1e-9;

#define EXPECT_POINT_NEAR(p, ex, ey)       \
    do {                                   \
        EXPECT_NEAR((p).x, (ex), kTol);    \
        EXPECT_NEAR((p).y, (ey), kTol);    \
    } while (0)

// A view of 101 by 81 pixels, so that its centre is the pixel (50, 40), at 10 pixels per unit.
CameraTransformChain makeView(double pixelsPerUnit = 10.0)
{
    CameraTransformChain chain;
    EXPECT_TRUE(chain.setViewport(101, 81));
    EXPECT_TRUE(chain.setOrthographicProjection(pixelsPerUnit));
    return chain;
}

Matrix4x4 translation(double x, double y)
{
    Matrix4x4 m;
    m.translate(x, y);
    return m;
}

using Frame = CameraTransformChain::ReferenceFrame;
constexpr Frame kView = CameraTransformChain::ViewFrame;
constexpr Frame kModel = CameraTransformChain::ModelFrame;

// Maps `point` from `from` to `to` and expects (x, y).
void expectMaps(CameraTransformChain const &chain, Frame from, Point2d const &point, Frame to, double x, double y)
{
    SCOPED_TRACE(testing::Message() << "(" << point.x << ", " << point.y << ") from frame " << from << " to " << to);
    Point2d result;
    ASSERT_TRUE(chain.transform(from, point, to, result));
    EXPECT_NEAR(result.x, x, kTol);
    EXPECT_NEAR(result.y, y, kTol);
}

bool sameMatrix(Matrix4x4 const &a, Matrix4x4 const &b)
{
    for (int i = 0; i < 16; ++i)
        if (std::abs(a.data()[i] - b.data()[i]) > kTol)
            return false;
    return true;
}

} // namespace

TEST(CameraTransformChain, SceneUnitsBecomePixelsWithTheYAxisFlipped)
{
    CameraTransformChain const chain = makeView();
    // (2, 3) is 20 pixels right of the centre and 30 up: (50 + 20, 40 - 30).
    expectMaps(chain, kModel, Point2d(2.0, 3.0), kView, 70.0, 10.0);
    expectMaps(chain, kModel, Point2d(2.0, 3.0), CameraTransformChain::ScreenFrame, 20.0, 30.0);
    expectMaps(chain, kView, Point2d(70.0, 10.0), kModel, 2.0, 3.0);
    Point2d pixel;
    ASSERT_TRUE(chain.project(kModel, Point2d(2.0, 3.0), pixel));
    EXPECT_POINT_NEAR(pixel, 70.0, 10.0);
}

TEST(CameraTransformChain, TheImageSpansMinusOneToOneInNormalisedUnits)
{
    CameraTransformChain const chain = makeView();
    // The outer corner of the top left pixel lies half a pixel up and left of its centre.
    expectMaps(chain, kView, Point2d(-0.5, -0.5), CameraTransformChain::NormalizedFrame, -1.0, 1.0);
    expectMaps(chain, kView, Point2d(100.5, 80.5), CameraTransformChain::NormalizedFrame, 1.0, -1.0);
}

TEST(CameraTransformChain, ZoomScalesAboutTheCentreOfTheView)
{
    CameraTransformChain const chain = makeView(20.0);
    expectMaps(chain, kModel, Point2d(2.0, 3.0), kView, 90.0, -20.0);  // off the top of the view: still a valid map
    EXPECT_NEAR(chain.pixelsPerUnit(CameraTransformChain::ModelFrame), 20.0, kTol);
    EXPECT_NEAR(chain.pixelsPerUnit(CameraTransformChain::ViewFrame), 1.0, kTol);
}

TEST(CameraTransformChain, ModelAndViewMatricesApplyInOrder)
{
    CameraTransformChain chain = makeView();
    // The drawing sits 1 unit right in the scene; the camera sits 1 unit up, so its view matrix
    // moves the scene 1 unit down.
    ASSERT_TRUE(chain.setModelMatrix(translation(1.0, 0.0)));
    ASSERT_TRUE(chain.setViewMatrix(translation(0.0, 1.0).getInverse()));

    // Model (1, 3) -> world (2, 3) -> camera (2, 2) -> screen (20, 20) -> view (70, 20).
    expectMaps(chain, kModel, Point2d(1.0, 3.0), kView, 70.0, 20.0);
    expectMaps(chain, kView, Point2d(70.0, 20.0), CameraTransformChain::WorldFrame, 2.0, 3.0);
    expectMaps(chain, kModel, Point2d(1.0, 3.0), CameraTransformChain::CameraFrame, 2.0, 2.0);

    // A quarter turn of the model: its x axis points up the view.
    Matrix4x4 turn;
    turn.rotateDegrees(90.0);
    ASSERT_TRUE(chain.setModelMatrix(turn));
    expectMaps(chain, kModel, Point2d(1.0, 0.0), kView, 50.0, 40.0);  // world (0, 1) is the camera's origin
    expectMaps(chain, kModel, Point2d(2.0, 0.0), kView, 50.0, 30.0);
}

TEST(CameraTransformChain, PointsOfSpaceKeepTheirPixelsWhateverTheirDepth)
{
    CameraTransformChain const chain = makeView();
    Point2d pixel;
    ASSERT_TRUE(chain.project(CameraTransformChain::ModelFrame, Point3d(2.0, 3.0, 5.0), pixel));
    EXPECT_POINT_NEAR(pixel, 70.0, 10.0);

    Point3d back;
    ASSERT_TRUE(chain.transform(CameraTransformChain::ViewFrame, Point3d(70.0, 10.0, 5.0), CameraTransformChain::ModelFrame, back));
    EXPECT_NEAR(back.x, 2.0, kTol);
    EXPECT_NEAR(back.y, 3.0, kTol);
    EXPECT_NEAR(back.z, 5.0, kTol);

    bool ok = false;
    Matrix4x4 const there = chain.matrix(CameraTransformChain::ModelFrame, CameraTransformChain::ViewFrame, &ok);
    ASSERT_TRUE(ok);
    Matrix4x4 const back2 = chain.matrix(CameraTransformChain::ViewFrame, CameraTransformChain::ModelFrame, &ok);
    ASSERT_TRUE(ok);
    EXPECT_TRUE(sameMatrix(there * back2, Matrix4x4()));
}

TEST(CameraTransformChain, MapsThatCannotBeMadeLeaveTheResultAlone)
{
    struct Case {
        char const *what;
        int viewportWidth;
        double modelScale;
        int source;
        Point2d point;
        int destination;
    };
    Case const cases[] = {
        {"empty viewport, towards pixels", 0, 1.0, CameraTransformChain::ModelFrame, {1.0, 1.0}, CameraTransformChain::ViewFrame},
        {"empty viewport, from pixels", 0, 1.0, CameraTransformChain::ViewFrame, {1.0, 1.0}, CameraTransformChain::ModelFrame},
        {"flattened model, from pixels", 101, 0.0, CameraTransformChain::ViewFrame, {1.0, 1.0}, CameraTransformChain::ModelFrame},
        {"NaN point", 101, 1.0, CameraTransformChain::ModelFrame, {kNaN, 1.0}, CameraTransformChain::ViewFrame},
        {"infinite point", 101, 1.0, CameraTransformChain::ModelFrame, {1.0, -kInf}, CameraTransformChain::ViewFrame},
        {"frame 0", 101, 1.0, 0, {1.0, 1.0}, CameraTransformChain::ViewFrame},
        {"frame 7", 101, 1.0, CameraTransformChain::ModelFrame, {1.0, 1.0}, 7},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        CameraTransformChain chain;
        ASSERT_TRUE(chain.setViewport(c.viewportWidth, 81));
        Matrix4x4 model;
        model.scale(c.modelScale, c.modelScale);
        ASSERT_TRUE(chain.setModelMatrix(model));
        Point2d result(-7.0, -9.0);
        EXPECT_FALSE(chain.transform(CameraTransformChain::ReferenceFrame(c.source), c.point,
                                     CameraTransformChain::ReferenceFrame(c.destination), result));
        EXPECT_EQ(result, Point2d(-7.0, -9.0));
        Point3d result3(-7.0, -9.0, -1.0);
        EXPECT_FALSE(chain.transform(CameraTransformChain::ReferenceFrame(c.source), Point3d(c.point.x, c.point.y, 0.0),
                                     CameraTransformChain::ReferenceFrame(c.destination), result3));
        EXPECT_EQ(result3, Point3d(-7.0, -9.0, -1.0));
    }

    // A flattened model still maps forwards: every point lands on the camera's origin.
    CameraTransformChain chain = makeView();
    Matrix4x4 flat;
    flat.scale(0.0, 0.0);
    ASSERT_TRUE(chain.setModelMatrix(flat));
    expectMaps(chain, kModel, Point2d(3.0, 4.0), kView, 50.0, 40.0);
}

TEST(CameraTransformChain, SettersRefuseValuesThatAreNotFinite)
{
    CameraTransformChain chain = makeView();
    ASSERT_TRUE(chain.setModelMatrix(translation(1.0, 2.0)));
    Matrix4x4 const model = chain.modelMatrix();
    Matrix4x4 const view = chain.viewMatrix();
    Matrix4x4 const projection = chain.projectionMatrix();

    for (double bad : {kNaN, kInf, -kInf}) {
        SCOPED_TRACE(bad);
        Matrix4x4 m;
        m(1, 3) = bad;
        EXPECT_FALSE(chain.setModelMatrix(m));
        EXPECT_FALSE(chain.setViewMatrix(m));
        EXPECT_FALSE(chain.setProjectionMatrix(m));
        EXPECT_FALSE(chain.setOrthographicProjection(bad));
    }
    for (double bad : {0.0, -10.0})
        EXPECT_FALSE(chain.setOrthographicProjection(bad));
    EXPECT_FALSE(chain.setViewport(-1, 81));
    EXPECT_FALSE(chain.setViewport(101, -1));

    EXPECT_EQ(chain.modelMatrix(), model);
    EXPECT_EQ(chain.viewMatrix(), view);
    EXPECT_EQ(chain.projectionMatrix(), projection);
    EXPECT_EQ(chain.viewportWidth(), 101);
    EXPECT_EQ(chain.viewportHeight(), 81);

    CameraTransformChain empty;
    EXPECT_FALSE(empty.setOrthographicProjection(10.0));  // no viewport to fit yet
}

TEST(CameraChainTransformCanvasBinder, TransformModelAppliesTheNewMatrixFirst)
{
    CC_CameraChainTransformCanvasBinder binder;
    ASSERT_TRUE(binder.setViewport(101, 81));
    ASSERT_TRUE(binder.setOrthographicProjection(10.0));
    ASSERT_TRUE(binder.setModelMatrix(translation(1.0, 0.0)));
    Matrix4x4 twice;
    twice.scale(2.0, 2.0);
    ASSERT_TRUE(binder.transformModel(twice));

    Point2d world;
    // (1, 0) is scaled to (2, 0), then moved to (3, 0).
    ASSERT_TRUE(binder.cameraTransformChain().transform(kModel, Point2d(1.0, 0.0),
                                                        CameraTransformChain::WorldFrame, world));
    EXPECT_POINT_NEAR(world, 3.0, 0.0);

    Matrix4x4 bad;
    bad(0, 0) = kNaN;
    Matrix4x4 const before = binder.modelMatrix();
    EXPECT_FALSE(binder.transformModel(bad));
    EXPECT_EQ(binder.modelMatrix(), before);
}

TEST(CameraChainTransformCanvasBinder, ScopeRestoresEveryMatrixAndTheViewport)
{
    CC_CameraChainTransformCanvasBinder binder;
    ASSERT_TRUE(binder.setViewport(101, 81));
    ASSERT_TRUE(binder.setOrthographicProjection(10.0));
    ASSERT_TRUE(binder.setModelMatrix(translation(1.0, 2.0)));
    ASSERT_TRUE(binder.setViewMatrix(translation(-3.0, 0.0)));
    Matrix4x4 const model = binder.modelMatrix();
    Matrix4x4 const view = binder.viewMatrix();
    Matrix4x4 const projection = binder.projectionMatrix();

    {
        CC_CameraChainTransformCanvasBinder::Scope outer(binder);
        ASSERT_TRUE(binder.setModelMatrix(Matrix4x4()));
        Matrix4x4 const inScope = binder.modelMatrix();
        {
            CC_CameraChainTransformCanvasBinder::Scope inner(binder);
            ASSERT_TRUE(binder.transformModel(translation(5.0, 5.0)));
            ASSERT_TRUE(binder.setViewMatrix(Matrix4x4()));
            ASSERT_TRUE(binder.setViewport(11, 11));
            ASSERT_TRUE(binder.setOrthographicProjection(1.0));
        }
        // The inner scope gives back the outer scope's state, not the first one.
        EXPECT_EQ(binder.modelMatrix(), inScope);
        EXPECT_EQ(binder.viewMatrix(), view);
        EXPECT_EQ(binder.cameraTransformChain().viewportWidth(), 101);
    }
    EXPECT_EQ(binder.modelMatrix(), model);
    EXPECT_EQ(binder.viewMatrix(), view);
    EXPECT_EQ(binder.projectionMatrix(), projection);
    EXPECT_EQ(binder.cameraTransformChain().viewportWidth(), 101);
    EXPECT_EQ(binder.cameraTransformChain().viewportHeight(), 81);
}
