#include "bridge/ModuleManipulator.h"

#include "bridge/JointDefinition.h"
#include "bridge/ModuleEvaluation.h"
#include "bridge/SkeletonExtraction.h"
#include "skeleton/SkeletonDef.h"
#include "solver/IKSolver.h"

#include <cmath>
#include <cstdio>
#include <algorithm>
#include <map>
#include <type_traits>
#include <utility>

namespace {

double const kPi = 3.141592653589793;
// Handles are applied after every rotation; their order starts here, so the tree is assumed to be
// shallower than this many steps.
int const kHandleOrderBase = 1000;
// The order of the root translation: before every rotation.
int const kRootOrder = -1;

bool isBoneKeyword(QString const &keyword)
{
    return keyword == BendyBoneModule::Keyword() || keyword == GameBoneModule::Keyword();
}

// ---- The attribute kinds a manipulator writes -------------------------------------------------
//
// Each kind says how to read its attribute at a frame (with the two status flags of the read:
// onKeyframe, then constantSegment), how to make its surrogate, how to read and write the
// surrogate's value, and which command sets a value at a frame.

struct Read {
    bool onKeyframe = false;
    bool constantSegment = false;
};

struct PositionKind {  // a peg's position
    using Attr = AT_Position3dAttr;
    using Surrogate = AT_Position3dAttrSurrogate;
    using Value = Math::Point3d;
    static Value read(Attr const *attr, double frame, Read &flags)
    {
        Value value;
        attr->getValue(frame, value, &flags.onKeyframe, &flags.constantSegment);
        return value;
    }
    static Value get(Surrogate const &s, double frame) { return s.getValue(frame); }
    static void set(Surrogate &s, Value const &v) { s.setValue(v); }
    static Math::Point3d toPoint3d(Value const &v) { return v; }
    static Value fromPoint3d(Math::Point3d const &p) { return p; }
    static std::unique_ptr<CO_Command> command(SC_SceneCommon *scene, Attr *attr, double frame, Value const &v)
    {
        return ::Attr::Position3d::createSetValueCurrentFrameCmd(scene, attr, frame, v.x, v.y, v.z, false);
    }
};

struct OffsetKind {  // a deformer's 2D offset
    using Attr = AT_Position2dAttr;
    using Surrogate = AT_Position2dAttrSurrogate;
    using Value = Math::Point2d;
    static Value read(Attr const *attr, double frame, Read &flags)
    {
        Value value;
        attr->getValue(frame, value.x, value.y, &flags.constantSegment);
        return value;
    }
    static Value get(Surrogate const &s, double frame) { return s.getValue(frame); }
    static void set(Surrogate &s, Value const &v) { s.setValue(v); }
    static Math::Point3d toPoint3d(Value const &v) { return Math::Point3d(v.x, v.y, 0.0); }
    static Value fromPoint3d(Math::Point3d const &p) { return p.toPoint2d(); }
    static std::unique_ptr<CO_Command> command(SC_SceneCommon *scene, Attr *attr, double frame, Value const &v)
    {
        return ::Attr::Position2d::createSetValueCurrentFrameCmd(scene, attr, frame, v.x, v.y, false);
    }
};

struct RotationKind {  // a peg's rotation; only z turns
    using Attr = AT_Rotation3dAttr;
    using Surrogate = AT_Rotation3dAttrSurrogate;
    using Value = Math::Angle3d;
    static Value read(Attr const *attr, double frame, Read &flags)
    {
        Value value;
        attr->getValue(frame, value, &flags.onKeyframe, &flags.constantSegment);
        return value;
    }
    static Value get(Surrogate const &s, double frame) { return s.getValue(frame); }
    static void set(Surrogate &s, Value const &v) { s.setValue(v); }
    static void turn(Surrogate &s, double frame, double degrees)
    {
        Value value = s.getValue(frame);
        value.z += degrees;
        s.setValue(value);
    }
    static std::unique_ptr<CO_Command> command(SC_SceneCommon *scene, Attr *attr, double frame, Value const &v)
    {
        return ::Attr::Rotation3d::createSetValueCurrentFrameCmd(scene, attr, frame, v, false, true, false, false);
    }
};

struct AngleKind {  // a deformer's orientation, degrees
    using Attr = AT_DoubleAttr;
    using Surrogate = AT_ScalarSimpleAttrSurrogate;
    using Value = double;
    static Value read(Attr const *attr, double frame, Read &flags)
    {
        return attr->value(frame, &flags.onKeyframe, &flags.constantSegment);
    }
    static Value get(Surrogate const &s, double) { return s.value(); }
    static void set(Surrogate &s, Value v) { s.setValue(v); }
    static void turn(Surrogate &s, double, double degrees) { s.setValue(s.value() + degrees); }
    static std::unique_ptr<CO_Command> command(SC_SceneCommon *scene, Attr *attr, double frame, Value v)
    {
        return ::Attr::Double::createSetValueCurrentFrameCmd(scene, attr, frame, v, false, true, false, false);
    }
};

// The signed angle in degrees that turns direction `a` onto direction `b` (both unit vectors, or
// zero), from the sine alone: exact within +-90 degrees, and a larger turn takes several steps.
double turnDegrees(Math::Vector2d const &a, Math::Vector2d const &b)
{
    return std::asin(b.y * a.x - b.x * a.y) * 180.0 / kPi;
}

Math::Vector2d direction(Math::Point3d const &from, Math::Point3d const &to)
{
    Math::Vector2d d(to.x - from.x, to.y - from.y);
    d.Normalize();
    return d;
}

// Where a parent module's bone turns about: a deformer at its own start, any other module at its
// joint position.
enum class Pivot { Joint, DeformerStart };

Math::Point3d pivotPoint(MO_Module *module, int frame, Pivot pivot)
{
    return pivot == Pivot::DeformerStart ? IKToolUtil::getModuleOffsetJointAtFrame(module, frame)
                                         : IKToolUtil::getModuleJointPositionAtFrame(module, frame);
}

// ---- The manipulators ---------------------------------------------------------------------------

// One joint of one pose: the attribute that moves it, previewed through a surrogate.
class ModuleManipulator {
public:
    struct Context {
        TIK::IKSolver *solver = nullptr;  // the pose's solver; not owned
        SkeletonDef *skeleton = nullptr;  // the pose's skeleton; not owned
        int jointIndex = -1;              // `index` of this manipulator's joint
        double frame = 0.0;               // the pose's frame
    };

