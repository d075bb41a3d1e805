// Recovery-only pass: which tiles run a job, with what request, how progress
// advances over skipped tiles; and the main entry recovering the foreground.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <vector>

#include "foreground_test_support.h"
#include "pipeline/fg_recover.h"

namespace {

struct ProgressLog {
    std::vector<int> values;
    static int record(int current, int, void* data) {
        static_cast<ProgressLog*>(data)->values.push_back(current);
        return 1;
    }
};

TEST(RecoverComputeOnly, VisitsTilesWithWorkAndAdvancesOverEmptyOnes) {
    // 400 x 400: tiles every 100 pixels, 130 wide, 16 in all; work (bytes
    // strictly between 5 and 250) only at (50, 50) and (350, 250).
    cv::Mat picture(400, 400, CV_8UC3, cv::Scalar(10, 20, 30));
    cv::Mat mask(400, 400, CV_8UC1, cv::Scalar(255));
    mask.at<unsigned char>(50, 50) = 128;
    mask.at<unsigned char>(250, 350) = 7;  // odd: painted but inside 6..249
    EngineJob b(picture, mask, kFourthByte);
    ProgressLog log;
    b.r.progProc = ProgressLog::record;
    b.r.progData = &log;
    b.r.roiX = 3;  // the request's own region is not used
    struct Call {
        cv::Rect region;
        size_t progressCalls;
    };
    std::vector<Call> calls;
    EXPECT_EQ(
        recoverDuringComputeOnly(
            &b.r,
            [&](RKPSStructMsk2* tile) {
                EXPECT_EQ(tile->cellMode, 4);
                EXPECT_TRUE(tile->recoverForeground);
                EXPECT_NE(tile->brushInfo, b.r.brushInfo);
                EXPECT_EQ(tile->mask, b.r.mask);
                calls.push_back({cv::Rect(tile->roiX, tile->roiY, tile->roiWidth, tile->roiHeight),
                                 log.values.size()});
                tile->roiX = -99;  // jobs widen regions in place
                return -6;         // a failed tile does not stop
            }),
        1);
    // (50, 50) lies only in the first tile, (350, 250) only in (300, 200).
    const std::vector<cv::Rect> expected = {cv::Rect(0, 0, 130, 130), cv::Rect(300, 200, 100, 130)};
    ASSERT_EQ(calls.size(), expected.size());
    for (size_t k = 0; k < calls.size(); ++k) EXPECT_EQ(calls[k].region, expected[k]);
    // One report per tile, skipped or not, then the completion.
    ASSERT_EQ(log.values.size(), 17u);
    // Tile (300, 200) is the 12th: eleven reports came before its job.
    EXPECT_EQ(calls[1].progressCalls, 11u);
    for (size_t k = 0; k < 16; ++k) EXPECT_NEAR(log.values[k], (k + 1) * 1000000 / 16, 2);
    EXPECT_EQ(log.values.back(), 1000000);
    EXPECT_EQ(b.r.roiX, 3);
}

TEST(RecoverComputeOnly, EntryComputesAndRecoversTheBand) {
    const SyntheticSample s = makeSyntheticSample(160, 120);
    // Keep and cut painted from the trimap; the band is to compute.
    cv::Mat mask(s.trimap.size(), CV_8UC1);
    for (int y = 0; y < mask.rows; ++y)
        for (int x = 0; x < mask.cols; ++x) {
            const unsigned char t = s.trimap.at<unsigned char>(y, x);
            mask.at<unsigned char>(y, x) = t == 0 ? 1 : (t == 255 ? 255 : 128);
        }
    EngineJob b(s.picture, mask, kFourthByte);
    b.r.mergeMode = 2;
    ASSERT_EQ(rkRecoverDuringComputeOnly(&b.r), 1);
    int band = 0;
    for (int y = 0; y < mask.rows; ++y)
        for (int x = 0; x < mask.cols; ++x) {
            const unsigned char m = b.mask.at<unsigned char>(y, x);
            const unsigned char painted = mask.at<unsigned char>(y, x);
            if (painted & 1) {
                ASSERT_EQ(m, painted);
                ASSERT_EQ(b.foreground.at<cv::Vec4b>(y, x), b.image.at<cv::Vec4b>(y, x));
            } else {
                ASSERT_EQ(m & 1, 0);
                ++band;
            }
        }
    ASSERT_GT(band, 0);
    // The recovered colours beat the picture where the matte is fractional.
    const cv::Rect all(0, 0, 160, 120);
    EXPECT_LT(alphaWeightedError(b.foreground, s, all), alphaWeightedError(b.image, s, all));
}

TEST(MainEntry, RecoversForegroundWhenAsked) {
    const SyntheticSample s = makeSyntheticSample(160, 120);
    cv::Mat mask(s.trimap.size(), CV_8UC1);
    for (int y = 0; y < mask.rows; ++y)
        for (int x = 0; x < mask.cols; ++x) {
            const unsigned char t = s.trimap.at<unsigned char>(y, x);
            mask.at<unsigned char>(y, x) = t == 0 ? 1 : (t == 255 ? 255 : 128);
        }
    EngineJob with(s.picture, mask), without(s.picture, mask, kFourthByte);
    with.r.cellMode = without.r.cellMode = 1;
    with.r.recoverForeground = true;
    ASSERT_EQ(rkKeepCutToAlpha(&with.r, 0, false), 1);
    ASSERT_EQ(rkKeepCutToAlpha(&without.r, 0, false), 1);
    EXPECT_EQ(cv::norm(with.mask, without.mask, cv::NORM_INF), 0.0);  // same alpha
    EXPECT_EQ(cv::norm(without.foreground, without.image, cv::NORM_INF), 0.0);
    EXPECT_GT(cv::norm(with.foreground, with.image, cv::NORM_INF), 0.0);
}

}  // namespace
