// Hair alpha on three colour planes: interleaved first, then projected with
// plane k paired with colour byte k.
#include "core/img.h"
#include "core/ippi_copy.h"
#include "select/hair_alpha.h"

int CompAlphaMapHair(const unsigned char* const* planes, int planeStep, int width, int height,
                     const unsigned char* lineMask, int lineMaskStep, unsigned char* alpha,
                     int alphaStep, const unsigned char* foreColor,
                     const unsigned char* backColor) {
    if (width <= 0 || height <= 0) return 0;
    const IppiSize roi{width, height};
    IMG3<unsigned char> rgb(width, height);
    for (int k = 0; k < 3; ++k)
        ippiCopy_8u_C1C3R(planes[k], planeStep, rgb.ptr() + k, rgb.step, roi);
    // Planes keep their order, and the 8-bit conversion saturates the
    // unclamped projection.
    static constexpr int kInOrder[3] = {0, 1, 2};
    kc::hair::projectAlpha(rgb.ptr(), rgb.step, width, height, kInOrder, false, lineMask,
                           lineMaskStep, alpha, alphaStep, foreColor, backColor);
    return 0;
}
