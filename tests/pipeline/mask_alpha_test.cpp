// The direct mask entry: its output stretch and final clamp on their own, a
// mask with nothing to solve, the three work resolutions against the truth
// and against each other, and the message of a null record.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "api/keepcut.h"
#include "pipeline/mask_proc.h"

namespace {

// Bytes added to every row, so that row steps above the width are exercised.
constexpr int kRowPadding = 8;
// Odd sizes: the way back from half size then leaves two trailing columns and
// rows to refill.
constexpr int kW = 121;
constexpr int kH = 91;
// Half-width of the soft edge of the test subject, and of the unknown band
// drawn around it, in pixels.
constexpr double kEdgeHalfWidth = 4.0;
constexpr double kBandHalfWidth = 9.0;
constexpr unsigned char kBand = 128;
// Budget bytes one unit of load costs in the entry's memory estimate.
constexpr double kBytesPerLoad = 1920.0;
// Mean grey levels over the band: full resolution from the truth (4.6
// measured), the reduced paths from full resolution (4.1 at half size, 5.2 at
// a third), and the same on the two-pixel frame, which the way back refills
// (11.2 and 12.6; above 52 without the refill).
constexpr double kTruthTolerance = 8.0;
constexpr double kBandTolerance = 10.0;
constexpr double kFrameTolerance = 20.0;

// Picture, rough mask and true alpha of a slanted soft edge between two noisy
// colours; the band crosses the first and last rows.
struct MaskJob {
    cv::Mat block[4];                       // padded storage: red, green, blue, alpha
    cv::Mat plane[3], alpha, truth, rough;  // rough: the mask as drawn
    RKMaskImage image{};

    MaskJob() {
        for (cv::Mat& b : block) b = cv::Mat(kH, kW + kRowPadding, CV_8UC1, cv::Scalar(0));
        for (int c = 0; c < 3; ++c) plane[c] = block[c](cv::Rect(0, 0, kW, kH));
        alpha = block[3](cv::Rect(0, 0, kW, kH));
        truth.create(kH, kW, CV_8UC1);
        const int fg[3] = {200, 60, 40}, bg[3] = {30, 90, 180};
        cv::RNG rng(5);
        for (int y = 0; y < kH; ++y)
            for (int x = 0; x < kW; ++x) {
                const double d = x - kW / 2.0 - (y - kH / 2.0) / 3.0;
                const double a = std::clamp(d / (2 * kEdgeHalfWidth) + 0.5, 0.0, 1.0);
                truth.at<unsigned char>(y, x) = cv::saturate_cast<unsigned char>(255 * a);
                for (int c = 0; c < 3; ++c)
                    plane[c].at<unsigned char>(y, x) = cv::saturate_cast<unsigned char>(
                        a * fg[c] + (1 - a) * bg[c] + rng.uniform(-6, 7));
                alpha.at<unsigned char>(y, x) = d < -kBandHalfWidth  ? 0
                                                : d > kBandHalfWidth ? 255
                                                                     : kBand;
            }
        for (int c = 0; c < 3; ++c) image.planes[c] = plane[c].data;
        image.planeRowBytes = static_cast<int>(plane[0].step);
        image.alpha = alpha.data;
        image.alphaRowBytes = static_cast<int>(alpha.step);
        image.width = kW;
        image.height = kH;
        rough = alpha.clone();
    }
    MaskJob(const MaskJob&) = delete;
    MaskJob& operator=(const MaskJob&) = delete;

