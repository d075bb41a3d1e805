// Tile layouts of foreground recovery: the small overlapping tiles in which
// colours are extracted at reduced scale, and the fixed tiles in which
// recovery-only requests visit a picture.
#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

// Largest extraction tile side: one tile's least-squares system (two unknowns
// per pixel) stays small enough to factorise in a fraction of a second.
inline constexpr int kFgMaxTileSide = 100;

// One extraction tile and the margins left out when its result is copied back
// (non-zero only on sides shared with a neighbour, whose result is better
// there because the pixels lie further inside it).
struct FgTile {
    cv::Rect rect;
    int left = 0, right = 0, top = 0, bottom = 0;
    // The part of rect whose result is kept.
    cv::Rect keep() const {
        return {rect.x + left, rect.y + top, rect.width - left - right, rect.height - top - bottom};
    }
};

// Tile side for a memory budget in usableMemInMB() units.
int fgRecoverTileSide(int usableMemMB);

// Tiles over a width x height region with 3% overlap, the last of each row
// and column aligned to the region's edge; margins are a quarter of the
// overlap. An empty region gets no tiles; a region no larger than one tile
// gets one tile covering it, without margins.
std::vector<FgTile> fgRecoverTiling(int width, int height, int side);

// Tiles of a recovery-only pass: 130 x 130 at a stride of 100, clipped to the
// picture, so that neighbouring jobs share a 30-pixel band; a picture smaller
// than 130 in a direction is one tile in that direction.
std::vector<cv::Rect> computeOnlyTiles(int width, int height);