    explicit ModuleManipulator(Context const &context) : context_(context) {}
    virtual ~ModuleManipulator() = default;
    ModuleManipulator(ModuleManipulator const &) = delete;
    ModuleManipulator &operator=(ModuleManipulator const &) = delete;

    virtual void detachSurrogate() = 0;
    virtual void attachSurrogate() = 0;
    virtual void update() = 0;
    virtual void commit(CO_CommandManager *manager) = 0;
    virtual MO_Module *module() const = 0;  // the module whose attribute is written
    virtual char const *displayName() const = 0;
    virtual MO_Module *jointModule() const = 0;
    virtual void dump() const = 0;
    virtual void clearKeyframe(CO_CommandManager *manager) = 0;
    virtual bool hasKeyframe() const = 0;  // the attribute holds a keyframe at the frame

    bool isValid() const { return valid_; }

protected:
    // The joint of this manipulator; careful: null when the index is not in the skeleton.
    SkeletonJointDef *joint() const { return jointAt(context_.jointIndex); }
    SkeletonJointDef *jointAt(int index) const
    {
        SkeletonDef *skeleton = context_.skeleton;
        return skeleton && index >= 0 && index < int(skeleton->size()) ? &(*skeleton)[std::size_t(index)] : nullptr;
    }
    int truncatedFrame() const { return int(context_.frame); }

    Context context_;
    bool valid_ = true;  // false when made on a null target
};

// What every manipulator does with its attribute of kind K: make and attach the surrogate, detach
// it, write it as a keyframe, clear the keyframe.
template <class K>
class AttributeManipulator : public ModuleManipulator {
public:
    // The two flags given to the surrogate after the frame, from the read at construction.
    enum class Flags { FromRead, ConstantSegmentOnly, ConstantFromPreference };

