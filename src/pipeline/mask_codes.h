// Byte codes of the brush map the user paints: the lowest bit says "painted",
// the other seven bits carry alpha.
#pragma once

// User-painted foreground: alpha fixed at 255 (odd, so it reads as painted).
inline constexpr unsigned char kMaskKeep = 255;
// User-painted background: alpha fixed at 0; 1 rather than 0 so that the
// painted bit is set.
inline constexpr unsigned char kMaskCut = 1;
// Set on every painted byte: painted values are kept exactly and never
// recomputed, and computed alpha is always written with this bit cleared.
inline constexpr unsigned char kMaskPaintedBit = 1;
// Unpainted alpha estimates from 6 to 249 are the band still to compute;
// 0..5 already count as background and 250..255 as foreground.
inline constexpr unsigned char kMaskBandLow = 6;
inline constexpr unsigned char kMaskBandHigh = 249;
