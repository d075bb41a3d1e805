// Fuzz target for the display entries: rkShowImageAlpha in every mode,
// rkScaleAlpha, rkShowKeepBlend and rkDesaturation on guarded host buffers,
// with broken sizes, short rows, null buffers, equal hi and lo and
// non-finite weights now and then. Outputs are checked pixel by pixel
// against plain references (integer arithmetic with ties to even for the
// scaled 8-bit products), refusals must log a line and touch nothing, and
// nothing outside the pixels (guards, row padding) may ever change.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "api/keepcut.h"
#include "core/ipp_primitives.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "guarded_buffer.h"

namespace {

using namespace kc_fuzz;

const DocumentedResults kShowImageAlphaResults{"rkShowImageAlpha", {1, -2, -6, 102}};
const DocumentedResults kScaleAlphaResults{"rkScaleAlpha", {1, -2, -6, 102}};
const DocumentedResults kDesaturationResults{"rkDesaturation", {1, -2, -6, 102}};

constexpr int kMaxSide = 24;
constexpr int kMaxStepPadding = 6;
constexpr int kBrokenOdds = 24;
constexpr int kPictureBytes = 4;

// x / 2^bits rounded to nearest with ties to even, saturated to a byte.
int roundShift(long long x, int bits) {
    long long q = x >> bits;
    const long long r = x & ((1LL << bits) - 1), half = 1LL << (bits - 1);
    if (r > half || (r == half && (q & 1))) ++q;
    return static_cast<int>(q > 255 ? 255 : q);
}

// The stretch of one map byte as the header states it.
int scaled(int a, int hi, int lo) {
    const int d = hi - lo;
    if (d == 255) return a;
    const int k = static_cast<unsigned char>(std::min(8160 / d, 255));
    return roundShift(static_cast<long long>(std::max(a - lo, 0)) * k, 5);
}

// A host buffer of the drawn size, filled with noise, with an occasionally
// broken step, or null.
struct NoiseBuffer : HostBuffer {
    NoiseBuffer(FuzzInput& in, Size l, int pixelBytes)
        : HostBuffer(l.w, l.h, pixelBytes,
                     decodePaddedLayout(in, l.w, pixelBytes, kMaxStepPadding, pixelBytes + 1,
                                        kBrokenOdds)) {
        Noise noise(in.dword());
        buf.fill([&](int, int, int) { return static_cast<unsigned char>(noise.next() >> 7); });
    }
    bool refused() const { return !usable(); }
};

// A map whose bytes favour the codes: keep, cut, 0, odd and even values.
void paintMap(FuzzInput& in, GuardedBuffer& map) {
    const unsigned char palette[4] = {255, 1, 0, in.byte()};
    const bool codes = in.flag();
    Noise noise(in.dword());
    map.fill([&](int, int, int) {
        const uint32_t r = noise.next();
        return codes ? palette[r % 4] : static_cast<unsigned char>(r >> 9);
    });
}

void fuzzShowImageAlpha(FuzzInput& in, Size l) {
    NoiseBuffer image(in, l, kPictureBytes), mask(in, l, 1);
    paintMap(in, mask.buf);
    const int mode = in.rarely(8) ? in.range(-2, 9) : in.range(1, 6);
    const unsigned char hi = in.byte(), lo = in.rarely(6) ? hi : in.byte();
    unsigned char colorBytes[3] = {in.byte(), in.byte(), in.byte()};
    const bool nullColor = in.rarely(kBrokenOdds);
    const bool readsColour = mode == 3 || mode == 4 || mode == 6;
    const bool stretches = mode >= 3 && mode <= 6;
    const bool mustRefuse =
        image.refused() || mask.refused() || (readsColour && nullColor) || (stretches && hi == lo);
    image.buf.snapshot();
    mask.buf.snapshot();
    clearErrMsg();
    const int result =
        rkShowImageAlpha(image.ptr(), image.buf.rowBytes(), l.w, l.h, mask.ptr(),
                         mask.buf.rowBytes(), hi, lo, mode, nullColor ? nullptr : colorBytes);
    requireResult(kShowImageAlphaResults, result, mustRefuse);
    requireNone(mask.buf.unexpectedChange("mask"));
    if (result != 1) {
        requireNone(image.buf.unexpectedChange("image"));
        return;
    }
    requireNone(image.buf.unexpectedChange("image", anyPixel));
    for (int y = 0; y < l.h; ++y)
        for (int x = 0; x < l.w; ++x) {
            const int m = mask.buf.cur(x, y);
            const int a = stretches ? scaled(m, hi, lo) : 0;
            for (int c = 0; c < kPictureBytes; ++c) {
                const int v = image.buf.old(x, y, c);
                int want = v;
                if (mode == 1 && c < 3) {
                    // Darkened to 7/8, then tinted on the code's channel.
                    want = roundShift(v * 7, 3);
                    const bool tint = (m & 1) == 0 ? c == 0
                                      : m == 255   ? c == 1
                                      : m == 1     ? c == 2
                                                   : c != 0;
                    if (tint) want = std::min(want + 85, 255);
                } else if (mode == 2) {
                    const int lit = m == 0 ? 2 : m == 255 ? 1 : 0;
                    want = c == 3 || c == lit ? 255 : 0;
                } else if (stretches) {
                    const int k = colorBytes[2 - std::min(c, 2)];
                    const int over = mode == 4 ? 255 - a : a, under = 255 - over;
                    want = c == 3 ? 255
                           : mode == 5
                               ? a
                               : std::min(roundShift(over * v, 8) + roundShift(under * k, 8), 255);
                }
                require(image.buf.cur(x, y, c) == want,
                        "mode " + std::to_string(mode) + " pixel (" + std::to_string(x) + ", " +
                            std::to_string(y) + ") byte " + std::to_string(c) + " is " +
                            std::to_string(image.buf.cur(x, y, c)) + ", expected " +
                            std::to_string(want));
            }
        }
}

void fuzzScaleAlpha(FuzzInput& in, Size l) {
    NoiseBuffer alpha(in, l, 1);
    paintMap(in, alpha.buf);
    const unsigned char hi = in.byte(), lo = in.rarely(6) ? hi : in.byte();
    const int keepPainted = in.flag() ? 0 : in.range(1, 255);
    alpha.buf.snapshot();
    clearErrMsg();
    const int result =
        rkScaleAlpha(alpha.ptr(), alpha.buf.rowBytes(), l.w, l.h, hi, lo, keepPainted);
    requireResult(kScaleAlphaResults, result, alpha.refused() || hi == lo);
    if (result != 1) {
        requireNone(alpha.buf.unexpectedChange("alpha"));
        return;
    }
    requireNone(alpha.buf.unexpectedChange("alpha", anyPixel));
    for (int y = 0; y < l.h; ++y)
        for (int x = 0; x < l.w; ++x) {
            const int old = alpha.buf.old(x, y);
            int want = scaled(old, hi, lo);
            // Painted bytes survive keepPainted; the full range is never touched.
            if (keepPainted && hi - lo != 255) want = (old & 1) ? old : want & ~1;
            require(alpha.buf.cur(x, y) == want,
                    "rkScaleAlpha hi " + std::to_string(hi) + " lo " + std::to_string(lo) +
                        " keepPainted " + std::to_string(keepPainted) + ": " + std::to_string(old) +
                        " became " + std::to_string(alpha.buf.cur(x, y)) + ", expected " +
                        std::to_string(want));
        }
}

float drawWeight(FuzzInput& in) {
    if (!in.rarely(8)) return static_cast<float>(in.range(0, 1000)) / 1000.0f;
    const float odd[] = {std::numeric_limits<float>::quiet_NaN(),
                         std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity(),
                         -1.5f,
                         2.5f,
                         1e30f};
    return odd[in.range(0, 5)];
}

void fuzzKeepBlend(FuzzInput& in, Size l) {
    NoiseBuffer dst(in, l, kPictureBytes), src(in, l, kPictureBytes);
    const float w = drawWeight(in);
    const bool mustRefuse = dst.refused() || src.refused() || !std::isfinite(w);
    dst.buf.snapshot();
    src.buf.snapshot();
    clearErrMsg();
    rkShowKeepBlend(dst.ptr(), dst.buf.rowBytes(), l.w, l.h, src.ptr(), src.buf.rowBytes(), w);
    requireNone(src.buf.unexpectedChange("src"));
    if (mustRefuse) {
        requireLogged("rkShowKeepBlend");
        requireNone(dst.buf.unexpectedChange("dst"));
        return;
    }
    requireNone(dst.buf.unexpectedChange("dst", [](int, int, int c) { return c < 3; }));
    for (int y = 0; y < l.h; ++y)
        for (int x = 0; x < l.w; ++x)
            for (int c = 0; c < 3; ++c) {
                const float v = src.buf.cur(x, y, c) * w + dst.buf.old(x, y, c) * (1.0f - w);
                const int want = v <= 0.0f ? 0 : v >= 255.0f ? 255 : static_cast<int>(v);
                require(dst.buf.cur(x, y, c) == want, "rkShowKeepBlend gave " +
                                                          std::to_string(dst.buf.cur(x, y, c)) +
                                                          ", expected " + std::to_string(want));
            }
}

void fuzzDesaturation(FuzzInput& in, Size l) {
    NoiseBuffer image(in, l, kPictureBytes), mask(in, l, 1);
    paintMap(in, mask.buf);
    const float s = in.rarely(4) ? 0.0f : drawWeight(in);
    const bool mustRefuse = image.refused() || mask.refused() || !std::isfinite(s);
    image.buf.snapshot();
    mask.buf.snapshot();
    clearErrMsg();
    const int result = rkDesaturation(image.ptr(), image.buf.rowBytes(), l.w, l.h, mask.ptr(),
                                      mask.buf.rowBytes(), s);
    requireResult(kDesaturationResults, result, mustRefuse);
    requireNone(mask.buf.unexpectedChange("mask"));
    if (result != 1) {
        requireNone(image.buf.unexpectedChange("image"));
        return;
    }
    requireNone(image.buf.unexpectedChange("image", [](int, int, int c) { return c < 3; }));
    // Painted pixels, and every pixel at strength 0, show the plain round trip.
    for (int y = 0; y < l.h; ++y)
        for (int x = 0; x < l.w; ++x) {
            if (s != 0.0f && (mask.buf.cur(x, y) & 1) == 0) continue;
            unsigned char pixel[4], hls[4];
            for (int c = 0; c < 4; ++c) pixel[c] = image.buf.old(x, y, c);
            ippiRGBToHLS_8u_AC4R(pixel, 4, hls, 4, {1, 1});
            ippiHLSToRGB_8u_AC4R(hls, 4, pixel, 4, {1, 1});
            for (int c = 0; c < 3; ++c)
                require(image.buf.cur(x, y, c) == pixel[c],
                        "rkDesaturation changed a pixel it must only round-trip");
        }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    static void (*const kEntries[])(FuzzInput&, Size) = {fuzzShowImageAlpha, fuzzScaleAlpha,
                                                         fuzzKeepBlend, fuzzDesaturation};
    const int entry = in.range(0, 3);
    kEntries[entry](in, decodeSize(in, kMaxSide, kBrokenOdds));
    return 0;
}
