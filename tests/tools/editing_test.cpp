// The editing entries against hand-worked maps: flood fill classes and
// rectangles, colour-range tolerance, the feathered paste's ramps, the
// per-pixel merge and shift, and refusals.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "api/keepcut.h"

namespace {

using Bytes = std::vector<unsigned char>;

// 6 x 4 map: cut in columns 0-1, unpainted bytes of several values in
// columns 2-3, keep in columns 4-5 except one lone unpainted pixel at (5, 3).
constexpr int kW = 6, kH = 4;
Bytes fillMap() {
    Bytes m(kW * kH);
    const unsigned char band[kH] = {128, 0, 254, 2};
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x) m[y * kW + x] = x < 2 ? 1 : x < 4 ? band[y] : 255;
    m[3 * kW + 5] = 128;
    return m;
}

struct FillCase {
    int seedX, seedY;
    char fillType;
    int result;
    int rect[4];
    int x0, y0, x1, y1;  // area that takes `value` (inclusive); empty when x0 > x1
    unsigned char value;
};

TEST(FloodFillAlpha, FillsTheSeedsClassInsideItsRectangle) {
    const FillCase cases[] = {
        {0, 0, 0, 1, {0, 0, 0, 0}, 1, 0, 0, 0, 0},      // seed already cut
        {4, 1, 1, 1, {0, 0, 0, 0}, 1, 0, 0, 0, 0},      // seed already keep
        {2, 0, 2, 1, {0, 0, kW, kH}, 2, 0, 3, 3, 126},  // all non-1/255 bytes are one class
        {3, 2, 1, 1, {2, 0, 2, 4}, 2, 0, 3, 3, 255},    //
        {5, 3, 0, 1, {5, 3, 1, 1}, 5, 3, 5, 3, 1},      // lone pixel: keep walls it in
        {0, 3, 1, 1, {0, 0, 2, 4}, 0, 0, 1, 3, 255},    //
        {2, 0, 5, 1, {2, 0, 2, 4}, 1, 0, 0, 0, 0},      // unknown type: rect only
        {kW, 0, 0, -3, {0, 0, 0, 0}, 1, 0, 0, 0, 0},    //
        {0, kH, 0, -3, {0, 0, 0, 0}, 1, 0, 0, 0, 0},    //
        {-1, 0, 0, -3, {0, 0, 0, 0}, 1, 0, 0, 0, 0},    //
    };
    for (const FillCase& c : cases) {
        Bytes m = fillMap(), want = fillMap();
        for (int y = c.y0; y <= c.y1; ++y)
            for (int x = c.x0; x <= c.x1; ++x) want[y * kW + x] = c.value;
        int rect[4] = {-9, -9, -9, -9};
        const std::string at = "seed " + std::to_string(c.seedX) + "," + std::to_string(c.seedY) +
                               " type " + std::to_string(c.fillType);
        EXPECT_EQ(
            rkFloodFillAlpha(m.data(), kW, kW, kH, c.seedX, c.seedY, 0, 0, c.fillType, 0, rect),
            c.result)
            << at;
        EXPECT_EQ(std::vector<int>(rect, rect + 4), std::vector<int>(c.rect, c.rect + 4)) << at;
        EXPECT_EQ(m, want) << at;
    }
}

// An 8 x 3 picture of the picked colour, except at distance 1 at (2, 1) and
// distance 5 at (3, 1); (4, 1) is painted. The stroke runs along row 1.
struct RangeCase {
    int radius, tolerance;
    bool keep;
    std::vector<int> changedInRow1;
    bool rowsAroundChange;
};

TEST(ColorRangeSelect, SelectsUnpaintedPixelsStrictlyWithinTolerance) {
    const unsigned char rgb[3] = {10, 20, 30};
    const RangeCase cases[] = {
        {0, 0, true, {}, false},
        {0, 1, true, {0, 1, 5, 6, 7}, false},
        {0, 2, false, {0, 1, 2, 5, 6, 7}, false},
        {0, 5, true, {0, 1, 2, 5, 6, 7}, false},
        {0, 6, true, {0, 1, 2, 3, 5, 6, 7}, false},
        {1, 1, true, {0, 1, 5, 6, 7}, true},
    };
    for (const RangeCase& c : cases) {
        constexpr int w = 8, h = 3;
        Bytes image(w * h * 4), mask(w * h, 128);
        for (int i = 0; i < w * h; ++i) {
            image[4 * i] = rgb[2], image[4 * i + 1] = rgb[1], image[4 * i + 2] = rgb[0];
        }
        image[4 * (w + 2) + 2] += 1;                           // red off by 1
        image[4 * (w + 3)] += 3, image[4 * (w + 3) + 1] += 4;  // blue, green: 5
        mask[w + 4] = 3;
        RKPSStructMsk2 r{};
        r.image = image.data(), r.imageRowBytes = 4 * w, r.mask = mask.data();
        r.maskRowBytes = w, r.width = w, r.height = h;
        Bytes want = mask;
        const unsigned char code = c.keep ? 255 : 1;
        for (int x : c.changedInRow1) want[w + x] = code;
        if (c.rowsAroundChange)
            for (int x = 0; x < w; ++x) want[x] = want[2 * w + x] = code;
        EXPECT_EQ(rkColorRangeSelect(&r, 0, 1, w - 1, 1, c.radius, rgb, c.tolerance, c.keep), 1);
        EXPECT_EQ(mask, want) << "radius " << c.radius << " tolerance " << c.tolerance;
    }
}

