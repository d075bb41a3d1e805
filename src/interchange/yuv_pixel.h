// The per-pixel arithmetic shared by every RGB <-> YUV conversion, written so
// that the row loops around it vectorise (branch-free, float throughout).
#pragma once

#include <algorithm>

namespace kc::yuv {

// Luma weights of the broadcast standard the engine's colour distances use.
inline constexpr float kLumaR = 0.299f;
inline constexpr float kLumaG = 0.587f;
inline constexpr float kLumaB = 0.114f;
// Scale of the colour differences: U = (B - Y) * 0.492, V = (R - Y) * 0.877.
inline constexpr float kUScale = 0.492f;
inline constexpr float kVScale = 0.877f;
// The inverse matrix of the same standard.
inline constexpr float kRFromV = 1.14f;
inline constexpr float kGFromU = 0.394f;
inline constexpr float kGFromV = 0.581f;
inline constexpr float kBFromU = 2.032f;
// 8-bit values are carried in shorts times 128 (255 * 128 still fits).
inline constexpr float kByteToShort = 128.f;
inline constexpr float kShortToByte = 1.f / 128.f;  // exact: a power of two
// The 8-bit forms scale the differences in one step: 0.492 * 128 and 0.877 * 128.
inline constexpr float kUScale8 = 62.976f;
inline constexpr float kVScale8 = 112.256f;
// Bounds of a short, as floats, for saturation before truncating.
inline constexpr float kShortMin = -32768.f;
inline constexpr float kShortMax = 32767.f;

// Y in float. The smaller terms are summed first: in the other order grey
// (R = G = B = v) can come out a hair below v and truncate one step low.
inline float luma(float r, float g, float b) {
    return kLumaB * b + kLumaG * g + kLumaR * r;
}

// Truncation toward zero into a short, saturating outside its range.
inline short toShort(float v) {
    return static_cast<short>(std::min(std::max(v, kShortMin), kShortMax));
}

// Clamped to 0..hi, then truncated: what the RGB outputs store.
template <typename T>
inline T clampTrunc(float v, float hi) {
    return static_cast<T>(std::min(std::max(v, 0.f), hi));
}

}  // namespace kc::yuv
