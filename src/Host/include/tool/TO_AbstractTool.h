// Tools: what a view drives with the pointer and the keyboard, and asks to draw.
//
// A view holds one current tool. It forwards pointer events (in view pixels) and keys to it, calls
// draw for the visible pass and for the pick pass, and, when a pick pass finds ids under the
// pointer, calls oglScanHit for each. The defaults below do nothing and decline everything, so a
// tool overrides only what it handles.
#pragma once

#include "base/Math/Vector.h"
#include "graphic/GR_StylusPoint.h"
#include "tool/TO_Enums.h"

#include <QObject>

#include <vector>

class AC_ActionInfo;
class TO_AbstractToolContext;

class TO_AbstractTool : public QObject {
    Q_OBJECT
public:
    // The pass that draw is asked for: 0 the visible pass, 2 nothing; any other value is a pick
    // pass, which draws in id colours.
    enum PickMode { NormalMode = 0, PickingMode = 1, NoDrawing = 2 };

    explicit TO_AbstractTool(QObject *parent = nullptr);
    ~TO_AbstractTool() override;

    // Pointer events return true when the tool used the event.
    virtual bool onMouseDown(GR_StylusPoint const &point);
    // All samples since the last call, oldest first; never called with an empty list by a view.
    virtual bool onMouseMove(std::vector<GR_StylusPoint> const &points);
    virtual bool onMouseUp(GR_StylusPoint const &point);
    virtual bool onMouseOver(GR_StylusPoint const &point);
    virtual void onMouseLeave();
    // Keys are Qt key codes. Return true when the tool used the key.
    virtual bool onKeyUp(int key);
    virtual bool onKeyDown(int key, bool autoRepeat);
    virtual void resetTool();
    virtual void activateTool();
    // One id found by a pick pass; `press` is the pick's commit flag. The result is the tool's own
    // number for the hit, -1 for none.
    virtual int oglScanHit(unsigned int id, bool press);
    virtual void draw(PickMode mode);
    // The cursor to show at a view point.
    virtual TO_Enums::Cursor getCursor(Math::Point2d const &point);
    virtual bool canBeOverridenBySelectOrTransformTool();
    virtual bool shouldBeEnabledBasedOnKeyPressed();
    virtual bool supportsScenePlanningPickingInDrawingView();
    virtual void deleteSelection();
    virtual void deleteSelectionValidate(AC_ActionInfo *info);
};

// A tool that works in one view.
class TO_Tool : public TO_AbstractTool {
    Q_OBJECT
public:
    explicit TO_Tool(TO_AbstractToolContext *context, QObject *parent = nullptr);
    ~TO_Tool() override;

    // The view this tool works in; not owned, and outlives the tool.
    TO_AbstractToolContext *context() const { return context_; }

private:
    TO_AbstractToolContext *context_;
};
