// The Shift and Trace tool: what a view hands the pointer, the keys and its paint and pick passes
// to while the animator shifts drawings to trace one over another.
//
// The tool settles what a press selects (a drawing, a peg of any drawing shown, onion drawings
// included, or a handle), then hands the gesture to its ShiftAndTraceSelectionManipulator. It runs
// the peg table through which the host's pegs become pickable (one picking id per drawing, for the
// life of the process), nudges with the arrow keys, reads the rotate and scale override keys, and
// chooses the cursor. It registers itself with the host's tool factory at library load; its polish
// and unpolish run only in the applications that show drawings (identities 2 and 3).
#pragma once

#include "host/HostAPI.h"
#include "shifttrace/ShiftAndTraceToolResponder.h"

#include <memory>

class ShiftAndTraceSelectionManipulator;

class ShiftAndTraceTool : public TO_Tool {
    Q_OBJECT
public:
    // The identifier the factory gave at load.
    static CX_ToolIds::ID const Id;

    static TO_ToolFactory::ToolDescriptor descriptor();
    static std::unique_ptr<TO_ToolFactory::ToolGenerator> createGenerator();
    static CX_ToolIds::ID registerWithFactory();
    // The one responder of the tool's actions.
    static ShiftAndTraceToolResponder *responder();

    // Loads the tool's shortcuts once (the action manager may come after the library's load).
    static void onInit();
    // The peg generator, shortcuts, image folders, the toolbar "shiftAndTraceToolbar", the icon
    // folder and the five preferences.
    static void onPolish();
    // Writes the preferences back, withdraws the peg generator and removes the toolbar.
    static void onUnpolish();
    static void registerPickingHandleGenerator();
    static void unregisterPickingHandleGenerator();

    explicit ShiftAndTraceTool(TO_AbstractToolContext *context);
    ~ShiftAndTraceTool() override;

    bool onMouseDown(GR_StylusPoint const &point) override;
    bool onMouseMove(std::vector<GR_StylusPoint> const &points) override;
    bool onMouseUp(GR_StylusPoint const &point) override;
    // Never consumes a key: the arrows nudge the selection (ten times with the extend modifier)
    // and the host still sees them.
    bool onKeyUp(int key) override;
    bool onKeyDown(int key, bool autoRepeat) override;
    void resetTool() override;
    void activateTool() override;
    int oglScanHit(unsigned int id, bool press) override;
    void draw(PickMode mode) override;
    TO_Enums::Cursor getCursor(Math::Point2d const &point) override;
    bool canBeOverridenBySelectOrTransformTool() override { return false; }
    // True while a key of the tool is down, which also turns Shift and Trace on.
    bool shouldBeEnabledBasedOnKeyPressed() override;
    bool supportsScenePlanningPickingInDrawingView() override { return true; }

    ShiftAndTraceSelectionManipulator &manipulator();

signals:
    void toolSettingChanged();

private:
    // In the drawing view the tool works only while the cached preference allows it.
    bool guarded() const;
    void applyOverride();

    struct Impl;
    std::unique_ptr<Impl> d_;
};
