// Element-type conversions (widening exactly, narrowing with saturation and a
// rounding mode) and the linear Scale maps between 0..255 and a float range.
//
// Rounding: ippRndNear sends exact halves to the even neighbour (2.5 -> 2,
// 3.5 -> 4, -2.5 -> -2); ippRndZero truncates toward zero. Both saturate, and
// a NaN becomes the lowest value of the destination type.
#pragma once

#include "core/ipp_types.h"

IppStatus ippiConvert_8u32f_C1R(const Ipp8u* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                IppiSize roi);
IppStatus ippiConvert_8u32f_C3R(const Ipp8u* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                IppiSize roi);
IppStatus ippiConvert_8u16u_C1R(const Ipp8u* pSrc, int srcStep, Ipp16u* pDst, int dstStep,
                                IppiSize roi);
IppStatus ippiConvert_16u32f_C1R(const Ipp16u* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                 IppiSize roi);
IppStatus ippiConvert_16u32f_C3R(const Ipp16u* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                 IppiSize roi);
IppStatus ippiConvert_16s32f_C1R(const Ipp16s* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                 IppiSize roi);
// Saturates values above 255.
IppStatus ippiConvert_16u8u_C1R(const Ipp16u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                IppiSize roi);
IppStatus ippiConvert_32f8u_C1R(const Ipp32f* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                IppiSize roi, IppRoundMode roundMode);
IppStatus ippiConvert_32f8u_C3R(const Ipp32f* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                IppiSize roi, IppRoundMode roundMode);
IppStatus ippiConvert_32f16u_C1R(const Ipp32f* pSrc, int srcStep, Ipp16u* pDst, int dstStep,
                                 IppiSize roi, IppRoundMode roundMode);
IppStatus ippiConvert_32f16u_C3R(const Ipp32f* pSrc, int srcStep, Ipp16u* pDst, int dstStep,
                                 IppiSize roi, IppRoundMode roundMode);
IppStatus ippiConvert_32f16s_C1R(const Ipp32f* pSrc, int srcStep, Ipp16s* pDst, int dstStep,
                                 IppiSize roi, IppRoundMode roundMode);
// Rounds each double to the nearest float.
IppStatus ippsConvert_64f32f(const Ipp64f* pSrc, Ipp32f* pDst, int len);

// 0..255 onto [vMin, vMax]: dst = vMin + src * (vMax - vMin) / 255.
IppStatus ippiScale_8u32f_C1R(const Ipp8u* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                              IppiSize roi, Ipp32f vMin, Ipp32f vMax);
IppStatus ippiScale_8u32f_C3R(const Ipp8u* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                              IppiSize roi, Ipp32f vMin, Ipp32f vMax);
IppStatus ippiScale_8u32f_C4R(const Ipp8u* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                              IppiSize roi, Ipp32f vMin, Ipp32f vMax);
// [vMin, vMax] onto 0..255, values outside the range clamped, rounded to
// nearest (halves to even). vMax must exceed vMin (else ippStsBadArgErr).
IppStatus ippiScale_32f8u_C1R(const Ipp32f* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                              IppiSize roi, Ipp32f vMin, Ipp32f vMax);
IppStatus ippiScale_32f8u_C3R(const Ipp32f* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                              IppiSize roi, Ipp32f vMin, Ipp32f vMax);

namespace IPPIP {
inline IppStatus ippiConvert_C1R(const Ipp8u* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiConvert_8u32f_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiConvert_C1R(const Ipp16u* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiConvert_16u32f_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiConvert_C1R(const Ipp16s* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiConvert_16s32f_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiConvert_C1R(const Ipp8u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return ippiConvert_8u16u_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiConvert_C1R(const Ipp16u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return ippiConvert_16u8u_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiConvert_C3R(const Ipp8u* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiConvert_8u32f_C3R(s, ss, d, ds, r);
}
inline IppStatus ippiConvert_C3R(const Ipp16u* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiConvert_16u32f_C3R(s, ss, d, ds, r);
}
inline IppStatus ippiConvert_C1R(const Ipp32f* s, int ss, Ipp8u* d, int ds, IppiSize r,
                                 IppRoundMode m) {
    return ippiConvert_32f8u_C1R(s, ss, d, ds, r, m);
}
inline IppStatus ippiConvert_C1R(const Ipp32f* s, int ss, Ipp16u* d, int ds, IppiSize r,
                                 IppRoundMode m) {
    return ippiConvert_32f16u_C1R(s, ss, d, ds, r, m);
}
inline IppStatus ippiConvert_C1R(const Ipp32f* s, int ss, Ipp16s* d, int ds, IppiSize r,
                                 IppRoundMode m) {
    return ippiConvert_32f16s_C1R(s, ss, d, ds, r, m);
}
inline IppStatus ippiConvert_C3R(const Ipp32f* s, int ss, Ipp8u* d, int ds, IppiSize r,
                                 IppRoundMode m) {
    return ippiConvert_32f8u_C3R(s, ss, d, ds, r, m);
}
inline IppStatus ippiConvert_C3R(const Ipp32f* s, int ss, Ipp16u* d, int ds, IppiSize r,
                                 IppRoundMode m) {
    return ippiConvert_32f16u_C3R(s, ss, d, ds, r, m);
}
}  // namespace IPPIP
