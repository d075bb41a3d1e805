// Flood fill of a brush region: the 8-connected area of the seed's class
// (cut, keep, or anything else) becomes cut, keep or the compute band.
#include <algorithm>
#include <iterator>
#include <memory>

#include "api/keepcut.h"
#include "core/aligned_alloc.h"
#include "core/img.h"
#include "core/ippi_floodfill.h"
#include "core/ippi_lut.h"
#include "pipeline/mask_codes.h"
#include "runtime/entry_guard.h"

namespace {

// Name the log lines carry.
constexpr const char* kEntry = "rkFloodFillAlpha";

// Results besides success.
constexpr int kNoMemory = -1;
constexpr int kSeedOutside = -3;

// Fill types, and the class each one fills with.
constexpr char kFillCut = 0;
constexpr char kFillKeep = 1;
constexpr char kFillBand = 2;
// Class values of the class map: every byte is cut, keep or other.
constexpr unsigned char kClassCut = 0;
constexpr unsigned char kClassKeep = 1;
constexpr unsigned char kClassOther = 2;
// The band fill marks its area with a value no class holds, then writes the
// band's fill byte there.
constexpr unsigned char kBandMark = 127;
// Unpainted middle alpha: the compute band's fill value.
constexpr unsigned char kBandFill = 126;
// A palette over every byte value.
constexpr int kByteBits = 8;

struct Rect {
    int x, y, width, height;
};

using PlanePtr = std::unique_ptr<Ipp8u, void (*)(void*)>;

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

// Writes `to` into the mask wherever the class map holds `cls` inside rect.
void writeWhere(unsigned char* mask, int maskStep, const Ipp8u* cls, int clsStep, const Rect& r,
                unsigned char classValue, unsigned char to) {
    for (int y = r.y; y < r.y + r.height; ++y) {
        unsigned char* m = imgPtr(mask, maskStep, 0, y);
        const unsigned char* c = imgPtr(cls, clsStep, 0, y);
        for (int x = r.x; x < r.x + r.width; ++x)
            if (c[x] == classValue) m[x] = to;
    }
}

bool alreadyFilled(unsigned char seed, char fillType) {
    return (seed == kMaskCut && fillType == kFillCut) ||
           (seed == kMaskKeep && fillType == kFillKeep) ||
           (seed == kBandFill && fillType == kFillBand);
}

int floodFill(unsigned char* mask, int maskStep, int width, int height, int seedX, int seedY,
              char fillType, int* rect) {
    rect[0] = rect[1] = rect[2] = rect[3] = 0;
    if (seedX < 0 || seedY < 0 || seedX >= width || seedY >= height) {
        rkRefuse(kEntry, "result -3, the seed lies outside the map");
        return kSeedOutside;
    }
    if (alreadyFilled(*imgPtr(mask, maskStep, seedX, seedY), fillType)) return 1;

    const IppiSize roi{width, height};
    int clsStep = 0;
    PlanePtr cls(ippiMalloc_8u_C1(width, height, &clsStep), ippiFree);
    if (!cls) return noMemory();
    Ipp8u palette[1 << kByteBits];
    std::fill(std::begin(palette), std::end(palette), kClassOther);
    palette[kMaskCut] = kClassCut;
    palette[kMaskKeep] = kClassKeep;
    ippiLUTPalette_8u_C1R(mask, maskStep, cls.get(), clsStep, roi, palette, kByteBits);

    // The size query of the gradient fill also serves the range fill used here.
    int bufBytes = 0;
    if (ippiFloodFillGetSize_Grad(roi, &bufBytes) != ippStsNoErr) return noMemory();
    PlanePtr buffer(ippsMalloc_8u(bufBytes), ippsFree);
    if (!buffer) return noMemory();
    const auto fillValue = static_cast<Ipp8u>(
        fillType == kFillBand ? kBandMark : static_cast<unsigned char>(fillType));
    IppiConnectedComp region{};
    ippiFloodFill_Range8Con_8u_C1IR(cls.get(), clsStep, roi, {seedX, seedY}, fillValue, 0, 0,
                                    &region, buffer.get());
    buffer.reset();

    Rect r = clampRect(region.rect, width, height);
    if (fillType == kFillKeep)
        writeWhere(mask, maskStep, cls.get(), clsStep, r, kClassKeep, kMaskKeep);
    if (fillType == kFillCut)
        writeWhere(mask, maskStep, cls.get(), clsStep, r, kClassCut, kMaskCut);
    if (fillType == kFillBand) {
        r = {0, 0, width, height};
        writeWhere(mask, maskStep, cls.get(), clsStep, r, kBandMark, kBandFill);
    }
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
