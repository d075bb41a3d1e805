// Fuzz target for the editing entries: rkFloodFillAlpha, rkColorRangeSelect,
// rkMergeAlphaRect, rkAlphaMerge and rkAlphaShift, with sound and broken
// arguments. Checks: a documented result, refusal exactly for refused
// arguments (with a log line, nothing touched); the flood fill against a
// plain 8-connected walk of the seed's class; colour range writing only
// unpainted bytes under its box whose colour is within tolerance; the paste
// staying between src and dst and equal to src away from the border; the
// merge's exact bytes; the shift changing nothing.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "guarded_buffer.h"
#include "request_fixture.h"

namespace {

using namespace kc_fuzz;

const DocumentedResults kFloodFillResults{"rkFloodFillAlpha", {1, -1, -2, -3, -6}};
const DocumentedResults kColorRangeResults{"rkColorRangeSelect", {1, -2, -6}};
const DocumentedResults kMergeRectResults{"rkMergeAlphaRect", {1, -2, 102}};
const DocumentedResults kAlphaMergeResults{"rkAlphaMerge", {1, -2}};
const DocumentedResults kAlphaShiftResults{"rkAlphaShift", {1, -2, -6}};

constexpr int kNullOdds = 32;
// Largest radius a stroke may have (a line is at most 32767 thick).
constexpr int kMaxRadius = 16383;
constexpr int kColourBytes = 3;

// A map of w x h with its own layout, sometimes broken.
struct Plane : HostBuffer {
    Plane(FuzzInput& in, int w, int h, int pixelBytes)
        : HostBuffer(w, h, pixelBytes, decodeLayout(in, w, pixelBytes)) {}
};

int fillClass(int v) {
    return v == 1 ? 0 : v == 255 ? 1 : 2;
}

void fuzzFloodFill(FuzzInput& in) {
    constexpr const char* kEntry = "rkFloodFillAlpha";
    const Size sides = decodeSize(in, kMaxSide, kBrokenOdds);
    const int w = sides.w, h = sides.h;
    Plane map(in, w, h, 1);
    const std::vector<unsigned char> codes = drawMap(in, w, h);
    map.buf.fill([&](int x, int y, int) { return codes[static_cast<size_t>(y) * w + x]; });
    // Seeds mostly on the map, now and then just off it.
    auto coordinate = [&](int extent) {
        return in.range(0, 7) ? in.range(0, std::max(extent - 1, 0)) : in.range(-2, extent + 1);
    };
    const int seedX = coordinate(w), seedY = coordinate(h);
    const char fillType = static_cast<char>(in.range(0, 5) < 5 ? in.range(0, 2) : in.range(-3, 9));
    const bool nullRect = in.rarely(kNullOdds);
    int rect[4] = {-7, -7, -7, -7};
    const bool mustRefuse = !map.usable() || nullRect;
    map.buf.snapshot();
    clearErrMsg();
    const int result =
        rkFloodFillAlpha(map.ptr(), map.buf.rowBytes(), w, h, seedX, seedY, in.byte(), in.byte(),
                         fillType, in.word(), nullRect ? nullptr : rect);
    requireResult(kFloodFillResults, result, mustRefuse);
    if (result == kRefused) {
        require(rect[0] == -7 && rect[3] == -7, "a refused flood fill wrote rect");
        return requireNone(map.buf.unexpectedChange(kEntry));
    }
    const bool outside = seedX < 0 || seedY < 0 || seedX >= w || seedY >= h;
    require((result == -3) == outside,
            "flood fill gave " + std::to_string(result) + " for seed" + at(seedX, seedY));
    if (result != 1) {
        require(rect[0] == 0 && rect[1] == 0 && rect[2] == 0 && rect[3] == 0,
                "a failed flood fill left rect unzeroed");
        return requireNone(map.buf.unexpectedChange(kEntry));
    }

    // The seed's 8-connected class area, walked plainly.
    const int seed = map.buf.old(seedX, seedY), cls = fillClass(seed);
    const unsigned char code = fillType == 0 ? 1 : fillType == 1 ? 255 : 126;
    const bool already = (fillType >= 0 && fillType <= 2 && seed == code);
    std::vector<char> area(static_cast<size_t>(w) * h, 0);
    std::vector<int> stack{seedY * w + seedX};
    area[stack[0]] = 1;
    int x0 = w, y0 = h, x1 = -1, y1 = -1;
    while (!stack.empty()) {
        const int p = stack.back(), px = p % w, py = p / w;
        stack.pop_back();
        x0 = std::min(x0, px), x1 = std::max(x1, px), y0 = std::min(y0, py), y1 = std::max(y1, py);
        for (int ny = std::max(py - 1, 0); ny <= std::min(py + 1, h - 1); ++ny)
            for (int nx = std::max(px - 1, 0); nx <= std::min(px + 1, w - 1); ++nx)
                if (!area[ny * w + nx] && fillClass(map.buf.old(nx, ny)) == cls)
                    area[ny * w + nx] = 1, stack.push_back(ny * w + nx);
    }
    int want[4] = {x0, y0, x1 - x0 + 1, y1 - y0 + 1};
    if (already) want[0] = want[1] = want[2] = want[3] = 0;
    if (fillType == 2 && !already) want[0] = want[1] = 0, want[2] = w, want[3] = h;
    require(std::equal(rect, rect + 4, want),
            "flood fill rect " + std::to_string(rect[0]) + "," + std::to_string(rect[1]) + "," +
                std::to_string(rect[2]) + "," + std::to_string(rect[3]));
    const bool writes = fillType >= 0 && fillType <= 2 && !already;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int expect = writes && area[y * w + x] ? code : map.buf.old(x, y);
            require(map.buf.cur(x, y) == expect,
                    "flood fill wrote " + std::to_string(map.buf.cur(x, y)) + at(x, y));
        }
    requireNone(map.buf.unexpectedChange(kEntry, anyPixel));
}

