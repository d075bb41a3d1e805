// Request record checks for the keep/cut entries.
#include "pipeline/keepcut_request_check.h"

namespace {
constexpr int kPictureBytes = 4;  // B, G, R and a fourth byte per pixel
constexpr int kMapBytes = 1;
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
    if (r->roiWidth < 1 || r->roiHeight < 1) return rkRefuse(entry, "region is empty");
    if (r->roiX < 0 || r->roiY < 0 || r->roiWidth > w - r->roiX || r->roiHeight > h - r->roiY)
        return rkRefuse(entry, "region lies outside the picture");
    return true;
}
