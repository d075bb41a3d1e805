// Polyphase split and merge: moving every second pixel between an image and a
// half-resolution image, for the even/odd two-level processing of the
// multi-resolution code. Plain decimation, no averaging; the phase (ox, oy) is
// 0 or 1 in each direction, and nothing checks that it fits.
#pragma once

#include <algorithm>
#include <type_traits>

#include "core/img.h"

namespace kc::half {
template <typename T>
concept HalfImageElement = std::is_same_v<T, unsigned char> || std::is_same_v<T, unsigned short> ||
    std::is_same_v<T, float>;

// Pixels moved per direction: what both regions can hold.
template <typename T>
IPSize halfExtent(const GIMG<T>& full, const GIMG<T>& half) {
    return {std::min(half.roiSize.width, full.roiSize.width / 2),
            std::min(half.roiSize.height, full.roiSize.height / 2)};
}
}  // namespace kc::half

// half(c, r) = full(ox + 2c, oy + 2r). Returns 1.
template <kc::half::HalfImageElement T>
int getHalfImage(GIMG<T>& full, int ox, int oy, GIMG<T>& half) {
    const IPSize n = kc::half::halfExtent(full, half);
    for (int r = 0; r < n.height; ++r) {
        const T* src = imgPtr(full, ox, oy + 2 * r);
        T* dst = imgPtr(half, 0, r);
        for (int c = 0; c < n.width; ++c) dst[c] = src[2 * c];
    }
    return 1;
}

// full(ox + 2c, oy + 2r) = half(c, r); every other pixel of full is kept. Returns 1.
template <kc::half::HalfImageElement T>
int putHalfImage(GIMG<T>& half, GIMG<T>& full, int ox, int oy) {
    const IPSize n = kc::half::halfExtent(full, half);
    for (int r = 0; r < n.height; ++r) {
        const T* src = imgPtr(half, 0, r);
        T* dst = imgPtr(full, ox, oy + 2 * r);
        for (int c = 0; c < n.width; ++c) dst[2 * c] = src[c];
    }
    return 1;
}
