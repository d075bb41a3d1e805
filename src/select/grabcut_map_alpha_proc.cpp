// rkMapAlphaProcGrabCut: GrabCut on a reduced copy of the region. The planes,
// alpha and constraints are halved down to the working level, the cut runs
// there with the session's state, and the pyramid's guided upsampling brings
// the selection back to full size.
#include <opencv2/core/mat.hpp>

#include "core/ippi_copy.h"
#include "core/shared_step_planes.h"
#include "pyramid/mask_pyramid.h"
#include "select/grabcut.h"
#include "select/grabcut_control.h"
#include "select/grabcut_levels.h"

namespace {
constexpr int kChannels = CMaskPyr::kChannels;
}  // namespace

int rkMapAlphaProcGrabCut(GIMG<unsigned char>** rgb, GIMG<unsigned char>* alpha,
                          GIMG<unsigned char>* consts, void*& session, int stepwiseUpsampling,
                          bool /*ignoredFlag*/) {
    const int levels = grabCutLevels(rgb[0]->width(), rgb[0]->height());
    const int level = grabCutWorkLevel(levels);

    CMaskPyr pyramid;
    pyramid.build(rgb, consts, alpha, level);
    GIMG<unsigned char>* levelAlpha = pyramid.getAlphaPtr(level);
    GIMG<unsigned char>* levelConsts = pyramid.getConstPtr(level);
    const int w = levelAlpha->width(), h = levelAlpha->height();
    if (!session) session = grabcutCreateBuf(w, h);

    {
        GIMG<unsigned char>* levelPlanes[kChannels];
        for (int c = 0; c < kChannels; ++c) levelPlanes[c] = pyramid.getRGBPtr(level, c);
        const SharedStepPlanes planes(levelPlanes);
        cv::Mat interleaved(h, w, CV_8UC3);
        ippiCopy_8u_P3C3R(planes.ptr, planes.step, interleaved.data,
                          static_cast<int>(interleaved.step), IppiSize{w, h});
        CompAlphaMapGrabCut(interleaved.data, static_cast<int>(interleaved.step), w, h,
                            levelAlpha->ptr(), levelAlpha->step, levelConsts->ptr(),
                            levelConsts->step, session);
    }

    if (stepwiseUpsampling == 0 || level == 1) {
        pyramid.upSampling();
    } else if (level > 1) {
        for (int l = level; l >= 2; --l) pyramid.upSamplingOneLevel(l);
        pyramid.upSamplingOneLevel(1);
    }
    return 1;
}
