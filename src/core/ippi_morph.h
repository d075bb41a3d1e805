// Morphology primitives: minimum (erode) and maximum (dilate) over a 3x3
// square, over an 8-bit structuring mask, or over a rectangle.
//
// Like every neighbourhood primitive here they read source pixels around the
// region: the caller supplies that border (one pixel on each side for 3x3; for
// a mask of size w x h anchored at (ax, ay), ax columns left, w-1-ax right, ay
// rows above and h-1-ay below). In-place forms see only original pixels.
#pragma once

#include "core/ipp_types.h"

IppStatus ippiErode3x3_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                              IppiSize roiSize);
IppStatus ippiDilate3x3_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roiSize);
IppStatus ippiErode3x3_32f_C1IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roiSize);
IppStatus ippiDilate3x3_32f_C1IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roiSize);

// dst(x,y) = min / max of src(x - ax + i, y - ay + j) over the mask cells
// (i, j) that are non-zero; the mask is w x h bytes, row after row.
IppStatus ippiErode_8u_C1IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize, const Ipp8u* pMask,
                            IppiSize maskSize, IppiPoint anchor);
IppStatus ippiDilate_8u_C1IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize, const Ipp8u* pMask,
                             IppiSize maskSize, IppiPoint anchor);

// dst(x,y) = max of src(x - ax + i, y - ay + j), 0 <= i < w, 0 <= j < h.
IppStatus ippiFilterMax_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize dstRoiSize, IppiSize maskSize, IppiPoint anchor);

// The same primitives by element type, for templates.
namespace IPPIP {
inline IppStatus ippiErode3x3_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return ippiErode3x3_8u_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiDilate3x3_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return ippiDilate3x3_8u_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiErode3x3_C1IR(Ipp32f* p, int s, IppiSize r) {
    return ippiErode3x3_32f_C1IR(p, s, r);
}
inline IppStatus ippiDilate3x3_C1IR(Ipp32f* p, int s, IppiSize r) {
    return ippiDilate3x3_32f_C1IR(p, s, r);
}
inline IppStatus ippiErode_C1IR(Ipp8u* p, int s, IppiSize r, const Ipp8u* m, IppiSize ms,
                                IppiPoint a) {
    return ippiErode_8u_C1IR(p, s, r, m, ms, a);
}
inline IppStatus ippiDilate_C1IR(Ipp8u* p, int s, IppiSize r, const Ipp8u* m, IppiSize ms,
                                 IppiPoint a) {
    return ippiDilate_8u_C1IR(p, s, r, m, ms, a);
}
inline IppStatus ippiFilterMax_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r,
                                   IppiSize ms, IppiPoint a) {
    return ippiFilterMax_8u_C1R(s, ss, d, ds, r, ms, a);
}
}  // namespace IPPIP
