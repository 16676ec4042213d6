// drag_arm: the solver on its own, as a plug-in developer meets it.
//
// An arm of shoulder, elbow, wrist and hand is dragged by the hand, in steps, the way the IK tool
// drags it under the mouse: one solve per step, each starting from the pose the last one left. The
// program prints the pose after each step, and the distance left to the target.
//
// Usage: drag_arm [targetX targetY [steps]]     (defaults: 5 25 4)

#include "skeleton/SkeletonDef.h"
#include "solver/IKSolver.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

SkeletonDef arm()
{
    struct Joint {
        char const *name;
        char const *parent;
        Math::Point3d at;
    };
    Joint const joints[] = {
        {"root", "", {0, 0, 0}},             // shoulder
        {"elbow", "root", {12, -2, 0}},
        {"wrist", "elbow", {22, 2, 0}},
        {"hand", "wrist", {26, 3, 0}},
    };
    SkeletonDef skeleton;
    for (Joint const &j : joints) {
        SkeletonJointDef def;
        def.name = j.name;
        def.parentName = j.parent;
        def.index = static_cast<int>(skeleton.size());
        def.position = def.solvedPosition = j.at;
        auto parent = skeleton.find(def.parentName);
        if (parent != skeleton.end())
            ++parent->childCount;
        skeleton.push_back(def);
    }
    skeleton.updateLocalReferentials();
    return skeleton;
}

bool parse(char const *text, double &out)
{
    char *end = nullptr;
    out = std::strtod(text, &end);
    return end != text && *end == '\0';
}

} // namespace

int main(int argc, char **argv)
{
    double tx = 5.0, ty = 25.0, steps = 4.0;
    if ((argc != 1 && argc != 3 && argc != 4) || (argc >= 3 && (!parse(argv[1], tx) || !parse(argv[2], ty))) ||
        (argc == 4 && (!parse(argv[3], steps) || steps < 1.0))) {
        std::fprintf(stderr, "usage: %s [targetX targetY [steps >= 1]]\n", argv[0]);
        return 2;
    }

    SkeletonDef skeleton = arm();
    SkeletonJointDef const &hand = skeleton.back();
    std::unique_ptr<TIK::IKSolver> solver = TIK::createSolver();
    solver->setSkeleton(skeleton, 0);
    TIK::IKPositionTask *drag = solver->addPositionTask(hand.name.c_str(), 0);
    drag->setWeight(10.0);
    for (SkeletonJointDef const &def : skeleton)
        solver->joint(def.name.c_str())->setMobility(false, false, def.childCount != 0, true);
    solver->setShadowPosing(true);

    std::printf("dragging the hand from (%g, %g) to (%g, %g) in %d steps\n", hand.position.x, hand.position.y, tx, ty,
                static_cast<int>(steps));
    for (int step = 1; step <= static_cast<int>(steps); ++step) {
        double const t = step / steps;
        drag->setTarget(hand.position.x + (tx - hand.position.x) * t, hand.position.y + (ty - hand.position.y) * t, 0.0);
        TIK::solve(solver.get(), 120, 0.5);
        solver->updateJoints();
        std::printf("step %d:", step);
        for (SkeletonJointDef &def : skeleton) {
            def.solvedPosition = solver->joint(def.name.c_str())->position();
            std::printf("  %s (%.3f, %.3f)", def.name.c_str(), def.solvedPosition.x, def.solvedPosition.y);
        }
        std::printf("\n");
    }
    Math::Point2d const reached = skeleton.back().solvedPosition.toPoint2d();
    std::printf("hand is %.4f from the target after %d evaluations in the last step\n",
                reached.GetDistance(Math::Point2d(tx, ty)), solver->lastEvaluationCount());
    return 0;
}
