// The tool: what a press selects (pegs of any frame included), the drag threshold, key nudges and
// overrides, cursors; and the responder's actions, validates and preferences.
#include "ShiftAndTraceTestScene.h"

#include "shifttrace/ShiftAndTraceManipulator.h"
#include "shifttrace/ShiftAndTraceSelectionManipulator.h"
#include "shifttrace/ShiftAndTraceTool.h"

#include <QCoreApplication>

namespace {

using AT_ShiftAndTraceUtil::PositionData;
using Handle = ShiftAndTraceManipulatorBase::HandleType_t;
namespace ST = AT_ShiftAndTraceUtil;
constexpr double kTol = 1e-9;

class Tool : public ShiftAndTraceScene {
protected:
    void SetUp() override
    {
        ShiftAndTraceScene::SetUp();
        actions.shortcutManager()->loadShortcuts(QStringLiteral(ANIM_SOURCE_DIR "/resources/shortcuts.xml"));
        actions.shortcutManager()->applyShortcutSet(actions.shortcutManager()->currentShortcutSetName());
        PLUG_Services::setActionManager(&actions);
        ST::setShiftAndTraceEnabled(true);
        ShiftAndTraceTool::registerPickingHandleGenerator();
        tool = std::make_unique<ShiftAndTraceTool>(&view);
    }
    void TearDown() override
    {
        tool.reset();
        BUIAPP_Application::instance().releaseAllKeys();
        ShiftAndTraceTool::unregisterPickingHandleGenerator();
        ST::setShiftAndTraceEnabled(false);
        ST::crossHairList().clear();
        ShiftAndTraceTool::responder()->setIsAddCrossHairMode(false);
        PLUG_Services::setActionManager(nullptr);
        ShiftAndTraceScene::TearDown();
    }
    PositionData handShift() { return ST::addShiftAndTrace(hand)->positionFor(key("Hand", "1")); }
    void holdKeyOf(char const *action)
    {
        BUIAPP_Application::instance().setKeyPressed(actions.shortcutKeyCode(QLatin1String(action)) & 0x1ffffff, true);
    }

