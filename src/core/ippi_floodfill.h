// Flood fill of an 8-bit plane in place: from the seed, the 8-connected region
// of pixels each within [v - minDelta, v + maxDelta] of the original value v of
// a neighbour already in the region (a floating range, so gradients are
// followed) takes newVal. The region is reported as its pixel count, the fill
// value and its bounding rectangle.
#pragma once

#include "core/ipp_types.h"
#include "core/ippi_resize.h"

struct IppiConnectedComp {
    Ipp64f area;      // pixels filled
    Ipp64f value[3];  // the fill value (first entry; the others are 0)
    IppiRect rect;    // bounding rectangle of the filled pixels
};

// Work bytes the fill needs for a region of this size.
IppStatus ippiFloodFillGetSize_Grad(IppiSize roiSize, int* pBufSize);

IppStatus ippiFloodFill_Range8Con_8u_C1IR(Ipp8u* pImage, int imageStep, IppiSize roiSize,
                                          IppiPoint seed, Ipp8u newVal, Ipp8u minDelta,
                                          Ipp8u maxDelta, IppiConnectedComp* pRegion,
                                          Ipp8u* pBuffer);
