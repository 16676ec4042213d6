// The manipulator of one drawing: each handle's arithmetic on the stored shift, worked out by hand
// under metrics where field x (1/12) and field y (1/16) differ, and the shift kept finite under
// degenerate input.
#include "ShiftAndTraceTestScene.h"

#include "shifttrace/ShiftAndTraceManipulator.h"
#include "shifttrace/ShiftAndTracePositionMath.h"
#include "shifttrace/ShiftAndTraceTool.h"

#include <cmath>

namespace {

using AT_ShiftAndTraceUtil::PositionData;
using Handle = ShiftAndTraceManipulatorBase::HandleType_t;
constexpr double kTol = 1e-9;

PositionData shift(double r, double px, double py, double sx, double sy, double qx, double qy)
{
    return shiftOf(r, px, py, sx, sy, qx, qy);
}

class Manipulator : public ShiftAndTraceScene {
protected:
    // Presses the handle at a scene point, moves through the others and releases at the last.
    void drag(Handle handle, std::initializer_list<Math::Point2d> scenePoints)
    {
        ShiftAndTraceManipulator &m = manipulatorOf();
        m.setSelectedHandleType(handle);
        auto it = scenePoints.begin();
        m.onMouseDown(&view, GR_StylusPoint(TestToolContext::pixel(it->x, it->y)));
        for (++it; it != scenePoints.end(); ++it)
            m.onMouseMove(&view, {GR_StylusPoint(TestToolContext::pixel(it->x, it->y))});
        Math::Point2d const last = *(scenePoints.end() - 1);
        m.onMouseUp(&view, GR_StylusPoint(TestToolContext::pixel(last.x, last.y)));
    }
    ShiftAndTraceManipulator &manipulatorOf()
    {
        if (!manipulator)
            manipulator = std::make_unique<ShiftAndTraceManipulator>(hand, 1);
        return *manipulator;
    }
    PositionData stored() { return AT_ShiftAndTraceUtil::addShiftAndTrace(hand)->positionFor(key("Hand", "1")); }
    void store(PositionData const &d) { AT_ShiftAndTraceUtil::addShiftAndTrace(hand)->setPositionFor(key("Hand", "1"), d); }

