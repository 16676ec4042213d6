// IK drags as the hand feels them: the real plug-in in an offscreen 640 by 480 view, driven
// through the view's calls as the window drives them (IKDragScene.h). One benchmark iteration is
// one mouse move: the paint of the picture the last move asked for, the tool's step, and the hover
// pick that sets the cursor. Times are CPU time of the process (the benchmark's time column too,
// as manual time), so that other programs on the machine count less. The drag is pressed before the first move and released after the
// last, so each case is one drag of as many moves as it has iterations.
//
// Counters, per move: `paint_ms`, `step_ms`, `pick_ms` (means), `median_ms` (median of the whole
// move), `undo_MiB` (C++ heap that the drag left held after its release, which is its undo step,
// divided by the moves). `undo_total_MiB` is that for the whole drag; `peak_MiB` the greatest C++
// heap held at any time during the case (the whole process's, scene and all), counted by
// HeapCounter. Process CPU time counts the worker thread too; `wall_ms` gives the median wall
// time of a move, which is what the hand feels when the thread has a core of its own.
//
// Cases: the rigged character (left wrist, hips and chest held) over 1, 12, 48 and 96 frames
// spread linearly; chains of 20, 50 and 100 pegs over 12 frames; a drag of 200 moves over 96
// frames (undo held in all); 10 moves over frames 1 to 1000 (peak memory); and, with no press,
// the idle redraw and the hover pick over 48 frames.

#include "HeapCounter.h"
#include "IKDragScene.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <vector>

namespace {

// CPU time of the whole process: the machine is shared, and wall time counts the waits for a core.
struct Clock {
    using time_point = std::chrono::duration<double, std::milli>;
    static time_point now()
    {
        timespec t{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
        return time_point(double(t.tv_sec) * 1e3 + double(t.tv_nsec) * 1e-6);
    }
};

double msSince(Clock::time_point start)
{
    return (Clock::now() - start).count();
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    std::nth_element(values.begin(), values.begin() + long(values.size() / 2), values.end());
    return values[values.size() / 2];
}

constexpr double kMiB = 1024.0 * 1024.0;

void open(IKDrag::Scene &scene, int chainJoints, int frames)
{
    if (chainJoints > 0)
        IKDrag::openChain(scene, chainJoints);
    else
        IKDrag::openCharacter(scene);
    IKDrag::setRange(scene, frames, IKToolSettings::Linear);
    scene.view->render();
}

// One drag, one move per iteration. Arguments: chain joints (0: the character), frames, and
// whether the frames are solved half on a worker thread (IKTool::setSolveOnWorkerThread).
void BM_Drag(benchmark::State &state)
{
    IKTool::setSolveOnWorkerThread(state.range(2) != 0);
    IKDrag::Scene scene;
    open(scene, int(state.range(0)), int(state.range(1)));
    std::size_t const heldBefore = HeapCounter::liveBytes();
    HeapCounter::resetPeak();

    Math::Point2d const start = scene.draggedPixel();
    scene.view->mousePress(start);
    scene.view->cursorAt(start);
    std::vector<double> paint, step, pick, whole, wall;
    Math::Point2d point = start;
    int moves = 0;
    for (auto _ : state) {
        point = IKDrag::movePoint(start, ++moves);
        auto const wallStart = std::chrono::steady_clock::now();
        Clock::time_point const t0 = Clock::now();
        scene.view->render();
        Clock::time_point const t1 = Clock::now();
        scene.view->mouseMove(point);
        Clock::time_point const t2 = Clock::now();
        scene.view->cursorAt(point);
        double const p = (t1 - t0).count();
        double const s = (t2 - t1).count();
        double const k = msSince(t2);
        paint.push_back(p);
        step.push_back(s);
        pick.push_back(k);
        whole.push_back(p + s + k);
        wall.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - wallStart).count());
        state.SetIterationTime((p + s + k) / 1000.0);
    }
    scene.view->mouseRelease(point);
    double const held = double(HeapCounter::liveBytes()) - double(heldBefore);

    auto mean = [](std::vector<double> const &v) {
        double sum = 0.0;
        for (double x : v)
            sum += x;
        return v.empty() ? 0.0 : sum / double(v.size());
    };
    state.counters["paint_ms"] = mean(paint);
    state.counters["step_ms"] = mean(step);
    state.counters["pick_ms"] = mean(pick);
    state.counters["median_ms"] = median(whole);
    state.counters["wall_ms"] = median(wall);
    state.counters["undo_MiB"] = held / kMiB / std::max(1, moves);
    state.counters["undo_total_MiB"] = held / kMiB;
    state.counters["peak_MiB"] = double(HeapCounter::peakBytes()) / kMiB;
    IKTool::setSolveOnWorkerThread(false);
}

// Redraws with no press under way: the idle redraw (render) or the hover (the cursor's pick).
void BM_Idle(benchmark::State &state, bool hover)
{
    IKDrag::Scene scene;
    open(scene, 0, int(state.range(0)));
    Math::Point2d const point = scene.draggedPixel();
    std::vector<double> times;
    for (auto _ : state) {
        Clock::time_point const t0 = Clock::now();
        if (hover)
            scene.view->cursorAt(point);
        else
            scene.view->render();
        double const ms = msSince(t0);
        times.push_back(ms);
        state.SetIterationTime(ms / 1000.0);
    }
    state.counters["median_ms"] = median(times);
}

void BM_IdleRedraw(benchmark::State &state) { BM_Idle(state, false); }
void BM_Hover(benchmark::State &state) { BM_Idle(state, true); }

} // namespace

// Character: Args({0, frames, 0}); chains: Args({joints, 12, 0}).
BENCHMARK(BM_Drag)->ArgNames({"chain", "frames", "thread"})->Args({0, 1, 0})->Iterations(60)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Drag)->ArgNames({"chain", "frames", "thread"})->Args({0, 12, 0})->Iterations(60)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Drag)->ArgNames({"chain", "frames", "thread"})->Args({0, 48, 0})->Iterations(40)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Drag)->ArgNames({"chain", "frames", "thread"})->Args({0, 96, 0})->Iterations(30)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Drag)->ArgNames({"chain", "frames", "thread"})->Args({20, 12, 0})->Iterations(30)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Drag)->ArgNames({"chain", "frames", "thread"})->Args({50, 12, 0})->Iterations(20)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Drag)->ArgNames({"chain", "frames", "thread"})->Args({100, 12, 0})->Iterations(8)->UseManualTime()->Unit(benchmark::kMillisecond);
// The same with the worker thread, where solving weighs most.
BENCHMARK(BM_Drag)->ArgNames({"chain", "frames", "thread"})->Args({0, 48, 1})->Iterations(40)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Drag)->ArgNames({"chain", "frames", "thread"})->Args({50, 12, 1})->Iterations(20)->UseManualTime()->Unit(benchmark::kMillisecond);
// Undo held by a long drag, and the peak of a long range.
BENCHMARK(BM_Drag)->Name("BM_LongDrag")->ArgNames({"chain", "frames", "thread"})->Args({0, 96, 0})->Iterations(200)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Drag)->Name("BM_LongRange")->ArgNames({"chain", "frames", "thread"})->Args({0, 1000, 0})->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IdleRedraw)->ArgName("frames")->Arg(48)->Iterations(40)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Hover)->ArgName("frames")->Arg(48)->Iterations(40)->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
