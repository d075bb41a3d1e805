// Restoring painted bytes and merging a region's result, against per-pixel
// references, on views inside larger blocks whose margins must stay.
#include "pipeline/brush_info.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

constexpr unsigned char kSentinel = 0xA5;

struct Maps {
    cv::Mat maskBlock, brushBlock, mask, brush, maskBefore;
    Maps(int w, int h, unsigned seed) {
        maskBlock = cv::Mat(h + 4, w + 6, CV_8UC1, cv::Scalar(kSentinel));
        brushBlock = cv::Mat(h + 4, w + 6, CV_8UC1, cv::Scalar(kSentinel));
        mask = maskBlock(cv::Rect(3, 2, w, h));
        brush = brushBlock(cv::Rect(3, 2, w, h));
        std::mt19937 rng(seed);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                mask.at<unsigned char>(y, x) = static_cast<unsigned char>(rng());
                brush.at<unsigned char>(y, x) = static_cast<unsigned char>(rng());
            }
        maskBefore = mask.clone();
    }
    int sentinelsLost() const {
        cv::Mat inner = cv::Mat::zeros(maskBlock.size(), CV_8UC1);
        inner(cv::Rect(3, 2, mask.cols, mask.rows)).setTo(1);
        return cv::countNonZero((maskBlock != kSentinel) & (inner == 0));
    }
};

TEST(BrushInfo, RestoreTakesOddBrushBytesAndClearsBitZeroElsewhere) {
    Maps m(37, 11, 1);
    restoreBrushStrokes(m.mask, m.brush);
    int wrong = 0;
    for (int y = 0; y < m.mask.rows; ++y)
        for (int x = 0; x < m.mask.cols; ++x) {
            const unsigned char b = m.brush.at<unsigned char>(y, x);
            const unsigned char want = (b & 1) ? b : (m.maskBefore.at<unsigned char>(y, x) & 254);
            wrong += m.mask.at<unsigned char>(y, x) != want;
        }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(m.sentinelsLost(), 0);
}

TEST(BrushInfo, MergeByMinimumAndMaximumOnUnpaintedPixels) {
    for (int mode : {kMergeByMinimum, kMergeByMaximum}) {
        Maps m(29, 13, 2 + mode);
        mergeWithBrush(m.mask, m.brush, mode);
        int wrong = 0;
        for (int y = 0; y < m.mask.rows; ++y)
            for (int x = 0; x < m.mask.cols; ++x) {
                const unsigned char b = m.brush.at<unsigned char>(y, x);
                const unsigned char old = m.maskBefore.at<unsigned char>(y, x);
                const unsigned char want =
                    (b & 1) ? old : (mode == kMergeByMinimum ? std::min(old, b) : std::max(old, b));
                wrong += m.mask.at<unsigned char>(y, x) != want;
            }
        EXPECT_EQ(wrong, 0) << mode;
        EXPECT_EQ(m.sentinelsLost(), 0);
    }
}

TEST(BrushInfo, OtherMergeModesLeaveTheResult) {
    Maps m(16, 9, 5);
    mergeWithBrush(m.mask, m.brush, 2);
    mergeWithBrush(m.mask, m.brush, -1);
    EXPECT_EQ(cv::countNonZero(m.mask != m.maskBefore), 0);
}

}  // namespace
