// 2x decimation of byte planes for the mask pyramid, optionally smoothed by a
// 3x3 Gaussian first, and its variant that lands on an arbitrary size.
#pragma once

#include "core/img.h"

// dst(x, y) = src(2x, 2y) over min(dst size, floor(src size / 2)). With
// smooth, the source is first blurred by the 3x3 Gaussian 1-2-1 (rounded to
// nearest) everywhere except its one-pixel frame, which is taken unchanged.
// Always returns 1. Instantiated for unsigned char.
template <typename T>
int CDnsampleRK2X(GIMG<T>& src, GIMG<T>& dst, bool smooth);

// Decimates to floor(src size / 2) and, when dst has another size, resizes
// that to dst's size with cubic interpolation. Returns the decimation's result.
template <typename T>
int CDnsampleRK2XCombined(GIMG<T>& src, GIMG<T>& dst, bool smooth);

extern template int CDnsampleRK2X<unsigned char>(GIMG<unsigned char>&, GIMG<unsigned char>&, bool);
extern template int CDnsampleRK2XCombined<unsigned char>(GIMG<unsigned char>&, GIMG<unsigned char>&,
                                                         bool);
