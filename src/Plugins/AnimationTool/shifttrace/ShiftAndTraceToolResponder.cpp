#include "shifttrace/ShiftAndTraceToolResponder.h"

#include "shifttrace/ShiftAndTraceTool.h"
#include "shifttrace/ShiftAndTraceToolPanel.h"
#include "shifttrace/ShiftAndTraceToolUtils.h"

namespace ST = AT_ShiftAndTraceUtil;

namespace {

// The preference keys, and their defaults.
QString const kPegPositionKey = QStringLiteral("ShiftAndTracePegPosition");
QString const kShowPegsKey = QStringLiteral("ShiftAndTraceShowPegs");
QString const kShowCrossHairKey = QStringLiteral("ShiftAndTraceShowCrossHair");
QString const kShowManipulatorKey = QStringLiteral("ShiftAndTraceShowManipulator");
QString const kShowOutlineKey = QStringLiteral("ShiftAndTraceShowOutline");

void setMarks(AC_ActionInfo *info, bool enabled, bool checked)
{
    info->setEnabled(enabled);
    info->setChecked(checked);
}

} // namespace

ShiftAndTraceToolResponder::ShiftAndTraceToolResponder()
    : AC_ResponderTemplateObject<QObject>(QStringLiteral("ShiftAndTraceToolResponder"))
{
    initActionManager(PLUG_Services::getActionManager());
}

bool ShiftAndTraceToolResponder::isShowPegs() const
{
    return ST::shiftAndTraceShowPegs();
}

void ShiftAndTraceToolResponder::setShowManipulator(bool show)
{
    if (show != showManipulator_)
        onActionToggleShowManipulator();
}

void ShiftAndTraceToolResponder::setShowOutline(bool show)
{
    if (show != showOutline_)
        onActionToggleShowOutline();
}

void ShiftAndTraceToolResponder::setShowPegs(bool show)
{
    if (show == ST::shiftAndTraceShowPegs())
        return;
    ST::setShiftAndTraceShowPegs(show);
    refreshViews();
}

void ShiftAndTraceToolResponder::setIsAddCrossHairMode(bool on)
{
    if (on == addCrossHairMode_)
        return;
    addCrossHairMode_ = on;
    if (on)
        ST::setShiftAndTraceShowCrossHair(true);
    emit onShiftChange();
}

void ShiftAndTraceToolResponder::setClearShiftActions(std::function<void()> clearCurrent, std::function<void()> clearAll)
{
    clearCurrent_ = std::move(clearCurrent);
    clearAll_ = std::move(clearAll);
}

void ShiftAndTraceToolResponder::refreshViews()
{
    SC_SessionContext *session = PLUG_Services::getSessionContext();
    if (TUSceneChangeManager *changes = session ? session->changeManager() : nullptr) {
        changes->emitSceneChanged();
        changes->emitCurrentFrameChanged();
        changes->notify();
        changes->notifyInteractive();
    }
    if (AC_Manager *actions = PLUG_Services::getActionManager())
        actions->refreshActionStates();
    emit onShiftChange();
}

void ShiftAndTraceToolResponder::readPreferences()
{
    ST::setShiftAndTracePegPosition(static_cast<ST::Position_t>(tuPref->getIntValue(kPegPositionKey, 0)));
    ST::setShiftAndTraceShowPegs(tuPref->getBoolValue(kShowPegsKey, true));
    ST::setShiftAndTraceShowCrossHair(tuPref->getBoolValue(kShowCrossHairKey, true));
    setShowManipulator(tuPref->getBoolValue(kShowManipulatorKey, true));
    setShowOutline(tuPref->getBoolValue(kShowOutlineKey, false));
}

void ShiftAndTraceToolResponder::writePreferences() const
{
    tuPref->setIntValue(kPegPositionKey, ST::shiftAndTracePegPosition());
    tuPref->setBoolValue(kShowPegsKey, ST::shiftAndTraceShowPegs());
    tuPref->setBoolValue(kShowCrossHairKey, ST::shiftAndTraceShowCrossHair());
    tuPref->setBoolValue(kShowManipulatorKey, showManipulator_);
    tuPref->setBoolValue(kShowOutlineKey, showOutline_);
}

void ShiftAndTraceToolResponder::onActionEnableShiftAndTrace()
{
    // No refresh here: views and panels hear the host's onShiftAndTraceEnabledChanged.
    ST::setShiftAndTraceEnabled(!ST::shiftAndTraceEnabled());
}

void ShiftAndTraceToolResponder::onActionEnableShiftAndTraceValidate(AC_ActionInfo *info)
{
    info->setChecked(ST::shiftAndTraceEnabled());
}