    AttributeManipulator(Context const &context, MO_Module *target, typename K::Attr *attr, Flags flags)
        : ModuleManipulator(context), target_(target), attr_(attr)
    {
        if (!target_ || !attr_) {
            valid_ = false;
            target_ = nullptr;
            return;
        }
        Read read;
        startValue_ = K::read(attr_, context_.frame, read);
        bool constantSegment = read.constantSegment;
        bool onKeyframe = read.onKeyframe;
        if (flags != Flags::FromRead)
            onKeyframe = false;
        if (flags == Flags::ConstantFromPreference)
            constantSegment = tuPref->getBoolValue(QStringLiteral("SP_CONSTANT_SEGMENT"), false);
        surrogate_ = std::make_shared<typename K::Surrogate>(attr_, startValue_, false, truncatedFrame(),
                                                             constantSegment, onKeyframe);
        attr_->setSurrogate(surrogate_);
    }

    ~AttributeManipulator() override
    {
        if (target_)
            detachSurrogate();
    }

    void detachSurrogate() override
    {
        attr_->resetSurrogate();
        target_->setDirty();
    }
    void attachSurrogate() override { attr_->setSurrogate(surrogate_); }

    void commit(CO_CommandManager *manager) override
    {
        if (!mayWrite())
            return;
        typename K::Value const value = K::get(*surrogate_, context_.frame);
        detachSurrogate();
        SC_SceneCommon *scene = target_->sceneCommon();
        AT_KeyframeCmds::AddKeyframe(scene, truncatedFrame(), attr_, true, false, false, false);
        std::unique_ptr<CO_Command> command = K::command(scene, attr_, context_.frame, value);
        if (command && manager)
            manager->execute(std::move(command), QString());
    }

    void clearKeyframe(CO_CommandManager *manager) override
    {
        detachSurrogate();
        int const frame = truncatedFrame();
        std::unique_ptr<CO_Command> command = AT_KeyframeCmds::DeleteKeyframe(frame, frame, attr_);
        if (command && manager)
            manager->execute(std::move(command), QString());
    }

    bool hasKeyframe() const override
    {
        std::vector<int> const keys = attr_->keyframes();
        return std::binary_search(keys.begin(), keys.end(), truncatedFrame());
    }

    MO_Module *module() const override { return target_; }

protected:
    // Whether commit writes: by default only while this manipulator's surrogate is the one
    // attached, so that of several manipulators on one attribute the last attached writes alone.
    virtual bool mayWrite() const { return ownsAttribute(); }
    bool ownsAttribute() const { return attr_->surrogate().get() == surrogate_.get(); }

    typename K::Value surrogateValue() const { return K::get(*surrogate_, context_.frame); }

    MO_Module *target_;  // null when invalid
    typename K::Attr *attr_;
    std::shared_ptr<typename K::Surrogate> surrogate_;  // the attribute holds a further share while attached
    typename K::Value startValue_{};                    // the attribute's value at the frame, at construction
};

// The root moves by translation: the solved displacement of its joint since construction, taken
// into the space of its parent and into field units, added to the start value.
template <class K>
class RootManipulator : public AttributeManipulator<K> {
    using Base = AttributeManipulator<K>;

public:
    RootManipulator(ModuleManipulator::Context const &context, MO_Module *target, typename K::Attr *attr,
                    typename Base::Flags flags)
        : Base(context, target, attr, flags)
    {
        if (SkeletonJointDef const *j = this->joint())
            startSolvedPosition_ = j->solvedPosition;
    }

    void update() override
    {
        SkeletonJointDef const *j = this->joint();
        if (!j)
            return;
        Math::Vector3d const delta = j->solvedPosition - startSolvedPosition_;
        MO_BaseContext const context(MO_FrameKey(this->context_.frame), 0);
        Math::Matrix4x4 inverse;
        if (this->target_->inputModule(0)) {
            if (CC_TransformationPtr parent = this->target_->computeTransformationParent(context, 0)) {
                try {
                    inverse = parent->matrix(true).getInverse();
                } catch (Math::SingularMatrixError const &) {
                    // a flattened parent: the delta is taken as it is
                }
            }
        }
        Math::Point3d const value = K::toPoint3d(this->startValue_) + this->target_->sceneMetrics().fromOGL(inverse * delta);
        if (!std::isfinite(value.x) || !std::isfinite(value.y) || !std::isfinite(value.z))
            return;  // a solve that went wrong leaves the value as it was
        K::set(*this->surrogate_, K::fromPoint3d(value));
        this->target_->setDirty();
    }

