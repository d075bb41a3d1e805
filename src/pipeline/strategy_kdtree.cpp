// The KD-tree strategies for whole pictures and large regions: the region's
// problem is reduced (freely, or to the half-size level of a mask pyramid),
// cut into cells sized to memory and solved cell by cell, and the alpha is
// brought back to full size.
#include <algorithm>

#include "core/shared_step_planes.h"
#include "matting/cfmatt.h"
#include "matting/solver_block_pool.h"
#include "pipeline/alpha_smoothing.h"
#include "pipeline/kd_tree.h"
#include "pipeline/mask_codes.h"
#include "pipeline/request_maps.h"
#include "pipeline/strategies.h"
#include "pyramid/linear_coeff_upsample.h"
#include "pyramid/mask_pyramid.h"
#include "runtime/err_msg.h"

namespace {

// The reduced problem holds about this many pixels per factor step: the area
// ratio (not its square root) bounds the factor, so large pictures end near
// half a megapixel at most.
constexpr double kAreaPerFactorStep = 251001.0;
constexpr float kMinFactor = 2.0f;
// The reduced width never drops below this many columns.
constexpr int kMinReducedWidth = 501;
// Bytes one pixel of the reduced problem certainly costs while it is alive:
// its known map, mask, four-byte picture and three colour planes (9), and,
// while the alpha is carried back to full size, that alpha and the colours as
// floats (4 + 16) beside the four float coefficient maps (16).
constexpr double kReducedPixelBytes = 45.0;
// usableMemInMB() counts units of 1000 budget bytes.
constexpr double kBudgetUnit = 1000.0;
// Painted keep and cut after the known map's bit widening.
constexpr unsigned char kWidenedKeep = 255;
constexpr unsigned char kWidenedCut = 0;
// The tree's colour planes, in the picture's storage order (B, G, R).
constexpr int kStorageOrder[3] = {0, 1, 2};
// The pyramid strategy's tree works on level 1 (half size).
constexpr int kTreeLevel = 1;

void logLocation(const char* text) {
    copyErrMsg(text);
}

struct StrokeCounts {
    long long unknown = 0, keep = 0, cut = 0;
    bool enough() const { return unknown >= kMinUnknownPixels && keep > 0 && cut > 0; }
};

// Counts of a known map and its (widened) alpha; painted tells whether keep
// and cut must also be known pixels.
StrokeCounts countStrokes(const cv::Mat& known, const cv::Mat& alpha, bool paintedOnly) {
    StrokeCounts c;
    for (int y = 0; y < known.rows; ++y) {
        const unsigned char* k = known.ptr<unsigned char>(y);
        const unsigned char* a = alpha.ptr<unsigned char>(y);
        for (int x = 0; x < known.cols; ++x) {
            if (k[x] == 0) ++c.unknown;
            if (paintedOnly && k[x] == 0) continue;
            c.keep += a[x] == kWidenedKeep;
            c.cut += a[x] == kWidenedCut;
        }
    }
    return c;
}

// Refuses, as a cell too large, a reduced problem of lw x rows pixels that the
// memory budget cannot hold, before anything of that size is allocated. Only
// slivers come near: their width is widened to kMinReducedWidth columns and
// their height follows, so a 2 x 2000 picture would become 501 x 501000
// (rows is taken before any conversion to int, which it may not fit).
void refuseBeyondBudget(int lw, double rows) {
    if (static_cast<double>(lw) * rows * kReducedPixelBytes > usableMemInMB() * kBudgetUnit)
        throw kErrCellTooLarge;
}

// Builds, checks and solves the tree over the given reduced problem: leaves
// whose split was undone first, then the others.
void solveByTree(unsigned char* known, int knownStep, unsigned char** planes, int planeStep,
                 unsigned char* alpha, int alphaStep, unsigned char* foreground, int foregroundStep,
                 int width, int height, CFMatt& matt, const char* beforeFirst[],
                 const char* beforeSecond) {
    // Cells solve one after the other with factors of similar size.
    const SolverBlockReuse reuse;
    KDTree tree(known, knownStep, planes, planeStep, alpha, alphaStep, foreground, foregroundStep,
                width, height, &matt);
    tree.constructTree(tree.root.get());
    tree.checkMemoryUsage(tree.root.get());
    for (int i = 0; beforeFirst && beforeFirst[i]; ++i) logLocation(beforeFirst[i]);
    tree.traverseTree(tree.root.get(), kTreePriorityUndoneSplit);
    if (beforeSecond) logLocation(beforeSecond);
    tree.traverseTree(tree.root.get(), kTreePriorityOrdinary);
}

}  // namespace

