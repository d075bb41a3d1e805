// Aligned allocation for images and vectors, with a failure hook for tests.
#include "core/aligned_alloc.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>

namespace {
std::atomic<int> g_failCountdown{0};
// Image allocations still to let through, then image allocations to refuse.
std::atomic<int> g_imageAllocsBeforeFailure{0};
std::atomic<int> g_failingImageAllocs{0};

bool consumeImageFailure() {
    if (g_failingImageAllocs.load(std::memory_order_relaxed) <= 0) return false;
    if (g_imageAllocsBeforeFailure.load(std::memory_order_relaxed) > 0) {
        g_imageAllocsBeforeFailure.fetch_sub(1, std::memory_order_relaxed);
        return false;
    }
    return g_failingImageAllocs.fetch_sub(1, std::memory_order_relaxed) > 0;
}

bool consumeInjectedFailure() {
    int n = g_failCountdown.load(std::memory_order_relaxed);
    while (n > 0) {
        if (g_failCountdown.compare_exchange_weak(n, n - 1)) return true;
    }
    return false;
}

void* alignedBytes(long long bytes) {
    if (bytes <= 0 || consumeInjectedFailure()) return nullptr;
    // aligned_alloc wants a size that is a multiple of the alignment.
    const long long rounded = (bytes + kImageAlignment - 1) / kImageAlignment * kImageAlignment;
    if (rounded > static_cast<long long>(std::numeric_limits<std::ptrdiff_t>::max()))
        return nullptr;
    return std::aligned_alloc(kImageAlignment, static_cast<size_t>(rounded));
}
}  // namespace

void* kcAlignedAllocRows(long long rowBytes, int h, int* step) {
    if (rowBytes <= 0 || h <= 0) return nullptr;
    const long long s = (rowBytes + kImageAlignment - 1) / kImageAlignment * kImageAlignment;
    // Steps are signed 32-bit everywhere in the engine.
    if (s > std::numeric_limits<int>::max()) return nullptr;
    void* p = alignedBytes(s * h);
    if (p && step) *step = static_cast<int>(s);
    return p;
}

void* kcAlignedAllocImageRows(long long rowBytes, int h, int* step) {
    if (consumeImageFailure()) return nullptr;
    return kcAlignedAllocRows(rowBytes, h, step);
}

void kcAlignedFree(void* p) {
    std::free(p);
}

Ipp8u* ippiMalloc_8u_C1(int w, int h, int* step) {
    return static_cast<Ipp8u*>(kcAlignedAllocRows(static_cast<long long>(w), h, step));
}
Ipp16s* ippiMalloc_16s_C1(int w, int h, int* step) {
    return static_cast<Ipp16s*>(kcAlignedAllocRows(2LL * w, h, step));
}
Ipp32f* ippiMalloc_32f_C1(int w, int h, int* step) {
    return static_cast<Ipp32f*>(kcAlignedAllocRows(4LL * w, h, step));
}
void ippiFree(void* p) {
    kcAlignedFree(p);
}
Ipp8u* ippsMalloc_8u(int len) {
    return static_cast<Ipp8u*>(alignedBytes(len));
}
Ipp32s* ippsMalloc_32s(int len) {
    return static_cast<Ipp32s*>(alignedBytes(4LL * len));
}
void ippsFree(void* p) {
    kcAlignedFree(p);
}

namespace kc::testing {
void failNextAlignedAllocs(int n) {
    g_failCountdown.store(n);
}
void failImageAllocs(int after, int n) {
    g_imageAllocsBeforeFailure.store(after > 0 ? after : 0);
    g_failingImageAllocs.store(n);
}
int imageAllocFailuresLeft() {
    return std::max(0, g_failingImageAllocs.load());
}
}  // namespace kc::testing
