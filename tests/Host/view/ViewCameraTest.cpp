// Zoom and pan of a view: they live in the view's camera chain, so the picture, the pick pass, the
// maps between view and scene points and whatever a tool maps through the binder all follow them.
// The box scene's element "Box" stands at (0.5, 0.25) OGL units, a square of half side 0.05.
#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "scene/TUScene.h"
#include "scene/TUSceneFile.h"
#include "session/SC_Session.h"
#include "tool/SLB_Selectable.h"
#include "view/VW_View.h"

#include "BoxScene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr int kWidth = 101;
constexpr int kHeight = 81;
constexpr double kFieldPixels = 50.5;  // min(101 / 2, 81 / 1.5): pixels per OGL unit at zoom 1

bool isGreen(QImage const &image, double x, double y)
{
    QColor const c = image.pixelColor(int(std::lround(x)), int(std::lround(y)));
    return c.red() == 0 && c.green() == 192 && c.blue() == 0;
}

class ViewCameraTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        QString error;
        std::unique_ptr<TUScene> scene = TUSceneFile::read(kBoxScene, QStringLiteral("box.xml"), &error);
        ASSERT_TRUE(scene) << error.toStdString();
        session = std::make_unique<SC_Session>(std::move(scene));
        view = std::make_unique<VW_View>(session.get());
        view->resize(kWidth, kHeight);
        QObject::connect(view.get(), &VW_View::cameraChanged, [this] { ++changes; });
    }

    // Where a scene point should land, from the zoom and the centre alone.
    Math::Point2d expected(double x, double y) const
    {
        double const k = kFieldPixels * view->zoom();
        return Math::Point2d((kWidth - 1) / 2.0 + k * (x - view->centre().x), (kHeight - 1) / 2.0 - k * (y - view->centre().y));
    }
    Math::Point2d boxPixel() const { return expected(0.5, 0.25); }
    MO_Module *pickedModule(Math::Point2d const &p)
    {
        auto const *hit = dynamic_cast<SLB_ModuleDescriptor *>(view->pick(UT_Point(p.x, p.y), true, 0).get());
        return hit ? hit->module() : nullptr;
    }

    std::unique_ptr<SC_Session> session;
    std::unique_ptr<VW_View> view;
    int changes = 0;
};

TEST_F(ViewCameraTest, ZoomAboutAPointKeepsTheSceneUnderItAndEnlargesThePicture)
{
    Math::Point2d const before = boxPixel();
    EXPECT_NEAR(before.x, 75.25, 1e-12);  // 50 + 50.5 * 0.5
    EXPECT_FALSE(isGreen(view->render(), before.x + 8, before.y));  // the half side is 2.5 pixels

    ASSERT_TRUE(view->zoomAbout(4.0, before));
    EXPECT_EQ(view->zoom(), 4.0);
    EXPECT_EQ(changes, 1);
    Math::Point2d mapped;
    ASSERT_TRUE(view->sceneToView(Math::Point2d(0.5, 0.25), mapped));
    EXPECT_NEAR(mapped.x, before.x, 1e-9);  // the anchor stays put
    EXPECT_NEAR(mapped.y, before.y, 1e-9);
    QImage const image = view->render();
    EXPECT_TRUE(isGreen(image, before.x + 8, before.y));  // now 10 pixels
    EXPECT_FALSE(isGreen(image, before.x + 12, before.y));

    // Every other point moves away from the anchor four times as far.
    ASSERT_TRUE(view->sceneToView(Math::Point2d(0.0, 0.0), mapped));
    EXPECT_NEAR(mapped.x, before.x + 4.0 * (50.0 - before.x), 1e-9);
    EXPECT_NEAR(mapped.y, before.y + 4.0 * (40.0 - before.y), 1e-9);
    Math::Point2d back;
    ASSERT_TRUE(view->viewToScene(mapped, back));
    EXPECT_NEAR(back.x, 0.0, 1e-12);
    EXPECT_NEAR(back.y, 0.0, 1e-12);

    // setZoom turns about the centre of the view; a tool's binder sees the new zoom.
    ASSERT_TRUE(view->setZoom(0.25));
    EXPECT_NEAR(view->canvasBinder()->cameraTransformChain().pixelsPerUnit(Math::CameraTransformChain::WorldFrame),
                kFieldPixels * 0.25, 1e-9);
    ASSERT_TRUE(view->sceneToView(Math::Point2d(0.5, 0.25), mapped));
    EXPECT_NEAR(mapped.x, boxPixel().x, 1e-9);
    EXPECT_NEAR(mapped.y, boxPixel().y, 1e-9);
}

