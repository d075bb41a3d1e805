// Tile layout for alpha refinement.
#include "pipeline/refine_tiles.h"

#include <algorithm>
#include <cmath>

namespace {

// Rounds the tile count up once the map is three quarters of a tile over.
constexpr double kCountRounding = 0.75;
// Below this side the stride could reach 0 and the visit would never end.
constexpr int kMinSide = 2;

struct Axis {
    int count, tile, stride;
};

Axis axisLayout(int size, int side, double growth, double overlapShare) {
    int count = static_cast<int>(size / (side / growth) + kCountRounding);
    count = std::max(count, 1);
    int tile = static_cast<int>(size * growth / count);
    int stride = size / count - static_cast<int>(tile * overlapShare / count);
    if (size <= side || size <= tile) {
        count = 1;
        tile = size;
        stride = size;
    }
    return {count, tile, stride};
}

}  // namespace

int refineTileSide(int usableMemMB) {
    const double budget = static_cast<double>(usableMemMB) * 1000.0;
    const int side = static_cast<int>(std::sqrt(budget / kRefineBytesPerTilePixel));
    return std::min(side, kRefineMaxTileSide);
}

RefineTiling refineTiling(int width, int height, int side, double growth, double overlapShare) {
    RefineTiling t;
    if (width <= 0 || height <= 0) return t;
    side = std::max(side, kMinSide);
    const Axis ax = axisLayout(width, side, growth, overlapShare);
    const Axis ay = axisLayout(height, side, growth, overlapShare);
    t.tileW = ax.tile;
    t.tileH = ay.tile;
    t.strideX = ax.stride;
    t.strideY = ay.stride;

    int x = 0, y = 0;
    for (;;) {
        RefineTile tile;
        tile.left = x == 0 ? 0 : kRefineSeamBand;
        tile.top = y == 0 ? 0 : kRefineSeamBand;
        tile.right = tile.bottom = kRefineSeamBand;
        if (x + t.tileW >= width) {
            x = width - t.tileW;
            tile.right = 0;
        }
        if (y + t.tileH >= height) {
            y = height - t.tileH;
            tile.bottom = 0;
        }
        tile.x = x;
        tile.y = y;
        t.tiles.push_back(tile);

        if (x < width - t.tileW) {
            x += t.strideX;
        } else {
            x = 0;
            if (y < height - t.tileH)
                y += t.strideY;
            else
                break;
        }
    }
    return t;
}
