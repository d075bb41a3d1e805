// Layout of the overlapping tiles in which alpha refinement re-solves a map:
// as large as the memory budget allows, about 10% overlap, and the last tile
// of each row and column aligned to the map's edge.
#pragma once

#include <vector>

// Largest tile side, whatever the memory: beyond it one solve gains little and
// the seams are already rare.
inline constexpr int kRefineMaxTileSide = 768;
// Budget (usableMemInMB() x 1000) that one tile pixel costs in the solve: the
// side is the square root of the budget divided by this.
inline constexpr double kRefineBytesPerTilePixel = 1940.0;
// Width of the band along each inner tile side held fixed, so that neighbouring
// tiles agree along their seam.
inline constexpr int kRefineSeamBand = 4;

// Tile side for a memory budget in usableMemInMB() units.
int refineTileSide(int usableMemMB);

// One tile: its top-left corner and the seam band widths on its four sides
// (0 on sides that lie on the map's edge).
struct RefineTile {
    int x = 0, y = 0;
    int left = 0, right = 0, top = 0, bottom = 0;
    bool operator==(const RefineTile&) const = default;
};

struct RefineTiling {
    int tileW = 0, tileH = 0;       // every tile has this size
    int strideX = 0, strideY = 0;   // step between tile origins
    std::vector<RefineTile> tiles;  // in visiting order: rows of tiles, top to bottom
};

// How much larger than an even share of the map each tile is (growth) and the
// share of a tile by which neighbours overlap: refinement's 10%.
inline constexpr double kRefineTileGrowth = 1.1;
inline constexpr double kRefineOverlapShare = 0.1;

// Tiles over a width x height map for the given side (at least 2). An empty map
// gets no tiles. Other layouts pass their own growth and overlap share.
RefineTiling refineTiling(int width, int height, int side, double growth = kRefineTileGrowth,
                          double overlapShare = kRefineOverlapShare);
