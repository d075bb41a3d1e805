// The direct mask entry beside the main entry on the alphamatting training
// set: each picture's first trimap goes to rkMaskAlpha as its rough mask (cut
// 0, keep 255, everything between solved, no output stretch) and, as a brush
// map, to rkKeepCutToAlpha's full-resolution pass (bench_quality's case 4).
// Prints SAD (sum of |alpha - truth| over the trimap's band, alpha in 0..1,
// / 1000) and seconds per picture, the means, and the time ratio.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "engine_job.h"
#include "image_io.h"
#include "matte_metrics.h"

namespace {

namespace fs = std::filesystem;

// The trimap as the rough mask: its 0 and 255 are the known levels, and the
// output range is left as solved.
constexpr int kHighCode = 255, kLowCode = 0, kOutHigh = 255, kOutLow = 0;

struct Score {
    double sad = 0.0;
    double seconds = 0.0;
    int code = 1;
};

double secondsSince(std::chrono::steady_clock::time_point t) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t).count();
}

Score runMaskAlpha(const cv::Mat& picture, const cv::Mat& trimap, const cv::Mat& truth) {
    std::vector<cv::Mat> bgr;
    cv::split(picture, bgr);
    // One block of three planes, so that they share one row step.
    cv::Mat planes;
    cv::vconcat(std::vector<cv::Mat>{bgr[2], bgr[1], bgr[0]}, planes);
    cv::Mat alpha = trimap.clone();
    RKMaskImage image{};
    for (int c = 0; c < 3; ++c) image.planes[c] = planes.ptr(c * picture.rows);
    image.planeRowBytes = static_cast<int>(planes.step);
    image.alpha = alpha.data;
    image.alphaRowBytes = static_cast<int>(alpha.step);
    image.width = picture.cols;
    image.height = picture.rows;
    Score s;
    const auto t = std::chrono::steady_clock::now();
    s.code = rkMaskAlpha(&image, 0, kHighCode, kLowCode, kOutHigh, kOutLow, 0, 0.0f);
    s.seconds = secondsSince(t);
    s.sad = scoreMatte(alpha, truth, unknownBand(trimap)).sad;
    return s;
}

Score runKeepCut(const cv::Mat& picture, const cv::Mat& trimap, const cv::Mat& truth) {
    EngineJob job(picture, brushMapFromTrimap(trimap));
    RKPSStructMsk2 r = job.r;
    Score s;
    const auto t = std::chrono::steady_clock::now();
    s.code = rkKeepCutToAlpha(&r, 1, false);
    s.seconds = secondsSince(t);
    s.sad = scoreMatte(matteFromMask(job.mask), truth, unknownBand(trimap)).sad;
    return s;
}

}  // namespace

int main() {
    const fs::path root = fs::path(KC_SHARED_DATA_DIR) / "alphamatting";
    if (!fs::exists(root / "input")) {
        std::printf("bench_mask_alpha: %s not found, nothing to measure\n", root.c_str());
        return 0;
    }
    std::vector<fs::path> images;
    for (const auto& e : fs::directory_iterator(root / "input")) images.push_back(e.path());
    std::sort(images.begin(), images.end());

    std::printf("%-7s| %10s %8s | %10s %8s\n", "trimap1", "mask SAD", "mask s", "main SAD",
                "main s");
    Score sum[2];
    int n = 0;
    for (const fs::path& in : images) {
        const fs::path tri = root / "trimap1" / in.filename();
        const fs::path gt = root / "gt" / in.filename();
        if (!fs::exists(tri) || !fs::exists(gt)) continue;
        const cv::Mat picture = loadPicture(in.string());
        const cv::Mat trimap = loadTrimap(tri.string(), picture.size());
        const cv::Mat truth = loadTrimap(gt.string(), picture.size());  // grey 0..255
        const Score s[2] = {runMaskAlpha(picture, trimap, truth),
                            runKeepCut(picture, trimap, truth)};
        std::printf("%-7s|", in.stem().c_str());
        for (int k = 0; k < 2; ++k) {
            std::printf(" %10.3f %8.2f%s", s[k].sad, s[k].seconds, s[k].code == 1 ? " |" : "!|");
            sum[k].sad += s[k].sad;
            sum[k].seconds += s[k].seconds;
        }
        std::printf("\n");
        std::fflush(stdout);  // one line per picture, visible as it goes
        ++n;
    }
    if (n == 0) return 0;
    std::printf("%-7s|", "mean");
    for (int k = 0; k < 2; ++k) std::printf(" %10.3f %8.2f |", sum[k].sad / n, sum[k].seconds / n);
    std::printf(
        "\nrkMaskAlpha vs rkKeepCutToAlpha: SAD x %.2f, time x %.2f ('!' marks a failed "
        "call)\n",
        sum[0].sad / sum[1].sad, sum[0].seconds / sum[1].seconds);
    return 0;
}
