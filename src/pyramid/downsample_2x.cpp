// 2x decimation of byte planes. The smoothed form computes the Gaussian only
// at the pixels that survive the decimation, which gives exactly what blurring
// the whole plane and then decimating would give, at a quarter of the work and
// without a full-size temporary.
#include "pyramid/downsample_2x.h"

#include <algorithm>

#include "core/half_image.h"
#include "pyramid/cubic_resize.h"

namespace {

// 3x3 Gaussian 1-2-1 x 1-2-1: the weights sum to 16; +8 rounds to nearest.
inline unsigned char gauss3x3At(const unsigned char* above, const unsigned char* mid,
                                const unsigned char* below, int x) {
    const int top = above[x - 1] + 2 * above[x] + above[x + 1];
    const int centre = mid[x - 1] + 2 * mid[x] + mid[x + 1];
    const int bottom = below[x - 1] + 2 * below[x] + below[x + 1];
    return static_cast<unsigned char>((top + 2 * centre + bottom + 8) >> 4);
}

// Decimation of the blurred source. Decimated pixels never reach the last
// row or column of the source, so only the first row and column (the frame)
// are taken unblurred.
void smoothDecimate(const GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int w, int h) {
    for (int y = 0; y < h; ++y) {
        const int sy = 2 * y;
        const unsigned char* mid = imgPtr(src, 0, sy);
        unsigned char* out = imgPtr(dst, 0, y);
        if (sy == 0) {
            for (int x = 0; x < w; ++x) out[x] = mid[2 * x];
            continue;
        }
        const unsigned char* above = imgPtr(src, 0, sy - 1);
        const unsigned char* below = imgPtr(src, 0, sy + 1);
        if (w > 0) out[0] = mid[0];
        for (int x = 1; x < w; ++x) out[x] = gauss3x3At(above, mid, below, 2 * x);
    }
}

}  // namespace

template <typename T>
int CDnsampleRK2X(GIMG<T>& src, GIMG<T>& dst, bool smooth) {
    const int w = std::max(0, std::min(dst.width(), src.width() / 2));
    const int h = std::max(0, std::min(dst.height(), src.height() / 2));
    if (smooth)
        smoothDecimate(src, dst, w, h);
    else
        getHalfImage(src, 0, 0, dst);
    return 1;
}

template <typename T>
int CDnsampleRK2XCombined(GIMG<T>& src, GIMG<T>& dst, bool smooth) {
    const int w2 = src.width() / 2;
    const int h2 = src.height() / 2;
    if (dst.roiSize == IPSize(w2, h2)) return CDnsampleRK2X(src, dst, smooth);
    if (w2 <= 0 || h2 <= 0 || dst.width() <= 0 || dst.height() <= 0)
        return 1;  // nothing to resample from or into
    GIMG<T> half(w2, h2);
    const int result = CDnsampleRK2X(src, half, smooth);
    resizeCubic(half, dst);
    return result;
}

template int CDnsampleRK2X<unsigned char>(GIMG<unsigned char>&, GIMG<unsigned char>&, bool);
template int CDnsampleRK2XCombined<unsigned char>(GIMG<unsigned char>&, GIMG<unsigned char>&, bool);
