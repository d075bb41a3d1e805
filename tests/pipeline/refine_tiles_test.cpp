// Tile layout of alpha refinement over many sizes and sides: every pixel is
// covered, tiles stay inside the map, the last row and column are snapped to
// the edges, seam bands sit exactly on the inner sides.
#include "pipeline/refine_tiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// Sides from here on give overlaps wider than two seam bands.
constexpr int kRealisticSide = 100;

void checkLayout(int W, int H, int side) {
    SCOPED_TRACE(testing::Message() << W << "x" << H << " side " << side);
    const RefineTiling t = refineTiling(W, H, side);
    ASSERT_FALSE(t.tiles.empty());
    ASSERT_GE(t.tileW, 1);
    ASSERT_GE(t.tileH, 1);
    ASSERT_LE(t.tileW, W);
    ASSERT_LE(t.tileH, H);
    if (W <= side) {
        EXPECT_EQ(t.tileW, W);
    }
    if (H <= side) {
        EXPECT_EQ(t.tileH, H);
    }

    std::vector<int> covered(static_cast<size_t>(W) * H, 0);
    int rightEdgeTiles = 0, bottomEdgeTiles = 0;
    for (const RefineTile& tile : t.tiles) {
        ASSERT_GE(tile.x, 0);
        ASSERT_GE(tile.y, 0);
        ASSERT_LE(tile.x + t.tileW, W);
        ASSERT_LE(tile.y + t.tileH, H);
        const bool atLeft = tile.x == 0, atTop = tile.y == 0;
        const bool atRight = tile.x + t.tileW == W, atBottom = tile.y + t.tileH == H;
        EXPECT_EQ(tile.left, atLeft ? 0 : kRefineSeamBand);
        EXPECT_EQ(tile.top, atTop ? 0 : kRefineSeamBand);
        EXPECT_EQ(tile.right, atRight ? 0 : kRefineSeamBand);
        EXPECT_EQ(tile.bottom, atBottom ? 0 : kRefineSeamBand);
        rightEdgeTiles += atRight;
        bottomEdgeTiles += atBottom;
        for (int y = tile.y; y < tile.y + t.tileH; ++y)
            for (int x = tile.x; x < tile.x + t.tileW; ++x)
                ++covered[static_cast<size_t>(y) * W + x];
    }
    EXPECT_EQ(std::count(covered.begin(), covered.end(), 0), 0);
    // One tile per row of tiles touches the right edge, one per column the bottom.
    const int cols = static_cast<int>(std::count_if(t.tiles.begin(), t.tiles.end(),
                                                    [](const RefineTile& r) { return r.y == 0; }));
    const int rows = static_cast<int>(t.tiles.size()) / cols;
    EXPECT_EQ(static_cast<int>(t.tiles.size()), rows * cols);
    EXPECT_EQ(rightEdgeTiles, rows);
    EXPECT_EQ(bottomEdgeTiles, cols);

    // Seams: with tiles of realistic size the overlap exceeds two bands, so a
    // pixel held fixed by one tile's band is solved freely by another tile.
    if (side < kRealisticSide) return;
    std::vector<char> free(static_cast<size_t>(W) * H, 0);
    for (const RefineTile& tile : t.tiles)
        for (int y = tile.y + tile.top; y < tile.y + t.tileH - tile.bottom; ++y)
            for (int x = tile.x + tile.left; x < tile.x + t.tileW - tile.right; ++x)
                free[static_cast<size_t>(y) * W + x] = 1;
    EXPECT_EQ(std::count(free.begin(), free.end(), 0), 0);
}

TEST(RefineTiles, CoverManySizesAndSides) {
    const int sides[] = {2, 7, 16, 50, 97, 454, 768};
    const int sizes[] = {1, 2, 3, 15, 16, 17, 49, 55, 100, 101, 333, 1000, 2000};
    for (int side : sides)
        for (int W : sizes)
            for (int H : sizes) {
                if (static_cast<long long>(W) * H > 300000) continue;
                checkLayout(W, H, side);
            }
}

TEST(RefineTiles, MapWithinTheSideIsOneTileWithoutBands) {
    for (int s : {1, 300, 768}) {
        const RefineTiling t = refineTiling(s, s, 768);
        ASSERT_EQ(t.tiles.size(), 1u);
        EXPECT_EQ(t.tileW, s);
        EXPECT_EQ(t.tileH, s);
        EXPECT_EQ(t.tiles[0], (RefineTile{0, 0, 0, 0, 0, 0}));
    }
    EXPECT_TRUE(refineTiling(0, 10, 768).tiles.empty());
}

TEST(RefineTiles, CountsSizesAndStridesFollowTheTenPercentRule) {
    // 2000 wide with side 454: count = (int)(2000 / (454 / 1.1) + 0.75) = 5,
    // tile = (int)(2200 / 5) = 440, stride = 400 - (int)(44.0 / 5) = 392.
    const RefineTiling t = refineTiling(2000, 1500, 454);
    EXPECT_EQ(t.tileW, 440);
    EXPECT_EQ(t.strideX, 392);
    // 1500: count = (int)(1500 / 412.7 + 0.75) = 4, tile = 412, stride = 375 - 10 = 365.
    EXPECT_EQ(t.tileH, 412);
    EXPECT_EQ(t.strideY, 365);
    ASSERT_EQ(t.tiles.size(), 20u);
    // The last tile of a row is snapped to the edge, the next row starts at 0.
    EXPECT_EQ(t.tiles[4].x, 2000 - 440);
    EXPECT_EQ(t.tiles[5].x, 0);
    EXPECT_EQ(t.tiles[5].y, 365);
    EXPECT_EQ(t.tiles.back().y, 1500 - 412);
}

TEST(RefineTiles, SideFromMemory) {
    // The smallest budget (400,000 units) gives sqrt(400e6 / 1940) = 454.
    EXPECT_EQ(refineTileSide(400000), 454);
    EXPECT_EQ(refineTileSide(1000000), static_cast<int>(std::sqrt(1e9 / 1940.0)));
    // The largest budget is capped; the product does not overflow.
    EXPECT_EQ(refineTileSide(2320000), kRefineMaxTileSide);
}

}  // namespace
