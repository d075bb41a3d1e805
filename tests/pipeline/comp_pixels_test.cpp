// Pixel counts against direct counts over every byte value, on views inside
// larger buffers whose padding would change the count if it were read.
#include "pipeline/comp_pixels.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <random>
#include <vector>

namespace {

// A w x h region at (1, 2) of a larger block; everything outside the region
// holds the sentinel value.
struct PaddedMap {
    static constexpr int kPadX = 5, kPadY = 3;
    int w, h, stride;
    std::vector<unsigned char> data;
    PaddedMap(int w_, int h_, unsigned char sentinel)
        : w(w_),
          h(h_),
          stride(w_ + kPadX),
          data(static_cast<size_t>(stride) * (h_ + kPadY), sentinel) {}
    unsigned char* region() { return &data[2 * stride + 1]; }
    unsigned char& at(int x, int y) { return region()[y * stride + x]; }
};

template <typename Pred>
int directCount(PaddedMap& m, Pred pred) {
    int n = 0;
    for (int y = 0; y < m.h; ++y)
        for (int x = 0; x < m.w; ++x) n += pred(m.at(x, y)) ? 1 : 0;
    return n;
}

TEST(CompPixels, ThreeFormsMatchDirectCountsOnRandomMaps) {
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> side(1, 40), byte(0, 255);
    for (int trial = 0; trial < 40; ++trial) {
        const int w = side(rng), h = side(rng);
        // Even sentinels are counted by every form, so reading the padding shows.
        PaddedMap m(w, h, 100);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) m.at(x, y) = static_cast<unsigned char>(byte(rng));
        SCOPED_TRACE(testing::Message() << w << "x" << h);

        GIMG<unsigned char> view(w, h, m.region(), m.stride);
        EXPECT_EQ(numCompPixels(view), directCount(m, [](int v) { return v % 2 == 0; }));
        EXPECT_EQ(numCompPixels(m.region(), m.stride, w, h),
                  directCount(m, [](int v) { return v % 2 == 0 && v > 5 && v < 250; }));
        cv::Mat mat(h, w, CV_8UC1, m.region(), static_cast<size_t>(m.stride));
        EXPECT_EQ(numCompPixelsRecoverComputeOnly(mat),
                  directCount(m, [](int v) { return v > 5 && v < 250; }));
    }
}

TEST(CompPixels, BandLimitsAndOddMaps) {
    // Every byte value once.
    PaddedMap all(256, 1, 128);
    for (int v = 0; v < 256; ++v) all.at(v, 0) = static_cast<unsigned char>(v);
    // Even 6..248: 122 values; 6..249 odd or even: 244 values; 128 even bytes.
    EXPECT_EQ(numCompPixels(all.region(), all.stride, 256, 1), 122);
    cv::Mat mat(1, 256, CV_8UC1, all.region());
    EXPECT_EQ(numCompPixelsRecoverComputeOnly(mat), 244);
    GIMG<unsigned char> view(256, 1, all.region(), all.stride);
    EXPECT_EQ(numCompPixels(view), 128);

    PaddedMap odd(17, 9, 2);
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 17; ++x) odd.at(x, y) = static_cast<unsigned char>(2 * (x + y) + 1);
    GIMG<unsigned char> oddView(17, 9, odd.region(), odd.stride);
    EXPECT_EQ(numCompPixels(oddView), 0);
    EXPECT_EQ(numCompPixels(odd.region(), odd.stride, 17, 9), 0);
}

}  // namespace
