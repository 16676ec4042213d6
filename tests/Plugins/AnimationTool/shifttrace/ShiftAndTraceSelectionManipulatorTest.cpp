// The manipulator over the whole selection: group rotation and scaling about the group pivot, the
// group pivot handle, overrides, the undo step of a drag, and cross-hairs in add cross-hair mode.
// Values are worked out by hand under field x = 1/12 and field y = 1/16 OGL unit.
#include "ShiftAndTraceTestScene.h"

#include "shifttrace/ShiftAndTraceManipulator.h"
#include "shifttrace/ShiftAndTraceSelectionManipulator.h"
#include "shifttrace/ShiftAndTraceTool.h"

namespace {

using AT_ShiftAndTraceUtil::PositionData;
using Handle = ShiftAndTraceManipulatorBase::HandleType_t;
using Element = ShiftAndTraceSelection::SelectionElement;
constexpr double kTol = 1e-9;

// A shift with the pivot at the origin.
PositionData shift(double r, double sx, double sy, double qx, double qy)
{
    return shiftOf(r, 0, 0, sx, sy, qx, qy);
}

GR_StylusPoint at(double x, double y)
{
    return GR_StylusPoint(TestToolContext::pixel(x, y));
}

class GroupManipulator : public ShiftAndTraceScene {
protected:
    void SetUp() override
    {
        ShiftAndTraceScene::SetUp();
        AT_ShiftAndTraceUtil::crossHairList().clear();
    }
    void TearDown() override
    {
        ShiftAndTraceTool::responder()->setShowManipulator(true);
        ShiftAndTraceTool::responder()->setIsAddCrossHairMode(false);
        AT_ShiftAndTraceUtil::crossHairList().clear();
        ShiftAndTraceScene::TearDown();
    }
    // Hand's drawing 1 shifted to OGL (1, 0) and Arm's drawing, both picked at frame 1. The group
    // box is then x -0.5 to 1.3 and y -0.5 to 0.5 (before its 5% margin), centred on (0.4, 0).
    void selectBoth()
    {
        ShiftAndTraceSelection::instance().validate(1);
        AT_ShiftAndTraceUtil::addShiftAndTrace(hand)->setPositionFor(key("Hand", "1"), shift(0, 1, 1, 12, 0));
        commands()->clear();
        selection().add(hand, 1, false);
        selection().add(arm, 1, false);
        group.draw(&view, false);
    }
    void drag(std::initializer_list<GR_StylusPoint> points)
    {
        auto it = points.begin();
        group.onMouseDown(&view, *it);
        for (++it; it != points.end(); ++it)
            group.onMouseMove(&view, {*it});
        group.onMouseUp(&view, *(points.end() - 1));
        group.resetSelectedHandle();
    }
    PositionData of(MO_ElementModule *m, char const *element, char const *drawing)
    {
        return AT_ShiftAndTraceUtil::addShiftAndTrace(m)->positionFor(key(element, drawing));
    }

