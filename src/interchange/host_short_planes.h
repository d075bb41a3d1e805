// Host RGB buffers to and from signed 16-bit planes (0..32767), and the sign
// flip between signed and unsigned 16-bit elements.
//
// `is16` non-zero: the host buffer holds 16-bit channels (0..32768), else
// bytes; either way three elements per pixel, R first, rows `step` bytes
// apart. w and h are clamped to the plane's region. Nothing else is checked.
#pragma once

#include "core/img.h"
#include "core/ipp_types.h"

// Interleaved RGB into planes[0..2], centred: the copy starts at
// ((planeW - w) / 2, (planeH - h) / 2) of the planes' region. 16-bit values
// are capped at 32767; bytes are multiplied by 128.
void rkRGBPSToP3(int is16, const void* buf, int step, int w, int h, GIMG<short>** planes);

// The inverse, with the same clamping and centring: negative plane values
// become 0; 16-bit output takes the value, 8-bit output the value >> 7.
void rkRGBP3ToPS(GIMG<short>** planes, int is16, void* buf, int step, int w, int h);

// Channel ch (clamped to 0..2) into the top-left of the plane, not centred.
// 16-bit: min(value, 32767); bytes: value * 127. The 127 (not the 128 of
// rkRGBPSToP3) is deliberate: the callers of this pair expect it.
void rkPSGet1Ch(int is16, const void* buf, int step, int w, int h, GIMG<short>& plane, int ch);

// The plane back into channel ch: negative values become 0; 16-bit: the value;
// bytes: value / 127 truncated (saturated at 255 for values above 127 * 255).
void rkPSSet1Ch(int is16, void* buf, int step, int w, int h, GIMG<short>& plane, int ch);

// Adds 32768 to every element in place (modulo 2^16); returns 1.
int rkIppi16sTo16u(short* p, int step, IppiSize& size);
// Subtracts 32768 from every element in place (modulo 2^16); returns 1.
int rkIppi16uTo16s(short* p, int step, IppiSize& size);
