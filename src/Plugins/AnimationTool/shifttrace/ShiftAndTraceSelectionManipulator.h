// The one manipulator the Shift and Trace tool talks to: it stands over the whole selection.
//
// With one drawing selected it forwards to that drawing's ShiftAndTraceManipulator. With two or
// more it adds a box, a pivot and handles of its own around all of them, and turns a drag on those
// into a world-space transform that each drawing applies to its shift. It owns the undo step of a
// drag ("Move Shift and Trace", open from mouse down to mouse up), places cross-hairs in add
// cross-hair mode, and carries the override that turns a move into a rotation or a scaling.
#pragma once

#include "shifttrace/ShiftAndTraceManipulatorBase.h"

#include <memory>
#include <vector>

class ShiftAndTraceSelectionManipulator : public ShiftAndTraceManipulatorBase {
public:
    ShiftAndTraceSelectionManipulator();
    ~ShiftAndTraceSelectionManipulator() override;

    // Resets every element's handle and the group's.
    void resetSelectedHandle() override;
    // Asks each element's manipulator in order, then the group's handles.
    UT_SharedPtr<SLB_SelectableDescriptor> scanHits(std::uint32_t id, bool commit,
                                                    QFlags<Qt::KeyboardModifier> modifiers) override;

    virtual bool onMouseDown(TO_AbstractToolContext *ctx, GR_StylusPoint const &point);
    virtual bool onMouseMove(TO_AbstractToolContext *ctx, std::vector<GR_StylusPoint> const &points);
    virtual bool onMouseUp(TO_AbstractToolContext *ctx, GR_StylusPoint const &point);
    // Each drawing's manipulator, then, with two or more drawings, the group's box and handles.
    virtual void draw(TO_AbstractToolContext *ctx, bool pickMode);

    // The handle forced by an override key for the next press (HandleMove: none).
    void setOverride(HandleType_t handle);
    HandleType_t overrideHandle() const;
    // The group's handle, else the first element's that has one, else HandleMove.
    HandleType_t selectedHandle() const;
    // Moves the last cross-hair under the view point (one drawing selected, a cross-hair present).
    void setLastCrossHair(TO_AbstractToolContext *ctx, Math::Point2d const &point);

    // The group's pivot (field units) and box (world OGL) of the last draw.
    Math::Point2d groupPivot() const;
    Math::Box2d groupBox() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};
