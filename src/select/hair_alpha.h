// Alpha of hair pixels from two picked colours: each pixel's colour projected
// onto the line from the background colour (alpha 0) to the hair colour
// (alpha 1), computed only where a line mask is set.
#pragma once

namespace kc::hair {

// True when the two picked colours (red, green, blue) coincide: there is no
// colour line to project onto.
bool sameColour(const unsigned char* foreColor, const unsigned char* backColor);

}  // namespace kc::hair

// Interleaved picture (channel 0 blue, 2 red) of width x height. Where lineMask
// is non-zero, alpha becomes the projection clamped to 0..255; elsewhere it
// keeps its value. With equal colours alpha is left untouched. Returns 0.
int CompAlphaMapHair(const unsigned char* rgb, int rgbStep, int width, int height,
                     const unsigned char* lineMask, int lineMaskStep, unsigned char* alpha,
                     int alphaStep, const unsigned char* foreColor, const unsigned char* backColor);

// The same on three planes sharing planeStep, plane k paired with the colours'
// byte k (no red/blue swap). The projection is not clamped before the 8-bit
// conversion, which saturates it. With equal colours alpha is left untouched.
// Returns 0.
int CompAlphaMapHair(const unsigned char* const* planes, int planeStep, int width, int height,
                     const unsigned char* lineMask, int lineMaskStep, unsigned char* alpha,
                     int alphaStep, const unsigned char* foreColor, const unsigned char* backColor);

namespace kc::hair {

// The work both overloads share, on an interleaved three-channel picture:
// channelOf[k] is the picture channel paired with colour byte k; clamp says
// whether the projection is clamped to 0..1 before the 8-bit conversion.
void projectAlpha(const unsigned char* rgb, int rgbStep, int width, int height,
                  const int channelOf[3], bool clamp, const unsigned char* lineMask,
                  int lineMaskStep, unsigned char* alpha, int alphaStep,
                  const unsigned char* foreColor, const unsigned char* backColor);

}  // namespace kc::hair
