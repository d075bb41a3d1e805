// Cross bilateral filter as whole-interior passes: for every window offset one
// guide difference, one weight lookup and one multiply-accumulate per plane,
// so that each pass is a vectorised primitive over the whole interior.
#include "filters/cross_bilateral.h"

#include <cmath>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "core/img.h"

namespace {

// Window half-sizes the filter supports; larger windows cost (2r+1)^2 - 1
// passes and were never wanted.
constexpr int kMinRadius = 1;
constexpr int kMaxRadius = 3;
// An interior below two pixels on either side is not worth filtering.
constexpr int kMinInterior = 2;
// Largest byte weight: identical colours.
constexpr double kFullWeight = 255.0;
// Range falloff: weight = 255 * exp(-3 (d / sigmaRange)^2).
constexpr double kRangeFalloff = 3.0;
// Spatial weights are bytes in 1/128 units (a byte multiply with shift 7).
constexpr int kSpatialShift = 7;
constexpr double kSpatialUnit = 1 << kSpatialShift;

// Header over a borrowed byte plane, starting at pixel (x, y).
cv::Mat byteView(unsigned char* base, int step, int x, int y, cv::Size size) {
    return cv::Mat(size, CV_8U, base + static_cast<std::ptrdiff_t>(y) * step + x,
                   static_cast<size_t>(step));
}

template <typename T>
cv::Mat matOf(GIMG<T>& img) {
    return cv::Mat(img.height(), img.width(), cv::DataType<T>::type, img.ptr(),
                   static_cast<size_t>(img.step));
}

// Range weight per saturated guide difference d, truncated to a byte.
cv::Mat rangeTable(float sigmaRange) {
    cv::Mat table(1, 256, CV_8U);
    for (int d = 0; d < 256; ++d) {
        // d = 0 is full weight even when sigmaRange is 0 (0/0 would be NaN).
        const double r = d == 0 ? 0.0 : d / static_cast<double>(sigmaRange);
        table.at<unsigned char>(d) = static_cast<unsigned char>(
            static_cast<int>(kFullWeight * std::exp(-kRangeFalloff * r * r)));
    }
    return table;
}

// Spatial weight of offset (dx, dy) as a byte in 1/128 units, truncated.
int spatialByte(int dx, int dy, float sigmaSpace) {
    const double s2 = static_cast<double>(sigmaSpace) * sigmaSpace;
    const double s = std::exp(-(dx * dx + dy * dy) / (2.0 * s2));
    return static_cast<int>(s * kSpatialUnit);
}

// The range table already multiplied by spatial byte k: entry d is
// saturate(round(table[d] * k / 128)), ties to even like every other rounding
// of ours. Applying it is exactly a lookup followed by the byte multiply, in
// one pass instead of two.
void scaleTable(const cv::Mat& range, int k, cv::Mat& scaled) {
    range.convertTo(scaled, CV_8U, k / kSpatialUnit);
}

}  // namespace

int CBLFRGB(int width, int height, unsigned char** planes, int step, int nPlanes,
            unsigned char** guide, int guideStep, int nGuide, int radius, float sigmaRange,
            float sigmaSpace, float centreWeight) {
    if (radius < kMinRadius || radius > kMaxRadius) return 0;
    const cv::Size inner(width - 2 * radius, height - 2 * radius);
    if (inner.width < kMinInterior || inner.height < kMinInterior) return 0;

    // The centre pixel enters with a fixed weight, not from the tables.
    const float centre = centreWeight * static_cast<float>(kFullWeight);
    GIMG<float> weightSumImg(inner.width, inner.height);
    cv::Mat weightSum = matOf(weightSumImg);
    weightSum.setTo(centre);
    std::vector<std::unique_ptr<GIMG<float>>> accImgs;
    std::vector<cv::Mat> acc;
    for (int p = 0; p < nPlanes; ++p) {
        accImgs.push_back(std::make_unique<GIMG<float>>(inner.width, inner.height));
        acc.push_back(matOf(*accImgs.back()));
        byteView(planes[p], step, radius, radius, inner).convertTo(acc.back(), CV_32F, centre);
    }

    GIMG<unsigned char> diffImg(inner.width, inner.height);
    GIMG<unsigned char> partImg(inner.width, inner.height);
    cv::Mat diff = matOf(diffImg);  // guide differences summed over the guide planes
    cv::Mat part = matOf(partImg);  // one guide plane's difference, then the weight
    const cv::Mat range = rangeTable(sigmaRange);
    cv::Mat weightTable;

    for (int dy = -radius; dy <= radius; ++dy) {
        for (int dx = -radius; dx <= radius; ++dx) {
            if (dx == 0 && dy == 0) continue;
            if (nGuide < 1) diff.setTo(0);
            for (int g = 0; g < nGuide; ++g) {
                const cv::Mat centreGuide = byteView(guide[g], guideStep, radius, radius, inner);
                const cv::Mat shifted =
                    byteView(guide[g], guideStep, radius + dx, radius + dy, inner);
                cv::absdiff(shifted, centreGuide, g == 0 ? diff : part);
                if (g > 0) cv::add(diff, part, diff);  // saturates at 255
            }
            scaleTable(range, spatialByte(dx, dy, sigmaSpace), weightTable);
            cv::LUT(diff, weightTable, part);
            for (int p = 0; p < nPlanes; ++p) {
                const cv::Mat neighbour =
                    byteView(planes[p], step, radius + dx, radius + dy, inner);
                cv::accumulateProduct(part, neighbour, acc[p]);
            }
            cv::accumulate(part, weightSum);
        }
    }

    // Every read is done: now the interiors can be overwritten. The reciprocal
    // is taken once and shared by all planes.
    for (int y = 0; y < inner.height; ++y) {
        float* s = weightSum.ptr<float>(y);
        for (int x = 0; x < inner.width; ++x) s[x] = 1.0f / s[x];
    }
    for (int p = 0; p < nPlanes; ++p) {
        cv::multiply(acc[p], weightSum, acc[p]);
        cv::Mat out = byteView(planes[p], step, radius, radius, inner);
        acc[p].convertTo(out, CV_8U);  // rounds to nearest (ties to even), saturates
    }
    return 1;
}
