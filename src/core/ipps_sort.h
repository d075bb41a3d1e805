// Ascending in-place sorts that also return the permutation: after the call
// pSrcDst[i] is the value that was at pDstIdx[i]. Equal values keep their
// original order (the sort is stable), so the permutation is deterministic;
// NaN goes last.
#pragma once

#include "core/ipp_types.h"

IppStatus ippsSortIndexAscend_32s_I(Ipp32s* pSrcDst, int* pDstIdx, int len);
IppStatus ippsSortIndexAscend_64f_I(Ipp64f* pSrcDst, int* pDstIdx, int len);

namespace IPPIP {
inline IppStatus ippsSortIndexAscend_I(Ipp32s* v, int* idx, int n) {
    return ippsSortIndexAscend_32s_I(v, idx, n);
}
inline IppStatus ippsSortIndexAscend_I(Ipp64f* v, int* idx, int n) {
    return ippsSortIndexAscend_64f_I(v, idx, n);
}
}  // namespace IPPIP
