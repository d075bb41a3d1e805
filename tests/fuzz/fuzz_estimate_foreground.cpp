// Fuzz target for rkEstimateForeground: small pictures of two colours with
// noise, any matte, padded and broken layouts, null pointers, and the
// foreground written over the picture itself. Checks: a documented result,
// refusal exactly for refused layouts (with a log line, nothing touched);
// the picture and alpha are only read (unless they are the output); on
// success only the three colour bytes of the foreground's pixels change.
#include <cstdint>
#include <string>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "guarded_buffer.h"
#include "request_fixture.h"

namespace {
using namespace kc_fuzz;
constexpr const char* kEntry = "rkEstimateForeground";
const DocumentedResults kResults{kEntry, {1, -2, -6}};
constexpr int kBytes = 4;  // B, G, R and a fourth byte
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    const Size sides = decodeSize(in, kMaxSide, kBrokenOdds);
    const int w = sides.w, h = sides.h;
    const BufferLayout li = decodeLayout(in, w, kBytes), la = decodeLayout(in, w, 1),
                       lf = decodeLayout(in, w, kBytes);
    const bool inPlace = in.range(0, 3) == 0;
    GuardedBuffer image(w, h, kBytes, li.rowBytes, li.misalign);
    GuardedBuffer alpha(w, h, 1, la.rowBytes, la.misalign);
    GuardedBuffer fg(w, h, kBytes, lf.rowBytes, lf.misalign);

    const SplitColours colours(in, kBytes);
    Noise rng(in.dword());
    image.fill([&](int x, int, int c) { return colours.at(x, c, rng); });
    const std::vector<unsigned char> mask = drawMap(in, w, h);
    alpha.fill([&](int x, int y, int) { return mask[static_cast<size_t>(y) * w + x]; });
    fg.fill([&](int, int, int) { return in.byte(); });

    GuardedBuffer& out = inPlace ? image : fg;
    const bool outNull = inPlace ? li.null : lf.null;
    const bool mustRefuse = w < 0 || h < 0 || li.null || la.null || outNull || !image.valid() ||
                            !alpha.valid() || !out.valid();
    image.snapshot(), alpha.snapshot(), fg.snapshot();
    clearErrMsg();
    const int result = rkEstimateForeground(li.null ? nullptr : image.data(), image.rowBytes(),
                                            la.null ? nullptr : alpha.data(), alpha.rowBytes(),
                                            outNull ? nullptr : out.data(), out.rowBytes(), w, h);
    requireResult(kResults, result, mustRefuse);
    requireNone(alpha.unexpectedChange("alpha"));
    if (!inPlace) requireNone(image.unexpectedChange("picture"));
    if (result != 1) return requireNone(out.unexpectedChange(kEntry)), 0;
    requireNone(out.unexpectedChange(kEntry, [](int, int, int c) { return c < 3; }));
    return 0;
}
