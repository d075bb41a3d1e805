// RGB <-> YUV in place over three short planes of one region, the unscaled
// form (values already in the short range).
#include <algorithm>

#include "core/simd_clones.h"
#include "interchange/yuv_convert.h"
#include "interchange/yuv_pixel.h"

namespace {
using namespace kc::yuv;

KC_TEMPLATE_AVX2_CLONES void rgbToYuvRow(short* __restrict a, short* __restrict b,
                                         short* __restrict c, int n) {
    for (int x = 0; x < n; ++x) {
        const float r = a[x], g = b[x], bl = c[x];
        const float l = luma(r, g, bl);
        a[x] = toShort(l);
        b[x] = toShort((bl - l) * kUScale);
        c[x] = toShort((r - l) * kVScale);
    }
}

KC_TEMPLATE_AVX2_CLONES void yuvToRgbRow(short* __restrict a, short* __restrict b,
                                         short* __restrict c, int n) {
    for (int x = 0; x < n; ++x) {
        const float l = a[x], u = b[x], v = c[x];
        a[x] = clampTrunc<short>(l + kRFromV * v, kShortMax);
        b[x] = clampTrunc<short>(l - kGFromU * u - kGFromV * v, kShortMax);
        c[x] = clampTrunc<short>(l + kBFromU * u, kShortMax);
    }
}

template <typename Row>
int overRows(GIMG<short>** planes, Row row) {
    const int w = planes[0]->width(), h = planes[0]->height();
    for (int y = 0; y < h; ++y)
        row(imgPtr(*planes[0], 0, y), imgPtr(*planes[1], 0, y), imgPtr(*planes[2], 0, y), w);
    return 1;
}

}  // namespace

int rkP3RGB2YUV(GIMG<short>** planes) {
    return overRows(planes, rgbToYuvRow);
}
int rkP3YUV2RGB(GIMG<short>** planes) {
    return overRows(planes, yuvToRgbRow);
}
