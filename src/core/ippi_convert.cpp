// Conversions through OpenCV's convertTo where it matches exactly (widening,
// integer saturation, round-half-even); truncation is a plain row loop.
#include "core/ippi_convert.h"

#include "core/ippi_common.h"

namespace {
using namespace kc::prim;

// Widening, or integer narrowing with saturation: convertTo is exact here.
template <typename S, typename D>
IppStatus convertExact(const S* s, int ss, D* d, int ds, IppiSize r, int ch) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss, ch), plane(d, ds, ch)})) return st;
    cv::Mat dst = matOver(d, ds, r, ch);
    matOver(s, ss, r, ch).convertTo(dst, dst.type());
    return ippStsNoErr;
}

// Float to integer: to nearest (halves to even, as convertTo does), or toward
// zero. Clamping before the cast keeps the cast defined and sends NaN low.
template <typename D>
IppStatus convertRounded(const Ipp32f* s, int ss, D* d, int ds, IppiSize r, int ch,
                         IppRoundMode mode) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss, ch), plane(d, ds, ch)})) return st;
    if (mode == ippRndNear) {
        cv::Mat dst = matOver(d, ds, r, ch);
        matOver(s, ss, r, ch).convertTo(dst, dst.type());
        return ippStsNoErr;
    }
    if (mode != ippRndZero) return ippStsBadArgErr;
    constexpr float lo = std::numeric_limits<D>::min();
    constexpr float hi = std::numeric_limits<D>::max();
    const int n = r.width * ch;
    for (int y = 0; y < r.height; ++y) {
        const Ipp32f* sr = rowAt(s, ss, y);
        D* dr = rowAt(d, ds, y);
        for (int i = 0; i < n; ++i) {
            const float v = sr[i];
            dr[i] = static_cast<D>(v > lo ? (v < hi ? v : hi) : lo);
        }
    }
    return ippStsNoErr;
}

IppStatus scaleUp(const Ipp8u* s, int ss, Ipp32f* d, int ds, IppiSize r, int ch, Ipp32f vMin,
                  Ipp32f vMax) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss, ch), plane(d, ds, ch)})) return st;
    if (!(vMax > vMin)) return ippStsBadArgErr;
    cv::Mat dst = matOver(d, ds, r, ch);
    matOver(s, ss, r, ch).convertTo(dst, CV_32F, (double(vMax) - vMin) / 255.0, vMin);
    return ippStsNoErr;
}

IppStatus scaleDown(const Ipp32f* s, int ss, Ipp8u* d, int ds, IppiSize r, int ch, Ipp32f vMin,
                    Ipp32f vMax) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss, ch), plane(d, ds, ch)})) return st;
    if (!(vMax > vMin)) return ippStsBadArgErr;
    // Saturation of convertTo is exactly the clamp to [vMin, vMax].
    const double a = 255.0 / (double(vMax) - vMin);
    cv::Mat dst = matOver(d, ds, r, ch);
    matOver(s, ss, r, ch).convertTo(dst, CV_8U, a, -vMin * a);
    return ippStsNoErr;
}
}  // namespace

IppStatus ippiConvert_8u32f_C1R(const Ipp8u* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return convertExact(s, ss, d, ds, r, 1);
}
IppStatus ippiConvert_8u32f_C3R(const Ipp8u* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return convertExact(s, ss, d, ds, r, 3);
}
IppStatus ippiConvert_8u16u_C1R(const Ipp8u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return convertExact(s, ss, d, ds, r, 1);
}
IppStatus ippiConvert_16u32f_C1R(const Ipp16u* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return convertExact(s, ss, d, ds, r, 1);
}
IppStatus ippiConvert_16u32f_C3R(const Ipp16u* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return convertExact(s, ss, d, ds, r, 3);
}
IppStatus ippiConvert_16s32f_C1R(const Ipp16s* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return convertExact(s, ss, d, ds, r, 1);
}
IppStatus ippiConvert_16u8u_C1R(const Ipp16u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return convertExact(s, ss, d, ds, r, 1);
}
IppStatus ippiConvert_32f8u_C1R(const Ipp32f* s, int ss, Ipp8u* d, int ds, IppiSize r,
                                IppRoundMode m) {
    return convertRounded(s, ss, d, ds, r, 1, m);
}
IppStatus ippiConvert_32f8u_C3R(const Ipp32f* s, int ss, Ipp8u* d, int ds, IppiSize r,
                                IppRoundMode m) {
    return convertRounded(s, ss, d, ds, r, 3, m);
}
IppStatus ippiConvert_32f16u_C1R(const Ipp32f* s, int ss, Ipp16u* d, int ds, IppiSize r,
                                 IppRoundMode m) {
    return convertRounded(s, ss, d, ds, r, 1, m);
}
IppStatus ippiConvert_32f16u_C3R(const Ipp32f* s, int ss, Ipp16u* d, int ds, IppiSize r,
                                 IppRoundMode m) {
    return convertRounded(s, ss, d, ds, r, 3, m);
}
IppStatus ippiConvert_32f16s_C1R(const Ipp32f* s, int ss, Ipp16s* d, int ds, IppiSize r,
                                 IppRoundMode m) {
    return convertRounded(s, ss, d, ds, r, 1, m);
}
IppStatus ippsConvert_64f32f(const Ipp64f* s, Ipp32f* d, int len) {
    if (IppStatus st = checkVector(len, {s, d})) return st;
    for (int i = 0; i < len; ++i) d[i] = static_cast<Ipp32f>(s[i]);
    return ippStsNoErr;
}

IppStatus ippiScale_8u32f_C1R(const Ipp8u* s, int ss, Ipp32f* d, int ds, IppiSize r, Ipp32f lo,
                              Ipp32f hi) {
    return scaleUp(s, ss, d, ds, r, 1, lo, hi);
}
IppStatus ippiScale_8u32f_C3R(const Ipp8u* s, int ss, Ipp32f* d, int ds, IppiSize r, Ipp32f lo,
                              Ipp32f hi) {
    return scaleUp(s, ss, d, ds, r, 3, lo, hi);
}
IppStatus ippiScale_8u32f_C4R(const Ipp8u* s, int ss, Ipp32f* d, int ds, IppiSize r, Ipp32f lo,
                              Ipp32f hi) {
    return scaleUp(s, ss, d, ds, r, 4, lo, hi);
}
IppStatus ippiScale_32f8u_C1R(const Ipp32f* s, int ss, Ipp8u* d, int ds, IppiSize r, Ipp32f lo,
                              Ipp32f hi) {
    return scaleDown(s, ss, d, ds, r, 1, lo, hi);
}
IppStatus ippiScale_32f8u_C3R(const Ipp32f* s, int ss, Ipp8u* d, int ds, IppiSize r, Ipp32f lo,
                              Ipp32f hi) {
    return scaleDown(s, ss, d, ds, r, 3, lo, hi);
}
