// Skeletons and set-ups shared by the solver tests.
#pragma once

#include "skeleton/SkeletonDef.h"
#include "solver/IKSolver.h"

#include <functional>
#include <initializer_list>

namespace SolverTest {

constexpr double kPi = 3.14159265358979323846;

// A chain "root", "j_1", "j_2", ... through the given positions, as extraction leaves it: indices,
// child counts, solved positions equal to positions, local positions computed.
SkeletonDef makeChain(std::initializer_list<Math::Point3d> positions);

// Sets the axes as the tool does for a plain drag: rotation z only on joints with children, no
// translation anywhere, and the rotation weight (index 5) given to every joint.
void setRotationAxes(TIK::IKSolver &solver, SkeletonDef const &skeleton, double rotationWeight);

// The root of f on [lo, hi] by bisection; f(lo) and f(hi) must differ in sign.
double bisect(std::function<double(double)> const &f, double lo, double hi);

// The elbow of a planar two-bone chain from `base` reaching `target`, with bones of lengths l1 and
// l2, bent counter-clockwise when `counterClockwise`: the law of cosines.
Math::Point2d twoBoneElbow(Math::Point2d base, Math::Point2d target, double l1, double l2, bool counterClockwise);

} // namespace SolverTest
