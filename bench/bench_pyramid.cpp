// Mask pyramid speed: building three levels and carrying the alpha back up
// on a 12-megapixel-class picture, against OpenCV's bilinear 2x upsampling of
// the same planes as a baseline of plain memory-bound resampling.
#include <benchmark/benchmark.h>

#include <memory>
#include <opencv2/imgproc.hpp>
#include <random>

#include "pyramid/mask_pyramid.h"
#include "pyramid/upsample_2x.h"

namespace {

using Plane = GIMG<unsigned char>;

// Picture size of a typical camera frame reduced once (the pipeline works on
// reduced pictures).
constexpr int kWidth = 2000;
constexpr int kHeight = 1500;

struct Scene {
    std::unique_ptr<Plane> planes[5];  // r, g, b, constraints, alpha
    Plane* rgb[3];
    Scene() {
        std::mt19937 rng(1);
        for (auto& p : planes) {
            p = std::make_unique<Plane>(kWidth, kHeight);
            for (int y = 0; y < kHeight; ++y)
                for (int x = 0; x < kWidth; ++x)
                    *imgPtr(*p, x, y) = static_cast<unsigned char>((x * 7 + y * 3 + rng()) & 255);
        }
        for (int c = 0; c < 3; ++c) rgb[c] = planes[c].get();
    }
};

void BM_PyramidBuild3(benchmark::State& state) {
    Scene s;
    CMaskPyr pyr;
    for (auto _ : state)
        benchmark::DoNotOptimize(pyr.build(s.rgb, s.planes[3].get(), s.planes[4].get(), 3));
    state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

void BM_GuidedUpsampleLevel1To0(benchmark::State& state) {
    Scene s;
    CMaskPyr pyr;
    pyr.build(s.rgb, s.planes[3].get(), s.planes[4].get(), 1);
    for (auto _ : state) pyr.upSamplingOneLevel(1);
    state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

// Baseline: unguided bilinear 2x upsampling of one plane.
void BM_BaselineBilinear2x(benchmark::State& state) {
    cv::Mat coarse(kHeight / 2, kWidth / 2, CV_8UC1, cv::Scalar(100)), fine;
    for (auto _ : state) {
        cv::resize(coarse, fine, cv::Size(kWidth, kHeight), 0, 0, cv::INTER_LINEAR);
        benchmark::DoNotOptimize(fine.data);
    }
    state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

}  // namespace

BENCHMARK(BM_PyramidBuild3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GuidedUpsampleLevel1To0)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BaselineBilinear2x)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
