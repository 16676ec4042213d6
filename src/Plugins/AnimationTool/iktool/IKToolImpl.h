// The IK tool's state and its pose records (private to the tool, its drawing and its tests).
//
// While no press is under way, each redraw rebuilds one FrameRecord per frame of the active range:
// the skeleton at that frame, a solver made for it, the drag tasks of the selected joints and the
// manipulators that write the solved pose back. A press freezes the records; the end of the press
// drops them. A record read for a frame that has none is made on the spot, empty: so the current
// frame always has one once asked for.
//
// Order of a drag: buildManipulators, resetSolvers, setUpTasks once at its start; then per move
// moveTargets, solveFrames, commitFrames, buildManipulators (commit empties the sets).
#pragma once

#include "iktool/IKTool.h"
#include "iktool/IKToolSettings.h"
#include "iktool/JointPath.h"

#include "bridge/ModuleManipulator.h"
#include "skeleton/SkeletonDef.h"
#include "solver/IKSolver.h"

#include <functional>
#include <map>

class VU_Painter;
namespace IKToolRendering {
class RenderingStyle;
}

// Owns the picking ids of one pose's joints and bones; hits are resolved in IKTool::oglScanHit.
class IKToolPickAdaptor : public SLB_SelectablePickAdaptor {
public:
    IKToolPickAdaptor();
    UT_SharedPtr<SLB_SelectableDescriptor> scanHits(std::uint32_t id, bool commit,
                                                     QFlags<Qt::KeyboardModifier> modifiers) override;
};

// Owns the picking ids of the nine constellation items (IKTool::Impl::ConstellationItem).
class IKConstellationPickAdaptor : public SLB_SelectablePickAdaptor {
public:
    IKConstellationPickAdaptor();
    UT_SharedPtr<SLB_SelectableDescriptor> scanHits(std::uint32_t id, bool commit,
                                                     QFlags<Qt::KeyboardModifier> modifiers) override;
};

// The pose of one frame of the range. Not copyable: the manipulators keep pointers to the solver
// and the skeleton, and are declared last so that they go first.
struct FrameRecord {
    FrameRecord();
    ~FrameRecord();
    FrameRecord(FrameRecord const &) = delete;
    FrameRecord &operator=(FrameRecord const &) = delete;

    std::unique_ptr<TIK::IKSolver> solver;
    SkeletonDef skeleton;                              // empty in a record made on demand
    std::map<int, TIK::IKPositionTask *> positionTasks;  // drag task per selected joint; the solver's
    IKToolPickAdaptor pickAdaptor;
    ManipulatorSet manipulators;
};

struct IKTool::Impl : public IKToolSettings::SelectionJointSource {
    enum InteractionState {
        Idle = 0,
        Pressed = 1,              // pressed with joints selected, threshold not yet passed
        Dragging = 2,
        DraggingHandle = 3,       // setup mode
        ConstellationClick = 4,   // moves are ignored
        ConstellationSlider = 5,
        ApplyingAltogether = 6,   // moves are ignored
    };
    enum ConstellationItem {
        MobileFlag = 0,
        HoldPositionFlag = 1,
        HoldOrientationFlag = 2,
        BlockerFlag = 3,
        UseActualPositionFlag = 4,
        MobilitySlider = 5,
        HoldPositionSlider = 6,
        HoldOrientationSlider = 7,
        ApplyAltogetherButton = 8,
        ItemCount = 9,
    };
    static constexpr double kDragThreshold = 5.0;     // pixels from the press before a drag starts
    static constexpr double kDragTaskWeight = 10.0;

    explicit Impl(IKTool *owner);
    ~Impl();

    // SelectionJointSource
    void selectedJoints(std::set<int> &out) override;
    double currentFrame() override;
    SkeletonDef &skeleton() override;
    // The clear removes the keys of every attribute that a drag with this selection would key, at
    // the frames of the range but its ends and the current frame. It is offered only where it
    // would remove one: it never does nothing.
    bool canClearKeyframes() override;
    void clearKeyframes() override;
    // Builds the records and their manipulators as a drag would; gives false, with the records
    // dropped, when there is nothing to clear. `isProtected` tells the frames whose keys stay.
    bool prepareClear(MO_Module *root, std::function<bool(int)> const &isProtected);

