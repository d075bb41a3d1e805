// Typed wrappers over the containers: each passes ptr() and step of its
// operands, works on the destination's region, records the primitive's status
// in the destination and returns it. The element type picks the primitive
// through the IPPIP overloads, so an instantiation without one fails to build.
#pragma once

#include <type_traits>

#include "core/img.h"
#include "core/ipp_primitives.h"

namespace kc::ops_detail {
template <typename T, int C>
int record(IMG<T, C>& dst, int status) {
    dst.status = status;
    return status;
}
// The element at channel ch of the region's first pixel: channel copies select
// their channel through the pointer.
template <typename T, int C>
T* channel(const IMG<T, C>& img, int ch) {
    return img.ptr() + ch;
}
}  // namespace kc::ops_detail

// ---- Add -------------------------------------------------------------------
// dst = sat(src + dst) scaled by 2^-sf (integer planes).
template <typename T>
int Add(const IMG<T, 1>& src, IMG<T, 1>& dst, int sf) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiAdd_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize, sf));
}
// dst += src (float, one or three channels).
template <typename T, int C>
int Add(const IMG<T, C>& src, IMG<T, C>& dst) {
    if constexpr (C == 1)
        return kc::ops_detail::record(
            dst, IPPIP::ippiAdd_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize));
    else
        return kc::ops_detail::record(
            dst, IPPIP::ippiAdd_C3R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize));
}
// dst += value, scaled (integer planes).
template <typename T>
int Add(std::type_identity_t<T> value, IMG<T, 1>& dst, int sf) {
    return kc::ops_detail::record(dst,
                                  IPPIP::ippiAddC_C1R(value, dst.ptr(), dst.step, dst.roiSize, sf));
}
// dst += value (float).
template <typename T>
int Add(std::type_identity_t<T> value, IMG<T, 1>& dst) {
    return kc::ops_detail::record(dst,
                                  IPPIP::ippiAddC_C1R(value, dst.ptr(), dst.step, dst.roiSize));
}
// dst += value[c] per channel; V is a pointer to three constants.
template <typename T, typename V>
requires std::is_pointer_v<V>
int Add(V value, IMG<T, 3>& dst) {
    return kc::ops_detail::record(dst,
                                  IPPIP::ippiAddC_C3R(value, dst.ptr(), dst.step, dst.roiSize));
}

// ---- Sub -------------------------------------------------------------------
// dst = sat(dst - src) scaled (integer planes).
template <typename T>
int Sub(const IMG<T, 1>& src, IMG<T, 1>& dst, int sf) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiSub_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize, sf));
}
// dst -= src (float).
template <typename T>
int Sub(const IMG<T, 1>& src, IMG<T, 1>& dst) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiSub_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize));
}
// dst = sat(src2 - src1) scaled.
template <typename T>
int Sub(const IMG<T, 1>& src1, const IMG<T, 1>& src2, IMG<T, 1>& dst, int sf) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiSub_C1R(src1.ptr(), src1.step, src2.ptr(), src2.step, dst.ptr(), dst.step,
                                dst.roiSize, sf));
}
// dst = sat(dst - value) scaled.
template <typename T>
int Sub(std::type_identity_t<T> value, IMG<T, 1>& dst, int sf) {
    return kc::ops_detail::record(dst,
                                  IPPIP::ippiSubC_C1R(value, dst.ptr(), dst.step, dst.roiSize, sf));
}

// ---- Mul -------------------------------------------------------------------
template <typename T>
int Mul(const IMG<T, 1>& src, IMG<T, 1>& dst, int sf) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiMul_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize, sf));
}
template <typename T>
int Mul(const IMG<T, 1>& src, IMG<T, 1>& dst) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiMul_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize));
}
template <typename T>
int Mul(std::type_identity_t<T> value, IMG<T, 1>& dst, int sf) {
    return kc::ops_detail::record(dst,
                                  IPPIP::ippiMulC_C1R(value, dst.ptr(), dst.step, dst.roiSize, sf));
}
template <typename T>
int Mul(std::type_identity_t<T> value, IMG<T, 1>& dst) {
    return kc::ops_detail::record(dst,
                                  IPPIP::ippiMulC_C1R(value, dst.ptr(), dst.step, dst.roiSize));
}
// dst *= value[c] per channel; V is a pointer to three constants.
template <typename T, typename V>
requires std::is_pointer_v<V>
int Mul(V value, IMG<T, 3>& dst) {
    return kc::ops_detail::record(dst,
                                  IPPIP::ippiMulC_C3R(value, dst.ptr(), dst.step, dst.roiSize));
}
// dst = src * value.
template <typename T>
int Mul(const IMG<T, 1>& src, std::type_identity_t<T> value, IMG<T, 1>& dst) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiMulC_C1R(src.ptr(), src.step, value, dst.ptr(), dst.step, dst.roiSize));
}
// dst = src * value[c] per channel.
template <typename T>
int Mul(const IMG<T, 3>& src, const T* value, IMG<T, 3>& dst) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiMulC_C3R(src.ptr(), src.step, value, dst.ptr(), dst.step, dst.roiSize));
}

