// The aligned allocator behind owned images and primitive scratch memory.
//
// Rows start on kImageAlignment so vector kernels run on aligned rows. Every
// function returns null on failure and never throws.
#pragma once

#include <cstddef>

#include "core/ipp_types.h"

// 64 bytes: one cache line, and enough for the widest vector loads we use.
inline constexpr int kImageAlignment = 64;

// Block of h rows of at least rowBytes each; *step receives the chosen row step.
void* kcAlignedAllocRows(long long rowBytes, int h, int* step);
void kcAlignedFree(void* p);

Ipp8u* ippiMalloc_8u_C1(int w, int h, int* step);
Ipp16s* ippiMalloc_16s_C1(int w, int h, int* step);
Ipp32f* ippiMalloc_32f_C1(int w, int h, int* step);
void ippiFree(void* p);
Ipp8u* ippsMalloc_8u(int len);
Ipp32s* ippsMalloc_32s(int len);
void ippsFree(void* p);

namespace kc::testing {
// Makes the next n aligned allocations fail, so the heap fallback of the
// containers can be exercised. Not for engine code.
void failNextAlignedAllocs(int n);
}  // namespace kc::testing
