#include "SolverTestUtil.h"

#include <cmath>
#include <string>

namespace SolverTest {

SkeletonDef makeChain(std::initializer_list<Math::Point3d> positions)
{
    SkeletonDef chain;
    for (Math::Point3d const &p : positions) {
        SkeletonJointDef j;
        int const index = static_cast<int>(chain.size());
        j.name = index == 0 ? "root" : "j_" + std::to_string(index);
        j.parentName = index == 0 ? "" : chain.back().name;
        j.index = index;
        j.position = p;
        j.solvedPosition = p;
        if (!chain.empty())
            ++chain.back().childCount;
        chain.push_back(j);
    }
    chain.updateLocalReferentials();
    return chain;
}

void setRotationAxes(TIK::IKSolver &solver, SkeletonDef const &skeleton, double rotationWeight)
{
    for (SkeletonJointDef const &def : skeleton) {
        TIK::IKJoint *j = solver.joint(def.name.c_str());
        j->setTranslationEnabled(false, false);
        j->setMobility(false, false, def.childCount != 0, true);
        j->setWeight(TIK::IKJoint::RotationZ, rotationWeight);
    }
}

double bisect(std::function<double(double)> const &f, double lo, double hi)
{
    double flo = f(lo);
    for (int i = 0; i < 200; ++i) {
        double const mid = 0.5 * (lo + hi);
        double const fmid = f(mid);
        if ((fmid < 0.0) == (flo < 0.0)) {
            lo = mid;
            flo = fmid;
        } else {
            hi = mid;
        }
    }
    return 0.5 * (lo + hi);
}

Math::Point2d twoBoneElbow(Math::Point2d base, Math::Point2d target, double l1, double l2, bool counterClockwise)
{
    Math::Vector2d const toTarget = target - base;
    double const d = toTarget.length();
    double const cosBend = (d * d - l1 * l1 - l2 * l2) / (2.0 * l1 * l2);
    double const bend = (counterClockwise ? 1.0 : -1.0) * std::acos(cosBend);
    double const first = std::atan2(toTarget.y, toTarget.x) - std::atan2(l2 * std::sin(bend), l1 + l2 * std::cos(bend));
    return Math::Point2d(base.x + l1 * std::cos(first), base.y + l1 * std::sin(first));
}

} // namespace SolverTest
