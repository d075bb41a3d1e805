// Matte display modes: the stretched matte laid over a colour, or shown as
// grey. Map byte, stretch and blend are fused into one pass over the pixels,
// sixteen at a time, with the arithmetic of the 8-bit plane primitives
// (products scaled by 2^-8 with ties to even, saturating sums).
#include <immintrin.h>

#include <algorithm>

#include "core/img.h"
#include "tools/alpha_stretch.h"
#include "tools/byte_simd.h"
#include "tools/display_modes.h"

namespace {

// Host pixels: bytes 0..2 colour, byte 3 made opaque.
constexpr int kPixelBytes = 4;
constexpr int kColourChannels = 3;
constexpr unsigned int kOpaque = 0xff000000u;
// Products of two bytes scaled by 2^-8: 255 x 255 gives 254, a slight
// darkening that is part of the screen's look.
constexpr int kProductScaleBits = 8;

__m128i opaqueBits() {
    return _mm_set1_epi32(static_cast<int>(kOpaque));
}

// One pixel of modes 3, 4 and 6: picture weighted by `pictureWeight`, colour
// by its complement.
void blendPixel(unsigned char* p, unsigned char a, const unsigned char* colour,
                bool colourOverForeground) {
    const int inverse = 255 - a;
    const int pictureWeight = colourOverForeground ? inverse : a;
    const int colourWeight = colourOverForeground ? a : inverse;
    for (int c = 0; c < kColourChannels; ++c) {
        const int sum = roundShift<kProductScaleBits>(pictureWeight * p[c]) +
                        roundShift<kProductScaleBits>(colourWeight * colour[c]);
        p[c] = static_cast<unsigned char>(std::min(sum, 255));
    }
    p[3] = 255;
}

// mulRound<8> of tools/byte_simd.h, 32 bytes at a time.
__attribute__((target("avx2"))) inline __m256i roundShiftAvx2(__m256i v) {
    const __m256i odd =
        _mm256_and_si256(_mm256_srli_epi16(v, kProductScaleBits), _mm256_set1_epi16(1));
    const __m256i bias = _mm256_set1_epi16((1 << (kProductScaleBits - 1)) - 1);
    return _mm256_srli_epi16(_mm256_add_epi16(_mm256_add_epi16(v, bias), odd), kProductScaleBits);
}
__attribute__((target("avx2"))) inline __m256i mulRoundAvx2(__m256i a, __m256i b) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i low =
        _mm256_mullo_epi16(_mm256_unpacklo_epi8(a, zero), _mm256_unpacklo_epi8(b, zero));
    const __m256i high =
        _mm256_mullo_epi16(_mm256_unpackhi_epi8(a, zero), _mm256_unpackhi_epi8(b, zero));
    return _mm256_packus_epi16(roundShiftAvx2(low), roundShiftAvx2(high));
}

// The blend eight pixels a step where the processor has AVX2: the sixteen
// stretched alphas of two steps come from the SSE2 stretch and are spread
// over the pixels by a byte shuffle. Returns the pixels done.
__attribute__((target("avx2"))) int blendRowAvx2(unsigned char* p, const unsigned char* m,
                                                 int width, const AlphaStretch& stretch,
                                                 int colourWord, bool colourOverForeground) {
    const __m256i colourBytes = _mm256_set1_epi32(colourWord);
    const __m256i all = _mm256_set1_epi8(static_cast<char>(0xff));
    const __m256i opaque = _mm256_set1_epi32(static_cast<int>(kOpaque));
    // Byte i of each pixel word takes alpha x / 4 of its half.
    const __m256i spread = _mm256_setr_epi8(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 4,
                                            4, 5, 5, 5, 5, 6, 6, 6, 6, 7, 7, 7, 7);
    int x = 0;
    for (; x + kVectorBytes <= width; x += kVectorBytes) {
        const __m128i alphas = stretch(loadBytes(m + x));
        for (int half = 0; half < 2; ++half) {
            const __m128i eight = half ? _mm_unpackhi_epi64(alphas, alphas) : alphas;
            const __m256i alpha = _mm256_shuffle_epi8(_mm256_broadcastq_epi64(eight), spread);
            const __m256i inverse = _mm256_xor_si256(alpha, all);
            const __m256i pictureWeight = colourOverForeground ? inverse : alpha;
            const __m256i colourWeight = colourOverForeground ? alpha : inverse;
            auto* q = reinterpret_cast<__m256i*>(p + kPixelBytes * (x + 8 * half));
            const __m256i sum = _mm256_adds_epu8(mulRoundAvx2(pictureWeight, _mm256_loadu_si256(q)),
                                                 mulRoundAvx2(colourWeight, colourBytes));
            _mm256_storeu_si256(q, _mm256_or_si256(sum, opaque));
        }
    }
    return x;
}

}  // namespace

