// Recovery-only pass: the picture is visited in fixed overlapping tiles, and
// each tile that still holds work is computed as a region job that also
// recovers its foreground.
#include <algorithm>
#include <opencv2/core.hpp>

#include "pipeline/comp_pixels.h"
#include "pipeline/fg_recover.h"
#include "pipeline/fg_recover_tiles.h"
#include "runtime/progress.h"

namespace {
// Region jobs of this pass draw a known rim of 2 x 4 + 1 pixels in the
// KD-tree strategy: wide enough to hold the tile's neighbours steady.
constexpr int kComputeOnlyCellMode = 4;
// Nominal tile stride, by which the progress share of a tile is reckoned.
constexpr int kProgressTileSide = 100;
}  // namespace

int recoverDuringComputeOnly(RKPSStructMsk2* request,
                             const std::function<int(RKPSStructMsk2*)>& job) {
    CProgMsgGlobal* prog = CProgMsgGlobal::Inst();
    prog->setup(request->progProc, request->progData, 0.0f);

    // Scratch for the jobs' copy of the painted map.
    cv::Mat brush(request->height, request->width, CV_8UC1);
    for (int y = 0; y < request->height; ++y)
        std::copy_n(request->mask + static_cast<long long>(y) * request->maskRowBytes,
                    request->width, brush.ptr<unsigned char>(y));
    RKPSStructMsk2 copy = *request;
    copy.brushInfo = brush.data;
    copy.brushInfoRowBytes = static_cast<int>(brush.step);
    copy.cellMode = kComputeOnlyCellMode;
    copy.recoverForeground = true;

    // A picture narrower or lower than the nominal stride still counts as one
    // tile across, so that the share stays finite.
    const int across = std::max(request->width / kProgressTileSide, 1);
    const int down = std::max(request->height / kProgressTileSide, 1);
    const float step = 1.0f / static_cast<float>(across * down);

    for (const cv::Rect& t : computeOnlyTiles(request->width, request->height)) {
        cv::Mat tileMask(t.height, t.width, CV_8UC1,
                         request->mask + static_cast<long long>(t.y) * request->maskRowBytes + t.x,
                         static_cast<size_t>(request->maskRowBytes));
        prog->progStart(step);
        if (numCompPixelsRecoverComputeOnly(tileMask) > 0) {
            copy.roiX = t.x;
            copy.roiY = t.y;
            copy.roiWidth = t.width;
            copy.roiHeight = t.height;
            // A tile's failure is reported by its own job; the pass goes on.
            job(&copy);
        }
        prog->progDone();
    }
    prog->progComplete();
    return 1;
}
