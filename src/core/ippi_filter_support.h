// Plumbing shared by the neighbourhood primitives (morphology, linear filters,
// median, bilateral, resize): row addressing, argument checks that turn into
// status codes, never-throwing scratch memory and a window of source rows that
// stays valid while the destination overwrites the source in place.
#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "core/aligned_alloc.h"
#include "core/ipp_types.h"

namespace kc::filt {

// Row y of a plane whose rows are step bytes apart (y may be negative: border rows).
template <typename T>
inline T* rowAt(T* base, int step, std::ptrdiff_t y) {
    using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) + y * step);
}

// Status of a plane operand: null pointer, empty region or rows shorter than
// the region are refused before any pixel is touched.
inline IppStatus checkPlane(const void* p, int step, IppiSize roi, int pixelBytes) {
    if (!p) return ippStsNullPtrErr;
    if (roi.width <= 0 || roi.height <= 0) return ippStsSizeErr;
    if (step < static_cast<long long>(roi.width) * pixelBytes) return ippStsStepErr;
    return ippStsNoErr;
}

// Two operands of one region: the first failure wins.
inline IppStatus checkPlanes(const void* src, int srcStep, const void* dst, int dstStep,
                             IppiSize roi, int pixelBytes) {
    const IppStatus s = checkPlane(src, srcStep, roi, pixelBytes);
    return s != ippStsNoErr ? s : checkPlane(dst, dstStep, roi, pixelBytes);
}

// Aligned scratch of count elements that frees itself; empty (ok() false) when
// the allocator refuses, so that primitives can report instead of throwing.
template <typename T>
class Scratch {
  public:
    explicit Scratch(std::size_t count) {
        int step = 0;
        p_ = count ? static_cast<T*>(
                         kcAlignedAllocRows(static_cast<long long>(count * sizeof(T)), 1, &step))
                   : nullptr;
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() { kcAlignedFree(p_); }
    bool ok() const { return p_ != nullptr; }
    T* get() const { return p_; }

  private:
    T* p_ = nullptr;
};

// The source rows of a neighbourhood of `rows` rows around each output row.
// Output row y sees source rows y - top .. y - top + rows - 1; in each row,
// element x of the region is at index x, and indices -left .. width+right-1 are
// valid. With inPlace the rows are copied before the caller overwrites them, so
// every output row still reads original pixels.
template <typename T>
class SourceRowWindow {
  public:
    SourceRowWindow(const T* src, int step, int width, int left, int right, int top, int rows,
                    bool inPlace)
        : src_(src),
          step_(step),
          left_(left),
          span_(left + width + right),
          top_(top),
          rows_(rows),
          inPlace_(inPlace),
          copies_(inPlace ? static_cast<std::size_t>(span_) * rows : 0),
          ptrs_(static_cast<std::size_t>(rows)) {}

    bool ok() const { return ptrs_.ok() && (!inPlace_ || copies_.ok()); }

    // Must be called for y = 0, 1, 2, ... in order when in place.
    const T* const* rowsFor(int y) {
        const int first = y - top_;
        if (!inPlace_) {
            for (int j = 0; j < rows_; ++j) ptrs_.get()[j] = rowAt(src_, step_, first + j);
            return ptrs_.get();
        }
        // Load the rows this output row needs that are not in the ring yet.
        const int from = std::max(first, loadedEnd_);
        for (int r = from; r < first + rows_; ++r) {
            const T* s = rowAt(src_, step_, r) - left_;
            std::copy(s, s + span_, slot(r));
        }
        loadedEnd_ = first + rows_;
        for (int j = 0; j < rows_; ++j) ptrs_.get()[j] = slot(first + j) + left_;
        return ptrs_.get();
    }

  private:
    T* slot(int r) const {
        const int m = ((r % rows_) + rows_) % rows_;
        return copies_.get() + static_cast<std::size_t>(m) * span_;
    }

    const T* src_;
    int step_, left_, span_, top_, rows_;
    bool inPlace_;
    int loadedEnd_ = -(1 << 30);
    Scratch<T> copies_;
    Scratch<const T*> ptrs_;
};

// Integer saturation to the element type.
template <typename T>
inline T saturateTo(long long v) {
    constexpr long long lo = std::is_same_v<T, Ipp8u> ? 0 : -32768;
    constexpr long long hi = std::is_same_v<T, Ipp8u> ? 255 : 32767;
    return static_cast<T>(std::clamp(v, lo, hi));
}

}  // namespace kc::filt
