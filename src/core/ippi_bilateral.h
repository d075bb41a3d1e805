// Gaussian bilateral filter of an 8-bit plane: each output pixel is the
// weighted mean of its kernel neighbourhood, a neighbour weighing
//   exp(-d^2 / (2 posSquareSigma)) * exp(-(v - v0)^2 / (2 valSquareSigma))
// for its distance d and value v against the centre value v0. The kernel
// (w x h) is anchored at (w/2, h/2); stepInKernel samples every n-th column and
// row of it starting at its top-left. The result is rounded to nearest. The
// caller supplies the border the kernel reads around the region.
//
// Usage: ask GetBufSize for the bytes of a filter object sized for the largest
// region and kernel, Init it inside those bytes, then filter any number of
// regions no larger than that.
#pragma once

#include "core/ipp_types.h"

enum IppiFilterBilateralType {
    ippiFilterBilaGauss = 100,  // the Gaussian weights above
};

// Opaque; lives in the caller's buffer.
struct IppiFilterBilateralSpec;

IppStatus ippiFilterBilateralGetBufSize_8u_C1R(IppiFilterBilateralType filter,
                                               IppiSize maxDstRoiSize, IppiSize maxKernelSize,
                                               int* pBufferSize);
IppStatus ippiFilterBilateralInit_8u_C1R(IppiFilterBilateralType filter, IppiSize maxKernelSize,
                                         Ipp32f valSquareSigma, Ipp32f posSquareSigma,
                                         int stepInKernel, IppiFilterBilateralSpec* pSpec);
IppStatus ippiFilterBilateral_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize dstRoiSize, IppiSize kernelSize,
                                     IppiFilterBilateralSpec* pSpec);

namespace IPPIP {
inline IppStatus ippiFilterBilateral_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r,
                                         IppiSize k, IppiFilterBilateralSpec* filterState) {
    return ippiFilterBilateral_8u_C1R(s, ss, d, ds, r, k, filterState);
}
}  // namespace IPPIP
