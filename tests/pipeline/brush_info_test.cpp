// Restoring painted bytes and merging a region's result, against per-pixel
// references, on views inside larger blocks whose margins must stay.
#include "pipeline/brush_info.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr unsigned char kSentinel = 0xA5;
// Stands for restoreBrushStrokes among the merge modes.
constexpr int kRestore = -99;

TEST(BrushInfo, RestoreAndEveryMergeModeMatchTheReference) {
    for (int mode : {kRestore, kMergeByMinimum, kMergeByMaximum, 2, -1}) {
        SCOPED_TRACE(mode);
        const int w = 20 + std::abs(mode) % 11, h = 13;
        cv::Mat maskBlock(h + 4, w + 6, CV_8UC1, cv::Scalar(kSentinel));
        cv::Mat brushBlock = maskBlock.clone();
        const cv::Rect inner(3, 2, w, h);
        cv::Mat mask = maskBlock(inner), brush = brushBlock(inner);
        cv::RNG rng(mode + 100);
        rng.fill(mask, cv::RNG::UNIFORM, 0, 256);
        rng.fill(brush, cv::RNG::UNIFORM, 0, 256);
        const cv::Mat before = maskBlock.clone();
        if (mode == kRestore)
            restoreBrushStrokes(mask, brush);
        else
            mergeWithBrush(mask, brush, mode);
        cv::Mat want = before.clone();
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const unsigned char b = brush.at<unsigned char>(y, x);
                unsigned char& m = want(inner).at<unsigned char>(y, x);
                if (mode == kRestore)
                    m = (b & 1) ? b : (m & 254);
                else if (!(b & 1) && mode == kMergeByMinimum)
                    m = std::min(m, b);
                else if (!(b & 1) && mode == kMergeByMaximum)
                    m = std::max(m, b);
            }
        EXPECT_EQ(cv::countNonZero(maskBlock != want), 0);
    }
}

}  // namespace
