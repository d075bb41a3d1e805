// Arithmetic with constants as row loops over the shared elementwise helpers.
#include "core/ippi_arith_const.h"

#include "core/ippi_elementwise.h"

namespace {
using namespace kc::prim;

// The four-channel form scales three channels and leaves the fourth alone.
IppStatus mulAc4(const Ipp8u* values, Ipp8u* d, int ds, IppiSize r, int sf) {
    if (!values) return ippStsNullPtrErr;
    if (IppStatus st = checkPlanes(r, {plane(d, ds, 4)})) return st;
    withSfs<Ipp8u, SfsTimes>(sf, [&](auto scale) {
        using L = typename decltype(scale)::Lane;
        const L k[3] = {static_cast<L>(values[0]), static_cast<L>(values[1]),
                        static_cast<L>(values[2])};
        for (int y = 0; y < r.height; ++y) {
            Ipp8u* p = rowAt(d, ds, y);
            for (int x = 0; x < r.width; ++x)
                for (int c = 0; c < 3; ++c)
                    p[4 * x + c] = scale(SfsTimes::apply(k[c], static_cast<L>(p[4 * x + c])));
        }
    });
    return ippStsNoErr;
}

template <typename Op>
IppStatus floatConst(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r, int ch,
                     const Ipp32f* values, Op op) {
    if (!values) return ippStsNullPtrErr;
    if (ch == 1) {
        const Ipp32f v0 = values[0];
        return mapRows(s, ss, d, ds, r, 1, [&](Ipp32f v, int) { return op(v, v0); });
    }
    return mapRows(s, ss, d, ds, r, ch, [&](Ipp32f v, int c) { return op(v, values[c]); });
}

template <typename Op>
IppStatus vectorConst(Ipp64f value, Ipp64f* d, int len, Op op) {
    if (IppStatus st = checkVector(len, {d})) return st;
    for (int i = 0; i < len; ++i) d[i] = op(d[i], value);
    return ippStsNoErr;
}

constexpr auto kPlus = [](auto v, auto k) { return v + k; };
constexpr auto kMinus = [](auto v, auto k) { return v - k; };
constexpr auto kTimes = [](auto v, auto k) { return v * k; };
}  // namespace

IppStatus ippiAddC_8u_C1IRSfs(Ipp8u v, Ipp8u* d, int ds, IppiSize r, int sf) {
    return scaledConst<SfsPlus>(v, d, ds, d, ds, r, sf);
}
IppStatus ippiAddC_16u_C1IRSfs(Ipp16u v, Ipp16u* d, int ds, IppiSize r, int sf) {
    return scaledConst<SfsPlus>(v, d, ds, d, ds, r, sf);
}
IppStatus ippiAddC_32f_C1IR(Ipp32f v, Ipp32f* d, int ds, IppiSize r) {
    return floatConst(d, ds, d, ds, r, 1, &v, kPlus);
}
IppStatus ippiAddC_32f_C3IR(const Ipp32f v[3], Ipp32f* d, int ds, IppiSize r) {
    return floatConst(d, ds, d, ds, r, 3, v, kPlus);
}
IppStatus ippiSubC_8u_C1IRSfs(Ipp8u v, Ipp8u* d, int ds, IppiSize r, int sf) {
    return scaledConst<SfsMinus>(v, d, ds, d, ds, r, sf);
}
IppStatus ippiSubC_16u_C1RSfs(const Ipp16u* s, int ss, Ipp16u v, Ipp16u* d, int ds, IppiSize r,
                              int sf) {
    return scaledConst<SfsMinus>(v, s, ss, d, ds, r, sf);
}
IppStatus ippiMulC_8u_C1IRSfs(Ipp8u v, Ipp8u* d, int ds, IppiSize r, int sf) {
    return scaledConst<SfsTimes>(v, d, ds, d, ds, r, sf);
}
IppStatus ippiMulC_8u_AC4IRSfs(const Ipp8u v[3], Ipp8u* d, int ds, IppiSize r, int sf) {
    return mulAc4(v, d, ds, r, sf);
}
IppStatus ippiMulC_32f_C1IR(Ipp32f v, Ipp32f* d, int ds, IppiSize r) {
    return floatConst(d, ds, d, ds, r, 1, &v, kTimes);
}
IppStatus ippiMulC_32f_C1R(const Ipp32f* s, int ss, Ipp32f v, Ipp32f* d, int ds, IppiSize r) {
    return floatConst(s, ss, d, ds, r, 1, &v, kTimes);
}
IppStatus ippiMulC_32f_C3IR(const Ipp32f v[3], Ipp32f* d, int ds, IppiSize r) {
    return floatConst(d, ds, d, ds, r, 3, v, kTimes);
}
IppStatus ippiMulC_32f_C3R(const Ipp32f* s, int ss, const Ipp32f v[3], Ipp32f* d, int ds,
                           IppiSize r) {
    return floatConst(s, ss, d, ds, r, 3, v, kTimes);
}

IppStatus ippsAddC_64f_I(Ipp64f v, Ipp64f* d, int len) {
    return vectorConst(v, d, len, kPlus);
}
IppStatus ippsSubC_64f_I(Ipp64f v, Ipp64f* d, int len) {
    return vectorConst(v, d, len, kMinus);
}
IppStatus ippsMulC_64f_I(Ipp64f v, Ipp64f* d, int len) {
    return vectorConst(v, d, len, kTimes);
}
