// Two-operand arithmetic as row loops (integer forms scale in the narrowest
// lanes that hold their values); absolute differences through OpenCV, which is
// exact for them.
#include "core/ippi_arith.h"

#include <cmath>

#include "core/ippi_elementwise.h"

namespace {
using namespace kc::prim;

template <typename T>
IppStatus absDiff(const T* a, int as, const T* b, int bs, T* d, int ds, IppiSize r) {
    if (IppStatus st = checkPlanes(r, {plane(a, as), plane(b, bs), plane(d, ds)})) return st;
    cv::Mat dst = matOver(d, ds, r);
    cv::absdiff(matOver(a, as, r), matOver(b, bs, r), dst);
    return ippStsNoErr;
}

template <typename T>
IppStatus addProduct(const T* a, int as, const T* b, int bs, Ipp32f* d, int ds, IppiSize r) {
    if (IppStatus st = checkPlanes(r, {plane(a, as), plane(b, bs), plane(d, ds)})) return st;
    for (int y = 0; y < r.height; ++y) {
        const T* ar = rowAt(a, as, y);
        const T* br = rowAt(b, bs, y);
        Ipp32f* dr = rowAt(d, ds, y);
        for (int x = 0; x < r.width; ++x)
            dr[x] += static_cast<Ipp32f>(ar[x]) * static_cast<Ipp32f>(br[x]);
    }
    return ippStsNoErr;
}

constexpr auto kPlus = [](auto a, auto b) { return b + a; };
constexpr auto kMinus = [](auto a, auto b) { return b - a; };
constexpr auto kTimes = [](auto a, auto b) { return b * a; };
}  // namespace

IppStatus ippiAdd_8u_C1IRSfs(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r, int sf) {
    return scaledZip<SfsPlus>(s, ss, d, ds, d, ds, r, sf);
}
IppStatus ippiAdd_16u_C1IRSfs(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r, int sf) {
    return scaledZip<SfsPlus>(s, ss, d, ds, d, ds, r, sf);
}
IppStatus ippiAdd_32f_C1IR(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return zipRows(s, ss, d, ds, d, ds, r, 1, kPlus);
}
IppStatus ippiAdd_32f_C3IR(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return zipRows(s, ss, d, ds, d, ds, r, 3, kPlus);
}
IppStatus ippiSub_8u_C1IRSfs(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r, int sf) {
    return scaledZip<SfsMinus>(s, ss, d, ds, d, ds, r, sf);
}
IppStatus ippiSub_8u_C1RSfs(const Ipp8u* s1, int s1s, const Ipp8u* s2, int s2s, Ipp8u* d, int ds,
                            IppiSize r, int sf) {
    return scaledZip<SfsMinus>(s1, s1s, s2, s2s, d, ds, r, sf);
}
IppStatus ippiSub_32f_C1IR(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return zipRows(s, ss, d, ds, d, ds, r, 1, kMinus);
}
IppStatus ippiMul_8u_C1IRSfs(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r, int sf) {
    return scaledZip<SfsTimes>(s, ss, d, ds, d, ds, r, sf);
}
IppStatus ippiMul_32f_C1IR(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return zipRows(s, ss, d, ds, d, ds, r, 1, kTimes);
}
IppStatus ippiDiv_32f_C1IR(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    bool zeroDivisor = false;
    const IppStatus st = zipRows(s, ss, d, ds, d, ds, r, 1, [&](Ipp32f a, Ipp32f b) {
        zeroDivisor |= (a == 0.f);
        return b / a;
    });
    return st == ippStsNoErr && zeroDivisor ? ippStsDivByZero : st;
}

IppStatus ippiAbsDiff_8u_C1R(const Ipp8u* a, int as, const Ipp8u* b, int bs, Ipp8u* d, int ds,
                             IppiSize r) {
    return absDiff(a, as, b, bs, d, ds, r);
}
IppStatus ippiAbsDiff_16u_C1R(const Ipp16u* a, int as, const Ipp16u* b, int bs, Ipp16u* d, int ds,
                              IppiSize r) {
    return absDiff(a, as, b, bs, d, ds, r);
}
IppStatus ippiAbsDiff_32f_C1R(const Ipp32f* a, int as, const Ipp32f* b, int bs, Ipp32f* d, int ds,
                              IppiSize r) {
    return absDiff(a, as, b, bs, d, ds, r);
}
IppStatus ippiAbs_32f_C1IR(Ipp32f* d, int ds, IppiSize r) {
    return mapRows(d, ds, d, ds, r, 1, [](Ipp32f v, int) { return std::fabs(v); });
}
IppStatus ippiSqrt_32f_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    bool negative = false;
    const IppStatus st = mapRows(s, ss, d, ds, r, 1, [&](Ipp32f v, int) {
        negative |= (v < 0.f);
        return std::sqrt(v);
    });
    return st == ippStsNoErr && negative ? ippStsSqrtNegArg : st;
}

IppStatus ippiAddProduct_8u32f_C1IR(const Ipp8u* a, int as, const Ipp8u* b, int bs, Ipp32f* d,
                                    int ds, IppiSize r) {
    return addProduct(a, as, b, bs, d, ds, r);
}
IppStatus ippiAddProduct_16u32f_C1IR(const Ipp16u* a, int as, const Ipp16u* b, int bs, Ipp32f* d,
                                     int ds, IppiSize r) {
    return addProduct(a, as, b, bs, d, ds, r);
}
IppStatus ippiAddProduct_32f_C1IR(const Ipp32f* a, int as, const Ipp32f* b, int bs, Ipp32f* d,
                                  int ds, IppiSize r) {
    return addProduct(a, as, b, bs, d, ds, r);
}
