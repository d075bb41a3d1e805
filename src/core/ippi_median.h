// Median filters: over a rectangle with a given anchor (signed 16-bit) and over
// the cross-shaped 3x3 (5 pixels) or 5x5 (9 pixels) neighbourhood centred on
// the pixel. The source around the region is read: the caller supplies it.
#pragma once

#include "core/ipp_types.h"
#include "core/ippi_filter.h"

// dst(x,y) = median of src(x - ax + i, y - ay + j), 0 <= i < w, 0 <= j < h
// (for an even count, the upper of the two middle values).
IppStatus ippiFilterMedian_16s_C1R(const Ipp16s* pSrc, int srcStep, Ipp16s* pDst, int dstStep,
                                   IppiSize dstRoiSize, IppiSize maskSize, IppiPoint anchor);
// mask is ippMskSize3x3 or ippMskSize5x5.
IppStatus ippiFilterMedianCross_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                       IppiSize dstRoiSize, IppiMaskSize mask);
IppStatus ippiFilterMedianCross_16s_C1R(const Ipp16s* pSrc, int srcStep, Ipp16s* pDst, int dstStep,
                                        IppiSize dstRoiSize, IppiMaskSize mask);

namespace IPPIP {
inline IppStatus ippiFilterMedian_C1R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r,
                                      IppiSize m, IppiPoint a) {
    return ippiFilterMedian_16s_C1R(s, ss, d, ds, r, m, a);
}
inline IppStatus ippiFilterMedianCross_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r,
                                           IppiMaskSize m) {
    return ippiFilterMedianCross_8u_C1R(s, ss, d, ds, r, m);
}
inline IppStatus ippiFilterMedianCross_C1R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r,
                                           IppiMaskSize m) {
    return ippiFilterMedianCross_16s_C1R(s, ss, d, ds, r, m);
}
}  // namespace IPPIP
