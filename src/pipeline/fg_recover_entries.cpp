// Exported foreground recovery entries: argument checks and the entry guard
// around the recovery of a region and the recovery-only pass.
#include "api/keepcut.h"
#include "pipeline/fg_recover.h"
#include "runtime/arg_check.h"
#include "runtime/entry_guard.h"

namespace {

constexpr int kPictureBytes = 4;  // B, G, R and a fourth byte per pixel
constexpr int kMapBytes = 1;

// Picture, mask and foreground of the request, all of the picture's size.
bool buffersUsable(const char* entry, const RKPSStructMsk2* r) {
    if (!r) return rkRefuse(entry, "request is null");
    const int w = r->width, h = r->height;
    return rkCheckBuffer(entry, "image", r->image, w, h, r->imageRowBytes, kPictureBytes) &&
           rkCheckBuffer(entry, "mask", r->mask, w, h, r->maskRowBytes, kMapBytes) &&
           rkCheckBuffer(entry, "foreground", r->foreground, w, h, r->foregroundRowBytes,
                         kPictureBytes);
}

}  // namespace

extern "C" KC_EXPORT int rkRecoverForegroundCell(RKPSStructMsk2* request, bool cellJob) {
    constexpr const char* kEntry = "rkRecoverForegroundCell";
    return rkGuardEntry(kEntry, [&] {
        if (!buffersUsable(kEntry, request)) return kInvalidArgument;
        const RKPSStructMsk2& r = *request;
        // brushInfo is optional here, but a given one is read over the region.
        if (r.brushInfo && !rkCheckBuffer(kEntry, "brushInfo", r.brushInfo, r.width, r.height,
                                          r.brushInfoRowBytes, kMapBytes))
            return kInvalidArgument;
        const char* wrong = nullptr;
        if (r.roiWidth < 1 || r.roiHeight < 1)
            wrong = "region is empty";
        else if (r.roiX < 0 || r.roiY < 0 || r.roiWidth > r.width - r.roiX ||
                 r.roiHeight > r.height - r.roiY)
            wrong = "region lies outside the picture";
        if (wrong) {
            rkRefuse(kEntry, wrong);
            return kInvalidArgument;
        }
        return recoverForegroundCell(request, cellJob);
    });
}

extern "C" KC_EXPORT int rkRecoverDuringComputeOnly(RKPSStructMsk2* request) {
    constexpr const char* kEntry = "rkRecoverDuringComputeOnly";
    return rkGuardEntry(kEntry, [&] {
        if (!buffersUsable(kEntry, request)) return kInvalidArgument;
        return recoverDuringComputeOnly(
            request, [](RKPSStructMsk2* tile) { return rkKeepCutToAlpha(tile, 0, true); });
    });
}
