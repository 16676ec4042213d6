// The IK posing tool: the tool object a view drives, as the host's tool factory knows it.
//
// The host makes one tool per view, sends it the pointer's press, moves and release, asks it what
// lies under a point (oglScanHit, from inside the view's pick) and which cursor to show. In
// manipulation mode a press on a joint selects it, a move of 5.0 pixels or more starts a drag that
// poses every frame of the active range by inverse kinematics, and the release writes the keyframes
// in one undo step "IK Manipulation". A press on the constellation (the on-canvas menu of a joint's
// constraints) sets a flag or drags a slider for every selected joint. In setup mode a click toggles
// a module's participation and a press on a handle drags its orientation.
//
// All state lives in IKTool::Impl (IKToolImpl.h), which is also the panel's joint source.
//
// The tool registers itself at library load, under the identifier it asks for, only when the
// preference QV_HAS_NEW_IK_TOOL is on; its identifier holds the asked-for value either way.
#pragma once

#include "host/HostAPI.h"

#include <memory>

class IKTool : public TO_Tool {
    Q_OBJECT
public:
    // The identifier the tool asks the factory for.
    static constexpr CX_ToolIds::ID kRequestedId = 2103;
    // The tool's identifier: what the factory gave at load, or kRequestedId when the tool was not
    // registered. Set once, while the library loads.
    static CX_ToolIds::ID const Id;

    // The descriptor under which the tool registers.
    static TO_ToolFactory::ToolDescriptor descriptor();
    static std::unique_ptr<TO_ToolFactory::ToolGenerator> createGenerator();
    // Reads the preference and registers the tool if it is on; gives the identifier.
    static CX_ToolIds::ID registerWithFactory();

    // The plug-in's resource folder, where the tool finds its images; empty until polish.
    static void setResourceFolder(QString const &folder);
    static QString const &resourceFolder();

    // The one switch for a second thread: with it, the frames of a range are solved half on a
    // worker thread, half on the calling thread (each frame is a problem of its own, so the poses
    // are those of the serial order, bit for bit); every scene access stays on the calling thread.
    // Off by default: on two cores shared with other work it does not pay (docs/performance.md).
    static void setSolveOnWorkerThread(bool enable);
    static bool solveOnWorkerThread();

    explicit IKTool(TO_AbstractToolContext *context);
    ~IKTool() override;

    // Always true, but a move with no sample, which is false.
    bool onMouseDown(GR_StylusPoint const &point) override;
    bool onMouseMove(std::vector<GR_StylusPoint> const &points) override;
    bool onMouseUp(GR_StylusPoint const &point) override;
    // Resolves a picking id of the tool's joints, bones, setup joints or constellation; always -1.
    int oglScanHit(unsigned int id, bool press) override;
    // Rebuilds the pose records while no press is under way, then paints the setup skeleton or the
    // ghosts, the current pose and the constellation; a pick pass paints them in picking id colours.
    void draw(PickMode mode) override;
    TO_Enums::Cursor getCursor(Math::Point2d const &point) override;
    // Empty on purpose: a reset changes no tool state.
    void resetTool() override;

    // A view point as a scene point (z 0), through the view's camera chain.
    Math::Point3d viewToScene(Math::Point2d const &point) const;

    struct Impl;
    // The tool's state, for the drawing and for tests.
    Impl &impl() const;

public slots:
    void toolSettingChanged();

protected:
    void dragStart(Math::Point2d const &point);
    void drag(Math::Point2d const &point, bool interactive);
    void dragEnd(Math::Point2d const &point);
    void dragSetupHandle(Math::Point2d const &point);
    // Copies the current frame's pose of the selected joints to every frame of the active range,
    // in one undo step "IK Apply Altogether".
    void applyAltogether();
    // The skeleton of every candidate module, for setup mode.
    void drawSetupMode(bool pick);
    // The poses of the other frames of the range, fading towards its far ends.
    void drawInterpolationMode();

private:
    std::unique_ptr<Impl> impl_;
};
