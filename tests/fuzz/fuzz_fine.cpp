// Fuzz target for the fine pass entry: whole-picture jobs on small pictures
// (their small bands are solved whole at once, a fraction of a second),
// region jobs and broken requests that must be refused. After each call it
// checks what the header promises: a documented result, refusal exactly for
// refused arguments (with a log line, nothing touched), writes only inside
// the region, brushInfo and the picture untouched, painted bytes intact.
#include <cstdint>

#include "api/keepcut_fine.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "request_fixture.h"

namespace {

using namespace kc_fuzz;

// Odds (one in N) of passing no request at all, and of a region job (refused).
constexpr int kNullRequestOdds = 64;
constexpr int kRegionJobOdds = 8;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr const char* kEntry = "rkKeepCutToAlphaFine";
    FuzzInput in(data, size);
    RequestFixture f(in);
    RKPSStructMsk2& r = f.request;
    r.cellMode = in.rarely(kRegionJobOdds) ? in.range(1, 5) : 0;
    r.recoverForeground = in.flag();
    const bool progressReady = in.flag();
    const bool nullRequest = in.rarely(kNullRequestOdds);
    const bool mustRefuse = nullRequest || f.keepCutBuffersRefused(r) || r.cellMode != 0;
    f.beginCall();
    const int result = rkKeepCutToAlphaFine(nullRequest ? nullptr : &r, progressReady);
    requireResult(kKeepCutResults, result, mustRefuse);
    if (result == kRefused) return f.requireUntouched(kEntry), 0;

    auto inRegion = [&](int x, int y, int = 0) { return f.inRegion(x, y); };
    requireNone(f.image->unexpectedChange("image"));
    requireNone(f.brush->unexpectedChange("brushInfo"));
    requireNone(f.mask->unexpectedChange("mask", inRegion));
    requireNone(f.foreground->unexpectedChange("foreground", inRegion));
    if (f.brushIsMaskCopy) f.requirePaintedKept(kEntry, inRegion, false, r.mergeMode);
    return 0;
}