void computeAlphaKDTreeHiRes(RKPSStructMsk2* request, bool smooth, float sigma) {
    RKPSStructMsk2& r = *request;
    logLocation(" computeAlphaKDTreeHiRes - location 1");
    const int w = r.roiWidth, h = r.roiHeight;
    cv::Mat mask = regionMaskView(r);
    cv::Mat picture = regionPictureView(r);
    cv::Mat foreground = regionForegroundView(r);

    cv::Mat known;
    knownFromBrushWidening(mask, known);
    if (r.cellMode == 0 && !countStrokes(known, mask, true).enough()) {
        recoverBrushInfo(request);
        throw kErrNotEnoughStrokes;
    }

    logLocation(" computeAlphaKDTreeHiRes - location 2");
    CFMatt matt;
    matt.setSolver(true);
    const float areaRatio = static_cast<float>(static_cast<double>(w) * h / kAreaPerFactorStep);
    float d;
    if (sigma >= 0) {
        d = std::max(std::min(static_cast<float>(maskv3Decimation), areaRatio), kMinFactor);
    } else {
        maskv3Decimation = kDefaultDecimation;
        d = std::max(std::min(static_cast<float>(kDefaultDecimation), areaRatio), kMinFactor);
    }
    maskv3Decimation = static_cast<int>(d);
    int lw = w / maskv3Decimation;
    double rows = h / maskv3Decimation;
    if (lw < kMinReducedWidth) {
        lw = kMinReducedWidth;
        rows = static_cast<double>(kMinReducedWidth) / w * h;
    }
    refuseBeyondBudget(lw, rows);
    // A very flat region still gets a 3 x 3 window.
    const int lh = std::max(static_cast<int>(rows), kMinReducedSide);

    const cv::Size reduced(lw, lh);
    cv::Mat smallKnown = resizeNearest(known, reduced);
    cv::Mat smallMask = resizeNearest(mask, reduced);
    cv::Mat smallPicture = resizeNearest(picture, reduced);
    ColourPlanes smallColours(smallPicture, kStorageOrder);

    logLocation(" computeAlphaKDTreeHiRes - location 3");
    if (r.cellMode != 0) {
        RimSides open;
        open.left = r.roiX < kRimEdgeDistance;
        open.top = r.roiY < kRimEdgeDistance;
        open.right = r.roiX + r.roiWidth > r.width - kRimEdgeDistance;
        open.bottom = r.roiY + r.roiHeight > r.height - kRimEdgeDistance;
        drawKnownRim(smallKnown, kReducedRimThickness, open);
    }

    logLocation(" computeAlphaKDTreeHiRes - location 4a");
    unsigned char* planes[] = {smallColours.plane[0].data, smallColours.plane[1].data,
                               smallColours.plane[2].data};
    const char* beforeFirst[] = {" computeAlphaKDTreeHiRes - location 4d",
                                 " computeAlphaKDTreeHiRes - location 4n", nullptr};
    solveByTree(smallKnown.data, static_cast<int>(smallKnown.step), planes, smallColours.step(),
                smallMask.data, static_cast<int>(smallMask.step), foreground.data,
                static_cast<int>(foreground.step), lw, lh, matt, beforeFirst,
                " computeAlphaKDTreeHiRes - location 4");

    logLocation(" computeAlphaKDTreeHiRes - location 5");
    if (smooth) smoothAlphaBilateral(smallMask, sigma);
    cv::Mat spare1, spare2;
    computeUpsampled_a1a2a3b_memorySave(smallMask, smallPicture, spare1, spare2, picture, known,
                                        mask, maskv3Decimation);
    if (smooth) smoothAlphaFeathered(mask, sigma);
    logLocation(" computeAlphaKDTreeHiRes - done");
}

