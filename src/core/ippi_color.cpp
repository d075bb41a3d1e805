// HLS conversions and the colour twist as per-row loops (the library's own
// HLS variants scale hue differently, so the formulas are written out here;
// the byte forms run the same formulas vectorised, in core/hls_rows).
#include "core/ippi_color.h"

#include <algorithm>
#include <cmath>

#include "core/hls_rows.h"
#include "core/ippi_common.h"

namespace {
using namespace kc::prim;

struct Triple {
    float a, b, c;
};

// r, g, b in 0..1 to h (fraction of a turn), l, s in 0..1.
Triple rgbToHls(float r, float g, float b) {
    const float hi = std::max({r, g, b});
    const float lo = std::min({r, g, b});
    const float l = 0.5f * (hi + lo);
    if (hi == lo) return {0.f, l, 0.f};
    const float span = hi - lo;
    const float s = l <= 0.5f ? span / (hi + lo) : span / (2.f - hi - lo);
    float h;  // in sixths of a turn
    if (r == hi)
        h = (g - b) / span;
    else if (g == hi)
        h = 2.f + (b - r) / span;
    else
        h = 4.f + (r - g) / span;
    h /= 6.f;
    if (h < 0.f) h += 1.f;
    return {h, l, s};
}

// One channel of the inverse: h in turns, shifted per channel by a third.
float hueToChannel(float m1, float m2, float h) {
    h -= std::floor(h);
    if (h < 1.f / 6.f) return m1 + (m2 - m1) * h * 6.f;
    if (h < 0.5f) return m2;
    if (h < 2.f / 3.f) return m1 + (m2 - m1) * (2.f / 3.f - h) * 6.f;
    return m1;
}

Triple hlsToRgb(float h, float l, float s) {
    if (s == 0.f) return {l, l, l};
    const float m2 = l <= 0.5f ? l * (1.f + s) : l + s - l * s;
    const float m1 = 2.f * l - m2;
    return {hueToChannel(m1, m2, h + 1.f / 3.f), hueToChannel(m1, m2, h),
            hueToChannel(m1, m2, h - 1.f / 3.f)};
}

// Applies f to every pixel: reads three elements at offsets (i0, i1, i2) of
// each source pixel, writes three at the start of each destination pixel.
template <typename T, typename Fn>
IppStatus perPixel(const T* s, int ss, int srcCh, T* d, int ds, int dstCh, IppiSize r,
                   const int (&order)[3], Fn f) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss, srcCh), plane(d, ds, dstCh)})) return st;
    for (int y = 0; y < r.height; ++y) {
        const T* sr = rowAt(s, ss, y);
        T* dr = rowAt(d, ds, y);
        for (int x = 0; x < r.width; ++x) {
            const T* p = sr + x * srcCh;
            const Triple out = f(p[order[0]], p[order[1]], p[order[2]]);
            T* q = dr + x * dstCh;
            q[0] = out.a;
            q[1] = out.b;
            q[2] = out.c;
        }
    }
    return ippStsNoErr;
}

// Byte pixels row by row through a row conversion.
template <typename Row>
IppStatus bytes4(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r, Row row) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss, 4), plane(d, ds, 4)})) return st;
    for (int y = 0; y < r.height; ++y) row(rowAt(s, ss, y), rowAt(d, ds, y), r.width);
    return ippStsNoErr;
}

constexpr int kInOrder[3] = {0, 1, 2};
}  // namespace

IppStatus ippiRGBToHLS_32f_C3R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return perPixel(s, ss, 3, d, ds, 3, r, kInOrder, rgbToHls);
}
IppStatus ippiHLSToRGB_32f_C3R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return perPixel(s, ss, 3, d, ds, 3, r, kInOrder, hlsToRgb);
}
IppStatus ippiRGBToHLS_8u_AC4R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return bytes4(s, ss, d, ds, r, [](const Ipp8u* a, Ipp8u* b, int n) {
        rgbRowToHls(a, b, n, HlsSourceOrder::Rgb);
    });
}
IppStatus ippiHLSToRGB_8u_AC4R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return bytes4(s, ss, d, ds, r, hlsRowToRgb);
}
IppStatus ippiBGRToHLS_8u_AC4R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return bytes4(s, ss, d, ds, r, [](const Ipp8u* a, Ipp8u* b, int n) {
        rgbRowToHls(a, b, n, HlsSourceOrder::Bgr);
    });
}

IppStatus ippiColorTwist_32f_IP3R(Ipp32f* const p[3], int step, IppiSize r,
                                  const Ipp32f twist[3][4]) {
    if (!p || !twist) return ippStsNullPtrErr;
    if (IppStatus st = checkPlanes(r, {plane(p[0], step), plane(p[1], step), plane(p[2], step)}))
        return st;
    for (int y = 0; y < r.height; ++y) {
        Ipp32f* a = rowAt(p[0], step, y);
        Ipp32f* b = rowAt(p[1], step, y);
        Ipp32f* c = rowAt(p[2], step, y);
        for (int x = 0; x < r.width; ++x) {
            const float v0 = a[x], v1 = b[x], v2 = c[x];
            a[x] = twist[0][0] * v0 + twist[0][1] * v1 + twist[0][2] * v2 + twist[0][3];
            b[x] = twist[1][0] * v0 + twist[1][1] * v1 + twist[1][2] * v2 + twist[1][3];
            c[x] = twist[2][0] * v0 + twist[2][1] * v1 + twist[2][2] * v2 + twist[2][3];
        }
    }
    return ippStsNoErr;
}