struct MergeCase {
    int w, h, border, src, dst, x, y, want;
};

TEST(MergeAlphaRect, FeathersRowsThenColumns) {
    // Weights of border 3: rows 255 / 4 x (1, 2, 3) = 63, 127, 191; columns
    // scale by 64, 128, 192 / 256. The result is (src w + dst (255 - w)) / 255.
    const MergeCase cases[] = {
        {100, 100, 3, 255, 0, 50, 0, 63},   {100, 100, 3, 255, 0, 50, 1, 127},
        {100, 100, 3, 255, 0, 50, 2, 191},  {100, 100, 3, 255, 0, 50, 3, 255},
        {100, 100, 3, 255, 0, 50, 99, 63},  {100, 100, 3, 255, 0, 0, 50, 63},
        {100, 100, 3, 255, 0, 98, 50, 127}, {100, 100, 3, 255, 0, 0, 0, 15},
        {100, 100, 3, 0, 255, 50, 0, 192},  {100, 100, 3, 100, 0, 50, 0, 25},
        {4, 4, 3, 255, 0, 1, 0, 127},       {4, 4, 3, 255, 0, 1, 1, 255},
        {3, 3, 3, 255, 0, 0, 0, 255},       {10, 10, 0, 255, 0, 0, 0, 255},
        {10, 10, -4, 7, 200, 0, 0, 7},
    };
    for (const MergeCase& c : cases) {
        Bytes src(c.w * c.h, c.src), dst(c.w * c.h, c.dst);
        EXPECT_EQ(rkMergeAlphaRect(src.data(), c.w, dst.data(), c.w, c.w, c.h, c.border), 1);
        EXPECT_EQ(dst[c.y * c.w + c.x], c.want)
            << c.w << "x" << c.h << " border " << c.border << " at " << c.x << "," << c.y;
    }
}

TEST(AlphaMerge, MultipliesColourBytesAndSetsKeep) {
    unsigned char image[3 * 4] = {77, 77, 77, 9, 77, 78, 79, 9, 200, 1, 0, 9};
    unsigned char mask[3] = {0, 1, 2};
    EXPECT_EQ(rkAlphaMerge(image, 12, 3, 1, mask, 3, 0.5f), 1);
    const unsigned char want[12] = {0, 0, 0, 9, 77, 78, 79, 9, 144, 2, 0, 9};  // 400 & 255 = 144
    EXPECT_EQ(Bytes(image, image + 12), Bytes(want, want + 12));
    EXPECT_EQ(Bytes(mask, mask + 3), Bytes(3, 255));
}

TEST(AlphaShift, LeavesPictureAndMaskAsTheyWere) {
    Bytes image(5 * 4 * 4), mask(5 * 4, 128);
    for (size_t i = 0; i < image.size(); ++i) image[i] = static_cast<unsigned char>(i * 37);
    const Bytes imageBefore = image, maskBefore = mask;
    EXPECT_EQ(rkAlphaShift(image.data(), 20, 5, 4, mask.data(), 5, 1.7f), 1);
    EXPECT_EQ(image, imageBefore);
    EXPECT_EQ(mask, maskBefore);
}

TEST(EditingEntries, RefuseBrokenArgumentsWithALogLineAndNoChange) {
    Bytes image(4 * 4 * 4, 50), mask(4 * 4, 128), other(4 * 4, 7);
    const unsigned char rgb[3] = {50, 50, 50};
    RKPSStructMsk2 r{};
    r.image = image.data(), r.imageRowBytes = 15, r.mask = mask.data(), r.maskRowBytes = 4;
    r.width = r.height = 4;  // picture rows one byte short
    int rect[4] = {5, 5, 5, 5};
    const std::pair<const char*, std::function<int()>> cases[] = {
        {"rkFloodFillAlpha",
         [&] { return rkFloodFillAlpha(mask.data(), 3, 4, 4, 0, 0, 0, 0, 0, 0, rect); }},
        {"rkFloodFillAlpha",
         [&] { return rkFloodFillAlpha(mask.data(), 4, 4, 4, 0, 0, 0, 0, 0, 0, nullptr); }},
        {"rkColorRangeSelect", [&] { return rkColorRangeSelect(&r, 0, 0, 3, 3, 1, rgb, 9, true); }},
        {"rkColorRangeSelect",
         [&] { return rkColorRangeSelect(nullptr, 0, 0, 3, 3, 1, rgb, 9, true); }},
        {"rkMergeAlphaRect",
         [&] { return rkMergeAlphaRect(other.data(), 4, mask.data(), 4, 4, -1, 1); }},
        {"rkAlphaMerge", [&] { return rkAlphaMerge(image.data(), 16, 4, 4, nullptr, 4, 0); }},
        {"rkAlphaShift", [&] { return rkAlphaShift(image.data(), 16, -2, 4, mask.data(), 4, 2); }},
    };
    const Bytes imageBefore = image, maskBefore = mask;
    for (const auto& [entry, call] : cases) {
        clearErrMsg();
        EXPECT_EQ(call(), -2) << entry;
        EXPECT_NE(std::string(getErrMsg()).find(entry), std::string::npos) << entry;
        EXPECT_TRUE(image == imageBefore && mask == maskBefore) << entry;
        EXPECT_EQ(std::vector<int>(rect, rect + 4), std::vector<int>(4, 5)) << entry;
    }
}

}  // namespace
