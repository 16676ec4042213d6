// Contexts of evaluation: the frame a module is evaluated at, and the drawing state that a view
// adds to it.
//
// Frames are doubles. Where an attribute or a key needs a whole frame the frame is truncated
// towards zero (intFrame), never rounded.
#pragma once

class SC_SceneCommon;

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

// The context of drawing in a view: an evaluation context with the scene it draws and the kind
// of view (0 the camera view, 1 the drawing view). The painter side joins it with the views.
class MO_OGLContext : public MO_BaseContext {
public:
    MO_OGLContext(MO_FrameKey const &key, SC_SceneCommon *sceneCommon, int viewKind = 0)
        : MO_BaseContext(key), sceneCommon_(sceneCommon), viewKind_(viewKind)
    {
    }

    SC_SceneCommon *sceneCommon() const { return sceneCommon_; }  // may be null
    int viewKind() const { return viewKind_; }

private:
    SC_SceneCommon *sceneCommon_;  // not owned
    int viewKind_;
};
