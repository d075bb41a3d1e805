// Fuzz target for rkMaskBBox on 8- and 16-bit maps: odd row steps, 16-bit
// maps at odd addresses, null outputs, and broken sizes. The box is checked
// against a plain scan of the map: every work pixel (neither value) inside
// it, 12 pixels of margin clipped to the map, no box under 24 rows, and the
// counts of the two values inside it.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "guarded_buffer.h"

namespace {

using namespace kc_fuzz;

constexpr int kMaxSide = 48;
constexpr int kMaxStepPadding = 5;
constexpr int kBrokenOdds = 24;
// The box's margin around the work, and the fewest rows a box may have.
constexpr int kMargin = 12;
constexpr int kMinRows = 24;
// What an output holds before the call, to tell a written one from a left one.
constexpr int kUnwritten = -77777;

struct Box {
    int x = kUnwritten, w = kUnwritten, y = kUnwritten, h = kUnwritten;
    int countA = kUnwritten, countB = kUnwritten;
};

// The box the header describes, from a plain scan. The right edge is found
// only right of the left one, so a band in column 0 alone keeps a width of 1.
Box expectedBox(const GuardedBuffer& map, bool wide, int width, int height, int a, int b) {
    auto at = [&](int x, int y) {
        return wide ? map.cur(x, y, 0) | (map.cur(x, y, 1) << 8) : map.cur(x, y);
    };
    int top = height, bottom = -1, first = width, last = -1;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int v = at(x, y);
            if (v == a || v == b) continue;
            top = std::min(top, y), bottom = std::max(bottom, y);
            first = std::min(first, x), last = std::max(last, x);
        }
    // Each edge is searched only beyond the one before it; a map without work
    // starts below its last row.
    Box box;
    const int y0 = top < height ? std::max(top - kMargin, 0) : height;
    const int y1 = std::min(bottom > y0 ? bottom + kMargin : y0, height - 1);
    if (y1 - y0 + 1 < kMinRows) {
        box.x = box.w = box.y = box.h = 0;
        box.countA = box.countB = -1;
        return box;
    }
    const int x0 = first < width ? std::max(first - kMargin, 0) : width;
    if (x0 == width) return box;  // no column holds work: nothing is written
    const int x1 = std::min(last > x0 ? last + kMargin : x0, width - 1);
    box.x = x0, box.w = x1 - x0 + 1, box.y = y0, box.h = y1 - y0 + 1;
    box.countA = box.countB = 0;
    for (int y = y0; y <= y1; ++y)
        for (int x = x0; x <= x1; ++x) {
            box.countA += at(x, y) == a;
            box.countB += at(x, y) == b;
        }
    return box;
}

std::string describe(const Box& b) {
    return "x " + std::to_string(b.x) + " w " + std::to_string(b.w) + " y " + std::to_string(b.y) +
           " h " + std::to_string(b.h) + " counts " + std::to_string(b.countA) + ", " +
           std::to_string(b.countB);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    const bool wide = in.flag();
    const int pixelBytes = wide ? 2 : 1;
    const Size sides = decodeSize(in, kMaxSide, kBrokenOdds);
    const int width = sides.w, height = sides.h;
    HostBuffer host(
        width, height, pixelBytes,
        decodePaddedLayout(in, width, pixelBytes, kMaxStepPadding, 2 * pixelBytes, kBrokenOdds));
    GuardedBuffer& map = host.buf;

    // Values: the two settled ones (often keep and cut, or arbitrary, beyond
    // an 8-bit map's range too) and a palette of work values.
    int valueA = 255, valueB = 1;
    if (in.flag())
        valueA = in.range(-1, wide ? 65536 : 256), valueB = in.range(-1, wide ? 65536 : 256);
    const int work[2] = {wide ? in.word() : in.byte(), wide ? in.word() : in.byte()};
    const int palette[4] = {valueA, valueB, work[0], work[1]};
    // Work sits in a few rectangles (on a settled background) and stray pixels.
    std::vector<int> v(static_cast<size_t>(std::max(width, 0)) * std::max(height, 0),
                       palette[in.range(0, 1)]);
    for (int k = in.range(0, 3); k > 0; --k) {
        const int x0 = in.range(0, kMaxSide), y0 = in.range(0, kMaxSide);
        const int x1 = x0 + in.range(0, kMaxSide), y1 = y0 + in.range(0, kMaxSide);
        const int value = palette[in.range(0, 3)];
        for (int y = y0; y < std::min(y1, height); ++y)
            for (int x = x0; x < std::min(x1, width); ++x)
                v[static_cast<size_t>(y) * width + x] = value;
    }
    for (int k = in.range(0, 6); k > 0 && !v.empty(); --k)
        v[in.word() % v.size()] = palette[in.range(0, 3)];
    map.fill([&](int x, int y, int c) {
        const int value = v[static_cast<size_t>(y) * width + x];
        return static_cast<unsigned char>(c == 0 ? value & 255 : (value >> 8) & 255);
    });

    Box out;
    const bool nullBox = in.rarely(kBrokenOdds);
    const bool nullA = in.rarely(4), nullB = in.rarely(4);
    const bool mustRefuse = !host.usable() || nullBox;
    map.snapshot();
    clearErrMsg();
    const int result =
        rkMaskBBox(wide, host.ptr(), map.rowBytes(), width, height, &out.x,
                   nullBox ? nullptr : &out.w, &out.y, &out.h, nullA ? nullptr : &out.countA,
                   nullB ? nullptr : &out.countB, in.byte(), valueA, valueB);
    requireResult(kMaskBBoxResults, result, mustRefuse);
    requireNone(map.unexpectedChange("map"));
    if (result != 1) {
        require(out.x == kUnwritten && out.y == kUnwritten && out.h == kUnwritten &&
                    out.countA == kUnwritten && out.countB == kUnwritten,
                "a failed rkMaskBBox wrote its outputs");
        return 0;
    }
    Box want = expectedBox(map, wide, width, height, valueA, valueB);
    // Counts are written only in pairs (or as -1 with no box).
    if (nullA || (nullB && want.w > 0)) want.countA = kUnwritten;
    if (nullB || (nullA && want.w > 0)) want.countB = kUnwritten;
    require(std::memcmp(&out, &want, sizeof out) == 0,
            "rkMaskBBox gave " + describe(out) + ", expected " + describe(want));
    return 0;
}
