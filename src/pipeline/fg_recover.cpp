// Foreground recovery of a region: reduce, extract, enlarge, add back detail,
// keep the picture where the mask is whole, and write or feather the result.
#include "pipeline/fg_recover.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "core/ippi_resize.h"
#include "matting/cfmatt.h"
#include "pipeline/fg_extract.h"
#include "pipeline/mask_codes.h"
#include "pipeline/weight_tables.h"

namespace {

// Whole-picture jobs are large; the foreground colour varies slowly enough to
// be solved at 18% and enlarged, and the picture's detail is added back.
constexpr float kWholePictureScale = 0.18f;
// Region jobs by the picture's area: small pictures at full scale, then a
// third, then a fifth, so that the reduced region stays a few tiles across.
constexpr long long kFullScaleBelowArea = 200001;
constexpr long long kThirdScaleBelowArea = 4000000;
constexpr float kThirdScale = 0.33f;
constexpr float kFifthScale = 0.2f;

// The enlarged colours lack the fine structure lost in the reduction; the
// green byte's own loss is added back to all three colours at the golden-ratio
// weight, which restores texture without doubling the edges of the cut.
constexpr float kDetailWeight = 0.618f;
// Detail is added where the mask is clearly fractional.
constexpr int kDetailAbove = 10;
constexpr int kDetailBelow = 250;
constexpr int kPixelBytes = 4;
constexpr int kColours = kFgColours;
// The green byte of a B,G,R,x pixel carries the detail.
constexpr int kDetailChannel = 1;

// Resizes the region of an 8-bit one- or four-byte buffer to dst with cubic
// interpolation; the factors are given, as the reduction defines them.
void resizeCubic(const unsigned char* src, cv::Size srcSize, int srcStep, const cv::Rect& srcRoi,
                 cv::Mat& dst, double factor) {
    const IppiSize ss{srcSize.width, srcSize.height};
    const IppiRect sr{srcRoi.x, srcRoi.y, srcRoi.width, srcRoi.height};
    const IppiSize ds{dst.cols, dst.rows};
    if (dst.channels() == kPixelBytes)
        ippiResize_8u_AC4R(src, ss, srcStep, sr, dst.data, static_cast<int>(dst.step), ds, factor,
                           factor, IPPI_INTER_CUBIC);
    else
        ippiResize_8u_C1R(src, ss, srcStep, sr, dst.data, static_cast<int>(dst.step), ds, factor,
                          factor, IPPI_INTER_CUBIC);
}

}  // namespace

float fgRecoverScale(int width, int height, bool cellJob) {
    if (!cellJob) return kWholePictureScale;
    const long long area = static_cast<long long>(width) * height;
    if (area < kFullScaleBelowArea) return 1.0f;
    if (area < kThirdScaleBelowArea) return kThirdScale;
    return kFifthScale;
}

