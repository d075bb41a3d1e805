// Stretching an alpha map's range lo..hi to 0..255, shared by the host entry
// and the matte display modes.
#pragma once

#include "core/img.h"

// Scales every byte of alpha's region in place: a -> round(max(a - lo, 0) x k
// / 32) with k = min(8160 / (hi - lo), 255). hi - lo = 255 leaves the map as it
// is. With keepPainted, bytes odd before the scaling keep their old value and
// all others lose bit 0. hi must differ from lo (the caller checks).
void scaleAlpha(GIMG<unsigned char>& alpha, unsigned char hi, unsigned char lo, bool keepPainted);
