// Fuzz target for the foreground recovery entries: rkRecoverForegroundCell
// (whole-picture and region jobs) and the recovery-only pass. Checks after
// each call: a documented result, refusal exactly for refused arguments (with
// a log line, nothing touched), the picture, map and brushInfo left alone by
// the recovery of a region, only the region's three colour bytes written,
// the picture's own colour where the map is settled, and for the pass its
// private copy of the map (request and brushInfo untouched, painted bytes
// intact).
#include <cstdint>
#include <cstring>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "request_fixture.h"

namespace {

using namespace kc_fuzz;

constexpr int kNullRequestOdds = 64;
// The colour bytes of a four-byte pixel; the fourth is never written.
constexpr int kColourBytes = 3;
// Map bytes at or beyond these are settled: the picture is its own foreground.
constexpr int kSettledBelowOrAt = 5;
constexpr int kSettledFrom = 250;

void fuzzCell(RequestFixture& f, FuzzInput& in) {
    constexpr const char* kEntry = "rkRecoverForegroundCell";
    const bool cellJob = in.flag();
    const bool nullRequest = in.rarely(kNullRequestOdds);
    const bool mustRefuse = nullRequest || !f.usable(f.image, f.nullImage) ||
                            !f.usable(f.mask, f.nullMask) ||
                            !f.usable(f.foreground, f.nullForeground) ||
                            (!f.nullBrush && !f.brush->valid()) || !f.regionInside(f.request);
    f.beginCall();
    const int result = rkRecoverForegroundCell(nullRequest ? nullptr : &f.request, cellJob);
    requireResult(kForegroundCellResults, result, mustRefuse);
    if (result == kRefused) return f.requireUntouched(kEntry);

    require(std::memcmp(&f.request, &f.before, sizeof f.request) == 0,
            "rkRecoverForegroundCell changed the request record");
    requireNone(f.image->unexpectedChange("image"));
    requireNone(f.mask->unexpectedChange("mask"));
    requireNone(f.brush->unexpectedChange("brushInfo"));
    requireNone(f.foreground->unexpectedChange(
        "foreground", [&](int x, int y, int c) { return c < kColourBytes && f.inRegion(x, y); }));
    if (result != 1 || cellJob) return;
    // A whole-picture job replaces the colours: settled pixels show the
    // picture itself.
    for (int y = 0; y < f.h; ++y)
        for (int x = 0; x < f.w; ++x) {
            if (!f.inRegion(x, y)) continue;
            const int m = f.mask->old(x, y);
            const int b = f.nullBrush ? -1 : f.brush->old(x, y);
            if (m > kSettledBelowOrAt && m < kSettledFrom && b != 255 && b != 1) continue;
            for (int c = 0; c < kColourBytes; ++c)
                require(f.foreground->cur(x, y, c) == f.image->old(x, y, c),
                        "foreground" + at(x, y) +
                            " is not the picture's own colour where the map is settled");
        }
}

void fuzzComputeOnly(RequestFixture& f, FuzzInput& in) {
    constexpr const char* kEntry = "rkRecoverDuringComputeOnly";
    const bool nullRequest = in.rarely(kNullRequestOdds);
    const bool mustRefuse = nullRequest || !f.usable(f.image, f.nullImage) ||
                            !f.usable(f.mask, f.nullMask) ||
                            !f.usable(f.foreground, f.nullForeground);
    f.beginCall();
    const int result = rkRecoverDuringComputeOnly(nullRequest ? nullptr : &f.request);
    requireResult(kComputeOnlyResults, result, mustRefuse);
    if (result == kRefused) return f.requireUntouched(kEntry);

    // The pass works on a private copy of the request and of the map.
    require(std::memcmp(&f.request, &f.before, sizeof f.request) == 0,
            "rkRecoverDuringComputeOnly changed the request record");
    requireNone(f.image->unexpectedChange("image"));
    requireNone(f.brush->unexpectedChange("brushInfo"));
    auto anywhere = [](int, int, int = 0) { return true; };
    requireNone(f.mask->unexpectedChange("mask", anywhere));
    requireNone(f.foreground->unexpectedChange("foreground", anywhere));
    f.requirePaintedKept(kEntry, anywhere, true, f.request.mergeMode);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    RequestFixture f(in);
    (in.flag() ? fuzzCell : fuzzComputeOnly)(f, in);
    return 0;
}