    int run(float load) { return rkMaskAlpha(&image, 0, 255, 0, 255, 0, 0, load); }
    cv::Mat band() const { return (rough != 0) & (rough != 255); }
    // Pixels at an extreme they did not hold in the mask.
    int newExtremes() const {
        return cv::countNonZero((alpha == 0) & (rough != 0)) +
               cv::countNonZero((alpha == 255) & (rough != 255));
    }
};

double meanDiff(const cv::Mat& a, const cv::Mat& b, const cv::Mat& where) {
    return cv::norm(a, b, cv::NORM_L1, where) / std::max(cv::countNonZero(where), 1);
}

GIMG<unsigned char> wrap(cv::Mat& m) {
    return GIMG<unsigned char>(m.cols, m.rows, m.data, static_cast<int>(m.step));
}

TEST(MaskAlpha, OutputStretch) {
    struct Case {
        const char* name;
        int outHigh, outLow;
        int in[4], out[4];
    };
    const Case cases[] = {
        // k = 255: four levels per step, a threshold 64 steps wide.
        {"equal bounds", 100, 100, {100, 101, 116, 164}, {0, 4, 64, 255}},
        {"inverted bounds act as equal", 50, 100, {0, 100, 101, 255}, {0, 0, 4, 255}},
        // d = 128, k = 127.
        {"half span", 200, 72, {40, 72, 136, 255}, {0, 0, 127, 255}},
        {"full span", 255, 0, {0, 37, 200, 255}, {0, 37, 200, 255}},
        {"span beyond full", 400, 100, {0, 37, 200, 255}, {0, 37, 200, 255}},
        // d = 150, k = 108, nothing to subtract.
        {"negative low", 100, -50, {0, 37, 100, 200}, {0, 62, 169, 255}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        cv::Mat m(1, 4, CV_8UC1);
        for (int i = 0; i < 4; ++i) m.at<unsigned char>(i) = static_cast<unsigned char>(c.in[i]);
        GIMG<unsigned char> g = wrap(m);
        stretchAlphaOutput(g, c.outHigh, c.outLow);
        for (int i = 0; i < 4; ++i) EXPECT_NEAR(m.at<unsigned char>(i), c.out[i], 1) << c.in[i];
    }
}

TEST(MaskAlpha, FinalClampKeepsExtremesForPixelsThatHeldThem) {
    // result, input, expected
    const unsigned char cases[][3] = {{0, 0, 0},       {0, 5, 1},       {0, 255, 1},
                                      {255, 255, 255}, {255, 200, 254}, {255, 0, 254},
                                      {128, 0, 128},   {1, 0, 1}};
    const int n = static_cast<int>(std::size(cases));
    cv::Mat result(1, n, CV_8UC1), input(1, n, CV_8UC1);
    for (int i = 0; i < n; ++i) result.at<unsigned char>(i) = cases[i][0];
    for (int i = 0; i < n; ++i) input.at<unsigned char>(i) = cases[i][1];
    GIMG<unsigned char> r = wrap(result), in = wrap(input);
    clampToInputExtremes(r, in);
    for (int i = 0; i < n; ++i) EXPECT_EQ(result.at<unsigned char>(i), cases[i][2]) << i;
}

// A mask of 0 and 255 only: nothing is solved. Where the colours change with
// the mask it comes back as it went in; over flat colours the smoothing may
// soften the pixels next to its edge, and only inside the one-pixel frame.
TEST(MaskAlpha, MaskWithNothingUnknown) {
    for (const bool flat : {false, true}) {
        SCOPED_TRACE(flat ? "flat colours" : "colours follow the mask");
        MaskJob job;
        job.alpha.setTo(0);
        job.alpha(cv::Rect(kW / 3, kH / 4, kW / 3, kH / 2)).setTo(255);
        for (cv::Mat& p : job.plane) {
            if (flat)
                p.setTo(90);
            else
                job.alpha.copyTo(p);
        }
        const cv::Mat before = job.alpha.clone();
        ASSERT_EQ(job.run(0), 1) << getErrMsg();
        cv::Mat edge;  // pixels with an 8-neighbour of the other value, off the frame
        cv::Mat grown, shrunk, kernel = cv::Mat::ones(3, 3, CV_8UC1);
        cv::dilate(before, grown, kernel), cv::erode(before, shrunk, kernel);
        edge = grown != shrunk;
        edge.row(0).setTo(0), edge.row(kH - 1).setTo(0), edge.col(0).setTo(0),
            edge.col(kW - 1).setTo(0);
        cv::Mat changed = job.alpha != before;
        EXPECT_EQ(cv::countNonZero(changed & ~edge), 0);
        if (flat) {
            EXPECT_GT(cv::countNonZero(changed), 0);
        } else {
            EXPECT_EQ(cv::countNonZero(changed), 0);
        }
    }
}

// Full resolution comes close to the truth; a load that pushes the memory
// ratio past 1 (half size) or past 2 (a third) gives another result, near
// the full-resolution one everywhere in the band, the rows and columns the
// way back must refill included.
TEST(MaskAlpha, WorkResolutionFollowsTheLoad) {
    MaskJob full;
    const cv::Mat band = full.band();
    ASSERT_EQ(full.run(0), 1) << getErrMsg();
    EXPECT_LT(meanDiff(full.alpha, full.truth, band), kTruthTolerance);
    EXPECT_EQ(full.newExtremes(), 0);

    const double budget = usableMemInMB() * 1000.0;
    struct Case {
        const char* name;
        double ratio;
    };
    const Case cases[] = {{"half size", std::sqrt(2.0)}, {"a third", 3.0}};
    cv::Mat frame(kH, kW, CV_8UC1, cv::Scalar(255));
    frame(cv::Rect(2, 2, kW - 4, kH - 4)).setTo(0);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MaskJob job;
        ASSERT_EQ(job.run(static_cast<float>(c.ratio * c.ratio * budget / kBytesPerLoad)), 1)
            << getErrMsg();
        EXPECT_GT(cv::norm(job.alpha, full.alpha, cv::NORM_INF), 0);
        EXPECT_LT(meanDiff(job.alpha, full.alpha, band), kBandTolerance);
        EXPECT_LT(meanDiff(job.alpha, full.alpha, band & frame), kFrameTolerance);
        EXPECT_EQ(job.newExtremes(), 0);
    }
}

// Broken records are the fuzz target's; the null record's message is the host's.
TEST(MaskAlpha, NullRecordIsRefusedWithItsMessage) {
    clearErrMsg();
    EXPECT_EQ(rkMaskAlpha(nullptr, 0, 255, 0, 255, 0, 0, 0.0f), -2);
    EXPECT_NE(std::strstr(getErrMsg(), "rkMaskAlpha: image is null"), nullptr);
}

}  // namespace
