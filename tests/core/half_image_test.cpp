// Polyphase split and merge: decimation by phase, clipping to what both images
// hold, and put-after-get restoring exactly the pixels taken.
#include "core/half_image.h"

#include <gtest/gtest.h>

namespace {

template <typename T>
void fillPattern(GIMG<T>& img, int salt) {
    for (int y = 0; y < img.roiSize.height; ++y)
        for (int x = 0; x < img.roiSize.width; ++x)
            *imgPtr(img, x, y) = static_cast<T>((x * 7 + y * 13 + salt) % 250);
}

// Each phase of a 9 x 7 image into a half image that is a region (at (1, 2) of
// its block) larger than the 4 x 3 that fits, then back into a patterned
// target: only the taken pixels change, and the four phases rebuild the
// 8 x 6 part that decimation reaches.
template <typename T>
void checkFourPhases() {
    GIMG<T> full(9, 7), half(6, 6), target(9, 7), rebuilt(9, 7);
    fillPattern(full, 3);
    for (int ph = 0; ph < 4; ++ph) {
        const int ox = ph & 1, oy = ph >> 1;
        SCOPED_TRACE(testing::Message() << "phase " << ox << oy);
        fillPattern(half, 50);
        fillPattern(target, 200);
        half.roiRect(1, 2, -1, 0);  // 4 x 4
        EXPECT_EQ(getHalfImage(full, ox, oy, half), 1);
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(*imgPtr(half, c, r),
                          r < 3 ? *imgPtr(full, ox + 2 * c, oy + 2 * r)
                                : static_cast<T>(((c + 1) * 7 + (r + 2) * 13 + 50) % 250));
        EXPECT_EQ(putHalfImage(half, target, ox, oy), 1);
        putHalfImage(half, rebuilt, ox, oy);
        half.restoreRect();
        for (int y = 0; y < 7; ++y)
            for (int x = 0; x < 9; ++x) {
                const bool taken = x >= ox && y >= oy && (x - ox) % 2 == 0 && (y - oy) % 2 == 0 &&
                                   (x - ox) / 2 < 4 && (y - oy) / 2 < 3;
                ASSERT_EQ(*imgPtr(target, x, y), taken
                                                     ? *imgPtr(full, x, y)
                                                     : static_cast<T>((x * 7 + y * 13 + 200) % 250))
                    << x << "," << y;
            }
    }
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(*imgPtr(rebuilt, x, y), *imgPtr(full, x, y));
}

TEST(HalfImage, FourPhasesSplitAndMergeEveryPlaneType) {
    checkFourPhases<unsigned char>();
    checkFourPhases<unsigned short>();
    checkFourPhases<float>();
}

}  // namespace
