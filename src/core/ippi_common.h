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
#include <utility>

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
    using Lane = long long;
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

// The same rule with the scale factor fixed at compile time and the value
// held in lanes of type Lane: a shift by a constant in the narrowest lane that
// holds every value an operation can produce is what lets the row loops
// vectorise (a shift by a run-time count makes the compiler widen to 32 bits,
// and 64-bit lanes leave two values per vector). Callers guarantee that
// v + 2^(Sf-1) fits in Lane; the result equals SfsScaler<T>(Sf)(v).
template <typename T, typename LaneT, int Sf>
struct FixedSfs {
    using Lane = LaneT;
    static_assert(Sf >= 0 && Sf <= std::numeric_limits<Lane>::digits);

    T operator()(Lane v) const {
        Lane q = v;
        if constexpr (Sf > 0) {
            // floor((v + half - 1 + lowBitOfQuotient) / 2^Sf), as in SfsScaler.
            constexpr Lane bias = static_cast<Lane>((1 << (Sf - 1)) - 1);
            const Lane odd = static_cast<Lane>((v >> Sf) & 1);
            q = static_cast<Lane>(static_cast<Lane>(v + bias + odd) >> Sf);
        }
        constexpr Lane hi = static_cast<Lane>(std::numeric_limits<T>::max());
        q = q < hi ? q : hi;
        if constexpr (std::is_signed_v<Lane>) q = q > 0 ? q : 0;
        return static_cast<T>(q);
    }
};

// Scale factors up to this one get a compile-time kernel; every value an
// integer primitive produces (at most 17 bits) rounds to 0 or saturates beyond
// it, so larger and negative factors are rare enough for the generic scaler.
inline constexpr int kMaxFixedSf = 16;

// The narrowest lane for values in [lo, hi] scaled by 2^-Sf: 16-bit lanes
// (signed first: their min/max are single instructions) when hi plus the
// rounding bias fits, else 32-bit.
template <long long Lo, long long Hi, int Sf, long long Top = Hi + ((1LL << Sf) >> 1)>
using SfsLane =
    std::conditional_t<(Lo >= -32768 && Top <= 32767), std::int16_t,
                       std::conditional_t<(Lo >= 0 && Top <= 65535), std::uint16_t, std::int32_t>>;

template <typename T, long long Lo, long long Hi, typename Body, int... Sf>
bool dispatchFixedSfs(int sf, Body& body, std::integer_sequence<int, Sf...>) {
    return ((sf == Sf ? (body(FixedSfs<T, SfsLane<Lo, Hi, Sf>, Sf>{}), true) : false) || ...);
}

// Calls body(scale) with the FixedSfs for sf when 0 <= sf <= kMaxFixedSf,
// for values in [Lo, Hi]; returns false (and does nothing) otherwise.
template <typename T, long long Lo, long long Hi, typename Body>
bool withFixedSfs(int sf, Body&& body) {
    static_assert(Hi + (1LL << kMaxFixedSf) <= std::numeric_limits<std::int32_t>::max());
    return dispatchFixedSfs<T, Lo, Hi>(sf, body,
                                       std::make_integer_sequence<int, kMaxFixedSf + 1>());
}

}  // namespace kc::prim
