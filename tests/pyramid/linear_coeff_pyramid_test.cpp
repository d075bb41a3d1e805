// Pyramid route: halving keeps (colour, alpha) pairs on the same linear model, and a
// sparsely known alpha that follows a linear colour model is completed at full size.
#include "pyramid/linear_coeff_pyramid.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "pyramid/linear_coeff_fit.h"
#include "pyramid_test_support.h"

namespace {

using kc::coeff::isEmptyPixel;
using kc::coeff::kEmptyPixel;

using pyrtest::randomPicture;

// The colour model every test alpha follows.
const pyrtest::LinearModel kModel{0.4, 0.2, 0.1, 0.15};

// Known on every `stride`-th pixel of every `stride`-th row, empty elsewhere.
cv::Mat sparseAlpha(const cv::Mat& picture, int stride) {
    cv::Mat a(picture.size(), CV_32FC1, cv::Scalar(kEmptyPixel));
    for (int y = 0; y < a.rows; y += stride)
        for (int x = 0; x < a.cols; x += stride)
            a.at<float>(y, x) = static_cast<float>(kModel.at(picture.at<cv::Vec4b>(y, x)));
    return a;
}

TEST(LinearCoeffPyramid, HalvingKeepsPairsOnTheModel) {
    cv::Mat picture = randomPicture(23, 15, 1);  // odd sizes: last row and column alone
    cv::Mat alpha = sparseAlpha(picture, 3);
    cv::Mat ha, hi, hk;
    downSampleAIC(alpha, picture, picture, ha, hi, hk);
    ASSERT_EQ(ha.size(), cv::Size(12, 8));
    ASSERT_EQ(hi.size(), cv::Size(12, 8));
    int valid = 0;
    for (int r = 0; r < ha.rows; ++r)
        for (int c = 0; c < ha.cols; ++c) {
            // Block mean of the picture, straight from the bytes.
            double mean[3] = {}, n = 0;
            bool anyKnown = false;
            for (int y = 2 * r; y < std::min(2 * r + 2, picture.rows); ++y)
                for (int x = 2 * c; x < std::min(2 * c + 2, picture.cols); ++x) {
                    for (int k = 0; k < 3; ++k) mean[k] += picture.at<cv::Vec4b>(y, x)[k] / 255.0;
                    ++n;
                    anyKnown |= !isEmptyPixel(alpha.at<float>(y, x));
                }
            for (int k = 0; k < 3; ++k) EXPECT_NEAR(hi.at<cv::Vec3f>(r, c)[k], mean[k] / n, 1e-5);
            EXPECT_EQ(!isEmptyPixel(ha.at<float>(r, c)), anyKnown) << c << "," << r;
            if (!anyKnown) continue;
            ++valid;
            EXPECT_NEAR(ha.at<float>(r, c), kModel.at(hk.ptr<float>(r) + 3 * c), 1e-5);
        }
    EXPECT_GT(valid, 10);
}

TEST(LinearCoeffPyramid, SparseLinearAlphaIsCompletedAtFullSize) {
    for (const int levels : {1, 2}) {
        cv::Mat picture = randomPicture(61, 47, 2 + levels);
        cv::Mat alpha = sparseAlpha(picture, 2);
        cv::Mat block(47 + 2, 61 + 2, CV_8UC1, cv::Scalar(9));
        cv::Mat out = block(cv::Rect(1, 1, 61, 47));
        upsampleRecover_a1a2a3bPyramidMemorySave(alpha, picture, out, levels);
        for (int y = 0; y < out.rows; ++y)
            for (int x = 0; x < out.cols; ++x) {
                const double expected = 255.0 * kModel.at(picture.at<cv::Vec4b>(y, x));
                ASSERT_NEAR(out.at<uchar>(y, x), expected, 2.0) << x << "," << y << " " << levels;
                if (!isEmptyPixel(alpha.at<float>(y, x))) {
                    ASSERT_EQ(out.at<uchar>(y, x), cvRound(255.0f * alpha.at<float>(y, x)));
                }
            }
        cv::Mat frame = block.clone();
        frame(cv::Rect(1, 1, 61, 47)).setTo(9);
        EXPECT_EQ(cv::countNonZero(frame != 9), 0);
    }
}

}  // namespace
