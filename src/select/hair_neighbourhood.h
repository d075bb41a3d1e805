// The neighbourhood extremes that decide which hair-selection alphas are kept
// as painted bytes, and the squared length of a colour difference.
#pragma once

#include <algorithm>
#include <cstddef>

namespace kc::hair {

// Offsets (dx, dy) scanned around a pixel. Not a full 3 x 3: the middle row is
// read only two wide and the bottom row is shifted one pixel to the left. The
// extreme test of hair selection has always used exactly this shape, so the
// set of written pixels depends on it; keep it as it is.
inline constexpr int kNeighbourCount = 7;
inline constexpr int kNeighbourDx[kNeighbourCount] = {-1, 0, +1, -1, 0, -2, -1};
inline constexpr int kNeighbourDy[kNeighbourCount] = {-1, -1, -1, 0, 0, +1, +1};

template <typename T>
const T& neighbour(const T* p, int step, int k) {
    const char* row =
        reinterpret_cast<const char*>(p) + static_cast<std::ptrdiff_t>(kNeighbourDy[k]) * step;
    return reinterpret_cast<const T*>(row)[kNeighbourDx[k]];
}

}  // namespace kc::hair

// Minimum of the seven neighbourhood pixels around p (step in bytes).
template <typename T>
void get3x3C1Min(const T* p, int step, T& out) {
    T m = kc::hair::neighbour(p, step, 0);
    for (int k = 1; k < kc::hair::kNeighbourCount; ++k)
        m = std::min(m, kc::hair::neighbour(p, step, k));
    out = m;
}

// Maximum of the same seven pixels.
template <typename T>
void get3x3C1Max(const T* p, int step, T& out) {
    T m = kc::hair::neighbour(p, step, 0);
    for (int k = 1; k < kc::hair::kNeighbourCount; ++k)
        m = std::max(m, kc::hair::neighbour(p, step, k));
    out = m;
}

// Squared length of (a, b, c): the divisor of the colour projection.
template <typename T>
T sumsquare(T a, T b, T c) {
    return a * a + b * b + c * c;
}
