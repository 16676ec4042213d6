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
// Zoom and pan are the user's, and belong to the camera chain like the scene's camera: the view
// matrix carries the pan (the camera-space point shown at the centre of the view) and the
// projection carries the zoom (1 shows the field as above). Drawing, picking, viewToScene and every
// tool that maps points through canvasBinder() therefore follow them without knowing.
// Onion skin (off at first) paints, before the current drawings, the drawings of each element's
// neighbouring exposures, faded and tinted (VW_OnionSkin.h). The drawing view (kind 1) shows only
// the selected element, in its drawing's own space.
//
// Picking: the pick pass paints, on a pick canvas of the view's size, each drawing in the colour of
// a picking id of its module, then the tool's own pick drawing. pick() finds one id in the square of
// kPickRadius pixels around the point: of the tool's ids the one under the point or else the
// nearest, and only when the tool has none there, the drawing's (ties in reading order); it calls
// the tool's oglScanHit once with it, so that a press is one hit however near other things lie.
// The result is the module of that id when it is a drawing (what the tool paints near the point is
// what the user aimed at), else null.
#pragma once

#include "graphic/VS_RGBA.h"
#include "tool/CX_Context.h"
#include "tool/TO_AbstractToolContext.h"

#include <QImage>
#include <QObject>
#include <QSize>

#include <memory>
#include <vector>

class MO_ElementModule;
class MO_Module;
class QCursor;
class SC_Session;
class TO_Tool;
class VS_Canvas;

namespace Math {
class Matrix4x4;
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
    // True when the tool used the key: it said so, or it reported a drag step while it had the key
    // (a nudge), so that the window gives the key to nothing else.
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

    // Zoom and pan. zoom() is 1 when the field fits the view, 2 when things look twice as large;
    // it stays within kMinimumZoom and kMaximumZoom. centre() is the point of camera space (OGL
    // units, the scene's camera at the origin) shown at the centre of the view; it stays where it
    // is when the view is resized. Each change emits cameraChanged and asks for a redraw.
    static constexpr double kMinimumZoom = 1.0 / 32.0;
    static constexpr double kMaximumZoom = 64.0;
    double zoom() const;
    Math::Point2d centre() const;
    // Sets the zoom, keeping the scene under the view point `anchor` where it is (zoom about the
    // pointer). False, nothing changed, for a factor outside the limits or a point not finite.
    bool zoomAbout(double factor, Math::Point2d const &anchor);
    // Sets the zoom about the centre of the view.
    bool setZoom(double factor);
    // Moves the picture by (dx, dy) view pixels (x right, y down), as a drag of the hand does.
    // False, nothing changed, for numbers that are not finite.
    bool pan(double dx, double dy);
    // Shows the drawings exposed at the current frame whole, centred, with a margin of
    // kFitMargin of the view on each side (zoom within its limits); with nothing to show, 100%
    // centred. resetCamera: 100% centred on the scene's camera.
    static constexpr double kFitMargin = 0.05;
    void fitScene();
    void resetCamera();
    // Onion skin: while on, each element shows the drawings of its neighbouring exposures,
    // faded and tinted, under its current drawing; they are picked like drawings, and a pick of
    // one gives its frame (VW_OnionSkin.h). Off at first.
    bool onionSkin() const;
    void setOnionSkin(bool on);
    // CameraView or DrawingView; other values give the camera view. The drawing view shows the
    // first selected element's drawing (and its onion skin) in the drawing's own space, without
    // the camera and the pegs or deformers above it.
    void setViewKind(int kind);
    // The model matrix of the drawing view: the drawing's own space is the view's scene space.
    static Math::Matrix4x4 drawingViewModelMatrix();
    // The model matrix under which a view of `viewKind` draws the element's drawings at `frame`:
    // its world matrix in the camera view, drawingViewModelMatrix() in the drawing view. Tools
    // map pointer points into a drawing through it.
    static Math::Matrix4x4 elementModelMatrix(MO_ElementModule const &element, double frame, int viewKind);
    // The model matrix under which the drawing that the element exposes at `frame` shows: the
    // element's matrix times that drawing's display shift while Shift and Trace is on. A tool that
    // draws into the drawing maps the pointer through it, so that a stroke lands under the pointer
    // however the drawing is shifted.
    static Math::Matrix4x4 exposedDrawingModelMatrix(MO_ElementModule const &element, double frame, int viewKind);

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
    // The zoom or the pan changed.
    void cameraChanged();
    void onionSkinChanged(bool on);
    void viewKindChanged(int kind);

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};
