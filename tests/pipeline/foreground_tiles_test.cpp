// Tile layouts of foreground recovery: coverage, sizes and margins, the fixed
// tiles of the recovery-only pass; the reduction scale by picture area.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "pipeline/fg_recover.h"
#include "pipeline/fg_recover_tiles.h"

namespace {

TEST(ForegroundTiles, KeptPartsCoverTheRegionAndTilesStayInside) {
    const int side = 100;
    for (const cv::Size s : {cv::Size(1, 1), cv::Size(37, 5), cv::Size(60, 45), cv::Size(100, 100),
                             cv::Size(101, 250), cv::Size(333, 211), cv::Size(1000, 97)}) {
        SCOPED_TRACE(testing::Message() << s);
        const std::vector<FgTile> tiles = fgRecoverTiling(s.width, s.height, side);
        ASSERT_FALSE(tiles.empty());
        // A region within the side is one whole tile.
        if (s.width <= side && s.height <= side) {
            EXPECT_EQ(tiles.size(), 1u);
        }
        cv::Mat covered(s, CV_8UC1, cv::Scalar(0));
        const cv::Rect region(cv::Point(0, 0), s);
        for (const FgTile& t : tiles) {
            EXPECT_EQ(t.rect & region, t.rect);
            EXPECT_EQ(t.rect.size(), tiles.front().rect.size());
            // The tile count rounds up only three quarters of a side past a
            // multiple, so a tile exceeds the side by less than 30%.
            EXPECT_LE(std::max(t.rect.width, t.rect.height), side * 13 / 10);
            EXPECT_EQ(t.keep() & t.rect, t.keep());
            covered(t.keep()).setTo(255);
            // Margins only on inner sides.
            EXPECT_TRUE(t.rect.x > 0 || t.left == 0);
            EXPECT_TRUE(t.rect.br().x < s.width || t.right == 0);
            EXPECT_TRUE(t.rect.y > 0 || t.top == 0);
            EXPECT_TRUE(t.rect.br().y < s.height || t.bottom == 0);
        }
        EXPECT_EQ(cv::countNonZero(covered), s.area());
    }
    EXPECT_TRUE(fgRecoverTiling(0, 10, 100).empty());
    // The tile side never exceeds 100, whatever the memory.
    EXPECT_EQ(fgRecoverTileSide(2320000), kFgMaxTileSide);
}

TEST(ForegroundTiles, MarginsAreAQuarterOfTheOverlap) {
    // At side 100 the 3% overlap is 3 pixels and the margin rounds to 0; a
    // larger side (the layout takes any) shows it: 2000 across at 400 makes 5
    // tiles of 412 at a stride of 398, margins of 3.
    const std::vector<FgTile> t = fgRecoverTiling(2000, 10, 400);
    ASSERT_EQ(t.size(), 5u);
    EXPECT_EQ(std::vector<int>({t[0].rect.width, t[1].rect.x, t[0].left, t[0].right, t[1].left,
                                t[4].rect.br().x, t[4].right}),
              std::vector<int>({412, 398, 0, 3, 3, 2000, 0}));
}

TEST(ComputeOnlyTiles, FixedTilesOf130AtAStrideOf100) {
    EXPECT_EQ(computeOnlyTiles(150, 150),
              (std::vector<cv::Rect>{
                  {0, 0, 130, 130}, {100, 0, 50, 130}, {0, 100, 130, 50}, {100, 100, 50, 50}}));
    // Below 130 in a direction: one tile that way.
    EXPECT_EQ(computeOnlyTiles(129, 40), std::vector<cv::Rect>{cv::Rect(0, 0, 129, 40)});
    for (const cv::Size s : {cv::Size(230, 231), cv::Size(999, 100), cv::Size(131, 700)}) {
        cv::Mat covered(s, CV_8UC1, cv::Scalar(0));
        for (const cv::Rect& r : computeOnlyTiles(s.width, s.height)) {
            EXPECT_EQ(r & cv::Rect(cv::Point(0, 0), s), r);
            EXPECT_EQ(r.x % 100 + r.y % 100, 0);
            covered(r).setTo(255);
        }
        EXPECT_EQ(cv::countNonZero(covered), s.area()) << s;
    }
}

TEST(ForegroundScale, ByJobKindAndPictureArea) {
    EXPECT_FLOAT_EQ(fgRecoverScale(500, 400, true), 1.0f);  // 200,000
    EXPECT_FLOAT_EQ(fgRecoverScale(200001, 1, true), 0.33f);
    EXPECT_FLOAT_EQ(fgRecoverScale(3999999, 1, true), 0.33f);
    EXPECT_FLOAT_EQ(fgRecoverScale(2000, 2000, true), 0.2f);
    EXPECT_FLOAT_EQ(fgRecoverScale(100, 100, false), 0.18f);
}

}  // namespace
