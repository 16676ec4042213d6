// The IK solver: a planar skeleton turned into a small nonlinear least-squares problem, minimised
// by Levenberg-Marquardt (MINPACK's lmdif, through cminpack).
//
// The solver knows nothing of the scene. It takes a SkeletonDef (plain data: names, parent names,
// positions) and tasks on its joints, and gives back joint positions; joint angles stay private.
//
// The problem, for joints in list order and tasks in creation order:
//   parameters  the active axes of each joint, in the order translation x (local.x), translation y
//               (local.y), rotation z (angle, radians). An axis is active when its flag is set and
//               activity * weight of the axis (index 0, 1 or 5) is not 0.
//   residuals   one per parameter, in the same order, pulling it back, with w = activity * weight:
//                 translation: (restLocal - local) * ((1 - w / 100) * 25)   towards the set-up
//                 rotation:    (angle - startAngle) * (1 - w / 100)         towards the solve's start
//               then the residuals of each task (see IKTask.h).
// There is no analytic Jacobian: lmdif differentiates numerically with forward differences, so each
// iteration costs n + 1 evaluations.
//
// Typical use, once per pose:
//   auto solver = TIK::createSolver();
//   solver->setSkeleton(skeleton, 0);
//   solver->addPositionTask("hand", 0)->setTarget(x, y, 0);   ... axes, activity, shadow posing
//   TIK::solve(solver.get(), maxIterations, 0.5);            (once per drag step)
//   solver->updateJoints();  then read joint(name)->position() for each joint.
#pragma once

#include "solver/IKJoint.h"
#include "solver/IKTask.h"

#include <cstdint>
#include <memory>
#include <vector>

class SkeletonDef;

namespace TIK {

// Control values of the minimiser, fixed at construction; only maxcall changes, at each solve.
struct MinimiserControl {
    double ftol = 1e-14;       // relative error desired in the sum of squares
    double xtol = 1e-14;       // relative error desired between the last two approximations
    double gtol = 1e-14;       // orthogonality desired between residuals and Jacobian columns
    double epsilon = 1e-14;    // Jacobian step: forward differences of relative step sqrt(1e-14) = 1e-7
    double stepbound = 100.0;  // initial bound on steps (lmdif's `factor`)
    int maxcall = 100;         // evaluations are limited to maxcall * (n + 1)
};

class IKSolver {
public:
    virtual ~IKSolver();

    // Drops all tasks and joints, then builds one joint per SkeletonJointDef: name, parent name and
    // index copied; position and rest position from solvedPosition; local and rest local from
    // localPosition; angles 0. Parents are resolved by name (the later of two equal names wins; an
    // unknown parent leaves the joint without parent), then forward kinematics places every joint
    // from the local chain. An empty skeleton leaves the solver empty and does not store userData.
    virtual void setSkeleton(SkeletonDef const &skeleton, std::uintptr_t userData);

    // One minimisation of at most maxIterations * (n + 1) evaluations, starting from the current
    // pose. Returns false, changing nothing, when there is no active axis (n = 0); otherwise true,
    // whatever the minimiser's outcome: the last parameters it left stand. maxIterations of 0 or
    // less leaves the parameters as packed. `ignored` has no effect.
    virtual bool solve(int maxIterations, double ignored);

    // Puts every joint back to its set-up state and marks it clean, so that a following
    // updateJoints leaves the rest positions as they are.
    void resetToRest();
    // Forward kinematics for every joint still marked dirty.
    void updateJoints();

    IKJoint *joint(char const *name);  // null if none
    IKJoint *rootJoint();              // joint("root")

    // New task on the named joint, appended to the task list and owned by the solver; null, adding
    // nothing, for an unknown joint. Careful: the pointer lives until the next setSkeleton.
    IKPositionTask *addPositionTask(char const *jointName, int level);
    IKOrientationTask *addOrientationTask(char const *jointName, int level);

    // On the joint "root", if any: translation x and y take `enabled`; z is cleared.
    void setRootTranslationEnabled(bool enabled);
    void setReservedLevel(int level);
    // Gives each joint a faint position task (weight 0.001) towards where it stands at the start of
    // each solve, created on first enabling and then only switched on and off. Shadow tasks join
    // the task list, after the tasks that exist at the time of the call.
    void setShadowPosing(bool enabled);

    // Diagnostics: the size of the problem that solve would build now (n, and m = n + task
    // residuals), the evaluations of the residual vector made by the last solve, and the residual
    // vector at the current parameters (rotation measured from the last solve's start).
    int parameterCount() const;
    int residualCount() const;
    int lastEvaluationCount() const;
    std::vector<double> currentResiduals();

    MinimiserControl const &control() const;

protected:
    IKSolver();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// The Levenberg-Marquardt solver that createSolver makes.
class IKSolver_lm final : public IKSolver {
public:
    IKSolver_lm();
    ~IKSolver_lm() override;
};

std::unique_ptr<IKSolver> createSolver();

// Runs solver->solve(maxIterations, ignored); a null solver gives false.
bool solve(IKSolver *solver, int maxIterations, double ignored);

} // namespace TIK