// ---- Div -------------------------------------------------------------------
// dst = dst / src.
template <typename T>
int Div(const IMG<T, 1>& src, IMG<T, 1>& dst) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiDiv_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize));
}

// ---- Copy ------------------------------------------------------------------
template <typename T, int C>
int Copy(const IMG<T, C>& src, IMG<T, C>& dst) {
    if constexpr (C == 1)
        return kc::ops_detail::record(
            dst, IPPIP::ippiCopy_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize));
    else
        return kc::ops_detail::record(
            dst, IPPIP::ippiCopy_C3R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize));
}
// Copies where mask is non-zero.
template <typename T>
int Copy(const IMG<T, 1>& src, IMG<T, 1>& dst, const IMG<unsigned char, 1>& mask) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiCopy_C1MR(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize, mask.ptr(),
                                  mask.step));
}
// Writes src into channel ch of dst.
template <typename T>
int Copy(int ch, const IMG<T, 1>& src, IMG<T, 3>& dst) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiCopy_C1C3R(src.ptr(), src.step, kc::ops_detail::channel(dst, ch), dst.step,
                                   dst.roiSize));
}
// Reads channel ch of src into dst.
template <typename T>
int Copy(int ch, const IMG<T, 3>& src, IMG<T, 1>& dst) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiCopy_C3C1R(kc::ops_detail::channel(src, ch), src.step, dst.ptr(), dst.step,
                                   dst.roiSize));
}

// ---- Set -------------------------------------------------------------------
// The value may be given as the element type or as an int.
template <typename T>
int Set(std::type_identity_t<T> value, IMG<T, 1>& dst) {
    return kc::ops_detail::record(dst, IPPIP::ippiSet_C1R(value, dst.ptr(), dst.step, dst.roiSize));
}

// ---- Convert ---------------------------------------------------------------
// Exact widening to float (one or three channels).
template <typename S, typename D, int C>
int Convert(const IMG<S, C>& src, IMG<D, C>& dst) {
    if constexpr (C == 1)
        return kc::ops_detail::record(
            dst, IPPIP::ippiConvert_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize));
    else
        return kc::ops_detail::record(
            dst, IPPIP::ippiConvert_C3R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize));
}
// Float to integer, rounded by mode and saturated.
template <typename S, typename D>
int Convert(const IMG<S, 1>& src, IMG<D, 1>& dst, IppRoundMode mode) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiConvert_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize, mode));
}

// ---- Compare ---------------------------------------------------------------
// dst = 255 where src <op> value. An int outside 0..255 still compares as an
// int: the relation is rewritten against 0 or 255 with the same outcome.
inline int Compare(const IMG<unsigned char, 1>& src, int value, IMG<unsigned char, 1>& dst,
                   IppCmpOp op) {
    Ipp8u bound = static_cast<Ipp8u>(value);
    if (value < 0) {
        bound = 0;
        op = (op == ippCmpGreater || op == ippCmpGreaterEq) ? ippCmpGreaterEq : ippCmpLess;
    } else if (value > 255) {
        bound = 255;
        op = (op == ippCmpLess || op == ippCmpLessEq) ? ippCmpLessEq : ippCmpGreater;
    }
    return kc::ops_detail::record(
        dst,
        IPPIP::ippiCompareC_C1R(src.ptr(), src.step, bound, dst.ptr(), dst.step, dst.roiSize, op));
}
// dst (8-bit) = 255 where src1 <op> src2.
template <typename T>
int Compare(const IMG<T, 1>& src1, const IMG<T, 1>& src2, IMG<unsigned char, 1>& dst, IppCmpOp op) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiCompare_C1R(src1.ptr(), src1.step, src2.ptr(), src2.step, dst.ptr(),
                                    dst.step, dst.roiSize, op));
}

// ---- Or, Sum, Threshold ----------------------------------------------------
template <typename T>
int Or(const IMG<T, 1>& src, IMG<T, 1>& dst) {
    return kc::ops_detail::record(
        dst, IPPIP::ippiOr_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize));
}
// Sum of src's region; there is no destination, so no status is recorded.
template <typename T>
int Sum(const IMG<T, 1>& src, double* out) {
    return IPPIP::ippiSum_C1R(src.ptr(), src.step, src.roiSize, out);
}
// Per channel, values below t[c] become t[c].
template <typename T>
int Threshold_LT(IMG<T, 3>& img, const T* t) {
    return kc::ops_detail::record(img,
                                  IPPIP::ippiThreshold_LT_C3R(img.ptr(), img.step, img.roiSize, t));
}
// Per channel, values above t[c] become t[c].
template <typename T>
int Threshold_GT(IMG<T, 3>& img, const T* t) {
    return kc::ops_detail::record(img,
                                  IPPIP::ippiThreshold_GT_C3R(img.ptr(), img.step, img.roiSize, t));
}