    MO_Module *jointModule() const override { return this->target_; }

    void dump() const override
    {
        std::printf("%s : frame: %f\n", this->displayName(), this->context_.frame);
        Math::Point3d const value = K::toPoint3d(this->surrogateValue());
        std::printf("  x: %f y: %f\n", value.x, value.y);
    }

protected:
    bool mayWrite() const override { return true; }  // a root writes unconditionally

private:
    Math::Point3d startSolvedPosition_;  // the joint's solved position at construction
};

// A joint or a handle moves because the parent module turns: by the angle from where the joint is
// now (under every surrogate in force) to where it was solved, about the parent's pivot. Each
// update turns by the angle still missing.
template <class K>
class TurningManipulator : public AttributeManipulator<K> {
    using Base = AttributeManipulator<K>;

public:
    TurningManipulator(ModuleManipulator::Context const &context, MO_Module *target, typename K::Attr *attr,
                       MO_Module *jointModule, Pivot pivot)
        : Base(context, target, attr, Base::Flags::FromRead), jointModule_(jointModule), pivot_(pivot)
    {
    }

    MO_Module *jointModule() const override { return jointModule_; }

    // Only the rotation kind prints; the scalar kinds print nothing.
    void dump() const override
    {
        if constexpr (std::is_same_v<K, RotationKind>) {
            std::printf("%s : frame: %f\n", this->displayName(), this->context_.frame);
            std::printf("  angleZ: %f\n", this->surrogateValue().z);
        }
    }

protected:
    // Turns the parent by the angle from direction `from` to direction `to`.
    void turn(Math::Vector2d const &from, Math::Vector2d const &to)
    {
        double const degrees = turnDegrees(from, to);
        if (!std::isfinite(degrees))
            return;  // a solve that went wrong leaves the value as it was
        K::turn(*this->surrogate_, this->context_.frame, degrees);
        this->target_->setDirty();
        if (jointModule_)
            jointModule_->setDirty();
    }
    Math::Point3d parentPivot() const { return pivotPoint(this->target_, this->truncatedFrame(), pivot_); }

    MO_Module *jointModule_;  // the module of the joint moved; not owned
    Pivot pivot_;             // how the parent's pivot is found
};

template <class K>
class JointManipulator : public TurningManipulator<K> {
    using Base = TurningManipulator<K>;

public:
    JointManipulator(ModuleManipulator::Context const &context, MO_Module *target, typename K::Attr *attr,
                     MO_Module *jointModule, Pivot pivot)
        : Base(context, target, attr, jointModule, pivot),
          jointIsBendy_(jointModule && isBoneKeyword(jointModule->typeKeyword()))
    {
    }

    void update() override
    {
        SkeletonJointDef const *j = this->joint();
        if (!j)
            return;
        this->attachSurrogate();
        int const frame = this->truncatedFrame();
        Math::Point3d const parentPoint = this->parentPivot();
        Math::Point3d const current = pivotPoint(this->jointModule_, frame, jointIsBendy_ ? Pivot::DeformerStart : Pivot::Joint);
        this->turn(direction(parentPoint, current), direction(parentPoint, j->solvedPosition));
    }

private:
    bool jointIsBendy_;  // the joint's module is a bone: its joint is at its start
};

template <class K>
class HandleManipulator : public TurningManipulator<K> {
    using Base = TurningManipulator<K>;

public:
    HandleManipulator(ModuleManipulator::Context const &context, MO_Module *target, typename K::Attr *attr,
                      MO_Module *handleModule, Pivot pivot, bool holdsParentOrientation)
        : Base(context, target, attr, handleModule, pivot), holdsParentOrientation_(holdsParentOrientation)
    {
        SkeletonJointDef const *handle = this->joint();
        if (handle && context.skeleton) {
            auto const parent = context.skeleton->find(handle->parentName);
            if (parent != context.skeleton->end())
                parentJointIndex_ = parent->index;
        }
    }

