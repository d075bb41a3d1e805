// Whole-picture closed-form solve for the tool's --full mode.
#include "full_solve.h"

#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "image_io.h"
#include "matting/cfmatt.h"
#include "runtime/entry_guard.h"

namespace {
// The solver reads two pixels around every unknown one (its 3x3 windows and
// their members), so the known mask is eroded twice before counting.
constexpr int kSolverContextPx = 2;
// CompAlpha's own size limit in pixels.
constexpr long long kMaxFullPixels = 25000000LL;
}  // namespace

long long fullSolveVariables(const cv::Mat& trimap) {
    cv::Mat known = (trimap == 0) | (trimap == 255);
    cv::erode(known, known, cv::Mat(), cv::Point(-1, -1), kSolverContextPx, cv::BORDER_REPLICATE);
    return static_cast<long long>(known.total()) - cv::countNonZero(known);
}

cv::Mat solveFullResolution(const cv::Mat& picture, const cv::Mat& trimap) {
    if (static_cast<long long>(picture.total()) > kMaxFullPixels)
        throw ToolError("--full takes pictures of at most 25 megapixels");
    const long long vars = fullSolveVariables(trimap);
    if (vars > kMaxSystemVariables)
        throw ToolError("--full: " + std::to_string(vars) +
                        " unknowns (band plus context) exceed the solver's " +
                        std::to_string(kMaxSystemVariables) +
                        "; use the default mode, which works at reduced scale");

    std::vector<cv::Mat> bgr;
    cv::split(picture, bgr);
    // The engine's planes are red, green, blue and share one row step.
    cv::Mat planes(3 * picture.rows, picture.cols, CV_8UC1);
    unsigned char* rgb[3];
    for (int c = 0; c < 3; ++c) {
        cv::Mat dst = planes.rowRange(c * picture.rows, (c + 1) * picture.rows);
        bgr[2 - c].copyTo(dst);
        rgb[c] = dst.data;
    }
    cv::Mat alpha = trimap.clone();
    // CompAlpha treats only exact 0 and 255 as known; everything else unknown.
    const int rc = rkGuardEntry("full-resolution solve", [&] {
        CFMatt matt;
        matt.setSolver(true);
        return matt.CompAlpha(rgb, static_cast<int>(planes.step), picture.cols, picture.rows,
                              alpha.data, static_cast<int>(alpha.step));
    });
    if (rc != 0) throw ToolError("full-resolution solve failed with code " + std::to_string(rc));
    return alpha;
}
