// The pencil: where a stroke lands in the drawing under pegs, cameras and the drawing view, one
// undo step per stroke that leaves the file as it was, new drawings where none is exposed, and
// the settings its panel edits.
//
// Pixels are computed by hand. The view is 101 by 81 pixels, so k = min(101 / 2, 81 / 1.5) = 50.5
// pixels per OGL unit around the pixel (50, 40): with the identity camera, a pixel (px, py) is the
// scene point ((px - 50) / 50.5, (40 - py) / 50.5).
#include "TracingTestScenes.h"
#include "base/Math/Matrix.h"
#include "command/CO_CommandManager.h"
#include "panel/TP_ToolProperties.h"
#include "plugin/PLUG_Services.h"
#include "preference/PR_Preference.h"
#include "scene/AT_ShiftAndTraceUtil.h"
#include "scene/MO_Module.h"
#include "scene/TUScene.h"
#include "scene/TUSceneFile.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "tool/TO_PencilTool.h"
#include "view/VW_View.h"

#include <QDoubleSpinBox>
#include <QLineEdit>

#include <gtest/gtest.h>

namespace {

using Points = std::vector<Math::Point2d>;

void expectPoints(Points const &actual, Points const &expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_NEAR(actual[i].x, expected[i].x, 1e-9) << "point " << i;
        EXPECT_NEAR(actual[i].y, expected[i].y, 1e-9) << "point " << i;
    }
}

class PencilTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        tuPref->remove(TO_PencilTool::colorKey());
        tuPref->remove(TO_PencilTool::widthKey());
        PLUG_Services::setSelection(session->getSelection());
        view.resize(101, 81);
        ASSERT_TRUE(view.setToolId(TO_PencilTool::registerTool()));
        session->getSelection()->set({bar()});
        original = TUSceneFile::write(*session->scene());
    }
    void TearDown() override
    {
        view.setToolId(CX_ToolIds::None);
        PLUG_Services::setSelection(nullptr);
        AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(false);
        tuPref->remove(TO_PencilTool::colorKey());
        tuPref->remove(TO_PencilTool::widthKey());
    }

    MO_ElementModule *bar() const
    {
        return dynamic_cast<MO_ElementModule *>(session->scene()->getRootGroup()->findNode(QStringLiteral("Bar")));
    }
    // Presses at the first pixel, moves through the others and releases at the last.
    void stroke(Points const &pixels)
    {
        view.mousePress(pixels.front());
        for (std::size_t i = 1; i + 1 < pixels.size(); ++i)
            view.mouseMove(pixels[i]);
        view.mouseRelease(pixels.back());
    }
    OC_VectorShape const &lastShape(double frame) const { return bar()->oglDrawing(frame)->shapes().back(); }
    CO_CommandManager *commands() const { return session->commandManager(); }

    std::unique_ptr<SC_Session> session = TracingTestScenes::sessionOf(TracingTestScenes::kPeggedBar);
    VW_View view{session.get()};
    QByteArray original;
};

TEST_F(PencilTest, AStrokeUnderARotatedScaledPegLandsInTheDrawingUnderThePointer)
{
    tuPref->setRgbaValue(TO_PencilTool::colorKey(), 0xff204080);
    tuPref->setDoubleValue(TO_PencilTool::widthKey(), 3.5);
    // Pixels (50, 40), (100.5, 40), (50, 14.75) are the scene points (0, 0), (1, 0), (0, 0.5).
    stroke({{50, 40}, {100.5, 40}, {50, 14.75}});
    ASSERT_EQ(bar()->oglDrawing(1)->shapes().size(), 2u);
    OC_VectorShape const &line = lastShape(1);
    EXPECT_EQ(line.kind, OC_VectorShape::Kind::Polyline);
    expectPoints(line.points, {{-0.125, 0.25}, {-0.125, -0.25}, {0.125, 0.25}});
    EXPECT_EQ(line.stroke, QColor::fromRgba(0xff204080));
    EXPECT_EQ(line.thickness, 3.5);
    EXPECT_EQ(commands()->undoName(), TO_PencilTool::undoName());
}