    void update() override
    {
        SkeletonJointDef const *handle = this->joint();
        if (!handle)
            return;
        this->attachSurrogate();
        MO_BaseContext const context(MO_FrameKey(this->context_.frame), 0);
        Math::Point3d const pivot = this->parentPivot();
        Math::Point3d const tip = pivot + IKToolUtil::worldMatrix(this->jointModule_, context) *
                                              IKToolUtil::handleOrientationForModule(this->jointModule_);
        Math::Vector2d wanted = direction(pivot, handle->solvedPosition);
        // A parent held still in this solve keeps the direction of the pose: the bone does not
        // follow the handle.
        SkeletonJointDef const *parent = this->jointAt(parentJointIndex_);
        if (holdsParentOrientation_ && parent && this->context_.solver) {
            TIK::IKJoint const *solved = this->context_.solver->joint(parent->name.c_str());
            if (solved && solved->activity == 0.0)
                wanted = direction(parent->position, handle->position);
        }
        this->turn(direction(pivot, tip), wanted);
    }

private:
    bool holdsParentOrientation_;  // the parent joint has an orientation task
    int parentJointIndex_ = -1;    // index of the parent joint, -1 when not found
};

// ---- The ten concrete classes -------------------------------------------------------------------

BendyBoneModule *asBone(MO_Module *module)
{
    return dynamic_cast<BendyBoneModule *>(module);
}
CurveModule *asCurve(MO_Module *module)
{
    return dynamic_cast<CurveModule *>(module);
}
OffsetModule *asOffset(MO_Module *module)
{
    return dynamic_cast<OffsetModule *>(module);
}

class RootAnimatedManipulator final : public RootManipulator<PositionKind> {
public:
    RootAnimatedManipulator(Context const &c, MO_AnimatedModule *target)
        : RootManipulator(c, target, target ? target->positionAttr() : nullptr, Flags::ConstantSegmentOnly)
    {
    }
    char const *displayName() const override { return "Root Manipulator"; }
};

class RootBendyBoneManipulator final : public RootManipulator<OffsetKind> {
public:
    RootBendyBoneManipulator(Context const &c, BendyBoneModule *target)
        : RootManipulator(c, target, target ? target->offsetAttr() : nullptr, Flags::ConstantFromPreference)
    {
    }
    char const *displayName() const override { return "Root Bendy Bone Manipulator"; }
};

class RootOffsetManipulator final : public RootManipulator<OffsetKind> {
public:
    RootOffsetManipulator(Context const &c, OffsetModule *target)
        : RootManipulator(c, target, target ? target->offset() : nullptr, Flags::ConstantSegmentOnly)
    {
    }
    char const *displayName() const override { return "Root Offset Manipulator"; }
};

// The three scalar joint classes share one display name on purpose.
char const *const kScalarJointName = "Joint Module With Bendy Bone Parent Manipulator";

class JointModuleWithAnimatedParentManipulator final : public JointManipulator<RotationKind> {
public:
    JointModuleWithAnimatedParentManipulator(Context const &c, MO_AnimatedModule *target, MO_Module *joint)
        : JointManipulator(c, target, target ? target->rotationAttr() : nullptr, joint, Pivot::Joint)
    {
    }
    char const *displayName() const override { return "Joint Module With Animated Parent Manipulator"; }
};

class JointModuleWithBendyBoneParentManipulator final : public JointManipulator<AngleKind> {
public:
    JointModuleWithBendyBoneParentManipulator(Context const &c, BendyBoneModule *target, MO_Module *joint)
        : JointManipulator(c, target, target ? target->orientationAttr() : nullptr, joint, Pivot::DeformerStart)
    {
    }
    char const *displayName() const override { return kScalarJointName; }
};

class JointModuleWithCurveParentManipulator final : public JointManipulator<AngleKind> {
public:
    JointModuleWithCurveParentManipulator(Context const &c, CurveModule *target, MO_Module *joint)
        : JointManipulator(c, target, target ? target->orientation1() : nullptr, joint, Pivot::Joint)
    {
    }
    char const *displayName() const override { return kScalarJointName; }
};

class JointModuleWithOffsetParentManipulator final : public JointManipulator<AngleKind> {
public:
    JointModuleWithOffsetParentManipulator(Context const &c, OffsetModule *target, MO_Module *joint)
        : JointManipulator(c, target, target ? target->orientation() : nullptr, joint, Pivot::DeformerStart)
    {
    }
    char const *displayName() const override { return kScalarJointName; }
};

class AnimatedModuleHandleManipulator final : public HandleManipulator<RotationKind> {
public:
    AnimatedModuleHandleManipulator(Context const &c, MO_AnimatedModule *target, MO_Module *handle, bool hold)
        : HandleManipulator(c, target, target ? target->rotationAttr() : nullptr, handle, Pivot::Joint, hold)
    {
    }
    char const *displayName() const override { return "Animated Module Handle Manipulator"; }
};

// The two scalar handle classes share one display name on purpose.
char const *const kScalarHandleName = "BendyBoneModule Handle Manipulator";

class BendyBoneModuleHandleManipulator final : public HandleManipulator<AngleKind> {
public:
    BendyBoneModuleHandleManipulator(Context const &c, BendyBoneModule *target, MO_Module *handle, bool hold)
        : HandleManipulator(c, target, target ? target->orientationAttr() : nullptr, handle, Pivot::DeformerStart, hold)
    {
    }
    char const *displayName() const override { return kScalarHandleName; }

protected:
    // The one class that says why it does not write.
    bool mayWrite() const override
    {
        if (ownsAttribute())
            return true;
        std::printf("Preventing second update on attribute of %s...\n", target_->instanceName().toUtf8().constData());
        return false;
    }
};

class CurveModuleHandleManipulator final : public HandleManipulator<AngleKind> {
public:
    CurveModuleHandleManipulator(Context const &c, CurveModule *target, MO_Module *handle, bool hold)
        : HandleManipulator(c, target, target ? target->orientation1() : nullptr, handle, Pivot::Joint, hold)
    {
    }
    char const *displayName() const override { return kScalarHandleName; }
};

using ManipulatorPtr = std::unique_ptr<ModuleManipulator>;

// The manipulator of a joint without parent joint; null for a module kind that cannot be a root.
ManipulatorPtr makeRoot(ModuleManipulator::Context const &c, MO_Module *module)
{
    if (MO_AnimatedModule *animated = module->toAnimatedModule())
        return std::make_unique<RootAnimatedManipulator>(c, animated);
    if (isBoneKeyword(module->typeKeyword()))
        return std::make_unique<RootBendyBoneManipulator>(c, asBone(module));
    if (module->typeKeyword() == OffsetModule::Keyword())
        return std::make_unique<RootOffsetManipulator>(c, asOffset(module));
    return nullptr;
}

// The manipulator that turns `parent` for a joint of `module`; null for a parent kind that cannot
// turn.
ManipulatorPtr makeJoint(ModuleManipulator::Context const &c, MO_Module *parent, MO_Module *module)
{
    if (MO_AnimatedModule *animated = parent->toAnimatedModule())
        return std::make_unique<JointModuleWithAnimatedParentManipulator>(c, animated, module);
    QString const &keyword = parent->typeKeyword();
    if (isBoneKeyword(keyword))
        return std::make_unique<JointModuleWithBendyBoneParentManipulator>(c, asBone(parent), module);
    if (keyword == CurveModule::Keyword())
        return std::make_unique<JointModuleWithCurveParentManipulator>(c, asCurve(parent), module);
    if (keyword == OffsetModule::Keyword())
        return std::make_unique<JointModuleWithOffsetParentManipulator>(c, asOffset(parent), module);
    return nullptr;
}

// The manipulator that turns `parent` for its handle; null for a kind without one (an offset).
ManipulatorPtr makeHandle(ModuleManipulator::Context const &c, MO_Module *parent, MO_Module *module, bool hold)
{
    if (MO_AnimatedModule *animated = parent->toAnimatedModule())
        return std::make_unique<AnimatedModuleHandleManipulator>(c, animated, module, hold);
    QString const &keyword = parent->typeKeyword();
    if (isBoneKeyword(keyword))
        return std::make_unique<BendyBoneModuleHandleManipulator>(c, asBone(parent), module, hold);
    if (keyword == CurveModule::Keyword())
        return std::make_unique<CurveModuleHandleManipulator>(c, asCurve(parent), module, hold);
    return nullptr;
}

} // namespace

