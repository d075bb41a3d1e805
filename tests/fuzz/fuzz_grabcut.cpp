// Fuzz target for the GrabCut entries: a few calls in a row on one request
// (strokes, trimaps, session ends, sessions made by the host), with sound and
// broken records, stale and foreign session handles. After each call it checks
// what the header promises: a documented result, refusal exactly for refused
// arguments (with a log line, nothing touched), writes only inside the
// GrabCut region, the stroke's and the trimap's byte rules, the end-of-session
// coding, and that no session outlives the input.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "request_fixture.h"
#include "select/grabcut_control.h"
#include "select/grabcut_levels.h"

namespace {

using namespace kc_fuzz;

const DocumentedResults kGrabCutResults{
    "rkGrabCut",
    // 1; -2 refused; -1 memory; -1000 other; engine codes n as n - 1000.
    {1, -2, -1, -1000, 102 - 1000, -1 - 1000, -5 - 1000, 121 - 1000, 122 - 1000, 123 - 1000,
     125 - 1000, 130 - 1000}};
// The cut's rectangle lies inside a 5-pixel margin.
constexpr int kMinGrabCutSide = 11;
constexpr int kMaxBrushSize = 1024;
// Calls decoded from one input.
constexpr int kMaxCalls = 5;
// GrabCut map bytes: background and foreground, probable and hard, then
// bytes with high bits set (hard too), odd and even.
constexpr unsigned char kGrabCutCodes[] = {0, 1, 2, 3, 254, 255, 4, 5, 128, 129};

struct GrabCutFixture {
    RequestFixture f;
    explicit GrabCutFixture(FuzzInput& in) : f(in) {
        RKPSStructMsk2& r = f.request;
        r.progProc = nullptr;
        if (in.range(0, 2) != 0) {
            r.gcLeft = in.range(0, 8), r.gcTop = in.range(0, 8);
            r.gcWidth = std::max(f.w - r.gcLeft - in.range(0, 8), 0);
            r.gcHeight = std::max(f.h - r.gcTop - in.range(0, 8), 0);
        } else {
            r.gcLeft = in.range(-2, kMaxSide), r.gcTop = in.range(-2, kMaxSide);
            r.gcWidth = in.range(-2, kMaxSide), r.gcHeight = in.range(-2, kMaxSide);
        }
        // Mostly GrabCut codes: a background code, a box of a foreground one,
        // a few scattered bytes.
        if (in.range(0, 3) != 0 && f.mask->valid()) {
            const unsigned char back = kGrabCutCodes[in.range(0, 9)];
            const unsigned char box = kGrabCutCodes[in.range(0, 9)];
            const int x0 = in.range(0, kMaxSide), y0 = in.range(0, kMaxSide);
            const int x1 = x0 + in.range(0, kMaxSide), y1 = y0 + in.range(0, kMaxSide);
            f.mask->fill([&](int x, int y, int) {
                return (x >= x0 && x < x1 && y >= y0 && y < y1) ? box : back;
            });
            for (int k = in.range(0, 6); k > 0 && f.w > 0 && f.h > 0; --k)
                *f.mask->at(in.range(0, f.w - 1) % f.w, in.range(0, f.h - 1) % f.h) =
                    kGrabCutCodes[in.range(0, 9)];
        }
    }

