// Clamping thresholds as row loops (comparisons written so NaN stays).
#include "core/ippi_threshold.h"

#include "core/ippi_elementwise.h"

namespace {
using namespace kc::prim;

// `ch` elements per pixel, thresholds for the first `used` of them.
template <typename T>
IppStatus clampRows(T* d, int ds, IppiSize r, int ch, int used, const T* t, bool below) {
    if (!t) return ippStsNullPtrErr;
    T lim[4] = {};
    for (int c = 0; c < used; ++c) lim[c] = t[c];
    if (ch == 1) {
        const T t0 = lim[0];
        if (below) return mapRows(d, ds, d, ds, r, 1, [=](T v, int) { return v < t0 ? t0 : v; });
        return mapRows(d, ds, d, ds, r, 1, [=](T v, int) { return v > t0 ? t0 : v; });
    }
    return mapRows(d, ds, d, ds, r, ch, [&](T v, int c) {
        if (c >= used) return v;
        return below ? (v < lim[c] ? lim[c] : v) : (v > lim[c] ? lim[c] : v);
    });
}
}  // namespace

IppStatus ippiThreshold_LT_32f_C1IR(Ipp32f* d, int ds, IppiSize r, Ipp32f t) {
    return clampRows(d, ds, r, 1, 1, &t, true);
}
IppStatus ippiThreshold_LT_32f_C3IR(Ipp32f* d, int ds, IppiSize r, const Ipp32f t[3]) {
    return clampRows(d, ds, r, 3, 3, t, true);
}
IppStatus ippiThreshold_GT_32f_C1IR(Ipp32f* d, int ds, IppiSize r, Ipp32f t) {
    return clampRows(d, ds, r, 1, 1, &t, false);
}
IppStatus ippiThreshold_GT_32f_C3IR(Ipp32f* d, int ds, IppiSize r, const Ipp32f t[3]) {
    return clampRows(d, ds, r, 3, 3, t, false);
}
IppStatus ippiThreshold_GT_16u_C1IR(Ipp16u* d, int ds, IppiSize r, Ipp16u t) {
    return clampRows(d, ds, r, 1, 1, &t, false);
}
IppStatus ippiThreshold_GT_16u_C3IR(Ipp16u* d, int ds, IppiSize r, const Ipp16u t[3]) {
    return clampRows(d, ds, r, 3, 3, t, false);
}
IppStatus ippiThreshold_GT_16u_AC4IR(Ipp16u* d, int ds, IppiSize r, const Ipp16u t[3]) {
    return clampRows(d, ds, r, 4, 3, t, false);
}
IppStatus ippiThreshold_LTValGTVal_32f_C1IR(Ipp32f* d, int ds, IppiSize r, Ipp32f tLT, Ipp32f vLT,
                                            Ipp32f tGT, Ipp32f vGT) {
    if (IppStatus st = checkPlanes(r, {plane(d, ds)})) return st;
    if (tLT > tGT) return ippStsBadArgErr;
    return mapRows(d, ds, d, ds, r, 1,
                   [=](Ipp32f v, int) { return v < tLT ? vLT : (v > tGT ? vGT : v); });
}
