#include "solver/IKSolver.h"

#include "skeleton/SkeletonDef.h"

#include <cminpack.h>

#include <algorithm>
#include <climits>
#include <map>
#include <string>

namespace TIK {

namespace {

constexpr double kTranslationPullScale = 25.0;  // translation is pulled 25 times as hard as rotation
constexpr double kShadowTaskWeight = 0.001;
constexpr int kScaleByFirstJacobian = 1;        // lmdif `mode`: diag from the first Jacobian's column norms
constexpr int kNoPrinting = 0;                  // lmdif `nprint`

enum class Axis { TranslationX, TranslationY, RotationZ };

// Clears the upper halves of the vector registers before the minimiser runs. Careful: code run just
// before a solve (the painting's AVX routines) may leave them in use, and the minimiser's SSE code
// then runs up to twice as slow on processors that keep the two halves apart. Only the upper
// halves are cleared; SSE code reads nothing else, so no result changes.
void clearUpperVectorState()
{
#if defined(__x86_64__) && defined(__GNUC__)
    static bool const hasAvx = __builtin_cpu_supports("avx");
    if (hasAvx)
        asm volatile("vzeroupper" ::: "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8",
                     "xmm9", "xmm10", "xmm11", "xmm12", "xmm13", "xmm14", "xmm15");
#endif
}

// One parameter of the problem: an active axis of a joint, with the factor of its pull residual.
struct ActiveAxis {
    IKJoint *joint;
    Axis axis;
    double pull;  // translation: (1 - w/100) * 25; rotation: 1 - w/100; w = activity * weight
};

// Appends the active axes of `joint`, in parameter order.
void collectAxes(IKJoint &joint, std::vector<ActiveAxis> &axes)
{
    struct Candidate {
        Axis axis;
        bool free;
        int weightIndex;
        double scale;
    };
    Candidate const candidates[] = {
        {Axis::TranslationX, joint.translationFree[0], IKJoint::TranslationX, kTranslationPullScale},
        {Axis::TranslationY, joint.translationFree[1], IKJoint::TranslationY, kTranslationPullScale},
        {Axis::RotationZ, joint.rotationFree[2], IKJoint::RotationZ, 1.0},
    };
    for (Candidate const &c : candidates) {
        double const w = joint.activity * joint.weights[c.weightIndex];
        if (c.free && w != 0.0)
            axes.push_back({&joint, c.axis, (1.0 - w / 100.0) * c.scale});
    }
}

double &axisValue(ActiveAxis const &a)
{
    switch (a.axis) {
    case Axis::TranslationX: return a.joint->local.x;
    case Axis::TranslationY: return a.joint->local.y;
    case Axis::RotationZ: break;
    }
    return a.joint->angle;
}

double pullResidual(ActiveAxis const &a)
{
    IKJoint const &j = *a.joint;
    switch (a.axis) {
    case Axis::TranslationX: return (j.restLocal.x - j.local.x) * a.pull;
    case Axis::TranslationY: return (j.restLocal.y - j.local.y) * a.pull;
    case Axis::RotationZ: break;
    }
    return (j.angle - j.startAngle) * a.pull;
}

} // namespace

struct IKSolver::Impl {
    std::uintptr_t userData = 0;
    // Careful: IKJoint::parent, jointsByName, the tasks and the axes point into this vector. It is
    // sized once in setSkeleton and never grows afterwards.
    std::vector<IKJoint> joints;
    std::vector<std::unique_ptr<IKTask>> tasks;   // creation order = residual order
    std::map<std::string, IKJoint *> jointsByName;
    int reservedLevel = -4;
    bool shadowPosing = true;
    MinimiserControl control;
    std::vector<double> parameters;               // = the active axes, packed in parameter order

    // State of the running solve.
    std::vector<ActiveAxis> axes;                 // the parameters' axes, rebuilt at each solve
    int evaluations = 0;                          // residual evaluations of the last solve

    // lmdif's work arrays, for a problem of m residuals and n parameters. Sized with resize, so the
    // memory is reused by every solve of the same or a smaller size.
    std::vector<double> residuals;                // m
    std::vector<double> jacobian;                 // m * n
    std::vector<double> diag, qtf, wa1, wa2, wa3; // n each
    std::vector<double> wa4;                      // m
    std::vector<int> ipvt;                        // n

