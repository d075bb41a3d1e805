// The direct mask path at one resolution: closed-form matting of everything
// between two grey levels of a rough mask, a colour-guided smoothing, and a
// stretch of the output range. rkMaskAlpha chooses the resolution around it.
#pragma once

#include "core/img.h"

// Replaces the rough mask in `alpha` by a refined alpha. `rgb` holds three
// 8-bit planes (red, green, blue) of alpha's size. Mask bytes at or below
// lowCode are background and at or above highCode foreground (both taken as
// bytes); everything between is solved, then sharpened and smoothed along
// the colours. The result finally goes through stretchAlphaOutput. The third
// argument is not used. Returns 1; the solver's thrown codes pass through.
int rkMaskProc(GIMG<unsigned char>** rgb, GIMG<unsigned char>* alpha, int unused, int highCode,
               int lowCode, int outHigh, int outLow);

// Stretches [outLow, outHigh] of alpha onto [0, 255] in place: with d =
// outHigh - outLow (at least 1), alpha = min(255, (alpha - outLow)+ x k / 64)
// where k = min(16320 / d, 255). Equal bounds make it a steep threshold at
// outLow; a span of 255 or more leaves alpha as it is. outLow is taken within
// 0..255.
void stretchAlphaOutput(GIMG<unsigned char>& alpha, int outHigh, int outLow);

// Keeps the extremes for pixels that held them before: where alpha is 0 but
// input was not, alpha becomes 1; where alpha is 255 but input was not, 254.
// Both images have the same size.
void clampToInputExtremes(GIMG<unsigned char>& alpha, const GIMG<unsigned char>& input);
