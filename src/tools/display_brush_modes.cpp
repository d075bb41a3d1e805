// Brush-map display modes: the tinted overlay and the flat code colours, each
// a single pass over the pixels, sixteen at a time.
#include <algorithm>

#include "core/img.h"
#include "tools/byte_simd.h"
#include "tools/display_modes.h"

namespace {

// Byte order of a host picture's pixel.
constexpr int kBlue = 0, kGreen = 1, kRed = 2;
constexpr int kPixelBytes = 4;
// Map codes painted keep and cut.
constexpr unsigned char kKeep = 255, kCut = 1;
// Darkening of the overlay: 7/8 through a multiply by 7 scaled by 2^-3. The
// fourth byte is multiplied by 8 under the same scaling, which keeps it.
constexpr int kDarkenNumerator = 7;
constexpr int kKeepNumerator = 8;
constexpr int kDarkenScaleBits = 3;
// Tint added to the channel that names a pixel's brush code.
constexpr int kTint = 85;

// A 4-byte pixel as one little-endian word.
constexpr int pixelWord(int blue, int green, int red, int alpha) {
    return blue | green << 8 | red << 16 | alpha << 24;
}

void addTint(unsigned char& v) {
    v = static_cast<unsigned char>(std::min(v + kTint, 255));
}

void overlayPixel(unsigned char* p, unsigned char m) {
    for (int c = kBlue; c <= kRed; ++c)
        p[c] = static_cast<unsigned char>(roundShift<kDarkenScaleBits>(p[c] * kDarkenNumerator));
    if ((m & 1) == 0) {
        addTint(p[kBlue]);
    } else if (m == kKeep) {
        addTint(p[kGreen]);
    } else if (m == kCut) {
        addTint(p[kRed]);
    } else {
        addTint(p[kRed]);
        addTint(p[kGreen]);
    }
}

// Flat colours: red where the map is 0, green where it is keep, else blue.
constexpr int kZeroColour = pixelWord(0, 0, 255, 255);
constexpr int kKeepColour = pixelWord(0, 255, 0, 255);
constexpr int kOtherColour = pixelWord(255, 0, 0, 255);

int codeColour(unsigned char m) {
    return m == 0 ? kZeroColour : m == kKeep ? kKeepColour : kOtherColour;
}

}  // namespace

void showBrushOverlay(const DisplayBuffers& b) {
    const __m128i darken = _mm_set1_epi32(
        pixelWord(kDarkenNumerator, kDarkenNumerator, kDarkenNumerator, kKeepNumerator));
    const __m128i one = _mm_set1_epi8(1), keep = _mm_set1_epi8(static_cast<char>(kKeep));
    const __m128i blueTint = _mm_set1_epi32(pixelWord(kTint, 0, 0, 0));
    const __m128i greenTint = _mm_set1_epi32(pixelWord(0, kTint, 0, 0));
    const __m128i redTint = _mm_set1_epi32(pixelWord(0, 0, kTint, 0));
    for (int y = 0; y < b.size.height; ++y) {
        unsigned char* p = imgPtr(b.image, b.imageStep, 0, y);
        const unsigned char* m = imgPtr(b.mask, b.maskStep, 0, y);
        int x = 0;
        for (; x + kVectorBytes <= b.size.width; x += kVectorBytes) {
            __m128i code[4];
            spreadToPixels(loadBytes(m + x), code);
            for (int i = 0; i < 4; ++i) {
                unsigned char* q = p + kPixelBytes * (x + 4 * i);
                const __m128i painted = _mm_cmpeq_epi8(_mm_and_si128(code[i], one), one);
                const __m128i isCut = _mm_cmpeq_epi8(code[i], one);
                const __m128i isKeep = _mm_cmpeq_epi8(code[i], keep);
                // Computed: blue; painted but not cut: green; painted but not keep: red.
                const __m128i tint = _mm_or_si128(
                    _mm_andnot_si128(painted, blueTint),
                    _mm_and_si128(painted, _mm_or_si128(_mm_andnot_si128(isCut, greenTint),
                                                        _mm_andnot_si128(isKeep, redTint))));
                const __m128i dark = mulRound<kDarkenScaleBits>(loadBytes(q), darken);
                storeBytes(q, _mm_adds_epu8(dark, tint));
            }
        }
        for (; x < b.size.width; ++x) overlayPixel(p + kPixelBytes * x, m[x]);
    }
}

void showBrushCodes(const DisplayBuffers& b) {
    const __m128i zeroColour = _mm_set1_epi32(kZeroColour);
    const __m128i keepColour = _mm_set1_epi32(kKeepColour);
    const __m128i otherColour = _mm_set1_epi32(kOtherColour);
    const __m128i keep = _mm_set1_epi8(static_cast<char>(kKeep));
    for (int y = 0; y < b.size.height; ++y) {
        unsigned char* p = imgPtr(b.image, b.imageStep, 0, y);
        const unsigned char* m = imgPtr(b.mask, b.maskStep, 0, y);
        int x = 0;
        for (; x + kVectorBytes <= b.size.width; x += kVectorBytes) {
            __m128i code[4];
            spreadToPixels(loadBytes(m + x), code);
            for (int i = 0; i < 4; ++i) {
                const __m128i isZero = _mm_cmpeq_epi8(code[i], _mm_setzero_si128());
                const __m128i isKeep = _mm_cmpeq_epi8(code[i], keep);
                const __m128i named = _mm_or_si128(_mm_and_si128(isZero, zeroColour),
                                                   _mm_and_si128(isKeep, keepColour));
                const __m128i rest = _mm_andnot_si128(_mm_or_si128(isZero, isKeep), otherColour);
                storeBytes(p + kPixelBytes * (x + 4 * i), _mm_or_si128(named, rest));
            }
        }
        for (; x < b.size.width; ++x) {
            const int word = codeColour(m[x]);
            for (int c = 0; c < kPixelBytes; ++c)
                p[kPixelBytes * x + c] = static_cast<unsigned char>(word >> (8 * c));
        }
    }
}
