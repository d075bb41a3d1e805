// Linear filters: the fixed Gaussian of 8-bit planes, 2-D, row and column
// convolution of float planes, and the pipeline forms that run a separable
// filter row by row (16-bit forms divide by a given divisor).
//
// Kernels are applied as convolutions: with anchor a, tap i of a row kernel
// multiplies src(x + a - i), so the tap at the anchor meets the pixel itself.
// The filters read source pixels around the region (kernelSize - 1 - anchor to
// the left / above, anchor to the right / below): the caller supplies them.
#pragma once

#include "core/ipp_types.h"

// Mask sizes of the fixed-kernel filters: width digit then height digit.
enum IppiMaskSize {
    ippMskSize1x3 = 13,
    ippMskSize1x5 = 15,
    ippMskSize3x1 = 31,
    ippMskSize3x3 = 33,
    ippMskSize5x1 = 51,
    ippMskSize5x5 = 55,
};

// How the row pipeline makes the pixels left and right of a row.
enum IppiBorderType {
    ippBorderConst = 0,  // the given border value
    ippBorderRepl = 1,   // the nearest pixel of the row
};

// Gaussian with the fixed integer kernels [1 2 1]^T[1 2 1]/16 (3x3) and the
// 5x5 kernel with rows 2 7 12 7 2 / 7 31 52 31 7 / 12 52 127 52 12 (mirrored)
// over 571, rounded to nearest; one (3x3) or two (5x5) border pixels are read.
IppStatus ippiFilterGauss_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                 IppiSize roiSize, IppiMaskSize mask);

// dst(x,y) = sum K[j][i] * src(x + ax - i, y + ay - j); K is w x h, row after row.
IppStatus ippiFilter_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                             IppiSize dstRoiSize, const Ipp32f* pKernel, IppiSize kernelSize,
                             IppiPoint anchor);

// dst(x,y) = sum K[i] * src(x + xAnchor - i, y), each channel on its own.
IppStatus ippiFilterRow_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                IppiSize dstRoiSize, const Ipp32f* pKernel, int kernelSize,
                                int xAnchor);
IppStatus ippiFilterRow_32f_C3R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                IppiSize dstRoiSize, const Ipp32f* pKernel, int kernelSize,
                                int xAnchor);
// dst(x,y) = sum K[j] * src(x, y + yAnchor - j), each channel on its own.
IppStatus ippiFilterColumn_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                   IppiSize dstRoiSize, const Ipp32f* pKernel, int kernelSize,
                                   int yAnchor);
IppStatus ippiFilterColumn_32f_C3R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                   IppiSize dstRoiSize, const Ipp32f* pKernel, int kernelSize,
                                   int yAnchor);

// Row pass of a separable filter: each of the roiSize.height source rows is
// filtered into the row ppDst[y]; pixels beyond the row ends come from the
// border type (replication or borderValue), so no border is read. The 16-bit
// form divides the sum by divisor, rounds half away from zero and saturates.
IppStatus ippiFilterRowBorderPipelineGetBufferSize_16s_C1R(IppiSize roiSize, int kernelSize,
                                                           int* pBufferSize);
IppStatus ippiFilterRowBorderPipelineGetBufferSize_32f_C1R(IppiSize roiSize, int kernelSize,
                                                           int* pBufferSize);
IppStatus ippiFilterRowBorderPipeline_16s_C1R(const Ipp16s* pSrc, int srcStep, Ipp16s** ppDst,
                                              IppiSize roiSize, const Ipp16s* pKernel,
                                              int kernelSize, int xAnchor,
                                              IppiBorderType borderType, Ipp16s borderValue,
                                              int divisor, Ipp8u* pBuffer);
IppStatus ippiFilterRowBorderPipeline_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f** ppDst,
                                              IppiSize roiSize, const Ipp32f* pKernel,
                                              int kernelSize, int xAnchor,
                                              IppiBorderType borderType, Ipp32f borderValue,
                                              Ipp8u* pBuffer);

// Column pass: dst(x,y) = sum K[j] * ppSrc[y + kernelSize - 1 - j][x]; the
// caller passes dstRoiSize.height + kernelSize - 1 row pointers and supplies
// the border rows by repeating the pointers of the first and last rows.
IppStatus ippiFilterColumnPipelineGetBufferSize_16s_C1R(IppiSize roiSize, int kernelSize,
                                                        int* pBufferSize);
