// Float containers (0..1) back into host pixels.
//
// Every form first multiplies its float source in place by 256 (8-bit codes)
// or 32768 (16-bit codes): the source is overwritten and keeps the multiplied
// values, which callers rely on. The products are then rounded to nearest
// (exact halves to even) and saturated to the output type; 16-bit outputs
// are further capped at 32768, the top of the host's 16-bit range.
//
// The float side names the rectangle (the source's region of interest, or the
// given size); it is written into the host buffer `buf` (row step `step`
// bytes) from pixel (x, y) on. Colour forms take codes 1, 3, 5 and 6 and write
// R, G, B (the fourth channel of 5 and 6 is left alone); the grey form takes
// codes 7 and 8. Nothing is checked. An unsupported code touches nothing and
// returns 0; success returns 1.
#pragma once

#include "core/img.h"
#include "core/ipp_types.h"

// Interleaved R, G, B floats.
int convertFromIMG332f(IMG3<float>& src, int type, void* buf, int step, int x, int y);
// Three planes R, G, B of one region size.
int convertFromIMG332f(GIMG<float>** planes, int type, void* buf, int step, int x, int y);
// Three raw planes R, G, B, each with its own row step, all of `size`.
int convertFromIMG332f(float* const planes[3], const int steps[3], IppiSize size, int type,
                       void* buf, int step, int x, int y);
// One grey plane.
int convertFromIMG332f(GIMG<float>& grey, int type, void* buf, int step, int x, int y);
