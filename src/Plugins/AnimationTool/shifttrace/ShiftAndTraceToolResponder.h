// The actions of the Shift and Trace tool, and the display switches the plug-in owns.
//
// Menu entries, tool bar buttons and shortcuts reach the responder by its identity
// "ShiftAndTraceToolResponder" and a slot name. It keeps show manipulator, show outline and the add
// cross-hair mode; every other switch lives in the host (AT_ShiftAndTraceUtil). One instance lives
// from library load to process exit: ShiftAndTraceTool::responder().
#pragma once

#include "host/HostAPI.h"

class ShiftAndTraceToolResponder : public AC_ResponderTemplateObject<QObject> {
    Q_OBJECT
public:
    // Registers with the action manager the host offers at the time (none is also fine).
    ShiftAndTraceToolResponder();

    AC_Responder *parentResponder() override { return nullptr; }

    bool isShowManipulator() const { return showManipulator_; }
    bool isShowOutline() const { return showOutline_; }
    bool isAddCrossHairMode() const { return addCrossHairMode_; }

    void emitOnShiftChange() { emit onShiftChange(); }

signals:
    // A shift, the selection or a display switch changed: panels refresh.
    void onShiftChange();

public slots:
    // Makes the Shift and Trace tool the current tool.
    void onActionSelectShiftAndTraceTool();

private:
    bool showManipulator_ = true;
    bool showOutline_ = false;
    bool addCrossHairMode_ = false;
};
