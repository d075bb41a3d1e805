// Guided 2x upsampling from a source of any size: the source is first brought
// to exactly half the destination by cubic resampling.
#include <memory>
#include <vector>

#include "pyramid/cubic_resize.h"
#include "pyramid/upsample_2x.h"

template <typename T>
int CUpSampleRK2XCombined(GIMG<T>** src, GIMG<T>** dst, int n, GIMG<T>** guide, int nGuide,
                          float p) {
    if (n <= 0 || !src || !dst || !dst[0]) return CUpSampleRK2X(src, dst, n, guide, nGuide, p);
    const IPSize half(dst[0]->width() / 2, dst[0]->height() / 2);
    std::vector<std::unique_ptr<GIMG<T>>> resized(n);
    std::vector<GIMG<T>*> planes(src, src + n);
    if (half.width > 0 && half.height > 0) {
        for (int c = 0; c < n; ++c) {
            if (!planes[c] || planes[c]->roiSize == half) continue;
            if (planes[c]->width() <= 0 || planes[c]->height() <= 0) return 0;
            resized[c] = std::make_unique<GIMG<T>>(half.width, half.height);
            resizeCubic(*planes[c], *resized[c]);
            planes[c] = resized[c].get();
        }
    }
    return CUpSampleRK2X(planes.data(), dst, n, guide, nGuide, p);
}

template int CUpSampleRK2XCombined<unsigned char>(GIMG<unsigned char>**, GIMG<unsigned char>**, int,
                                                  GIMG<unsigned char>**, int, float);
