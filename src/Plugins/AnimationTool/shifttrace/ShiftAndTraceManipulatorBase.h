// What the manipulators of the Shift and Trace tool share: the handle types, the block of four
// picking ids, the pick result of a handle, and the drawing of a box with its handles.
//
// A manipulator reserves four consecutive picking ids, one per drawn handle (HandleScale,
// HandleRotate, HandlePivot, in the order of their values; the fourth is kept free). HandleMove is
// the absence of a handle; HandlePeg comes from the host's pegs through the tool's peg table.
#pragma once

#include "host/HostAPI.h"

class ShiftAndTraceManipulatorBase : public UT_ShareBase, public SLB_SelectablePickAdaptor {
public:
    enum HandleType_t {
        HandleMove = -1,   // no handle: moves the drawing
        HandleScale = 0,   // the box's corners: scales about the pivot
        HandleRotate = 1,  // the knob and the zones outside the corners: rotates about the pivot
        HandlePivot = 2,   // the pivot: moves it, the image stays
        HandlePeg = 3,     // a peg drawn by the host: rotates about the centre peg
    };
    static constexpr int kHandleCount = 4;

    // What drawHandles shows: a box in the block's own OGL space, its offset and a pivot.
    struct HandleBlock {
        Math::Point2d pivotPoint;      // field units
        Math::Box2d boundingBox;       // OGL units of the block's own space
        Math::Matrix4x4 offsetMatrix;  // applied over the binder's model matrix
    };

    ShiftAndTraceManipulatorBase();
    ~ShiftAndTraceManipulatorBase() override;

    virtual void resetSelectedHandle();
    HandleType_t selectedHandleType() const { return selectedHandleType_; }
    void setSelectedHandleType(HandleType_t type) { selectedHandleType_ = type; }

    // A ShiftAndTraceSelectable for an id of this manipulator's block (with `commit`, that handle
    // becomes the selected one); null otherwise (with `commit`, the selection is reset).
    UT_SharedPtr<SLB_SelectableDescriptor> scanHits(std::uint32_t id, bool commit,
                                                    QFlags<Qt::KeyboardModifier> modifiers) override;

    // Draws the box, knob, pivot and corners of `block` on the context's binder under its current
    // model matrix times block.offsetMatrix; in the pick pass the handles in the colours of the ids
    // from `base` on, and the invisible rotate zones outside the corners. The knob stands 20 pixels
    // out from the middle of the box's right side. Nothing when the view shows no length.
    static void drawHandles(TO_AbstractToolContext *ctx, HandleBlock const &block, bool pickMode, std::uint32_t base,
                            HandleType_t selected, SC_SceneMetrics const &metrics, VS_RGBA const &outline);

private:
    HandleType_t selectedHandleType_ = HandleMove;
};

// The pick result of a manipulator's handle.
class ShiftAndTraceSelectable : public SLB_SelectableDescriptor {
public:
    explicit ShiftAndTraceSelectable(ShiftAndTraceManipulatorBase::HandleType_t handle) : handle_(handle) {}
    bool hasPickingObject() const override { return true; }
    ShiftAndTraceManipulatorBase::HandleType_t handle() const { return handle_; }

private:
    ShiftAndTraceManipulatorBase::HandleType_t handle_;
};
