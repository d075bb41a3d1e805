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
// The same for the pixel block of an owning image container, which falls back
// to the general heap (with another row step) when this returns null.
void* kcAlignedAllocImageRows(long long rowBytes, int h, int* step);
void kcAlignedFree(void* p);

Ipp8u* ippiMalloc_8u_C1(int w, int h, int* step);
Ipp16s* ippiMalloc_16s_C1(int w, int h, int* step);
Ipp32f* ippiMalloc_32f_C1(int w, int h, int* step);
void ippiFree(void* p);
Ipp8u* ippsMalloc_8u(int len);
Ipp32s* ippsMalloc_32s(int len);
void ippsFree(void* p);

namespace kc::testing {
// Makes the next n aligned allocations of any kind fail: containers take the
// heap fallback, scratch and work arrays report exhausted memory. Not for
// engine code, nor are the hooks below.
void failNextAlignedAllocs(int n);
// Makes the image containers' aligned allocations fail from the (after+1)-th
// one on, for n allocations, and leaves every other aligned allocation alone:
// containers then take the heap fallback (and its row step) one by one or all
// together while scratch and work arrays are still served. n = 0 switches the
// hook off.
void failImageAllocs(int after, int n);
// How many of the refusals asked for above are still to come (0 once every one
// has happened); tells a caller whether a job made that many image allocations.
int imageAllocFailuresLeft();
}  // namespace kc::testing
