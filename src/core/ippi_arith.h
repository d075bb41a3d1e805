// Elementwise arithmetic between two images. Operand order follows the
// primitive library: Sub computes (second - first) and Div (second / first),
// the in-place forms taking the source-destination as the second operand.
// Integer results saturate; Sfs forms scale by 2^-scaleFactor first, rounding
// exact halves to even (see kc::prim::SfsScaler). Float results never saturate.
#pragma once

#include "core/ipp_types.h"

// Warning: a negative argument gave NaN (the other results are valid).
inline constexpr IppStatus ippStsSqrtNegArg = 3;

IppStatus ippiAdd_8u_C1IRSfs(const Ipp8u* pSrc, int srcStep, Ipp8u* pSrcDst, int srcDstStep,
                             IppiSize roi, int scaleFactor);
IppStatus ippiAdd_16u_C1IRSfs(const Ipp16u* pSrc, int srcStep, Ipp16u* pSrcDst, int srcDstStep,
                              IppiSize roi, int scaleFactor);
IppStatus ippiAdd_32f_C1IR(const Ipp32f* pSrc, int srcStep, Ipp32f* pSrcDst, int srcDstStep,
                           IppiSize roi);
IppStatus ippiAdd_32f_C3IR(const Ipp32f* pSrc, int srcStep, Ipp32f* pSrcDst, int srcDstStep,
                           IppiSize roi);
// pSrcDst = pSrcDst - pSrc.
IppStatus ippiSub_8u_C1IRSfs(const Ipp8u* pSrc, int srcStep, Ipp8u* pSrcDst, int srcDstStep,
                             IppiSize roi, int scaleFactor);
// pDst = pSrc2 - pSrc1.
IppStatus ippiSub_8u_C1RSfs(const Ipp8u* pSrc1, int src1Step, const Ipp8u* pSrc2, int src2Step,
                            Ipp8u* pDst, int dstStep, IppiSize roi, int scaleFactor);
IppStatus ippiSub_32f_C1IR(const Ipp32f* pSrc, int srcStep, Ipp32f* pSrcDst, int srcDstStep,
                           IppiSize roi);
IppStatus ippiMul_8u_C1IRSfs(const Ipp8u* pSrc, int srcStep, Ipp8u* pSrcDst, int srcDstStep,
                             IppiSize roi, int scaleFactor);
IppStatus ippiMul_32f_C1IR(const Ipp32f* pSrc, int srcStep, Ipp32f* pSrcDst, int srcDstStep,
                           IppiSize roi);
// pSrcDst = pSrcDst / pSrc; a zero divisor gives the IEEE result and the
// ippStsDivByZero warning.
IppStatus ippiDiv_32f_C1IR(const Ipp32f* pSrc, int srcStep, Ipp32f* pSrcDst, int srcDstStep,
                           IppiSize roi);

IppStatus ippiAbsDiff_8u_C1R(const Ipp8u* pSrc1, int src1Step, const Ipp8u* pSrc2, int src2Step,
                             Ipp8u* pDst, int dstStep, IppiSize roi);
IppStatus ippiAbsDiff_16u_C1R(const Ipp16u* pSrc1, int src1Step, const Ipp16u* pSrc2, int src2Step,
                              Ipp16u* pDst, int dstStep, IppiSize roi);
IppStatus ippiAbsDiff_32f_C1R(const Ipp32f* pSrc1, int src1Step, const Ipp32f* pSrc2, int src2Step,
                              Ipp32f* pDst, int dstStep, IppiSize roi);
IppStatus ippiAbs_32f_C1IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roi);
IppStatus ippiSqrt_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                           IppiSize roi);

// pSrcDst += float(pSrc1) * float(pSrc2), the product taken in float.
IppStatus ippiAddProduct_8u32f_C1IR(const Ipp8u* pSrc1, int src1Step, const Ipp8u* pSrc2,
                                    int src2Step, Ipp32f* pSrcDst, int srcDstStep, IppiSize roi);
