// Small dense matrices addressed by two byte strides: element (i, j) of a
// matrix at p lies at byte offset i*stride1 + j*stride2 (stride1 between
// rows, stride2 between the elements of a row), so row- and column-major
// storage and submatrices all work. Width is the column count, height the row
// count. The pBuffer arguments keep the library's argument lists: they must
// be non-null, but scratch memory is managed internally and they are not
// written.
#pragma once

#include "core/ipp_types.h"

// Error: the matrix is singular (or numerically so), nothing useful written.
inline constexpr IppStatus ippStsSingularErr = -195;

// pDst = inverse of the n x n pSrc (Gauss-Jordan, partial pivoting).
IppStatus ippmInvert_m_64f(const Ipp64f* pSrc, int srcStride1, int srcStride2, Ipp64f* pBuffer,
                           Ipp64f* pDst, int dstStride1, int dstStride2, int widthHeight);
// pDst (src1Height x src2Width) = pSrc1 * pSrc2; src1Width must equal
// src2Height (else ippStsSizeErr). pDst may overlap a source.
IppStatus ippmMul_mm_64f(const Ipp64f* pSrc1, int src1Stride1, int src1Stride2, int src1Width,
                         int src1Height, const Ipp64f* pSrc2, int src2Stride1, int src2Stride2,
                         int src2Width, int src2Height, Ipp64f* pDst, int dstStride1,
                         int dstStride2);
// pDst (src1Width x src2Width) = transpose(pSrc1) * pSrc2; the heights must match.
IppStatus ippmMul_tm_64f(const Ipp64f* pSrc1, int src1Stride1, int src1Stride2, int src1Width,
                         int src1Height, const Ipp64f* pSrc2, int src2Stride1, int src2Stride2,
                         int src2Width, int src2Height, Ipp64f* pDst, int dstStride1,
                         int dstStride2);
// Householder QR of a height x width matrix (height >= width). pDst receives
// R on and above the diagonal and, below it, the Householder vectors scaled
// to a leading 1 (which is not stored).
IppStatus ippmQRDecomp_m_32f(const Ipp32f* pSrc, int srcStride1, int srcStride2, Ipp32f* pBuffer,
                             Ipp32f* pDst, int dstStride1, int dstStride2, int width, int height);
// Least-squares solution x (width) of A x = b (height) from the decomposition
// above. ippStsSingularErr on a zero in R's diagonal.
IppStatus ippmQRBackSubst_mv_32f(const Ipp32f* pSrc1, int src1Stride1, int src1Stride2,
                                 Ipp32f* pBuffer, const Ipp32f* pSrc2, int src2Stride2,
                                 Ipp32f* pDst, int dstStride2, int width, int height);
