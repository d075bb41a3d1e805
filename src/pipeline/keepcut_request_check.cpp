// Request record checks for the keep/cut entries.
#include "pipeline/keepcut_request_check.h"

namespace {
constexpr int kPictureBytes = 4;  // B, G, R and a fourth byte per pixel
constexpr int kMapBytes = 1;
// A region job draws a known rim 2 x cellMode + 1 pixels thick; the drawing
// primitive refuses lines thicker than 32767, so no larger value can be used
// (20,000 failed inside it, 2^30 and more overflowed the thickness).
constexpr int kMaxCellMode = 16383;
}  // namespace

bool checkKeepCutRequest(const char* entry, const RKPSStructMsk2* r, KeepCutBuffers which) {
    if (!r) return rkRefuse(entry, "request is null");
    const int w = r->width, h = r->height;
    if (which == KeepCutBuffers::All &&
        !rkCheckBuffer(entry, "image", r->image, w, h, r->imageRowBytes, kPictureBytes))
        return false;
    if (!rkCheckBuffer(entry, "mask", r->mask, w, h, r->maskRowBytes, kMapBytes)) return false;
    if (!rkCheckBuffer(entry, "brushInfo", r->brushInfo, w, h, r->brushInfoRowBytes, kMapBytes))
        return false;
    // The foreground buffer is needed only for recovery, but a given one may be
    // written (painted pixels), so it must be sound either way.
    if (which == KeepCutBuffers::All && (r->recoverForeground || r->foreground) &&
        !rkCheckBuffer(entry, "foreground", r->foreground, w, h, r->foregroundRowBytes,
                       kPictureBytes))
        return false;
    if (which == KeepCutBuffers::All && (r->cellMode < 0 || r->cellMode > kMaxCellMode))
        return rkRefuse(entry, "cellMode must lie in 0..16383");
    if (r->roiWidth < 1 || r->roiHeight < 1) return rkRefuse(entry, "region is empty");
    if (r->roiX < 0 || r->roiY < 0 || r->roiWidth > w - r->roiX || r->roiHeight > h - r->roiY)
        return rkRefuse(entry, "region lies outside the picture");
    return true;
}
