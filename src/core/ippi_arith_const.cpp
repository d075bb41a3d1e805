// Arithmetic with constants as row loops over the shared elementwise helpers.
#include "core/ippi_arith_const.h"

#include "core/ippi_elementwise.h"

namespace {
using namespace kc::prim;

// One image, constants per channel, an integer op scaled by the Sfs rule.
template <typename T, typename Op>
IppStatus scaledConst(const T* s, int ss, T* d, int ds, IppiSize r, int sf, int ch, const T* values,
                      Op op) {
    if (!values) return ippStsNullPtrErr;
    const SfsScaler<T> scale(sf);
    return mapRows(s, ss, d, ds, r, ch, [&](T v, int c) {
        return scale(op(static_cast<long long>(v), static_cast<long long>(values[c])));
    });
}

// The four-channel form scales three channels and copies the fourth back.
IppStatus mulAc4(const Ipp8u* values, Ipp8u* d, int ds, IppiSize r, int sf) {
    if (!values) return ippStsNullPtrErr;
    const Ipp8u four[4] = {values[0], values[1], values[2], 1};
    const SfsScaler<Ipp8u> scale(sf);
    return mapRows(d, ds, d, ds, r, 4, [&](Ipp8u v, int c) {
        return c == 3 ? v : scale(static_cast<long long>(v) * four[c]);
    });
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
    return scaledConst(d, ds, d, ds, r, sf, 1, &v, kPlus);
}
IppStatus ippiAddC_16u_C1IRSfs(Ipp16u v, Ipp16u* d, int ds, IppiSize r, int sf) {
    return scaledConst(d, ds, d, ds, r, sf, 1, &v, kPlus);
}
IppStatus ippiAddC_32f_C1IR(Ipp32f v, Ipp32f* d, int ds, IppiSize r) {
    return floatConst(d, ds, d, ds, r, 1, &v, kPlus);
}
IppStatus ippiAddC_32f_C3IR(const Ipp32f v[3], Ipp32f* d, int ds, IppiSize r) {
    return floatConst(d, ds, d, ds, r, 3, v, kPlus);
}
IppStatus ippiSubC_8u_C1IRSfs(Ipp8u v, Ipp8u* d, int ds, IppiSize r, int sf) {
    return scaledConst(d, ds, d, ds, r, sf, 1, &v, kMinus);
}
IppStatus ippiSubC_16u_C1RSfs(const Ipp16u* s, int ss, Ipp16u v, Ipp16u* d, int ds, IppiSize r,
                              int sf) {
    return scaledConst(s, ss, d, ds, r, sf, 1, &v, kMinus);
}
IppStatus ippiMulC_8u_C1IRSfs(Ipp8u v, Ipp8u* d, int ds, IppiSize r, int sf) {
    return scaledConst(d, ds, d, ds, r, sf, 1, &v, kTimes);
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
