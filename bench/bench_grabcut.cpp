// GrabCut selection on the alphamatting training set: for every picture, the
// rectangle around its true alpha (widened by 5% of each side) selected by
// rkGrabCut (reduced pyramid level, guided upsampling) beside cv::grabCut run
// directly at full resolution on the same rectangle with the same iterations,
// both scored against the true alpha thresholded at 128 (intersection over
// union) and timed in the same run. Then one picture enlarged to 4000 x 3000:
// the same two, and a further rkGrabCut stroke (a foreground stroke added).
// Beside them, the whole road of `keepcut cutout` from the same rectangle
// (GrabCut, band of the default width, main entry with foreground recovery):
// SAD of its matte over the whole picture against the true alpha (in
// thousands, as bench_quality counts it) and its time. An optional argument
// sets the band width in pixels instead of the default.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "core/img.h"
#include "select/grabcut.h"
#include "select/grabcut_control.h"
#include "grabcut_road.h"
#include "image_io.h"
#include "matte_metrics.h"

namespace {

namespace fs = std::filesystem;

// The rectangle grows by this share of its width and height on each side.
constexpr double kWiden = 0.05;
// True alpha from this value on counts as selected.
constexpr int kTruthThreshold = 128;
// Iterations of the cut, as rkGrabCut runs it; the same seed as well.
constexpr int kIterations = 3;
constexpr uint64_t kSeed = 0xffffffffULL;
// Map bytes: probable foreground inside the rectangle, hard background outside,
// hard foreground for the added stroke, and its radius.
constexpr unsigned char kProbableForeground = 1;
constexpr unsigned char kHardBackground = 2;
constexpr unsigned char kHardForeground = 3;
constexpr int kStrokeRadius = 25;
// The large picture and the targets: mean IoU within 0.02 of the full
// resolution's, at least 5x faster there, a stroke in under a second.
const cv::Size kLargeSize(4000, 3000);
constexpr double kIouTolerance = 0.02;
constexpr double kSpeedupTarget = 5.0;
constexpr double kStrokeSecondsTarget = 1.0;

double secondsSince(std::chrono::steady_clock::time_point t) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t).count();
}

double iou(const cv::Mat& selected, const cv::Mat& truth) {
    const double both = cv::countNonZero(selected & truth);
    const double either = cv::countNonZero(selected | truth);
    return either > 0 ? both / either : 1.0;
}

cv::Rect widenedBox(const cv::Mat& truthAlpha) {
    std::vector<cv::Point> points;
    cv::findNonZero(truthAlpha, points);
    const cv::Rect box = cv::boundingRect(points);
    const int dx = static_cast<int>(box.width * kWiden), dy = static_cast<int>(box.height * kWiden);
    const cv::Rect wide(box.x - dx, box.y - dy, box.width + 2 * dx, box.height + 2 * dy);
    return wide & cv::Rect(0, 0, truthAlpha.cols, truthAlpha.rows);
}

struct Run {
    double iou = 0.0, seconds = 0.0;
    int code = 1;
};

struct CutRun {
    double sad = 0.0, seconds = 0.0;
};

// The cut-out road; SAD over every pixel of the picture.
CutRun cutRoad(const cv::Mat& bgr, const cv::Rect& rect, const cv::Mat& alpha, int band) {
    const auto t = std::chrono::steady_clock::now();
    const CutoutResult cut = cutOut(bgr, rect, band > 0 ? band : defaultBandWidth(bgr.size()));
    CutRun run;
    run.seconds = secondsSince(t);
    run.sad = scoreMatte(cut.alpha, alpha, cv::Mat(alpha.size(), CV_8UC1, cv::Scalar(1))).sad;
    return run;
}