// ---- ManipulatorSet -----------------------------------------------------------------------------

struct ManipulatorSet::Impl {
    using Key = std::pair<int, MO_Module *>;  // (order, module written): application order

    bool valid = true;
    double frame = 0.0;
    MO_Module *root = nullptr;  // set by a successful build
    std::map<Key, ManipulatorPtr> manipulators;

    template <class Pass>
    void forEach(Pass pass)
    {
        for (auto &entry : manipulators)
            pass(*entry.second);
    }

    // Detach and attach again, so that on a shared attribute the last in order is attached.
    void reattach()
    {
        forEach([](ModuleManipulator &m) { m.detachSurrogate(); });
        forEach([](ModuleManipulator &m) { m.attachSurrogate(); });
    }

    // Careful: destroys the manipulators, which detach their surrogates.
    void startOver()
    {
        manipulators.clear();
        valid = true;
        frame = 0.0;
        root = nullptr;
    }
};

ManipulatorSet::ManipulatorSet() : impl_(std::make_unique<Impl>()) {}

ManipulatorSet::~ManipulatorSet() = default;

bool ManipulatorSet::build(double frame, MO_Module *root, TIK::IKSolver *solver, SkeletonDef &skeleton)
{
    impl_->manipulators.clear();
    impl_->root = nullptr;
    if (skeleton.empty() || !IKToolUtil::isUsableFrame(frame)) {
        impl_->valid = false;
        return false;
    }
    impl_->valid = true;
    impl_->frame = frame;

    auto fail = [this] {
        impl_->startOver();
        impl_->valid = false;
        return false;
    };
    for (SkeletonJointDef const &joint : skeleton) {
        MO_Module *const module = joint.module.get();
        if (!module)
            continue;  // a joint whose module is gone is left out
        ModuleManipulator::Context const context{solver, &skeleton, joint.index, frame};
        auto const parent = skeleton.find(joint.parentName);
        MO_Module *const parentModule = parent == skeleton.end() ? nullptr : parent->module.get();

        ManipulatorPtr manipulator;
        int order = kRootOrder;
        if (parent == skeleton.end()) {
            manipulator = makeRoot(context, module);
        } else if (!parentModule) {
            return fail();
        } else if (!joint.isHandle) {
            manipulator = makeJoint(context, parentModule, module);
            if (manipulator)
                order = IKToolUtil::getModuleDepth(manipulator->module()) + 1;  // the parent's depth
        } else {
            manipulator = makeHandle(context, parentModule, module, parent->hasOrientationTask());
            order = IKToolUtil::getModuleDepth(module) + 1 + kHandleOrderBase + joint.index;
        }
        if (!manipulator || !manipulator->isValid())
            return fail();
        // A taken key keeps the older manipulator: of several children, the first turns the parent.
        Impl::Key const key(order, manipulator->module());
        if (!impl_->manipulators.count(key))
            impl_->manipulators.emplace(key, std::move(manipulator));
    }
    impl_->root = root;
    return true;
}

