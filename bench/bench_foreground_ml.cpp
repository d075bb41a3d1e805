// Multi-level foreground estimation against the engine's tiled recovery, both
// given the same (true) alpha.
//
// Generated sample (true foreground known): alpha-weighted mean |F - F_true|
// over pixels with alpha > 0, and over the fractional pixels alone, 0..255.
//
// alphamatting pictures (input/, gt/ true alpha; no true foreground): mean
// |a F + (1 - a) B - I| over fractional pixels. The engine's recovery gives no
// background, so its row uses the multi-level background B with its own F;
// the comparison is then of F alone, against a B fitted jointly with the
// other F (which favours the multi-level row somewhat).
//
// Time and peak memory of each at the pictures' own size and on one picture
// enlarged to 4000 x 3000 (12 MP).
// Options: --first N (alphamatting pictures, default all), --no-large.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "engine_job.h"
#include "pipeline/fg_multilevel.h"
#include "pipeline/fg_recover.h"
#include "support/peak_memory.h"
#include "synthetic_sample.h"

namespace {

double secondsSince(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// A foreground method: B,G,R picture and 8-bit alpha in, 8UC3 foreground out.
using Method = std::function<cv::Mat(const cv::Mat& bgr, const cv::Mat& alpha)>;

// The engine's recovery on a whole-picture request whose map holds the alpha.
cv::Mat engineForeground(const cv::Mat& bgr, const cv::Mat& alpha,
                         const std::function<void(EngineJob&)>& run) {
    cv::Mat a01;
    alpha.convertTo(a01, CV_32F, 1.0 / 255);
    EngineJob job(bgr, brushMapFromAlpha(a01));
    run(job);
    return job.foregroundBgr();
}

struct Named {
    const char* name;
    Method method;
};

const std::vector<Named>& methods() {
    static const std::vector<Named> all = {
        {"engine, whole-picture entry (scale 0.18)",
         [](const cv::Mat& bgr, const cv::Mat& a) {
             return engineForeground(bgr, a,
                                     [](EngineJob& j) { rkRecoverForegroundCell(&j.r, false); });
         }},
        {"engine, region entry (scale by area)",
         [](const cv::Mat& bgr, const cv::Mat& a) {
             return engineForeground(bgr, a,
                                     [](EngineJob& j) { rkRecoverForegroundCell(&j.r, true); });
         }},
        {"engine, tiled at full scale",
         [](const cv::Mat& bgr, const cv::Mat& a) {
             return engineForeground(bgr, a, [&](EngineJob& j) {
                 recoverForegroundRegion(j.r, cv::Rect(0, 0, bgr.cols, bgr.rows), 1.0f, false,
                                         extractAllTiles);
             });
         }},
        {"multi-level",
         [](const cv::Mat& bgr, const cv::Mat& a) { return foregroundBytesMultiLevel(bgr, a); }},
    };
    return all;
}

// Alpha-weighted mean |F - F_true| over alpha > 0 and over 0 < alpha < 1.
std::pair<double, double> sampleErrors(const cv::Mat& fg, const SyntheticSample& s) {
    double sum[2] = {0, 0}, weight[2] = {0, 0};
    for (int y = 0; y < fg.rows; ++y)
        for (int x = 0; x < fg.cols; ++x) {
            const float a = s.alpha.at<float>(y, x);
            if (a <= 0.0f) continue;
            const cv::Vec3b f = fg.at<cv::Vec3b>(y, x);
            const cv::Vec3f t = s.foreground.at<cv::Vec3f>(y, x);
            const double d =
                (std::fabs(f[0] - t[0]) + std::fabs(f[1] - t[1]) + std::fabs(f[2] - t[2])) / 3;
            for (int k = 0; k < (a < 1.0f ? 2 : 1); ++k) {
                sum[k] += a * d;
                weight[k] += a;
            }
        }
    return {sum[0] / weight[0], sum[1] / weight[1]};
}

void sampleQuality(int w, int h) {
    const SyntheticSample s = makeSyntheticSample(w, h);
    const cv::Mat alpha = alphaToBytes(s.alpha);
    std::printf("\nGenerated sample %dx%d, true alpha: alpha-weighted |F - F_true| (0..255)\n", w,
                h);
    std::printf("%-42s %10s %12s %9s\n", "foreground", "alpha > 0", "fractional", "time");
    const auto [n0, n1] = sampleErrors(s.picture, s);
    std::printf("%-42s %10.3f %12.3f\n", "naive F = picture", n0, n1);
    for (const Named& m : methods()) {
        const auto t0 = std::chrono::steady_clock::now();
        const cv::Mat fg = m.method(s.picture, alpha);
        const double secs = secondsSince(t0);
        const auto [e0, e1] = sampleErrors(fg, s);
        std::printf("%-42s %10.3f %12.3f %7.3f s\n", m.name, e0, e1, secs);
    }
}

// Mean |a F + (1 - a) B - I| over fractional pixels, 0..255.
double compositeError(const cv::Mat& bgr, const cv::Mat& alpha, const cv::Mat& fg,
                      const cv::Mat& bg01) {
    double sum = 0;
    long n = 0;
    for (int y = 0; y < bgr.rows; ++y)
        for (int x = 0; x < bgr.cols; ++x) {
            const int av = alpha.at<unsigned char>(y, x);
            if (av == 0 || av == 255) continue;
            const double a = av / 255.0;
            for (int c = 0; c < 3; ++c)
                sum += std::fabs(a * fg.at<cv::Vec3b>(y, x)[c] +
                                 (1 - a) * 255.0 * bg01.at<cv::Vec3f>(y, x)[c] -
                                 bgr.at<cv::Vec3b>(y, x)[c]);
            n += 3;
        }
    return n ? sum / static_cast<double>(n) : 0.0;
}

void alphamattingQuality(const std::string& dir, size_t first) {
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(dir + "/input"))
        names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    if (names.size() > first) names.resize(first);
    const size_t m = methods().size();
    std::printf(
        "\nalphamatting, true alpha, fractional pixels: |a F + (1 - a) B_multilevel - I|\n");
    std::printf("%-8s", "picture");
    for (const Named& k : methods()) std::printf(" %12.12s", k.name);
    std::printf("   (then seconds, same order)\n");
    std::vector<double> totalErr(m, 0), totalSecs(m, 0);
    int count = 0;
    for (const std::string& n : names) {
        const cv::Mat bgr = cv::imread(dir + "/input/" + n, cv::IMREAD_COLOR);
        const cv::Mat gt = cv::imread(dir + "/gt/" + n, cv::IMREAD_GRAYSCALE);
        if (bgr.empty() || gt.size() != bgr.size()) continue;
        const cv::Mat bg = estimateForegroundMultiLevel(bgr, gt).background;
        std::printf("%-8s", n.substr(0, n.find('.')).c_str());
        std::vector<double> secs(m);
        for (size_t k = 0; k < m; ++k) {
            const auto t0 = std::chrono::steady_clock::now();
            const cv::Mat fg = methods()[k].method(bgr, gt);
            secs[k] = secondsSince(t0);
            const double e = compositeError(bgr, gt, fg, bg);
            totalErr[k] += e;
            totalSecs[k] += secs[k];
            std::printf(" %12.3f", e);
        }
        for (double t : secs) std::printf(" %6.3f", t);
        std::printf("\n");
        ++count;
    }
    if (!count) return;
    std::printf("%-8s", "mean");
    for (size_t k = 0; k < m; ++k) std::printf(" %12.3f", totalErr[k] / count);
    for (size_t k = 0; k < m; ++k) std::printf(" %6.3f", totalSecs[k] / count);
    std::printf(
        "\nmulti-level error vs engine whole-picture entry: %.1f%%, vs full scale: %.1f%%\n",
        100.0 * (totalErr[m - 1] / totalErr[0] - 1), 100.0 * (totalErr[m - 1] / totalErr[2] - 1));
}

void largePicture(const std::string& dir) {
    const cv::Mat bgr0 = cv::imread(dir + "/input/GT01.png", cv::IMREAD_COLOR);
    const cv::Mat gt0 = cv::imread(dir + "/gt/GT01.png", cv::IMREAD_GRAYSCALE);
    if (bgr0.empty() || gt0.empty()) return;
    const cv::Size big(4000, 3000);
    cv::Mat bgr, gt;
    cv::resize(bgr0, bgr, big, 0, 0, cv::INTER_CUBIC);
    cv::resize(gt0, gt, big, 0, 0, cv::INTER_LINEAR);
    std::printf("\nGT01 enlarged to %dx%d, true alpha\n", big.width, big.height);
    const cv::Mat bg = estimateForegroundMultiLevel(bgr, gt).background;
    for (const Named& m : methods()) {
        if (std::strstr(m.name, "full scale")) continue;  // minutes at 12 MP
        const double startMB = residentMB();
        resetPeakMemory();
        const auto t0 = std::chrono::steady_clock::now();
        const cv::Mat fg = m.method(bgr, gt);
        const double secs = secondsSince(t0);
        std::printf("%-42s %7.2f s  peak over start %7.1f MB  error %.3f\n", m.name, secs,
                    peakMB() - startMB, compositeError(bgr, gt, fg, bg));
    }
}

}  // namespace

int main(int argc, char** argv) {
    size_t first = 1000;
    bool large = true;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--first") && i + 1 < argc) first = std::stoul(argv[++i]);
        if (!std::strcmp(argv[i], "--no-large")) large = false;
    }
    sampleQuality(800, 600);
    const std::string dir = std::string(KC_SHARED_DATA_DIR) + "/alphamatting";
    if (!std::filesystem::exists(dir + "/input")) {
        std::printf("\nalphamatting pictures absent: skipped\n");
        return 0;
    }
    alphamattingQuality(dir, first);
    if (large) largePicture(dir);
    return 0;
}
