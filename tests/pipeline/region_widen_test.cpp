// Widening of small keep/cut regions, with the expected regions worked out by
// hand from the margins (half of 1.7 times the side, or of 1.4 times the mean
// side when larger, capped by the picture).
#include "pipeline/region_widen.h"

#include <gtest/gtest.h>

namespace {

TEST(WidenRegion, EitherSideBelow1500Suffices) {
    // 1500 x 1499: margins 2550 / 2 = 1275 across, 2548 / 2 = 1274 down.
    EXPECT_EQ(widenRegion({3000, 3000, 1500, 1499}, 10000, 10000),
              (KeepCutRegion{1725, 1726, 4050, 4047}));
    EXPECT_EQ(widenRegion({3000, 3000, 1499, 1500}, 10000, 10000),
              (KeepCutRegion{1726, 1725, 4047, 4050}));
    EXPECT_EQ(widenRegion({3000, 3000, 1500, 1500}, 10000, 10000),
              (KeepCutRegion{3000, 3000, 1500, 1500}));
}

TEST(WidenRegion, ThinRegionGainsFromTheMeanSide) {
    // 400 x 20: across 680 / 2 = 340; down the mean side 210 x 1.4 = 294 wins
    // over 34, giving 147.
    EXPECT_EQ(widenRegion({1000, 1000, 400, 20}, 4000, 3000), (KeepCutRegion{660, 853, 1080, 314}));
}

TEST(WidenRegion, LeftAndTopOverflowMovesToTheFarSide) {
    // 200 x 300 at (10, 20): margins 350 / 2 = 175 (the mean side 250 x 1.4
    // beats 200 x 1.7) and 510 / 2 = 255; 165 columns and 235 rows would fall
    // off, so the far ends grow by that much instead.
    const KeepCutRegion r = widenRegion({10, 20, 200, 300}, 2000, 2000);
    EXPECT_EQ(r, (KeepCutRegion{0, 0, 10 + 200 + 175 + 165, 20 + 300 + 255 + 235}));
}

TEST(WidenRegion, ClippedToThePicture) {
    // Near the bottom-right corner: margin 8, clipped at column / row 99.
    EXPECT_EQ(widenRegion({90, 90, 10, 10}, 100, 100), (KeepCutRegion{82, 82, 18, 18}));
    // A large share of a small picture: the span is capped by the picture and
    // the widened region is the whole picture.
    EXPECT_EQ(widenRegion({20, 20, 60, 60}, 100, 100), (KeepCutRegion{0, 0, 100, 100}));
    // Overflow on the left that also runs past the right edge.
    EXPECT_EQ(widenRegion({5, 0, 90, 10}, 100, 10), (KeepCutRegion{0, 0, 100, 10}));
}

}  // namespace
