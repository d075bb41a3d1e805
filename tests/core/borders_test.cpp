// Margins: edge replication (both argument orders, corners, one-sided),
// extension copies, frame copies and fills, against per-pixel expectations.
#include "core/borders.h"

#include <gtest/gtest.h>

#include <random>

namespace {

template <typename T>
void fillRandom(GIMG<T>& img, std::mt19937& rng) {
    for (int y = 0; y < img.roiSize.height; ++y)
        for (int x = 0; x < img.roiSize.width; ++x)
            *imgPtr(img, x, y) = static_cast<T>(rng() % 200 + 1);
}

// What replication must give at (x, y) of a w x h region with those margins:
// the inner pixel nearest to it.
IPSize nearestInner(int x, int y, int w, int h, int left, int top, int right, int bottom) {
    return {std::clamp(x, left, w - right - 1), std::clamp(y, top, h - bottom - 1)};
}

template <typename T>
void checkReplication(int left, int top, int right, int bottom, std::mt19937& rng) {
    // A 9x7 region inside an 11x10 block: the block outside the region is untouched.
    GIMG<T> img(11, 10);
    fillRandom(img, rng);
    GIMG<T> before(11, 10);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 11; ++x) *imgPtr(before, x, y) = *imgPtr(img, x, y);
    img.roiRect(1, 2, -1, -1);
    imageExtendBorder(img, left, top, right, bottom);
    img.restoreRect();
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 11; ++x) {
            const int rx = x - 1, ry = y - 2;
            if (rx < 0 || ry < 0 || rx >= 9 || ry >= 7) {
                ASSERT_EQ(*imgPtr(img, x, y), *imgPtr(before, x, y));
                continue;
            }
            const IPSize src = nearestInner(rx, ry, 9, 7, left, top, right, bottom);
            ASSERT_EQ(*imgPtr(img, x, y), *imgPtr(before, src.width + 1, src.height + 2))
                << "margins " << left << top << right << bottom << " at " << rx << "," << ry;
        }
}

TEST(EdgeReplication, EveryPlaneTypeAndMarginMix) {
    std::mt19937 rng(11);
    const int margins[][4] = {{0, 0, 0, 0}, {1, 0, 0, 0}, {0, 2, 0, 0}, {0, 0, 3, 0},
                              {0, 0, 0, 1}, {2, 1, 3, 2}, {4, 3, 4, 3}};
    for (const auto& m : margins) {
        checkReplication<unsigned char>(m[0], m[1], m[2], m[3], rng);
        checkReplication<unsigned short>(m[0], m[1], m[2], m[3], rng);
        checkReplication<short>(m[0], m[1], m[2], m[3], rng);
        checkReplication<float>(m[0], m[1], m[2], m[3], rng);
    }
}

TEST(EdgeReplication, ThreeChannelsAndRawPlanesUseTheirOwnArgumentOrder) {
    IMG3<float> img(5, 4);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 5; ++x)
            for (int c = 0; c < 3; ++c) imgPtr(img, x, y)[c] = float(100 * c + 10 * y + x);
    imageExtendBorder(img, 1, 0, 2, 1);  // left, top, right, bottom
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 5; ++x)
            for (int c = 0; c < 3; ++c) {
                const int sx = std::clamp(x, 1, 2), sy = std::min(y, 2);
                ASSERT_EQ(imgPtr(img, x, y)[c], float(100 * c + 10 * sy + sx));
            }

    // Raw planes: top, bottom, left, right. Row step 9 bytes for 7 pixels (and
    // 23 for 3 x 7 channels) so rows do not line up with the width.
    unsigned char plane[9 * 5], plane3[23 * 5];
    for (int i = 0; i < 9 * 5; ++i) plane[i] = static_cast<unsigned char>(i);
    for (int i = 0; i < 23 * 5; ++i) plane3[i] = static_cast<unsigned char>(i);
    extendBorder(plane, 9, {7, 5}, 1, 2, 0, 3);
    extendBorder3C(plane3, 23, {7, 5}, 1, 2, 0, 3);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 7; ++x) {
            const int sx = std::min(x, 3), sy = std::clamp(y, 1, 2);
            ASSERT_EQ(plane[y * 9 + x], sy * 9 + sx);
            for (int c = 0; c < 3; ++c) ASSERT_EQ(plane3[y * 23 + 3 * x + c], sy * 23 + 3 * sx + c);
        }
    // The bytes past the width are not part of the plane.
    for (int y = 0; y < 5; ++y) ASSERT_EQ(plane[y * 9 + 8], y * 9 + 8);

    float f[4 * 3];
    for (int i = 0; i < 12; ++i) f[i] = float(i);
    extendBorder(f, 16, {4, 3}, 0, 0, 2, 0);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 2; ++x) ASSERT_EQ(f[y * 4 + x], float(y * 4 + 2));
}

