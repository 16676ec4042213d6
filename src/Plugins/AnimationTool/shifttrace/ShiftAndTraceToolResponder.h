// The actions of the Shift and Trace tool, and the display switches the plug-in owns.
//
// Menu entries, tool bar buttons and shortcuts reach the responder by its identity
// "ShiftAndTraceToolResponder" and a slot name; an action's enabled and checked marks come from the
// slot's twin with "Validate" added. The responder keeps show manipulator, show outline and the add
// cross-hair mode; every other switch (enabled, show pegs, show cross-hair, peg position, the
// cross-hairs) lives in the host (AT_ShiftAndTraceUtil). One instance lives from library load to
// process exit: ShiftAndTraceTool::responder().
#pragma once

#include "host/HostAPI.h"

#include <functional>

class ShiftAndTraceToolResponder : public AC_ResponderTemplateObject<QObject> {
    Q_OBJECT
public:
    // Registers with the action manager the host offers at the time (none is also fine).
    ShiftAndTraceToolResponder();

    AC_Responder *parentResponder() override { return nullptr; }

    bool isShowManipulator() const { return showManipulator_; }
    bool isShowOutline() const { return showOutline_; }
    bool isAddCrossHairMode() const { return addCrossHairMode_; }
    bool isShowPegs() const;
    // Each goes through the toggle action when the value differs.
    void setShowManipulator(bool show);
    void setShowOutline(bool show);
    void setShowPegs(bool show);
    void setIsAddCrossHairMode(bool on);

    // What the two reset actions run: the tool's panel installs its clearing of the current and of
    // all shifts (each one undo step). Until it does, the actions do nothing.
    void setClearShiftActions(std::function<void()> clearCurrent, std::function<void()> clearAll);

    // Tells the scene's listeners and the views that the display changed, refreshes the action
    // marks and emits onShiftChange.
    void refreshViews();
    void emitOnShiftChange() { emit onShiftChange(); }

    // The five preferences: read into the host's switches and this responder, and written back.
    void readPreferences();
    void writePreferences() const;

signals:
    // A shift, the selection or a display switch changed: panels refresh.
    void onShiftChange();

public slots:
    void onActionEnableShiftAndTrace();
    void onActionEnableShiftAndTraceValidate(AC_ActionInfo *info);
    // Turns Shift and Trace and onion skin on, and makes the tool the current one.
    void onActionSelectShiftAndTraceTool();
    void onActionSelectShiftAndTraceToolValidate(AC_ActionInfo *info);
    void onActionToggleShowManipulator();
    void onActionToggleShowManipulatorValidate(AC_ActionInfo *info);
    void onActionToggleShowPegs();
    void onActionToggleShowPegsValidate(AC_ActionInfo *info);
    void onActionToggleShowOutline();
    void onActionToggleShowOutlineValidate(AC_ActionInfo *info);
    // Values outside 0 to 3 are ignored.
    void onActionSetPegPosition(int pos);
    // Nothing: these exist so that keys can be bound to them; the tool polls those keys.
    void onActionShiftAndTraceToolRotateOverride();
    void onActionShiftAndTraceToolScaleOverride();
    void onActionShiftAndTraceToolResetCurrentPosition();
    void onActionShiftAndTraceToolResetAllPositions();
    void onActionResetCurrentShiftPosition();
    void onActionResetCurrentShiftPositionValidate(AC_ActionInfo *info);
    void onActionResetAllShiftPositions();
    void onActionResetAllShiftPositionsValidate(AC_ActionInfo *info);
    void onActionShowCrossHair();
    void onActionShowCrossHairValidate(AC_ActionInfo *info);
    void onActionAddCrossHairMode();
    void onActionAddCrossHairModeValidate(AC_ActionInfo *info);
    // Removes every cross-hair at once.
    void onActionRemoveCrossHair();
    void onActionRemoveCrossHairValidate(AC_ActionInfo *info);

private:
    bool showManipulator_ = true;
    bool showOutline_ = false;
    bool addCrossHairMode_ = false;
    std::function<void()> clearCurrent_;
    std::function<void()> clearAll_;
};