TEST_F(ViewCameraTest, PanMovesThePictureByThePixelsOfTheDragAndSurvivesAResize)
{
    Math::Point2d const before = boxPixel();
    ASSERT_TRUE(view->zoomAbout(2.0, Math::Point2d(50, 40)));
    Math::Point2d const zoomed = boxPixel();
    ASSERT_TRUE(view->pan(-20.0, 10.0));
    Math::Point2d mapped;
    ASSERT_TRUE(view->sceneToView(Math::Point2d(0.5, 0.25), mapped));
    EXPECT_NEAR(mapped.x, zoomed.x - 20.0, 1e-9);
    EXPECT_NEAR(mapped.y, zoomed.y + 10.0, 1e-9);
    EXPECT_TRUE(isGreen(view->render(), mapped.x, mapped.y));
    EXPECT_NE(before.x, mapped.x);

    // A larger view shows the same centre at its own centre, at the zoom of its field.
    Math::Point2d const centre = view->centre();
    view->resize(2 * kWidth, 2 * kHeight);
    EXPECT_EQ(view->centre(), centre);
    EXPECT_EQ(view->zoom(), 2.0);

    view->resetCamera();
    EXPECT_EQ(view->zoom(), 1.0);
    EXPECT_EQ(view->centre(), Math::Point2d(0.0, 0.0));
    EXPECT_EQ(changes, 3);
}

TEST_F(ViewCameraTest, ThePickPassFollowsZoomAndPan)
{
    MO_Module *box = session->scene()->getRootGroup()->findNode(QStringLiteral("Box"))->toModule();
    Math::Point2d const atRest = boxPixel();
    ASSERT_EQ(pickedModule(atRest), box);

    for (double zoom : {0.25, 1.0, 4.0}) {
        for (double dx : {0.0, 23.0}) {
            SCOPED_TRACE(testing::Message() << "zoom " << zoom << ", pan " << dx);
            view->resetCamera();
            // Anchored beside the box so that it stays in the view.
            ASSERT_TRUE(view->zoomAbout(zoom, Math::Point2d(atRest.x + 6, atRest.y - 4)));
            ASSERT_TRUE(view->pan(-dx, dx / 2));
            Math::Point2d const p = boxPixel();
            ASSERT_TRUE(p.x > 0 && p.x < kWidth && p.y > 0 && p.y < kHeight);
            EXPECT_EQ(pickedModule(p), box);
            // Where the box was at rest there is nothing now, unless it is still within reach (the
            // pick reads a square of kPickRadius around the point).
            if (std::max(std::abs(p.x - atRest.x), std::abs(p.y - atRest.y)) > 2.5 * zoom + VW_View::kPickRadius + 1) {
                EXPECT_EQ(pickedModule(atRest), nullptr);
            }
        }
    }
}

TEST_F(ViewCameraTest, FitShowsTheDrawingsWholeAndAnEmptySceneAtOneHundredPercent)
{
    view->fitScene();
    // The square is 0.1 OGL units across: the height limits (81 * 0.9 pixels for it).
    EXPECT_NEAR(view->zoom(), 0.9 * kHeight / (0.1 * kFieldPixels), 1e-9);
    EXPECT_NEAR(view->centre().x, 0.5, 1e-12);
    EXPECT_NEAR(view->centre().y, 0.25, 1e-12);
    QImage const image = view->render();
    EXPECT_TRUE(isGreen(image, 50, 40));
    EXPECT_TRUE(isGreen(image, 50, 5));   // 4.05 pixels of margin above
    EXPECT_FALSE(isGreen(image, 50, 2));

    // The scene's camera counts: fitting is done in what the camera sees.
    Math::Matrix4x4 camera;
    camera.translate(0.5, 0.25);
    session->setCameraMatrix(camera);
    view->fitScene();
    EXPECT_NEAR(view->centre().x, 0.0, 1e-12);
    EXPECT_NEAR(view->centre().y, 0.0, 1e-12);

    SC_Session empty(std::make_unique<TUScene>());
    view->setSession(&empty);
    view->fitScene();
    EXPECT_EQ(view->zoom(), 1.0);
    EXPECT_EQ(view->centre(), Math::Point2d(0.0, 0.0));
    view->setSession(session.get());
}

TEST_F(ViewCameraTest, RefusesZoomsAndPansThatAreNotUsableAndChangesNothing)
{
    ASSERT_TRUE(view->zoomAbout(2.0, Math::Point2d(30, 30)));
    double const zoom = view->zoom();
    Math::Point2d const centre = view->centre();
    changes = 0;
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const inf = std::numeric_limits<double>::infinity();
    struct Case {
        char const *what;
        double factor, x, y;
    } const zooms[] = {
        {"zero", 0.0, 10, 10},
        {"negative", -2.0, 10, 10},
        {"below the least", VW_View::kMinimumZoom / 2, 10, 10},
        {"beyond the most", VW_View::kMaximumZoom * 2, 10, 10},
        {"NaN factor", nan, 10, 10},
        {"infinite factor", inf, 10, 10},
        {"NaN anchor", 2.0, nan, 10},
        {"infinite anchor", 2.0, 10, -inf},
    };
    for (Case const &c : zooms) {
        SCOPED_TRACE(c.what);
        EXPECT_FALSE(view->zoomAbout(c.factor, Math::Point2d(c.x, c.y)));
    }
    EXPECT_FALSE(view->setZoom(nan));
    EXPECT_FALSE(view->pan(nan, 0.0));
    EXPECT_FALSE(view->pan(0.0, inf));
    EXPECT_EQ(view->zoom(), zoom);
    EXPECT_EQ(view->centre(), centre);
    EXPECT_EQ(changes, 0);
    // The limits themselves are allowed.
    EXPECT_TRUE(view->setZoom(VW_View::kMinimumZoom));
    EXPECT_TRUE(view->setZoom(VW_View::kMaximumZoom));
}

} // namespace
