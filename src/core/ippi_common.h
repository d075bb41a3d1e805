// Shared plumbing of the image primitives: argument checks in the order every
// primitive reports them (null pointer, then size, then step), row addressing
// by byte steps, OpenCV headers over raw regions, and the Sfs scaling rule.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <opencv2/core.hpp>
#include <type_traits>

#include "core/ipp_types.h"

namespace kc::prim {

// One image operand as the checks see it: where it starts, its row step and
// how many bytes one pixel of the region takes.
struct PlaneArg {
    const void* ptr;
    int step;
    int pixelBytes;
};

template <typename T>
PlaneArg plane(const T* p, int step, int channels = 1) {
    return {p, step, static_cast<int>(sizeof(T)) * channels};
}

// Null pointers first, then a non-positive region, then any row step shorter
// than a row of the region.
inline IppStatus checkPlanes(IppiSize roi, std::initializer_list<PlaneArg> planes) {
    for (const PlaneArg& p : planes)
        if (!p.ptr) return ippStsNullPtrErr;
    if (roi.width <= 0 || roi.height <= 0) return ippStsSizeErr;
    for (const PlaneArg& p : planes)
        if (p.step <= 0 || static_cast<long long>(p.step) < 1LL * roi.width * p.pixelBytes)
            return ippStsStepErr;
    return ippStsNoErr;
}

// Vector (ipps) operands: null pointers, then a non-positive length.
inline IppStatus checkVector(int len, std::initializer_list<const void*> ptrs) {
    for (const void* p : ptrs)
        if (!p) return ippStsNullPtrErr;
    return len <= 0 ? ippStsSizeErr : ippStsNoErr;
}

// Row y of a region that starts at base with the given byte step.
template <typename T>
T* rowAt(T* base, int step, int y) {
    using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) +
                                static_cast<std::ptrdiff_t>(y) * step);
}

// A cv::Mat header over a raw region (no copy): height x width pixels of
// `channels` elements of T, rows `step` bytes apart.
template <typename T>
cv::Mat matOver(const T* p, int step, IppiSize roi, int channels = 1) {
    return cv::Mat(roi.height, roi.width, CV_MAKETYPE(cv::DataType<T>::depth, channels),
                   const_cast<T*>(p), static_cast<size_t>(step));
}

template <typename T>
constexpr T saturateTo(long long v) {
    constexpr long long lo = std::numeric_limits<T>::min();
    constexpr long long hi = std::numeric_limits<T>::max();
    return static_cast<T>(v < lo ? lo : (v > hi ? hi : v));
}

// The Sfs rule: v scaled by 2^-sf, rounded to nearest with exact halves going
// to the even neighbour, then saturated to T. A negative sf multiplies.
//
// For sf > 0 the rounding is branch-free so that row loops vectorise:
// floor((v + half - 1 + lowBitOfQuotient) / 2^sf) is round-half-even.
template <typename T>
struct SfsScaler {
    int sf;
    explicit SfsScaler(int scaleFactor) : sf(scaleFactor) {}

    T operator()(long long v) const {
        if (sf == 0) return saturateTo<T>(v);
        if (sf > 0) {
            // Beyond 62 bits every value the primitives produce rounds to 0.
            if (sf > 62) return T(0);
            const long long half = 1LL << (sf - 1);
            const long long oddQuotient = (v >> sf) & 1;
            return saturateTo<T>((v + half - 1 + oddQuotient) >> sf);
        }
        // Multiplying: anything non-zero shifted by 40 bits already saturates
        // every element type we scale.
        const int up = -sf > 40 ? 40 : -sf;
        return saturateTo<T>(v * (1LL << up));
    }
};

}  // namespace kc::prim
