// Bitwise logic and comparisons. Comparisons write 255 where the relation
// holds and 0 where it does not (a NaN operand makes every relation false).
#pragma once

#include "core/ipp_types.h"

IppStatus ippiAndC_8u_C1IR(Ipp8u value, Ipp8u* pSrcDst, int srcDstStep, IppiSize roi);
IppStatus ippiOr_8u_C1IR(const Ipp8u* pSrc, int srcStep, Ipp8u* pSrcDst, int srcDstStep,
                         IppiSize roi);

// pDst = 255 where pSrc1 <op> pSrc2.
IppStatus ippiCompare_32f_C1R(const Ipp32f* pSrc1, int src1Step, const Ipp32f* pSrc2, int src2Step,
                              Ipp8u* pDst, int dstStep, IppiSize roi, IppCmpOp cmpOp);
// pDst = 255 where pSrc <op> value.
IppStatus ippiCompareC_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u value, Ipp8u* pDst, int dstStep,
                              IppiSize roi, IppCmpOp cmpOp);

namespace IPPIP {
inline IppStatus ippiAndC_C1R(Ipp8u v, Ipp8u* d, int ds, IppiSize r) {
    return ippiAndC_8u_C1IR(v, d, ds, r);
}
inline IppStatus ippiOr_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return ippiOr_8u_C1IR(s, ss, d, ds, r);
}
inline IppStatus ippiCompare_C1R(const Ipp32f* a, int as, const Ipp32f* b, int bs, Ipp8u* d, int ds,
                                 IppiSize r, IppCmpOp op) {
    return ippiCompare_32f_C1R(a, as, b, bs, d, ds, r, op);
}
inline IppStatus ippiCompareC_C1R(const Ipp8u* s, int ss, Ipp8u v, Ipp8u* d, int ds, IppiSize r,
                                  IppCmpOp op) {
    return ippiCompareC_8u_C1R(s, ss, v, d, ds, r, op);
}
}  // namespace IPPIP
