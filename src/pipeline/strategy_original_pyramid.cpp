// The original-pyramid strategy for regions of moderate size: reduce the
// region by an integer factor, solve it there with the multi-resolution
// closed-form solve, and bring the alpha back through the local linear colour
// model. Region jobs hold the region's rim fixed so that the result joins the
// mask around it.
#include <algorithm>
#include <cstring>

#include "pipeline/alpha_smoothing.h"
#include "pipeline/mask_bbox.h"
#include "pipeline/request_maps.h"
#include "pipeline/strategies.h"
#include "pyramid/linear_coeff_upsample.h"

namespace {

// sigma >= 0: the factor is bounded by the area over this many pixels...
constexpr double kAreaPerFactorStep = 62500.0;
// ...and is at least this.
constexpr double kMinBoundedFactor = 2.0;
// sigma < 0: the factor is the area over this many pixels, at most 8; factors
// below kNoReductionBelow mean no reduction.
constexpr float kAreaPerFactorFree = 40000.0f;
constexpr float kMaxFreeFactor = 8.0f;
constexpr double kNoReductionBelow = 1.1;
// The coefficient fit needs a 3 x 3 window inside the reduced region.
constexpr int kMinReducedSide = 3;
// Rim of a region job at reduced size, and how near (in full-size pixels) the
// region must come to the picture's edge for that side to stay open.
constexpr int kRimThickness = 7;
constexpr int kEdgeDistance = 10;
// Masks that read 127 at reduced size are no constraint, even on the rim.
constexpr unsigned char kRimNeutral = 127;
// Brush values the work box is found around.
constexpr int kKeep = 255;
constexpr int kCut = 1;
// The solve's own colour order: red, green, blue out of B, G, R pixels.
constexpr int kRedGreenBlue[3] = {2, 1, 0};

int decimationFactor(int w, int h, float sigma) {
    const double area = static_cast<double>(w) * h;
    int d;
    if (sigma >= 0) {
        d = static_cast<int>(
            std::max(std::min(static_cast<double>(maskv3Decimation), area / kAreaPerFactorStep),
                     kMinBoundedFactor));
    } else {
        d = static_cast<int>(
            std::min(kMaxFreeFactor, static_cast<float>(area / kAreaPerFactorFree)));
        if (d < kNoReductionBelow) d = 1;
    }
    // Degenerate thin regions: reduce less rather than leave no 3 x 3 window.
    while (d > 1 && (w / d < kMinReducedSide || h / d < kMinReducedSide)) --d;
    return d;
}

// Known rim of a region job; sides near the picture's edge stay open. The
// right and bottom tests look at the region's left and top coordinates.
void holdRegionRim(const RKPSStructMsk2& r, cv::Mat& known, cv::Mat& mask) {
    RimSides open;
    open.left = r.roiX < kEdgeDistance;
    open.top = r.roiY < kEdgeDistance;
    open.right = r.roiX > r.width - kEdgeDistance - 1;
    open.bottom = r.roiY > r.height - kEdgeDistance - 1;
    drawKnownRim(known, kRimThickness, open);
    known.setTo(0, mask == kRimNeutral);
    // Every known pixel counts as painted in the reduced request.
    cv::Mat knownBit;
    cv::bitwise_and(known, cv::Scalar(1), knownBit);
    cv::bitwise_or(mask, knownBit, mask);
}

// Shared body of rkKeepCutToAlphaOriginal and rkKeepCutToAlphaPyramid.
int solveAtOwnResolution(RKPSStructMsk2* r, int level) {
    cv::Rect box(r->roiX, r->roiY, r->roiWidth, r->roiHeight);
    if (r->cellMode == 0) {
        const cv::Mat region = regionMaskView(*r);
        int x = 0, w = 0, y = 0, h = 0, keep = 0, cut = 0;
        rkMaskBBox(region.data, static_cast<int>(region.step), region.cols, region.rows, &x, &w, &y,
                   &h, &keep, &cut, 0, kKeep, kCut);
        box = cv::Rect(r->roiX + x, r->roiY + y, w, h);
        const long long unpainted = static_cast<long long>(w) * h - keep - cut;
        int result = 0;
        if (w < 1 || h < 1)
            result = kErrNotEnoughStrokes;
        else if (unpainted < kMinUnknownPixels)
            result = 1;
        else if (cut == 0 || keep == 0)
            result = kErrNotEnoughStrokes;
        if (result != 0) {
            recoverBrushInfo(r);
            return result;
        }
    }

    const cv::Mat picture =
        cv::Mat(r->height, r->width, CV_8UC4, r->image, static_cast<size_t>(r->imageRowBytes))(box);
    ColourPlanes colours(picture, kRedGreenBlue);
    cv::Mat mask =
        cv::Mat(r->height, r->width, CV_8UC1, r->mask, static_cast<size_t>(r->maskRowBytes))(box);
    const cv::Mat saved = mask.clone();
    cv::Mat known;
    knownFromBrushWidening(mask, known);

    GIMG<unsigned char> red = planeView(colours.plane[0]), green = planeView(colours.plane[1]),
                        blue = planeView(colours.plane[2]);
    GIMG<unsigned char>* planes[] = {&red, &green, &blue};
    GIMG<unsigned char> knownImg = planeView(known), maskImg = planeView(mask);
    rkMapAlphaProc(planes, &knownImg, &maskImg, level, true);

    // Results are unpainted bytes; painted ones return exactly.
    cv::bitwise_and(mask, cv::Scalar(254), mask);
    saved.copyTo(mask, known);
    return 1;
}

}  // namespace

