// Pixel counts against direct counts, on random maps, on every byte value
// and on an all-odd map, each a view inside a larger buffer whose padding
// (an even value that every form counts) would change the count if read.
#include "pipeline/comp_pixels.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

namespace {

TEST(CompPixels, ThreeFormsMatchDirectCounts) {
    cv::RNG rng(11);
    for (int trial = 0; trial < 42; ++trial) {
        const int w = trial == 40 ? 256 : (trial == 41 ? 17 : rng.uniform(1, 41));
        const int h = trial == 40 ? 1 : (trial == 41 ? 9 : rng.uniform(1, 41));
        cv::Mat block(h + 3, w + 5, CV_8UC1, cv::Scalar(100));
        cv::Mat m = block(cv::Rect(1, 2, w, h));
        if (trial == 40)  // every byte value once
            for (int v = 0; v < 256; ++v) m.at<unsigned char>(0, v) = static_cast<unsigned char>(v);
        else if (trial == 41)  // all odd
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) m.at<unsigned char>(y, x) = 2 * (x + y) + 1;
        else
            rng.fill(m, cv::RNG::UNIFORM, 0, 256);
        SCOPED_TRACE(testing::Message() << w << "x" << h);
        int even = 0, band = 0, evenBand = 0;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const int v = m.at<unsigned char>(y, x);
                even += v % 2 == 0, band += v > 5 && v < 250,
                    evenBand += v % 2 == 0 && v > 5 && v < 250;
            }
        const int step = static_cast<int>(m.step);
        GIMG<unsigned char> view(w, h, m.data, step);
        EXPECT_EQ(numCompPixels(view), even);
        EXPECT_EQ(numCompPixels(m.data, step, w, h), evenBand);
        EXPECT_EQ(numCompPixelsRecoverComputeOnly(m), band);
    }
}

}  // namespace
