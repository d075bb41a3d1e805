// Foreground recovery quality and cost.
//
// Quality on the generated sample (true foreground, background and alpha
// known), over pixels with 0 < alpha < 1: the alpha-weighted error |F - F_true|
// per channel, and the error of a composite over a new plain background
// (alpha |F - F_true| per pixel), against the naive choice F = picture.
// Target: composite error at least 3 times lower than naive. Recovery runs
// with the true alpha (so the figure isolates recovery) at full scale and
// through the region entry's reductions, then through the main entry with
// computed alpha.
//
// On the alphamatting pictures (input/, gt/) with their true alpha: how well
// alpha F + (1 - alpha) B reproduces the picture over fractional pixels, and
// the time per picture (first four pictures; --all for every one).
//
// Speed: the main entry on a 4000 x 3000 generated picture with and without
// recoverForeground; targets at most +100% time and +1 GB peak memory.
// Options: --all (every alphamatting picture), --no-speed, --speed-size WxH.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "engine_job.h"
#include "matting/cfmatt.h"
#include "pipeline/fg_extract.h"
#include "pipeline/fg_recover.h"
#include "pipeline/fg_recover_tiles.h"
#include "support/peak_memory.h"
#include "synthetic_sample.h"

namespace {

constexpr int kSampleW = 800, kSampleH = 600;
// The new plain background of the composite check.
const cv::Vec3f kNewBackground(128, 128, 128);

double seconds(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

struct Errors {
    double channel[3] = {0, 0, 0};  // alpha-weighted mean |F - F_true|, B, G, R
    double composite = 0;           // mean alpha |F - F_true| over the fractional pixels
};

Errors foregroundErrors(const cv::Mat& fg4, const SyntheticSample& s) {
    Errors e;
    double weight = 0;
    long n = 0;
    for (int y = 0; y < fg4.rows; ++y)
        for (int x = 0; x < fg4.cols; ++x) {
            const float a = s.alpha.at<float>(y, x);
            if (a <= 0.0f || a >= 1.0f) continue;
            const cv::Vec4b f = fg4.at<cv::Vec4b>(y, x);
            const cv::Vec3f t = s.foreground.at<cv::Vec3f>(y, x);
            double comp = 0;
            for (int c = 0; c < 3; ++c) {
                const double d = std::fabs(f[c] - t[c]);
                e.channel[c] += a * d;
                // Composite over the new background: a F + (1 - a) N, rounded
                // like a display, against the true composite.
                const double shown = std::round(a * f[c] + (1 - a) * kNewBackground[c]);
                const double truth = a * t[c] + (1 - a) * kNewBackground[c];
                comp += std::fabs(shown - truth);
            }
            e.composite += comp / 3;
            weight += a;
            ++n;
        }
    for (double& c : e.channel) c /= weight;
    e.composite /= static_cast<double>(n);
    return e;
}

void printRow(const char* name, const Errors& e, const Errors& naive, double secs) {
    std::printf("%-44s %6.2f %6.2f %6.2f  %7.3f  %6.1fx  %7.2f s\n", name, e.channel[0],
                e.channel[1], e.channel[2], e.composite, naive.composite / e.composite, secs);
}

void sampleQuality() {
    const SyntheticSample s = makeSyntheticSample(kSampleW, kSampleH);
    const cv::Mat trueMask = brushMapFromAlpha(s.alpha);
    std::printf("\nGenerated sample %dx%d, fractional pixels only\n", kSampleW, kSampleH);
    std::printf("%-44s %6s %6s %6s  %7s  %7s  %9s\n", "foreground", "|dB|", "|dG|", "|dR|",
                "compos.", "vs naive", "time");
    EngineJob naiveBuf(s.picture, trueMask);
    const Errors naive = foregroundErrors(naiveBuf.image, s);
    printRow("naive F = picture", naive, naive, 0);

    auto run = [&](const char* name, const cv::Mat& mask,
                   const std::function<void(EngineJob&)>& f) {
        EngineJob b(s.picture, mask);
        const auto t0 = std::chrono::steady_clock::now();
        f(b);
        printRow(name, foregroundErrors(b.foreground, s), naive, seconds(t0));
    };
    const cv::Rect all(0, 0, kSampleW, kSampleH);
    run("true alpha, tiled extraction, full scale", trueMask,
        [&](EngineJob& b) { recoverForegroundRegion(b.r, all, 1.0f, false, extractAllTiles); });
    run("true alpha, region entry (scale 0.33)", trueMask,
        [](EngineJob& b) { rkRecoverForegroundCell(&b.r, true); });
    run("true alpha, whole-picture (0.18)", trueMask,
        [](EngineJob& b) { rkRecoverForegroundCell(&b.r, false); });
    run("true alpha, rkRecoverForeground (0.18)", trueMask,
        [](EngineJob& b) { rkRecoverForeground(&b.r); });
    run("true alpha, rkRecoverForegroundKDTree (0.18)", trueMask,
        [](EngineJob& b) { rkRecoverForegroundKDTree(&b.r); });
    const cv::Mat trimapMask = brushMapFromTrimap(s.trimap);
    run("main entry, region job, computed alpha", trimapMask, [](EngineJob& b) {
        b.r.cellMode = 1;
        b.r.recoverForeground = true;
        rkKeepCutToAlpha(&b.r, 0, false);
    });
    run("main entry, whole picture, computed alpha", trimapMask, [](EngineJob& b) {
        b.r.recoverForeground = true;
        rkKeepCutToAlpha(&b.r, 0, false);
    });
    run("rkRecoverDuringComputeOnly, computed alpha", trimapMask,
        [](EngineJob& b) { rkRecoverDuringComputeOnly(&b.r); });
}

// F and B of a whole picture at full scale with the given alpha bytes.
void extractLayers(const cv::Mat& bgr, const cv::Mat& alpha, cv::Mat& fg, cv::Mat& bg) {
    std::vector<cv::Mat> ch;
    cv::split(bgr, ch);
    fg = bgr.clone();
    bg = bgr.clone();
    CFMatt matt;
    const int side = fgRecoverTileSide(usableMemInMB());
    for (const FgTile& t : fgRecoverTiling(bgr.cols, bgr.rows, side)) {
        for (int layer = 0; layer < 2; ++layer) {
            cv::Mat planes[3];
            GIMG<unsigned char>* views[3];
            std::vector<std::unique_ptr<GIMG<unsigned char>>> owned;
            for (int c = 0; c < 3; ++c) {
                planes[c] = ch[2 - c](t.rect).clone();
                owned.push_back(std::make_unique<GIMG<unsigned char>>(
                    planes[c].cols, planes[c].rows, planes[c].data,
                    static_cast<int>(planes[c].step)));
                views[c] = owned.back().get();
            }
            cv::Mat a = alpha(t.rect).clone();
            GIMG<unsigned char> av(a.cols, a.rows, a.data, static_cast<int>(a.step));
            matt.CompFBExtract(views, layer == 1, &av);
            cv::Mat& out = layer == 0 ? fg : bg;
            const cv::Rect k = t.keep();
            for (int c = 0; c < 3; ++c) {
                cv::Mat merged[] = {planes[c](k - t.rect.tl())};
                cv::Mat dst = out(k);
                int from_to[] = {0, 2 - c};
                cv::mixChannels(merged, 1, &dst, 1, from_to, 1);
            }
        }
    }
}

void alphamattingQuality(bool all) {
    const std::string dir = std::string(KC_SHARED_DATA_DIR) + "/alphamatting";
    if (!std::filesystem::exists(dir + "/input")) {
        std::printf("\nalphamatting pictures absent: skipped\n");
        return;
    }
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(dir + "/input"))
        names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    if (!all && names.size() > 4) names.resize(4);
    std::printf("\nalphamatting, true alpha, fractional pixels: |a F + (1 - a) B - I|\n");
    std::printf("%-10s %10s %10s %10s %10s\n", "picture", "size", "mean", "p99", "time");
    for (const std::string& n : names) {
        const cv::Mat bgr = cv::imread(dir + "/input/" + n, cv::IMREAD_COLOR);
        const cv::Mat gt = cv::imread(dir + "/gt/" + n, cv::IMREAD_GRAYSCALE);
        if (bgr.empty() || gt.empty()) continue;
        cv::Mat fg, bg;
        const auto t0 = std::chrono::steady_clock::now();
        extractLayers(bgr, gt, fg, bg);
        const double secs = seconds(t0);
        std::vector<float> err;
        for (int y = 0; y < bgr.rows; ++y)
            for (int x = 0; x < bgr.cols; ++x) {
                const int av = gt.at<unsigned char>(y, x);
                if (av == 0 || av == 255) continue;
                const double a = av / 255.0;
                for (int c = 0; c < 3; ++c)
                    err.push_back(static_cast<float>(std::fabs(a * fg.at<cv::Vec3b>(y, x)[c] +
                                                               (1 - a) * bg.at<cv::Vec3b>(y, x)[c] -
                                                               bgr.at<cv::Vec3b>(y, x)[c])));
            }
        if (err.empty()) continue;
        double mean = 0;
        for (float v : err) mean += v;
        mean /= static_cast<double>(err.size());
        std::nth_element(err.begin(), err.begin() + err.size() * 99 / 100, err.end());
        std::printf("%-10s %4dx%-5d %10.3f %10.2f %8.2f s\n", n.c_str(), bgr.cols, bgr.rows, mean,
                    err[err.size() * 99 / 100], secs);
    }
}

void speed(int w, int h) {
    std::printf("\nMain entry on a %dx%d generated picture (whole-picture job)\n", w, h);
    const SyntheticSample s = makeSyntheticSample(w, h);
    const cv::Mat mask = brushMapFromTrimap(s.trimap);
    double secs[2] = {0, 0}, peakMB[2] = {0, 0};
    for (int recover = 0; recover < 2; ++recover) {
        EngineJob b(s.picture, mask);
        b.r.recoverForeground = recover != 0;
        const double startMB = residentMB();
        resetPeakMemory();
        const auto t0 = std::chrono::steady_clock::now();
        const int result = rkKeepCutToAlpha(&b.r, 0, false);
        secs[recover] = seconds(t0);
        peakMB[recover] = ::peakMB() - startMB;
        std::printf("%-28s result %d  %8.2f s  peak over start %8.1f MB\n",
                    recover ? "with recoverForeground" : "without", result, secs[recover],
                    peakMB[recover]);
    }
    std::printf("recovery adds %.0f%% time (target <= 100%%), %+.0f MB peak (target <= 1024)\n",
                100.0 * (secs[1] - secs[0]) / secs[0], peakMB[1] - peakMB[0]);
}

}  // namespace

int main(int argc, char** argv) {
    bool all = false, doSpeed = true;
    int sw = 4000, sh = 3000;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--all")) all = true;
        if (!std::strcmp(argv[i], "--no-speed")) doSpeed = false;
        if (!std::strcmp(argv[i], "--speed-size") && i + 1 < argc)
            std::sscanf(argv[++i], "%dx%d", &sw, &sh);
    }
    sampleQuality();
    alphamattingQuality(all);
    if (doSpeed) speed(sw, sh);
    return 0;
}
