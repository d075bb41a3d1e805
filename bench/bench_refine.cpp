// Tiled alpha refinement on a 2000 x 1500 generated sample whose unknown band
// is about 40 pixels wide, against one untiled closed-form solve of the same
// map as the baseline. Besides time, each case reports the peak resident
// memory of the process while it ran: the kernel's high-water mark (VmHWM in
// /proc/self/status) is reset through /proc/self/clear_refs before the run,
// so the figure is the peak during the run (inputs included), and
// peak_over_start_MB subtracts the resident size at the start.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <opencv2/core.hpp>
#include <vector>

#include "api/keepcut.h"
#include "matting/cfmatt.h"
#include "pipeline/alpha_refine.h"
#include "pipeline/refine_tiles.h"
#include "support/peak_memory.h"
#include "synthetic_sample.h"

namespace {

// A reduced camera frame, the size the pipeline refines at.
constexpr int kWidth = 2000;
constexpr int kHeight = 1500;
constexpr unsigned char kTrimapUnknown = 128;
constexpr double kBytesPerMB = 1024.0 * 1024.0;

struct Problem {
    cv::Mat red, green, blue, known, alpha0, alpha;
    int unknown = 0;
    Problem() {
        const SyntheticSample s = makeSyntheticSample(kWidth, kHeight);
        std::vector<cv::Mat> bgr;
        cv::split(s.picture, bgr);
        blue = bgr[0], green = bgr[1], red = bgr[2];
        known = s.trimap != kTrimapUnknown;
        alpha0 = s.trimap.clone();
        unknown = kWidth * kHeight - cv::countNonZero(known);
    }
    static Problem& get() {
        static Problem p;
        return p;
    }
};

GIMG<unsigned char> view(cv::Mat& m) {
    return GIMG<unsigned char>(m.cols, m.rows, m.data, static_cast<int>(m.step));
}

template <typename Run>
void measured(benchmark::State& state, Run run) {
    Problem& p = Problem::get();
    double peakMB = 0, overMB = 0;
    for (auto _ : state) {
        state.PauseTiming();
        p.alpha = p.alpha0.clone();
        const long startKB = procStatusKB("VmRSS:");
        resetPeakResident();
        state.ResumeTiming();
        run(p);
        state.PauseTiming();
        const long peakKB = procStatusKB("VmHWM:");
        peakMB = std::max(peakMB, peakKB * 1024.0 / kBytesPerMB);
        overMB = std::max(overMB, (peakKB - startKB) * 1024.0 / kBytesPerMB);
        state.ResumeTiming();
    }
    state.counters["peak_MB"] = peakMB;
    state.counters["peak_over_start_MB"] = overMB;
    state.counters["unknown_px"] = p.unknown;
}

void BM_RefineAlphaMW(benchmark::State& state) {
    const int side = refineTileSide(usableMemInMB());
    const RefineTiling layout = refineTiling(kWidth, kHeight, side);
    measured(state, [](Problem& p) {
        GIMG<unsigned char> r = view(p.red), g = view(p.green), b = view(p.blue);
        GIMG<unsigned char> k = view(p.known), a = view(p.alpha);
        GIMG<unsigned char>* planes[] = {&r, &g, &b};
        refineAlphaMW(planes, &k, &a, false);
    });
    state.counters["tile_side"] = side;
    state.counters["tiles"] = static_cast<double>(layout.tiles.size());
}

// Baseline: the whole map in one closed-form solve.
void BM_BaselineUntiledSolve(benchmark::State& state) {
    measured(state, [](Problem& p) {
        unsigned char* planes[] = {p.red.data, p.green.data, p.blue.data};
        CFMatt matt;
        matt.setSolver(true);
        matt.CompAlphaMap(planes, static_cast<int>(p.red.step), kWidth, kHeight, p.known.data,
                          static_cast<int>(p.known.step), p.alpha.data,
                          static_cast<int>(p.alpha.step));
    });
}

}  // namespace

BENCHMARK(BM_RefineAlphaMW)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();
BENCHMARK(BM_BaselineUntiledSolve)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();
BENCHMARK_MAIN();
