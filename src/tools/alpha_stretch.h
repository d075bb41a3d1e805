// The alpha stretch lo..hi -> 0..255 as a per-byte rule, in scalar form and
// sixteen bytes at a time, so that whole-map and display passes apply it in
// one sweep without planes of their own.
#pragma once

#include <emmintrin.h>

#include <algorithm>

#include "tools/byte_simd.h"

class AlphaStretch {
  public:
    AlphaStretch(unsigned char hi, unsigned char lo) : lo_(lo) {
        const int d = hi - lo;
        identity_ = d == kFullRange;
        // A negative factor (hi below lo) reaches the 8-bit multiply modulo
        // 256, as an int constant does through an 8-bit parameter.
        if (!identity_) k_ = static_cast<unsigned char>(std::min(kFactorNumerator / d, kMaxFactor));
    }

    bool identity() const { return identity_; }
    unsigned char lo() const { return lo_; }
    unsigned char factor() const { return k_; }

    // round(max(a - lo, 0) x k / 32), ties to even, saturated.
    unsigned char operator()(unsigned char a) const {
        if (identity_) return a;
        const int v = std::max(a - lo_, 0) * k_;
        return static_cast<unsigned char>(std::min(roundShift<kFactorScaleBits>(v), 255));
    }
    __m128i operator()(__m128i a) const {
        if (identity_) return a;
        const __m128i zero = _mm_setzero_si128(), k = _mm_set1_epi16(k_);
        const __m128i above = _mm_subs_epu8(a, _mm_set1_epi8(static_cast<char>(lo_)));
        const __m128i low = _mm_mullo_epi16(_mm_unpacklo_epi8(above, zero), k);
        const __m128i high = _mm_mullo_epi16(_mm_unpackhi_epi8(above, zero), k);
        return _mm_packus_epi16(roundShift<kFactorScaleBits>(low),
                                roundShift<kFactorScaleBits>(high));
    }

    // 255 x 32: the factor is kept in 1/32 steps so that an 8-bit constant
    // with a scale factor of 5 carries it.
    static constexpr int kFactorNumerator = 8160;
    static constexpr int kFactorScaleBits = 5;

  private:
    // The full 8-bit range: nothing to stretch.
    static constexpr int kFullRange = 255;
    static constexpr int kMaxFactor = 255;

    bool identity_ = true;
    unsigned char lo_, k_ = 0;
};

// Stretches n bytes from src into dst (which may be src). With keepPainted,
// bytes odd before the stretch keep their value and all others lose bit 0.
void stretchRow(const AlphaStretch& s, const unsigned char* src, unsigned char* dst, int n,
                bool keepPainted);
