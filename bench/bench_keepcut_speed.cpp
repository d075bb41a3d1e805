// Time and peak memory of the main keep/cut entry on the generated sample:
// whole-picture jobs on both passes (cases 4 and 8) at 800 x 600 and at 12
// megapixels, and region jobs on the subject's upper edge. Peak memory is the
// kernel's high-water mark (VmHWM), reset through /proc/self/clear_refs
// before each run; "over start" subtracts the resident size at the start, so
// it is what the call itself added. Targets: a whole-picture job on the
// 12-megapixel picture under 3 s with a peak under 2 GB.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "api/keepcut.h"
#include "support/peak_memory.h"
#include "synthetic_sample.h"

namespace {

constexpr unsigned char kTrimapKeep = 255;

// The request's buffers only; the sample's float planes are dropped so that
// they do not count towards the peak.
struct Buffers {
    cv::Mat image, mask, brush, foreground;
    int topEdgeRow = 0;  // first unknown row in the middle column
    Buffers(int w, int h) {
        SyntheticSample s = makeSyntheticSample(w, h);
        cv::cvtColor(s.picture, image, cv::COLOR_BGR2BGRA);
        mask.create(h, w, CV_8UC1);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const unsigned char t = s.trimap.at<unsigned char>(y, x);
                mask.at<unsigned char>(y, x) =
                    t == 0 ? static_cast<unsigned char>(RK_MASK_CUT)
                           : (t == kTrimapKeep ? static_cast<unsigned char>(RK_MASK_KEEP) : t);
            }
        while (topEdgeRow < h - 1 && (mask.at<unsigned char>(topEdgeRow, w / 2) & 1)) ++topEdgeRow;
        foreground.create(h, w, CV_8UC4);
        foreground.setTo(cv::Scalar::all(0));
    }
};

struct Job {
    const char* name;
    int hiResPass;
    int regionSide;  // 0: whole picture; else a square region centred on the upper edge
};

void run(Buffers& b, const Job& job) {
    cv::Mat mask = b.mask.clone();
    cv::Mat brush = mask.clone();
    RKPSStructMsk2 r;
    std::memset(&r, 0, sizeof r);
    r.image = b.image.data, r.imageRowBytes = static_cast<int>(b.image.step);
    r.mask = mask.data, r.maskRowBytes = static_cast<int>(mask.step);
    r.brushInfo = brush.data, r.brushInfoRowBytes = static_cast<int>(brush.step);
    r.foreground = b.foreground.data, r.foregroundRowBytes = static_cast<int>(b.foreground.step);
    r.width = r.roiWidth = b.image.cols;
    r.height = r.roiHeight = b.image.rows;
    r.mergeMode = 1;
    if (job.regionSide > 0) {
        const int s = job.regionSide;
        r.roiX = std::max(0, r.width / 2 - s / 2);
        r.roiY = std::max(0, b.topEdgeRow - s / 2);
        r.roiWidth = std::min(s, r.width - r.roiX);
        r.roiHeight = std::min(s, r.height - r.roiY);
        r.cellMode = 1;
    }
    const int askedW = r.roiWidth, askedH = r.roiHeight;
    clearErrMsg();
    const double startMB = residentMB();
    resetPeakMemory();
    const auto t0 = std::chrono::steady_clock::now();
    const int result = rkKeepCutToAlpha(&r, job.hiResPass, false);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    const double peak = peakMB();
    // The case number is the last figure of the strategy's finish text.
    const std::string log = getErrMsg();
    const size_t done = log.rfind("sucessful - ");
    const char* chosen = done == std::string::npos ? "?" : log.c_str() + done + 12;
    std::printf("%-26s %5dx%-5d %5dx%-5d %4.1s %6d %9.3f %9.0f %9.0f\n", job.name, b.image.cols,
                b.image.rows, askedW, askedH, chosen, result, seconds, peak, peak - startMB);
    std::fflush(stdout);
}

}  // namespace

// An optional argument runs only the jobs whose name contains it, on the
// 12-megapixel picture (for profiling one strategy).
int main(int argc, char** argv) {
    const char* only = argc > 1 ? argv[1] : nullptr;
    std::printf("%-26s %11s %11s %4s %6s %9s %9s %9s\n", "job", "picture", "region", "case",
                "result", "seconds", "peak_MB", "added_MB");
    const Job whole[] = {{"whole, full-res pass", 1, 0}, {"whole, coarse pass", 0, 0}};
    // Regions: 444 widens to about 1200 x 1200 (case 1); 356 to 960 x 960, the
    // largest that stays in case 5; a literal 1200 x 1200 widens past both
    // limits (cases 2 and 7).
    const Job regions[] = {{"region 444 (-> ~1198), hi", 1, 444},
                           {"region 356 (-> ~960), coarse", 0, 356},
                           {"region 1200, full-res pass", 1, 1200},
                           {"region 1200, coarse pass", 0, 1200}};
    if (!only) {
        Buffers small(800, 600);
        for (const Job& j : whole) run(small, j);
        for (const Job& j : regions)
            if (j.regionSide < 600) run(small, j);
    }
    Buffers large(4000, 3000);
    for (const Job& j : whole)
        if (!only || std::strstr(j.name, only)) run(large, j);
    for (const Job& j : regions)
        if (!only || std::strstr(j.name, only)) run(large, j);
    return 0;
}
