// Byte codes of the brush map the user paints, for the engine's C++ code; the
// values themselves are defined once, in the public header.
#pragma once

#include "api/keepcut.h"

// User-painted foreground: alpha fixed at 255 (odd, so it reads as painted).
inline constexpr unsigned char kMaskKeep = RK_MASK_KEEP;
// User-painted background: alpha fixed at 0; 1 rather than 0 so that the
// painted bit is set.
inline constexpr unsigned char kMaskCut = RK_MASK_CUT;
// Set on every painted byte.
inline constexpr unsigned char kMaskPaintedBit = RK_MASK_PAINTED_BIT;
// The unpainted band still to compute.
inline constexpr unsigned char kMaskBandLow = RK_MASK_BAND_LOW;
inline constexpr unsigned char kMaskBandHigh = RK_MASK_BAND_HIGH;
