// Thresholds that clamp in place: _LT raises values below the threshold to
// it, _GT lowers values above it; LTValGTVal replaces values below thresholdLT
// by valueLT and values above thresholdGT by valueGT. NaN is left as it is.
#pragma once

#include "core/ipp_types.h"

IppStatus ippiThreshold_LT_32f_C1IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roi,
                                    Ipp32f threshold);
IppStatus ippiThreshold_LT_32f_C3IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roi,
                                    const Ipp32f threshold[3]);
IppStatus ippiThreshold_GT_32f_C1IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roi,
                                    Ipp32f threshold);
IppStatus ippiThreshold_GT_32f_C3IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roi,
                                    const Ipp32f threshold[3]);
IppStatus ippiThreshold_GT_16u_C1IR(Ipp16u* pSrcDst, int srcDstStep, IppiSize roi,
                                    Ipp16u threshold);
IppStatus ippiThreshold_GT_16u_C3IR(Ipp16u* pSrcDst, int srcDstStep, IppiSize roi,
                                    const Ipp16u threshold[3]);
// The fourth channel is left alone.
IppStatus ippiThreshold_GT_16u_AC4IR(Ipp16u* pSrcDst, int srcDstStep, IppiSize roi,
                                     const Ipp16u threshold[3]);
// thresholdLT must not exceed thresholdGT (else ippStsBadArgErr).
IppStatus ippiThreshold_LTValGTVal_32f_C1IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roi,
                                            Ipp32f thresholdLT, Ipp32f valueLT, Ipp32f thresholdGT,
                                            Ipp32f valueGT);

namespace IPPIP {
inline IppStatus ippiThreshold_LT_C1R(Ipp32f* d, int ds, IppiSize r, Ipp32f t) {
    return ippiThreshold_LT_32f_C1IR(d, ds, r, t);
}
inline IppStatus ippiThreshold_LT_C3R(Ipp32f* d, int ds, IppiSize r, const Ipp32f t[3]) {
    return ippiThreshold_LT_32f_C3IR(d, ds, r, t);
}
inline IppStatus ippiThreshold_GT_C1R(Ipp32f* d, int ds, IppiSize r, Ipp32f t) {
    return ippiThreshold_GT_32f_C1IR(d, ds, r, t);
}
inline IppStatus ippiThreshold_GT_C3R(Ipp32f* d, int ds, IppiSize r, const Ipp32f t[3]) {
    return ippiThreshold_GT_32f_C3IR(d, ds, r, t);
}
inline IppStatus ippiThreshold_GT_C1R(Ipp16u* d, int ds, IppiSize r, Ipp16u t) {
    return ippiThreshold_GT_16u_C1IR(d, ds, r, t);
}
inline IppStatus ippiThreshold_GT_C3R(Ipp16u* d, int ds, IppiSize r, const Ipp16u t[3]) {
    return ippiThreshold_GT_16u_C3IR(d, ds, r, t);
}
}  // namespace IPPIP
