// The pose records of the IK tool: one per frame of the active range, set up, solved and written
// together, and the two one-shot operations built on them (apply altogether, clear keyframes).
#include "iktool/IKToolImpl.h"

#include "bridge/JointDefinition.h"
#include "bridge/SkeletonExtraction.h"
#include "solver/JointActivity.h"

#include <cstdio>
#include <thread>
#include <vector>

namespace {

bool hasChild(SkeletonDef const &skeleton, std::string const &name)
{
    for (SkeletonJointDef const &joint : skeleton)
        if (joint.parentName == name)
            return true;
    return false;
}

bool validIndex(SkeletonDef const &skeleton, int index)
{
    return index >= 0 && index < int(skeleton.size());
}

} // namespace

FrameRecord::FrameRecord() : solver(TIK::createSolver()) {}

FrameRecord::~FrameRecord() = default;

void IKTool::Impl::selectedJoints(std::set<int> &out)
{
    out.clear();
    for (auto const &entry : selectedJointMap)
        out.insert(entry.first);
}

double IKTool::Impl::currentFrame()
{
    return tool->context()->currentFrame();
}

SkeletonDef &IKTool::Impl::skeleton()
{
    return record(currentKey()).skeleton;
}

bool IKTool::Impl::canClearKeyframes()
{
    int from = 0;
    int to = 0;
    activeRange(from, to);
    int const current = currentKey();
    if (!IKToolSettings::canClearKeyframes(from, to, current))
        return false;
    // Careful: a gesture works on the records of the last redraw; asking now must not drop them.
    if (pressed || state != Idle)
        return true;
    MO_Module *root = IKToolUtil::skeletonFromSelection();
    if (!root || !currentSolver() || !IKToolUtil::commandManagerForModule(root))
        return false;
    bool const some = prepareClear(root, [&](int f) { return f == from || f == to || f == current; });
    // The records as a redraw leaves them, without manipulators: the panel reads the skeleton next.
    rebuildFrames();
    return some;
}

bool IKTool::Impl::prepareClear(MO_Module *root, std::function<bool(int)> const &isProtected)
{
    rebuildFrames();
    if (!buildManipulators(root)) {
        clearFrames();
        return false;
    }
    for (auto &[f, r] : frames)
        if (!isProtected(f) && r.manipulators.isValid() && r.manipulators.hasKeyframes())
            return true;
    clearFrames();
    return false;
}

int IKTool::Impl::currentKey() const
{
    return SC_Frames::toInt(tool->context()->currentFrame());
}

void IKTool::Impl::activeRange(int &from, int &to) const
{
    IKToolSettings::instance().activeFrameRange(tool->context()->currentFrame(), from, to);
}

FrameRecord &IKTool::Impl::record(int frame)
{
    return frames.try_emplace(frame).first->second;
}

TIK::IKSolver *IKTool::Impl::currentSolver()
{
    return record(currentKey()).solver.get();
}

void IKTool::Impl::clearFrames()
{
    frames.clear();  // each set's destructor takes its surrogates off the attributes
}

void IKTool::Impl::rebuildFrames()
{
    int from = 0;
    int to = 0;
    activeRange(from, to);
    int const current = currentKey();
    clearFrames();
    jointPaths.clear();

    IKToolUtil::SkeletonExtractionSettings settings;
    settings.definedJointsOnly = true;
    settings.frame = current;
    MO_Module *module = IKToolUtil::concreteModuleFromSelection();
    SkeletonDef base;
    IKToolUtil::skeletonFromModule(module, base, settings);

    // The longest run of frames around the current one in which the skeleton keeps its structure.
    for (int f = from; f <= to; ++f) {
        if (f == current) {
            record(f).skeleton = base;
            continue;
        }
        settings.frame = f;
        SkeletonDef skeleton;
        IKToolUtil::skeletonFromModule(module, skeleton, settings);
        bool const same = skeleton.isEquivalent(base);
        if (f < current && !same) {
            clearFrames();  // the run starts after this frame
            continue;
        }
        if (!same)
            break;  // the run ends before this frame
        record(f).skeleton = std::move(skeleton);
    }
}

bool IKTool::Impl::buildManipulators(MO_Module *root)
{
    for (auto &[frame, r] : frames) {
        if (!r.manipulators.build(frame, root, r.solver.get(), r.skeleton))
            return false;
        r.manipulators.reset();
    }
    return true;
}

