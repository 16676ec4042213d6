// The services of a scene, its project and the editing session, as tools and panels reach them.
//
// The host's parts ask for these through small interfaces:
//   SC_SceneCommon       a scene's command manager, change manager and camera
//   SC_ProjectCommon     the project's command manager and node selection
//   SC_SessionContext    the session's change manager and interactive drag manager
//   SC_CurrentFrameInterface, SC_EditionStackInterface   the current frame and the edited scene
// SC_Session is the one object of an application that owns them all for one open scene and
// answers every interface. It sends the node changes that commands gathered (nodesChanged) when
// their undo step is recorded, undone or redone. Creating it installs it on the scene (TUScene::setSceneCommon,
// setProjectCommon, setCommandManager); destroying it uninstalls it.
//
// An application that opens one scene after another keeps one change manager for its whole life
// and hands it to each session: listeners that connect once (a plug-in, when it loads) then hear
// every scene, and each new scene is told by currentSceneChanged.
#pragma once

#include "base/Math/Matrix.h"

#include <memory>

class CO_CommandManager;
class MO_FrameKey;
class SC_InteractiveDragManager;
class SL_Selection;
class TUScene;
class TUSceneChangeManager;

class SC_SceneCommon {
public:
    virtual ~SC_SceneCommon() = default;
    virtual CO_CommandManager *commandManager() const = 0;
    virtual TUSceneChangeManager *changeManager() const = 0;
    // The camera's matrix at a frame: where the camera stands in the scene, from camera space to
    // scene space. A view's view matrix (scene to camera) is its inverse.
    virtual Math::Matrix4x4 cameraMatrix(MO_FrameKey const &frame) const = 0;
};

class SC_ProjectCommon {
public:
    virtual ~SC_ProjectCommon() = default;
    virtual CO_CommandManager *commandManager() const = 0;
    virtual SL_Selection *getSelection() const = 0;
};

class SC_SessionContext {
public:
    virtual ~SC_SessionContext() = default;
    virtual TUSceneChangeManager *changeManager() const = 0;
    virtual SC_InteractiveDragManager *dragManager() const = 0;
};

class SC_CurrentFrameInterface {
public:
    virtual ~SC_CurrentFrameInterface() = default;
    // The current frame of the scene of `sceneCommon` (the one scene of the session: the argument
    // may be null).
    virtual double currentFrame(SC_SceneCommon const *sceneCommon) const = 0;
    virtual void setCurrentFrame(double frame) = 0;
};

class SC_EditionStackInterface {
public:
    virtual ~SC_EditionStackInterface() = default;
    // The scene being edited; null when none is open.
    virtual TUScene *currentScene() const = 0;
};

class SC_Session final : public SC_SceneCommon,
                         public SC_ProjectCommon,
                         public SC_SessionContext,
                         public SC_CurrentFrameInterface,
                         public SC_EditionStackInterface {
public:
    // Takes the scene; installs itself on it. The session makes its own change manager.
    explicit SC_Session(std::unique_ptr<TUScene> scene);
    // The same with a change manager that the caller owns and that outlives the session; it is
    // pointed at this session's scene (its pending node changes of the last scene are dropped).
    SC_Session(std::unique_ptr<TUScene> scene, TUSceneChangeManager *changes);
    ~SC_Session() override;
    SC_Session(SC_Session const &) = delete;
    SC_Session &operator=(SC_Session const &) = delete;

    TUScene *scene() const;

    CO_CommandManager *commandManager() const override;
    TUSceneChangeManager *changeManager() const override;
    Math::Matrix4x4 cameraMatrix(MO_FrameKey const &frame) const override;
    SL_Selection *getSelection() const override;
    SC_InteractiveDragManager *dragManager() const override;
    // The frame is a double; setting it to the same value emits nothing, a new one emits
    // currentFrameChanged. Frames outside SC_Frames (NaN and infinities
    // too) are refused.
    double currentFrame(SC_SceneCommon const *sceneCommon = nullptr) const override;
    void setCurrentFrame(double frame) override;
    TUScene *currentScene() const override;

    // The fixed camera of the scene (camera space to scene space), the same at every frame.
    void setCameraMatrix(Math::Matrix4x4 const &matrix);

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};