void showMatteWithColour(const DisplayBuffers& b, unsigned char hi, unsigned char lo,
                         const unsigned char* color, bool colourOverForeground) {
    const AlphaStretch stretch(hi, lo);
    // color is red, green, blue; a pixel's byte 0 is blue.
    const unsigned char colour[kColourChannels] = {color[2], color[1], color[0]};
    const int colourWord = colour[0] | colour[1] << 8 | colour[2] << 16;
    const __m128i colourBytes = _mm_set1_epi32(colourWord);
    const __m128i all = _mm_set1_epi8(static_cast<char>(0xff));
    const bool avx2 = __builtin_cpu_supports("avx2");
    for (int y = 0; y < b.size.height; ++y) {
        unsigned char* p = imgPtr(b.image, b.imageStep, 0, y);
        const unsigned char* m = imgPtr(b.mask, b.maskStep, 0, y);
        int x =
            avx2 ? blendRowAvx2(p, m, b.size.width, stretch, colourWord, colourOverForeground) : 0;
        for (; x + kVectorBytes <= b.size.width; x += kVectorBytes) {
            __m128i alpha[4];
            spreadToPixels(stretch(loadBytes(m + x)), alpha);
            for (int i = 0; i < 4; ++i) {
                unsigned char* q = p + kPixelBytes * (x + 4 * i);
                const __m128i inverse = _mm_xor_si128(alpha[i], all);
                const __m128i pictureWeight = colourOverForeground ? inverse : alpha[i];
                const __m128i colourWeight = colourOverForeground ? alpha[i] : inverse;
                const __m128i sum =
                    _mm_adds_epu8(mulRound<kProductScaleBits>(pictureWeight, loadBytes(q)),
                                  mulRound<kProductScaleBits>(colourWeight, colourBytes));
                storeBytes(q, _mm_or_si128(sum, opaqueBits()));
            }
        }
        for (; x < b.size.width; ++x)
            blendPixel(p + kPixelBytes * x, stretch(m[x]), colour, colourOverForeground);
    }
}

void showMatteGrey(const DisplayBuffers& b, unsigned char hi, unsigned char lo) {
    const AlphaStretch stretch(hi, lo);
    for (int y = 0; y < b.size.height; ++y) {
        unsigned char* p = imgPtr(b.image, b.imageStep, 0, y);
        const unsigned char* m = imgPtr(b.mask, b.maskStep, 0, y);
        int x = 0;
        for (; x + kVectorBytes <= b.size.width; x += kVectorBytes) {
            __m128i alpha[4];
            spreadToPixels(stretch(loadBytes(m + x)), alpha);
            for (int i = 0; i < 4; ++i)
                storeBytes(p + kPixelBytes * (x + 4 * i), _mm_or_si128(alpha[i], opaqueBits()));
        }
        for (; x < b.size.width; ++x) {
            const unsigned char a = stretch(m[x]);
            std::fill_n(p + kPixelBytes * x, kColourChannels, a);
            p[kPixelBytes * x + 3] = 255;
        }
    }
}
