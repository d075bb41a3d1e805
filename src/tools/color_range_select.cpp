// Colour-range brush: unpainted map bytes under a thick stroke whose picture
// colour lies near a picked colour become keep or cut.
#include <algorithm>
#include <climits>
#include <opencv2/imgproc.hpp>

#include "api/keepcut.h"
#include "core/img.h"
#include "pipeline/mask_codes.h"
#include "runtime/entry_guard.h"
#include "select/stroke_limits.h"

namespace {

// Name the log lines carry.
constexpr const char* kEntry = "rkColorRangeSelect";
// Host pictures: blue, green, red and a fourth byte per pixel.
constexpr int kPictureBytes = 4;
// The stroke mask is blank (255) and the stroke drawn as 0.
constexpr unsigned char kOffStroke = 255;
constexpr unsigned char kOnStroke = 0;

bool checkRequest(const RKPSStructMsk2* r, const unsigned char* color, int radius) {
    if (!r) return rkRefuse(kEntry, "request is null");
    if (!rkCheckBuffer(kEntry, "image", r->image, r->width, r->height, r->imageRowBytes,
                       kPictureBytes) ||
        !rkCheckBuffer(kEntry, "mask", r->mask, r->width, r->height, r->maskRowBytes, 1))
        return false;
    if (!color) return rkRefuse(kEntry, "color is null");
    if (radius < 0 || radius > kMaxBrushRadius)
        return rkRefuse(kEntry, "radius is outside 0..16383");
    return true;
}

// A stroke point relative to the box; points far off the picture are
// saturated to what the line drawer takes.
cv::Point relative(long long x, long long y, int left, int top) {
    auto sat = [](long long v) {
        return static_cast<int>(std::clamp<long long>(v, INT_MIN, INT_MAX));
    };
    return {sat(x - left), sat(y - top)};
}

int colorRangeSelect(RKPSStructMsk2& r, int x1, int y1, int x2, int y2, int radius,
                     const unsigned char* color, int tolerance, bool keep) {
    if (r.width == 0 || r.height == 0) return 1;  // no pixel to select
    // The box is clipped into the picture whatever the end points are; they
    // need not lie on it.
    const long long xmin = std::min(x1, x2), ymin = std::min(y1, y2);
    const long long xmax = std::max(x1, x2), ymax = std::max(y1, y2);
    const auto left =
        static_cast<int>(std::min<long long>(std::max(xmin - radius, 0LL), r.width - 1));
    const auto top =
        static_cast<int>(std::min<long long>(std::max(ymin - radius, 0LL), r.height - 1));
    const auto right =
        static_cast<int>(std::max<long long>(std::min<long long>(xmax + radius, r.width - 1), 0));
    const auto bottom =
        static_cast<int>(std::max<long long>(std::min<long long>(ymax + radius, r.height - 1), 0));
    const int bw = right - left + 1, bh = bottom - top + 1;

    // Unlike the hair brush, the line joins the stroke's own end points.
    cv::Mat stroke(bh, bw, CV_8UC1, cv::Scalar(kOffStroke));
    cv::line(stroke, relative(x1, y1, left, top), relative(x2, y2, left, top),
             cv::Scalar(kOnStroke), 2 * radius + 1, cv::LINE_8, 0);

    const unsigned char code = keep ? kMaskKeep : kMaskCut;
    const long long limit = static_cast<long long>(tolerance) * tolerance;
    for (int y = 0; y < bh; ++y) {
        const unsigned char* s = stroke.ptr<unsigned char>(y);
        const unsigned char* px = imgPtr(r.image, r.imageRowBytes, left * kPictureBytes, top + y);
        unsigned char* m = imgPtr(r.mask, r.maskRowBytes, left, top + y);
        for (int x = 0; x < bw; ++x, px += kPictureBytes) {
            if (s[x] != kOnStroke || (m[x] & kMaskPaintedBit)) continue;
            const int db = px[0] - color[2], dg = px[1] - color[1], dr = px[2] - color[0];
            if (db * db + dg * dg + dr * dr < limit) m[x] = code;
        }
    }
    return 1;
}

}  // namespace

extern "C" KC_EXPORT int rkColorRangeSelect(RKPSStructMsk2* request, int x1, int y1, int x2, int y2,
                                            int radius, const unsigned char* color, int tolerance,
                                            bool keep) {
    return rkGuardEntry(kEntry, [&] {
        if (!checkRequest(request, color, radius)) return kInvalidArgument;
        return colorRangeSelect(*request, x1, y1, x2, y2, radius, color, tolerance, keep);
    });
}
