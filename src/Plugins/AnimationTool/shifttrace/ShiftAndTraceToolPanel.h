// The Shift and Trace tool's properties panel, the factory that makes it in each tool properties
// dock, and the visitor that marks every shift of a scene changed.
//
// The panel shows the enable switch, the display switches (manipulator, pegs, outline,
// cross-hairs), the peg position, the cross-hair buttons, the two clear buttons, and the numeric
// shift of the first selected drawing. Numbers typed there are absolute: each one rewrites the
// whole shift (all seven values) of every selected drawing, not only the value edited.
//
// It holds no state of its own beyond its widgets: one refresh rebuilds every widget from the
// host's switches (AT_ShiftAndTraceUtil), the responder's switches and the Shift and Trace
// selection. The refresh changes widgets with their signals blocked, and sets the editors under
// `editsBlocked`, so a refresh never writes a shift; during a drag every step of the tool emits
// onShiftChange and the editors follow the pointer.
//
// The widgets come from the form "/shiftTraceToolPanel.ui" of the resource folder and are found by
// object name. A button missing from the form is left unconnected; a form without the six editors
// leaves the whole panel empty and unconnected.
#pragma once

#include "host/HostAPI.h"

#include <memory>

class ShiftAndTraceToolPanel : public TP_ToolPropertiesPanel {
    Q_OBJECT
public:
    ShiftAndTraceToolPanel(TP_ToolPropertiesReceiver *receiver, QString resourceFolder);
    ~ShiftAndTraceToolPanel() override;

    // True if at least one element module is selected as a node, shifted or not.
    static bool hasShiftAndTraceDrawingsSelected();
    // Removes the whole Shift and Trace attribute of each selected shifted element, as one undo
    // step "Clear all Shift and Trace Positions".
    static void onClearAllShiftsImpl();
    // Forgets the shifts of the drawings in the Shift and Trace selection, or, when none of them
    // had one, those of the selected shifted elements' drawings at the current frame; one undo
    // step "Clear Shift and Trace Positions".
    static void onClearCurrentShiftImpl();

public slots:
    void settingsChanged() {}  // nothing: every change the panel shows reaches it by the slots below
    void onSelectionChanged();  // refreshes
    void valueChanged();        // an editor's value: writes the shift of every selected drawing
    void onShiftAndTraceEnableCheckboxChanged();
    void onShiftAndTraceEnableChanged();  // the host's switch changed: marks every shift changed, refreshes
    void onClearCurrentShift();
    void onClearAllShifts();
    void onShowManipulatorChanged();
    void onShowPegsChanged();
    void onShowOutlineChanged();
    void onShowCrossHairChanged();
    void onAddCrossHairChanged();
    void onRemoveCrossHairClicked();
    void onPegPositionChanged(int index);

protected:
    void load_internal() override;
    void refresh_internal() override;
    bool monitorSelectionChange() override { return true; }
    // No pen styles in this panel; kept for the host's panel interface.
    virtual void updatePenStyleList() {}
    virtual void refreshPenStyleList() {}

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

class ShiftAndTraceToolPanelFactory : public TP_ToolPropertiesPanelFactory {
public:
    explicit ShiftAndTraceToolPanelFactory(QString resourceFolder);

    // Makes the panel, loads it and ties it to the Shift and Trace tool in `receiver`.
    void create(TP_ToolPropertiesReceiver *receiver) override;

private:
    QString resourceFolder_;
};

// Marks the Shift and Trace attribute of every element module it visits changed, so that views
// draw the drawings again (after Shift and Trace was switched on or off).
class ElementModuleVisitor : public MO_ModuleVisitor {
public:
    using MO_ModuleVisitor::visit;
    void visit(MO_ElementModule &module) override;
};
