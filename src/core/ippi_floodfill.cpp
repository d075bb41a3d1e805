// Flood fill: a depth-first walk over a membership map with an explicit stack
// (each pixel is pushed at most once), comparing original values only; the
// image is written in one pass at the end, so the fill value never takes part
// in a comparison.
#include "core/ippi_floodfill.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/ippi_filter_support.h"

namespace {

using kc::filt::rowAt;

// The stack of pixel indices starts on this boundary inside the caller's bytes.
constexpr std::size_t kStackAlign = alignof(std::int32_t);

long long workBytes(IppiSize roi) {
    const long long pixels = static_cast<long long>(roi.width) * roi.height;
    return pixels + static_cast<long long>(kStackAlign) + pixels * sizeof(std::int32_t);
}

}  // namespace

IppStatus ippiFloodFillGetSize_Grad(IppiSize roiSize, int* pBufSize) {
    if (!pBufSize) return ippStsNullPtrErr;
    if (roiSize.width <= 0 || roiSize.height <= 0) return ippStsSizeErr;
    const long long bytes = workBytes(roiSize);
    if (bytes > 0x7fffffffLL) return ippStsSizeErr;
    *pBufSize = static_cast<int>(bytes);
    return ippStsNoErr;
}

IppStatus ippiFloodFill_Range8Con_8u_C1IR(Ipp8u* pImage, int imageStep, IppiSize roiSize,
                                          IppiPoint seed, Ipp8u newVal, Ipp8u minDelta,
                                          Ipp8u maxDelta, IppiConnectedComp* pRegion,
                                          Ipp8u* pBuffer) {
    const IppStatus st = kc::filt::checkPlane(pImage, imageStep, roiSize, 1);
    if (st != ippStsNoErr) return st;
    if (!pBuffer) return ippStsNullPtrErr;
    if (workBytes(roiSize) > 0x7fffffffLL) return ippStsSizeErr;
    if (seed.x < 0 || seed.y < 0 || seed.x >= roiSize.width || seed.y >= roiSize.height)
        return ippStsBadArgErr;
    const int w = roiSize.width, h = roiSize.height;
    const std::size_t pixels = static_cast<std::size_t>(w) * h;
    Ipp8u* member = pBuffer;
    std::memset(member, 0, pixels);
    auto stackAddr = reinterpret_cast<std::uintptr_t>(pBuffer + pixels);
    stackAddr = (stackAddr + kStackAlign - 1) / kStackAlign * kStackAlign;
    auto* stack = reinterpret_cast<std::int32_t*>(stackAddr);
    std::size_t top = 0;

    auto valueAt = [&](int x, int y) { return rowAt(pImage, imageStep, y)[x]; };
    const std::int32_t seedIndex = seed.y * w + seed.x;
    member[seedIndex] = 1;
    stack[top++] = seedIndex;
    while (top > 0) {
        const std::int32_t p = stack[--top];
        const int x = p % w, y = p / w;
        const int v = valueAt(x, y);
        const int lo = v - minDelta, hi = v + maxDelta;
        for (int ny = std::max(y - 1, 0); ny <= std::min(y + 1, h - 1); ++ny)
            for (int nx = std::max(x - 1, 0); nx <= std::min(x + 1, w - 1); ++nx) {
                const std::int32_t q = ny * w + nx;
                if (member[q]) continue;
                const int u = valueAt(nx, ny);
                if (u < lo || u > hi) continue;
                member[q] = 1;
                stack[top++] = q;
            }
    }

    long long area = 0;
    int x0 = w, y0 = h, x1 = -1, y1 = -1;
    for (int y = 0; y < h; ++y) {
        const Ipp8u* m = member + static_cast<std::size_t>(y) * w;
        Ipp8u* row = rowAt(pImage, imageStep, y);
        int count = 0;
        for (int x = 0; x < w; ++x) {
            row[x] = m[x] ? newVal : row[x];
            count += m[x];
        }
        if (!count) continue;
        area += count;
        y0 = std::min(y0, y);
        y1 = y;
        const Ipp8u* firstSet = std::find(m, m + w, 1);
        const Ipp8u* lastSet =
            std::find(std::make_reverse_iterator(m + w), std::make_reverse_iterator(m), 1).base() -
            1;
        x0 = std::min(x0, static_cast<int>(firstSet - m));
        x1 = std::max(x1, static_cast<int>(lastSet - m));
    }
    if (pRegion) {
        pRegion->area = static_cast<Ipp64f>(area);
        pRegion->value[0] = newVal;
        pRegion->value[1] = pRegion->value[2] = 0;
        pRegion->rect = {x0, y0, x1 - x0 + 1, y1 - y0 + 1};
    }
    return ippStsNoErr;
}
