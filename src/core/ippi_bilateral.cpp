// Bilateral filter: the value weights are a 256-entry table made once by Init
// in the caller's buffer; each kernel tap then adds weight x value and weight
// over a whole row into two float accumulator rows.
#include "core/ippi_bilateral.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <new>

#include "core/ippi_filter_support.h"

// The filter object, placed in the caller's buffer by Init.
struct IppiFilterBilateralSpec {
    std::uint32_t tag;
    IppiSize maxKernel;
    int stepInKernel;
    float posSquareSigma;
    float valueWeight[256];  // weight of a value difference |v - v0|
};

namespace {

using kc::filt::rowAt;

// Marks a buffer that Init has prepared.
constexpr std::uint32_t kSpecTag = 0x42494c41u;

}  // namespace

IppStatus ippiFilterBilateralGetBufSize_8u_C1R(IppiFilterBilateralType filter,
                                               IppiSize maxDstRoiSize, IppiSize maxKernelSize,
                                               int* pBufferSize) {
    if (!pBufferSize) return ippStsNullPtrErr;
    if (filter != ippiFilterBilaGauss) return ippStsBadArgErr;
    if (maxDstRoiSize.width <= 0 || maxDstRoiSize.height <= 0 || maxKernelSize.width <= 0 ||
        maxKernelSize.height <= 0)
        return ippStsSizeErr;
    // Only the filter object lives in the buffer: the accumulator rows depend
    // on the region of each call and come from the aligned allocator then.
    *pBufferSize = static_cast<int>(sizeof(IppiFilterBilateralSpec) + alignof(std::max_align_t));
    return ippStsNoErr;
}

IppStatus ippiFilterBilateralInit_8u_C1R(IppiFilterBilateralType filter, IppiSize maxKernelSize,
                                         Ipp32f valSquareSigma, Ipp32f posSquareSigma,
                                         int stepInKernel, IppiFilterBilateralSpec* pSpec) {
    if (!pSpec) return ippStsNullPtrErr;
    if (filter != ippiFilterBilaGauss) return ippStsBadArgErr;
    if (maxKernelSize.width <= 0 || maxKernelSize.height <= 0) return ippStsSizeErr;
    if (!(valSquareSigma > 0) || !(posSquareSigma > 0) || stepInKernel < 1) return ippStsBadArgErr;
    IppiFilterBilateralSpec* filterState = new (pSpec) IppiFilterBilateralSpec{};
    filterState->tag = kSpecTag;
    filterState->maxKernel = maxKernelSize;
    filterState->stepInKernel = stepInKernel;
    filterState->posSquareSigma = posSquareSigma;
    for (int d = 0; d < 256; ++d)
        filterState->valueWeight[d] =
            static_cast<float>(std::exp(-double(d) * d / (2.0 * valSquareSigma)));
    return ippStsNoErr;
}

IppStatus ippiFilterBilateral_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize dstRoiSize, IppiSize kernelSize,
                                     IppiFilterBilateralSpec* pSpec) {
    const IppStatus st = kc::filt::checkPlanes(pSrc, srcStep, pDst, dstStep, dstRoiSize, 1);
    if (st != ippStsNoErr) return st;
    if (!pSpec) return ippStsNullPtrErr;
    if (pSpec->tag != kSpecTag) return ippStsBadArgErr;
    if (kernelSize.width <= 0 || kernelSize.height <= 0 ||
        kernelSize.width > pSpec->maxKernel.width || kernelSize.height > pSpec->maxKernel.height)
        return ippStsSizeErr;
    const int w = dstRoiSize.width;
    const int ax = kernelSize.width / 2, ay = kernelSize.height / 2;
    const int stepK = pSpec->stepInKernel;
    const float* valueWeight = pSpec->valueWeight;
    kc::filt::Scratch<float> acc(2 * static_cast<std::size_t>(w));
    if (!acc.ok()) return ippStsMemAllocErr;
    float* sum = acc.get();
    float* weight = sum + w;
    for (int y = 0; y < dstRoiSize.height; ++y) {
        const Ipp8u* centre = rowAt(pSrc, srcStep, y);
        for (int x = 0; x < w; ++x) sum[x] = weight[x] = 0.0f;
        for (int j = 0; j < kernelSize.height; j += stepK) {
            const int dy = j - ay;
            const Ipp8u* row = rowAt(pSrc, srcStep, y + dy);
            for (int i = 0; i < kernelSize.width; i += stepK) {
                const int dx = i - ax;
                const float pos = static_cast<float>(
                    std::exp(-double(dx * dx + dy * dy) / (2.0 * pSpec->posSquareSigma)));
                const Ipp8u* s = row + dx;
                for (int x = 0; x < w; ++x) {
                    const int diff = s[x] > centre[x] ? s[x] - centre[x] : centre[x] - s[x];
                    const float wgt = pos * valueWeight[diff];
                    sum[x] += wgt * s[x];
                    weight[x] += wgt;
                }
            }
        }
        Ipp8u* out = rowAt(pDst, dstStep, y);
        for (int x = 0; x < w; ++x) {
            // A kernel sampled past its centre can weigh nothing; keep the pixel then.
            const float v = weight[x] > 0 ? sum[x] / weight[x] : centre[x];
            out[x] = static_cast<Ipp8u>(std::lround(std::min(v, 255.0f)));
        }
    }
    return ippStsNoErr;
}
