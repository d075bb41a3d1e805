// Tile layouts of foreground recovery.
#include "pipeline/fg_recover_tiles.h"

#include <algorithm>

#include "pipeline/refine_tiles.h"

namespace {

// Extraction tiles overlap by 3%: the colour solve has no seam constraint,
// so a thin shared band whose edges are dropped is enough to hide seams.
constexpr double kFgTileGrowth = 1.03;
constexpr double kFgOverlapShare = 0.03;
// Share of the overlap dropped on each inner side of a tile.
constexpr int kMarginDivisor = 4;

// Recovery-only jobs: stride and size of the visited tiles; the extra 30
// pixels let each job see past the seam it shares with the next.
constexpr int kComputeOnlyStride = 100;
constexpr int kComputeOnlyExtent = 130;

}  // namespace

int fgRecoverTileSide(int usableMemMB) {
    return std::min(kFgMaxTileSide, refineTileSide(usableMemMB));
}

std::vector<FgTile> fgRecoverTiling(int width, int height, int side) {
    std::vector<FgTile> out;
    const RefineTiling t = refineTiling(width, height, side, kFgTileGrowth, kFgOverlapShare);
    const int mx = (t.tileW - t.strideX) / kMarginDivisor;
    const int my = (t.tileH - t.strideY) / kMarginDivisor;
    out.reserve(t.tiles.size());
    for (const RefineTile& r : t.tiles) {
        FgTile f;
        f.rect = {r.x, r.y, t.tileW, t.tileH};
        // Inner sides are those refinement gives a seam band.
        f.left = r.left ? mx : 0;
        f.right = r.right ? mx : 0;
        f.top = r.top ? my : 0;
        f.bottom = r.bottom ? my : 0;
        out.push_back(f);
    }
    return out;
}

std::vector<cv::Rect> computeOnlyTiles(int width, int height) {
    std::vector<cv::Rect> out;
    const int reach = kComputeOnlyExtent - kComputeOnlyStride;
    for (int y = 0; y == 0 || y < height - reach; y += kComputeOnlyStride)
        for (int x = 0; x == 0 || x < width - reach; x += kComputeOnlyStride)
            out.emplace_back(x, y, std::min(kComputeOnlyExtent, width - x),
                             std::min(kComputeOnlyExtent, height - y));
    if (width <= 0 || height <= 0) out.clear();
    return out;
}