    TestToolContext view;
    ShiftAndTraceSelectionManipulator group;
};

TEST_F(GroupManipulator, TheGroupPivotIsTheCentreOfTheBoxAroundTheShiftedDrawings)
{
    selectBoth();
    EXPECT_NEAR(group.groupPivot().x, 0.4 * 12, kTol);
    EXPECT_NEAR(group.groupPivot().y, 0.0, kTol);
    EXPECT_NEAR(group.groupBox().width(), 1.8 * 1.1, kTol);
}

TEST_F(GroupManipulator, GroupRotationTurnsEveryDrawingAboutTheGroupPivot)
{
    selectBoth();
    group.setOverride(Handle::HandleRotate);
    drag({at(1.4, 0), at(0.4, 1)});  // a quarter turn about (0.4, 0)
    // Hand's shown pivot (1, 0) goes to (0.4, 0.6); Arm's (0, 0) to (0.4, -0.4).
    expectShift(of(hand, "Hand", "1"), shift(90, 1, 1, 12 - 0.6 * 12, 0.6 * 16));
    expectShift(of(arm, "Arm", "a"), shift(90, 1, 1, 0.4 * 12, -0.4 * 16));
    EXPECT_EQ(commands()->undoCount(), 1);
    EXPECT_EQ(commands()->undoName(), QStringLiteral("Move Shift and Trace"));
    EXPECT_EQ(group.overrideHandle(), Handle::HandleMove);  // an override lasts one press
}

TEST_F(GroupManipulator, GroupScalingScalesAboutTheGroupPivot)
{
    selectBoth();
    group.setOverride(Handle::HandleScale);
    drag({at(1.4, 0), at(2.4, 0)});  // twice as far from (0.4, 0)
    expectShift(of(hand, "Hand", "1"), shift(0, 2, 2, 12 + 0.6 * 12, 0));
    expectShift(of(arm, "Arm", "a"), shift(0, 2, 2, -0.4 * 12, 0));
}

TEST_F(GroupManipulator, AGroupScalingThatStartsOnThePivotDividesByAThousandth)
{
    // One drawing with the manipulator hidden: the group pivot is the origin, exactly.
    selection().add(arm, 1, true);
    ShiftAndTraceTool::responder()->setShowManipulator(false);
    group.setOverride(Handle::HandleScale);
    drag({at(0, 0), at(0.002, 0)});  // 0.002 from the pivot, against 0.001 for the start
    EXPECT_NEAR(of(arm, "Arm", "a").scaleX, 2.0, 1e-6);
    EXPECT_NEAR(of(arm, "Arm", "a").scaleY, 2.0, 1e-6);
}

TEST_F(GroupManipulator, TheGroupPivotHandleMovesOnlyThePivotAndAPlainMoveCarriesIt)
{
    selectBoth();
    group.setSelectedHandleType(Handle::HandlePivot);
    drag({at(0.4, 0), at(0.6, 0.25)});
    EXPECT_NEAR(group.groupPivot().x, 0.6 * 12, kTol);
    EXPECT_NEAR(group.groupPivot().y, 0.25 * 16, kTol);
    expectShift(of(arm, "Arm", "a"), PositionData());
    group.draw(&view, false);  // the same drawings keep the pivot the user placed
    EXPECT_NEAR(group.groupPivot().x, 0.6 * 12, kTol);

    drag({at(0, 0), at(0.5, 0.5)});
    expectShift(of(arm, "Arm", "a"), shift(0, 1, 1, 6, 8));
    expectShift(of(hand, "Hand", "1"), shift(0, 1, 1, 18, 8));
    EXPECT_NEAR(group.groupPivot().x, 1.1 * 12, kTol);
    EXPECT_NEAR(group.groupPivot().y, 0.75 * 16, kTol);

    selection().add(arm, 1, false);  // another set of drawings: the pivot is centred again
    selection().add(hand, 5, false);
    group.draw(&view, false);
    EXPECT_NE(group.groupPivot().x, 1.1 * 12);
}

TEST_F(GroupManipulator, WithOneDrawingAndTheManipulatorHiddenAnOverrideRunsTheGroupMath)
{
    selection().add(hand, 1, true);
    ShiftAndTraceTool::responder()->setShowManipulator(false);
    group.draw(&view, false);
    group.setOverride(Handle::HandleRotate);
    drag({at(1, 0), at(0, 1)});  // about the group pivot as last held: the origin
    expectShift(of(hand, "Hand", "1"), shift(90, 1, 1, 0, 0));

    // Shown, the drawing's own manipulator takes the override: about its own pivot at (0.5, 0).
    ShiftAndTraceTool::responder()->setShowManipulator(true);
    AT_ShiftAndTraceUtil::addShiftAndTrace(hand)->setPositionFor(key("Hand", "1"), PositionData());
    PositionData pivoted;
    pivoted.pivotX = 6;
    AT_ShiftAndTraceUtil::addShiftAndTrace(hand)->setPositionFor(key("Hand", "1"), pivoted);
    group.setOverride(Handle::HandleRotate);
    drag({at(1.5, 0), at(0.5, 1)});
    EXPECT_NEAR(of(hand, "Hand", "1").rotation, 90.0, kTol);
    EXPECT_NEAR(of(hand, "Hand", "1").positionX, 0.0, kTol);
}

TEST_F(GroupManipulator, AddCrossHairModePlacesOneCrossHairUnderTheDrawingsShift)
{
    selection().add(hand, 1, true);
    AT_ShiftAndTraceUtil::addShiftAndTrace(hand)->setPositionFor(key("Hand", "1"), shift(0, 1, 1, 12, 0));
    int const steps = commands()->undoCount();
    ShiftAndTraceTool::responder()->setIsAddCrossHairMode(true);
    group.onMouseDown(&view, at(1.5, 0.25));
    ASSERT_EQ(AT_ShiftAndTraceUtil::crossHairList().size(), 1u);
    EXPECT_NEAR(AT_ShiftAndTraceUtil::crossHairList()[0].x, 6.0, kTol);  // (0.5, 0.25) in the shifted drawing
    EXPECT_NEAR(AT_ShiftAndTraceUtil::crossHairList()[0].y, 4.0, kTol);
    group.onMouseMove(&view, {at(1, 1)});
    group.onMouseUp(&view, at(1, 1));
    EXPECT_NEAR(AT_ShiftAndTraceUtil::crossHairList()[0].x, 0.0, kTol);
    EXPECT_NEAR(AT_ShiftAndTraceUtil::crossHairList()[0].y, 16.0, kTol);
    EXPECT_EQ(commands()->undoCount(), steps);  // cross-hairs are no undo step

    selection().add(arm, 1, false);  // two drawings: nothing on down, move or up
    group.onMouseDown(&view, at(0, 0));
    group.onMouseMove(&view, {at(0.2, 0.2)});
    group.onMouseUp(&view, at(0.2, 0.2));
    ASSERT_EQ(AT_ShiftAndTraceUtil::crossHairList().size(), 1u);
    EXPECT_NEAR(AT_ShiftAndTraceUtil::crossHairList()[0].y, 16.0, kTol);
    expectShift(of(arm, "Arm", "a"), PositionData());
}

TEST_F(GroupManipulator, HandlesComeFromTheElementsFirstThenTheGroup)
{
    selectBoth();
    Element const &first = *selection().elements().begin();
    std::uint32_t const own = first.manipulator().pickingId() + Handle::HandlePivot;
    auto hit = group.scanHits(own, true, {});
    ASSERT_TRUE(dynamic_cast<ShiftAndTraceSelectable const *>(hit.get()));
    EXPECT_EQ(group.selectedHandle(), Handle::HandlePivot);
    hit = group.scanHits(group.pickingId() + Handle::HandleRotate, true, {});
    ASSERT_TRUE(hit);
    EXPECT_EQ(first.manipulator().selectedHandleType(), Handle::HandleMove);  // reset on the way
    EXPECT_EQ(group.selectedHandle(), Handle::HandleRotate);
    group.resetSelectedHandle();
    EXPECT_EQ(group.selectedHandle(), Handle::HandleMove);
}

} // namespace