void fuzzColorRange(FuzzInput& in) {
    constexpr const char* kEntry = "rkColorRangeSelect";
    RequestFixture f(in);
    const int x1 = in.range(-8, kMaxSide + 8), y1 = in.range(-8, kMaxSide + 8);
    const int x2 = in.range(-8, kMaxSide + 8), y2 = in.range(-8, kMaxSide + 8);
    int radius = in.range(0, 12);
    if (in.rarely(kBrokenOdds)) radius = in.flag() ? in.range(-3, -1) : kMaxRadius + in.range(0, 2);
    unsigned char color[3] = {in.byte(), in.byte(), in.byte()};
    // Mostly a colour of the picture, so that some pixels fall in range.
    if (in.range(0, 3) && f.usable(f.image, f.nullImage) && f.w > 0 && f.h > 0) {
        const int px = in.range(0, f.w - 1), py = in.range(0, f.h - 1);
        for (int k = 0; k < 3; ++k) color[k] = *f.image->at(px, py, 2 - k);
    }
    const int tolerance = in.range(-4, 60);
    const bool keep = in.flag(), nullColor = in.rarely(kNullOdds),
               nullRequest = in.rarely(kNullOdds);
    const bool mustRefuse = nullRequest || nullColor || !f.usable(f.image, f.nullImage) ||
                            !f.usable(f.mask, f.nullMask) || radius < 0 || radius > kMaxRadius;
    f.beginCall();
    const int result = rkColorRangeSelect(nullRequest ? nullptr : &f.request, x1, y1, x2, y2,
                                          radius, nullColor ? nullptr : color, tolerance, keep);
    requireResult(kColorRangeResults, result, mustRefuse);
    if (result != 1) return f.requireUntouched(kEntry);

    const unsigned char code = keep ? 255 : 1;
    // The stroke's box, clamped into the picture: a stroke beside the picture
    // still reaches its edge column or row.
    const int left = std::min(std::max(std::min(x1, x2) - radius, 0), f.w - 1);
    const int right = std::max(std::min(std::max(x1, x2) + radius, f.w - 1), 0);
    const int top = std::min(std::max(std::min(y1, y2) - radius, 0), f.h - 1);
    const int bottom = std::max(std::min(std::max(y1, y2) + radius, f.h - 1), 0);
    requireNone(f.mask->unexpectedChange(kEntry, [&](int x, int y, int) {
        const int db = f.image->old(x, y, 0) - color[2], dg = f.image->old(x, y, 1) - color[1],
                  dr = f.image->old(x, y, 2) - color[0];
        return !(f.mask->old(x, y) & 1) && f.mask->cur(x, y) == code && x >= left && x <= right &&
               y >= top && y <= bottom && db * db + dg * dg + dr * dr < tolerance * tolerance;
    }));
    for (const auto* b : {&*f.image, &*f.brush, &*f.foreground})
        requireNone(b->unexpectedChange(kEntry));
}