void ShiftAndTraceToolResponder::onActionSelectShiftAndTraceTool()
{
    ST::setShiftAndTraceEnabled(true);
    CX_ToolRecord record = CX_Context::GetInstance().data();
    record.toolId = ShiftAndTraceTool::Id;
    CX_Context::GetInstance().SetData(record, nullptr);
    if (AC_Manager *actions = PLUG_Services::getActionManager()) {
        QString const onion = QStringLiteral("onionSkinResponder");
        QString const toggle = QStringLiteral("onActionOnionSkinToggle()");
        bool enabled = false, on = false;
        actions->actionState(onion, toggle, enabled, on);
        if (!on)
            actions->trigger(onion, toggle, true);
    }
    refreshViews();
}

void ShiftAndTraceToolResponder::onActionSelectShiftAndTraceToolValidate(AC_ActionInfo *info)
{
    setMarks(info, true, CX_Context::GetInstance().data().toolId == ShiftAndTraceTool::Id);
}

void ShiftAndTraceToolResponder::onActionToggleShowManipulator()
{
    showManipulator_ = !showManipulator_;
    emit onShiftChange();
    refreshViews();
}

void ShiftAndTraceToolResponder::onActionToggleShowManipulatorValidate(AC_ActionInfo *info)
{
    setMarks(info, ST::shiftAndTraceEnabled(), showManipulator_);
}

void ShiftAndTraceToolResponder::onActionToggleShowPegs()
{
    ST::setShiftAndTraceShowPegs(!ST::shiftAndTraceShowPegs());
    refreshViews();
    refreshViews();
}

void ShiftAndTraceToolResponder::onActionToggleShowPegsValidate(AC_ActionInfo *info)
{
    setMarks(info, ST::shiftAndTraceEnabled(), ST::shiftAndTraceShowPegs());
}

void ShiftAndTraceToolResponder::onActionToggleShowOutline()
{
    showOutline_ = !showOutline_;
    refreshViews();
}

void ShiftAndTraceToolResponder::onActionToggleShowOutlineValidate(AC_ActionInfo *info)
{
    setMarks(info, ST::shiftAndTraceEnabled(), showOutline_);
}

void ShiftAndTraceToolResponder::onActionSetPegPosition(int pos)
{
    if (static_cast<unsigned>(pos) >= static_cast<unsigned>(ST::kPegPositionCount))
        return;
    ST::setShiftAndTracePegPosition(static_cast<ST::Position_t>(pos));
    refreshViews();
}

void ShiftAndTraceToolResponder::onActionShiftAndTraceToolRotateOverride() {}

void ShiftAndTraceToolResponder::onActionShiftAndTraceToolScaleOverride() {}

void ShiftAndTraceToolResponder::onActionShiftAndTraceToolResetCurrentPosition()
{
    if (clearCurrent_)
        clearCurrent_();
}

void ShiftAndTraceToolResponder::onActionShiftAndTraceToolResetAllPositions()
{
    if (clearAll_)
        clearAll_();
}

void ShiftAndTraceToolResponder::onActionResetCurrentShiftPosition()
{
    onActionShiftAndTraceToolResetCurrentPosition();
}

void ShiftAndTraceToolResponder::onActionResetCurrentShiftPositionValidate(AC_ActionInfo *info)
{
    info->setEnabled(ST::shiftAndTraceEnabled() && ShiftAndTraceToolPanel::hasShiftAndTraceDrawingsSelected());
}

void ShiftAndTraceToolResponder::onActionResetAllShiftPositions()
{
    onActionShiftAndTraceToolResetAllPositions();
}

void ShiftAndTraceToolResponder::onActionResetAllShiftPositionsValidate(AC_ActionInfo *info)
{
    info->setEnabled(ST::shiftAndTraceEnabled() && ShiftAndTraceToolPanel::hasShiftAndTraceDrawingsSelected());
}

void ShiftAndTraceToolResponder::onActionShowCrossHair()
{
    ST::setShiftAndTraceShowCrossHair(!ST::shiftAndTraceShowCrossHair());
    refreshViews();
}

void ShiftAndTraceToolResponder::onActionShowCrossHairValidate(AC_ActionInfo *info)
{
    setMarks(info, ST::shiftAndTraceEnabled(), ST::shiftAndTraceShowCrossHair());
}

void ShiftAndTraceToolResponder::onActionAddCrossHairMode()
{
    addCrossHairMode_ = !addCrossHairMode_;
    if (addCrossHairMode_)
        ST::setShiftAndTraceShowCrossHair(true);
    emit onShiftChange();
    refreshViews();
}

void ShiftAndTraceToolResponder::onActionAddCrossHairModeValidate(AC_ActionInfo *info)
{
    setMarks(info, ST::shiftAndTraceEnabled(), addCrossHairMode_);
}

void ShiftAndTraceToolResponder::onActionRemoveCrossHair()
{
    ST::crossHairList().clear();
    refreshViews();
}

void ShiftAndTraceToolResponder::onActionRemoveCrossHairValidate(AC_ActionInfo *info)
{
    info->setEnabled(ST::shiftAndTraceEnabled() && !ST::crossHairList().empty());
}
