// Conversions between RGB and the engine's YUV planes: three signed 16-bit
// planes Y, U, V with U the blue difference (B - Y) * 0.492 and V the red
// difference (R - Y) * 0.877. Colour distances and smoothing run in this space.
//
// Values stored into the planes are truncated toward zero; a value that does
// not fit a short (only possible from out-of-range input) saturates.
#pragma once

#include "core/img.h"

// From 8-bit interleaved RGB (rows `step` bytes apart): Y * 128, U * 128 and
// V * 128, so that Y spans the short range. w and h are clamped to the planes'
// region; the picture is centred in the planes at ((planeW - w) / 2,
// (planeH - h) / 2) and the margin around it is filled by edge replication.
// An empty picture leaves the planes as they were. Returns 1.
int rkRGBToYUV(unsigned char* buf, int step, int w, int h, GIMG<short>** yuv);
// The same from 16-bit interleaved RGB already in 0..32767, without the factor 128.
int rkRGBToYUV(short* buf, int step, int w, int h, GIMG<short>** yuv);

// The way back into an 8-bit interleaved RGB buffer, with the same clamping and
// centring (the centred rectangle of the planes is read): R = y + 1.14 v,
// G = y - 0.394 u - 0.581 v, B = y + 2.032 u on y, u, v = Y, U, V / 128, each
// clamped to 0..255 and truncated. Returns 1.
int rkYUVToRGB(GIMG<short>** yuv, unsigned char* buf, int step, int w, int h);
// The same formulas on the unscaled values into 16-bit RGB, clamped to 0..32767.
int rkYUVToRGB(GIMG<short>** yuv, short* buf, int step, int w, int h);

// In place over the whole region of three short planes: R, G, B become Y,
// (B - Y) * 0.492, (R - Y) * 0.877. Returns 1.
int rkP3RGB2YUV(GIMG<short>** planes);
// In place, Y, U, V become R = Y + 1.14 V, G = Y - 0.394 U - 0.581 V,
// B = Y + 2.032 U, negative results set to 0 (no clamp from above, other than
// the short range). Returns 1.
int rkP3YUV2RGB(GIMG<short>** planes);