void IKTool::Impl::resetSolvers()
{
    for (auto &entry : frames) {
        entry.second.solver->setSkeleton(entry.second.skeleton, 0);
        entry.second.positionTasks.clear();  // the solver dropped them
    }
}

void IKTool::Impl::setUpTasks()
{
    if (frames.empty())
        return;
    int const first = frames.begin()->first;
    int const last = frames.rbegin()->first;
    SkeletonDef const &firstSkeleton = frames.begin()->second.skeleton;
    SkeletonDef const &lastSkeleton = frames.rbegin()->second.skeleton;
    for (auto &[frame, r] : frames) {
        double const t = first == last ? 0.0 : double(frame - first) / double(last - first);
        setUpFrame(r, t, firstSkeleton, lastSkeleton);
    }
    setUpJointPaths();
}

// The order of the steps fixes the order of the solver's tasks: drag tasks, hold tasks, then the
// shadow tasks that setShadowPosing adds.
void IKTool::Impl::setUpFrame(FrameRecord &r, double t, SkeletonDef const &first, SkeletonDef const &last)
{
    addDragTasks(r);
    setUpRoot(*r.solver);
    if (!bonePicked)
        addHoldTasks(r, t, first, last);
    setUpAxes(r);
    setActivities(r);
    r.solver->setShadowPosing(IKToolSettings::instance().enableShadowPosing());
}

void IKTool::Impl::addDragTasks(FrameRecord &r)
{
    // Careful: an index that no longer fits this skeleton (a selection older than a change of the
    // graph) is skipped.
    for (auto &[k, value] : selectedJointMap) {
        if (!validIndex(r.skeleton, k))
            continue;
        SkeletonJointDef const &joint = r.skeleton[std::size_t(k)];
        value = joint.position;
        TIK::IKPositionTask *task = r.solver->addPositionTask(joint.name.c_str(), 0);
        if (task) {
            task->setTarget(joint.position.x, joint.position.y, joint.position.z);
            task->setWeight(kDragTaskWeight);
        }
        r.positionTasks[k] = task;
    }
}

namespace {

// The flags of IKJoint::setMobility: the last argument chooses rotation or translation.
constexpr bool kRotationAxes = true;
constexpr bool kTranslationAxes = false;

void setRotationZ(TIK::IKJoint &joint, bool mobile) { joint.setMobility(false, false, mobile, kRotationAxes); }
void setTranslationXY(TIK::IKJoint &joint, bool mobile) { joint.setMobility(mobile, mobile, false, kTranslationAxes); }

} // namespace

// A pick on a bone always keeps the root in place.
void IKTool::Impl::setUpRoot(TIK::IKSolver &solver)
{
    IKToolSettings const &settings = IKToolSettings::instance();
    TIK::IKJoint *root = solver.rootJoint();
    bool const translates = settings.enableRootTranslation() && !bonePicked;
    solver.setRootTranslationEnabled(translates);
    if (root) {
        root->setTranslationEnabled(translates, false);
        setTranslationXY(*root, translates);
        if (translates) {
            root->setWeight(TIK::IKJoint::TranslationX, settings.rootTranslationGain());
            root->setWeight(TIK::IKJoint::TranslationY, settings.rootTranslationGain());
        }
    }
    solver.setReservedLevel(-4);
}

// For the joints that are not dragged: a held position (on the straight line from its first to its
// last place over the range, unless it uses its actual position) and a held orientation.
void IKTool::Impl::addHoldTasks(FrameRecord &r, double t, SkeletonDef const &first, SkeletonDef const &last)
{
    for (SkeletonJointDef const &joint : r.skeleton) {
        if (selectedJointMap.count(joint.index))
            continue;
        if (joint.hasPositionTask()) {
            if (TIK::IKPositionTask *task = r.solver->addPositionTask(joint.name.c_str(), 0)) {
                task->setWeight(joint.positionTaskWeight());
                Math::Point3d target = joint.position;
                if (!joint.useActualPositionWhenInterpolating() && validIndex(first, joint.index) &&
                    validIndex(last, joint.index)) {
                    target = Math::Point3d::interpolate(t, first[std::size_t(joint.index)].position,
                                                        last[std::size_t(joint.index)].position);
                }
                task->setTarget(target.x, target.y, target.z);
            }
        }
        if (joint.hasOrientationTask() && hasChild(r.skeleton, joint.name)) {
            if (TIK::IKOrientationTask *task = r.solver->addOrientationTask(joint.name.c_str(), 0)) {
                task->setWeight(joint.orientationTaskWeight());
                task->setTarget(0.0, 0.0, 0.0, 1.0);
            }
        }
    }
}

