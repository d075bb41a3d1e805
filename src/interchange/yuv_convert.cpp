// RGB <-> YUV between a host's interleaved RGB buffer and three short planes,
// the picture centred in the planes. One row loop per direction, shared by the
// 8-bit and 16-bit forms through a small table of scale factors.
#include "interchange/yuv_convert.h"

#include <algorithm>
#include <cstddef>

#include "core/borders.h"
#include "core/simd_clones.h"
#include "interchange/yuv_pixel.h"

namespace {
using namespace kc::yuv;

// Scale factors of one host sample type: Y = luma * yScale, U = (B - Y) * uScale,
// V = (R - Y) * vScale, all in the sample's own units; back, y = Y * yBack and
// the RGB results are clamped to 0..maxValue.
struct ByteRgb {
    using Sample = unsigned char;
    static constexpr float yScale = kByteToShort, uScale = kUScale8, vScale = kVScale8;
    static constexpr float yBack = kShortToByte, maxValue = 255.f;
};
struct ShortRgb {
    using Sample = short;
    static constexpr float yScale = 1.f, uScale = kUScale, vScale = kVScale;
    static constexpr float yBack = 1.f, maxValue = 32767.f;
};

template <typename S>
KC_TEMPLATE_AVX2_CLONES void rgbRowToYuv(const typename S::Sample* __restrict rgb,
                                         short* __restrict y, short* __restrict u,
                                         short* __restrict v, int n) {
    for (int x = 0; x < n; ++x) {
        const float r = rgb[3 * x], g = rgb[3 * x + 1], b = rgb[3 * x + 2];
        const float l = luma(r, g, b);
        y[x] = toShort(l * S::yScale);
        u[x] = toShort((b - l) * S::uScale);
        v[x] = toShort((r - l) * S::vScale);
    }
}

template <typename S>
KC_TEMPLATE_AVX2_CLONES void yuvRowToRgb(const short* __restrict y, const short* __restrict u,
                                         const short* __restrict v,
                                         typename S::Sample* __restrict rgb, int n) {
    using T = typename S::Sample;
    for (int x = 0; x < n; ++x) {
        const float l = y[x] * S::yBack, cu = u[x] * S::yBack, cv = v[x] * S::yBack;
        rgb[3 * x] = clampTrunc<T>(l + kRFromV * cv, S::maxValue);
        rgb[3 * x + 1] = clampTrunc<T>(l - kGFromU * cu - kGFromV * cv, S::maxValue);
        rgb[3 * x + 2] = clampTrunc<T>(l + kBFromU * cu, S::maxValue);
    }
}

// The picture's rectangle inside the planes: clamped size and centring offset.
struct Placement {
    int x, y, w, h;
};
Placement place(const GIMG<short>& plane, int w, int h) {
    w = std::min(w, plane.width());
    h = std::min(h, plane.height());
    return {(plane.width() - w) / 2, (plane.height() - h) / 2, w, h};
}

template <typename T>
T* hostRow(T* buf, int step, int y) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(buf) +
                                static_cast<std::ptrdiff_t>(y) * step);
}

template <typename S>
int toYuv(typename S::Sample* buf, int step, int w, int h, GIMG<short>** yuv) {
    const Placement p = place(*yuv[0], w, h);
    if (p.w <= 0 || p.h <= 0) return 1;
    for (int r = 0; r < p.h; ++r)
        rgbRowToYuv<S>(hostRow(buf, step, r), imgPtr(*yuv[0], p.x, p.y + r),
                       imgPtr(*yuv[1], p.x, p.y + r), imgPtr(*yuv[2], p.x, p.y + r), p.w);
    for (int c = 0; c < 3; ++c) {
        GIMG<short>& plane = *yuv[c];
        imageExtendBorder(plane, p.x, p.y, plane.width() - p.w - p.x, plane.height() - p.h - p.y);
    }
    return 1;
}

template <typename S>
int toRgb(GIMG<short>** yuv, typename S::Sample* buf, int step, int w, int h) {
    const Placement p = place(*yuv[0], w, h);
    for (int r = 0; r < p.h; ++r)
        yuvRowToRgb<S>(imgPtr(*yuv[0], p.x, p.y + r), imgPtr(*yuv[1], p.x, p.y + r),
                       imgPtr(*yuv[2], p.x, p.y + r), hostRow(buf, step, r), p.w);
    return 1;
}

}  // namespace

int rkRGBToYUV(unsigned char* buf, int step, int w, int h, GIMG<short>** yuv) {
    return toYuv<ByteRgb>(buf, step, w, h, yuv);
}
int rkRGBToYUV(short* buf, int step, int w, int h, GIMG<short>** yuv) {
    return toYuv<ShortRgb>(buf, step, w, h, yuv);
}
int rkYUVToRGB(GIMG<short>** yuv, unsigned char* buf, int step, int w, int h) {
    return toRgb<ByteRgb>(yuv, buf, step, w, h);
}
int rkYUVToRGB(GIMG<short>** yuv, short* buf, int step, int w, int h) {
    return toRgb<ShortRgb>(yuv, buf, step, w, h);
}