void computeAlphaKDTreePyramid(RKPSStructMsk2* request) {
    RKPSStructMsk2& r = *request;
    cv::Mat mask = regionMaskView(r);
    cv::Mat picture = regionPictureView(r);
    cv::Mat foreground = regionForegroundView(r);
    ColourPlanes colours(picture, kStorageOrder);
    const cv::Mat saved = mask.clone();

    cv::Mat known;
    knownFromBrushWidening(mask, known);
    ColourPlaneViews views(colours);
    GIMG<unsigned char> knownImg = planeView(known), maskImg = planeView(mask);
    CMaskPyr pyramid;
    pyramid.build(views.planes, &knownImg, &maskImg, kTreeLevel);

    GIMG<unsigned char>* halfKnown = pyramid.getConstPtr(kTreeLevel);
    GIMG<unsigned char>* halfAlpha = pyramid.getAlphaPtr(kTreeLevel);
    const int hw = halfKnown->width(), hh = halfKnown->height();
    cv::Mat halfKnownMat(hh, hw, CV_8UC1, halfKnown->ptr(), static_cast<size_t>(halfKnown->step));
    const cv::Mat halfAlphaMat(hh, hw, CV_8UC1, halfAlpha->ptr(),
                               static_cast<size_t>(halfAlpha->step));
    if (r.cellMode == 0) {
        if (!countStrokes(halfKnownMat, halfAlphaMat, false).enough()) {
            saved.copyTo(mask);
            throw kErrNotEnoughStrokes;
        }
    } else {
        // The rim's thickness follows cellMode (4 gives 9 pixels); a
        // non-positive thickness would fill the whole map, so it is at least 1.
        drawKnownRim(halfKnownMat, std::max(2 * r.cellMode + 1, 1), RimSides{});
    }

    CFMatt matt;
    matt.setSolver(true);
    GIMG<unsigned char>* levelPlanes[CMaskPyr::kChannels];
    cv::Mat halfPlaneMats[4];
    for (int c = 0; c < CMaskPyr::kChannels; ++c) {
        GIMG<unsigned char>* p = pyramid.getRGBPtr(kTreeLevel, c);
        levelPlanes[c] = p;
        halfPlaneMats[c] = cv::Mat(hh, hw, CV_8UC1, p->ptr(), static_cast<size_t>(p->step));
    }
    SharedStepPlanes halfPlanes(levelPlanes);
    // The tree's four-byte picture: the picture itself when the level kept the
    // full width, else the half-size planes interleaved.
    cv::Mat halfPicture;
    if (hw == picture.cols && hh == picture.rows) {
        halfPicture = picture;
    } else {
        halfPlaneMats[3] = cv::Mat::zeros(hh, hw, CV_8UC1);
        cv::merge(halfPlaneMats, 4, halfPicture);
    }
    solveByTree(halfKnown->ptr(), halfKnown->step, halfPlanes.ptr, halfPlanes.step,
                halfAlpha->ptr(), halfAlpha->step, halfPicture.data,
                static_cast<int>(halfPicture.step), hw, hh, matt, nullptr, nullptr);
    pyramid.upSampling();

    // Results go to unpainted pixels only; painted keep and cut pixels show
    // the picture itself as their foreground.
    for (int y = 0; y < mask.rows; ++y) {
        unsigned char* m = mask.ptr<unsigned char>(y);
        const unsigned char* s = saved.ptr<unsigned char>(y);
        for (int x = 0; x < mask.cols; ++x) {
            if (!(s[x] & 1)) {
                m[x] &= 254;
                continue;
            }
            m[x] = s[x];
            if (foreground.empty() || (s[x] != kMaskKeep && s[x] != kMaskCut)) continue;
            foreground.at<cv::Vec4b>(y, x) = picture.at<cv::Vec4b>(y, x);
        }
    }
}
