// Weighted blend of two host display buffers, for fading between views.
#include <immintrin.h>

#include <cmath>

#include "api/keepcut_display.h"
#include "core/img.h"
#include "runtime/entry_guard.h"
#include "tools/pixel_bytes.h"

namespace {
// Host pixels: three colour bytes, blended, and a fourth, kept.
constexpr int kPictureBytes = 4;
constexpr int kColourChannels = 3;
// Pixels of one AVX2 step: 32 bytes of each buffer.
constexpr int kStepPixels = 8;

void blendPixels(unsigned char* d, const unsigned char* s, int pixels, float weight, float rest) {
    for (int x = 0; x < pixels; ++x, d += kPictureBytes, s += kPictureBytes)
        for (int c = 0; c < kColourChannels; ++c)
            d[c] = truncateToByte(s[c] * weight + d[c] * rest);
}

// Eight bytes at p as eight floats.
__attribute__((target("avx2"))) inline __m256 floatsOf(const unsigned char* p) {
    return _mm256_cvtepi32_ps(
        _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
}

// trunc(s w + d (1 - w)) as 32-bit integers in 0..255: the max sends NaN to
// 0 (it returns its second operand), the min caps at 255, truncation follows.
__attribute__((target("avx2"))) inline __m256i blendEight(const unsigned char* s,
                                                          const unsigned char* d, __m256 weight,
                                                          __m256 rest) {
    const __m256 v =
        _mm256_add_ps(_mm256_mul_ps(floatsOf(s), weight), _mm256_mul_ps(floatsOf(d), rest));
    const __m256 clamped =
        _mm256_min_ps(_mm256_max_ps(v, _mm256_setzero_ps()), _mm256_set1_ps(255.0f));
    return _mm256_cvttps_epi32(clamped);
}

// The same values 32 bytes at a time where the processor has AVX2.
__attribute__((target("avx2"))) void blendRowAvx2(unsigned char* d, const unsigned char* s,
                                                  int width, float weight, float rest) {
    const __m256 w = _mm256_set1_ps(weight), r = _mm256_set1_ps(rest);
    const __m256i fourth = _mm256_set1_epi32(static_cast<int>(0xff000000u));
    // packs interleave the 128-bit halves; this puts the words back in order.
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    int x = 0;
    for (; x + kStepPixels <= width; x += kStepPixels) {
        unsigned char* dp = d + kPictureBytes * x;
        const unsigned char* sp = s + kPictureBytes * x;
        const __m256i a = blendEight(sp, dp, w, r), b = blendEight(sp + 8, dp + 8, w, r);
        const __m256i c = blendEight(sp + 16, dp + 16, w, r);
        const __m256i e = blendEight(sp + 24, dp + 24, w, r);
        const __m256i bytes = _mm256_permutevar8x32_epi32(
            _mm256_packus_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, e)), order);
        const __m256i old = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(dp));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dp), _mm256_blendv_epi8(bytes, old, fourth));
    }
    blendPixels(d + kPictureBytes * x, s + kPictureBytes * x, width - x, weight, rest);
}

}  // namespace

extern "C" KC_EXPORT void rkShowKeepBlend(unsigned char* dst, int dstStep, int width, int height,
                                          unsigned char* src, int srcStep, float weight) {
    constexpr const char* kEntry = "rkShowKeepBlend";
    rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "dst", dst, width, height, dstStep, kPictureBytes) ||
            !rkCheckBuffer(kEntry, "src", src, width, height, srcStep, kPictureBytes))
            return kInvalidArgument;
        if (!std::isfinite(weight)) return rkRefuseWith(kEntry, "the weight is not finite");
        const float rest = 1.0f - weight;
        const bool avx2 = __builtin_cpu_supports("avx2");
        for (int y = 0; y < height; ++y) {
            unsigned char* d = imgPtr(dst, dstStep, 0, y);
            const unsigned char* s = imgPtr(src, srcStep, 0, y);
            if (avx2)
                blendRowAvx2(d, s, width, weight, rest);
            else
                blendPixels(d, s, width, weight, rest);
        }
        return 1;
    });
}
