// Tiled alpha refinement: each tile is solved on copies of its alpha and known
// map, with its inner seams held fixed, and only its unknown pixels are copied
// back, so painted and already fixed alpha never changes.
#include "pipeline/alpha_refine.h"

#include <opencv2/core.hpp>

#include "api/keepcut.h"
#include "core/borders.h"
#include "core/shared_step_planes.h"
#include "filters/cross_bilateral.h"
#include "matting/cfmatt.h"
#include "pipeline/comp_pixels.h"
#include "pipeline/refine_tiles.h"

namespace {

// A tile with this many unknown pixels or fewer is not worth a solve.
constexpr int kMaxSkippedUnknowns = 5;
// Cross bilateral smoothing of a refined tile: radius 1, range sigma 15 grey
// levels, space sigma 0.825 pixels, and a negligible extra weight on the centre.
constexpr int kFilterRadius = 1;
constexpr float kFilterSigmaRange = 15.0f;
constexpr float kFilterSigmaSpace = 0.825f;
constexpr float kFilterCentreWeight = 1.0e-6f;
constexpr int kColourPlanes = 3;

cv::Mat byteView(GIMG<unsigned char>& img, int x, int y, int w, int h) {
    return cv::Mat(h, w, CV_8UC1, imgPtr(img, x, y), static_cast<size_t>(img.step));
}

}  // namespace

void refineSolveTileClosedForm(unsigned char** planes, int planeStep, int width, int height,
                               unsigned char* known, int knownStep, unsigned char* alpha,
                               int alphaStep) {
    CFMatt matt;
    matt.setSolver(true);
    matt.CompAlphaMap(planes, planeStep, width, height, known, knownStep, alpha, alphaStep);
}

void refineAlphaTiles(GIMG<unsigned char>** planes, GIMG<unsigned char>* known,
                      GIMG<unsigned char>* alpha, bool filter, int side,
                      const RefineTileSolver& solve) {
    const RefineTiling layout = refineTiling(alpha->width(), alpha->height(), side);
    if (layout.tiles.empty()) return;
    const int tw = layout.tileW, th = layout.tileH;
    // Allocated once for all tiles.
    GIMG<unsigned char> alphaWork(tw, th);
    GIMG<unsigned char> knownWork(tw, th);
    cv::Mat alphaWorkMat = byteView(alphaWork, 0, 0, tw, th);
    cv::Mat knownWorkMat = byteView(knownWork, 0, 0, tw, th);
    const SharedStepPlanes shared(planes);
    const int planeStep = shared.step;

    for (const RefineTile& tile : layout.tiles) {
        GIMG<unsigned char> knownTile(tw, th, imgPtr(*known, tile.x, tile.y), known->step);
        if (numCompPixels(knownTile) <= kMaxSkippedUnknowns) continue;
        cv::Mat knownView = byteView(*known, tile.x, tile.y, tw, th);
        cv::Mat alphaView = byteView(*alpha, tile.x, tile.y, tw, th);
        alphaView.copyTo(alphaWorkMat);
        knownView.copyTo(knownWorkMat);
        setConstsBorder(knownWork, tile.left, tile.right, tile.top, tile.bottom);

        unsigned char* tilePlanes[kColourPlanes];
        for (int c = 0; c < kColourPlanes; ++c)
            tilePlanes[c] = imgPtr(shared.ptr[c], planeStep, tile.x, tile.y);
        solve(tilePlanes, planeStep, tw, th, knownWork.ptr(), knownWork.step, alphaWork.ptr(),
              alphaWork.step);
        if (filter) {
            unsigned char* filtered[1] = {alphaWork.ptr()};
            CBLFRGB(tw, th, filtered, alphaWork.step, 1, tilePlanes, planeStep, kColourPlanes,
                    kFilterRadius, kFilterSigmaRange, kFilterSigmaSpace, kFilterCentreWeight);
        }
        // Fixed pixels take their old alpha back; only unknown pixels change.
        alphaView.copyTo(alphaWorkMat, knownView);
        alphaWorkMat.copyTo(alphaView);
    }
}

extern "C" int refineAlphaMW(GIMG<unsigned char>** planes, GIMG<unsigned char>* known,
                             GIMG<unsigned char>* alpha, bool filter) {
    refineAlphaTiles(planes, known, alpha, filter, refineTileSide(usableMemInMB()),
                     refineSolveTileClosedForm);
    return 0;
}
