// Float-plane colour conversions in place over arrays of three GIMG<float>
// planes (R, G, B in; Y, Cb, Cr or H, L, S out, and back), and luma.
// All of them work on the first plane's region of interest.
#pragma once

#include "core/img.h"

// RGB -> YCbCr through a fixed 3 x 4 colour matrix. With bias, Cb and Cr are
// offset into positive values; noBias keeps them centred on 0. Returns 1.
int RGB2YCbCr(GIMG<float>** planes, bool noBias);
// The way back, with the matching matrix. Returns 1.
int YCbCr2RGB(GIMG<float>** planes, bool noBias);

// RGB in 0..1 -> hue (a fraction of a turn), lightness, saturation, through a
// temporary interleaved image. Returns 1.
int RGB2HLS(GIMG<float>** planes);
int HLS2RGB(GIMG<float>** planes);

// gray = 0.299 r + 0.587 g + 0.114 b over gray's region (each weighted plane
// added in that order).
void RGB2Gray(GIMG<float>& r, GIMG<float>& g, GIMG<float>& b, GIMG<float>& gray);
void RGB2Gray(GIMG<float>** rgb, GIMG<float>* gray);
