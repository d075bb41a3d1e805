// Guided 2x upsampling: doubles single-channel images (normally an alpha
// matte solved at a coarse level) so that their edges follow the colour edges
// of a full-resolution guide.
#pragma once

#include "core/img.h"

// Upsamples n coarse images src[] into the fine images dst[] guided by nGuide
// fine planes guide[] (p sets how fast a neighbour's weight falls with its
// guide difference). Even/even fine pixels take the coarse values; every other
// new pixel is the guide-weighted mean of four known neighbours. Fine pixels
// that no neighbourhood reaches (odd pixels of the first row and column, and
// the last row and column when the destination is wider than 2w' - 1) keep
// the destination's previous content, and the passes next to the last
// column and row read those previous values as neighbours (in the pyramid,
// the finer level's own alpha).
//
// Returns 1 when done; 0, writing nothing, when nGuide is 5 or more or an
// image pointer is null. Instantiated for unsigned char, float, short and
// unsigned short.
template <typename T>
int CUpSampleRK2X(GIMG<T>** src, GIMG<T>** dst, int n, GIMG<T>** guide, int nGuide, float p);

// As CUpSampleRK2X, but a source that is not exactly half the destination
// (rounded down) is first resized to that size with cubic interpolation.
// Instantiated for unsigned char.
template <typename T>
int CUpSampleRK2XCombined(GIMG<T>** src, GIMG<T>** dst, int n, GIMG<T>** guide, int nGuide,
                          float p);

extern template int CUpSampleRK2X<unsigned char>(GIMG<unsigned char>**, GIMG<unsigned char>**, int,
                                                 GIMG<unsigned char>**, int, float);
extern template int CUpSampleRK2X<float>(GIMG<float>**, GIMG<float>**, int, GIMG<float>**, int,
                                         float);
extern template int CUpSampleRK2X<short>(GIMG<short>**, GIMG<short>**, int, GIMG<short>**, int,
                                         float);
extern template int CUpSampleRK2X<unsigned short>(GIMG<unsigned short>**, GIMG<unsigned short>**,
                                                  int, GIMG<unsigned short>**, int, float);
extern template int CUpSampleRK2XCombined<unsigned char>(GIMG<unsigned char>**,
                                                         GIMG<unsigned char>**, int,
                                                         GIMG<unsigned char>**, int, float);
