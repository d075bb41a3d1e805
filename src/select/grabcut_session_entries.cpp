// The host's session entries: rkGrabCutCreateBuf makes a session,
// rkGrabCutDeleteBuf ends one and turns the GrabCut map of the region back
// into the keep/cut pipeline's coding.
#include <array>

#include "core/ippi_copy.h"
#include "core/ippi_lut.h"
#include "runtime/entry_guard.h"
#include "select/grabcut_control.h"
#include "select/grabcut_request.h"

namespace {

// A session's cut needs a rectangle inside a 5-pixel margin: sides of 10 or
// less leave none.
constexpr int kMinSessionSide = 11;
// The region of a deleted session may be of any non-empty size.
constexpr int kMinRegionSide = 1;
constexpr int kByteValues = 256;
constexpr int kByteBits = 8;

// The map after a session: 0 and 1 become painted cut (1), 254 and 255
// painted keep (255), every other byte loses bit 0.
std::array<Ipp8u, kByteValues> endOfSessionTable() {
    std::array<Ipp8u, kByteValues> t{};
    for (int p = 0; p < kByteValues; ++p) t[p] = static_cast<Ipp8u>(p & ~1);
    t[0] = t[1] = 1;
    t[254] = t[255] = 255;
    return t;
}

}  // namespace

extern "C" KC_EXPORT void* rkGrabCutCreateBuf(int width, int height) {
    static constexpr const char* kEntry = "rkGrabCutCreateBuf";
    void* session = nullptr;
    rkGuardEntry(kEntry, [&] {
        if (width < kMinSessionSide || height < kMinSessionSide)
            return rkRefuseWith(kEntry, "a session needs at least 11 x 11 pixels");
        session = grabcutCreateBuf(width, height);
        return 1;
    });
    return session;
}

extern "C" KC_EXPORT void rkGrabCutDeleteBuf(RKPSStructMsk2* request) {
    static constexpr const char* kEntry = "rkGrabCutDeleteBuf";
    rkGuardEntry(kEntry, [&] {
        if (!request) return rkRefuseWith(kEntry, "request is null");
        // The session goes first and whatever the maps are like, so that a
        // broken record never leaves it behind.
        if (request->grabCutBuf && !isLiveGrabCutSession(request->grabCutBuf))
            rkRefuse(kEntry, "grabCutBuf is not a live GrabCut session; left alone");
        GrabCutDeleteBuf(request->grabCutBuf);
        if (!checkGrabCutRequest(kEntry, request, GrabCutBuffers::Maps, kMinRegionSide))
            return kInvalidArgument;

        static const std::array<Ipp8u, kByteValues> table = endOfSessionTable();
        cv::Mat map = grabCutMaskView(*request);
        cv::Mat brush = grabCutBrushView(*request);
        const IppiSize size{map.cols, map.rows};
        ippiLUTPalette_8u_C1R(map.data, static_cast<int>(map.step), brush.data,
                              static_cast<int>(brush.step), size, table.data(), kByteBits);
        ippiCopy_8u_C1R(brush.data, static_cast<int>(brush.step), map.data,
                        static_cast<int>(map.step), size);
        return 1;
    });
}
