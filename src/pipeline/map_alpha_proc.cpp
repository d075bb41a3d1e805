// rkMapAlphaProc: the multi-resolution closed-form solve of one image. The
// pyramid is as deep as the memory the problem needs; the coarsest level is
// solved outright and the result is carried up, refined in tiles where the
// finer colours matter.
#include <algorithm>

#include "core/shared_step_planes.h"
#include "filters/cross_bilateral.h"
#include "matting/cfmatt.h"
#include "pipeline/alpha_refine.h"
#include "pipeline/comp_pixels.h"
#include "pipeline/request_maps.h"
#include "pipeline/strategies.h"
#include "pyramid/mask_pyramid.h"

namespace {

// Budget units one pixel of the image costs in a solve, and one unknown pixel
// in the system (24 bytes times a 9 x 9 neighbourhood).
constexpr double kBytesPerPixel = 1200.0;
constexpr double kBytesPerUnknown = 24.0 * 81.0;
// usableMemInMB() is in units of 1000 budget bytes.
constexpr double kBudgetUnit = 1000.0;
// Memory ratios up to which a pyramid of 0, 1 and 2 halvings suffices; beyond
// the last, 3.
constexpr double kDepthRatio[] = {1.0, 4.0, 8.0};
// Smoothing of the coarse solve: radius, range sigma (grey levels of the colour
// difference sum), space sigma and centre weight of the cross bilateral filter.
constexpr int kSmoothRadius = 1;
constexpr float kSmoothRange = 15.0f;
constexpr float kSmoothSpace = 0.825f;
constexpr float kSmoothCentre = 1.0e-6f;

int pyramidDepth(double ratio) {
    int depth = 0;
    for (double limit : kDepthRatio)
        if (ratio > limit) ++depth;
    return depth;
}

}  // namespace

int rkMapAlphaProc(GIMG<unsigned char>** planes, GIMG<unsigned char>* known,
                   GIMG<unsigned char>* alpha, int level, bool refine) {
    const int width = planes[0]->width(), height = planes[0]->height();
    const int unknown = numCompPixels(*known);
    const double ratio =
        std::max(static_cast<double>(width) * height * kBytesPerPixel, unknown * kBytesPerUnknown) /
        (usableMemInMB() * kBudgetUnit);
    const int depth = pyramidDepth(ratio);

    CMaskPyr pyramid;
    pyramid.build(planes, known, alpha, depth);
    GIMG<unsigned char>* coarseKnown = pyramid.getConstPtr(depth);
    GIMG<unsigned char>* coarseAlpha = pyramid.getAlphaPtr(depth);
    if (numCompPixels(*coarseKnown) < kMinUnknownPixels) return 1;
    // The full-size unknown count against the coarse area, as it always was:
    // a coarse level smaller than the full band means no room to solve.
    if (static_cast<long long>(coarseKnown->width()) * coarseKnown->height() - unknown < 1)
        return kErrNotEnoughStrokes;

    {
        GIMG<unsigned char>* levelPlanes[CMaskPyr::kChannels];
        for (int c = 0; c < CMaskPyr::kChannels; ++c) levelPlanes[c] = pyramid.getRGBPtr(depth, c);
        SharedStepPlanes coarse(levelPlanes);
        {
            CFMatt matt;
            matt.setSolver(true);
            matt.CompAlphaMap(coarse.ptr, coarse.step, coarseKnown->width(), coarseKnown->height(),
                              coarseKnown->ptr(), coarseKnown->step, coarseAlpha->ptr(),
                              coarseAlpha->step);
        }
        if (refine) {
            unsigned char* alphaPlane[] = {coarseAlpha->ptr()};
            CBLFRGB(coarseAlpha->width(), coarseAlpha->height(), alphaPlane, coarseAlpha->step, 1,
                    coarse.ptr, coarse.step, CMaskPyr::kChannels, kSmoothRadius, kSmoothRange,
                    kSmoothSpace, kSmoothCentre);
        }
    }

    if (level == 0) {
        pyramid.upSampling();
        return 1;
    }
    if (depth == 1) {
        pyramid.upSampling();
        refineAlphaMW(planes, known, pyramid.getAlphaPtr(0), refine);
    } else if (depth >= 2) {
        for (int l = depth; l >= 2; --l) pyramid.upSamplingOneLevel(l);
        GIMG<unsigned char>* levelOne[] = {pyramid.getRGBPtr(1, 0), pyramid.getRGBPtr(1, 1),
                                           pyramid.getRGBPtr(1, 2)};
        refineAlphaMW(levelOne, pyramid.getConstPtr(1), pyramid.getAlphaPtr(1), refine);
        pyramid.upSamplingOneLevel(1);
    }
    return 1;
}
