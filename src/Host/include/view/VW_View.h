// A view of a session's scene as tools see it: the camera view (kind 0) or the drawing view
// (kind 1), without any widget.
//
// VW_View holds everything a view does apart from showing pixels on a screen: it renders the scene
// at the session's current frame into an image, runs pick passes, owns the current tool and hands it
// the pointer and the keys, and answers the tool's questions (TO_AbstractToolContext). The widget
// shell (VW_ViewWidget) and batch scripts drive the same object, so a scripted gesture takes the
// same road as a mouse gesture, and tests need no display.
//
// Rendering: the paper is cleared, then every drawing element of the scene, in scene order, paints
// the drawing it exposes at the frame under its world matrix (model matrix), the camera's inverse
// as view matrix, an orthographic projection that fits the field (-1 to 1 OGL units across, -0.75
// to 0.75 up) into the view; selected modules get a marker; last the current tool draws.
//
// Picking: the pick pass paints, on a pick canvas of the view's size, each drawing in the colour of
// a picking id of its module, then the tool's own pick drawing. pick() reads the ids in a square of
// kPickRadius pixels around the point, nearest first, and calls the tool's oglScanHit for each of
// them, the farthest first and the nearest last, so that a tool which keeps only its latest hit
// keeps the nearest. The result is the module of the nearest hit when that hit is a drawing (what
// the tool paints near the point is what the user aimed at), else null.
#pragma once

#include "graphic/VS_RGBA.h"
#include "tool/CX_Context.h"
#include "tool/TO_AbstractToolContext.h"

#include <QImage>
#include <QObject>
#include <QSize>

#include <memory>
#include <vector>

class MO_Module;
class QCursor;
class SC_Session;
class TO_Tool;
class VS_Canvas;

namespace Math {
class Point2d;
}

class VW_View : public QObject, public TO_AbstractToolContext {
    Q_OBJECT
public:
    static constexpr int kPickRadius = 3;         // pick() looks this many pixels around the point
    static constexpr double kFieldHalfWidth = 1.0;   // OGL units the view shows on each side of the camera
    static constexpr double kFieldHalfHeight = 0.75; // OGL units above and below the camera
    static constexpr VS_RGBA kPaperColor = VS_RGBA(255, 255, 255);
    static constexpr VS_RGBA kSelectionColor = VS_RGBA(40, 120, 255);

    // `session` may be null (a view of nothing); it is not owned and must outlive the view or be
    // replaced with setSession first.
    explicit VW_View(SC_Session *session, int kind = CameraView, QObject *parent = nullptr);
    ~VW_View() override;

    SC_Session *session() const;
    // Shows another session. The current tool is made anew for it (tools keep scene pointers);
    // null leaves the view without a tool until the next session.
    void setSession(SC_Session *session);

    // The size in pixels; sizes below 1 count as 1.
    QSize size() const;
    void resize(int width, int height);

    // Tools. setToolId makes the tool through TO_ToolFactory for this view and activates it; an
    // unknown identifier (or None) leaves the view without a tool, and false is the answer for an
    // unknown one. The view owns its tool.
    bool setToolId(CX_ToolIds::ID id);
    CX_ToolIds::ID toolId() const;
    TO_Tool *tool() const;

    // Renders the scene and the tool's visible pass at the current frame; gives the image.
    QImage const &render();
    QImage const &image() const;
    // The ids of the last pick pass, one pixel per id colour (SLB_PickEngine); empty before.
    QImage const &pickImage() const;
    // The module drawn in the last pick pass under `id`, or null.
    MO_Module *moduleForPickId(unsigned int id) const;

    // Pointer and keys, in view pixels (origin top left, y down). A move while the button is down
    // goes to onMouseMove, else to onMouseOver. The modifiers are those of the event and stay in
    // force for the tool's questions until the next event. Each returns what the tool answered.
    // Without a tool, a press selects what it picks (selectAt). Points far outside the view are
    // brought within UT_Point::kLimit first (NaN to 0), as pick() brings its point.
    bool mousePress(Math::Point2d const &point, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    bool mouseMove(Math::Point2d const &point, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    bool mouseRelease(Math::Point2d const &point, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void mouseLeave();
    bool isPressed() const;
    bool keyPress(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, bool autoRepeat = false);
    bool keyRelease(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    Qt::KeyboardModifiers modifiers() const;
    void setModifiers(Qt::KeyboardModifiers modifiers);

    // Selects the drawing element under the point, as one undo step "Selection": alone, or with
    // the extend modifier added to (or taken from) the selection; an empty place clears the
    // selection unless the modifier is held. False without a session.
    bool selectAt(Math::Point2d const &point);

    // The cursor the tool asks for at a view point, as a Qt cursor.
    QCursor cursorAt(Math::Point2d const &point);
    // The Qt cursor of a cursor value (standard or registered); the arrow for unknown values.
    QCursor cursorFor(int cursor) const;

    // Scene (OGL) point of a view point and back, under the view's camera; false when it cannot map.
    bool viewToScene(Math::Point2d const &view, Math::Point2d &scene);
    bool sceneToView(Math::Point2d const &scene, Math::Point2d &view);

    int dragStepCount() const;  // how many times dragStepDone was called

    // TO_AbstractToolContext
    bool extendModifier() const override;  // Shift
    bool keepModifier() const override;    // Ctrl
    bool thirdModifier() const override;   // Alt
    double currentFrame() const override;
    void requestRedraw() override;
    UT_SharedPtr<SLB_SelectableDescriptor> pick(UT_Point const &point, bool commit, int options) override;
    CC_CameraChainTransformCanvasBinder *canvasBinder() override;
    int registerCursor(QCursor *cursor) override;
    int viewKind() const override;
    int pickedHandle(UT_SharedPtr<SLB_SelectableDescriptor> const &descriptor) override;
    void dragStepDone() override;

signals:
    // Someone (the tool, a scene change) asked for a new picture.
    void redrawRequested();
    void dragStepFinished();

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};
