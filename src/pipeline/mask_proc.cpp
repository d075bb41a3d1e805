// rkMaskProc: matting, sharpening, guided smoothing and output stretch of one
// rough mask at the resolution it is given.
#include "pipeline/mask_proc.h"

#include <algorithm>

#include "core/img_ops.h"
#include "core/shared_step_planes.h"
#include "filters/cross_bilateral.h"
#include "matting/cfmatt.h"

namespace {

// Sharpening gain of the solved alpha: well above the 0.2 below which the
// matting object skips sharpening, so the rough mask's blur is pushed back
// toward hard edges in flat colour regions.
constexpr float kSharpenStrength = 3.0f;
// Guided smoothing after sharpening: a 3x3 window, a range scale of 10 grey
// levels of the summed colour difference, a spatial scale of 0.825 pixels and
// a negligible centre weight, so that each pixel is replaced by the mean of
// its colour-similar neighbours and the sharpening's speckle goes.
constexpr int kSmoothRadius = 1;
constexpr float kSmoothRange = 10.0f;
constexpr float kSmoothSpace = 0.825f;
constexpr float kSmoothCentre = 1.0e-6f;
// The output stretch: a span this wide needs none; the factor is 255 x 64 / d
// in 1/64 steps (scale shift 6) and must fit an 8-bit constant.
constexpr int kFullSpan = 255;
constexpr int kStretchNumerator = 16320;
constexpr int kStretchShift = 6;
constexpr int kByteMax = 255;
// Extremes a pixel may only reach if it held them on input.
constexpr unsigned char kNearTransparent = 1;
constexpr unsigned char kNearOpaque = 254;

constexpr int kColourPlanes = 3;

}  // namespace

void stretchAlphaOutput(GIMG<unsigned char>& alpha, int outHigh, int outLow) {
    const int d = std::max(outHigh - outLow, 1);
    if (d >= kFullSpan || alpha.width() <= 0 || alpha.height() <= 0) return;
    const int k = std::min(kStretchNumerator / d, kByteMax);
    Sub(static_cast<unsigned char>(std::clamp(outLow, 0, kByteMax)), alpha, 0);
    Mul(static_cast<unsigned char>(k), alpha, kStretchShift);
}

void clampToInputExtremes(GIMG<unsigned char>& alpha, const GIMG<unsigned char>& input) {
    for (int y = 0; y < alpha.height(); ++y) {
        unsigned char* a = imgPtr(alpha, 0, y);
        const unsigned char* in = imgPtr(input, 0, y);
        for (int x = 0; x < alpha.width(); ++x) {
            if (a[x] == 0 && in[x] != 0) a[x] = kNearTransparent;
            if (a[x] == kByteMax && in[x] != kByteMax) a[x] = kNearOpaque;
        }
    }
}

int rkMaskProc(GIMG<unsigned char>** rgb, GIMG<unsigned char>* alpha, int /*unused*/, int highCode,
               int lowCode, int outHigh, int outLow) {
    const int width = alpha->width(), height = alpha->height();
    SharedStepPlanes colours(rgb);
    {
        CFMatt matt;
        matt.lowCode = static_cast<unsigned char>(lowCode);
        matt.highCode = static_cast<unsigned char>(highCode);
        matt.sharpenStrength = kSharpenStrength;
        // A mask with nothing between the codes (or too small to solve) comes
        // back as it went in; that is not a failure here.
        matt.CompAlpha(colours.ptr, colours.step, width, height, alpha->ptr(), alpha->step);
    }
    unsigned char* planes[] = {alpha->ptr()};
    CBLFRGB(width, height, planes, alpha->step, 1, colours.ptr, colours.step, kColourPlanes,
            kSmoothRadius, kSmoothRange, kSmoothSpace, kSmoothCentre);
    stretchAlphaOutput(*alpha, outHigh, outLow);
    return 1;
}
