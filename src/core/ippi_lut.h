// Look-up primitives: palette tables indexed by the low bits of each element,
// and a piecewise-linear map through given (level, value) pairs.
#pragma once

#include "core/ipp_types.h"

// dst = pTable[src & (2^nBitSize - 1)]; the table holds 2^nBitSize entries.
// nBitSize is 1..8 (1..16 for 16-bit); otherwise ippStsBadArgErr.
IppStatus ippiLUTPalette_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                IppiSize roi, const Ipp8u* pTable, int nBitSize);
IppStatus ippiLUTPalette_16u_C1R(const Ipp16u* pSrc, int srcStep, Ipp16u* pDst, int dstStep,
                                 IppiSize roi, const Ipp16u* pTable, int nBitSize);
// For pLevels[k] <= v < pLevels[k+1], dst interpolates linearly between
// pValues[k] and pValues[k+1]; values outside [pLevels[0], pLevels[n-1]) (and
// NaN) pass through unchanged. Levels ascend; nLevels >= 2 (else BadArg).
IppStatus ippiLUT_Linear_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                 IppiSize roi, const Ipp32f* pValues, const Ipp32f* pLevels,
                                 int nLevels);

namespace IPPIP {
inline IppStatus ippiLUTPalette_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r,
                                    const Ipp8u* t, int bits) {
    return ippiLUTPalette_8u_C1R(s, ss, d, ds, r, t, bits);
}
inline IppStatus ippiLUTPalette_C1R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r,
                                    const Ipp16u* t, int bits) {
    return ippiLUTPalette_16u_C1R(s, ss, d, ds, r, t, bits);
}
}  // namespace IPPIP
