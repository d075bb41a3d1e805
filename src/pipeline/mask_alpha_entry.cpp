// rkMaskAlpha: the direct mask entry for hosts. Weighs the job against the
// memory budget and runs rkMaskProc at full, half or lower resolution; a
// reduced result is brought back along the full-size colours, then every
// pixel is kept off the extremes it did not hold on input.
#include <algorithm>
#include <cmath>
#include <string>

#include "api/keepcut.h"
#include "core/borders.h"
#include "core/img_ops.h"
#include "pipeline/mask_proc.h"
#include "pyramid/downsample_2x.h"
#include "pyramid/upsample_2x.h"
#include "runtime/entry_guard.h"

namespace {

constexpr const char* kEntry = "rkMaskAlpha";
constexpr int kColourPlanes = 3;
// usableMemInMB() is in units of 1000 budget bytes; a figure below 10 means
// the machine's memory could not be read, and 500 MB is assumed instead.
constexpr double kBudgetUnit = 1000.0;
constexpr int kUnreadableBudgetMB = 10;
constexpr double kFallbackBudget = 500000000.0;
// Budget bytes of one unit of the host's load (32 x 6 x 10) and of one pixel.
constexpr double kBytesPerLoad = 32.0 * 6.0 * 10.0;
constexpr double kBytesPerPixel = 12.0;
// Full resolution also needs a picture and a load below these.
constexpr double kFullResMaxPixels = 1500000.0;
constexpr double kFullResMaxLoad = 400000.0;
// Beyond this memory ratio a halving is not enough: reduce by the ratio.
constexpr double kHalvingMaxRatio = 2.0;
// Guide falloff of the 2x upsampling back to full size.
constexpr float kUpsampleFalloff = 10.0f;
// Leading rows and columns rewritten after the way back: the first row and
// column hold pixels the upsampling never reaches; after a resampled
// reduction the second goes too, as the cubic kernel extrapolates there.
constexpr int kHalvedLead = 1;
constexpr int kScaledLead = 2;

// The fine pixels a 2x upsampling to `extent` reaches end at 2 x (extent / 2)
// - 2; how many trail beyond that (none when nothing is reached).
int unreachedTrail(int extent) {
    const int half = extent / 2;
    return half >= 1 ? extent - (2 * half - 1) : 0;
}

// Replicates the nearest reached pixel into the leading `lead` rows and
// columns and into the trailing ones the upsampling left. A picture too
// narrow for both keeps its reached pixels and drops the lead.
void refillFrame(GIMG<unsigned char>& alpha, int lead) {
    const int right = unreachedTrail(alpha.width()), bottom = unreachedTrail(alpha.height());
    const int left = std::clamp(alpha.width() - 1 - right, 0, lead);
    const int top = std::clamp(alpha.height() - 1 - bottom, 0, lead);
    imageExtendBorder(alpha, left, top, right, bottom);
}

struct MaskArgs {
    int unused, highCode, lowCode, outHigh, outLow;
};

// rkMaskProc on a reduced copy of size small: plain halving when scaled is
// false, halving and cubic resampling otherwise; then guided upsampling into
// alpha and the frame refill.
void reducedPass(GIMG<unsigned char>** rgb, GIMG<unsigned char>& alpha, IPSize small, bool scaled,
                 const MaskArgs& a) {
    GIMG<unsigned char> red(small.width, small.height), green(small.width, small.height),
        blue(small.width, small.height), smallAlpha(small.width, small.height);
    GIMG<unsigned char>* smallRgb[] = {&red, &green, &blue};
    GIMG<unsigned char>* src[] = {&smallAlpha};
    GIMG<unsigned char>* dst[] = {&alpha};
    if (scaled) {
        for (int c = 0; c < kColourPlanes; ++c) CDnsampleRK2XCombined(*rgb[c], *smallRgb[c], true);
        CDnsampleRK2XCombined(alpha, smallAlpha, false);
        rkMaskProc(smallRgb, &smallAlpha, a.unused, a.highCode, a.lowCode, a.outHigh, a.outLow);
        CUpSampleRK2XCombined(src, dst, 1, rgb, kColourPlanes, kUpsampleFalloff);
    } else {
        for (int c = 0; c < kColourPlanes; ++c) CDnsampleRK2X(*rgb[c], *smallRgb[c], true);
        CDnsampleRK2X(alpha, smallAlpha, false);
        rkMaskProc(smallRgb, &smallAlpha, a.unused, a.highCode, a.lowCode, a.outHigh, a.outLow);
        CUpSampleRK2X(src, dst, 1, rgb, kColourPlanes, kUpsampleFalloff);
    }
    refillFrame(alpha, scaled ? kScaledLead : kHalvedLead);
}

void maskAlpha(GIMG<unsigned char>** rgb, GIMG<unsigned char>& alpha, const MaskArgs& a,
               float load) {
    const int w = alpha.width(), h = alpha.height();
    const int budgetMB = usableMemInMB();
    const double budget = budgetMB < kUnreadableBudgetMB ? kFallbackBudget : budgetMB * kBudgetUnit;
    const double n = static_cast<double>(w) * h;
    const double ratio = std::sqrt((load * kBytesPerLoad + n * kBytesPerPixel) / budget);
    if (ratio <= 1.0 && n < kFullResMaxPixels && load < kFullResMaxLoad)
        rkMaskProc(rgb, &alpha, a.unused, a.highCode, a.lowCode, a.outHigh, a.outLow);
    else if (ratio > kHalvingMaxRatio)
        reducedPass(rgb, alpha, IPSize(static_cast<int>(w / ratio), static_cast<int>(h / ratio)),
                    true, a);
    else
        reducedPass(rgb, alpha, IPSize(w / 2, h / 2), false, a);
}

bool checkImage(const RKMaskImage* image) {
    if (!image) return rkRefuse(kEntry, "image is null");
    if (image->width < 1 || image->height < 1)
        return rkRefuse(kEntry, "width and height must be at least 1");
    for (int c = 0; c < kColourPlanes; ++c) {
        const std::string name = "planes[" + std::to_string(c) + "]";
        if (!rkCheckBuffer(kEntry, name.c_str(), image->planes[c], image->width, image->height,
                           image->planeRowBytes, 1))
            return false;
    }
    return rkCheckBuffer(kEntry, "alpha", image->alpha, image->width, image->height,
                         image->alphaRowBytes, 1);
}

}  // namespace

extern "C" KC_EXPORT int rkMaskAlpha(const RKMaskImage* image, int unused, int highCode,
                                     int lowCode, int outHigh, int outLow, int /*spare*/,
                                     float load) {
    return rkGuardEntry(kEntry, [&] {
        if (!checkImage(image)) return kInvalidArgument;
        const RKMaskImage& im = *image;
        GIMG<unsigned char> red(im.width, im.height, im.planes[0], im.planeRowBytes);
        GIMG<unsigned char> green(im.width, im.height, im.planes[1], im.planeRowBytes);
        GIMG<unsigned char> blue(im.width, im.height, im.planes[2], im.planeRowBytes);
        GIMG<unsigned char>* rgb[] = {&red, &green, &blue};
        GIMG<unsigned char> alpha(im.width, im.height, im.alpha, im.alphaRowBytes);
        GIMG<unsigned char> input(im.width, im.height);
        Copy(alpha, input);
        try {
            maskAlpha(rgb, alpha, MaskArgs{unused, highCode, lowCode, outHigh, outLow}, load);
        } catch (...) {
            // A failure hands the host its mask back as it was.
            Copy(input, alpha);
            throw;
        }
        clampToInputExtremes(alpha, input);
        return 1;
    });
}
