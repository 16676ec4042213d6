// Contexts of evaluation: the frame a module is evaluated at, and the drawing state that a view
// adds to it.
//
// Frames are doubles. Where an attribute or a key needs a whole frame the frame is truncated
// towards zero (intFrame), never rounded.
#pragma once

#include "base/Math/Shapes.h"

#include <cstdint>

class CC_CameraChainTransformCanvasBinder;
class SC_EditionStackInterface;
class SC_SceneCommon;
class VS_Canvas;

// The frame of an evaluation.
class MO_FrameKey {
public:
    explicit MO_FrameKey(double const &frame = 0.0) : frame_(frame) {}

    double frame() const { return frame_; }
    int intFrame() const { return static_cast<int>(frame_); }  // truncation towards zero

    bool operator==(MO_FrameKey const &o) const { return frame_ == o.frame_; }
    bool operator!=(MO_FrameKey const &o) const { return !(*this == o); }

private:
    double frame_;
};

// What every evaluation of the scene graph is given: the frame, and flags that no module of the
// host reads yet (kept so that callers can pass their own).
class MO_BaseContext {
public:
    explicit MO_BaseContext(MO_FrameKey const &key, int flags = 0) : key_(key), flags_(flags) {}
    virtual ~MO_BaseContext() = default;

    MO_FrameKey const &frameKey() const { return key_; }
    double frame() const { return key_.frame(); }
    int intFrame() const { return key_.intFrame(); }
    int flags() const { return flags_; }

private:
    MO_FrameKey key_;
    int flags_;
};

// How a drawing paints itself into an MO_OGLContext (OC_Drawing::draw): as it is, or as the
// outline of its shapes in one colour, unfilled (a tool's outline of a drawing it works on).
class MO_OGLInternalContext {
public:
    enum class Mode { Normal, Outline };

    Mode mode() const { return mode_; }
    void setMode(Mode mode) { mode_ = mode; }
    void setOutlineMode(bool outline) { mode_ = outline ? Mode::Outline : Mode::Normal; }
    // The outline colour as a 32-bit word 0xAARRGGBB.
    std::uint32_t outlineColour() const { return outlineColour_; }
    void setOutlineColour(std::uint32_t argb) { outlineColour_ = argb; }

private:
    Mode mode_ = Mode::Normal;
    std::uint32_t outlineColour_ = 0xFF000000u;
};

// The context of drawing in a view: an evaluation context with the scene it draws and the kind
// of view (0 the camera view, 1 the drawing view). The painter side joins it with the views.
//
// A context made with a binder is one that drawings paint into (OC_Drawing::draw): under the
// binder's current matrices, on its canvas.
class MO_OGLContext : public MO_BaseContext {
public:
    MO_OGLContext(MO_FrameKey const &key, SC_SceneCommon *sceneCommon, int viewKind = 0)
        : MO_BaseContext(key), sceneCommon_(sceneCommon), viewKind_(viewKind)
    {
    }
    // `lineScale` multiplies the drawings' stroke widths (1: as drawn); `flags` are the evaluation
    // flags; `outlineThickness` is the width in pixels of outlines; `userData` is kept for the
    // caller; `clip`, when not empty, is the part of the scene that is looked at (the host paints
    // whole drawings, so it only keeps it); `pickingPass` tells a pick pass. The binder, the
    // canvas and the services are not owned.
    MO_OGLContext(CC_CameraChainTransformCanvasBinder *binder, VS_Canvas *canvas, SC_SceneCommon *sceneCommon,
                  SC_EditionStackInterface *editionStack, double frame, int lineScale, int flags,
                  int outlineThickness, void *userData, Math::Box2d const &clip, bool pickingPass)
        : MO_BaseContext(MO_FrameKey(frame), flags), sceneCommon_(sceneCommon), binder_(binder), canvas_(canvas),
          editionStack_(editionStack), lineScale_(lineScale), outlineThickness_(outlineThickness),
          userData_(userData), clip_(clip), pickingPass_(pickingPass)
    {
    }

    SC_SceneCommon *sceneCommon() const { return sceneCommon_; }  // may be null
    int viewKind() const { return viewKind_; }

    CC_CameraChainTransformCanvasBinder *binder() const { return binder_; }  // null: nothing is painted
    VS_Canvas *canvas() const { return canvas_; }
    SC_EditionStackInterface *editionStack() const { return editionStack_; }
    int lineScale() const { return lineScale_; }
    int outlineThickness() const { return outlineThickness_; }
    void *userData() const { return userData_; }
    Math::Box2d const &clip() const { return clip_; }
    bool isPickingPass() const { return pickingPass_; }

    MO_OGLInternalContext &internal() { return internal_; }
    MO_OGLInternalContext const &internal() const { return internal_; }

private:
    SC_SceneCommon *sceneCommon_;  // not owned
    int viewKind_ = 0;
    CC_CameraChainTransformCanvasBinder *binder_ = nullptr;  // not owned
    VS_Canvas *canvas_ = nullptr;                            // not owned
    SC_EditionStackInterface *editionStack_ = nullptr;       // not owned
    int lineScale_ = 1;
    int outlineThickness_ = 1;
    void *userData_ = nullptr;
    Math::Box2d clip_;
    bool pickingPass_ = false;
    MO_OGLInternalContext internal_;
};
