// Giving three colour planes one row step, by copying only when they differ.
#include "core/shared_step_planes.h"

#include "core/ippi_copy.h"

SharedStepPlanes::SharedStepPlanes(GIMG<unsigned char>* const planes[kPlanes])
    : step(planes[0]->step) {
    bool shared = true;
    for (int c = 0; c < kPlanes; ++c) {
        ptr[c] = planes[c]->ptr();
        shared = shared && planes[c]->step == step;
    }
    const int w = planes[0]->width(), h = planes[0]->height();
    if (shared || w <= 0 || h <= 0) return;
    // One block of three plane heights: a single allocation has a single step,
    // whichever allocator serves it.
    copy_ = std::make_unique<GIMG<unsigned char>>(w, kPlanes * h);
    step = copy_->step;
    for (int c = 0; c < kPlanes; ++c) {
        ptr[c] = imgPtr(*copy_, 0, c * h);
        ippiCopy_8u_C1R(planes[c]->ptr(), planes[c]->step, ptr[c], step, IppiSize{w, h});
    }
}