    // The view's frame cut to an integer.
    int currentKey() const;
    void activeRange(int &from, int &to) const;
    // The record of `frame`, made empty if missing.
    FrameRecord &record(int frame);
    TIK::IKSolver *currentSolver();

    void rebuildFrames();
    bool buildManipulators(MO_Module *root);
    void resetSolvers();
    void setUpTasks();
    // The tasks, axes and activities of one record's solver; `t` is the frame's place in the range
    // (0 at the first frame, 1 at the last), `first` and `last` the skeletons there. In steps:
    void setUpFrame(FrameRecord &record, double t, SkeletonDef const &first, SkeletonDef const &last);
    void addDragTasks(FrameRecord &record);
    void setUpRoot(TIK::IKSolver &solver);
    void addHoldTasks(FrameRecord &record, double t, SkeletonDef const &first, SkeletonDef const &last);
    void setUpAxes(FrameRecord &record);
    void setActivities(FrameRecord &record);
    void setUpJointPaths();
    void moveTargets(Math::Vector3d const &delta);
    void solveFrames(bool final);
    void commitFrames(CO_CommandManager *manager, int frame);
    void clearFrames();
    int effectiveInterpolation();

    // Setup mode: the skeleton of every candidate module under the selection, the defined joints
    // kept whatever the filters say, with the handles of the defined skeleton; in a pick pass its
    // picking ids are reserved.
    void updateSetupSkeleton(bool pick);
    // Makes sure `adaptor` holds an id for each joint and each bone of `skeleton`.
    static void reserveHandles(SLB_SelectablePickAdaptor &adaptor, SkeletonDef const &skeleton);

    // The colour of the ghost at `frame` of the range from `from` to `to`: the preference colour of
    // the earlier or later frames, its alpha from 0.8 beside `current` down to 0.05 at the far ends.
    static VS_RGBA ghostColour(int from, int current, int to, int frame);
    // One skeleton at its solved positions, bones then joints; in a pick pass joint i has the id
    // adaptor.pickingId() + i and the bone that ends at it pickingId() + n + i.
    static void drawSkeleton(CC_CameraChainTransformCanvasBinder &binder, VU_Painter &painter,
                             SkeletonDef const &skeleton, std::map<int, Math::Point3d> const &selected,
                             SLB_SelectablePickAdaptor &adaptor, bool pick,
                             IKToolRendering::RenderingStyle const &style, bool pressed, bool ghost);
    // The constellation of constellationJoint, or of the lowest selected joint; hides it when no
    // joint is selected. Writes sliderSegments.
    void drawConstellationFor(SkeletonDef const &skeleton, CC_CameraChainTransformCanvasBinder &binder,
                              VU_Painter &painter, TO_AbstractTool::PickMode mode);

    // Makes `module` the only selected node, in one undo step "Selection".
    void selectModule(MO_Module *module);
    void setupPress();
    void flagClick();
    void sliderPress();
    void applySlider(Math::Point2d const &point);
    // The joint the constellation belongs to: constellationJoint, or the first selected joint.
    int constellationTarget() const;

    IKTool *tool;
    Math::Point2d pressPoint;
    Math::Point2d lastPoint;
    bool pressed = false;  // a manipulation press is under way; frames are not rebuilt meanwhile
    int state = Idle;
    SkeletonDef setupSkeleton;
    IKToolPickAdaptor setupPickAdaptor;
    int setupJoint = -1;
    bool bonePicked = false;
    int pendingJoint = -1;  // narrow the selection to it at release, unless a drag came between
    // The joints selected in the tool (selectedJoints of the joint source); value: the joint's
    // position at set-up.
    std::map<int, Math::Point3d> selectedJointMap;
    Math::Point3d dragOrigin;
    std::map<int, FrameRecord> frames;
    std::map<int, JointPath> jointPaths;
    bool hoverFromSetup = false;
    int hoverJoint = -1;
    bool constellationHit = false;
    IKConstellationPickAdaptor constellationPickAdaptor;
    bool constellationVisible = false;
    int constellationJoint = -1;
    int constellationItem = 0;
    int activeSlider = 0;
    Math::Segment2d sliderSegments[3];  // slider tracks in view space, as last drawn
};