    AC_Manager actions;
    TestToolContext view;
    std::unique_ptr<ShiftAndTraceTool> tool;
};

TEST_F(Tool, MotionOfExactlyFivePixelsStartsNothing)
{
    selection().add(hand, 1, true);
    tool->onMouseDown(GR_StylusPoint({200, 150}));
    tool->onMouseMove({GR_StylusPoint({203, 154})});  // 5.0 from the press
    EXPECT_FALSE(ST::addShiftAndTrace(hand)->hasPositionFor(key("Hand", "1")));
    EXPECT_EQ(view.dragSteps, 0);
    tool->onMouseMove({GR_StylusPoint({206, 150})});
    tool->onMouseUp(GR_StylusPoint({206, 150}));
    EXPECT_NEAR(handShift().positionX, 6.0 / 120 * 12, kTol);  // the whole motion from the press
    EXPECT_EQ(commands()->undoName(), QStringLiteral("Move Shift and Trace"));
}

// A peg of frame 1's drawing, shown while the view is at frame 5, selects that drawing at frame 1;
// a drag then turns it about its centre peg, (0, -10) field units.
TEST_F(Tool, APegOfAnotherFrameSelectsItsDrawingAndTurnsItAboutTheCentrePeg)
{
    view.frame = 5;
    selection().validate(5);  // as the paint at frame 5 does
    std::uint32_t const pegId =
        SLB_PickEngine::colorToId(ST::shiftAndTracePickingHandleGenerator()->handleColor(hand, key("Hand", "1"), 1));
    view.onPick = [&](bool commit) {
        EXPECT_EQ(tool->oglScanHit(pegId, commit), Handle::HandlePeg);
        return UT_SharedPtr<SLB_SelectableDescriptor>();
    };
    tool->onMouseDown(GR_StylusPoint(TestToolContext::pixel(1, -0.625)));
    ASSERT_TRUE(selection().isSelected(hand, key("Hand", "1")));
    EXPECT_EQ(selection().find(hand, key("Hand", "1"))->frame, 1);
    tool->onMouseMove({GR_StylusPoint(TestToolContext::pixel(0, 0.375))});
    tool->onMouseUp(GR_StylusPoint(TestToolContext::pixel(0, 0.375)));
    PositionData const d = handShift();
    EXPECT_NEAR(d.rotation, 90.0, kTol);
    EXPECT_NEAR(d.positionX, -0.625 * 12, kTol);  // the shown pivot (0, 0) goes to (-0.625, -0.625)
    EXPECT_NEAR(d.positionY, -0.625 * 16, kTol);
    selection().validate(5);
    EXPECT_TRUE(selection().isSelected(hand, key("Hand", "1")));
}

TEST_F(Tool, APlainClickDragsTheSelectionAndModifiersChangeIt)
{
    selection().add(hand, 1, true);
    view.onPick = [&](bool) { return UT_SharedPtr<SLB_SelectableDescriptor>(UT_MakeShared<SLB_ModuleDescriptor>(arm)); };
    tool->onMouseDown(GR_StylusPoint({200, 150}));
    tool->onMouseUp(GR_StylusPoint({200, 150}));
    EXPECT_FALSE(selection().isSelected(arm, key("Arm", "a")));
    view.extend = true;  // toggles the other drawing in
    tool->onMouseDown(GR_StylusPoint({200, 150}));
    tool->onMouseUp(GR_StylusPoint({200, 150}));
    EXPECT_EQ(selection().elements().size(), 2u);
    view.extend = false;
    view.keep = true;  // replaces
    tool->onMouseDown(GR_StylusPoint({200, 150}));
    tool->onMouseUp(GR_StylusPoint({200, 150}));
    EXPECT_EQ(selection().elements().size(), 1u);
    EXPECT_TRUE(selection().isSelected(arm, key("Arm", "a")));

    view.onPick = nullptr;  // empty space: with the second modifier the node selection is cleared
    tool->onMouseDown(GR_StylusPoint({0, 0}));
    tool->onMouseUp(GR_StylusPoint({0, 0}));
    EXPECT_TRUE(nodeSelection()->nodes().empty());
    view.keep = false;
    SL_SelectionUtil::addToSelection(nodeSelection(), hand);
    tool->onMouseDown(GR_StylusPoint({0, 0}));
    tool->onMouseUp(GR_StylusPoint({0, 0}));
    EXPECT_TRUE(hand->selected());
}

TEST_F(Tool, ArrowKeysNudgeOnePixelOrTenWithExtendAndNeverConsumeTheKey)
{
    selection().add(hand, 1, true);
    EXPECT_FALSE(tool->onKeyDown(Qt::Key_Right, false));
    EXPECT_NEAR(handShift().positionX, 1.0 / 120 * 12, kTol);
    view.extend = true;
    EXPECT_FALSE(tool->onKeyDown(Qt::Key_Up, false));
    EXPECT_NEAR(handShift().positionY, 10.0 / 120 * 16, kTol);
    EXPECT_EQ(commands()->undoCount(), 2);
    EXPECT_EQ(commands()->undoName(), QStringLiteral("Move Shift and Trace"));
    EXPECT_FALSE(tool->onKeyDown(Qt::Key_A, false));
    EXPECT_EQ(commands()->undoCount(), 2);
}

TEST_F(Tool, UnderTheRotateOverrideUpAndDownTurnOppositeWays)
{
    selection().add(hand, 1, true);
    holdKeyOf("SHIFT_AND_TRACE_TOOL_ROTATE_OVERRIDE");
    holdKeyOf("SHIFT_AND_TRACE_TOOL_SCALE_OVERRIDE");  // both down: rotate wins
    tool->onKeyDown(Qt::Key_Up, false);
    double const up = handShift().rotation;
    EXPECT_GT(up, 0.0);  // counter-clockwise, where a move nudge would go up
    EXPECT_EQ(handShift().positionX, 0.0);
    tool->manipulator().resetSelectedHandle();  // as the next real release does
    tool->onKeyDown(Qt::Key_Down, false);
    EXPECT_NEAR(handShift().rotation, 0.0, 1e-3);
    EXPECT_EQ(handShift().scaleX, 1.0);
}

TEST_F(Tool, AToolKeyHeldTurnsShiftAndTraceOn)
{
    ST::setShiftAndTraceEnabled(false);
    EXPECT_FALSE(tool->shouldBeEnabledBasedOnKeyPressed());
    EXPECT_FALSE(ST::shiftAndTraceEnabled());
    holdKeyOf("SHIFT_AND_TRACE_TOOL_SCALE_OVERRIDE");
    EXPECT_TRUE(tool->shouldBeEnabledBasedOnKeyPressed());
    EXPECT_TRUE(ST::shiftAndTraceEnabled());
}

TEST_F(Tool, CursorsFollowTheSituation)
{
    EXPECT_EQ(tool->getCursor({10, 10}), TO_Enums::Arrow);
    selection().add(hand, 1, true);
    EXPECT_EQ(tool->getCursor({10, 10}), TO_Enums::SizeAll);
    ShiftAndTraceTool::responder()->setIsAddCrossHairMode(true);
    int const picks = view.picks;
    EXPECT_EQ(tool->getCursor({10, 10}), TO_Enums::Crosshair);
    EXPECT_EQ(view.picks, picks);  // no pick in add cross-hair mode
    selection().add(arm, 1, false);
    EXPECT_EQ(tool->getCursor({10, 10}), TO_Enums::Forbidden);
    ST::setShiftAndTraceEnabled(false);
    EXPECT_EQ(tool->getCursor({10, 10}), TO_Enums::Forbidden);
}

TEST_F(Tool, InTheDrawingViewTheToolWaitsForItsPreference)
{
    view.kind = TO_AbstractToolContext::DrawingView;
    bool const allowed = PR_CachedPreferences::_HasNewShiftandTraceInDrawingView;
    PR_CachedPreferences::_HasNewShiftandTraceInDrawingView = false;
    EXPECT_FALSE(tool->onMouseDown(GR_StylusPoint({200, 150})));
    EXPECT_EQ(tool->getCursor({10, 10}), TO_Enums::Forbidden);
    PR_CachedPreferences::_HasNewShiftandTraceInDrawingView = true;
    EXPECT_TRUE(tool->onMouseDown(GR_StylusPoint({200, 150})));
    tool->onMouseUp(GR_StylusPoint({200, 150}));
    PR_CachedPreferences::_HasNewShiftandTraceInDrawingView = allowed;
}

TEST_F(Tool, PolishRegistersThePegGeneratorAndUnpolishWritesThePreferencesBack)
{
    ShiftAndTraceTool::unregisterPickingHandleGenerator();
    ShiftAndTraceTool::onPolish();
    EXPECT_NE(ST::shiftAndTracePickingHandleGenerator(), nullptr);
    auto *r = ShiftAndTraceTool::responder();
    r->onActionToggleShowOutline();
    r->onActionSetPegPosition(2);
    ShiftAndTraceTool::onUnpolish();
    EXPECT_EQ(ST::shiftAndTracePickingHandleGenerator(), nullptr);
    EXPECT_TRUE(tuPref->getBoolValue(QStringLiteral("ShiftAndTraceShowOutline"), false));
    EXPECT_EQ(tuPref->getIntValue(QStringLiteral("ShiftAndTracePegPosition"), 0), 2);

    r->onActionToggleShowOutline();
    r->onActionSetPegPosition(0);
    for (char const *k : {"ShiftAndTraceShowOutline", "ShiftAndTracePegPosition", "ShiftAndTraceShowPegs",
                          "ShiftAndTraceShowCrossHair", "ShiftAndTraceShowManipulator"})
        tuPref->remove(QLatin1String(k));
}

// ---- the responder ----

using Responder = Tool;

bool enabledMark(void (ShiftAndTraceToolResponder::*validate)(AC_ActionInfo *), bool *checked = nullptr)
{
    AC_ActionInfo info(QStringLiteral("slot"));
    info.setEnabled(true);
    (ShiftAndTraceTool::responder()->*validate)(&info);
    if (checked)
        *checked = info.isChecked();
    return info.isEnabled();
}

TEST_F(Responder, PegPositionsOutsideTheFourAreIgnored)
{
    auto *r = ShiftAndTraceTool::responder();
    r->onActionSetPegPosition(2);
    EXPECT_EQ(ST::shiftAndTracePegPosition(), 2);
    r->onActionSetPegPosition(4);
    r->onActionSetPegPosition(-1);
    EXPECT_EQ(ST::shiftAndTracePegPosition(), 2);
    r->onActionSetPegPosition(0);
}

TEST_F(Responder, AddCrossHairModeTurnsShowCrossHairOnButLeavingItDoesNotTurnItOff)
{
    auto *r = ShiftAndTraceTool::responder();
    ST::setShiftAndTraceShowCrossHair(false);
    r->onActionAddCrossHairMode();
    EXPECT_TRUE(r->isAddCrossHairMode());
    EXPECT_TRUE(ST::shiftAndTraceShowCrossHair());
    r->onActionAddCrossHairMode();
    EXPECT_FALSE(r->isAddCrossHairMode());
    EXPECT_TRUE(ST::shiftAndTraceShowCrossHair());
}

TEST_F(Responder, SelectingTheToolTurnsShiftAndTraceOn)
{
    ST::setShiftAndTraceEnabled(false);
    ShiftAndTraceTool::responder()->onActionSelectShiftAndTraceTool();
    EXPECT_TRUE(ST::shiftAndTraceEnabled());
    EXPECT_EQ(CX_Context::GetInstance().data().toolId, ShiftAndTraceTool::Id);
    bool checked = false;
    EXPECT_TRUE(enabledMark(&ShiftAndTraceToolResponder::onActionSelectShiftAndTraceToolValidate, &checked));
    EXPECT_TRUE(checked);
}

TEST_F(Responder, ValidatesFollowTheEnabledStateTheCrossHairsAndTheSelection)
{
    using R = ShiftAndTraceToolResponder;
    ST::crossHairList().clear();
    EXPECT_FALSE(enabledMark(&R::onActionRemoveCrossHairValidate));  // no cross-hair
    ST::crossHairList().push_back({1, 1});
    EXPECT_TRUE(enabledMark(&R::onActionRemoveCrossHairValidate));
    EXPECT_FALSE(enabledMark(&R::onActionResetAllShiftPositionsValidate));  // nothing selected
    SL_SelectionUtil::addToSelection(nodeSelection(), arm);  // unshifted, still enough
    EXPECT_TRUE(enabledMark(&R::onActionResetAllShiftPositionsValidate));
    EXPECT_TRUE(enabledMark(&R::onActionResetCurrentShiftPositionValidate));
    bool checked = false;
    EXPECT_TRUE(enabledMark(&R::onActionToggleShowManipulatorValidate, &checked));
    EXPECT_TRUE(checked);

    ST::setShiftAndTraceEnabled(false);
    for (auto validate : {&R::onActionRemoveCrossHairValidate, &R::onActionResetAllShiftPositionsValidate,
                          &R::onActionResetCurrentShiftPositionValidate, &R::onActionToggleShowManipulatorValidate,
                          &R::onActionToggleShowPegsValidate, &R::onActionToggleShowOutlineValidate,
                          &R::onActionShowCrossHairValidate, &R::onActionAddCrossHairModeValidate})
        EXPECT_FALSE(enabledMark(validate));
    // The enable action's own mark is left as it was; it is checked by the state.
    EXPECT_TRUE(enabledMark(&R::onActionEnableShiftAndTraceValidate, &checked));
    EXPECT_FALSE(checked);

    ShiftAndTraceTool::responder()->onActionRemoveCrossHair();
    EXPECT_TRUE(ST::crossHairList().empty());
}

TEST_F(Responder, PreferencesAreReadThroughTheTogglesAndWrittenBack)
{
    auto *r = ShiftAndTraceTool::responder();
    int refreshes = 0;
    auto connection = QObject::connect(r, &ShiftAndTraceToolResponder::onShiftChange, [&refreshes] { ++refreshes; });
    tuPref->setBoolValue(QStringLiteral("ShiftAndTraceShowOutline"), true);
    tuPref->setIntValue(QStringLiteral("ShiftAndTracePegPosition"), 3);
    tuPref->setBoolValue(QStringLiteral("ShiftAndTraceShowPegs"), false);
    r->readPreferences();
    EXPECT_TRUE(r->isShowOutline());
    EXPECT_GT(refreshes, 0);  // through the toggle, which refreshes
    EXPECT_EQ(ST::shiftAndTracePegPosition(), 3);
    EXPECT_FALSE(ST::shiftAndTraceShowPegs());

    r->onActionToggleShowOutline();
    r->onActionSetPegPosition(1);
    r->writePreferences();
    EXPECT_FALSE(tuPref->getBoolValue(QStringLiteral("ShiftAndTraceShowOutline"), true));
    EXPECT_EQ(tuPref->getIntValue(QStringLiteral("ShiftAndTracePegPosition"), -1), 1);
    QObject::disconnect(connection);
    for (char const *k : {"ShiftAndTraceShowOutline", "ShiftAndTracePegPosition", "ShiftAndTraceShowPegs",
                          "ShiftAndTraceShowCrossHair", "ShiftAndTraceShowManipulator"})
        tuPref->remove(QLatin1String(k));
    r->readPreferences();
}

} // namespace
