// Linear filters. Every pass is a multiply-add of one kernel tap over a whole
// row, so the compiler vectorises it; the Gaussian kernels are integer and are
// summed exactly (in float, where every partial sum is an exact integer).
#include "core/ippi_filter.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "core/ippi_filter_support.h"

namespace {

using kc::filt::checkPlanes;
using kc::filt::rowAt;
using kc::filt::Scratch;
using kc::filt::SourceRowWindow;

// ---- fixed Gaussian ---------------------------------------------------------

IppStatus gauss3x3(const Ipp8u* src, int srcStep, Ipp8u* dst, int dstStep, IppiSize roi) {
    const int span = roi.width + 2;
    SourceRowWindow<Ipp8u> window(src, srcStep, roi.width, 1, 1, 1, 3, false);
    Scratch<std::uint16_t> column(span);
    if (!window.ok() || !column.ok()) return ippStsMemAllocErr;
    std::uint16_t* v = column.get();
    for (int y = 0; y < roi.height; ++y) {
        const Ipp8u* const* rows = window.rowsFor(y);
        const Ipp8u *r0 = rows[0] - 1, *r1 = rows[1] - 1, *r2 = rows[2] - 1;
        for (int t = 0; t < span; ++t) v[t] = static_cast<std::uint16_t>(r0[t] + 2 * r1[t] + r2[t]);
        Ipp8u* out = rowAt(dst, dstStep, y);
        // Weights sum to 16; adding 8 rounds the quotient to nearest (halves up).
        for (int x = 0; x < roi.width; ++x)
            out[x] = static_cast<Ipp8u>((v[x] + 2 * v[x + 1] + v[x + 2] + 8) >> 4);
    }
    return ippStsNoErr;
}

// Column pass of the 5x5 Gaussian: per column, the three row-weighted sums the
// kernel's outer (dx = +-2), near (dx = +-1) and middle columns need. The
// largest, the middle one, is at most 255 * 255, so all three fit 16-bit lanes.
// Separate restrict parameters: byte pointers could otherwise alias anything.
__attribute__((target_clones("avx2", "default"))) void gauss5Columns(
    const Ipp8u* __restrict r0, const Ipp8u* __restrict r1, const Ipp8u* __restrict r2,
    const Ipp8u* __restrict r3, const Ipp8u* __restrict r4, std::uint16_t* __restrict outer,
    std::uint16_t* __restrict near, std::uint16_t* __restrict mid, int span) {
    // The kernel's rows (dy = +-2, +-1, 0) weigh a column by these triples.
    constexpr int kOuter[3] = {2, 7, 12};
    constexpr int kNear[3] = {7, 31, 52};
    constexpr int kMid[3] = {12, 52, 127};
    for (int t = 0; t < span; ++t) {
        const std::uint16_t v0 = static_cast<std::uint16_t>(r0[t] + r4[t]);
        const std::uint16_t v1 = static_cast<std::uint16_t>(r1[t] + r3[t]);
        const std::uint16_t v2 = r2[t];
        outer[t] = static_cast<std::uint16_t>(kOuter[0] * v0 + kOuter[1] * v1 + kOuter[2] * v2);
        near[t] = static_cast<std::uint16_t>(kNear[0] * v0 + kNear[1] * v1 + kNear[2] * v2);
        mid[t] = static_cast<std::uint16_t>(kMid[0] * v0 + kMid[1] * v1 + kMid[2] * v2);
    }
}

// Row pass of the 5x5 Gaussian: the weighted sum (at most 571 * 255, so in
// 32 bits) divided by the kernel's total 571, rounded half up.
__attribute__((target_clones("avx2", "default"))) void gauss5Rows(
    const std::uint16_t* __restrict outer, const std::uint16_t* __restrict near,
    const std::uint16_t* __restrict mid, Ipp8u* __restrict out, int width) {
    // The weights sum to 571. floor((s + 285) / 571) is the rounded quotient;
    // it equals the truncated float product (s + 285.5) * (1 / 571): s + 285.5
    // is exact, the true quotient stays at least 0.5 / 571 away from the next
    // integer, and the product's rounding error is below 256 * 2^-23 (checked
    // for every s from 0 to 571 * 255).
    constexpr float kOffset = 285.5f;
    constexpr float kInverse = 1.0f / 571.0f;
    for (int x = 0; x < width; ++x) {
        const std::int32_t s =
            std::int32_t{outer[x]} + outer[x + 4] + near[x + 1] + near[x + 3] + mid[x + 2];
        out[x] = static_cast<Ipp8u>(
            static_cast<std::int32_t>((static_cast<float>(s) + kOffset) * kInverse));
    }
}

IppStatus gauss5x5(const Ipp8u* src, int srcStep, Ipp8u* dst, int dstStep, IppiSize roi) {
    const int span = roi.width + 4;
    SourceRowWindow<Ipp8u> window(src, srcStep, roi.width, 2, 2, 2, 5, false);
    Scratch<std::uint16_t> cols(3 * static_cast<std::size_t>(span));
    if (!window.ok() || !cols.ok()) return ippStsMemAllocErr;
    std::uint16_t* outer = cols.get();
    std::uint16_t* near = outer + span;
    std::uint16_t* mid = near + span;
    for (int y = 0; y < roi.height; ++y) {
        const Ipp8u* const* r = window.rowsFor(y);
        gauss5Columns(r[0] - 2, r[1] - 2, r[2] - 2, r[3] - 2, r[4] - 2, outer, near, mid, span);
        gauss5Rows(outer, near, mid, rowAt(dst, dstStep, y), roi.width);
    }
    return ippStsNoErr;
}

// ---- float convolutions --------------------------------------------------------

// out[e] += k * s[e] over n elements.
inline void addScaled(float* out, const float* s, float k, int n) {
    for (int e = 0; e < n; ++e) out[e] += k * s[e];
}

bool kernelOk(const void* kernel, int size, int anchor) {
    return kernel && size > 0 && anchor >= 0 && anchor < size;
}

template <int C>
IppStatus filterRow(const Ipp32f* src, int srcStep, Ipp32f* dst, int dstStep, IppiSize roi,
                    const Ipp32f* kernel, int kernelSize, int xAnchor) {
    const IppStatus st = checkPlanes(src, srcStep, dst, dstStep, roi, C * sizeof(Ipp32f));
    if (st != ippStsNoErr) return st;
    if (!kernelOk(kernel, kernelSize, xAnchor)) return kernel ? ippStsBadArgErr : ippStsNullPtrErr;
    const int n = roi.width * C;
    for (int y = 0; y < roi.height; ++y) {
        const Ipp32f* s = rowAt(src, srcStep, y);
        Ipp32f* out = rowAt(dst, dstStep, y);
        std::fill_n(out, n, 0.0f);
        for (int i = 0; i < kernelSize; ++i) addScaled(out, s + (xAnchor - i) * C, kernel[i], n);
    }
    return ippStsNoErr;
}

template <int C>
IppStatus filterColumn(const Ipp32f* src, int srcStep, Ipp32f* dst, int dstStep, IppiSize roi,
                       const Ipp32f* kernel, int kernelSize, int yAnchor) {
    const IppStatus st = checkPlanes(src, srcStep, dst, dstStep, roi, C * sizeof(Ipp32f));
    if (st != ippStsNoErr) return st;
    if (!kernelOk(kernel, kernelSize, yAnchor)) return kernel ? ippStsBadArgErr : ippStsNullPtrErr;
    const int n = roi.width * C;
    for (int y = 0; y < roi.height; ++y) {
        Ipp32f* out = rowAt(dst, dstStep, y);
        std::fill_n(out, n, 0.0f);
        for (int j = 0; j < kernelSize; ++j)
            addScaled(out, rowAt(src, srcStep, y + yAnchor - j), kernel[j], n);
    }
    return ippStsNoErr;
}

// ---- pipelines -------------------------------------------------------------------

// Pipeline buffers are carved from the caller's bytes at this alignment.
constexpr std::size_t kCarveAlign = 16;

template <typename T>
T* carve(Ipp8u*& cursor, std::size_t count) {
    auto addr = reinterpret_cast<std::uintptr_t>(cursor);
    addr = (addr + kCarveAlign - 1) / kCarveAlign * kCarveAlign;
    cursor = reinterpret_cast<Ipp8u*>(addr + count * sizeof(T));
    return reinterpret_cast<T*>(addr);
}

template <typename T>
std::size_t carvedBytes(std::size_t count) {
    return count * sizeof(T) + kCarveAlign;
}

// Sum / divisor rounded half away from zero.
inline long long divideRounded(long long sum, long long divisor) {
    const long long q = (std::llabs(sum) + divisor / 2) / divisor;
    return sum < 0 ? -q : q;
}

template <typename Acc>
IppStatus rowPipelineSize(IppiSize roi, int kernelSize, int* size, std::size_t elemBytes) {
    if (!size) return ippStsNullPtrErr;
    if (roi.width <= 0 || roi.height <= 0 || kernelSize <= 0) return ippStsSizeErr;
    const std::size_t ext = static_cast<std::size_t>(roi.width) + kernelSize - 1;
    const std::size_t bytes = ext * elemBytes + kCarveAlign + carvedBytes<Acc>(roi.width);
    *size = static_cast<int>(bytes);
    return ippStsNoErr;
}

template <typename T, typename Acc, typename Finish>
IppStatus rowPipeline(const T* src, int srcStep, T** dst, IppiSize roi, const T* kernel,
                      int kernelSize, int xAnchor, IppiBorderType border, T borderValue,
                      Ipp8u* buffer, Finish finish) {
    const IppStatus st = kc::filt::checkPlane(src, srcStep, roi, sizeof(T));
    if (st != ippStsNoErr) return st;
    if (!dst || !buffer || !kernel) return ippStsNullPtrErr;
    if (!kernelOk(kernel, kernelSize, xAnchor)) return ippStsBadArgErr;
    if (border != ippBorderConst && border != ippBorderRepl) return ippStsBadArgErr;
    const int lead = kernelSize - 1 - xAnchor;  // pixels needed left of the row
    const int extLen = roi.width + kernelSize - 1;
    Ipp8u* cursor = buffer;
    T* ext = carve<T>(cursor, extLen);
    Acc* acc = carve<Acc>(cursor, roi.width);
    for (int y = 0; y < roi.height; ++y) {
        const T* s = rowAt(src, srcStep, y);
        if (!dst[y]) return ippStsNullPtrErr;
        for (int t = 0; t < extLen; ++t) {
            const int x = t - lead;
            const bool inside = x >= 0 && x < roi.width;
            ext[t] = inside                    ? s[x]
                     : border == ippBorderRepl ? s[std::clamp(x, 0, roi.width - 1)]
                                               : borderValue;
        }
        std::fill_n(acc, roi.width, Acc(0));
        for (int i = 0; i < kernelSize; ++i) {
            const Acc k = kernel[i];
            const T* e = ext + (kernelSize - 1 - i);
            for (int x = 0; x < roi.width; ++x) acc[x] += k * static_cast<Acc>(e[x]);
        }
        for (int x = 0; x < roi.width; ++x) dst[y][x] = finish(acc[x]);
    }
    return ippStsNoErr;
}

template <typename T, typename Acc, typename Finish>
IppStatus columnPipeline(const T** src, T* dst, int dstStep, IppiSize roi, const T* kernel,
                         int kernelSize, Ipp8u* buffer, Finish finish) {
    if (!src || !dst || !kernel || !buffer) return ippStsNullPtrErr;
    if (roi.width <= 0 || roi.height <= 0 || kernelSize <= 0) return ippStsSizeErr;
    if (dstStep < static_cast<long long>(roi.width * sizeof(T))) return ippStsStepErr;
    Ipp8u* cursor = buffer;
    Acc* acc = carve<Acc>(cursor, roi.width);
    for (int y = 0; y < roi.height; ++y) {
        std::fill_n(acc, roi.width, Acc(0));
        for (int j = 0; j < kernelSize; ++j) {
            const T* s = src[y + kernelSize - 1 - j];
            if (!s) return ippStsNullPtrErr;
            const Acc k = kernel[j];
            for (int x = 0; x < roi.width; ++x) acc[x] += k * static_cast<Acc>(s[x]);
        }
        T* out = rowAt(dst, dstStep, y);
        for (int x = 0; x < roi.width; ++x) out[x] = finish(acc[x]);
    }
    return ippStsNoErr;
}

IppStatus columnPipelineSize(IppiSize roi, int kernelSize, int* size, std::size_t accBytes) {
    if (!size) return ippStsNullPtrErr;
    if (roi.width <= 0 || roi.height <= 0 || kernelSize <= 0) return ippStsSizeErr;
    *size = static_cast<int>(roi.width * accBytes + kCarveAlign);
    return ippStsNoErr;
}

// The 16-bit pipelines: exact 64-bit sums, divided, rounded and saturated.
auto shortFinisher(int divisor) {
    return [divisor](long long sum) {
        return kc::filt::saturateTo<Ipp16s>(divideRounded(sum, divisor));
    };
}
auto floatFinisher() {
    return [](float sum) { return sum; };
}

}  // namespace