void fuzzMergeRect(FuzzInput& in) {
    constexpr const char* kEntry = "rkMergeAlphaRect";
    const Size sides = decodeSize(in, kMaxSide, kBrokenOdds);
    const int w = sides.w, h = sides.h;
    Plane src(in, w, h, 1), dst(in, w, h, 1);
    Noise rng(in.dword());
    const int srcBase = in.byte(), dstBase = in.byte(), spread = in.byte();
    auto value = [&](int base) {
        return static_cast<unsigned char>(base ^ (rng.next() % (spread + 1)));
    };
    src.buf.fill([&](int, int, int) { return value(srcBase); });
    dst.buf.fill([&](int, int, int) { return value(dstBase); });
    const int border = in.range(0, 9) ? in.range(-2, 30) : static_cast<int>(in.dword());
    const bool mustRefuse = !src.usable() || !dst.usable();
    src.buf.snapshot(), dst.buf.snapshot();
    clearErrMsg();
    const int result = rkMergeAlphaRect(src.ptr(), src.buf.rowBytes(), dst.ptr(),
                                        dst.buf.rowBytes(), w, h, border);
    requireResult(kMergeRectResults, result, mustRefuse);
    requireNone(src.buf.unexpectedChange("src"));
    if (result != 1) return requireNone(dst.buf.unexpectedChange(kEntry));
    requireNone(dst.buf.unexpectedChange(kEntry, anyPixel));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int s = src.buf.old(x, y), d = dst.buf.old(x, y), v = dst.buf.cur(x, y);
            require(v >= std::min(s, d) && v <= std::max(s, d),
                    "paste left src and dst" + at(x, y));
            const long long fromEdge = std::min({x, y, w - 1 - x, h - 1 - y});
            if (border <= 0 || fromEdge >= border) require(v == s, "paste is not src" + at(x, y));
        }
}

void fuzzAlphaMergeOrShift(FuzzInput& in, bool merge) {
    const char* entry = merge ? "rkAlphaMerge" : "rkAlphaShift";
    const Size sides = decodeSize(in, kMaxSide, kBrokenOdds);
    const int w = sides.w, h = sides.h;
    Plane image(in, w, h, kPictureBytes), mask(in, w, h, 1);
    Noise rng(in.dword());
    const int maskMax = in.range(0, 3) ? 1 : 255;
    image.buf.fill([&](int, int, int) { return static_cast<unsigned char>(rng.next()); });
    mask.buf.fill(
        [&](int, int, int) { return static_cast<unsigned char>(rng.next() % (maskMax + 1)); });
    float factor = static_cast<float>(in.range(-400, 400)) / 100.0f;
    if (in.rarely(8)) {  // any bit pattern: infinities and NaN included
        const uint32_t bits = in.dword();
        std::memcpy(&factor, &bits, sizeof factor);
    }
    std::memcpy(&factor, std::vector<uint8_t>{in.byte(), in.byte(), in.byte(), in.byte()}.data(),
                4);
    const bool mustRefuse = !image.usable() || !mask.usable();
    image.buf.snapshot(), mask.buf.snapshot();
    clearErrMsg();
    const int result = merge ? rkAlphaMerge(image.ptr(), image.buf.rowBytes(), w, h, mask.ptr(),
                                            mask.buf.rowBytes(), factor)
                             : rkAlphaShift(image.ptr(), image.buf.rowBytes(), w, h, mask.ptr(),
                                            mask.buf.rowBytes(), factor);
    requireResult(merge ? kAlphaMergeResults : kAlphaShiftResults, result, mustRefuse);
    if (!merge || result != 1) {
        requireNone(image.buf.unexpectedChange(entry));
        return requireNone(mask.buf.unexpectedChange(entry));
    }
    requireNone(
        image.buf.unexpectedChange(entry, [](int, int, int c) { return c < kColourBytes; }));
    requireNone(mask.buf.unexpectedChange(entry, anyPixel));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            require(mask.buf.cur(x, y) == 255, "merged mask is not 255" + at(x, y));
            for (int c = 0; c < kColourBytes; ++c)
                require(image.buf.cur(x, y, c) ==
                            static_cast<unsigned char>(mask.buf.old(x, y) * image.buf.old(x, y, c)),
                        "merged colour byte" + at(x, y));
        }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    static void (*const kEntries[])(FuzzInput&) = {
        fuzzFloodFill, fuzzColorRange, fuzzMergeRect,
        [](FuzzInput& in) { fuzzAlphaMergeOrShift(in, true); },
        [](FuzzInput& in) { fuzzAlphaMergeOrShift(in, false); }};
    kEntries[in.range(0, 4)](in);
    return 0;
}