    void clear();
    void collectActiveAxes();
    int taskResidualCount() const;
    void unpack(double const *x);
    void forwardKinematicsAll();
    void evaluate(double const *x, double *out);
    void reserveWork(int m, int n);

    static int evaluationCallback(void *self, int m, int n, double const *x, double *fvec, int iflag);
};

void IKSolver::Impl::clear()
{
    while (!tasks.empty())  // the last first
        tasks.pop_back();
    jointsByName.clear();
    joints.clear();
}

void IKSolver::Impl::collectActiveAxes()
{
    axes.clear();
    for (IKJoint &j : joints)
        collectAxes(j, axes);
}

int IKSolver::Impl::taskResidualCount() const
{
    int count = 0;
    for (auto const &task : tasks)
        count += task->residualCount();
    return count;
}

void IKSolver::Impl::unpack(double const *x)
{
    for (std::size_t i = 0; i < axes.size(); ++i)
        axisValue(axes[i]) = x[i];
    for (IKJoint &j : joints)  // every joint, also those without active axes
        j.dirty = true;
}

void IKSolver::Impl::forwardKinematicsAll()
{
    for (IKJoint &j : joints)
        j.forwardKinematics();
}

void IKSolver::Impl::evaluate(double const *x, double *out)
{
    ++evaluations;
    unpack(x);
    forwardKinematicsAll();
    for (ActiveAxis const &a : axes)
        *out++ = pullResidual(a);
    for (auto const &task : tasks) {
        task->evaluate(out);
        out += task->residualCount();
    }
}

// lmdif's callback. The stop flag (a negative return) is never used: a solve always runs to the
// minimiser's own end.
int IKSolver::Impl::evaluationCallback(void *self, int /*m*/, int /*n*/, double const *x, double *fvec,
                                       int /*iflag*/)
{
    static_cast<Impl *>(self)->evaluate(x, fvec);
    return 0;
}

void IKSolver::Impl::reserveWork(int m, int n)
{
    auto const um = static_cast<std::size_t>(m), un = static_cast<std::size_t>(n);
    residuals.resize(um);
    jacobian.resize(um * un);
    for (std::vector<double> *v : {&diag, &qtf, &wa1, &wa2, &wa3})
        v->resize(un);
    wa4.resize(um);
    ipvt.resize(un);
}

IKSolver::IKSolver() : impl_(std::make_unique<Impl>()) {}

IKSolver::~IKSolver()
{
    impl_->clear();
}

void IKSolver::setSkeleton(SkeletonDef const &skeleton, std::uintptr_t userData)
{
    Impl &d = *impl_;
    d.clear();
    d.axes.clear();
    if (skeleton.empty())
        return;

    d.joints.resize(skeleton.size());
    for (std::size_t i = 0; i < skeleton.size(); ++i) {
        SkeletonJointDef const &def = skeleton[i];
        IKJoint &j = d.joints[i];
        j.name = def.name;
        j.parentName = def.parentName;
        j.index = def.index;
        j.worldPosition = def.solvedPosition;
        j.restPosition = def.solvedPosition;
        j.local = def.localPosition;
        j.restLocal = def.localPosition;
        j.dirty = true;
    }
    for (IKJoint &j : d.joints)
        d.jointsByName[j.name] = &j;  // a later joint of the same name wins
    for (IKJoint &j : d.joints)
        if (!j.parentName.empty())
            j.parent = joint(j.parentName.c_str());

    d.userData = userData;
    d.forwardKinematicsAll();
}

bool IKSolver::solve(int maxIterations, double /*ignored*/)
{
    Impl &d = *impl_;
    d.collectActiveAxes();
    int const n = static_cast<int>(d.axes.size());
    if (n == 0)
        return false;

    d.parameters.resize(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        d.parameters[static_cast<std::size_t>(i)] = axisValue(d.axes[static_cast<std::size_t>(i)]);
    for (IKJoint &j : d.joints) {
        j.startAngle = j.angle;
        if (j.shadowTask && j.shadowTask->active)
            j.shadowTask->target = j.position();
    }

    int const m = n + d.taskResidualCount();
    d.control.maxcall = maxIterations;
    d.reserveWork(m, n);
    d.evaluations = 0;

    // lmdif refuses a limit of 0 or less and leaves the parameters as they are.
    long long const maxfev = std::clamp<long long>(static_cast<long long>(d.control.maxcall) * (n + 1), INT_MIN, INT_MAX);
    int evaluationsByMinimiser = 0;
    clearUpperVectorState();
    lmdif(&Impl::evaluationCallback, &d, m, n, d.parameters.data(), d.residuals.data(), d.control.ftol,
          d.control.xtol, d.control.gtol, static_cast<int>(maxfev), d.control.epsilon, d.diag.data(),
          kScaleByFirstJacobian, d.control.stepbound, kNoPrinting, &evaluationsByMinimiser, d.jacobian.data(), m,
          d.ipvt.data(), d.qtf.data(), d.wa1.data(), d.wa2.data(), d.wa3.data(), d.wa4.data());
    // The outcome code is not looked at: whatever the minimiser left is the solution.

    d.unpack(d.parameters.data());
    d.forwardKinematicsAll();
    return true;
}

void IKSolver::resetToRest()
{
    for (IKJoint &j : impl_->joints) {
        j.worldPosition = j.restPosition;
        j.angle = 0.0;
        j.worldAngle = 0.0;
        j.local = j.restLocal;
        j.dirty = false;
    }
}

void IKSolver::updateJoints()
{
    impl_->forwardKinematicsAll();
}

IKJoint *IKSolver::joint(char const *name)
{
    if (!name)
        return nullptr;
    auto const it = impl_->jointsByName.find(name);
    return it != impl_->jointsByName.end() ? it->second : nullptr;
}

IKJoint *IKSolver::rootJoint()
{
    return joint("root");
}

IKPositionTask *IKSolver::addPositionTask(char const *jointName, int level)
{
    IKJoint *j = joint(jointName);
    if (!j)
        return nullptr;
    auto task = std::make_unique<IKPositionTask>(j, level);
    IKPositionTask *result = task.get();
    impl_->tasks.push_back(std::move(task));
    return result;
}

IKOrientationTask *IKSolver::addOrientationTask(char const *jointName, int level)
{
    IKJoint *j = joint(jointName);
    if (!j)
        return nullptr;
    auto task = std::make_unique<IKOrientationTask>(j, level);
    IKOrientationTask *result = task.get();
    impl_->tasks.push_back(std::move(task));
    return result;
}

void IKSolver::setRootTranslationEnabled(bool enabled)
{
    if (IKJoint *root = rootJoint()) {
        root->translationFree[0] = enabled;
        root->translationFree[1] = enabled;
        root->translationFree[2] = false;
    }
}

void IKSolver::setReservedLevel(int level)
{
    impl_->reservedLevel = level;
}

void IKSolver::setShadowPosing(bool enabled)
{
    impl_->shadowPosing = enabled;
    for (IKJoint &j : impl_->joints) {
        if (enabled && !j.shadowTask) {
            // Found by name like any task: with two joints of one name it lands on the later one.
            if ((j.shadowTask = addPositionTask(j.name.c_str(), 0))) {
                j.shadowTask->setWeight(kShadowTaskWeight);
                j.shadowTask->target = j.position();
            }
        }
        if (j.shadowTask)
            j.shadowTask->active = enabled;
    }
}

int IKSolver::parameterCount() const
{
    impl_->collectActiveAxes();
    return static_cast<int>(impl_->axes.size());
}

int IKSolver::residualCount() const
{
    return parameterCount() + impl_->taskResidualCount();
}

int IKSolver::lastEvaluationCount() const
{
    return impl_->evaluations;
}

std::vector<double> IKSolver::currentResiduals()
{
    Impl &d = *impl_;
    d.collectActiveAxes();
    std::vector<double> packed;
    for (ActiveAxis const &a : d.axes)
        packed.push_back(axisValue(a));
    std::vector<double> out(packed.size() + static_cast<std::size_t>(d.taskResidualCount()));
    int const evaluations = d.evaluations;
    d.evaluate(packed.data(), out.data());
    d.evaluations = evaluations;
    return out;
}

MinimiserControl const &IKSolver::control() const
{
    return impl_->control;
}

IKSolver_lm::IKSolver_lm() = default;
IKSolver_lm::~IKSolver_lm() = default;

std::unique_ptr<IKSolver> createSolver()
{
    return std::make_unique<IKSolver_lm>();
}

bool solve(IKSolver *solver, int maxIterations, double ignored)
{
    return solver ? solver->solve(maxIterations, ignored) : false;
}

} // namespace TIK
