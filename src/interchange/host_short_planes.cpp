// Host RGB buffers and signed 16-bit planes, a row at a time.
#include "interchange/host_short_planes.h"

#include <algorithm>
#include <cstddef>

#include "core/ippi_common.h"

namespace {

using kc::prim::rowAt;

// Largest value a signed 16-bit plane holds; host 16-bit values reach 32768.
constexpr int kShortTop = 32767;
// An 8-bit level spans 128 plane levels in the colour planes ...
constexpr int kLevelShift = 7;
// ... and 127 in the single-channel pair, which the callers of that pair expect.
constexpr int kOneChannelLevel = 127;
// Elements per host pixel (R, G, B).
constexpr int kHostElems = 3;
// Adding 2^15 modulo 2^16 moves between signed and offset-unsigned elements.
constexpr unsigned kSignFlip = 32768u;

// The rectangle of the plane region that the host rectangle occupies.
struct Placement {
    int w, h, x0, y0;
};

Placement place(int w, int h, const GIMG<short>& plane, bool centred) {
    Placement p{std::min(w, plane.roiSize.width), std::min(h, plane.roiSize.height), 0, 0};
    if (centred) {
        p.x0 = (plane.roiSize.width - p.w) / 2;
        p.y0 = (plane.roiSize.height - p.h) / 2;
    }
    return p;
}

short* planeRow(const GIMG<short>& plane, const Placement& p, int y) {
    return rowAt(plane.ptr(), plane.step, p.y0 + y) + p.x0;
}

// Host element to plane value, and back.
template <typename S>
short toPlane(S v, bool oneChannel) {
    if constexpr (sizeof(S) == 2) return static_cast<short>(std::min<int>(v, kShortTop));
    return static_cast<short>(oneChannel ? v * kOneChannelLevel : v << kLevelShift);
}

template <typename S>
S toHost(short v, bool oneChannel) {
    const int pos = std::max<int>(v, 0);
    if constexpr (sizeof(S) == 2) return static_cast<S>(pos);
    return static_cast<S>(oneChannel ? std::min(pos / kOneChannelLevel, 255) : pos >> kLevelShift);
}

template <typename S>
void toPlanes(const void* buf, int step, const Placement& p, GIMG<short>* const* planes,
              int firstCh, int channels, bool oneChannel) {
    for (int y = 0; y < p.h; ++y) {
        const S* src = rowAt(static_cast<const S*>(buf), step, y);
        for (int c = 0; c < channels; ++c) {
            short* dst = planeRow(*planes[c], p, y);
            for (int x = 0; x < p.w; ++x)
                dst[x] = toPlane<S>(src[x * kHostElems + firstCh + c], oneChannel);
        }
    }
}

template <typename S>
void fromPlanes(GIMG<short>* const* planes, int firstCh, int channels, bool oneChannel,
                const Placement& p, void* buf, int step) {
    for (int y = 0; y < p.h; ++y) {
        S* dst = rowAt(static_cast<S*>(buf), step, y);
        for (int c = 0; c < channels; ++c) {
            const short* src = planeRow(*planes[c], p, y);
            for (int x = 0; x < p.w; ++x)
                dst[x * kHostElems + firstCh + c] = toHost<S>(src[x], oneChannel);
        }
    }
}

void flipSign(short* p, int step, const IppiSize& size) {
    for (int y = 0; y < size.height; ++y) {
        short* row = rowAt(p, step, y);
        for (int x = 0; x < size.width; ++x)
            row[x] = static_cast<short>(static_cast<unsigned short>(row[x]) + kSignFlip);
    }
}

}  // namespace

void rkRGBPSToP3(int is16, const void* buf, int step, int w, int h, GIMG<short>** planes) {
    const Placement p = place(w, h, *planes[0], true);
    if (is16)
        toPlanes<unsigned short>(buf, step, p, planes, 0, 3, false);
    else
        toPlanes<unsigned char>(buf, step, p, planes, 0, 3, false);
}

void rkRGBP3ToPS(GIMG<short>** planes, int is16, void* buf, int step, int w, int h) {
    const Placement p = place(w, h, *planes[0], true);
    if (is16)
        fromPlanes<unsigned short>(planes, 0, 3, false, p, buf, step);
    else
        fromPlanes<unsigned char>(planes, 0, 3, false, p, buf, step);
}

void rkPSGet1Ch(int is16, const void* buf, int step, int w, int h, GIMG<short>& plane, int ch) {
    const Placement p = place(w, h, plane, false);
    GIMG<short>* const one[1] = {&plane};
    ch = std::clamp(ch, 0, 2);
    if (is16)
        toPlanes<unsigned short>(buf, step, p, one, ch, 1, true);
    else
        toPlanes<unsigned char>(buf, step, p, one, ch, 1, true);
}

void rkPSSet1Ch(int is16, void* buf, int step, int w, int h, GIMG<short>& plane, int ch) {
    const Placement p = place(w, h, plane, false);
    GIMG<short>* const one[1] = {&plane};
    ch = std::clamp(ch, 0, 2);
    if (is16)
        fromPlanes<unsigned short>(one, ch, 1, true, p, buf, step);
    else
        fromPlanes<unsigned char>(one, ch, 1, true, p, buf, step);
}

int rkIppi16sTo16u(short* p, int step, IppiSize& size) {
    flipSign(p, step, size);
    return 1;
}

int rkIppi16uTo16s(short* p, int step, IppiSize& size) {
    flipSign(p, step, size);
    return 1;
}
