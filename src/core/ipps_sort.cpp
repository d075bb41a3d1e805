// Index sorts: a stable sort of the permutation, then the values gathered
// through it.
#include "core/ipps_sort.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <type_traits>
#include <vector>

#include "core/ippi_common.h"

namespace {
// NaN sorts after every number, which keeps the ordering strict and weak.
template <typename T>
bool ascending(T a, T b) {
    if constexpr (std::is_floating_point_v<T>) {
        if (std::isnan(a)) return false;
        if (std::isnan(b)) return true;
    }
    return a < b;
}

template <typename T>
IppStatus sortIndexAscend(T* v, int* idx, int len) {
    if (IppStatus st = kc::prim::checkVector(len, {v, idx})) return st;
    std::iota(idx, idx + len, 0);
    std::stable_sort(idx, idx + len, [v](int a, int b) { return ascending(v[a], v[b]); });
    std::vector<T> sorted(static_cast<size_t>(len));
    for (int i = 0; i < len; ++i) sorted[i] = v[idx[i]];
    std::copy(sorted.begin(), sorted.end(), v);
    return ippStsNoErr;
}
}  // namespace

IppStatus ippsSortIndexAscend_32s_I(Ipp32s* v, int* idx, int len) {
    return sortIndexAscend(v, idx, len);
}
IppStatus ippsSortIndexAscend_64f_I(Ipp64f* v, int* idx, int len) {
    return sortIndexAscend(v, idx, len);
}