// Each joint turns about z when it is mobile and has a child; no joint but the root translates.
void IKTool::Impl::setUpAxes(FrameRecord &r)
{
    for (SkeletonJointDef const &joint : r.skeleton) {
        TIK::IKJoint *j = r.solver->joint(joint.name.c_str());
        if (!j)
            continue;
        if (joint.name != "root")
            setTranslationXY(*j, false);
        setRotationZ(*j, joint.isMobile() && joint.childCount != 0);
        // Index 2 is read by no residual: the mobility weight has no effect on the solution.
        j->setWeight(TIK::IKJoint::TranslationZ, joint.mobilityWeight());
    }
}

// How much each joint takes part, from the dragged joints and the blockers.
void IKTool::Impl::setActivities(FrameRecord &r)
{
    std::vector<int> dragged;
    for (auto const &entry : selectedJointMap)
        dragged.push_back(entry.first);
    std::vector<bool> blockers;
    for (SkeletonJointDef const &joint : r.skeleton)
        blockers.push_back(joint.isBlocker());
    std::vector<double> const activity = TIK::jointActivities(r.skeleton, dragged, blockers, bonePicked);
    for (std::size_t i = 0; i < r.skeleton.size() && i < activity.size(); ++i)
        if (TIK::IKJoint *j = r.solver->joint(r.skeleton[i].name.c_str()))
            j->setActivity(activity[i]);
}

void IKTool::Impl::setUpJointPaths()
{
    jointPaths.clear();
    if (frames.empty())
        return;
    SkeletonDef const &first = frames.begin()->second.skeleton;
    SkeletonDef const &last = frames.rbegin()->second.skeleton;
    SkeletonDef const &current = skeleton();  // references into the map stay valid as it grows
    for (SkeletonJointDef const &joint : first) {
        int const k = joint.index;
        if (!selectedJointMap.count(k) || !validIndex(first, k) || !validIndex(last, k) || !validIndex(current, k))
            continue;
        JointPath &path = jointPaths[k];
        path.start = first[std::size_t(k)].position;
        path.end = last[std::size_t(k)].position;
        path.base = current[std::size_t(k)].position;
        path.target = path.base;
    }
}

int IKTool::Impl::effectiveInterpolation()
{
    int const current = currentKey();
    int const first = frames.empty() ? current : frames.begin()->first;
    int const last = frames.empty() ? current : frames.rbegin()->first;
    return IKToolUtil::effectiveInterpolation(state == ApplyingAltogether, int(frames.size()),
                                              IKToolSettings::instance().interpolationType(), current, first, last);
}

void IKTool::Impl::moveTargets(Math::Vector3d const &delta)
{
    if (frames.empty())
        return;
    int const type = effectiveInterpolation();
    for (auto &entry : jointPaths) {
        entry.second.target = entry.second.base + delta;
        IKToolUtil::fitPath(entry.second);
    }
    int const current = currentKey();
    int const first = frames.begin()->first;
    int const last = frames.rbegin()->first;
    SkeletonDef const &atCurrent = record(current).skeleton;
    for (auto &[f, r] : frames) {
        for (auto const &[k, task] : r.positionTasks) {
            if (!task || !validIndex(r.skeleton, k))
                continue;
            Math::Point3d const own = r.skeleton[std::size_t(k)].position;
            Math::Point3d const here = validIndex(atCurrent, k) ? atCurrent[std::size_t(k)].position : own;
            auto const path = jointPaths.find(k);
            Math::Point3d const target = IKToolUtil::dragTarget(
                type, own, here, path == jointPaths.end() ? nullptr : &path->second, delta, f, current, first, last);
            task->setTarget(target.x, target.y, target.z);
        }
    }
}

