// Byte-pixel HLS rows, eight pixels a step in the compiler's generic vectors
// (one AVX2 register each in the AVX2 clone, two SSE registers otherwise).
// Every branch of the float formulas becomes a select between values computed
// with the same operations in the same order (no contraction: the clones
// target AVX2 without FMA), so the results equal the scalar formulas exactly.
// Floors are taken by adding or subtracting one turn, exact for the hue
// ranges that occur.
#include "core/hls_rows.h"

#include <algorithm>
#include <cstring>

#include "core/simd_clones.h"

// The vectors pass between always-inlined helpers only, so the compiler's
// note on their calling convention without AVX concerns nothing.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace {

typedef float Floats __attribute__((vector_size(32)));
typedef unsigned int Words __attribute__((vector_size(32)));
typedef int Ints __attribute__((vector_size(32)));
typedef double Doubles __attribute__((vector_size(64)));
constexpr int kLanes = 8;
constexpr int kPixelBytes = 4;

// 1.5 x 2^23: adding and subtracting it rounds a float of magnitude below
// 2^22 to an integer, ties to even, as lrint does in the default mode.
constexpr float kRoundMagic = 12582912.0f;
// For every byte x, x x (1 / 255) in double rounded to float equals the
// float quotient x / 255 (checked for all 256 values); a multiply is far
// cheaper than a divide.
constexpr double kByteFraction = 1.0 / 255.0;
// Pixels are little-endian words: byte k at bit 8k; byte 3 is kept.
constexpr unsigned int kFourthByte = 0xff000000u;