TEST_F(PencilTest, TheStrokeFollowsTheCameraOfTheView)
{
    // The camera at (0.2, -0.1), zoomed out by 2 (the camera matrix scales by 0.5): the pixel
    // (50, 40) sees the scene point (0.2, -0.1) and the pixel (100.5, 40) sees (0.7, -0.1).
    Math::Matrix4x4 camera;
    camera.translate(0.2, -0.1);
    camera.scale(0.5, 0.5);
    session->setCameraMatrix(camera);
    stroke({{50, 40}, {100.5, 40}});
    expectPoints(lastShape(1).points, {{-0.175, 0.15}, {-0.175, -0.1}});
}

TEST_F(PencilTest, InTheDrawingViewTheStrokeLandsInTheDrawingsOwnSpace)
{
    view.setViewKind(TO_AbstractToolContext::DrawingView);
    // (50, 40) and (75.25, 14.75) are the points (0, 0) and (0.5, 0.5) of the drawing: no peg, no camera.
    Math::Matrix4x4 camera;
    camera.translate(0.3, 0.3);
    session->setCameraMatrix(camera);
    stroke({{50, 40}, {75.25, 14.75}});
    expectPoints(lastShape(1).points, {{0, 0}, {0.5, 0.5}});
}

// Under the peg, a scene point s is the drawing point (-0.125 + 0.5 sy, 0.25 - 0.5 sx) (from the
// first test's three points).
TEST_F(PencilTest, AStrokeInAZoomedPannedViewLandsUnderThePointer)
{
    // Zoom 2 about the centre pixel (50, 40): 101 pixels per unit; the pan then moves the picture
    // 10 pixels right and 20 up, so the scene origin is at pixel (60, 20) and a pixel (px, py) sees
    // ((px - 60) / 101, (20 - py) / 101).
    ASSERT_TRUE(view.setZoom(2.0));
    ASSERT_TRUE(view.pan(10, -20));
    // Pixels (60, 20), (85.25, 20), (60, 70.5) see (0, 0), (0.25, 0), (0, -0.5).
    stroke({{60, 20}, {85.25, 20}, {60, 70.5}});
    expectPoints(lastShape(1).points, {{-0.125, 0.25}, {-0.125, 0.125}, {-0.375, 0.25}});
}

TEST_F(PencilTest, AStrokeOnAShiftedDrawingLandsWhereTheShiftedDrawingShows)
{
    MO_ElementModule *element = bar();
    CA_CelKey const key = element->oglDrawing(1)->celKey();
    AT_ShiftAndTraceUtil::ShiftAndTraceAttr::PositionData turned;
    turned.rotation = 90.0;  // about the pivot (0, 0): the drawing point (x, y) shows at (-y, x)
    ASSERT_TRUE(AT_ShiftAndTraceUtil::addShiftAndTrace(element)->setPositionFor(key, turned));
    AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(true);
    // The scene points (0, 0), (1, 0), (0, 0.5) are the unshifted drawing points (-0.125, 0.25),
    // (-0.125, -0.25), (0.125, 0.25); the shifted drawing shows there its points turned back by 90
    // degrees, (x, y) -> (y, -x).
    stroke({{50, 40}, {100.5, 40}, {50, 14.75}});
    expectPoints(lastShape(1).points, {{0.25, 0.125}, {-0.25, 0.125}, {0.25, -0.125}});
    AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(false);

    // With Shift and Trace off the shift is not shown, and a stroke lands as without it.
    stroke({{50, 40}, {100.5, 40}});
    expectPoints(lastShape(1).points, {{-0.125, 0.25}, {-0.125, -0.25}});
}

TEST_F(PencilTest, OneUndoStepPerStrokeAndUndoLeavesTheFileAsItWasOpened)
{
    stroke({{50, 40}, {60, 40}, {70, 30}});
    stroke({{20, 20}, {30, 30}});
    EXPECT_EQ(bar()->oglDrawing(1)->shapes().size(), 3u);
    QByteArray const drawn = TUSceneFile::write(*session->scene());

    // What is saved reads back with the strokes.
    QString error;
    std::unique_ptr<TUScene> reread = TUSceneFile::read(drawn, QStringLiteral("drawn.xml"), &error);
    ASSERT_TRUE(reread) << error.toStdString();
    EXPECT_EQ(TUSceneFile::write(*reread), drawn);

    ASSERT_TRUE(commands()->undo());
    EXPECT_EQ(bar()->oglDrawing(1)->shapes().size(), 2u);
    ASSERT_TRUE(commands()->undo());
    EXPECT_EQ(TUSceneFile::write(*session->scene()), original);
    ASSERT_TRUE(commands()->redo());
    ASSERT_TRUE(commands()->redo());
    EXPECT_EQ(TUSceneFile::write(*session->scene()), drawn);
}

