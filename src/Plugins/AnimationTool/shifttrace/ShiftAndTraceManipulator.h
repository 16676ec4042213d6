// The manipulator of one selected drawing: its outline, box and handles, and how pointer motion
// on them changes the drawing's shift.
//
// Each element of ShiftAndTraceSelection owns one, made at first use. The manipulator reads and
// writes the drawing's PositionData in the element module's ShiftAndTraceAttr; it never touches the
// animation. A drag runs from onMouseDown to onMouseUp on the handle selected at the press (see
// HandleType_t); the undo scope around it belongs to ShiftAndTraceSelectionManipulator.
//
// Frames: a drawing of another frame than the view's (an onion drawing) is handled in place, under
// its own world matrix and the camera of its frame.
#pragma once

#include "shifttrace/ShiftAndTraceManipulatorBase.h"

#include <memory>
#include <vector>

class ShiftAndTraceManipulator : public ShiftAndTraceManipulatorBase {
public:
    // `module` is not owned and may be null: everything then does nothing.
    ShiftAndTraceManipulator(MO_ElementModule *module, int frame);
    ~ShiftAndTraceManipulator() override;

    // Start a drag on the selected handle at a view point. Always true.
    virtual bool onMouseDown(TO_AbstractToolContext *ctx, GR_StylusPoint const &point);
    // One step to the last point; false for an empty list.
    virtual bool onMouseMove(TO_AbstractToolContext *ctx, std::vector<GR_StylusPoint> const &points);
    // The last step and the dirtying of the attribute; nothing when no move came. Always true.
    virtual bool onMouseUp(TO_AbstractToolContext *ctx, GR_StylusPoint const &point);
    // The outline (when asked for) and, with `showHandles`, the box and handles.
    virtual void draw(TO_AbstractToolContext *ctx, bool pickMode, bool showHandles);
    // Applies a world-space transform to the drawing's shift (a group drag's step).
    virtual void applyTransform(TO_AbstractToolContext *ctx, Math::Matrix4x4 const &transform);

    MO_ElementModule *module() const;
    int frame() const;
    // The drawing's box in its own OGL space: that of its content, 0.5 by 0.5 about the origin for
    // a drawing without content, enlarged by 0.25 on every side when flat.
    Math::Box2d drawingBounds() const;
    // The model matrix the drawing is shown under in the view of `ctx`.
    Math::Matrix4x4 modelMatrix(TO_AbstractToolContext *ctx) const;
    // The drawing the manipulator works on; an invalid key when the frame exposes none.
    CA_CelKey currentCelKey() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};