void recoverForegroundRegion(const RKPSStructMsk2& r, const cv::Rect& region, float s, bool feather,
                             const ReducedExtraction& extract) {
    if (region.width <= 0 || region.height <= 0) return;
    const cv::Size picture(r.width, r.height);
    // The reduced size truncates in single precision; at least one pixel.
    const int rw = std::max(1, static_cast<int>(static_cast<float>(region.width) * s));
    const int rh = std::max(1, static_cast<int>(static_cast<float>(region.height) * s));

    // Reduced picture (fourth bytes zero: the resize leaves them alone) and mask.
    cv::Mat smallPic(rh, rw, CV_8UC4, cv::Scalar::all(0));
    cv::Mat smallMask(rh, rw, CV_8UC1);
    resizeCubic(r.image, picture, r.imageRowBytes, region, smallPic, s);
    resizeCubic(r.mask, picture, r.maskRowBytes, region, smallMask, s);
    cv::Mat smallFg = smallPic.clone();
    extract(smallPic, smallMask, smallFg);

    // Enlarged foreground and the green byte's round trip through the
    // reduction, whose difference from the picture is the detail lost.
    const double up = 1.0 / s;
    const cv::Rect smallAll(0, 0, rw, rh);
    cv::Mat bigFg(region.height, region.width, CV_8UC4);
    resizeCubic(smallFg.data, smallFg.size(), static_cast<int>(smallFg.step), smallAll, bigFg, up);
    cv::Mat smallGreen;
    cv::extractChannel(smallPic, smallGreen, kDetailChannel);
    cv::Mat roundTrip(region.height, region.width, CV_8UC1);
    resizeCubic(smallGreen.data, smallGreen.size(), static_cast<int>(smallGreen.step), smallAll,
                roundTrip, up);

    // The blending window is enlarged to the region itself: the region's
    // centre (where a region job's strokes lie) takes the new colours, and
    // they fade out towards its edge, where the old colours of the
    // neighbouring jobs stay. Linear interpolation keeps the weights in 0..1.
    cv::Mat weight;
    if (feather) {
        const cv::Mat table(kGaussianBlurTableSide, kGaussianBlurTableSide, CV_32FC1,
                            const_cast<float*>(gaussianBlurTable));
        cv::resize(table, weight, region.size(), 0, 0, cv::INTER_LINEAR);
    }

    for (int y = 0; y < region.height; ++y) {
        const unsigned char* pic = r.image +
                                   static_cast<long long>(region.y + y) * r.imageRowBytes +
                                   static_cast<long long>(region.x) * kPixelBytes;
        const unsigned char* mask =
            r.mask + static_cast<long long>(region.y + y) * r.maskRowBytes + region.x;
        // During a compute request the mask holds fresh alpha everywhere; the
        // painted strokes are in brushInfo until they are restored.
        const unsigned char* painted =
            r.brushInfo ? r.brushInfo + static_cast<long long>(region.y + y) * r.brushInfoRowBytes +
                              region.x
                        : nullptr;
        unsigned char* out = r.foreground +
                             static_cast<long long>(region.y + y) * r.foregroundRowBytes +
                             static_cast<long long>(region.x) * kPixelBytes;
        const unsigned char* fg = bigFg.ptr<unsigned char>(y);
        const unsigned char* trip = roundTrip.ptr<unsigned char>(y);
        const float* g = feather ? weight.ptr<float>(y) : nullptr;
        for (int x = 0; x < region.width; ++x) {
            const int m = mask[x];
            const int p = x * kPixelBytes;
            unsigned char nv[kColours];
            const bool paintedWhole =
                painted && (painted[x] == kMaskKeep || painted[x] == kMaskCut);
            if (paintedWhole || m >= kFgPictureFrom || m <= kFgPictureUpTo) {
                for (int c = 0; c < kColours; ++c) nv[c] = pic[p + c];
            } else {
                const bool detailed = m > kDetailAbove && m < kDetailBelow;
                const float detail =
                    detailed ? kDetailWeight * static_cast<float>(pic[p + kDetailChannel] - trip[x])
                             : 0.0f;
                for (int c = 0; c < kColours; ++c)
                    nv[c] = cv::saturate_cast<unsigned char>(fg[p + c] + detail);
            }
            if (!g) {
                for (int c = 0; c < kColours; ++c) out[p + c] = nv[c];
                continue;
            }
            const float wNew = g[x], wOld = 1.0f - g[x];
            for (int c = 0; c < kColours; ++c)
                out[p + c] = cv::saturate_cast<unsigned char>(nv[c] * wNew + out[p + c] * wOld);
        }
    }
}

void extractAllTiles(const cv::Mat& pic, const cv::Mat& mask, cv::Mat& fg) {
    RgbPlanes planes(pic);
    CFMatt matt;
    const cv::Rect all(0, 0, pic.cols, pic.rows);
    extractForegroundTiles(planes.ptr, planes.step, mask, fg, all, all, matt);
}

int recoverForegroundCell(RKPSStructMsk2* request, bool cellJob) {
    const cv::Rect region(request->roiX, request->roiY, request->roiWidth, request->roiHeight);
    // Region jobs feather the new colours into the old ones with the blending
    // window enlarged over the region, so a stroke's widened region joins what
    // earlier strokes recovered. A whole-picture job has nothing earlier to
    // join: there the window is enlarged without bound (weight 1 everywhere),
    // since fading it to the rim would throw away the recovery of every soft
    // edge near the picture's border.
    recoverForegroundRegion(*request, region,
                            fgRecoverScale(request->width, request->height, cellJob), cellJob,
                            extractAllTiles);
    return 1;
}

int rkRecoverForeground(RKPSStructMsk2* request) {
    const cv::Rect all(0, 0, request->width, request->height);
    recoverForegroundRegion(*request, all, fgRecoverScale(request->width, request->height, false),
                            false, extractAllTiles);
    return 1;
}