IppStatus ippiFilterGauss_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                 IppiSize roiSize, IppiMaskSize mask) {
    const IppStatus st = checkPlanes(pSrc, srcStep, pDst, dstStep, roiSize, 1);
    if (st != ippStsNoErr) return st;
    if (mask == ippMskSize3x3) return gauss3x3(pSrc, srcStep, pDst, dstStep, roiSize);
    if (mask == ippMskSize5x5) return gauss5x5(pSrc, srcStep, pDst, dstStep, roiSize);
    return ippStsBadArgErr;
}

IppStatus ippiFilter_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                             IppiSize dstRoiSize, const Ipp32f* pKernel, IppiSize kernelSize,
                             IppiPoint anchor) {
    const IppStatus st = checkPlanes(pSrc, srcStep, pDst, dstStep, dstRoiSize, sizeof(Ipp32f));
    if (st != ippStsNoErr) return st;
    if (!pKernel) return ippStsNullPtrErr;
    if (!kernelOk(pKernel, kernelSize.width, anchor.x) ||
        !kernelOk(pKernel, kernelSize.height, anchor.y))
        return ippStsBadArgErr;
    const int w = dstRoiSize.width;
    for (int y = 0; y < dstRoiSize.height; ++y) {
        Ipp32f* out = rowAt(pDst, dstStep, y);
        std::fill_n(out, w, 0.0f);
        for (int j = 0; j < kernelSize.height; ++j) {
            const Ipp32f* s = rowAt(pSrc, srcStep, y + anchor.y - j);
            for (int i = 0; i < kernelSize.width; ++i)
                addScaled(out, s + anchor.x - i, pKernel[j * kernelSize.width + i], w);
        }
    }
    return ippStsNoErr;
}

