// 8-bit levels to and from the host's 16-bit range, through the scaled
// integer primitives.
#include "interchange/u15.h"

#include "core/img.h"
#include "core/ipp_types.h"
#include "core/ippi_arith_const.h"
#include "core/ippi_convert.h"

namespace {
// One 8-bit level spans 128 host levels: the scale factor 2^7 of the
// scaled-integer primitives (negative multiplies, positive divides).
constexpr int kLevelShift = 7;
constexpr int kLevel = 1 << kLevelShift;
}  // namespace

int psC1U8toU15(const unsigned char* src, int srcStep, int w, int h, unsigned short* dst,
                int dstStep) {
    if (w <= 0 || h <= 0) return 1;
    const IppiSize roi{w, h};
    ippiConvert_8u16u_C1R(src, srcStep, dst, dstStep, roi);
    ippiAddC_16u_C1IRSfs(1, dst, dstStep, roi, -kLevelShift);
    return 1;
}

int psC1U15toU8(const unsigned short* src, int srcStep, int w, int h, unsigned char* dst,
                int dstStep) {
    if (w <= 0 || h <= 0) return 1;
    const IppiSize roi{w, h};
    GIMG<unsigned short> levels(w, h);
    ippiSubC_16u_C1RSfs(src, srcStep, kLevel, levels.ptr(), levels.step, roi, kLevelShift);
    ippiConvert_16u8u_C1R(levels.ptr(), levels.step, dst, dstStep, roi);
    return 1;
}
