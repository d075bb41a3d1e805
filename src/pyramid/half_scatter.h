// Moving every second pixel between an image and a half-size image, over an
// explicit w x h of half-image pixels (the caller has already clipped it).
#pragma once

#include <algorithm>

#include "core/img.h"

// full(ox + 2c, oy + 2r) = half(c, r) for c < w, r < h.
template <typename T>
void scatterHalf(const GIMG<T>& half, GIMG<T>& full, int ox, int oy, int w, int h) {
    for (int r = 0; r < h; ++r) {
        const T* s = imgPtr(half, 0, r);
        T* d = imgPtr(full, ox, oy + 2 * r);
        for (int c = 0; c < w; ++c) d[2 * c] = s[c];
    }
}

// half(c, r) = full(ox + 2c, oy + 2r) for c < w, r < h.
template <typename T>
void gatherHalf(const GIMG<T>& full, GIMG<T>& half, int ox, int oy, int w, int h) {
    for (int r = 0; r < h; ++r) {
        const T* s = imgPtr(full, ox, oy + 2 * r);
        T* d = imgPtr(half, 0, r);
        for (int c = 0; c < w; ++c) d[c] = s[2 * c];
    }
}
