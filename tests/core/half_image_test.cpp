// Polyphase split and merge: decimation by phase, clipping to what both images
// hold, and put-after-get restoring exactly the pixels taken.
#include "core/half_image.h"

#include <gtest/gtest.h>

#include <random>

namespace {

template <typename T>
void fillPattern(GIMG<T>& img, int salt) {
    for (int y = 0; y < img.roiSize.height; ++y)
        for (int x = 0; x < img.roiSize.width; ++x)
            *imgPtr(img, x, y) = static_cast<T>((x * 7 + y * 13 + salt) % 250);
}

TEST(HalfImage, OddImageWithPhaseOneOneTakesTwoByTwo) {
    GIMG<float> full(5, 5), half(4, 4);
    fillPattern(full, 0);
    fillPattern(half, 100);
    EXPECT_EQ(getHalfImage(full, 1, 1, half), 1);
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            const float want = (r < 2 && c < 2) ? *imgPtr(full, 1 + 2 * c, 1 + 2 * r)
                                                : static_cast<float>((c * 7 + r * 13 + 100) % 250);
            ASSERT_EQ(*imgPtr(half, c, r), want);
        }
}

template <typename T>
void checkFourPhases() {
    // Regions inside larger blocks: the half image sits at (1, 2) of its block.
    GIMG<T> full(9, 7), half(6, 6), rebuilt(9, 7);
    fillPattern(full, 3);
    for (int ph = 0; ph < 4; ++ph) {
        const int ox = ph & 1, oy = ph >> 1;
        fillPattern(half, 50);
        half.roiRect(1, 2, -1, 0);  // 4 x 4, larger than the 4 x 3 that fits
        getHalfImage(full, ox, oy, half);
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c) {
                const bool taken = r < 3;
                const T want = taken ? *imgPtr(full, ox + 2 * c, oy + 2 * r)
                                     : static_cast<T>(((c + 1) * 7 + (r + 2) * 13 + 50) % 250);
                ASSERT_EQ(*imgPtr(half, c, r), want) << "phase " << ox << oy;
            }
        putHalfImage(half, rebuilt, ox, oy);
        half.restoreRect();
    }
    // The four phases together cover the 8 x 6 part that decimation reaches.
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(*imgPtr(rebuilt, x, y), *imgPtr(full, x, y));
}

TEST(HalfImage, FourPhasesSplitAndMergeEveryPlaneType) {
    checkFourPhases<unsigned char>();
    checkFourPhases<unsigned short>();
    checkFourPhases<float>();
}

TEST(HalfImage, PutAfterGetRestoresExactlyTheTakenPixels) {
    std::mt19937 rng(21);
    GIMG<unsigned short> full(11, 8), half(5, 4), target(11, 8);
    for (int ph = 0; ph < 4; ++ph) {
        const int ox = ph & 1, oy = ph >> 1;
        fillPattern(full, static_cast<int>(rng() % 50));
        fillPattern(target, 200);
        getHalfImage(full, ox, oy, half);
        EXPECT_EQ(putHalfImage(half, target, ox, oy), 1);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 11; ++x) {
                const bool taken = (x - ox) % 2 == 0 && (y - oy) % 2 == 0 && x >= ox && y >= oy &&
                                   (x - ox) / 2 < 5 && (y - oy) / 2 < 4;
                ASSERT_EQ(*imgPtr(target, x, y),
                          taken ? *imgPtr(full, x, y)
                                : static_cast<unsigned short>((x * 7 + y * 13 + 200) % 250))
                    << "phase " << ox << oy << " at " << x << "," << y;
            }
    }
}

}  // namespace