// One GrabCut session over the whole picture.
struct Session {
    cv::Mat image, mask, brush;
    RKPSStructMsk2 r{};
    Session(const cv::Mat& bgr, const cv::Rect& rect) {
        cv::cvtColor(bgr, image, cv::COLOR_BGR2BGRA);
        mask = cv::Mat(bgr.size(), CV_8UC1, cv::Scalar(kHardBackground));
        mask(rect).setTo(kProbableForeground);
        brush = cv::Mat(bgr.size(), CV_8UC1);
        r.image = image.data, r.imageRowBytes = static_cast<int>(image.step);
        r.mask = mask.data, r.maskRowBytes = static_cast<int>(mask.step);
        r.brushInfo = brush.data, r.brushInfoRowBytes = static_cast<int>(brush.step);
        r.width = r.gcWidth = bgr.cols;
        r.height = r.gcHeight = bgr.rows;
    }
    ~Session() { rkGrabCutDeleteBuf(&r); }
    Run stroke(const cv::Mat& truth) {
        const auto t = std::chrono::steady_clock::now();
        Run run;
        run.code = rkGrabCut(&r, 1);
        run.seconds = secondsSince(t);
        run.iou = iou((mask & 1) != 0, truth);
        return run;
    }
};

Run direct(const cv::Mat& bgr, const cv::Rect& rect, const cv::Mat& truth) {
    const auto t = std::chrono::steady_clock::now();
    cv::Mat mask, bgd, fgd;
    cv::theRNG().state = kSeed;
    Run run;
    try {
        cv::grabCut(bgr, mask, rect, bgd, fgd, kIterations, cv::GC_INIT_WITH_RECT);
    } catch (const cv::Exception&) {
        run.code = 0;  // no background left outside the rectangle
        return run;
    }
    run.seconds = secondsSince(t);
    run.iou = iou((mask & 1) != 0, truth);
    return run;
}

// A hard-foreground disc where the object is thickest.
void addForegroundStroke(Session& s, const cv::Mat& truth) {
    cv::Mat distance;
    cv::distanceTransform(truth, distance, cv::DIST_L2, 3);
    cv::Point deepest;
    cv::minMaxLoc(distance, nullptr, nullptr, nullptr, &deepest);
    cv::circle(s.mask, deepest, kStrokeRadius, cv::Scalar(kHardForeground), cv::FILLED);
}

// Where the gap to full resolution comes from: the same road (same pyramid,
// cut and upsampling), but its upsampled selection alpha counted as selected
// from 128 up instead of from 1 up as the entry's write-back counts it.
double midThresholdIou(const cv::Mat& bgr, const cv::Rect& rect, const cv::Mat& truth) {
    const int w = bgr.cols, h = bgr.rows;
    std::vector<cv::Mat> bgrPlanes;
    cv::split(bgr, bgrPlanes);
    GIMG<unsigned char> red(w, h), green(w, h), blue(w, h), alpha(w, h), consts(w, h);
    GIMG<unsigned char>* rgb[] = {&red, &green, &blue};
    for (int c = 0; c < 3; ++c)
        bgrPlanes[2 - c].copyTo(cv::Mat(h, w, CV_8UC1, rgb[c]->ptr(), rgb[c]->step));
    cv::Mat alphaView(h, w, CV_8UC1, alpha.ptr(), alpha.step);
    cv::Mat constsView(h, w, CV_8UC1, consts.ptr(), consts.step);
    // As rkGrabCut hands the session's map over: probable foreground inside,
    // hard background outside.
    alphaView.setTo(0), alphaView(rect).setTo(255);
    constsView.setTo(kHardBackground), constsView(rect).setTo(0);
    void* session = nullptr;
    rkMapAlphaProcGrabCut(rgb, &alpha, &consts, session, 1, true);
    GrabCutDeleteBuf(session);
    return iou(alphaView >= kTruthThreshold, truth);
}