TEST(ExtensionCopy, CopiesTopLeftAndReplicatesBeyondTheSource) {
    std::mt19937 rng(12);
    const IPSize dstSizes[] = {{4, 3}, {6, 9}, {10, 4}, {9, 8}};
    for (const IPSize d : dstSizes) {
        GIMG<float> src(6, 5), dst(d.width, d.height);
        fillRandom(src, rng);
        EXPECT_EQ(imageCopyExt(src, dst), 1);
        for (int y = 0; y < d.height; ++y)
            for (int x = 0; x < d.width; ++x)
                ASSERT_EQ(*imgPtr(dst, x, y), *imgPtr(src, std::min(x, 5), std::min(y, 4)))
                    << d.width << "x" << d.height << " at " << x << "," << y;
    }
}

template <typename T>
void checkFrameCopy(std::mt19937& rng) {
    GIMG<T> src(9, 8), dst(9, 8), before(9, 8);
    fillRandom(src, rng);
    fillRandom(dst, rng);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 9; ++x) *imgPtr(before, x, y) = *imgPtr(dst, x, y);
    imageCopyBorder(src, dst, 2, 1);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 9; ++x) {
            const bool frame = y < 1 || y >= 7 || x < 2 || x >= 7;
            ASSERT_EQ(*imgPtr(dst, x, y), frame ? *imgPtr(src, x, y) : *imgPtr(before, x, y));
        }
}

TEST(FrameCopy, TwoThicknessFormsCopyOnlyTheFrame) {
    std::mt19937 rng(13);
    checkFrameCopy<unsigned short>(rng);
    checkFrameCopy<unsigned char>(rng);
    checkFrameCopy<short>(rng);

    short a[10 * 6], b[10 * 6];
    for (int i = 0; i < 60; ++i) a[i] = short(i), b[i] = -1;
    // Step of 10 shorts for an 8 x 6 plane.
    imageCopyBorder(a, 20, b, 20, {8, 6}, 1, 2);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 10; ++x) {
            const bool frame = x < 8 && (y < 2 || y >= 4 || x < 1 || x >= 7);
            ASSERT_EQ(b[y * 10 + x], frame ? a[y * 10 + x] : -1) << x << "," << y;
        }
}

TEST(FrameCopy, FourThicknessFloatFormSkipsEmptyStrips) {
    std::mt19937 rng(14);
    GIMG<float> src(7, 6), dst(7, 6);
    fillRandom(src, rng);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 7; ++x) *imgPtr(dst, x, y) = -1.0f;
    imageCopyBorder(src, dst, 0, 2, 1, 0);  // top, bottom, left, right
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 7; ++x) {
            const bool frame = y >= 4 || x < 1;
            ASSERT_EQ(*imgPtr(dst, x, y), frame ? *imgPtr(src, x, y) : -1.0f);
        }
}

TEST(FrameFill, SetBorderAndConstantBorder) {
    GIMG<unsigned char> img(8, 7);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 8; ++x) *imgPtr(img, x, y) = 9;
    imageSetBorder(img, 3, 1, 2);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 8; ++x) {
            const bool frame = y < 2 || y >= 5 || x < 1 || x >= 7;
            ASSERT_EQ(*imgPtr(img, x, y), frame ? 3 : 9);
        }

    // On a region: only the region's strips, and zero thicknesses change nothing.
    GIMG<unsigned char> m(8, 7);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 8; ++x) *imgPtr(m, x, y) = 0;
    m.roiRect(1, 1, -1, -1);
    setConstsBorder(m, 0, 0, 0, 0);
    setConstsBorder(m, 1, 0, 0, 2);  // left, right, top, bottom
    m.restoreRect();
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 8; ++x) {
            const bool inRegion = x >= 1 && y >= 1 && x < 7 && y < 6;
            const bool strip = inRegion && (x == 1 || y >= 4);
            ASSERT_EQ(*imgPtr(m, x, y), strip ? 255 : 0) << x << "," << y;
        }
}

}  // namespace