namespace {

bool &workerThreadSwitch()
{
    static bool enabled = false;
    return enabled;
}

// Solves one frame's problem and copies the solved positions into its skeleton. Touches nothing
// but the record's solver and skeleton, so records may be solved on different threads.
void solveRecord(FrameRecord &r, int maxIterations)
{
    if (!TIK::solve(r.solver.get(), maxIterations, 0.5)) {
        // Nothing to solve (every joint frozen): the pose stays as it was.
        std::printf("######################################\n");
        std::printf("solve returned: %d\n", 0);
        std::fflush(stdout);
        r.solver->resetToRest();
    }
    r.solver->updateJoints();
    for (SkeletonJointDef &joint : r.skeleton)
        if (TIK::IKJoint *j = r.solver->joint(joint.name.c_str()))
            joint.solvedPosition = j->position();
}

} // namespace

void IKTool::setSolveOnWorkerThread(bool enable)
{
    workerThreadSwitch() = enable;
}

bool IKTool::solveOnWorkerThread()
{
    return workerThreadSwitch();
}

void IKTool::Impl::solveFrames(bool final)
{
    int const maxIterations = IKToolSettings::instance().maxIterations();
    std::vector<FrameRecord *> records;
    for (auto &entry : frames)
        records.push_back(&entry.second);
    if (workerThreadSwitch() && records.size() > 1) {
        // Odd places on the worker, even ones here; the join comes before any scene access.
        std::thread worker([&records, maxIterations] {
            for (std::size_t i = 1; i < records.size(); i += 2)
                solveRecord(*records[i], maxIterations);
        });
        for (std::size_t i = 0; i < records.size(); i += 2)
            solveRecord(*records[i], maxIterations);
        worker.join();
    } else {
        for (FrameRecord *r : records)
            solveRecord(*r, maxIterations);
    }
    for (FrameRecord *r : records)
        if (r->manipulators.isValid())
            r->manipulators.update();
    // The records share the scene's attributes and each update replaced the surrogates of the one
    // before: leave the view showing the current frame's pose.
    if (!final) {
        FrameRecord &current = record(currentKey());
        if (current.manipulators.isValid())
            current.manipulators.update();
    }
}

void IKTool::Impl::commitFrames(CO_CommandManager *manager, int)
{
    for (auto &entry : frames)
        if (entry.second.manipulators.isValid())
            entry.second.manipulators.commit(manager);
}

void IKTool::Impl::clearKeyframes()
{
    int from = 0;
    int to = 0;
    activeRange(from, to);
    int const current = currentKey();
    auto const isProtected = [&](int f) { return f == from || f == to || f == current; };

    MO_Module *root = IKToolUtil::skeletonFromSelection();
    if (!root || !currentSolver())
        return;
    CO_CommandManager *manager = IKToolUtil::commandManagerForModule(root);
    if (!manager)
        return;
    // Every attribute that a drag would key loses its keys, frozen joints' too: a drag writes a
    // key on each of them, moved or not.
    if (prepareClear(root, isProtected)) {
        CO_CommandAccumScope scope(manager, QStringLiteral("IK Clear All Affected Keyframes"));
        for (auto &[f, r] : frames)
            if (!isProtected(f) && r.manipulators.isValid())
                r.manipulators.clearKeyframes(manager);
    }
    clearFrames();
    selectedJointMap.clear();
    jointPaths.clear();
}

void IKTool::Impl::updateSetupSkeleton(bool pick)
{
    SkeletonDef const defined = skeleton();
    double const f = currentFrame();
    IKToolUtil::SkeletonExtractionSettings settings;
    settings.ignoredKeywords = IKToolUtil::getIgnoredKeywords();
    settings.definedJointsOnly = false;
    settings.frame = f;
    for (SkeletonJointDef const &joint : defined)
        if (MO_Module *module = joint.module.get())
            settings.forcedModules.insert(module);
    IKToolUtil::skeletonFromModule(IKToolUtil::concreteModuleFromSelection(), setupSkeleton, settings);
    IKToolUtil::copyHandlesToSkeleton(setupSkeleton, defined, f);
    if (pick)
        reserveHandles(setupPickAdaptor, setupSkeleton);
}

void IKTool::Impl::reserveHandles(SLB_SelectablePickAdaptor &adaptor, SkeletonDef const &skeleton)
{
    int const needed = 2 * int(skeleton.size());
    if (needed > adaptor.nbHandles())
        adaptor.reserveHandles(needed);
}
