// Coefficient upsampling: exact linear models survive the trip to full size, the
// output saturates instead of wrapping, flat pictures still solve, runs repeat.
#include "pyramid/linear_coeff_upsample.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "pyramid/linear_coeff_fit.h"
#include "pyramid_test_support.h"

namespace {

using pyrtest::LinearModel;
using pyrtest::randomPicture;

cv::Mat alphaFromModel(const cv::Mat& picture, const LinearModel& f) {
    cv::Mat a(picture.size(), CV_8UC1);
    for (int y = 0; y < a.rows; ++y)
        for (int x = 0; x < a.cols; ++x)
            a.at<uchar>(y, x) = cv::saturate_cast<uchar>(255.0 * f.at(picture.at<cv::Vec4b>(y, x)));
    return a;
}

cv::Mat upsample(cv::Mat reducedAlpha, cv::Mat reducedPicture, cv::Mat fullPicture) {
    cv::Mat spare1, spare2, known, fullAlpha;
    computeUpsampled_a1a2a3b_memorySave(reducedAlpha, reducedPicture, spare1, spare2, fullPicture,
                                        known, fullAlpha, 4);
    return fullAlpha;
}

TEST(LinearCoeffUpsample, ExactLinearAlphaIsReproducedAtFullSize) {
    const LinearModel f{0.3, 0.2, 0.1, 0.2};  // stays inside [0.2, 0.8]
    // A textured photograph-like picture and its nearest-neighbour reduction, as the
    // reduced-resolution strategies make it (odd sizes, non-integer factors).
    cv::Mat full;
    cv::resize(randomPicture(30, 19, 1), full, cv::Size(150, 95), 0, 0, cv::INTER_CUBIC);
    cv::Mat reduced;
    cv::resize(full, reduced, cv::Size(37, 23), 0, 0, cv::INTER_NEAREST);
    const cv::Mat out = upsample(alphaFromModel(reduced, f), reduced, full);
    ASSERT_EQ(out.size(), full.size());
    for (int y = 0; y < out.rows; ++y)
        for (int x = 0; x < out.cols; ++x)
            ASSERT_NEAR(out.at<uchar>(y, x), 255.0 * f.at(full.at<cv::Vec4b>(y, x)), 2.0)
                << x << "," << y;
}

TEST(LinearCoeffUpsample, ExtrapolationSaturatesInsteadOfWrapping) {
    // Steep model fitted on a narrow colour band, applied to the full byte range: far
    // outside the band the model runs below 0 and above 1.
    const LinearModel f{4.0, 0.0, 0.0, -1.7};
    const cv::Mat reduced = randomPicture(20, 20, 3, 110, 140);
    const cv::Mat full = randomPicture(80, 80, 4);
    const cv::Mat out = upsample(alphaFromModel(reduced, f), reduced, full);
    int low = 0, high = 0;
    for (int y = 0; y < out.rows; ++y)
        for (int x = 0; x < out.cols; ++x) {
            const double model = f.at(full.at<cv::Vec4b>(y, x));
            if (model < -0.2) {
                EXPECT_EQ(out.at<uchar>(y, x), 0);
                ++low;
            }
            if (model > 1.2) {
                EXPECT_EQ(out.at<uchar>(y, x), 255);
                ++high;
            }
        }
    EXPECT_GT(low, 100);
    EXPECT_GT(high, 100);
}

TEST(LinearCoeffUpsample, FlatColourPicturesStillSolve) {
    for (const cv::Scalar& colour : {cv::Scalar(90, 140, 200, 0), cv::Scalar(0, 0, 0, 0)}) {
        cv::Mat reduced(12, 15, CV_8UC4, colour);
        cv::Mat full(48, 60, CV_8UC4, colour);
        for (const int level : {0, 128, 255}) {
            cv::Mat alpha(reduced.size(), CV_8UC1, cv::Scalar(level));
            const cv::Mat out = upsample(alpha, reduced, full);
            EXPECT_LE(cv::norm(out, cv::Mat(out.size(), CV_8UC1, cv::Scalar(level)), cv::NORM_INF),
                      1.0)
                << level;
        }
        // A ramp over a single colour: only the offset (and slopes along the jitter,
        // which the clean full picture does not follow exactly) can carry it.
        cv::Mat alpha(reduced.size(), CV_8UC1);
        for (int y = 0; y < alpha.rows; ++y)
            for (int x = 0; x < alpha.cols; ++x) alpha.at<uchar>(y, x) = 40 + 10 * x + y;
        const cv::Mat out = upsample(alpha, reduced, full);
        cv::Mat expected;
        cv::resize(alpha, expected, full.size(), 0, 0, cv::INTER_LINEAR);
        EXPECT_LE(cv::norm(out, expected, cv::NORM_INF), 16.0);
        EXPECT_LE(cv::norm(out, expected, cv::NORM_L1) / out.total(), 3.0);
    }
}

TEST(LinearCoeffUpsample, RepeatsExactlyAndWritesOnlyTheView) {
    const cv::Mat reduced = randomPicture(31, 17, 5);
    cv::Mat alpha(reduced.size(), CV_8UC1);
    cv::RNG(6).fill(alpha, cv::RNG::UNIFORM, 0, 256);
    cv::Mat full = randomPicture(101, 53, 7);
    const cv::Mat first = upsample(alpha, reduced, full);

    // Second run into a view of a larger buffer with a sentinel frame.
    cv::Mat block(53 + 4, 101 + 6, CV_8UC1, cv::Scalar(77));
    cv::Mat view = block(cv::Rect(3, 2, 101, 53));
    cv::Mat spare1, spare2, known;
    computeUpsampled_a1a2a3b_memorySave(alpha, const_cast<cv::Mat&>(reduced), spare1, spare2, full,
                                        known, view, 4);
    ASSERT_EQ(view.data, block.data + 2 * block.step + 3);  // not reallocated
    EXPECT_EQ(cv::norm(first, view, cv::NORM_INF), 0.0);
    cv::Mat frame = block.clone();
    frame(cv::Rect(3, 2, 101, 53)).setTo(77);
    EXPECT_EQ(cv::countNonZero(frame != 77), 0);
    EXPECT_TRUE(spare1.empty() && spare2.empty());
}

// The per-window solve against a double-precision normal-equations reference.
TEST(LinearCoeffFit, WindowSolveMatchesDoublePrecisionReference) {
    cv::RNG rng(8);
    for (int trial = 0; trial < 200; ++trial) {
        float rows[9][3], rhs[9];
        bool use[9];
        Eigen::MatrixXd a = Eigen::MatrixXd::Zero(13, 4);
        Eigen::VectorXd r = Eigen::VectorXd::Zero(13);
        for (int i = 0; i < 9; ++i) {
            use[i] = trial % 3 != 0 || i % 4 != 0;  // some windows drop rows
            for (int k = 0; k < 3; ++k) rows[i][k] = rng.uniform(0.0f, 1.0f);
            rhs[i] = rng.uniform(0.0f, 1.0f);
            if (!use[i]) continue;
            a.row(i) << rows[i][0], rows[i][1], rows[i][2], 1.0;
            r(i) = rhs[i];
        }
        a(9, 0) = a(10, 1) = a(11, 2) = std::sqrt(1e-7);
        a(12, 3) = 0.0016;
        const Eigen::Vector4d ref = (a.transpose() * a).ldlt().solve(a.transpose() * r);
        float x[4];
        ASSERT_TRUE(kc::coeff::solveWindowFit(rows, rhs, use, x));
        for (int k = 0; k < 4; ++k) EXPECT_NEAR(x[k], ref(k), 2e-3 * (1.0 + std::abs(ref(k))));
    }
}

TEST(LinearCoeffFit, EdgeWindowsStayInsideThePicture) {
    const int w = 9, h = 7;
    cv::Mat alpha(h, w, CV_32FC1), colour(h, w, CV_32FC3);
    cv::RNG(9).fill(alpha, cv::RNG::UNIFORM, 0.0, 1.0);
    cv::RNG(10).fill(colour, cv::RNG::UNIFORM, 0.0, 1.0);
    kc::coeff::CoeffMaps c;
    kc::coeff::fitLinearCoefficients(alpha, colour, c);
    for (const cv::Mat& m : c.map) {
        // Same clamped window, same coefficients; the next pixel inward differs.
        EXPECT_EQ(m.at<float>(0, 0), m.at<float>(1, 1));
        EXPECT_EQ(m.at<float>(h - 1, w - 1), m.at<float>(h - 2, w - 2));
        EXPECT_EQ(m.at<float>(0, w - 1), m.at<float>(1, w - 2));
    }
    EXPECT_NE(c.map[3].at<float>(0, 0), c.map[3].at<float>(2, 2));
}

TEST(LinearCoeffFit, WindowsWithTooFewSamplesAreLeftEmpty) {
    cv::Mat alpha(5, 5, CV_32FC1, cv::Scalar(kc::coeff::kEmptyPixel)), colour(5, 5, CV_32FC3);
    cv::RNG(11).fill(colour, cv::RNG::UNIFORM, 0.0, 1.0);
    alpha(cv::Rect(0, 0, 2, 2)).setTo(0.5f);  // four samples, all in the top-left window
    kc::coeff::CoeffMaps c;
    kc::coeff::fitLinearCoefficients(alpha, colour, c);
    EXPECT_FALSE(kc::coeff::isEmptyPixel(c.map[3].at<float>(0, 0)));
    EXPECT_TRUE(kc::coeff::isEmptyPixel(c.map[3].at<float>(4, 4)));
    EXPECT_TRUE(kc::coeff::isEmptyPixel(c.map[0].at<float>(2, 2)));  // window 1..3 sees one
}

}  // namespace
