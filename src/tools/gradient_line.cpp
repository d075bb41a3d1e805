// The host's gradient brush stroke: a painted value that ramps linearly from
// one end of the stroke to the other.
#include <algorithm>
#include <climits>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "api/keepcut_display.h"
#include "core/img.h"
#include "runtime/entry_guard.h"
#include "tools/brush_stroke_args.h"
#include "tools/pixel_bytes.h"

namespace {

// Bit 0 of a map byte marks a pixel the user painted.
constexpr unsigned char kPaintedBit = 1;
// Mark of a pixel under the stroke in the scratch matrix.
constexpr unsigned char kCovered = 255;

// Square root, in single precision, of a squared integer distance.
float distance(double dx, double dy) {
    return std::sqrt(static_cast<float>(dx * dx + dy * dy));
}

struct Stroke {
    int x0, y0, x1, y1;
    unsigned char startValue, endValue;
};

// Projects one covered pixel onto the stroke of length len. Beyond either end
// (in the round caps) the pixel is no longer painted and its aux byte is
// cleared; between the ends it takes the blend of the two values at its foot.
void paintCoveredPixel(const Stroke& s, float len, int x, int y, unsigned char& mapByte,
                       unsigned char& auxByte) {
    const float a = distance(static_cast<double>(x) - s.x0, static_cast<double>(y) - s.y0);
    const float b = distance(static_cast<double>(x) - s.x1, static_cast<double>(y) - s.y1);
    // The projection below is 0 / 0 on an end point itself: that pixel takes
    // the end's own value.
    if (a == 0.0f || b == 0.0f) {
        mapByte = static_cast<unsigned char>((a == 0.0f ? s.startValue : s.endValue) | kPaintedBit);
        return;
    }
    // Distances of the foot from the end and from the start (law of cosines).
    const float tEnd = b * ((len * len + b * b - a * a) / (b * 2 * len));
    const float tStart = a * ((len * len + a * a - b * b) / (a * 2 * len));
    if (len < tStart || len < tEnd) {
        mapByte &= static_cast<unsigned char>(~kPaintedBit);
        auxByte = 0;
        return;
    }
    const float sum = tEnd + tStart;
    const float v = s.startValue * tEnd / sum + s.endValue * tStart / sum;
    mapByte = static_cast<unsigned char>(truncateToByte(v) | kPaintedBit);
}

void drawGradient(cv::Mat& map, cv::Mat& aux, const Stroke& s, int radius) {
    // Any horizontal or vertical stroke, not only a single point, paints just
    // the disc at its start: the ramp is drawn for slanted strokes only.
    if (s.x1 == s.x0 || s.y1 == s.y0) {
        cv::circle(map, cv::Point(s.x0, s.y0), radius, cv::Scalar(s.startValue), cv::FILLED,
                   cv::LINE_8);
        return;
    }
    // Only the stroke's box is scanned, so a stroke costs what its box
    // holds, not what the picture holds: the box of the two ends widened by
    // the full thickness (the line's round caps reach a little beyond the
    // radius), clipped to the map.
    const long long reach = strokeThickness(radius) + 2;
    const long long left = std::max<long long>(0, std::min(s.x0, s.x1) - reach);
    const long long top = std::max<long long>(0, std::min(s.y0, s.y1) - reach);
    const long long right = std::min<long long>(map.cols - 1, std::max(s.x0, s.x1) + reach);
    const long long bottom = std::min<long long>(map.rows - 1, std::max(s.y0, s.y1) + reach);
    if (left > right || top > bottom) return;  // the stroke misses the map
    const cv::Rect box(static_cast<int>(left), static_cast<int>(top),
                       static_cast<int>(right - left + 1), static_cast<int>(bottom - top + 1));
    // The ends in box coordinates; where that would leave the int range the
    // whole map serves as the box instead.
    const auto fits = [](long long v) { return v >= INT_MIN && v <= INT_MAX; };
    const bool boxed =
        fits(s.x0 - left) && fits(s.x1 - left) && fits(s.y0 - top) && fits(s.y1 - top);
    const cv::Rect area = boxed ? box : cv::Rect(0, 0, map.cols, map.rows);
    cv::Mat covered = cv::Mat::zeros(area.size(), CV_8UC1);
    cv::line(covered, cv::Point(s.x0 - area.x, s.y0 - area.y),
             cv::Point(s.x1 - area.x, s.y1 - area.y), cv::Scalar(kCovered), strokeThickness(radius),
             cv::LINE_8, 0);
    const float len = distance(static_cast<double>(s.x1) - s.x0, static_cast<double>(s.y1) - s.y0);
    for (int y = 0; y < area.height; ++y) {
        const unsigned char* c = covered.ptr<unsigned char>(y);
        unsigned char* m = map.ptr<unsigned char>(area.y + y) + area.x;
        unsigned char* a = aux.ptr<unsigned char>(area.y + y) + area.x;
        for (int x = 0; x < area.width; ++x)
            if (c[x]) paintCoveredPixel(s, len, area.x + x, area.y + y, m[x], a[x]);
    }
}

}  // namespace

extern "C" KC_EXPORT void rkDrawGradientLine8u(unsigned char* map, int step, int width, int height,
                                               unsigned char* aux, int auxStep, int x0, int y0,
                                               int x1, int y1, int radius, unsigned char startValue,
                                               unsigned char endValue) {
    constexpr const char* kEntry = "rkDrawGradientLine8u";
    rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "map", map, width, height, step, 1) ||
            !rkCheckBuffer(kEntry, "aux", aux, width, height, auxStep, 1) ||
            !rkCheckStrokeRadius(kEntry, radius))
            return kInvalidArgument;
        if (width == 0 || height == 0) return 1;
        cv::Mat mapView(height, width, CV_8UC1, map, static_cast<size_t>(step));
        cv::Mat auxView(height, width, CV_8UC1, aux, static_cast<size_t>(auxStep));
        drawGradient(mapView, auxView, {x0, y0, x1, y1, startValue, endValue}, radius);
        return 1;
    });
}
