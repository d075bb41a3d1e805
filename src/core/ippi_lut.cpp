// Table mappings as row loops over the shared elementwise helper.
#include "core/ippi_lut.h"

#include <algorithm>

#include "core/ippi_elementwise.h"

namespace {
using namespace kc::prim;

template <typename T>
IppStatus palette(const T* s, int ss, T* d, int ds, IppiSize r, const T* table, int bits) {
    if (!table) return ippStsNullPtrErr;
    if (bits < 1 || bits > static_cast<int>(8 * sizeof(T))) return ippStsBadArgErr;
    const unsigned mask = (1u << bits) - 1u;
    return mapRows(s, ss, d, ds, r, 1, [=](T v, int) { return table[v & mask]; });
}
}  // namespace

IppStatus ippiLUTPalette_8u_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r,
                                const Ipp8u* table, int bits) {
    return palette(s, ss, d, ds, r, table, bits);
}
IppStatus ippiLUTPalette_16u_C1R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r,
                                 const Ipp16u* table, int bits) {
    return palette(s, ss, d, ds, r, table, bits);
}

IppStatus ippiLUT_Linear_32f_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r,
                                 const Ipp32f* values, const Ipp32f* levels, int n) {
    if (!values || !levels) return ippStsNullPtrErr;
    if (n < 2) return ippStsBadArgErr;
    const Ipp32f* end = levels + n;
    return mapRows(s, ss, d, ds, r, 1, [=](Ipp32f v, int) {
        if (!(v >= levels[0] && v < levels[n - 1])) return v;
        // The segment k with levels[k] <= v < levels[k+1].
        const int k = static_cast<int>(std::upper_bound(levels, end, v) - levels) - 1;
        const float t = (v - levels[k]) / (levels[k + 1] - levels[k]);
        return values[k] + t * (values[k + 1] - values[k]);
    });
}
