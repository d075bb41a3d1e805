// Request checks and region views for the GrabCut entries.
#include "select/grabcut_request.h"

#include <string>

#include "pipeline/request_maps.h"
#include "runtime/arg_check.h"

namespace {

constexpr int kPictureBytes = 4;  // B, G, R and a fourth byte per pixel
constexpr int kMapBytes = 1;

cv::Mat regionOf(unsigned char* base, int rowBytes, const RKPSStructMsk2& r, int type) {
    return hostRectView(base, rowBytes, cv::Rect(r.gcLeft, r.gcTop, r.gcWidth, r.gcHeight), type);
}

}  // namespace

bool checkGrabCutRequest(const char* entry, const RKPSStructMsk2* r, GrabCutBuffers which,
                         int minSide) {
    if (!r) return rkRefuse(entry, "request is null");
    const int w = r->width, h = r->height;
    if (which == GrabCutBuffers::PictureAndMaps &&
        !rkCheckBuffer(entry, "image", r->image, w, h, r->imageRowBytes, kPictureBytes))
        return false;
    if (!rkCheckBuffer(entry, "mask", r->mask, w, h, r->maskRowBytes, kMapBytes)) return false;
    if (!rkCheckBuffer(entry, "brushInfo", r->brushInfo, w, h, r->brushInfoRowBytes, kMapBytes))
        return false;
    if (r->gcLeft < 0 || r->gcTop < 0 || r->gcWidth < 0 || r->gcHeight < 0 ||
        r->gcWidth > w - r->gcLeft || r->gcHeight > h - r->gcTop)
        return rkRefuse(entry, "GrabCut region lies outside the picture");
    if (r->gcWidth < minSide || r->gcHeight < minSide)
        return rkRefuse(entry, ("GrabCut region is narrower or lower than " +
                                std::to_string(minSide) + " pixels")
                                   .c_str());
    return true;
}

cv::Mat grabCutMaskView(const RKPSStructMsk2& r) {
    return regionOf(r.mask, r.maskRowBytes, r, CV_8UC1);
}
cv::Mat grabCutBrushView(const RKPSStructMsk2& r) {
    return regionOf(r.brushInfo, r.brushInfoRowBytes, r, CV_8UC1);
}
cv::Mat grabCutPictureView(const RKPSStructMsk2& r) {
    return regionOf(r.image, r.imageRowBytes, r, CV_8UC4);
}
