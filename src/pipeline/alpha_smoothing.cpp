// Bilateral smoothing of alpha for the strategies' optional smooth flag.
#include "pipeline/alpha_smoothing.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "pipeline/weight_tables.h"

namespace {

// The window spans a tenth of the smaller side, but never less than 3.
constexpr int kWindowFraction = 10;
constexpr int kMinWindow = 3;
// Parameters at or below this would make the filter a no-op or divide by ~0.
constexpr double kMinParameter = 0.01;
constexpr double kByteRange = 255.0;

}  // namespace

void smoothAlphaBilateral(cv::Mat& alpha, float sigma) {
    CV_Assert(alpha.type() == CV_8UC1);
    const int window = std::max(kMinWindow, std::min(alpha.cols, alpha.rows) / kWindowFraction) | 1;
    const double range = sigma * kByteRange;
    if (!(window > kMinParameter && range > kMinParameter)) return;
    const int border = window / 2;
    cv::Mat padded, smoothed;
    cv::copyMakeBorder(alpha, padded, border, border, border, border, cv::BORDER_REPLICATE);
    cv::bilateralFilter(padded, smoothed, window, range, window / 2.0);
    smoothed(cv::Rect(border, border, alpha.cols, alpha.rows)).copyTo(alpha);
}

void smoothAlphaFeathered(cv::Mat& alpha, float sigma) {
    cv::Mat smoothed = alpha.clone();
    smoothAlphaBilateral(smoothed, sigma);
    const cv::Mat table(kGaussianBlurTableSide, kGaussianBlurTableSide, CV_32FC1,
                        const_cast<float*>(gaussianBlurTable));
    cv::Mat weight;
    cv::resize(table, weight, alpha.size(), 0, 0, cv::INTER_LINEAR);
    for (int y = 0; y < alpha.rows; ++y) {
        unsigned char* a = alpha.ptr<unsigned char>(y);
        const unsigned char* s = smoothed.ptr<unsigned char>(y);
        const float* g = weight.ptr<float>(y);
        for (int x = 0; x < alpha.cols; ++x)
            a[x] = cv::saturate_cast<unsigned char>(s[x] * g[x] + a[x] * (1.0f - g[x]));
    }
}
