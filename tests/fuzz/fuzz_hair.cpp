// Fuzz target for rkHairSelect: strokes inside, on the edge of and off the
// picture, radii from 0 to beyond what can be drawn, equal and distinct
// colours, and broken requests. Checks: a documented result, refusal exactly
// for refused arguments (with a log line, nothing touched); on success only
// map bytes inside the stroke box less its outer ring change, none at all
// for an end point off the picture or equal colours; every written byte is
// painted (odd) and holds the pixel's colour projected between the two
// colours; picture, brushInfo, foreground and the record stay as they were.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "request_fixture.h"

namespace {

using namespace kc_fuzz;

const DocumentedResults kHairResults{"rkHairSelect", {1, -2, -6, 102}};
constexpr const char* kEntry = "rkHairSelect";
constexpr int kNullOdds = 32;
constexpr int kMaxRadius = 16383;
// Float and double projections may round to neighbouring bytes, and the
// written byte has bit 0 set.
constexpr int kProjectionSlack = 2;

// The pixel's alpha by the documented projection, in bytes.
int projected(const GuardedBuffer& image, int x, int y, const unsigned char* fore,
              const unsigned char* back) {
    double dot = 0, len = 0;
    for (int k = 0; k < 3; ++k) {
        const double e = (fore[k] - back[k]) / 255.0;
        dot += (image.old(x, y, 2 - k) / 255.0 - back[k] / 255.0) * e;
        len += e * e;
    }
    return static_cast<int>(std::lround(std::clamp(dot / len, 0.0, 1.0) * 255.0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    RequestFixture f(in);
    auto coordinate = [&](int extent) {
        return in.range(0, 7) ? in.range(0, std::max(extent - 1, 0)) : in.range(-2, extent + 1);
    };
    const int x1 = coordinate(f.w), y1 = coordinate(f.h), x2 = coordinate(f.w),
              y2 = coordinate(f.h);
    int radius = in.range(0, 10);
    if (in.rarely(kBrokenOdds))
        radius = in.flag() ? in.range(-3, -1) : kMaxRadius + in.range(-1, 2);
    unsigned char fore[3] = {in.byte(), in.byte(), in.byte()},
                  back[3] = {in.byte(), in.byte(), in.byte()};
    if (in.rarely(6)) std::memcpy(back, fore, sizeof back);
    const bool nullFore = in.rarely(kNullOdds), nullBack = in.rarely(kNullOdds);
    const bool nullRequest = in.rarely(kNullOdds);
    f.request.hairForeColor = nullFore ? nullptr : fore;
    f.request.hairBackColor = nullBack ? nullptr : back;
    const bool mustRefuse = nullRequest || nullFore || nullBack ||
                            !f.usable(f.image, f.nullImage) || !f.usable(f.mask, f.nullMask) ||
                            radius < 0 || radius > kMaxRadius;
    f.beginCall();
    const int result = rkHairSelect(nullRequest ? nullptr : &f.request, x1, y1, x2, y2, radius);
    requireResult(kHairResults, result, mustRefuse);
    if (result != 1) return f.requireUntouched(kEntry), 0;

    const bool onPicture =
        std::min({x1, y1, x2, y2}) >= 0 && std::max(x1, x2) < f.w && std::max(y1, y2) < f.h;
    const bool colourLine = !std::equal(fore, fore + 3, back);
    // The box's interior: grown by radius, clipped, less the outer ring.
    const int left = std::max(std::min(x1, x2) - radius, 0) + 1;
    const int top = std::max(std::min(y1, y2) - radius, 0) + 1;
    const int right = std::min(std::max(x1, x2) + radius, f.w - 1) - 1;
    const int bottom = std::min(std::max(y1, y2) + radius, f.h - 1) - 1;
    requireNone(f.mask->unexpectedChange(kEntry, [&](int x, int y, int) {
        const int v = f.mask->cur(x, y);
        return onPicture && colourLine && x >= left && x <= right && y >= top && y <= bottom &&
               (v & 1) && std::abs(v - projected(*f.image, x, y, fore, back)) <= kProjectionSlack;
    }));
    for (const auto* b : {&*f.image, &*f.brush, &*f.foreground})
        requireNone(b->unexpectedChange(kEntry));
    require(std::memcmp(&f.request, &f.before, sizeof f.request) == 0,
            "rkHairSelect changed the request");
    return 0;
}
