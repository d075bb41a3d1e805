// Linear-coefficient upsampling from a 501x375 reduced alpha to a 4000x3000 picture,
// against a baseline that only enlarges four float maps bilinearly and accumulates
// them with the picture's channels. Prints time and peak memory of both and the
// ratios. Peak memory: the kernel's high-water mark is reset (/proc/self/clear_refs,
// "5") just before each call, and VmHWM after the call minus VmRSS before it is the
// extra resident memory the call needed on top of the picture, which (with the output
// alpha) is allocated and touched beforehand.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "core/ippi_resize.h"
#include "pyramid/linear_coeff_upsample.h"
#include "support/peak_memory.h"

namespace {

constexpr int kFullW = 4000, kFullH = 3000;
constexpr int kReducedW = 501, kReducedH = 375;

struct Inputs {
    cv::Mat full, reduced, reducedAlpha, fullAlpha;
    cv::Mat coeff[4];  // baseline's reduced maps
    Inputs() {
        // A smooth picture with texture, so the fit sees realistic colour windows.
        full.create(kFullH, kFullW, CV_8UC4);
        cv::RNG rng(1);
        cv::Mat small(kFullH / 16, kFullW / 16, CV_8UC4);
        rng.fill(small, cv::RNG::UNIFORM, 0, 256);
        cv::resize(small, full, full.size(), 0, 0, cv::INTER_CUBIC);
        cv::resize(full, reduced, cv::Size(kReducedW, kReducedH), 0, 0, cv::INTER_NEAREST);
        reducedAlpha.create(reduced.size(), CV_8UC1);
        for (int y = 0; y < kReducedH; ++y)
            for (int x = 0; x < kReducedW; ++x) {
                const cv::Vec4b p = reduced.at<cv::Vec4b>(y, x);
                reducedAlpha.at<uchar>(y, x) = static_cast<uchar>((p[0] + 2 * p[1] + p[2]) / 4);
            }
        for (cv::Mat& m : coeff) {
            m.create(reduced.size(), CV_32FC1);
            rng.fill(m, cv::RNG::UNIFORM, -0.5, 0.5);
        }
        fullAlpha = cv::Mat(full.size(), CV_8UC1, cv::Scalar(0));
    }
};

Inputs& inputs() {
    static Inputs in;
    return in;
}

// Bilinear enlargement to the full size with the same resampling primitive that
// the upsampling uses.
void enlarge(const cv::Mat& src, cv::Mat& dst) {
    dst.create(kFullH, kFullW, CV_32FC1);
    const IppiRect srcRoi{0, 0, src.cols, src.rows}, dstRoi{0, 0, kFullW, kFullH};
    int bytes = 0;
    ippiResizeGetBufSize(srcRoi, dstRoi, 1, IPPI_INTER_LINEAR, &bytes);
    std::vector<Ipp8u> work(bytes + 1);
    ippiResizeSqrPixel_32f_C1R(src.ptr<float>(), IppiSize(src.cols, src.rows),
                               static_cast<int>(src.step), srcRoi, dst.ptr<float>(),
                               static_cast<int>(dst.step), dstRoi, double(kFullW) / src.cols,
                               double(kFullH) / src.rows, 0, 0, IPPI_INTER_LINEAR, work.data());
}

// The least the job has to do: four bilinear enlargements accumulated with the
// picture's channels, one enlarged map at a time (the first one becomes the
// accumulator, the last one is added while the bytes are stored).
void baselineResizeAccumulate(Inputs& in) {
    cv::Mat acc, big;
    for (int k = 0; k < 4; ++k) {
        enlarge(in.coeff[k], k == 0 ? acc : big);
        for (int y = 0; y < kFullH; ++y) {
            const uchar* p = in.full.ptr<uchar>(y);
            const float* a = (k == 0 ? acc : big).ptr<float>(y);
            float* s = acc.ptr<float>(y);
            uchar* o = in.fullAlpha.ptr<uchar>(y);
            if (k == 0)
                for (int x = 0; x < kFullW; ++x) s[x] = a[x] * (p[4 * x] * (1.0f / 255.0f));
            else if (k < 3)
                for (int x = 0; x < kFullW; ++x) s[x] += a[x] * (p[4 * x + k] * (1.0f / 255.0f));
            else
                for (int x = 0; x < kFullW; ++x)
                    o[x] = cv::saturate_cast<uchar>(std::clamp(s[x] + a[x], 0.0f, 1.0f) * 255.0f);
        }
    }
}

void coeffUpsample(Inputs& in) {
    cv::Mat spare1, spare2, known;
    computeUpsampled_a1a2a3b_memorySave(in.reducedAlpha, in.reduced, spare1, spare2, in.full, known,
                                        in.fullAlpha, 8);
}

double cpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return t.tv_sec + t.tv_nsec * 1e-9;
}

struct Figures {
    double seconds = 0, cpu = 0;
    int runs = 0;
    double peakMb = 0;
};
Figures baselineFig, coeffFig;

template <void (*Job)(Inputs&)>
void runMeasured(benchmark::State& state, Figures& fig) {
    Inputs& in = inputs();
    for (auto _ : state) {
        resetPeakMemory();
        const double rss0 = residentMB();
        const auto t0 = std::chrono::steady_clock::now();
        const double c0 = cpuSeconds();
        Job(in);
        fig.cpu += cpuSeconds() - c0;
        const double s =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        const double peakMb = peakMB() - rss0;
        state.SetIterationTime(s);
        fig.seconds += s;
        ++fig.runs;
        fig.peakMb = std::max(fig.peakMb, peakMb);
        benchmark::DoNotOptimize(in.fullAlpha.data);
    }
    state.counters["peak_MB_above_picture"] = fig.peakMb;
}

void BM_BaselineResizeAccumulate(benchmark::State& state) {
    runMeasured<baselineResizeAccumulate>(state, baselineFig);
}
void BM_ComputeUpsampled_a1a2a3b_memorySave(benchmark::State& state) {
    runMeasured<coeffUpsample>(state, coeffFig);
}

BENCHMARK(BM_BaselineResizeAccumulate)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);
BENCHMARK(BM_ComputeUpsampled_a1a2a3b_memorySave)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    inputs();  // picture and output allocated and touched before any measurement
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (baselineFig.runs && coeffFig.runs) {
        const double tb = baselineFig.seconds / baselineFig.runs * 1e3;
        const double tc = coeffFig.seconds / coeffFig.runs * 1e3;
        const double cb = baselineFig.cpu / baselineFig.runs * 1e3;
        const double cc = coeffFig.cpu / coeffFig.runs * 1e3;
        std::printf("coefficient upsampling %.1f ms, baseline %.1f ms, ratio %.2f (target <= 2)\n",
                    tc, tb, tc / tb);
        std::printf("cpu time: coefficient upsampling %.1f ms, baseline %.1f ms, ratio %.2f\n", cc,
                    cb, cc / cb);
        std::printf(
            "peak memory above picture: coefficient upsampling %.1f MB (target < 300), "
            "baseline %.1f MB\n",
            coeffFig.peakMb, baselineFig.peakMb);
    }
    return 0;
}
