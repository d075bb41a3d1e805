// Colour primitives: RGB <-> HLS (hue, lightness, saturation) and an affine
// 3 x 4 colour matrix applied in place to three planes.
//
// Float forms take and give values in 0..1, hue included (a fraction of the
// full turn, 0 for red). 8-bit forms map 0..255 onto 0..1 on the way in and
// back on the way out (rounded to nearest, halves to even); their fourth
// channel is left as it is. Grey has hue and saturation 0. Each pixel is
// read whole before it is written, so source and destination may be the same.
#pragma once

#include "core/ipp_types.h"

IppStatus ippiRGBToHLS_32f_C3R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                               IppiSize roi);
IppStatus ippiHLSToRGB_32f_C3R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                               IppiSize roi);
IppStatus ippiRGBToHLS_8u_AC4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roi);
IppStatus ippiHLSToRGB_8u_AC4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roi);
// Source pixels in blue, green, red order; the result is H, L, S as above.
IppStatus ippiBGRToHLS_8u_AC4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roi);
// For planes (p0, p1, p2): p_i = twist[i][0]*p0 + twist[i][1]*p1 + twist[i][2]*p2 + twist[i][3].
IppStatus ippiColorTwist_32f_IP3R(Ipp32f* const pSrcDst[3], int srcDstStep, IppiSize roi,
                                  const Ipp32f twist[3][4]);
