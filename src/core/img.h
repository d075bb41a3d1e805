// Image containers: IMG<T,C> with a movable region of interest, its one- and
// three-channel faces GIMG<T> and IMG3<T>, and pixel addressing helpers.
//
// Ownership: an owning container frees its block in its destructor (which the
// engine relies on while an exception unwinds); a wrapping container borrows
// the caller's block and never frees it. Containers are never copied.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <type_traits>

#include "core/aligned_alloc.h"
#include "core/ip_size.h"

// Thrown (as a bare int) when an image or work buffer cannot be allocated.
inline constexpr int kErrOutOfMemory = 102;

// Row step of the general-heap fallback: the next multiple of 16 strictly above
// the row width (a width already on 16 still gains 16 bytes, as it always has).
inline int heapFallbackStep(int rowBytes) {
    return (rowBytes / 16 + 1) * 16;
}

template <typename T, int C>
class IMG {
    static_assert((C == 1 &&
                   (std::is_same_v<T, unsigned char> || std::is_same_v<T, unsigned short> ||
                    std::is_same_v<T, short> || std::is_same_v<T, float>)) ||
                      (C == 3 && (std::is_same_v<T, unsigned char> || std::is_same_v<T, short> ||
                                  std::is_same_v<T, float>)),
                  "no such image type in the engine");

  public:
    T* buf = nullptr;       // start of the whole block; never moves
    bool ippAlloc = false;  // block came from the aligned allocator
    bool extMem = false;    // block is borrowed from the caller
    T* roiPtr = nullptr;    // top-left element of the region of interest
    int step = 0;           // bytes between row starts
    IPSize size;            // full extent of the block
    IPSize roiSize;         // extent of the region of interest
    int status = 1;         // status of the last primitive that wrote here; 1 = none yet

    // Wraps mem (borrowed, with the given step) or, when mem is null, allocates
    // an uninitialised block of w x h; throws 102 when that fails.
    IMG(int w, int h, void* mem, int stepBytes) : size(w, h), roiSize(w, h) {
        if (mem) {
            extMem = true;
            ippAlloc = false;
            step = stepBytes;
            buf = roiPtr = static_cast<T*>(mem);
            return;
        }
        const long long wb = static_cast<long long>(w) * C * static_cast<long long>(sizeof(T));
        int alignedStep = 0;
        void* block = kcAlignedAllocImageRows(wb, h, &alignedStep);
        if (block) {
            step = alignedStep;
            ippAlloc = true;
        } else {
            step = heapFallbackStep(static_cast<int>(wb));
            const long long bytes = static_cast<long long>(step) * h;
            // A negative product (or size) is a request the heap must refuse; an
            // empty image still gets a valid block so that it can be freed.
            const bool sane = w >= 0 && h >= 0 && bytes >= 0 && wb <= 0x7fffffffLL;
            block = sane ? std::malloc(static_cast<size_t>(bytes > 0 ? bytes : 1)) : nullptr;
            ippAlloc = false;
        }
        buf = roiPtr = static_cast<T*>(block);
        if (!buf) throw kErrOutOfMemory;
    }

    IMG(const IMG&) = delete;
    IMG& operator=(const IMG&) = delete;

    virtual ~IMG() {
        if (extMem || !buf) return;
        if (ippAlloc)
            kcAlignedFree(buf);
        else
            std::free(buf);
    }

    T* ptr() const { return roiPtr; }

    // Moves the region's top-left corner by (dx, dy), keeping its bottom-right.
    virtual void border(int dx, int dy) {
        roiPtr = reinterpret_cast<T*>(reinterpret_cast<char*>(roiPtr) +
                                      static_cast<std::ptrdiff_t>(dy) * step) +
                 static_cast<std::ptrdiff_t>(dx) * C;
        roiSize.resize(-dx, -dy);
    }

    // All four values are relative to the current region; roiRect(b,b,-b,-b)
    // selects the inner rectangle with a margin of b on every side.
    void roiRect(int dx, int dy, int dw, int dh) {
        border(dx, dy);
        roiSize.resize(dw, dh);
    }

    virtual void restoreRect() {
        roiPtr = buf;
        roiSize = size;
    }

    int width() const { return roiSize.width; }
    int height() const { return roiSize.height; }
};

template <typename T>
class GIMG : public IMG<T, 1> {
  public:
    GIMG(int w, int h) : IMG<T, 1>(w, h, nullptr, 0) {}
    // Wrapping foreign memory exists for 8-bit planes only.
    GIMG(int w, int h, void* mem, int stepBytes)
    requires std::is_same_v<T, unsigned char> : IMG<T, 1>(w, h, mem, stepBytes) {}
    ~GIMG() override = default;
};

template <typename T>
class IMG3 : public IMG<T, 3> {
  public:
    IMG3(int w, int h) : IMG<T, 3>(w, h, nullptr, 0) {}
    IMG3(int w, int h, void* mem, int stepBytes)
    requires std::is_same_v<T, unsigned char> : IMG<T, 3>(w, h, mem, stepBytes) {}
    ~IMG3() override = default;
};

// Address of pixel (x, y) of a byte plane.
inline unsigned char* imgPtr(const unsigned char* base, int step, int x, int y) {
    return const_cast<unsigned char*>(base) + static_cast<std::ptrdiff_t>(y) * step + x;
}

// Address of pixel (x, y) of the region of interest.
template <typename T>
inline T* imgPtr(const GIMG<T>& img, int x, int y) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(img.ptr()) +
                                static_cast<std::ptrdiff_t>(y) * img.step) +
           x;
}

inline float* imgPtr(const IMG3<float>& img, int x, int y) {
    return reinterpret_cast<float*>(reinterpret_cast<char*>(img.ptr()) +
                                    static_cast<std::ptrdiff_t>(y) * img.step) +
           3 * static_cast<std::ptrdiff_t>(x);
}
