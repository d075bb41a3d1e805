// Fuzz target for the main keep/cut entry and recoverBrushInfo: whole-picture
// and region jobs, both passes, small cell modes, every merge mode, with and
// without foreground recovery, and broken requests. After each call it checks
// what the header promises: a documented result, refusal exactly for refused
// arguments (with a log line, nothing touched), writes only inside the
// widened region, painted bytes intact, and the progress data pointer.
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "request_fixture.h"

namespace {

using namespace kc_fuzz;

// Odds (one in N) of passing no request at all.
constexpr int kNullRequestOdds = 64;
// Cell modes at and beyond the accepted range 0..16383.
constexpr int kLargestCellMode = 16383;
constexpr int kOddCellModes[] = {-1, kLargestCellMode, kLargestCellMode + 1, INT_MAX, INT_MIN};

void fuzzKeepCut(RequestFixture& f, FuzzInput& in) {
    constexpr const char* kEntry = "rkKeepCutToAlpha";
    RKPSStructMsk2& r = f.request;
    const int modePick = in.range(0, 15);
    r.cellMode = modePick < 5 ? 0 : modePick < 15 ? in.range(1, 5) : kOddCellModes[in.range(0, 4)];
    // The full-resolution pass of a whole picture solves at least 501 x 501
    // pixels however small the picture: seconds a call under the sanitizers,
    // and the fuzzer's schedule favours exactly such rare inputs. It is left
    // to the pipeline's own tests; region jobs take both passes here.
    const int passPick = in.range(0, 5);
    int hiResPass = passPick < 2 ? 0 : passPick < 4 ? 1 : in.range(-2, 3);
    if (r.cellMode == 0 && hiResPass == 1) hiResPass = 0;
    r.recoverForeground = in.flag();
    const bool progressReady = in.flag();
    const bool nullRequest = in.rarely(kNullRequestOdds);

    const bool mustRefuse = nullRequest || f.keepCutBuffersRefused(r) || r.cellMode < 0 ||
                            r.cellMode > kLargestCellMode;
    f.beginCall();
    const int result = rkKeepCutToAlpha(nullRequest ? nullptr : &r, hiResPass, progressReady);
    // KC_FUZZ_TRACE=1 shows each decoded call, for reading a corpus or a
    // found input.
    if (std::getenv("KC_FUZZ_TRACE"))
        std::fprintf(stderr, "%dx%d region %d,%d %dx%d cellMode %d hiResPass %d recover %d -> %d\n",
                     f.w, f.h, f.before.roiX, f.before.roiY, f.before.roiWidth, f.before.roiHeight,
                     r.cellMode, hiResPass, r.recoverForeground, result);
    requireResult(kKeepCutResults, result, mustRefuse);
    if (result == kRefused) return f.requireUntouched(kEntry);

    // The region only grows, and stays inside the picture; nothing else of
    // the record changes.
    const RKPSStructMsk2& was = f.before;
    require(f.regionInside(r) && r.roiX <= was.roiX && r.roiY <= was.roiY &&
                r.roiX + r.roiWidth >= was.roiX + was.roiWidth &&
                r.roiY + r.roiHeight >= was.roiY + was.roiHeight,
            "the widened region does not hold the asked one inside the picture");
    RKPSStructMsk2 rest;
    std::memcpy(&rest, &r, sizeof rest);
    rest.roiX = was.roiX, rest.roiY = was.roiY;
    rest.roiWidth = was.roiWidth, rest.roiHeight = was.roiHeight;
    require(std::memcmp(&rest, &was, sizeof rest) == 0, "the entry changed more than the region");

    auto inRegion = [&](int x, int y, int = 0) { return f.inRegion(x, y); };
    requireNone(f.image->unexpectedChange("image"));
    requireNone(f.mask->unexpectedChange("mask", inRegion));
    requireNone(f.foreground->unexpectedChange("foreground", inRegion));
    const bool regionJob = r.cellMode != 0;
    if (regionJob) {
        // Region jobs keep the whole map as it was in brushInfo.
        requireNone(f.brush->unexpectedChange("brushInfo", anyPixel));
        for (int y = 0; y < f.h; ++y)
            for (int x = 0; x < f.w; ++x)
                require(f.brush->cur(x, y) == f.mask->old(x, y),
                        "brushInfo does not hold the map as it was before the call");
    } else {
        requireNone(f.brush->unexpectedChange("brushInfo"));
    }
    // Whole-picture jobs restore painted bytes from brushInfo, so the promise
    // holds when the host kept it filled with the map.
    if (regionJob || f.brushIsMaskCopy)
        f.requirePaintedKept(kEntry, inRegion, regionJob && result == 1, r.mergeMode);
}

void fuzzRecoverBrush(RequestFixture& f, FuzzInput& in) {
    constexpr const char* kEntry = "recoverBrushInfo";
    const bool nullRequest = in.rarely(kNullRequestOdds);
    const bool mustRefuse = nullRequest || !f.usable(f.mask, f.nullMask) ||
                            !f.usable(f.brush, f.nullBrush) || !f.regionInside(f.request);
    f.beginCall();
    const int result = recoverBrushInfo(nullRequest ? nullptr : &f.request);
    requireResult(kRecoverBrushResults, result, mustRefuse);
    if (result == kRefused) return f.requireUntouched(kEntry);

    requireNone(f.image->unexpectedChange("image"));
    requireNone(f.brush->unexpectedChange("brushInfo"));
    requireNone(f.foreground->unexpectedChange("foreground"));
    requireNone(
        f.mask->unexpectedChange("mask", [&](int x, int y, int) { return f.inRegion(x, y); }));
    for (int y = 0; y < f.h; ++y)
        for (int x = 0; x < f.w; ++x) {
            if (!f.inRegion(x, y)) continue;
            const int b = f.brush->old(x, y);
            const int expected = (b & 1) ? b : (f.mask->old(x, y) & 254);
            require(f.mask->cur(x, y) == expected, "recoverBrushInfo left a wrong map byte");
        }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    RequestFixture f(in);
    // One call in eight restores brush strokes only.
    (in.range(0, 7) == 0 ? fuzzRecoverBrush : fuzzKeepCut)(f, in);
    return 0;
}
