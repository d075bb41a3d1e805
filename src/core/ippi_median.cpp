// Medians through a sorting network: the neighbourhood's values for a run of
// pixels are laid out as one array per neighbour ("wire"), and each
// compare-exchange of the network is a min/max over two arrays, which the
// compiler vectorises. The network is Batcher's odd-even merge sort, pruned to
// the comparators that can still move a value into the middle wire.
#include "core/ippi_median.h"

#include <algorithm>
#include <new>
#include <vector>

#include "core/ippi_filter_support.h"

namespace {

using kc::filt::rowAt;
using kc::filt::Scratch;

struct Comparator {
    int lo, hi;
};

struct Offset {
    int dx, dy;
};

// Comparators that sort n wires, keeping only those that decide wire n/2.
std::vector<Comparator> medianNetwork(int n) {
    int pow2 = 1;
    while (pow2 < n) pow2 <<= 1;
    std::vector<Comparator> all;
    for (int p = 1; p < pow2; p <<= 1)
        for (int k = p; k >= 1; k >>= 1)
            for (int j = k % p; j + k < pow2; j += 2 * k)
                for (int i = 0; i < std::min(k, pow2 - j - k); ++i)
                    // Wires beyond n hold "+infinity": comparing with them is a no-op.
                    if ((i + j) / (2 * p) == (i + j + k) / (2 * p) && i + j + k < n)
                        all.push_back({i + j, i + j + k});
    std::vector<bool> needed(n, false);
    needed[n / 2] = true;
    std::vector<Comparator> kept;
    for (auto it = all.rbegin(); it != all.rend(); ++it) {
        if (!needed[it->lo] && !needed[it->hi]) continue;
        needed[it->lo] = needed[it->hi] = true;
        kept.push_back(*it);
    }
    std::reverse(kept.begin(), kept.end());
    return kept;
}

// Pixels per batch: the wires of a 5x5 neighbourhood of 16-bit values stay in L1.
constexpr int kBatch = 256;

template <typename T>
IppStatus medianOver(const T* src, int srcStep, T* dst, int dstStep, IppiSize roi,
                     const std::vector<Offset>& offsets) {
    const IppStatus st = kc::filt::checkPlanes(src, srcStep, dst, dstStep, roi, sizeof(T));
    if (st != ippStsNoErr) return st;
    const int n = static_cast<int>(offsets.size());
    std::vector<Comparator> network;
    try {
        network = medianNetwork(n);
    } catch (const std::bad_alloc&) {
        return ippStsMemAllocErr;
    }
    Scratch<T> wireStore(static_cast<std::size_t>(n) * kBatch);
    if (!wireStore.ok()) return ippStsMemAllocErr;
    auto wire = [&](int k) { return wireStore.get() + static_cast<std::size_t>(k) * kBatch; };
    for (int y = 0; y < roi.height; ++y) {
        T* out = rowAt(dst, dstStep, y);
        for (int x0 = 0; x0 < roi.width; x0 += kBatch) {
            const int len = std::min(kBatch, roi.width - x0);
            for (int k = 0; k < n; ++k) {
                const T* s = rowAt(src, srcStep, y + offsets[k].dy) + x0 + offsets[k].dx;
                std::copy(s, s + len, wire(k));
            }
            for (const Comparator& c : network) {
                T* a = wire(c.lo);
                T* b = wire(c.hi);
                for (int i = 0; i < len; ++i) {
                    const T u = a[i], v = b[i];
                    a[i] = v < u ? v : u;
                    b[i] = v < u ? u : v;
                }
            }
            std::copy(wire(n / 2), wire(n / 2) + len, out + x0);
        }
    }
    return ippStsNoErr;
}

template <typename T>
IppStatus medianCross(const T* src, int srcStep, T* dst, int dstStep, IppiSize roi,
                      IppiMaskSize mask) {
    int radius = 0;
    if (mask == ippMskSize3x3)
        radius = 1;
    else if (mask == ippMskSize5x5)
        radius = 2;
    else
        return ippStsBadArgErr;
    std::vector<Offset> offsets;
    try {
        for (int d = -radius; d <= radius; ++d) offsets.push_back({d, 0});
        for (int d = -radius; d <= radius; ++d)
            if (d != 0) offsets.push_back({0, d});
    } catch (const std::bad_alloc&) {
        return ippStsMemAllocErr;
    }
    return medianOver(src, srcStep, dst, dstStep, roi, offsets);
}

}  // namespace

IppStatus ippiFilterMedian_16s_C1R(const Ipp16s* pSrc, int srcStep, Ipp16s* pDst, int dstStep,
                                   IppiSize dstRoiSize, IppiSize maskSize, IppiPoint anchor) {
    if (maskSize.width <= 0 || maskSize.height <= 0) return ippStsSizeErr;
    if (anchor.x < 0 || anchor.x >= maskSize.width || anchor.y < 0 || anchor.y >= maskSize.height)
        return ippStsBadArgErr;
    std::vector<Offset> offsets;
    try {
        for (int j = 0; j < maskSize.height; ++j)
            for (int i = 0; i < maskSize.width; ++i)
                offsets.push_back({i - anchor.x, j - anchor.y});
    } catch (const std::bad_alloc&) {
        return ippStsMemAllocErr;
    }
    return medianOver(pSrc, srcStep, pDst, dstStep, dstRoiSize, offsets);
}

IppStatus ippiFilterMedianCross_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                       IppiSize dstRoiSize, IppiMaskSize mask) {
    return medianCross(pSrc, srcStep, pDst, dstStep, dstRoiSize, mask);
}

IppStatus ippiFilterMedianCross_16s_C1R(const Ipp16s* pSrc, int srcStep, Ipp16s* pDst, int dstStep,
                                        IppiSize dstRoiSize, IppiMaskSize mask) {
    return medianCross(pSrc, srcStep, pDst, dstStep, dstRoiSize, mask);
}
