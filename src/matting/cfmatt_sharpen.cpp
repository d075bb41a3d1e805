// Contrast enhancement of a finished alpha: values are pushed away from their
// local blur, strongly in flat regions and not at all across full-range edges.
#include <algorithm>

#include "matting/cfmatt.h"
#include "matting/matting_map_ops.h"

namespace {
// The gain is kept in units of 1/64 and is at least 1 (64/64).
constexpr int kGainUnit = 64;
constexpr int kGainShift = 6;
// Strength x 64 scales the flatness (255 - local range) with a shift of 8.
constexpr int kStrengthScale = 64;
constexpr int kFlatnessShift = 8;
constexpr int kByteMax = 255;
}  // namespace

void CFMatt::SharpenAlpha(GIMG<unsigned char>& alpha) {
    const int w = alpha.width();
    const int h = alpha.height();
    int& st = primStatus;
    GIMG<unsigned char> blur(w, h);
    GIMG<unsigned char> lo(w, h);
    GIMG<unsigned char> hi(w, h);
    copyMap(alpha, blur, st);
    copyMap(alpha, lo, st);
    copyMap(alpha, hi, st);
    // Filters run on the interior only; their frames keep the alpha.
    if (w > 4 && h > 4) {
        alpha.roiRect(2, 2, -2, -2);
        blur.roiRect(2, 2, -2, -2);
        gauss5x5Into(alpha, blur, st);
        alpha.restoreRect();
        blur.restoreRect();
    }
    if (w > 2 && h > 2) {
        alpha.roiRect(1, 1, -1, -1);
        lo.roiRect(1, 1, -1, -1);
        hi.roiRect(1, 1, -1, -1);
        erode3x3Into(alpha, lo, st);
        dilate3x3Into(alpha, hi, st);
        alpha.restoreRect();
        lo.restoreRect();
        hi.restoreRect();
    }
    // gain = (255 - range) * k >> 8, plus one unit; range = hi - lo.
    GIMG<unsigned char>& gain = hi;
    subSat(hi, lo, gain, st);
    complementMap(gain, st);
    const int k = std::min(static_cast<int>(sharpenStrength * kStrengthScale), kByteMax);
    mulConstShift(gain, k, kFlatnessShift, st);
    addConstSat(gain, kGainUnit, st);
    // below = (blur - alpha)+ * gain >> 6, above = (alpha - blur)+ * gain >> 6.
    GIMG<unsigned char> below(w, h);
    GIMG<unsigned char>& above = lo;
    subSat(blur, alpha, below, st);
    mulInto(gain, kGainShift, below, st);
    subSat(alpha, blur, above, st);
    mulInto(gain, kGainShift, above, st);
    addInto(above, blur, st);
    subSat(blur, below, alpha, st);
}
