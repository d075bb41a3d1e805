// Owned work arrays of the matting object: aligned blocks that a null result
// reports as exhausted memory instead of throwing, so the caller can release
// what it holds and raise its own code.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>

#include "core/aligned_alloc.h"

struct AlignedArrayDeleter {
    void operator()(void* p) const { kcAlignedFree(p); }
};

template <typename T>
using OwnedArray = std::unique_ptr<T[], AlignedArrayDeleter>;

// An uninitialised array of count elements from the aligned allocator; null
// when count is not positive or the memory is not there.
template <typename T>
OwnedArray<T> allocOwnedArray(long long count) {
    static_assert(std::is_trivially_destructible_v<T>, "plain element types only");
    if (count <= 0) return OwnedArray<T>();
    // Requested as rows of one page so that blocks beyond 2 GB stay expressible
    // (the allocator's row step is a 32-bit int).
    constexpr long long kPage = 4096;
    const long long bytes = count * static_cast<long long>(sizeof(T));
    const long long rows = (bytes + kPage - 1) / kPage;
    if (rows > 0x7fffffffLL) return OwnedArray<T>();
    int step = 0;
    void* p = kcAlignedAllocRows(kPage, static_cast<int>(rows), &step);
    return OwnedArray<T>(static_cast<T*>(p));
}

// The same, every element zero.
template <typename T>
OwnedArray<T> allocZeroedArray(long long count) {
    OwnedArray<T> a = allocOwnedArray<T>(count);
    if (a) std::memset(a.get(), 0, static_cast<size_t>(count) * sizeof(T));
    return a;
}
