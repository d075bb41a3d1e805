// A GrabCut selection driven as a host drives it, and the rectangle-to-cut-out
// road built on it.
#include "grabcut_road.h"

#include <algorithm>
#include <cstdio>
#include <opencv2/imgproc.hpp>

#include "engine_job.h"
#include "image_io.h"
#include "progress_bar.h"

namespace {

// GrabCut map bytes: bit 0 is foreground, bit 1 a hard constraint.
constexpr unsigned char kProbableForeground = 1;
constexpr unsigned char kHardBackground = 2;
constexpr unsigned char kHardForeground = 3;
// How the trimap entry reads a selected, unpainted pixel; the session's end
// turns it into a painted keep (and 0 into a painted cut).
constexpr unsigned char kSelected = 254;
// The GrabCut entries refuse regions of 10 pixels or less a side.
constexpr int kMinRectSide = 11;
// Default band: 3% of the shorter side, at least 8 pixels. On the 19
// alphamatting photos (about 800 x 500) whose widened true-alpha box leaves
// background around it, mean whole-picture SAD for fixed bands of 6, 10, 15,
// 20, 30 and 45 px was 53.7, 53.0, 52.9, 52.7, 53.2 and 54.3 (bench_grabcut
// with a band argument): flat from 10 to 20 px, where 3% of ~500 lands. The
// floor keeps small pictures from a band too thin to hold an edge.
constexpr double kBandShare = 0.03;
constexpr int kMinBand = 8;

}  // namespace

int defaultBandWidth(cv::Size picture) {
    return std::max(kMinBand,
                    static_cast<int>(std::min(picture.width, picture.height) * kBandShare));
}

std::string grabCutRectProblem(const cv::Rect& rect, cv::Size picture) {
    if (rect.x < 0 || rect.y < 0 || rect.width <= 0 || rect.height <= 0 ||
        rect.x + rect.width > picture.width || rect.y + rect.height > picture.height)
        return "rectangle " + std::to_string(rect.x) + "," + std::to_string(rect.y) + "," +
               std::to_string(rect.width) + "," + std::to_string(rect.height) +
               " does not lie inside the " + std::to_string(picture.width) + "x" +
               std::to_string(picture.height) + " picture";
    if (rect.width < kMinRectSide || rect.height < kMinRectSide)
        return "rectangle must be more than 10 pixels wide and high";
    return {};
}

GrabCutSelection::GrabCutSelection(const cv::Mat& imageBgrx, const cv::Rect& rect)
    : map_(imageBgrx.size(), CV_8UC1, cv::Scalar(kHardBackground)),
      brush_(imageBgrx.size(), CV_8UC1, cv::Scalar(0)) {
    map_(rect).setTo(kProbableForeground);
    // The entries only read the picture; GrabCut has no use for a foreground.
    cv::Mat picture = imageBgrx, noForeground;
    r_ = wholePictureRequest(picture, map_, noForeground, brush_);
    r_.gcWidth = imageBgrx.cols;
    r_.gcHeight = imageBgrx.rows;
}

GrabCutSelection::~GrabCutSelection() {
    if (r_.grabCutBuf) rkGrabCutDeleteBuf(&r_);
}

void GrabCutSelection::paint(cv::Point from, cv::Point to, int radius, bool foreground) {
    cv::line(map_, from, to, cv::Scalar(foreground ? kHardForeground : kHardBackground),
             2 * radius + 1);
}

int GrabCutSelection::select(RKProgressProc progress, void* progressData) {
    r_.progProc = progress;
    r_.progData = progressData;
    clearErrMsg();
    return rkGrabCut(&r_, 1);
}

cv::Mat GrabCutSelection::selected() const {
    return (map_ & 1) * 255;
}

cv::Mat GrabCutSelection::finishAsBrushMap(int band) {
    brush_.setTo(0);
    brush_.setTo(kSelected, (map_ & 1) != 0);
    rkGrabCutEdgeGen(&r_, band);
    rkGrabCutDeleteBuf(&r_);  // also codes 0 and 254 as painted cut and keep
    r_.grabCutBuf = nullptr;
    return map_.clone();
}

CutoutResult cutOut(const cv::Mat& pictureBgr, const cv::Rect& rect, int band) {
    EngineJob job(pictureBgr, cv::Mat(pictureBgr.size(), CV_8UC1, cv::Scalar(0)));
    CutoutResult out;
    {
        GrabCutSelection selection(job.image, rect);
        const int rc = selection.select(drawProgressBar, nullptr);
        finishProgressBar();
        if (rc != 1) {
            std::fprintf(stderr, "%s\n", getErrMsg());
            throw ToolError("the GrabCut selection failed with code " + std::to_string(rc));
        }
        // Without both sides there is nothing for the matting to run between.
        const int kept = cv::countNonZero(selection.selected());
        if (kept == 0) throw ToolError("GrabCut selected nothing inside the rectangle");
        if (kept == static_cast<int>(pictureBgr.total()))
            throw ToolError(
                "GrabCut selected the whole picture: leave some background outside the rectangle");
        out.map = selection.finishAsBrushMap(band);
    }
    // A whole-picture job restores painted bytes from brushInfo, so both
    // maps hold the brush map.
    out.map.copyTo(job.mask);
    out.map.copyTo(job.brushInfo);
    // The high-resolution pass, as `keepcut matte` runs whole pictures by
    // default (see there for the measurements behind it).
    const int rc = runMainEntry(job.r, 1);
    if (rc != 1) {
        std::fprintf(stderr, "%s\n", getErrMsg());
        throw ToolError("the engine failed with code " + std::to_string(rc));
    }
    out.alpha = matteFromMask(job.mask);
    out.colours = cutoutColours(pictureBgr, out.alpha);
    return out;
}
