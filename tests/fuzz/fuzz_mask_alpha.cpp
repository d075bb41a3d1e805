// Fuzz target for rkMaskAlpha: small pictures at every work resolution (the
// load pushes the memory ratio past 1, past 2, or to extremes: huge, not a
// number, negative), arbitrary codes and output bounds, padded and broken
// layouts, null pointers. Checks: a documented result, refusal exactly for
// refused records (with a log line, nothing touched); the colour planes are
// only read; any failure leaves the alpha as it was; on success nothing
// outside the alpha's pixels changes and no pixel reaches 0 or 255 unless
// its mask byte held that value.
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "guarded_buffer.h"
#include "request_fixture.h"

namespace {

using namespace kc_fuzz;

constexpr const char* kEntry = "rkMaskAlpha";
const DocumentedResults kMaskAlphaResults{kEntry, {1, -1, -2, -6, 102, 121, 122, 123, 125, 130}};
// Budget bytes one unit of load costs in the entry's memory estimate.
constexpr double kBytesPerLoad = 1920.0;
constexpr int kPlanes = 3;

// The load: mostly none (full resolution), else memory ratios just past 1 or
// 2, a ratio of the input's choosing, or a value no host should send.
float decodeLoad(FuzzInput& in) {
    const double budget = usableMemInMB() * 1000.0;
    auto forRatio = [&](double ratio) {
        return static_cast<float>(ratio * ratio * budget / kBytesPerLoad);
    };
    switch (in.range(0, 7)) {
        case 4:
            return forRatio(1.5);
        case 5:
            return forRatio(2.5);
        case 6:
            return forRatio(1.0 + in.byte() / 16.0);
        case 7: {
            const float odd[] = {std::numeric_limits<float>::infinity(),
                                 std::numeric_limits<float>::quiet_NaN(), -1.0f, 1e30f,
                                 forRatio(1000.0)};
            return odd[in.range(0, 4)];
        }
        default:
            return 0.0f;
    }
}

// Codes and bounds: usually the plain ones, now and then anything, beyond a
// byte's range included.
int decodeCode(FuzzInput& in, int usual) {
    return in.range(0, 3) ? usual : in.range(-300, 600);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    const float load = decodeLoad(in);
    const Size sides = decodeSize(in, kMaxSide, kBrokenOdds, 1);
    const int w = sides.w, h = sides.h;

    // The three planes share one row step, as the record has only one.
    const BufferLayout lp = decodeLayout(in, w, 1), la = decodeLayout(in, w, 1);
    GuardedBuffer planes[kPlanes] = {{w, h, 1, lp.rowBytes, lp.misalign},
                                     {w, h, 1, lp.rowBytes, in.range(0, 7)},
                                     {w, h, 1, lp.rowBytes, in.range(0, 7)}};
    GuardedBuffer alpha(w, h, 1, la.rowBytes, la.misalign);
    const int nullPlane = lp.null ? in.range(0, kPlanes - 1) : -1;

    const SplitColours colours(in, kPlanes);
    Noise rng(in.dword());
    for (int c = 0; c < kPlanes; ++c)
        planes[c].fill([&](int x, int, int) { return colours.at(x, c, rng); });
    const std::vector<unsigned char> mask = drawMap(in, w, h);
    alpha.fill([&](int x, int y, int) { return mask[static_cast<size_t>(y) * w + x]; });

    const int highCode = decodeCode(in, 255), lowCode = decodeCode(in, 0);
    const int outHigh = decodeCode(in, 255), outLow = decodeCode(in, 0);
    const bool nullRecord = in.rarely(kBrokenOdds);

    RKMaskImage image{};
    for (int c = 0; c < kPlanes; ++c) image.planes[c] = c == nullPlane ? nullptr : planes[c].data();
    image.planeRowBytes = planes[0].rowBytes();
    image.alpha = la.null ? nullptr : alpha.data();
    image.alphaRowBytes = alpha.rowBytes();
    image.width = w;
    image.height = h;
    const bool mustRefuse = nullRecord || w < 1 || h < 1 || nullPlane >= 0 || la.null ||
                            !planes[0].valid() || !alpha.valid();

    for (GuardedBuffer& p : planes) p.snapshot();
    alpha.snapshot();
    clearErrMsg();
    const int result = rkMaskAlpha(nullRecord ? nullptr : &image, in.byte(), highCode, lowCode,
                                   outHigh, outLow, in.byte(), load);
    requireResult(kMaskAlphaResults, result, mustRefuse);
    for (const GuardedBuffer& p : planes) requireNone(p.unexpectedChange("colour plane"));
    if (result != 1) return requireNone(alpha.unexpectedChange(kEntry)), 0;
    requireNone(alpha.unexpectedChange(kEntry, anyPixel));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int was = alpha.old(x, y), is = alpha.cur(x, y);
            require((is != 0 || was == 0) && (is != 255 || was == 255),
                    "rkMaskAlpha turned " + std::to_string(was) + " into " + std::to_string(is) +
                        at(x, y));
        }
    return 0;
}
