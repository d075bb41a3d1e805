// Byte arithmetic of the display and editing passes, sixteen bytes at a time
// with SSE2 (every x86-64 has it) and in scalar form for row tails, giving
// the same values as the scaled 8-bit primitives.
#pragma once

#include <emmintrin.h>

// Bytes handled by one vector.
inline constexpr int kVectorBytes = 16;

// v / 2^Bits rounded to nearest with ties to even, for 0 <= v < 2^16 - 2^Bits.
template <int Bits>
inline int roundShift(int v) {
    return (v + (1 << (Bits - 1)) - 1 + ((v >> Bits) & 1)) >> Bits;
}
template <int Bits>
inline __m128i roundShift(__m128i v) {
    const __m128i odd = _mm_and_si128(_mm_srli_epi16(v, Bits), _mm_set1_epi16(1));
    const __m128i bias = _mm_set1_epi16((1 << (Bits - 1)) - 1);
    return _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(v, bias), odd), Bits);
}

// round(a x b / 2^Bits) per byte, saturated; a x b must stay below 2^16 - 2^Bits.
template <int Bits>
inline __m128i mulRound(__m128i a, __m128i b) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i low = _mm_mullo_epi16(_mm_unpacklo_epi8(a, zero), _mm_unpacklo_epi8(b, zero));
    const __m128i high = _mm_mullo_epi16(_mm_unpackhi_epi8(a, zero), _mm_unpackhi_epi8(b, zero));
    return _mm_packus_epi16(roundShift<Bits>(low), roundShift<Bits>(high));
}

// Each of the sixteen bytes of v repeated four times: out[i] covers bytes
// 4i..4i+3 of v, one per 4-byte pixel.
inline void spreadToPixels(__m128i v, __m128i (&out)[4]) {
    const __m128i low = _mm_unpacklo_epi8(v, v), high = _mm_unpackhi_epi8(v, v);
    out[0] = _mm_unpacklo_epi16(low, low);
    out[1] = _mm_unpackhi_epi16(low, low);
    out[2] = _mm_unpacklo_epi16(high, high);
    out[3] = _mm_unpackhi_epi16(high, high);
}

inline __m128i loadBytes(const unsigned char* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void storeBytes(unsigned char* p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}
