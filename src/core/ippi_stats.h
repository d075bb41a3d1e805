// Statistics: region sums (accumulated in double), vector mean and dot product.
#pragma once

#include "core/ipp_types.h"

// Accuracy hint of the float sum; the sum always accumulates in double, so
// every hint gives the same result.
enum IppHintAlgorithm { ippAlgHintNone = 0, ippAlgHintFast, ippAlgHintAccurate };

IppStatus ippiSum_8u_C1R(const Ipp8u* pSrc, int srcStep, IppiSize roi, Ipp64f* pSum);
IppStatus ippiSum_32f_C1R(const Ipp32f* pSrc, int srcStep, IppiSize roi, Ipp64f* pSum,
                          IppHintAlgorithm hint = ippAlgHintNone);
IppStatus ippsMean_64f(const Ipp64f* pSrc, int len, Ipp64f* pMean);
IppStatus ippsDotProd_64f(const Ipp64f* pSrc1, const Ipp64f* pSrc2, int len, Ipp64f* pDp);

namespace IPPIP {
inline IppStatus ippiSum_C1R(const Ipp8u* s, int ss, IppiSize r, Ipp64f* sum) {
    return ippiSum_8u_C1R(s, ss, r, sum);
}
inline IppStatus ippiSum_C1R(const Ipp32f* s, int ss, IppiSize r, Ipp64f* sum) {
    return ippiSum_32f_C1R(s, ss, r, sum);
}
}  // namespace IPPIP
