// Checks shared by the host's stroke entries.
#pragma once

#include "runtime/arg_check.h"

// Widest radius a stroke may have: OpenCV draws lines at most 32767 thick,
// and a stroke is 2 x radius + 1 thick.
inline constexpr int kMaxStrokeRadius = 16383;

// True when radius gives a drawable stroke; otherwise logs why and returns
// false.
inline bool rkCheckStrokeRadius(const char* entry, int radius) {
    if (radius >= 0 && radius <= kMaxStrokeRadius) return true;
    return rkRefuse(entry, "radius lies outside 0..16383");
}

// Thickness of a stroke of the given radius, as OpenCV takes it.
inline int strokeThickness(int radius) {
    return 2 * radius + 1;
}