IppStatus ippiFilterColumnPipelineGetBufferSize_32f_C1R(IppiSize roiSize, int kernelSize,
                                                        int* pBufferSize);
IppStatus ippiFilterColumnPipeline_16s_C1R(const Ipp16s** ppSrc, Ipp16s* pDst, int dstStep,
                                           IppiSize dstRoiSize, const Ipp16s* pKernel,
                                           int kernelSize, int divisor, Ipp8u* pBuffer);
IppStatus ippiFilterColumnPipeline_32f_C1R(const Ipp32f** ppSrc, Ipp32f* pDst, int dstStep,
                                           IppiSize dstRoiSize, const Ipp32f* pKernel,
                                           int kernelSize, Ipp8u* pBuffer);

namespace IPPIP {
inline IppStatus ippiFilterGauss_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r,
                                     IppiMaskSize m) {
    return ippiFilterGauss_8u_C1R(s, ss, d, ds, r, m);
}
inline IppStatus ippiFilter_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r,
                                const Ipp32f* k, IppiSize ks, IppiPoint a) {
    return ippiFilter_32f_C1R(s, ss, d, ds, r, k, ks, a);
}
inline IppStatus ippiFilterRow_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r,
                                   const Ipp32f* k, int n, int a) {
    return ippiFilterRow_32f_C1R(s, ss, d, ds, r, k, n, a);
}
inline IppStatus ippiFilterRow_C3R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r,
                                   const Ipp32f* k, int n, int a) {
    return ippiFilterRow_32f_C3R(s, ss, d, ds, r, k, n, a);
}
inline IppStatus ippiFilterColumn_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r,
                                      const Ipp32f* k, int n, int a) {
    return ippiFilterColumn_32f_C1R(s, ss, d, ds, r, k, n, a);
}
inline IppStatus ippiFilterColumn_C3R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r,
                                      const Ipp32f* k, int n, int a) {
    return ippiFilterColumn_32f_C3R(s, ss, d, ds, r, k, n, a);
}
inline IppStatus ippiFilterRowBorderPipelineGetBufferSize_C1R(const Ipp16s*, IppiSize r, int n,
                                                              int* size) {
    return ippiFilterRowBorderPipelineGetBufferSize_16s_C1R(r, n, size);
}
inline IppStatus ippiFilterRowBorderPipelineGetBufferSize_C1R(const Ipp32f*, IppiSize r, int n,
                                                              int* size) {
    return ippiFilterRowBorderPipelineGetBufferSize_32f_C1R(r, n, size);
}
inline IppStatus ippiFilterColumnPipelineGetBufferSize_C1R(const Ipp16s*, IppiSize r, int n,
                                                           int* size) {
    return ippiFilterColumnPipelineGetBufferSize_16s_C1R(r, n, size);
}
inline IppStatus ippiFilterColumnPipelineGetBufferSize_C1R(const Ipp32f*, IppiSize r, int n,
                                                           int* size) {
    return ippiFilterColumnPipelineGetBufferSize_32f_C1R(r, n, size);
}
inline IppStatus ippiFilterRowBorderPipeline_C1R(const Ipp16s* s, int ss, Ipp16s** d, IppiSize r,
                                                 const Ipp16s* k, int n, int a, IppiBorderType b,
                                                 Ipp16s v, int div, Ipp8u* buf) {
    return ippiFilterRowBorderPipeline_16s_C1R(s, ss, d, r, k, n, a, b, v, div, buf);
}
inline IppStatus ippiFilterRowBorderPipeline_C1R(const Ipp32f* s, int ss, Ipp32f** d, IppiSize r,
                                                 const Ipp32f* k, int n, int a, IppiBorderType b,
                                                 Ipp32f v, Ipp8u* buf) {
    return ippiFilterRowBorderPipeline_32f_C1R(s, ss, d, r, k, n, a, b, v, buf);
}
inline IppStatus ippiFilterColumnPipeline_C1R(const Ipp16s** s, Ipp16s* d, int ds, IppiSize r,
                                              const Ipp16s* k, int n, int div, Ipp8u* buf) {
    return ippiFilterColumnPipeline_16s_C1R(s, d, ds, r, k, n, div, buf);
}
inline IppStatus ippiFilterColumnPipeline_C1R(const Ipp32f** s, Ipp32f* d, int ds, IppiSize r,
                                              const Ipp32f* k, int n, Ipp8u* buf) {
    return ippiFilterColumnPipeline_32f_C1R(s, d, ds, r, k, n, buf);
}
}  // namespace IPPIP