void printRow(const std::string& name, const Run& road, const Run& full, const CutRun* cut) {
    std::printf("%-8s | %7.4f %7.3f%s | %7.4f %7.3f | %+7.4f %6.1fx", name.c_str(), road.iou,
                road.seconds, road.code == 1 ? " " : "!", full.iou, full.seconds,
                road.iou - full.iou, full.seconds / road.seconds);
    if (cut) std::printf(" | %8.3f %6.2f", cut->sad, cut->seconds);
    std::printf("\n");
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    const int band = argc > 1 ? std::atoi(argv[1]) : 0;
    const fs::path root = fs::path(KC_SHARED_DATA_DIR) / "alphamatting";
    if (!fs::exists(root / "input") || !fs::exists(root / "gt")) {
        std::printf("bench_grabcut: %s not found, nothing to measure\n", root.c_str());
        return 0;
    }
    std::vector<fs::path> images;
    for (const auto& e : fs::directory_iterator(root / "input")) images.push_back(e.path());
    std::sort(images.begin(), images.end());

    std::printf("%-8s | %7s %7s  | %7s %7s | %7s %7s | %8s %6s\n", "image", "rk IoU", "rk s",
                "cv IoU", "cv s", "diff", "speed", "cut SAD", "cut s");
    Run sum[2];
    CutRun cutSum;
    double midSum = 0.0;
    int n = 0;
    fs::path firstImage;
    for (const fs::path& in : images) {
        const fs::path gt = root / "gt" / in.filename();
        if (!fs::exists(gt)) continue;
        if (firstImage.empty()) firstImage = in;
        const cv::Mat bgr = loadPicture(in.string());
        const cv::Mat alpha = loadTrimap(gt.string(), bgr.size());
        const cv::Mat truth = alpha >= kTruthThreshold;
        const cv::Rect rect = widenedBox(alpha);
        Session s(bgr, rect);
        const Run road = s.stroke(truth), full = direct(bgr, rect, truth);
        if (road.code != 1 || full.code != 1) {
            // The widened box covers the whole picture: nothing is left to
            // learn the background from, and neither road can run.
            std::printf("%-8s | skipped: the rectangle leaves no background (rk %d)\n",
                        in.stem().c_str(), road.code);
            continue;
        }
        const CutRun cut = cutRoad(bgr, rect, alpha, band);
        printRow(in.stem().string(), road, full, &cut);
        cutSum.sad += cut.sad, cutSum.seconds += cut.seconds;
        midSum += midThresholdIou(bgr, rect, truth);
        sum[0].iou += road.iou, sum[0].seconds += road.seconds;
        sum[1].iou += full.iou, sum[1].seconds += full.seconds;
        ++n;
    }
    if (n == 0) return 0;
    const double meanDiff = (sum[0].iou - sum[1].iou) / n;
    std::printf("%-8s | %7.4f %7.3f  | %7.4f %7.3f | %+7.4f %6.1fx | %8.3f %6.2f\n", "mean",
                sum[0].iou / n, sum[0].seconds / n, sum[1].iou / n, sum[1].seconds / n, meanDiff,
                sum[1].seconds / sum[0].seconds, cutSum.sad / n, cutSum.seconds / n);

    std::printf("same road, selected from alpha 128 up: mean IoU %.4f (%+.4f against full "
                "resolution); the rest of the gap is the reduced working level\n",
                midSum / n, midSum / n - sum[1].iou / n);

    // One picture enlarged to 12 megapixels.
    cv::Mat bgr, alpha;
    const cv::Mat small = loadPicture(firstImage.string());
    cv::resize(small, bgr, kLargeSize, 0, 0, cv::INTER_CUBIC);
    cv::resize(loadTrimap((root / "gt" / firstImage.filename()).string(), small.size()), alpha,
               kLargeSize, 0, 0, cv::INTER_CUBIC);
    const cv::Mat truth = alpha >= kTruthThreshold;
    const cv::Rect rect = widenedBox(alpha > 0);
    Session s(bgr, rect);
    const Run road = s.stroke(truth);
    const Run full = direct(bgr, rect, truth);
    std::printf("\n%s enlarged to %d x %d:\n", firstImage.stem().c_str(), kLargeSize.width,
                kLargeSize.height);
    printRow("12 MP", road, full, nullptr);
    addForegroundStroke(s, truth);
    const Run stroke = s.stroke(truth);
    std::printf("stroke   | %7.4f %7.3f%s\n", stroke.iou, stroke.seconds,
                stroke.code == 1 ? "" : "!");

    const double speedup = full.seconds / road.seconds;
    std::printf(
        "\ntargets: mean IoU %+.4f against full resolution (within %.2f: %s); %.1fx faster at "
        "12 MP (>= %.0fx: %s); stroke %.3f s (< %.0f s: %s)\n",
        meanDiff, kIouTolerance, meanDiff >= -kIouTolerance ? "met" : "MISSED", speedup,
        kSpeedupTarget, speedup >= kSpeedupTarget ? "met" : "MISSED", stroke.seconds,
        kStrokeSecondsTarget, stroke.seconds < kStrokeSecondsTarget ? "met" : "MISSED");
    return 0;
}
