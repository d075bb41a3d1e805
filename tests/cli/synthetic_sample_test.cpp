// The generated sample is the ground truth of demos, benchmarks and end-to-end
// tests: it must repeat exactly and be a true composite of its parts.
#include "synthetic_sample.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

namespace {

TEST(SyntheticSample, RepeatsAndComposesExactly) {
    const SyntheticSample a = makeSyntheticSample(160, 120);
    const SyntheticSample b = makeSyntheticSample(160, 120);
    EXPECT_EQ(cv::norm(a.picture, b.picture, cv::NORM_INF), 0.0);
    EXPECT_EQ(cv::norm(a.alpha, b.alpha, cv::NORM_INF), 0.0);
    EXPECT_GT(cv::norm(a.picture, makeSyntheticSample(160, 120, 8).picture, cv::NORM_INF), 0.0);

    for (int y = 0; y < a.picture.rows; ++y)
        for (int x = 0; x < a.picture.cols; ++x) {
            const float al = a.alpha.at<float>(y, x);
            ASSERT_GE(al, 0.0f);
            ASSERT_LE(al, 1.0f);
            for (int c = 0; c < 3; ++c) {
                const float mix = al * a.foreground.at<cv::Vec3f>(y, x)[c] +
                                  (1 - al) * a.background.at<cv::Vec3f>(y, x)[c];
                ASSERT_NEAR(a.picture.at<cv::Vec3b>(y, x)[c], mix, 0.5f + 1e-3f);
            }
        }
}

TEST(SyntheticSample, TrimapKnownRegionsAreTrulyKnown) {
    const SyntheticSample s = makeSyntheticSample(320, 240);
    int fractional = 0, unknown = 0;
    for (int y = 0; y < s.alpha.rows; ++y)
        for (int x = 0; x < s.alpha.cols; ++x) {
            const float al = s.alpha.at<float>(y, x);
            const unsigned char t = s.trimap.at<unsigned char>(y, x);
            if (t == 255) {
                ASSERT_EQ(al, 1.0f);
            }
            if (t == 0) {
                ASSERT_EQ(al, 0.0f);
            }
            fractional += al > 0.0f && al < 1.0f;
            unknown += t == 128;
        }
    // Soft edges exist, and every one of them is inside the band.
    EXPECT_GT(fractional, 500);
    EXPECT_GT(unknown, fractional);
}

}  // namespace
