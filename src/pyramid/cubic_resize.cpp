// Cubic resampling of byte planes through the engine's square-pixel resize
// primitive, with its work buffer from the aligned allocator.
#include "pyramid/cubic_resize.h"

#include <memory>

#include "core/aligned_alloc.h"
#include "core/ippi_resize.h"

namespace {
struct VectorFree {
    void operator()(Ipp8u* p) const { ippsFree(p); }
};
}  // namespace

void resizeCubic(const GIMG<unsigned char>& src, GIMG<unsigned char>& dst) {
    const IppiRect srcRect{0, 0, src.width(), src.height()};
    const IppiRect dstRect{0, 0, dst.width(), dst.height()};
    int bytes = 0;
    if (ippiResizeGetBufSize(srcRect, dstRect, 1, IPPI_INTER_CUBIC, &bytes) != ippStsNoErr) return;
    std::unique_ptr<Ipp8u, VectorFree> work(ippsMalloc_8u(bytes > 0 ? bytes : 1));
    if (!work) throw kErrOutOfMemory;
    dst.status = ippiResizeSqrPixel_8u_C1R(
        src.ptr(), src.roiSize, src.step, srcRect, dst.ptr(), dst.step, dstRect,
        static_cast<double>(dst.width()) / src.width(),
        static_cast<double>(dst.height()) / src.height(), 0.0, 0.0, IPPI_INTER_CUBIC, work.get());
}
