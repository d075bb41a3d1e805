// Alpha range stretching: the internal form over a container and the host
// entry over a borrowed map.
#include "tools/alpha_scale.h"

#include <algorithm>

#include "api/keepcut_display.h"
#include "core/img_ops.h"
#include "core/ipp_primitives.h"
#include "runtime/entry_guard.h"

namespace {

// The full 8-bit range: nothing to stretch.
constexpr int kFullRange = 255;
// 255 x 32: the factor is kept in 1/32 steps so that an 8-bit constant with a
// scale factor of 5 carries it.
constexpr int kFactorNumerator = 8160;
constexpr int kFactorScaleBits = 5;
constexpr int kMaxFactor = 255;
// Bit 0 of a map byte marks a pixel the user painted.
constexpr unsigned char kPaintedBit = 1;

// Bytes that were odd in `before` get their old value back; all others lose
// bit 0. `painted` is scratch of the map's size.
void restorePainted(const GIMG<unsigned char>& before, GIMG<unsigned char>& painted,
                    GIMG<unsigned char>& alpha) {
    Copy(before, painted);
    ippiAndC_8u_C1IR(kPaintedBit, painted.ptr(), painted.step, painted.roiSize);
    ippiAndC_8u_C1IR(static_cast<unsigned char>(~kPaintedBit), alpha.ptr(), alpha.step,
                     alpha.roiSize);
    ippiCopy_8u_C1MR(before.ptr(), before.step, alpha.ptr(), alpha.step, alpha.roiSize,
                     painted.ptr(), painted.step);
}

}  // namespace

void scaleAlpha(GIMG<unsigned char>& alpha, unsigned char hi, unsigned char lo, bool keepPainted) {
    const int d = hi - lo;
    if (d == kFullRange || alpha.width() == 0 || alpha.height() == 0) return;
    // A negative factor (hi below lo) reaches the 8-bit multiply modulo 256,
    // as an int constant does through the primitive's 8-bit parameter.
    const auto k = static_cast<unsigned char>(std::min(kFactorNumerator / d, kMaxFactor));
    // Scratch is allocated before the map is touched, so that running out of
    // memory leaves it as it was.
    const int w = keepPainted ? alpha.width() : 0, h = keepPainted ? alpha.height() : 0;
    GIMG<unsigned char> before(w, h), painted(w, h);
    if (keepPainted) Copy(alpha, before);
    Sub(lo, alpha, 0);
    Mul(k, alpha, kFactorScaleBits);
    if (keepPainted) restorePainted(before, painted, alpha);
}

extern "C" KC_EXPORT int rkScaleAlpha(unsigned char* alpha, int alphaStep, int width, int height,
                                      unsigned char hi, unsigned char lo, int keepPainted) {
    constexpr const char* kEntry = "rkScaleAlpha";
    return rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "alpha", alpha, width, height, alphaStep, 1))
            return kInvalidArgument;
        if (hi == lo) return rkRefuseWith(kEntry, "hi equals lo, an empty range to stretch");
        GIMG<unsigned char> map(width, height, alpha, alphaStep);
        scaleAlpha(map, hi, lo, keepPainted != 0);
        return 1;
    });
}