IppStatus ippiFilterRow_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                IppiSize dstRoiSize, const Ipp32f* pKernel, int kernelSize,
                                int xAnchor) {
    return filterRow<1>(pSrc, srcStep, pDst, dstStep, dstRoiSize, pKernel, kernelSize, xAnchor);
}
IppStatus ippiFilterRow_32f_C3R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                IppiSize dstRoiSize, const Ipp32f* pKernel, int kernelSize,
                                int xAnchor) {
    return filterRow<3>(pSrc, srcStep, pDst, dstStep, dstRoiSize, pKernel, kernelSize, xAnchor);
}
IppStatus ippiFilterColumn_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                   IppiSize dstRoiSize, const Ipp32f* pKernel, int kernelSize,
                                   int yAnchor) {
    return filterColumn<1>(pSrc, srcStep, pDst, dstStep, dstRoiSize, pKernel, kernelSize, yAnchor);
}
IppStatus ippiFilterColumn_32f_C3R(const Ipp32f* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                   IppiSize dstRoiSize, const Ipp32f* pKernel, int kernelSize,
                                   int yAnchor) {
    return filterColumn<3>(pSrc, srcStep, pDst, dstStep, dstRoiSize, pKernel, kernelSize, yAnchor);
}

IppStatus ippiFilterRowBorderPipelineGetBufferSize_16s_C1R(IppiSize roiSize, int kernelSize,
                                                           int* pBufferSize) {
    return rowPipelineSize<long long>(roiSize, kernelSize, pBufferSize, sizeof(Ipp16s));
}
IppStatus ippiFilterRowBorderPipelineGetBufferSize_32f_C1R(IppiSize roiSize, int kernelSize,
                                                           int* pBufferSize) {
    return rowPipelineSize<float>(roiSize, kernelSize, pBufferSize, sizeof(Ipp32f));
}