bool ManipulatorSet::isValid() const
{
    return impl_->valid;
}

double ManipulatorSet::frame() const
{
    return impl_->frame;
}

MO_Module *ManipulatorSet::root() const
{
    return impl_->root;
}

int ManipulatorSet::size() const
{
    return int(impl_->manipulators.size());
}

void ManipulatorSet::reset()
{
    impl_->forEach([](ModuleManipulator &m) { m.detachSurrogate(); });
}

void ManipulatorSet::update()
{
    impl_->reattach();
    impl_->forEach([](ModuleManipulator &m) { m.update(); });
}

void ManipulatorSet::commit(CO_CommandManager *manager)
{
    impl_->reattach();
    impl_->forEach([manager](ModuleManipulator &m) { m.commit(manager); });
    impl_->startOver();
}

void ManipulatorSet::clearKeyframes(CO_CommandManager *manager)
{
    impl_->reattach();
    impl_->forEach([manager](ModuleManipulator &m) { m.clearKeyframe(manager); });
    impl_->startOver();
}

bool ManipulatorSet::hasKeyframes() const
{
    for (auto const &entry : impl_->manipulators)
        if (entry.second->hasKeyframe())
            return true;
    return false;
}

void ManipulatorSet::dump() const
{
    impl_->forEach([](ModuleManipulator &m) { m.dump(); });
}