int rkKeepCutToAlphaOriginal(RKPSStructMsk2* request, int level, PosInfo& /*pos*/) {
    return solveAtOwnResolution(request, level);
}

extern "C" int rkKeepCutToAlphaPyramid(RKPSStructMsk2* request, int /*level*/) {
    // Level 0 makes the solve carry its alpha up by guided upsampling alone.
    return solveAtOwnResolution(request, 0);
}

void computeAlphaOriginalPyramid(RKPSStructMsk2* request, bool smooth, float sigma) {
    const int w = request->roiWidth, h = request->roiHeight;
    cv::Mat mask = regionMaskView(*request);
    cv::Mat picture = regionPictureView(*request);
    cv::Mat known;
    knownFromBrush(mask, known);

    const int d = decimationFactor(w, h, sigma);
    maskv3Decimation = d;
    const int lw = w / d, lh = h / d;
    if (lw < kMinReducedSide || lh < kMinReducedSide) return;  // too thin to fit a colour model
    const cv::Size reduced(lw, lh);
    cv::Mat smallKnown = resizeNearest(known, reduced);
    cv::Mat smallMask = resizeNearest(mask, reduced);
    cv::Mat smallPicture = resizeNearest(picture, reduced);

    RKPSStructMsk2 small;
    std::memset(&small, 0, sizeof small);
    small.image = smallPicture.data;
    small.imageRowBytes = static_cast<int>(smallPicture.step);
    small.mask = smallMask.data;
    small.maskRowBytes = static_cast<int>(smallMask.step);
    small.width = small.roiWidth = lw;
    small.height = small.roiHeight = lh;
    small.cellMode = request->cellMode;
    PosInfo pos{request->width, request->height,   request->roiX,
                request->roiY,  request->roiWidth, request->roiHeight};

    if (request->cellMode != 0) holdRegionRim(*request, smallKnown, smallMask);
    rkKeepCutToAlphaOriginal(&small, 1, pos);
    if (smooth) smoothAlphaBilateral(smallMask, sigma);

    cv::Mat spare1, spare2;
    computeUpsampled_a1a2a3b_memorySave(smallMask, smallPicture, spare1, spare2, picture, known,
                                        mask, d);
    if (smooth) smoothAlphaFeathered(mask, sigma);
}
