// Fill primitives: regions (all channels, per-channel values, or one channel
// of four) and vectors.
#pragma once

#include "core/ipp_types.h"

IppStatus ippiSet_8u_C1R(Ipp8u value, Ipp8u* pDst, int dstStep, IppiSize roi);
IppStatus ippiSet_16s_C1R(Ipp16s value, Ipp16s* pDst, int dstStep, IppiSize roi);
IppStatus ippiSet_16u_C1R(Ipp16u value, Ipp16u* pDst, int dstStep, IppiSize roi);
IppStatus ippiSet_32f_C1R(Ipp32f value, Ipp32f* pDst, int dstStep, IppiSize roi);
IppStatus ippiSet_32f_C3R(const Ipp32f value[3], Ipp32f* pDst, int dstStep, IppiSize roi);
// One channel of four-channel pixels: pDst points at the channel to fill.
IppStatus ippiSet_8u_C4CR(Ipp8u value, Ipp8u* pDst, int dstStep, IppiSize roi);

IppStatus ippsSet_8u(Ipp8u value, Ipp8u* pDst, int len);
IppStatus ippsSet_16s(Ipp16s value, Ipp16s* pDst, int len);
IppStatus ippsSet_32f(Ipp32f value, Ipp32f* pDst, int len);
IppStatus ippsZero_16s(Ipp16s* pDst, int len);
IppStatus ippsZero_32f(Ipp32f* pDst, int len);

namespace IPPIP {
inline IppStatus ippiSet_C1R(Ipp8u v, Ipp8u* d, int ds, IppiSize r) {
    return ippiSet_8u_C1R(v, d, ds, r);
}
inline IppStatus ippiSet_C1R(Ipp16s v, Ipp16s* d, int ds, IppiSize r) {
    return ippiSet_16s_C1R(v, d, ds, r);
}
inline IppStatus ippiSet_C1R(Ipp16u v, Ipp16u* d, int ds, IppiSize r) {
    return ippiSet_16u_C1R(v, d, ds, r);
}
inline IppStatus ippiSet_C1R(Ipp32f v, Ipp32f* d, int ds, IppiSize r) {
    return ippiSet_32f_C1R(v, d, ds, r);
}
inline IppStatus ippiSet_C3R(const Ipp32f v[3], Ipp32f* d, int ds, IppiSize r) {
    return ippiSet_32f_C3R(v, d, ds, r);
}
inline IppStatus ippsSet(Ipp8u v, Ipp8u* d, int n) {
    return ippsSet_8u(v, d, n);
}
inline IppStatus ippsSet(Ipp16s v, Ipp16s* d, int n) {
    return ippsSet_16s(v, d, n);
}
inline IppStatus ippsSet(Ipp32f v, Ipp32f* d, int n) {
    return ippsSet_32f(v, d, n);
}
inline IppStatus ippsZero(Ipp16s* d, int n) {
    return ippsZero_16s(d, n);
}
inline IppStatus ippsZero(Ipp32f* d, int n) {
    return ippsZero_32f(d, n);
}
}  // namespace IPPIP