TEST_F(PencilTest, WhereTheElementExposesNothingTheStrokeMakesADrawingInTheSameStep)
{
    session->setCurrentFrame(12);
    stroke({{50, 40}, {60, 40}});
    ASSERT_TRUE(bar()->oglDrawing(12).isDrawing());
    EXPECT_EQ(bar()->oglDrawing(12)->celKey().drawing(), QStringLiteral("2"));
    EXPECT_EQ(bar()->oglDrawing(12)->shapes().size(), 1u);
    EXPECT_FALSE(bar()->oglDrawing(13).isDrawing());  // the frames after keep showing nothing
    ASSERT_TRUE(commands()->undo());
    EXPECT_FALSE(commands()->canUndo());
    EXPECT_EQ(TUSceneFile::write(*session->scene()), original);
}

TEST_F(PencilTest, NothingIsDrawnWithoutASelectedElementOrWithoutAMove)
{
    session->getSelection()->set({session->scene()->getRootGroup()->findNode(QStringLiteral("R"))});
    EXPECT_FALSE(view.mousePress({50, 40}));
    view.mouseMove({60, 40});
    EXPECT_FALSE(view.mouseRelease({60, 40}));

    session->getSelection()->set({bar()});
    stroke({{50, 40}, {50, 40}, {50, 40}});  // a click, and moves that stay in place
    EXPECT_FALSE(commands()->canUndo());
    EXPECT_EQ(TUSceneFile::write(*session->scene()), original);
}

TEST_F(PencilTest, TheStrokeUnderWayIsPaintedBeforeTheRelease)
{
    tuPref->setRgbaValue(TO_PencilTool::colorKey(), 0xffff0000);
    tuPref->setDoubleValue(TO_PencilTool::widthKey(), 3.0);
    // A slanted line, so that the outline of the selected drawing's box, which the view draws,
    // crosses it only at its ends.
    view.mousePress({10, 70});
    view.mouseMove({40, 60});
    EXPECT_EQ(view.render().pixelColor(25, 65), QColor(255, 0, 0));
    view.mouseRelease({40, 60});
    EXPECT_EQ(view.render().pixelColor(25, 65), QColor(255, 0, 0));  // now as a shape of the drawing
    ASSERT_TRUE(commands()->undo());
    EXPECT_EQ(view.render().pixelColor(25, 65), QColor(255, 255, 255));
}

TEST(PencilPanel, EditsTheColourAndWidthThatTheToolReads)
{
    tuPref->remove(TO_PencilTool::colorKey());
    tuPref->remove(TO_PencilTool::widthKey());
    TO_PencilTool::addPanelFactory();
    TP_ToolPropertiesReceiver receiver;
    receiver.setCurrentTool(TO_PencilTool::registerTool());
    ASSERT_NE(receiver.currentPanel(), nullptr);
    QWidget *content = receiver.currentPanel()->contentWidget();
    ASSERT_NE(content, nullptr);
    auto *colour = content->findChild<QLineEdit *>(QStringLiteral("pencilColor"));
    auto *width = content->findChild<QDoubleSpinBox *>(QStringLiteral("pencilWidth"));
    ASSERT_TRUE(colour && width);
    EXPECT_EQ(colour->text(), QStringLiteral("#202020"));
    EXPECT_EQ(width->value(), TO_PencilTool::kDefaultWidth);

    colour->setText(QStringLiteral("#c03020"));
    emit colour->editingFinished();
    EXPECT_EQ(TO_PencilTool::color(), QColor(0xc0, 0x30, 0x20));
    colour->setText(QStringLiteral("not a colour"));
    emit colour->editingFinished();
    EXPECT_EQ(TO_PencilTool::color(), QColor(0xc0, 0x30, 0x20));
    EXPECT_EQ(colour->text(), QStringLiteral("#c03020"));  // back to the stored one

    width->setValue(6.5);
    EXPECT_EQ(TO_PencilTool::width(), 6.5);
    tuPref->setDoubleValue(TO_PencilTool::widthKey(), 1000.0);
    EXPECT_EQ(TO_PencilTool::width(), TO_PencilTool::kMaxWidth);  // clamped when read

    TP_ToolPropertiesPanelFactory::clearPanelFactories();
    tuPref->remove(TO_PencilTool::colorKey());
    tuPref->remove(TO_PencilTool::widthKey());
}

} // namespace
