// Mask bounding box: typed forms against a brute-force reference, the margin
// and 24-row rules at their boundaries, and the C entry's argument checks.
#include "pipeline/mask_bbox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "pipeline/mask_codes.h"

namespace {

struct Box {
    int result = -99, x = -9, w = -9, y = -9, h = -9, countA = -9, countB = -9;
    bool operator==(const Box&) const = default;
};

std::ostream& operator<<(std::ostream& os, const Box& b) {
    return os << "result " << b.result << " box " << b.x << "," << b.y << " " << b.w << "x" << b.h
              << " counts " << b.countA << "/" << b.countB;
}

// A map of T with padding after each row; the padding holds a work value so a
// scan that strays past the width changes the box.
template <typename T>
struct Map {
    int width, height, stride;  // stride in elements
    std::vector<T> data;
    Map(int w, int h, int pad, T fill, T padValue)
        : width(w), height(h), stride(w + pad), data(static_cast<size_t>(stride) * h, padValue) {
        for (int y = 0; y < h; ++y) std::fill_n(&data[static_cast<size_t>(y) * stride], w, fill);
    }
    T& at(int x, int y) { return data[static_cast<size_t>(y) * stride + x]; }
    int stepBytes() const { return stride * static_cast<int>(sizeof(T)); }
};

template <typename T>
Box typedBox(Map<T>& m, int valueA, int valueB) {
    Box b;
    b.result = rkMaskBBox(m.data.data(), m.stepBytes(), m.width, m.height, &b.x, &b.w, &b.y, &b.h,
                          &b.countA, &b.countB, 0, valueA, valueB);
    return b;
}

// The same rules stated over the extremes of the work pixels.
template <typename T>
Box referenceBox(Map<T>& m, int valueA, int valueB) {
    int r0 = m.height, r1 = -1, c0 = m.width, c1 = -1;
    for (int y = 0; y < m.height; ++y)
        for (int x = 0; x < m.width; ++x)
            if (m.at(x, y) != valueA && m.at(x, y) != valueB) {
                r0 = std::min(r0, y), r1 = std::max(r1, y);
                c0 = std::min(c0, x), c1 = std::max(c1, x);
            }
    Box b;
    b.result = 1;
    const int top = std::max(r1 < 0 ? m.height : r0 - 12, 0);
    const int bottom = std::min(r1 > top ? r1 + 12 : top, m.height - 1);
    if (bottom - top + 1 < 24) {
        b.x = b.w = b.y = b.h = 0;
        b.countA = b.countB = -1;
        return b;
    }
    const int left = std::max(c0 - 12, 0);
    const int right = std::min(c1 > left ? c1 + 12 : left, m.width - 1);
    b.x = left, b.w = right - left + 1, b.y = top, b.h = bottom - top + 1;
    b.countA = b.countB = 0;
    for (int y = top; y <= bottom; ++y)
        for (int x = left; x <= right; ++x) {
            b.countA += m.at(x, y) == valueA;
            b.countB += m.at(x, y) == valueB;
        }
    return b;
}

// Keep on the left half, cut on the right, a few band pixels sprinkled in.
template <typename T>
Map<T> randomMap(std::mt19937& rng, int w, int h, int bandPixels) {
    Map<T> m(w, h, 3, kMaskKeep, 7);
    for (int y = 0; y < h; ++y)
        for (int x = w / 2; x < w; ++x) m.at(x, y) = kMaskCut;
    std::uniform_int_distribution<int> px(0, w - 1), py(0, h - 1), band(3, 124);
    for (int i = 0; i < bandPixels; ++i) m.at(px(rng), py(rng)) = static_cast<T>(2 * band(rng));
    return m;
}

TEST(MaskBBox, TypedFormsMatchReferenceOnRandomMaps) {
    std::mt19937 rng(42);
    for (int trial = 0; trial < 60; ++trial) {
        std::uniform_int_distribution<int> side(1, 90), count(0, 4);
        const int w = side(rng), h = side(rng), n = count(rng);
        SCOPED_TRACE(testing::Message() << w << "x" << h << " with " << n << " band pixels");
        Map<unsigned char> m8 = randomMap<unsigned char>(rng, w, h, n);
        EXPECT_EQ(typedBox(m8, kMaskKeep, kMaskCut), referenceBox(m8, kMaskKeep, kMaskCut));
        Map<unsigned short> m16 = randomMap<unsigned short>(rng, w, h, n);
        EXPECT_EQ(typedBox(m16, kMaskKeep, kMaskCut), referenceBox(m16, kMaskKeep, kMaskCut));
    }
}

TEST(MaskBBox, OnlyTheTwoValuesGivesNoBox) {
    Map<unsigned char> m(50, 60, 2, kMaskKeep, 7);
    m.at(3, 3) = kMaskCut;
    const Box none{1, 0, 0, 0, 0, -1, -1};
    EXPECT_EQ(typedBox(m, kMaskKeep, kMaskCut), none);
    Map<unsigned char> empty(0, 0, 0, 0, 0);
    EXPECT_EQ(typedBox(empty, kMaskKeep, kMaskCut), none);
}

TEST(MaskBBox, MarginAndTwentyFourRowRule) {
    // One band pixel at row 50 of 200: rows 38..62, 25 rows, just passes.
    Map<unsigned char> m(100, 200, 0, kMaskKeep, 7);
    m.at(40, 50) = 128;
    EXPECT_EQ(typedBox(m, kMaskKeep, kMaskCut), (Box{1, 28, 25, 38, 25, 25 * 25 - 1, 0}));

    // Near the top the margin is clipped: row 11 spans rows 0..23 (24, passes),
    // row 10 only 0..22.
    Map<unsigned char> top(30, 40, 0, kMaskCut, 7);
    top.at(15, 11) = 100;
    EXPECT_EQ(typedBox(top, kMaskKeep, kMaskCut).h, 24);
    top.at(15, 11) = kMaskCut;
    top.at(15, 10) = 100;
    EXPECT_EQ(typedBox(top, kMaskKeep, kMaskCut).h, 0);

    // Clipped at the bottom and right edges.
    Map<unsigned short> corner(50, 50, 1, kMaskKeep, 7);
    corner.at(30, 30) = 4;
    corner.at(45, 45) = 4;
    EXPECT_EQ(typedBox(corner, kMaskKeep, kMaskCut), (Box{1, 18, 32, 18, 32, 32 * 32 - 2, 0}));
}

TEST(MaskBBox, OneColumnPassesOnHeightAlone) {
    // Work in column 0 only: left clips to 0, and the rightward scan starts
    // just right of it, so the box is one column wide and still reported.
    Map<unsigned char> m(60, 120, 4, kMaskKeep, 7);
    for (int y = 50; y <= 60; ++y) m.at(0, y) = 130;
    EXPECT_EQ(typedBox(m, kMaskKeep, kMaskCut), (Box{1, 0, 1, 38, 35, 35 - 11, 0}));
}

TEST(MaskBBox, CountsNeedBothPointers) {
    Map<unsigned char> m(40, 40, 0, kMaskKeep, 7);
    m.at(20, 20) = 128;
    int x, w, y, h, countA = -9;
    EXPECT_EQ(rkMaskBBox(m.data.data(), m.stepBytes(), 40, 40, &x, &w, &y, &h, &countA, nullptr, 0,
                         kMaskKeep, kMaskCut),
              1);
    EXPECT_EQ(countA, -9);
    EXPECT_EQ(w, 25);
}

class MaskBBoxEntry : public ::testing::Test {
  protected:
    void SetUp() override { clearErrMsg(); }
    void TearDown() override { clearErrMsg(); }
};

TEST_F(MaskBBoxEntry, DispatchesOnElementSizeAndAlwaysReturnsOne) {
    std::mt19937 rng(3);
    Map<unsigned char> m8 = randomMap<unsigned char>(rng, 70, 50, 3);
    Map<unsigned short> m16 = randomMap<unsigned short>(rng, 70, 50, 3);
    Box b8, b16;
    b8.result = rkMaskBBox(0, m8.data.data(), m8.stepBytes(), 70, 50, &b8.x, &b8.w, &b8.y, &b8.h,
                           &b8.countA, &b8.countB, 0, kMaskKeep, kMaskCut);
    b16.result = rkMaskBBox(1, m16.data.data(), m16.stepBytes(), 70, 50, &b16.x, &b16.w, &b16.y,
                            &b16.h, &b16.countA, &b16.countB, 0, kMaskKeep, kMaskCut);
    EXPECT_EQ(b8, referenceBox(m8, kMaskKeep, kMaskCut));
    EXPECT_EQ(b16, referenceBox(m16, kMaskKeep, kMaskCut));
    EXPECT_STREQ(getErrMsg(), "");
}

// A host's 16-bit map need not be aligned: the same map copied to an odd
// address with an odd step gives the same box.
TEST_F(MaskBBoxEntry, SixteenBitMapAtAnOddAddressWithAnOddStep) {
    std::mt19937 rng(5);
    Map<unsigned short> m16 = randomMap<unsigned short>(rng, 70, 50, 3);
    const int step = m16.stepBytes() + 1;
    std::vector<unsigned char> bytes(1 + static_cast<size_t>(step) * 50, 0);
    for (int y = 0; y < 50; ++y)
        std::memcpy(&bytes[1 + static_cast<size_t>(y) * step], &m16.at(0, y), 2 * 70);
    Box b;
    b.result = rkMaskBBox(1, &bytes[1], step, 70, 50, &b.x, &b.w, &b.y, &b.h, &b.countA, &b.countB,
                          0, kMaskKeep, kMaskCut);
    EXPECT_EQ(b, referenceBox(m16, kMaskKeep, kMaskCut));
}

TEST_F(MaskBBoxEntry, RefusesBadArgumentsWithALogLine) {
    Map<unsigned char> m(40, 40, 0, kMaskKeep, 7);
    Map<unsigned short> m16(40, 40, 0, kMaskKeep, 7);
    int x = -9, w = -9, y = -9, h = -9, a = -9, b = -9;
    struct Case {
        int is16;
        const void* map;
        int step, width, height;
        int* px;
    } cases[] = {
        {0, nullptr, 40, 40, 40, &x},             // null map
        {0, m.data.data(), 40, -1, 40, &x},       // negative width
        {0, m.data.data(), 40, 40, -5, &x},       // negative height
        {0, m.data.data(), 39, 40, 40, &x},       // rows shorter than the width
        {1, m16.data.data(), 40, 40, 40, &x},     // 16-bit rows need 80 bytes
        {0, m.data.data(), 40, 40, 40, nullptr},  // null box output
    };
    for (const Case& c : cases) {
        clearErrMsg();
        EXPECT_EQ(rkMaskBBox(c.is16, c.map, c.step, c.width, c.height, c.px, &w, &y, &h, &a, &b, 0,
                             kMaskKeep, kMaskCut),
                  -2);
        EXPECT_EQ(std::string(getErrMsg()).rfind("rkMaskBBox: ", 0), 0u) << getErrMsg();
    }
    EXPECT_EQ((Box{0, x, w, y, h, a, b}), (Box{0, -9, -9, -9, -9, -9, -9}));
}

}  // namespace
