// The view as a tool sees it.
//
// A view (camera or drawing view) implements this interface and hands it to the tools it creates.
// The operations stand in the order the tools know them by.
#pragma once

#include "base/UT_Point.h"
#include "base/UT_SharedPtr.h"

class CC_CameraChainTransformCanvasBinder;
class QCursor;
class SLB_SelectableDescriptor;

class TO_AbstractToolContext {
public:
    enum ViewKind { CameraView = 0, DrawingView = 1 };

    virtual ~TO_AbstractToolContext() = default;

    // True while the modifier that extends a selection is held.
    virtual bool extendModifier() const = 0;
    // True while the second modifier is held.
    virtual bool keepModifier() const = 0;
    // True while the third modifier is held.
    virtual bool thirdModifier() const = 0;
    // The frame the view shows.
    virtual double currentFrame() const = 0;
    virtual void requestRedraw() = 0;
    // Runs a pick pass at a view point: the current tool's oglScanHit is called for each id found
    // around the point, with `commit`. Gives the host's descriptor for a node found, or null.
    virtual UT_SharedPtr<SLB_SelectableDescriptor> pick(UT_Point const &point, bool commit, int options) = 0;
    // The camera chain of the view; never null while the view lives.
    virtual CC_CameraChainTransformCanvasBinder *canvasBinder() = 0;
    // Installs a custom cursor and gives its value, or 0 (TO_Enums::NoCursor) when it cannot. The
    // view takes ownership of the cursor.
    virtual int registerCursor(QCursor *cursor) = 0;
    virtual int viewKind() const = 0;
    // The number the tool's oglScanHit gave for the pick that produced `descriptor`, or -1.
    virtual int pickedHandle(UT_SharedPtr<SLB_SelectableDescriptor> const &descriptor) = 0;
    // Marks the end of one step of a drag.
    virtual void dragStepDone() = 0;
};
