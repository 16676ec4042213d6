// One solve of a planar chain as the tool sets it up for a drag: a position task of weight 10 on
// the tip, a held position a third of the way down, a held orientation two thirds of the way down,
// shadow posing, rotation axes on every joint with a child, at most 120 iterations.
//
// Counters: `evaluations` is the number of residual-vector evaluations per solve (the minimiser
// differentiates numerically, n + 1 per iteration); `parameters` is n.

#include "skeleton/SkeletonDef.h"
#include "solver/IKSolver.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

namespace {

constexpr int kMaxIterations = 120;
constexpr double kBoneLength = 10.0;

// A gently zigzagging chain along x, so that no joint starts straight.
SkeletonDef zigzagChain(int joints)
{
    SkeletonDef chain;
    Math::Point3d p;
    for (int i = 0; i < joints; ++i) {
        SkeletonJointDef j;
        j.name = i == 0 ? "root" : "j_" + std::to_string(i);
        j.parentName = i == 0 ? "" : chain.back().name;
        j.index = i;
        j.position = j.solvedPosition = p;
        if (!chain.empty())
            ++chain.back().childCount;
        chain.push_back(j);
        double const bend = (i % 2 == 0 ? 0.2 : -0.2);
        p += Math::Vector3d(kBoneLength * std::cos(bend), kBoneLength * std::sin(bend), 0.0);
    }
    chain.updateLocalReferentials();
    return chain;
}

void setUpDrag(TIK::IKSolver &solver, SkeletonDef const &chain)
{
    solver.setSkeleton(chain, 0);
    SkeletonJointDef const &tip = chain.back();
    TIK::IKPositionTask *drag = solver.addPositionTask(tip.name.c_str(), 0);
    drag->setTarget(tip.position.x - 3.0 * kBoneLength, tip.position.y + 2.0 * kBoneLength, 0.0);
    drag->setWeight(10.0);
    solver.setRootTranslationEnabled(false);
    solver.setReservedLevel(-4);

    SkeletonJointDef const &held = chain[chain.size() / 3];
    TIK::IKPositionTask *hold = solver.addPositionTask(held.name.c_str(), 0);
    hold->setTarget(held.position.x, held.position.y, 0.0);
    TIK::IKOrientationTask *keep = solver.addOrientationTask(chain[2 * chain.size() / 3].name.c_str(), 0);
    keep->setTarget(0.0, 0.0, 0.0, 1.0);

    for (SkeletonJointDef const &def : chain) {
        TIK::IKJoint *j = solver.joint(def.name.c_str());
        j->setTranslationEnabled(false, false);
        j->setMobility(false, false, def.childCount != 0, true);
    }
    solver.setShadowPosing(true);
}

void BM_SolveChain(benchmark::State &state)
{
    SkeletonDef const chain = zigzagChain(static_cast<int>(state.range(0)));
    std::unique_ptr<TIK::IKSolver> solver = TIK::createSolver();
    long long evaluations = 0;
    for (auto _ : state) {
        state.PauseTiming();
        setUpDrag(*solver, chain);
        state.ResumeTiming();
        benchmark::DoNotOptimize(TIK::solve(solver.get(), kMaxIterations, 0.5));
        evaluations += solver->lastEvaluationCount();
    }
    state.counters["evaluations"] = benchmark::Counter(static_cast<double>(evaluations), benchmark::Counter::kAvgIterations);
    state.counters["parameters"] = solver->parameterCount();
}

BENCHMARK(BM_SolveChain)->Arg(5)->Arg(20)->Arg(50)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
