// Flood fill of a brush region: the 8-connected area of the seed's class
// (cut, keep, or anything else) becomes cut, keep or the compute band. The
// area is filled in place, run by run, with no class plane of its own.
#include <algorithm>
#include <new>
#include <vector>

#include "api/keepcut.h"
#include "core/img.h"
#include "core/ippi_floodfill.h"
#include "pipeline/mask_codes.h"
#include "runtime/entry_guard.h"
#include "tools/class_fill.h"

namespace {

// Name the log lines carry.
constexpr const char* kEntry = "rkFloodFillAlpha";

// Results besides success.
constexpr int kNoMemory = -1;
constexpr int kSeedOutside = -3;

// Fill types: cut, keep, the compute band; any other value only measures.
constexpr char kFillCut = 0;
constexpr char kFillKeep = 1;
constexpr char kFillBand = 2;
// Unpainted middle alpha: the compute band's fill value.
constexpr unsigned char kBandFill = 126;

struct Rect {
    int x, y, width, height;
};

int noMemory() {
    rkRefuse(kEntry, "result -1, no memory for the fill");
    return kNoMemory;
}

// The filled area's rectangle, clipped to the map; a rectangle reaching past
// an edge is widened to the whole map in that direction.
Rect clampRect(const IppiRect& r, int width, int height) {
    Rect c{std::max(r.x, 0), std::max(r.y, 0), std::max(r.width, 0), std::max(r.height, 0)};
    if (c.x + c.width > width) c.x = 0, c.width = width;
    if (c.y + c.height > height) c.y = 0, c.height = height;
    return c;
}

bool alreadyFilled(unsigned char seed, char fillType) {
    return (seed == kMaskCut && fillType == kFillCut) ||
           (seed == kMaskKeep && fillType == kFillKeep) ||
           (seed == kBandFill && fillType == kFillBand);
}

// Marker written over the area while filling: a byte outside the seed's
// class. Cut and keep fills write their final code at once (the early return
// above guarantees the seed is not of that class already).
unsigned char fillMarker(unsigned char seed, char fillType) {
    if (fillType == kFillKeep) return kMaskKeep;
    if (fillType == kFillCut) return kMaskCut;
    return seed == kMaskCut ? kMaskKeep : kMaskCut;
}

IppiRect fill(unsigned char* mask, int maskStep, IppiSize size, IppiPoint seed, char fillType) {
    const unsigned char marker = fillMarker(*imgPtr(mask, maskStep, seed.x, seed.y), fillType);
    if (fillType == kFillCut || fillType == kFillKeep)
        return fillClassArea(mask, maskStep, size, seed, marker, nullptr);
    if (fillType == kFillBand) {
        std::vector<FillRun> runs;
        const IppiRect r = fillClassArea(mask, maskStep, size, seed, marker, &runs);
        for (const FillRun& run : runs)
            std::fill(imgPtr(mask, maskStep, run.x0, run.y), imgPtr(mask, maskStep, run.x1, run.y),
                      kBandFill);
        return r;
    }
    // Any other type writes nothing: fill a copy to measure the area.
    std::vector<unsigned char> copy(static_cast<std::size_t>(size.width) * size.height);
    for (int y = 0; y < size.height; ++y)
        std::copy_n(imgPtr(mask, maskStep, 0, y), size.width,
                    &copy[std::size_t{1} * y * size.width]);
    return fillClassArea(copy.data(), size.width, size, seed, marker, nullptr);
}

int floodFill(unsigned char* mask, int maskStep, int width, int height, int seedX, int seedY,
              char fillType, int* rect) {
    rect[0] = rect[1] = rect[2] = rect[3] = 0;
    if (seedX < 0 || seedY < 0 || seedX >= width || seedY >= height) {
        rkRefuse(kEntry, "result -3, the seed lies outside the map");
        return kSeedOutside;
    }
    if (alreadyFilled(*imgPtr(mask, maskStep, seedX, seedY), fillType)) return 1;
    // Maps too large for the fill primitive's work buffer are refused alike.
    int bufBytes = 0;
    if (ippiFloodFillGetSize_Grad({width, height}, &bufBytes) != ippStsNoErr) return noMemory();
    Rect r;
    try {
        r = clampRect(fill(mask, maskStep, {width, height}, {seedX, seedY}, fillType), width,
                      height);
    } catch (const std::bad_alloc&) {
        return noMemory();
    }
    if (fillType == kFillBand) r = {0, 0, width, height};
    rect[0] = r.x, rect[1] = r.y, rect[2] = r.width, rect[3] = r.height;
    return 1;
}

}  // namespace

extern "C" KC_EXPORT int rkFloodFillAlpha(unsigned char* mask, int maskStep, int width, int height,
                                          int seedX, int seedY, unsigned char /*ignored*/,
                                          unsigned char /*ignored*/, char fillType, int /*ignored*/,
                                          int* rect) {
    return rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "mask", mask, width, height, maskStep, 1))
            return kInvalidArgument;
        if (!rect) return rkRefuseWith(kEntry, "rect is null");
        return floodFill(mask, maskStep, width, height, seedX, seedY, fillType, rect);
    });
}
