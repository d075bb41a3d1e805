// Hue, lightness, saturation conversions of 4-byte pixel rows (bytes 0..2
// converted, byte 3 of the destination left alone), branch-free so that the
// compiler vectorises them; the values are those of the per-pixel float
// formulas of the 32f primitives, bit for bit.
#pragma once

#include <functional>

// Channel order of the colour bytes: red at byte 0 (the RGB forms) or at
// byte 2 (the BGR forms).
enum class HlsSourceOrder { Rgb, Bgr };

// One row of n pixels to hue, lightness, saturation bytes (each 0..255 for
// 0..1, hue in turns).
void rgbRowToHls(const unsigned char* src, unsigned char* dst, int n, HlsSourceOrder order);
// One row of n hue, lightness, saturation pixels back to red, green, blue.
void hlsRowToRgb(const unsigned char* src, unsigned char* dst, int n);

// Pixels per chunk of adjustSaturationInHls.
inline constexpr int kHlsChunk = 256;

// Saturation bytes (0..255, held in words) of pixels x0 .. x0 + n - 1 of a row.
struct SaturationChunk {
    int x0, n;
    unsigned int s[kHlsChunk];
};

// The same as rgbRowToHls (red at byte 0), then `adjust` on the saturation
// bytes, then hlsRowToRgb back into the row, in chunks that never leave the
// registers and the first-level cache.
void adjustSaturationInHls(unsigned char* row, int n,
                           const std::function<void(SaturationChunk&)>& adjust);
