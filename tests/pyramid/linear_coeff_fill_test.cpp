// Push-pull filling and empty-pixel counting of float coefficient maps.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <opencv2/core.hpp>

#include "pyramid/linear_coeff_fit.h"
#include "pyramid/pyramid_fill.h"

namespace {

using kc::coeff::kEmptyPixel;

// Values in [-2, 5] with a fraction `emptyShare` of the pixels marked empty.
cv::Mat holeyMap(int w, int h, double emptyShare, uint64_t seed) {
    cv::Mat m(h, w, CV_32FC1);
    cv::RNG rng(seed);
    rng.fill(m, cv::RNG::UNIFORM, -2.0, 5.0);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (rng.uniform(0.0, 1.0) < emptyShare) m.at<float>(y, x) = kEmptyPixel;
    return m;
}

int directEmptyCount(const cv::Mat& m) {
    int n = 0;
    for (int y = 0; y < m.rows; ++y)
        for (int x = 0; x < m.cols; ++x) n += m.at<float>(y, x) <= -9.9e19f;
    return n;
}

TEST(LinearCoeffFill, CountEmptyPixelsMatchesADirectCount) {
    cv::Mat block = holeyMap(41, 29, 0.3, 1);
    // Markers at and around the threshold: -9.9e19 and -inf are empty, -9.8e19 is not.
    block.at<float>(3, 4) = -9.9e19f;
    block.at<float>(5, 6) = -std::numeric_limits<float>::infinity();
    block.at<float>(7, 8) = -9.8e19f;
    EXPECT_EQ(countEmptyPixels_32f(block), directEmptyCount(block));
    cv::Mat view = block(cv::Rect(2, 3, 30, 20));
    EXPECT_EQ(countEmptyPixels_32f(view), directEmptyCount(view));
    cv::Mat full(4, 4, CV_32FC1, cv::Scalar(kEmptyPixel));
    EXPECT_EQ(countEmptyPixels_32f(full), 16);
}

TEST(LinearCoeffFill, FillsEveryHoleAndKeepsFilledPixels) {
    const struct {
        int w, h;
        double share;
    } cases[] = {{1, 1, 0.0},   {7, 1, 0.6},    {1, 9, 0.6}, {33, 17, 0.1},
                 {33, 17, 0.9}, {64, 64, 0.99}, {5, 3, 0.5}};
    uint64_t seed = 2;
    for (const auto& c : cases) {
        cv::Mat block = holeyMap(c.w + 4, c.h + 4, 0.0, seed);
        cv::Mat map = block(cv::Rect(2, 2, c.w, c.h));  // a view: the frame must survive
        holeyMap(c.w, c.h, c.share, ++seed).copyTo(map);
        if (countEmptyPixels_32f(map) == static_cast<int>(map.total())) map.at<float>(0, 0) = 1.0f;
        const cv::Mat before = block.clone();
        double lo = 1e30, hi = -1e30;
        for (int y = 0; y < map.rows; ++y)
            for (int x = 0; x < map.cols; ++x)
                if (map.at<float>(y, x) > -9.9e19f) {
                    lo = std::min<double>(lo, map.at<float>(y, x));
                    hi = std::max<double>(hi, map.at<float>(y, x));
                }

        pyramidFill_32f(map);

        EXPECT_EQ(countEmptyPixels_32f(map), 0) << c.w << "x" << c.h;
        for (int y = 0; y < block.rows; ++y)
            for (int x = 0; x < block.cols; ++x) {
                const float was = before.at<float>(y, x), now = block.at<float>(y, x);
                if (was > -9.9e19f)
                    ASSERT_EQ(now, was) << x << "," << y;  // filled pixels and the frame
                else  // fills are weighted means of filled values
                    ASSERT_TRUE(now >= lo - 1e-5 && now <= hi + 1e-5) << now;
            }
    }
}

TEST(LinearCoeffFill, OneFilledPixelOrAConstantSpreadsEverywhere) {
    cv::Mat single(13, 11, CV_32FC1, cv::Scalar(kEmptyPixel));
    single.at<float>(9, 2) = 0.625f;
    pyramidFill_32f(single);
    EXPECT_LE(cv::norm(single, cv::Mat(single.size(), CV_32FC1, cv::Scalar(0.625)), cv::NORM_INF),
              1e-6);

    cv::Mat empty(6, 6, CV_32FC1, cv::Scalar(kEmptyPixel));
    pyramidFill_32f(empty);  // nothing to fill from: left as it is
    EXPECT_EQ(countEmptyPixels_32f(empty), 36);
}

TEST(LinearCoeffFill, FillOfASmoothRampFollowsTheRamp) {
    // Holes in a linear ramp are filled close to the ramp: tent means and bilinear
    // interpolation both reproduce linear data away from the borders.
    cv::Mat map(40, 40, CV_32FC1);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 40; ++x) map.at<float>(y, x) = 0.1f * x + 0.05f * y;
    const cv::Mat truth = map.clone();
    map(cv::Rect(15, 15, 6, 6)).setTo(kEmptyPixel);
    pyramidFill_32f(map);
    EXPECT_LE(cv::norm(map, truth, cv::NORM_INF), 0.15);
}

TEST(LinearCoeffFill, DownLevelIsHalfSizeAndEmptyOnlyWithoutData) {
    cv::Mat fine(5, 7, CV_32FC1, cv::Scalar(kEmptyPixel)), coarse;
    fine.at<float>(1, 1) = 2.0f;
    pyramidFillD_32f(fine, coarse);
    ASSERT_EQ(coarse.size(), cv::Size(4, 3));
    // Fine pixel 1 lies in block 0 and in the tent's reach of block 1, on both axes.
    EXPECT_EQ(coarse.at<float>(0, 0), 2.0f);
    EXPECT_EQ(coarse.at<float>(0, 1), 2.0f);
    EXPECT_EQ(coarse.at<float>(1, 1), 2.0f);
    EXPECT_EQ(countEmptyPixels_32f(coarse), 12 - 4);
}

}  // namespace
