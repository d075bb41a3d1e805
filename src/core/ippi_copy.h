// Copy primitives: region copies, single channels into and out of interleaved
// pixels, interleaved <-> planar, and copies under an 8-bit mask.
#pragma once

#include "core/ipp_types.h"

// Region copies of whole pixels.
IppStatus ippiCopy_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize roi);
IppStatus ippiCopy_16s_C1R(const Ipp16s* pSrc, int srcStep, Ipp16s* pDst, int dstStep,
                           IppiSize roi);
IppStatus ippiCopy_16u_C1R(const Ipp16u* pSrc, int srcStep, Ipp16u* pDst, int dstStep,
                           IppiSize roi);
IppStatus ippiCopy_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                           IppiSize roi);
IppStatus ippiCopy_32f_C3R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                           IppiSize roi);
// The first three of four channels; the destination's fourth is left alone.
IppStatus ippiCopy_8u_AC4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize roi);

// One channel into interleaved pixels: pDst points at the channel to write.
IppStatus ippiCopy_8u_C1C3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize roi);
IppStatus ippiCopy_16s_C1C3R(const Ipp16s* pSrc, int srcStep, Ipp16s* pDst, int dstStep,
                             IppiSize roi);
IppStatus ippiCopy_16u_C1C3R(const Ipp16u* pSrc, int srcStep, Ipp16u* pDst, int dstStep,
                             IppiSize roi);
IppStatus ippiCopy_32f_C1C3R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                             IppiSize roi);
IppStatus ippiCopy_8u_C1C4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize roi);
IppStatus ippiCopy_16s_C1C4R(const Ipp16s* pSrc, int srcStep, Ipp16s* pDst, int dstStep,
                             IppiSize roi);
IppStatus ippiCopy_16u_C1C4R(const Ipp16u* pSrc, int srcStep, Ipp16u* pDst, int dstStep,
                             IppiSize roi);

// One channel out of interleaved pixels: pSrc points at the channel to read.
IppStatus ippiCopy_8u_C3C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize roi);
IppStatus ippiCopy_16s_C3C1R(const Ipp16s* pSrc, int srcStep, Ipp16s* pDst, int dstStep,
                             IppiSize roi);
IppStatus ippiCopy_16u_C3C1R(const Ipp16u* pSrc, int srcStep, Ipp16u* pDst, int dstStep,
                             IppiSize roi);
IppStatus ippiCopy_32f_C3C1R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                             IppiSize roi);
IppStatus ippiCopy_8u_C4C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize roi);
IppStatus ippiCopy_16s_C4C1R(const Ipp16s* pSrc, int srcStep, Ipp16s* pDst, int dstStep,
                             IppiSize roi);
IppStatus ippiCopy_16u_C4C1R(const Ipp16u* pSrc, int srcStep, Ipp16u* pDst, int dstStep,
                             IppiSize roi);

// Four-channel pixels to three-channel pixels, dropping the fourth.
IppStatus ippiCopy_8u_AC4C3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                             IppiSize roi);
// Interleaved <-> planar; every plane shares one step.
IppStatus ippiCopy_8u_C4P4R(const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[4], int dstStep,
                            IppiSize roi);
IppStatus ippiCopy_8u_P3C3R(const Ipp8u* const pSrc[3], int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roi);
IppStatus ippiCopy_8u_P4C4R(const Ipp8u* const pSrc[4], int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roi);

// Whole pixels copied where the 8-bit mask is non-zero.
IppStatus ippiCopy_8u_C1MR(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize roi,
                           const Ipp8u* pMask, int maskStep);
IppStatus ippiCopy_8u_C4MR(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep, IppiSize roi,
                           const Ipp8u* pMask, int maskStep);
IppStatus ippiCopy_32f_C1MR(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                            IppiSize roi, const Ipp8u* pMask, int maskStep);

// Overloads by element type, for templates.
namespace IPPIP {
inline IppStatus ippiCopy_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return ippiCopy_8u_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C1R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r) {
    return ippiCopy_16s_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C1R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return ippiCopy_16u_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiCopy_32f_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C3R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiCopy_32f_C3R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C1MR(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r, const Ipp8u* m,
                               int ms) {
    return ippiCopy_8u_C1MR(s, ss, d, ds, r, m, ms);
}
inline IppStatus ippiCopy_C1MR(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r,
                               const Ipp8u* m, int ms) {
    return ippiCopy_32f_C1MR(s, ss, d, ds, r, m, ms);
}
inline IppStatus ippiCopy_C1C3R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return ippiCopy_8u_C1C3R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C1C3R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r) {
    return ippiCopy_16s_C1C3R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C1C3R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return ippiCopy_16u_C1C3R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C1C3R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiCopy_32f_C1C3R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C3C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return ippiCopy_8u_C3C1R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C3C1R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r) {
    return ippiCopy_16s_C3C1R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C3C1R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return ippiCopy_16u_C3C1R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C3C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiCopy_32f_C3C1R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C1C4R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return ippiCopy_8u_C1C4R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C1C4R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r) {
    return ippiCopy_16s_C1C4R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C1C4R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return ippiCopy_16u_C1C4R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C4C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return ippiCopy_8u_C4C1R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C4C1R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r) {
    return ippiCopy_16s_C4C1R(s, ss, d, ds, r);
}
inline IppStatus ippiCopy_C4C1R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return ippiCopy_16u_C4C1R(s, ss, d, ds, r);
}
}  // namespace IPPIP
