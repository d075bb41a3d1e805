// The host's hair brush: alpha under a thick stroke from two picked colours,
// of which only the neighbourhood extremes are written into the map as
// painted bytes, so that the keep/cut computation keeps them.
#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "api/keepcut.h"
#include "core/img.h"
#include "core/ippi_copy.h"
#include "pipeline/mask_codes.h"
#include "runtime/entry_guard.h"
#include "select/hair_alpha.h"
#include "select/hair_neighbourhood.h"
#include "select/stroke_limits.h"

namespace {

// Name the log lines carry.
constexpr const char* kEntry = "rkHairSelect";
// Host pictures: blue, green, red and a fourth byte per pixel.
constexpr int kPictureBytes = 4;

struct StrokeBox {
    int left, top, right, bottom;
    int width() const { return right - left + 1; }
    int height() const { return bottom - top + 1; }
};

bool checkRequest(const RKPSStructMsk2* r, int radius) {
    if (!r) return rkRefuse(kEntry, "request is null");
    if (!rkCheckBuffer(kEntry, "image", r->image, r->width, r->height, r->imageRowBytes,
                       kPictureBytes) ||
        !rkCheckBuffer(kEntry, "mask", r->mask, r->width, r->height, r->maskRowBytes, 1))
        return false;
    if (!r->hairForeColor || !r->hairBackColor) return rkRefuse(kEntry, "a hair colour is null");
    if (radius < 0 || radius > kMaxBrushRadius)
        return rkRefuse(kEntry, "radius is outside 0..16383");
    return true;
}

bool pointInside(const RKPSStructMsk2& r, int x, int y) {
    return x >= 0 && y >= 0 && x < r.width && y < r.height;
}

// Painted bytes at the pixels of the line whose new alpha is a local extreme.
// The box's outermost ring is never written: its neighbourhoods would reach
// outside the box.
void writeExtremes(const cv::Mat& line, const cv::Mat& alpha, const StrokeBox& box,
                   RKPSStructMsk2& r) {
    const int step = static_cast<int>(alpha.step);
    for (int y = 1; y < alpha.rows - 1; ++y)
        for (int x = 1; x < alpha.cols - 1; ++x) {
            if (!line.at<unsigned char>(y, x)) continue;
            // At column 1 the neighbourhood's (-2, +1) pixel is the last one of
            // the current row: the box alpha has no row padding.
            const unsigned char* p = alpha.ptr<unsigned char>(y) + x;
            unsigned char lo, hi;
            get3x3C1Min(p, step, lo);
            get3x3C1Max(p, step, hi);
            if (*p == lo || *p == hi)
                *imgPtr(r.mask, r.maskRowBytes, box.left + x, box.top + y) =
                    static_cast<unsigned char>(*p | kMaskPaintedBit);
        }
}

int hairSelect(RKPSStructMsk2& r, int x1, int y1, int x2, int y2, int radius) {
    // A stroke off the picture, or equal colours (no colour line), is not an
    // error: nothing changes.
    if (!pointInside(r, x1, y1) || !pointInside(r, x2, y2)) return 1;
    if (kc::hair::sameColour(r.hairForeColor, r.hairBackColor)) return 1;

    const int xmin = std::min(x1, x2), ymin = std::min(y1, y2);
    const int xmax = std::max(x1, x2), ymax = std::max(y1, y2);
    const StrokeBox box{std::max(xmin - radius, 0), std::max(ymin - radius, 0),
                        std::min(xmax + radius, r.width - 1),
                        std::min(ymax + radius, r.height - 1)};
    const int bw = box.width(), bh = box.height();

    // The line always starts at the box's minimum corner, and its second point
    // is the distance of the maximum corner from the box's far edges (normally
    // (radius, radius)), not that corner itself. Strokes have always been
    // drawn this way and hosts rely on the result: keep it.
    cv::Mat line(bh, bw, CV_8UC1, cv::Scalar(0));
    cv::line(line, cv::Point(xmin - box.left, ymin - box.top),
             cv::Point(box.right - xmax, box.bottom - ymax), cv::Scalar(255), 2 * radius + 1,
             cv::LINE_8, 0);

    const IppiSize roi{bw, bh};
    cv::Mat rgb(bh, bw, CV_8UC3);
    ippiCopy_8u_AC4C3R(imgPtr(r.image, r.imageRowBytes, box.left * kPictureBytes, box.top),
                       r.imageRowBytes, rgb.ptr(), static_cast<int>(rgb.step), roi);
    cv::Mat alpha(bh, bw, CV_8UC1);
    ippiCopy_8u_C1R(imgPtr(r.mask, r.maskRowBytes, box.left, box.top), r.maskRowBytes, alpha.ptr(),
                    static_cast<int>(alpha.step), roi);

    CompAlphaMapHair(rgb.ptr(), static_cast<int>(rgb.step), bw, bh, line.ptr(),
                     static_cast<int>(line.step), alpha.ptr(), static_cast<int>(alpha.step),
                     r.hairForeColor, r.hairBackColor);
    writeExtremes(line, alpha, box, r);
    return 1;
}

}  // namespace

extern "C" KC_EXPORT int rkHairSelect(RKPSStructMsk2* request, int x1, int y1, int x2, int y2,
                                      int radius) {
    return rkGuardEntry(kEntry, [&] {
        if (!checkRequest(request, radius)) return kInvalidArgument;
        return hairSelect(*request, x1, y1, x2, y2, radius);
    });
}