IppStatus ippiFilterRowBorderPipeline_16s_C1R(const Ipp16s* pSrc, int srcStep, Ipp16s** ppDst,
                                              IppiSize roiSize, const Ipp16s* pKernel,
                                              int kernelSize, int xAnchor,
                                              IppiBorderType borderType, Ipp16s borderValue,
                                              int divisor, Ipp8u* pBuffer) {
    if (divisor <= 0) return ippStsBadArgErr;
    return rowPipeline<Ipp16s, long long>(pSrc, srcStep, ppDst, roiSize, pKernel, kernelSize,
                                          xAnchor, borderType, borderValue, pBuffer,
                                          shortFinisher(divisor));
}
IppStatus ippiFilterRowBorderPipeline_32f_C1R(const Ipp32f* pSrc, int srcStep, Ipp32f** ppDst,
                                              IppiSize roiSize, const Ipp32f* pKernel,
                                              int kernelSize, int xAnchor,
                                              IppiBorderType borderType, Ipp32f borderValue,
                                              Ipp8u* pBuffer) {
    return rowPipeline<Ipp32f, float>(pSrc, srcStep, ppDst, roiSize, pKernel, kernelSize, xAnchor,
                                      borderType, borderValue, pBuffer, floatFinisher());
}

IppStatus ippiFilterColumnPipelineGetBufferSize_16s_C1R(IppiSize roiSize, int kernelSize,
                                                        int* pBufferSize) {
    return columnPipelineSize(roiSize, kernelSize, pBufferSize, sizeof(long long));
}
IppStatus ippiFilterColumnPipelineGetBufferSize_32f_C1R(IppiSize roiSize, int kernelSize,
                                                        int* pBufferSize) {
    return columnPipelineSize(roiSize, kernelSize, pBufferSize, sizeof(float));
}

IppStatus ippiFilterColumnPipeline_16s_C1R(const Ipp16s** ppSrc, Ipp16s* pDst, int dstStep,
                                           IppiSize dstRoiSize, const Ipp16s* pKernel,
                                           int kernelSize, int divisor, Ipp8u* pBuffer) {
    if (divisor <= 0) return ippStsBadArgErr;
    return columnPipeline<Ipp16s, long long>(ppSrc, pDst, dstStep, dstRoiSize, pKernel, kernelSize,
                                             pBuffer, shortFinisher(divisor));
}
IppStatus ippiFilterColumnPipeline_32f_C1R(const Ipp32f** ppSrc, Ipp32f* pDst, int dstStep,
                                           IppiSize dstRoiSize, const Ipp32f* pKernel,
                                           int kernelSize, Ipp8u* pBuffer) {
    return columnPipeline<Ipp32f, float>(ppSrc, pDst, dstStep, dstRoiSize, pKernel, kernelSize,
                                         pBuffer, floatFinisher());
}
