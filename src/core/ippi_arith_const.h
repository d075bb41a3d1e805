// Elementwise arithmetic with a constant (one constant per channel for the
// three- and four-channel forms). SubC computes (image - constant). Integer
// results saturate after the Sfs scaling of ippi_arith.h; floats never do.
#pragma once

#include "core/ipp_types.h"

IppStatus ippiAddC_8u_C1IRSfs(Ipp8u value, Ipp8u* pSrcDst, int srcDstStep, IppiSize roi,
                              int scaleFactor);
IppStatus ippiAddC_16u_C1IRSfs(Ipp16u value, Ipp16u* pSrcDst, int srcDstStep, IppiSize roi,
                               int scaleFactor);
IppStatus ippiAddC_32f_C1IR(Ipp32f value, Ipp32f* pSrcDst, int srcDstStep, IppiSize roi);
IppStatus ippiAddC_32f_C3IR(const Ipp32f value[3], Ipp32f* pSrcDst, int srcDstStep, IppiSize roi);
IppStatus ippiSubC_8u_C1IRSfs(Ipp8u value, Ipp8u* pSrcDst, int srcDstStep, IppiSize roi,
                              int scaleFactor);
IppStatus ippiSubC_16u_C1RSfs(const Ipp16u* pSrc, int srcStep, Ipp16u value, Ipp16u* pDst,
                              int dstStep, IppiSize roi, int scaleFactor);
IppStatus ippiMulC_8u_C1IRSfs(Ipp8u value, Ipp8u* pSrcDst, int srcDstStep, IppiSize roi,
                              int scaleFactor);
// Three constants for the first three channels; the fourth is left alone.
IppStatus ippiMulC_8u_AC4IRSfs(const Ipp8u value[3], Ipp8u* pSrcDst, int srcDstStep, IppiSize roi,
                               int scaleFactor);
IppStatus ippiMulC_32f_C1IR(Ipp32f value, Ipp32f* pSrcDst, int srcDstStep, IppiSize roi);
IppStatus ippiMulC_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f value, Ipp32f* pDst, int dstStep,
                           IppiSize roi);
IppStatus ippiMulC_32f_C3IR(const Ipp32f value[3], Ipp32f* pSrcDst, int srcDstStep, IppiSize roi);
IppStatus ippiMulC_32f_C3R(const Ipp32f* pSrc, int srcStep, const Ipp32f value[3], Ipp32f* pDst,
                           int dstStep, IppiSize roi);

IppStatus ippsAddC_64f_I(Ipp64f value, Ipp64f* pSrcDst, int len);
IppStatus ippsSubC_64f_I(Ipp64f value, Ipp64f* pSrcDst, int len);
IppStatus ippsMulC_64f_I(Ipp64f value, Ipp64f* pSrcDst, int len);

namespace IPPIP {
inline IppStatus ippiAddC_C1R(Ipp8u v, Ipp8u* d, int ds, IppiSize r, int sf) {
    return ippiAddC_8u_C1IRSfs(v, d, ds, r, sf);
}
inline IppStatus ippiAddC_C1R(Ipp16u v, Ipp16u* d, int ds, IppiSize r, int sf) {
    return ippiAddC_16u_C1IRSfs(v, d, ds, r, sf);
}
inline IppStatus ippiAddC_C1R(Ipp32f v, Ipp32f* d, int ds, IppiSize r) {
    return ippiAddC_32f_C1IR(v, d, ds, r);
}
inline IppStatus ippiAddC_C3R(const Ipp32f v[3], Ipp32f* d, int ds, IppiSize r) {
    return ippiAddC_32f_C3IR(v, d, ds, r);
}
inline IppStatus ippiSubC_C1R(Ipp8u v, Ipp8u* d, int ds, IppiSize r, int sf) {
    return ippiSubC_8u_C1IRSfs(v, d, ds, r, sf);
}
inline IppStatus ippiSubC_C1R(const Ipp16u* s, int ss, Ipp16u v, Ipp16u* d, int ds, IppiSize r,
                              int sf) {
    return ippiSubC_16u_C1RSfs(s, ss, v, d, ds, r, sf);
}
inline IppStatus ippiMulC_C1R(Ipp8u v, Ipp8u* d, int ds, IppiSize r, int sf) {
    return ippiMulC_8u_C1IRSfs(v, d, ds, r, sf);
}
inline IppStatus ippiMulC_C1R(Ipp32f v, Ipp32f* d, int ds, IppiSize r) {
    return ippiMulC_32f_C1IR(v, d, ds, r);
}
inline IppStatus ippiMulC_C1R(const Ipp32f* s, int ss, Ipp32f v, Ipp32f* d, int ds, IppiSize r) {
    return ippiMulC_32f_C1R(s, ss, v, d, ds, r);
}
inline IppStatus ippiMulC_C3R(const Ipp32f v[3], Ipp32f* d, int ds, IppiSize r) {
    return ippiMulC_32f_C3IR(v, d, ds, r);
}
inline IppStatus ippiMulC_C3R(const Ipp32f* s, int ss, const Ipp32f v[3], Ipp32f* d, int ds,
                              IppiSize r) {
    return ippiMulC_32f_C3R(s, ss, v, d, ds, r);
}
}  // namespace IPPIP