    bool inGrabCutRegion(int x, int y) const {
        const RKPSStructMsk2& r = f.request;
        return x >= r.gcLeft && x < r.gcLeft + r.gcWidth && y >= r.gcTop &&
               y < r.gcTop + r.gcHeight;
    }
    // Maps and region as the trimap and session-end entries need them.
    bool mapsUsable(int minSide) const {
        const RKPSStructMsk2& r = f.request;
        return f.usable(f.mask, f.nullMask) && f.usable(f.brush, f.nullBrush) && r.gcLeft >= 0 &&
               r.gcTop >= 0 && r.gcWidth >= minSide && r.gcHeight >= minSide &&
               r.gcWidth <= f.w - r.gcLeft && r.gcHeight <= f.h - r.gcTop;
    }
    // Every changed map byte lies in the region; the picture never changes.
    void requireInsideRegion(const char* entry) const {
        auto inside = [&](int x, int y, int) { return inGrabCutRegion(x, y); };
        requireNone(f.image->unexpectedChange((std::string(entry) + " image").c_str()));
        requireNone(f.mask->unexpectedChange((std::string(entry) + " mask").c_str(), inside));
        requireNone(f.brush->unexpectedChange((std::string(entry) + " brushInfo").c_str(), inside));
    }
    template <typename Check>
    void forRegion(Check&& check) const {
        for (int y = 0; y < f.h; ++y)
            for (int x = 0; x < f.w; ++x)
                if (inGrabCutRegion(x, y)) check(x, y);
    }
};

void fuzzStroke(GrabCutFixture& g, FuzzInput& in, bool nullRequest) {
    constexpr const char* kEntry = "rkGrabCut";
    RequestFixture& f = g.f;
    RKPSStructMsk2& r = f.request;
    const void* session = r.grabCutBuf;
    const bool badSession =
        session && (!isLiveGrabCutSession(session) ||
                    IPSize(static_cast<const GrabCutControl*>(session)->width,
                           static_cast<const GrabCutControl*>(session)->height) !=
                        grabCutWorkSize(r.gcWidth, r.gcHeight));
    const bool mustRefuse = nullRequest || !f.usable(f.image, f.nullImage) ||
                            !g.mapsUsable(kMinGrabCutSide) || badSession;
    f.beginCall();
    const int result = rkGrabCut(nullRequest ? nullptr : &r, in.range(0, 2));
    // KC_FUZZ_TRACE=1 shows each decoded stroke, for reading a corpus.
    if (std::getenv("KC_FUZZ_TRACE"))
        std::fprintf(stderr, "stroke %dx%d region %d,%d %dx%d -> %d\n", f.w, f.h, r.gcLeft, r.gcTop,
                     r.gcWidth, r.gcHeight, result);
    if (std::getenv("KC_FUZZ_TRACE") && result != 1 && result != kRefused)
        std::fprintf(stderr, "%s\n", getErrMsg());
    requireResult(kGrabCutResults, result, mustRefuse);
    if (result == kRefused) return f.requireUntouched(kEntry);
    g.requireInsideRegion(kEntry);
    if (result != 1) return;
    require(r.grabCutBuf && isLiveGrabCutSession(r.grabCutBuf),
            "rkGrabCut left no live session in grabCutBuf");
    // Regions this small are cut at full size: a byte keeps its value, but
    // probable foreground (1) may lose bit 0; hard constraints never change.
    g.forRegion([&](int x, int y) {
        const int was = f.mask->old(x, y), is = f.mask->cur(x, y);
        require(is == was || (was == 1 && is == 0),
                "rkGrabCut turned map byte " + std::to_string(was) + " into " + std::to_string(is));
        require(f.brush->cur(x, y) == is, "rkGrabCut: brushInfo differs from the map");
    });
}

void fuzzEdgeGen(GrabCutFixture& g, FuzzInput& in, bool nullRequest) {
    constexpr const char* kEntry = "rkGrabCutEdgeGen";
    RequestFixture& f = g.f;
    const int pick = in.range(0, 15);
    const int brushSize = pick < 14    ? in.range(0, 24)
                          : pick == 14 ? -1 - in.range(0, 2)
                                       : kMaxBrushSize + 1;
    const bool mustRefuse =
        nullRequest || !g.mapsUsable(1) || brushSize < 0 || brushSize > kMaxBrushSize;
    f.beginCall();
    rkGrabCutEdgeGen(nullRequest ? nullptr : &f.request, brushSize);
    if (mustRefuse) {
        requireLogged("rkGrabCutEdgeGen");
        return f.requireUntouched(kEntry);
    }
    g.requireInsideRegion(kEntry);
    requireNone(f.brush->unexpectedChange("rkGrabCutEdgeGen brushInfo"));
    g.forRegion([&](int x, int y) {
        const int a = f.brush->cur(x, y), b = f.mask->cur(x, y);
        if (a & 1)
            require(b == a, "rkGrabCutEdgeGen changed a painted byte");
        else
            require(b == 0 || b == 126 || b == 254,
                    "rkGrabCutEdgeGen wrote " + std::to_string(b) + " for an unpainted pixel");
    });
}

void fuzzDelete(GrabCutFixture& g, FuzzInput& in, bool nullRequest) {
    constexpr const char* kEntry = "rkGrabCutDeleteBuf";
    RequestFixture& f = g.f;
    RKPSStructMsk2& r = f.request;
    const bool mapsRefused = !g.mapsUsable(1);
    const bool staleHandle = r.grabCutBuf && !isLiveGrabCutSession(r.grabCutBuf);
    const int liveBefore = liveGrabCutSessions();
    const bool deletes = !nullRequest && r.grabCutBuf && !staleHandle;
    f.beginCall();
    rkGrabCutDeleteBuf(nullRequest ? nullptr : &r);
    require(liveGrabCutSessions() == liveBefore - (deletes ? 1 : 0),
            "rkGrabCutDeleteBuf did not delete exactly the live session");
    if (nullRequest || mapsRefused || staleHandle) requireLogged("rkGrabCutDeleteBuf");
    if (nullRequest || mapsRefused) {
        for (const auto* b : {&*f.image, &*f.mask, &*f.brush})
            requireNone(b->unexpectedChange(kEntry));
    } else {
        g.requireInsideRegion(kEntry);
        g.forRegion([&](int x, int y) {
            const int p = f.mask->old(x, y);
            const int want = p <= 1 ? 1 : p >= 254 ? 255 : (p & 254);
            require(f.mask->cur(x, y) == want && f.brush->cur(x, y) == want,
                    "rkGrabCutDeleteBuf coded " + std::to_string(p) + " wrongly");
        });
    }
    // The host usually clears the handle; now and then it forgets.
    if (!nullRequest && in.range(0, 5) != 0) r.grabCutBuf = nullptr;
}

void fuzzCreate(GrabCutFixture& g, FuzzInput& in, bool) {
    RKPSStructMsk2& r = g.f.request;
    const int w = in.range(-2, 80), h = in.range(-2, 80);
    clearErrMsg();
    void* session = rkGrabCutCreateBuf(w, h);
    const bool refused = w < kMinGrabCutSide || h < kMinGrabCutSide;
    require(refused == (session == nullptr),
            "rkGrabCutCreateBuf refused a sound size or took a bad one");
    if (refused) return requireLogged("rkGrabCutCreateBuf");
    // Handed to the request when it holds none (sometimes of the region's
    // working size), else given back at once through a record of its own.
    if (!r.grabCutBuf) {
        r.grabCutBuf = session;
        return;
    }
    RKPSStructMsk2 own{};
    own.grabCutBuf = session;
    rkGrabCutDeleteBuf(&own);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    require(liveGrabCutSessions() == 0, "a session outlived the previous input");
    FuzzInput in(data, size);
    GrabCutFixture g(in);
    for (int call = in.range(1, kMaxCalls); call > 0; --call) {
        const bool nullRequest = in.rarely(64);
        // Strokes four times in eight, edges twice, session ends and makes once.
        static void (*const kCalls[])(GrabCutFixture&, FuzzInput&, bool) = {
            fuzzStroke,  fuzzStroke,  fuzzStroke, fuzzStroke,
            fuzzEdgeGen, fuzzEdgeGen, fuzzDelete, fuzzCreate};
        kCalls[in.range(0, 7)](g, in, nullRequest);
    }
    // The host ends the session; a record of its own frees it whatever the
    // request's buffers are like.
    RKPSStructMsk2 end{};
    end.grabCutBuf = g.f.request.grabCutBuf;
    if (end.grabCutBuf && isLiveGrabCutSession(end.grabCutBuf)) rkGrabCutDeleteBuf(&end);
    require(liveGrabCutSessions() == 0, "a session outlived its input");
    return 0;
}
