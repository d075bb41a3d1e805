// Per-channel noise levels (standard deviations) carried between RGB and the
// engine's YUV space, treating the channels' noise as independent.
#pragma once

// sRGB[3] -> sYUV[3]: each output is the root of the sum of the squared,
// weighted inputs through the RGB -> YUV matrix.
void rkSigmaRGBToYUV(float* sRGB, float* sYUV);
// sYUV[3] -> sRGB[3]: a fixed inverse on the squares, each clamped at 0
// before the root (the squares' inverse can come out negative).
void rkSigmaRGBToYUV_inv(float* sYUV, float* sRGB);
