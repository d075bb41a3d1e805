// One KD-tree cell solved by closed-form matting. The tree already sized the
// cell to the memory budget, so the cell is solved at its own resolution: the
// pyramid has level 0 only, and neither smoothing nor upsampling has any work.
#include "pipeline/kd_tree_solve.h"

#include "core/shared_step_planes.h"
#include "matting/cfmatt.h"
#include "pipeline/comp_pixels.h"
#include "pyramid/mask_pyramid.h"

namespace {

// A closed-form solve needs a few unknown pixels to be meaningful.
constexpr int kMinCellUnknowns = 3;
// Returned for a cell with too few unknown pixels ("not enough strokes").
constexpr int kErrTooFewUnknowns = -5;
constexpr int kSolveLevel = 0;

}  // namespace

int compAlphaKDTree(GIMG<unsigned char>** images, GIMG<unsigned char>* known,
                    GIMG<unsigned char>* alpha, int level, bool /*filter*/) {
    if (numCompPixels(*known) < kMinCellUnknowns) return kErrTooFewUnknowns;

    CMaskPyr pyramid;
    pyramid.build(images, known, alpha, kSolveLevel);
    GIMG<unsigned char>* levelKnown = pyramid.getConstPtr(kSolveLevel);
    GIMG<unsigned char>* levelAlpha = pyramid.getAlphaPtr(kSolveLevel);
    GIMG<unsigned char>* levelPlanes[CMaskPyr::kChannels];
    for (int c = 0; c < CMaskPyr::kChannels; ++c)
        levelPlanes[c] = pyramid.getRGBPtr(kSolveLevel, c);
    SharedStepPlanes planes(levelPlanes);

    CFMatt matt;
    matt.setSolver(true);
    matt.CompAlphaMap(planes.ptr, planes.step, levelKnown->width(), levelKnown->height(),
                      levelKnown->ptr(), levelKnown->step, levelAlpha->ptr(), levelAlpha->step);

    // Smoothing only ever applies between levels, and a one-level pyramid has
    // none; level 0 still asks the pyramid to bring its alpha down.
    if (level == 0) pyramid.upSampling();
    return 1;
}