IppStatus ippiAddProduct_16u32f_C1IR(const Ipp16u* pSrc1, int src1Step, const Ipp16u* pSrc2,
                                     int src2Step, Ipp32f* pSrcDst, int srcDstStep, IppiSize roi);
IppStatus ippiAddProduct_32f_C1IR(const Ipp32f* pSrc1, int src1Step, const Ipp32f* pSrc2,
                                  int src2Step, Ipp32f* pSrcDst, int srcDstStep, IppiSize roi);

// Overloads by element type; the in-place forms drop the I of their names.
namespace IPPIP {
inline IppStatus ippiAdd_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r, int sf) {
    return ippiAdd_8u_C1IRSfs(s, ss, d, ds, r, sf);
}
inline IppStatus ippiAdd_C1R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r, int sf) {
    return ippiAdd_16u_C1IRSfs(s, ss, d, ds, r, sf);
}
inline IppStatus ippiAdd_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiAdd_32f_C1IR(s, ss, d, ds, r);
}
inline IppStatus ippiAdd_C3R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiAdd_32f_C3IR(s, ss, d, ds, r);
}
inline IppStatus ippiSub_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r, int sf) {
    return ippiSub_8u_C1IRSfs(s, ss, d, ds, r, sf);
}
inline IppStatus ippiSub_C1R(const Ipp8u* s1, int s1s, const Ipp8u* s2, int s2s, Ipp8u* d, int ds,
                             IppiSize r, int sf) {
    return ippiSub_8u_C1RSfs(s1, s1s, s2, s2s, d, ds, r, sf);
}
inline IppStatus ippiSub_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiSub_32f_C1IR(s, ss, d, ds, r);
}
inline IppStatus ippiMul_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r, int sf) {
    return ippiMul_8u_C1IRSfs(s, ss, d, ds, r, sf);
}
inline IppStatus ippiMul_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiMul_32f_C1IR(s, ss, d, ds, r);
}
inline IppStatus ippiDiv_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiDiv_32f_C1IR(s, ss, d, ds, r);
}
inline IppStatus ippiAbsDiff_C1R(const Ipp8u* a, int as, const Ipp8u* b, int bs, Ipp8u* d, int ds,
                                 IppiSize r) {
    return ippiAbsDiff_8u_C1R(a, as, b, bs, d, ds, r);
}
inline IppStatus ippiAbsDiff_C1R(const Ipp16u* a, int as, const Ipp16u* b, int bs, Ipp16u* d,
                                 int ds, IppiSize r) {
    return ippiAbsDiff_16u_C1R(a, as, b, bs, d, ds, r);
}
inline IppStatus ippiAbsDiff_C1R(const Ipp32f* a, int as, const Ipp32f* b, int bs, Ipp32f* d,
                                 int ds, IppiSize r) {
    return ippiAbsDiff_32f_C1R(a, as, b, bs, d, ds, r);
}
inline IppStatus ippiAbs_C1R(Ipp32f* d, int ds, IppiSize r) {
    return ippiAbs_32f_C1IR(d, ds, r);
}
inline IppStatus ippiSqrt_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return ippiSqrt_32f_C1R(s, ss, d, ds, r);
}
inline IppStatus ippiAddProduct_C1R(const Ipp8u* a, int as, const Ipp8u* b, int bs, Ipp32f* d,
                                    int ds, IppiSize r) {
    return ippiAddProduct_8u32f_C1IR(a, as, b, bs, d, ds, r);
}
inline IppStatus ippiAddProduct_C1R(const Ipp16u* a, int as, const Ipp16u* b, int bs, Ipp32f* d,
                                    int ds, IppiSize r) {
    return ippiAddProduct_16u32f_C1IR(a, as, b, bs, d, ds, r);
}
inline IppStatus ippiAddProduct_C1R(const Ipp32f* a, int as, const Ipp32f* b, int bs, Ipp32f* d,
                                    int ds, IppiSize r) {
    return ippiAddProduct_32f_C1IR(a, as, b, bs, d, ds, r);
}
}  // namespace IPPIP
