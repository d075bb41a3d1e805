// Tile layouts of foreground recovery: coverage, sizes and the fixed tiles of
// the recovery-only pass; the reduction scale by picture area.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "pipeline/fg_recover.h"
#include "pipeline/fg_recover_tiles.h"

namespace {

TEST(ForegroundTiles, KeptPartsCoverTheRegionAndTilesStayInside) {
    const int side = 100;
    for (const cv::Size s : {cv::Size(1, 1), cv::Size(37, 5), cv::Size(100, 100),
                             cv::Size(101, 250), cv::Size(333, 211), cv::Size(1000, 97)}) {
        const std::vector<FgTile> tiles = fgRecoverTiling(s.width, s.height, side);
        ASSERT_FALSE(tiles.empty());
        cv::Mat covered(s, CV_8UC1, cv::Scalar(0));
        const cv::Rect region(cv::Point(0, 0), s);
        for (const FgTile& t : tiles) {
            EXPECT_EQ(t.rect & region, t.rect) << s;
            EXPECT_EQ(t.rect.size(), tiles.front().rect.size());
            // The tile count rounds up only three quarters of a side past a
            // multiple, so a tile exceeds the side by less than 30%.
            EXPECT_LE(t.rect.width, side * 13 / 10);
            EXPECT_LE(t.rect.height, side * 13 / 10);
            EXPECT_EQ(t.keep() & t.rect, t.keep());
            covered(t.keep()).setTo(255);
            // Margins only on inner sides.
            EXPECT_TRUE(t.rect.x > 0 || t.left == 0);
            EXPECT_TRUE(t.rect.br().x < s.width || t.right == 0);
            EXPECT_TRUE(t.rect.y > 0 || t.top == 0);
            EXPECT_TRUE(t.rect.br().y < s.height || t.bottom == 0);
        }
        EXPECT_EQ(cv::countNonZero(covered), s.area()) << s;
    }
}

TEST(ForegroundTiles, SmallRegionIsOneWholeTileAndEmptyHasNone) {
    const std::vector<FgTile> one = fgRecoverTiling(60, 45, 100);
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0].rect, cv::Rect(0, 0, 60, 45));
    EXPECT_EQ(one[0].keep(), one[0].rect);
    EXPECT_TRUE(fgRecoverTiling(0, 10, 100).empty());
    // The tile side never exceeds 100, whatever the memory.
    EXPECT_EQ(fgRecoverTileSide(2320000), kFgMaxTileSide);
}

TEST(ForegroundTiles, MarginsAreAQuarterOfTheOverlap) {
    // At side 100 the 3% overlap is 3 pixels and the margin rounds to 0; a
    // larger side (the layout takes any) shows it: 2000 across at 400 makes 5
    // tiles of 412 at a stride of 398, margins of 3.
    const std::vector<FgTile> tiles = fgRecoverTiling(2000, 10, 400);
    ASSERT_EQ(tiles.size(), 5u);
    EXPECT_EQ(tiles[0].rect.width, 412);
    EXPECT_EQ(tiles[1].rect.x, 398);
    EXPECT_EQ(tiles[0].left, 0);
    EXPECT_EQ(tiles[0].right, 3);
    EXPECT_EQ(tiles[1].left, 3);
    EXPECT_EQ(tiles[4].rect.br().x, 2000);
    EXPECT_EQ(tiles[4].right, 0);
}

TEST(ComputeOnlyTiles, PictureOf150IsVisitedInFourTiles) {
    const std::vector<cv::Rect> t = computeOnlyTiles(150, 150);
    const std::vector<cv::Rect> expected = {cv::Rect(0, 0, 130, 130), cv::Rect(100, 0, 50, 130),
                                            cv::Rect(0, 100, 130, 50), cv::Rect(100, 100, 50, 50)};
    EXPECT_EQ(t, expected);
    // Below 130 in a direction: one tile that way.
    EXPECT_EQ(computeOnlyTiles(129, 40), std::vector<cv::Rect>{cv::Rect(0, 0, 129, 40)});
    for (const cv::Size s : {cv::Size(230, 231), cv::Size(999, 100), cv::Size(131, 700)}) {
        cv::Mat covered(s, CV_8UC1, cv::Scalar(0));
        for (const cv::Rect& r : computeOnlyTiles(s.width, s.height)) {
            EXPECT_EQ(r & cv::Rect(cv::Point(0, 0), s), r);
            EXPECT_EQ(r.x % 100, 0);
            EXPECT_EQ(r.y % 100, 0);
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