    TestToolContext view;
    std::unique_ptr<ShiftAndTraceManipulator> manipulator;
};

TEST_F(Manipulator, MoveAddsThePointerMotionInFieldUnitsOfEachAxis)
{
    drag(Handle::HandleMove, {{0, 0}, {0.1, 0.05}, {0.2, 0.2}});
    expectShift(stored(), shift(0, 0, 0, 1, 1, 0.2 * 12, 0.2 * 16));
}

TEST_F(Manipulator, RotateTurnsAboutThePivotByTheAngleSwept)
{
    store(shift(0, 12, 0, 1, 1, 0, 0));  // pivot at OGL (1, 0)
    drag(Handle::HandleRotate, {{2, 0}, {1, 1}});
    expectShift(stored(), shift(90, 12, 0, 1, 1, 0, 0));
}

TEST_F(Manipulator, RotateStepOntoThePivotChangesNothingButMovesOn)
{
    drag(Handle::HandleRotate, {{1, 0}, {0, 0}, {-1, 0}});
    // (1, 0) -> pivot: no step; the pivot -> (-1, 0): no step either, since the last point moved.
    expectShift(stored(), PositionData());
}

TEST_F(Manipulator, ScaleMultipliesBothScalesByTheRatioOfDistancesToTheShownPivot)
{
    store(shift(0, 6, 0, 1, 2, 0, 8));  // pivot + position at OGL (0.5, 0.5)
    drag(Handle::HandleScale, {{1.0, 0.5}, {2.0, 0.5}});
    expectShift(stored(), shift(0, 6, 0, 3, 6, 0, 8));
}

TEST_F(Manipulator, ScaleThatStartsOnThePivotDividesByOne)
{
    drag(Handle::HandleScale, {{0, 0}, {3.0 / 120, 4.0 / 120}});  // 5 pixels from the pivot
    expectShift(stored(), shift(0, 0, 0, 5, 5, 0, 0));
}

TEST_F(Manipulator, MovingThePivotLeavesTheImageInPlace)
{
    store(shift(90, 0, 0, 1, 1, 0, 0));
    PositionData const before = stored();
    drag(Handle::HandlePivot, {{0, 0}, {0.2, 0}});
    // The pointer moved (0.2, 0) in the world, so (0, -0.2) in the drawing's turned frame: the
    // pivot moves by (0, -3.2) field units and the position makes up (0.2, 0.2) OGL.
    expectShift(stored(), shift(90, 0, -3.2, 1, 1, 2.4, 3.2));
    SC_SceneMetrics const &metrics = hand->sceneMetrics();
    for (Math::Point3d const &p : {Math::Point3d(0, 0, 0), Math::Point3d(1, 2, 0)}) {
        Math::Point3d const a = AT_ShiftAndTraceUtil::offsetMatrix(before, metrics) * p;
        Math::Point3d const b = AT_ShiftAndTraceUtil::offsetMatrix(stored(), metrics) * p;
        EXPECT_NEAR(a.x, b.x, kTol);
        EXPECT_NEAR(a.y, b.y, kTol);
    }
}

TEST_F(Manipulator, AClickWithoutMotionWritesNothing)
{
    for (Handle handle : {Handle::HandleMove, Handle::HandleScale, Handle::HandleRotate, Handle::HandlePivot}) {
        drag(handle, {{0.3, 0.3}});
        EXPECT_FALSE(AT_ShiftAndTraceUtil::addShiftAndTrace(hand)->hasPositionFor(key("Hand", "1")));
    }
    EXPECT_EQ(commands()->undoCount(), 0);
}

TEST_F(Manipulator, EveryStepButThePegsTellsTheResponder)
{
    int changes = 0;
    QObject::connect(ShiftAndTraceTool::responder(), &ShiftAndTraceToolResponder::onShiftChange,
                     [&changes] { ++changes; });
    drag(Handle::HandleMove, {{0, 0}, {0.1, 0}, {0.2, 0}});
    EXPECT_EQ(changes, 3);  // two moves and the release
    // A quarter turn about the centre peg, moved to (0.2, -0.625) by the drag above.
    drag(Handle::HandlePeg, {{0.7, -0.625}, {0.2, -0.125}});
    EXPECT_EQ(changes, 3);
    EXPECT_NEAR(stored().rotation, 90.0, kTol);
    QObject::disconnect(ShiftAndTraceTool::responder(), &ShiftAndTraceToolResponder::onShiftChange, nullptr, nullptr);
}

TEST_F(Manipulator, ApplyTransformSplitsATransformIntoPositionRotationAndScale)
{
    store(shift(0, 12, 16, 1, 1, 12, 0));  // shown pivot at OGL (2, 1)
    Math::Matrix4x4 move;
    move.translate(0.5, 0.25);
    manipulatorOf().applyTransform(&view, move);
    expectShift(stored(), shift(0, 12, 16, 1, 1, 18, 4));

    store(shift(0, 12, 16, 1, 1, 12, 0));
    Math::Matrix4x4 turn;
    turn.translate(2, 1).rotateDegrees(30).translate(-2, -1);
    manipulatorOf().applyTransform(&view, turn);
    expectShift(stored(), shift(30, 12, 16, 1, 1, 12, 0));

    store(shift(0, 12, 16, 1, 1, 12, 0));
    Math::Matrix4x4 grow;
    grow.translate(2, 1).scale(1.5, 1.5).translate(-2, -1);
    manipulatorOf().applyTransform(&view, grow);
    expectShift(stored(), shift(0, 12, 16, 1.5, 1.5, 12, 0));
}

TEST_F(Manipulator, WithoutAModuleNothingHappens)
{
    ShiftAndTraceManipulator none(nullptr, 1);
    none.onMouseDown(&view, GR_StylusPoint(TestToolContext::pixel(0, 0)));
    none.onMouseMove(&view, {GR_StylusPoint(TestToolContext::pixel(1, 1))});
    none.onMouseUp(&view, GR_StylusPoint(TestToolContext::pixel(1, 1)));
    none.applyTransform(&view, Math::Matrix4x4().translate(1, 1));
    none.draw(&view, false, true);
    EXPECT_FALSE(none.currentCelKey().isValid());
    EXPECT_EQ(commands()->undoCount(), 0);
    EXPECT_FALSE(none.onMouseMove(&view, {}));
}

TEST_F(Manipulator, BoundsOfADrawingWithoutContentAndOfAFlatOne)
{
    ShiftAndTraceManipulator empty(hand, 9);  // nothing exposed at frame 9
    Math::Box2d box = empty.drawingBounds();
    EXPECT_DOUBLE_EQ(box.width(), 0.5);
    EXPECT_DOUBLE_EQ(box.min().x, -0.25);

    OC_VectorShape line;
    line.points = {{0, 1}, {2, 1}};
    hand->addDrawing(QStringLiteral("flat"), {line});
    hand->setExposure(13, QStringLiteral("flat"));
    box = ShiftAndTraceManipulator(hand, 13).drawingBounds();
    EXPECT_DOUBLE_EQ(box.width(), 2.5);
    EXPECT_DOUBLE_EQ(box.height(), 0.5);
}

// Degenerate input keeps the shift finite: what the tool does instead of dividing by zero or
// taking the root of a negative number.
TEST_F(Manipulator, ScaleDraggedToNothingStopsAtTheSmallestScale)
{
    drag(Handle::HandleScale, {{0.5, 0}, {1e-9, 0}, {1e-12, 0}});
    PositionData const d = stored();
    EXPECT_DOUBLE_EQ(d.scaleX, ShiftAndTraceToolUtils::kMinScale);
    EXPECT_DOUBLE_EQ(d.scaleY, ShiftAndTraceToolUtils::kMinScale);
    drag(Handle::HandleScale, {{1e-12, 0}, {0.5, 0}});  // and it can be dragged back
    EXPECT_GT(stored().scaleX, ShiftAndTraceToolUtils::kMinScale);
}

struct DegenerateTransform {
    char const *name;
    Math::Matrix2x3 t;
    bool applied;
};

class PlaneTransform : public ::testing::TestWithParam<DegenerateTransform> {};

TEST_P(PlaneTransform, KeepsTheShiftFinite)
{
    SC_SceneMetrics metrics;
    PositionData d = shift(10, 1, 2, 1, 1, 3, 4);
    PositionData const before = d;
    EXPECT_EQ(ShiftAndTraceToolUtils::applyPlaneTransform(d, GetParam().t, metrics), GetParam().applied);
    for (double v : {d.rotation, d.pivotX, d.pivotY, d.scaleX, d.scaleY, d.positionX, d.positionY})
        EXPECT_TRUE(std::isfinite(v));
    if (!GetParam().applied) {
        EXPECT_EQ(d, before);
    }
    EXPECT_TRUE(d.isStorable());
}

double const kInf = std::numeric_limits<double>::infinity();
double const kNaN = std::numeric_limits<double>::quiet_NaN();

INSTANTIATE_TEST_SUITE_P(
    Degenerate, PlaneTransform,
    ::testing::Values(DegenerateTransform{"Mirror", Math::Matrix2x3(-1, 0, 0, 0, 1, 0), true},
                      DegenerateTransform{"ScaleToZero", Math::Matrix2x3(0, 0, 0, 0, 0, 0), false},
                      DegenerateTransform{"Flattened", Math::Matrix2x3(1, 0, 0, 0, 0, 0), false},
                      DegenerateTransform{"Huge", Math::Matrix2x3(1e100, 0, 0, 0, 1e100, 0), false},
                      DegenerateTransform{"Overflow", Math::Matrix2x3(1e200, 0, 0, 0, 1e200, 0), false},
                      DegenerateTransform{"FarAway", Math::Matrix2x3(1, 0, kInf, 0, 1, 0), false},
                      DegenerateTransform{"NotFinite", Math::Matrix2x3(kNaN, 0, 0, 0, 1, 0), false},
                      DegenerateTransform{"Infinite", Math::Matrix2x3(kInf, 0, 0, 0, kInf, 0), false}),
    [](::testing::TestParamInfo<DegenerateTransform> const &info) { return std::string(info.param.name); });

TEST(PositionMath, ScaleByRefusesWhatCannotBeUndone)
{
    PositionData d;
    EXPECT_FALSE(ShiftAndTraceToolUtils::scaleBy(d, 0.0));
    EXPECT_FALSE(ShiftAndTraceToolUtils::scaleBy(d, -2.0));
    EXPECT_FALSE(ShiftAndTraceToolUtils::scaleBy(d, kNaN));
    d.scaleX = 0.0;  // stored by other means: no ratio brings it back
    EXPECT_FALSE(ShiftAndTraceToolUtils::scaleBy(d, 2.0));
    EXPECT_EQ(d.scaleY, 1.0);
    PositionData mirrored;
    mirrored.scaleX = -2.0;
    EXPECT_TRUE(ShiftAndTraceToolUtils::scaleBy(mirrored, 1e9));
    EXPECT_DOUBLE_EQ(mirrored.scaleX, -ShiftAndTraceToolUtils::kMaxScale);
    EXPECT_DOUBLE_EQ(mirrored.scaleY, ShiftAndTraceToolUtils::kMaxScale / 2.0);
}

TEST(PositionMath, RotationStepIsSignedAndRefusesZeroVectors)
{
    double degrees = 7.0;
    EXPECT_FALSE(ShiftAndTraceToolUtils::rotationStepDegrees({0, 0}, {1, 0}, degrees));
    EXPECT_EQ(degrees, 7.0);
    ASSERT_TRUE(ShiftAndTraceToolUtils::rotationStepDegrees({2, 0}, {0, -3}, degrees));
    EXPECT_NEAR(degrees, -90.0, kTol);
    ASSERT_TRUE(ShiftAndTraceToolUtils::rotationStepDegrees({1, 1}, {-1, 1}, degrees));
    EXPECT_NEAR(degrees, 90.0, kTol);
}

} // namespace