template <typename V, typename T>
[[gnu::always_inline]] inline V load(const T* p) {
    V v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
template <typename V, typename T>
[[gnu::always_inline]] inline void store(T* p, const V& v) {
    std::memcpy(p, &v, sizeof v);
}
[[gnu::always_inline]] inline Floats splat(float v) {
    return Floats{} + v;
}
[[gnu::always_inline]] inline Floats larger(const Floats& a, const Floats& b) {
    return a < b ? b : a;
}
[[gnu::always_inline]] inline Floats smaller(const Floats& a, const Floats& b) {
    return b < a ? b : a;
}

// Integral floats 0..255 (or byte values) as fractions of 255.
[[gnu::always_inline]] inline Floats fraction(const Floats& x) {
    return __builtin_convertvector(__builtin_convertvector(x, Doubles) * kByteFraction, Floats);
}
[[gnu::always_inline]] inline Floats fraction(const Words& x) {
    return fraction(__builtin_convertvector(__builtin_convertvector(x, Ints), Floats));
}
// round(v x 255) saturated to 0..255, as an integral float.
[[gnu::always_inline]] inline Floats rounded(const Floats& v) {
    const Floats r = (v * 255.f + kRoundMagic) - kRoundMagic;
    return smaller(larger(r, splat(0.f)), splat(255.f));
}
[[gnu::always_inline]] inline Words byteOf(const Floats& v) {
    return __builtin_convertvector(__builtin_convertvector(rounded(v), Ints), Words);
}

struct Triple {
    Floats a, b, c;
};

// Byte `shift / 8` of each pixel word as a fraction of 255.
[[gnu::always_inline]] inline Floats channel(const Words& w, int shift) {
    return fraction((w >> shift) & 255u);
}
[[gnu::always_inline]] inline Words pack(const Words& old, const Triple& t) {
    return (old & kFourthByte) | byteOf(t.a) | byteOf(t.b) << 8 | byteOf(t.c) << 16;
}

// r, g, b in 0..1 to h (fraction of a turn), l, s in 0..1.
[[gnu::always_inline]] inline Triple toHls(const Floats& r, const Floats& g, const Floats& b) {
    const Floats hi = larger(r, larger(g, b));
    const Floats lo = smaller(r, smaller(g, b));
    const Floats l = 0.5f * (hi + lo);
    const Floats span = hi - lo;
    // Each quotient's operands are selected first: the same division on the
    // same operands, one divide per value instead of one per arm.
    const Floats s = span / (l <= 0.5f ? hi + lo : 2.f - hi - lo);
    const Floats hueSpan = (r == hi ? g - b : (g == hi ? b - r : r - g)) / span;
    const Floats h = (r == hi ? hueSpan : (g == hi ? 2.f + hueSpan : 4.f + hueSpan)) / 6.f;
    const auto grey = hi == lo;
    return {grey ? splat(0.f) : (h < 0.f ? h + 1.f : h), l, grey ? splat(0.f) : s};
}

// One channel of the inverse at hue h in [-1, 2) turns.
[[gnu::always_inline]] inline Floats hueToChannel(const Floats& m1, const Floats& m2,
                                                  const Floats& turns) {
    const Floats h = turns < 0.f ? turns + 1.f : (turns >= 1.f ? turns - 1.f : turns);
    const Floats rising = m1 + (m2 - m1) * h * 6.f;
    const Floats falling = m1 + (m2 - m1) * (2.f / 3.f - h) * 6.f;
    return h < 1.f / 6.f ? rising : (h < 0.5f ? m2 : (h < 2.f / 3.f ? falling : m1));
}

[[gnu::always_inline]] inline Triple toRgb(const Floats& h, const Floats& l, const Floats& s) {
    const Floats m2 = l <= 0.5f ? l * (1.f + s) : l + s - l * s;
    const Floats m1 = 2.f * l - m2;
    const auto grey = s == 0.f;
    return {grey ? l : hueToChannel(m1, m2, h + 1.f / 3.f), grey ? l : hueToChannel(m1, m2, h),
            grey ? l : hueToChannel(m1, m2, h - 1.f / 3.f)};
}

// Runs step(src, dst) on groups of eight pixels; a last short group goes
// through a copy padded with zero pixels.
template <typename Step>
[[gnu::always_inline]] inline void byGroups(const unsigned char* src, unsigned char* dst, int n,
                                            Step step) {
    int x = 0;
    for (; x + kLanes <= n; x += kLanes) step(src + kPixelBytes * x, dst + kPixelBytes * x, x);
    if (x == n) return;
    unsigned char in[kLanes * kPixelBytes] = {}, out[kLanes * kPixelBytes];
    const std::size_t bytes = static_cast<std::size_t>(kPixelBytes) * (n - x);
    std::memcpy(in, src + kPixelBytes * x, bytes);
    std::memcpy(out, dst + kPixelBytes * x, bytes);
    step(in, out, x);
    std::memcpy(dst + kPixelBytes * x, out, bytes);
}

KC_TEMPLATE_AVX2_CLONES
void rgbToHlsRow(const unsigned char* src, unsigned char* dst, int n, int redShift) {
    byGroups(src, dst, n, [redShift](const unsigned char* s, unsigned char* d, int) {
        const Words w = load<Words>(s);
        const Triple t = toHls(channel(w, redShift), channel(w, 8), channel(w, 16 - redShift));
        store(d, pack(load<Words>(d), t));
    });
}

KC_TEMPLATE_AVX2_CLONES
void hlsToRgbRow(const unsigned char* src, unsigned char* dst, int n) {
    byGroups(src, dst, n, [](const unsigned char* s, unsigned char* d, int) {
        const Words w = load<Words>(s);
        store(d, pack(load<Words>(d), toRgb(channel(w, 0), channel(w, 8), channel(w, 16))));
    });
}

// Hue and lightness of a chunk, already rounded to bytes and back, wait in
// these planes while the saturation is adjusted.
struct HueLightness {
    float h[kHlsChunk], l[kHlsChunk];
};

KC_TEMPLATE_AVX2_CLONES
void chunkToHls(unsigned char* row, int n, HueLightness& hl, SaturationChunk& c) {
    byGroups(row, row, n, [&](const unsigned char* s, unsigned char*, int x) {
        const Words w = load<Words>(s);
        const Triple t = toHls(channel(w, 0), channel(w, 8), channel(w, 16));
        store(hl.h + x, fraction(rounded(t.a)));
        store(hl.l + x, fraction(rounded(t.b)));
        store(c.s + x, byteOf(t.c));
    });
}

KC_TEMPLATE_AVX2_CLONES
void chunkToRgb(const HueLightness& hl, const SaturationChunk& c, unsigned char* row, int n) {
    byGroups(row, row, n, [&](const unsigned char*, unsigned char* d, int x) {
        const Triple t =
            toRgb(load<Floats>(hl.h + x), load<Floats>(hl.l + x), fraction(load<Words>(c.s + x)));
        store(d, pack(load<Words>(d), t));
    });
}

}  // namespace

void rgbRowToHls(const unsigned char* src, unsigned char* dst, int n, HlsSourceOrder order) {
    rgbToHlsRow(src, dst, n, order == HlsSourceOrder::Rgb ? 0 : 16);
}

void hlsRowToRgb(const unsigned char* src, unsigned char* dst, int n) {
    hlsToRgbRow(src, dst, n);
}

void adjustSaturationInHls(unsigned char* row, int n,
                           const std::function<void(SaturationChunk&)>& adjust) {
    HueLightness hl;
    SaturationChunk c;
    for (int x = 0; x < n; x += kHlsChunk) {
        c.x0 = x;
        c.n = std::min(kHlsChunk, n - x);
        unsigned char* chunk = row + kPixelBytes * x;
        chunkToHls(chunk, c.n, hl, c);
        adjust(c);
        chunkToRgb(hl, c, chunk, c.n);
    }
}
