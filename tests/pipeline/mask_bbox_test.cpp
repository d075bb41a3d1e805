// Mask bounding box through the C entry on 8- and 16-bit maps: against a
// brute-force reference on random maps, the margin and 24-row rules at their
// boundaries, the counts, an unaligned 16-bit map, and refused arguments.
#include "pipeline/mask_bbox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "pipeline/mask_codes.h"

namespace {

struct Box {
    int result = -99, x = -9, w = -9, y = -9, h = -9, countA = -9, countB = -9;
    bool operator==(const Box&) const = default;
};

std::ostream& operator<<(std::ostream& os, const Box& b) {
    return os << "result " << b.result << " box " << b.x << "," << b.y << " " << b.w << "x" << b.h
              << " counts " << b.countA << "/" << b.countB;
}

const Box kNoBox{1, 0, 0, 0, 0, -1, -1};

// A map with padding after each row; the padding holds a work value so a
// scan that strays past the width changes the box.
struct Map {
    cv::Mat block, view;
    Map(int w, int h, bool is16, int fill) {
        block = cv::Mat(h, w + 3, is16 ? CV_16UC1 : CV_8UC1, cv::Scalar(7));
        view = block.colRange(0, w);
        view.setTo(fill);
    }
    Box box(const unsigned char* data = nullptr, int step = 0) const {
        Box b;
        b.result = rkMaskBBox(view.depth() == CV_16U, data ? data : block.data,
                              step ? step : static_cast<int>(block.step), view.cols, view.rows,
                              &b.x, &b.w, &b.y, &b.h, &b.countA, &b.countB, 0, kMaskKeep, kMaskCut);
        return b;
    }
    // The same rules stated over the extremes of the work pixels.
    Box reference() const {
        cv::Mat m;
        view.convertTo(m, CV_32S);
        const cv::Mat work = (m != kMaskKeep) & (m != kMaskCut);
        cv::Rect span = cv::boundingRect(work);
        const int top = std::max(span.empty() ? m.rows : span.y - 12, 0);
        const int bottom = std::min(span.br().y - 1 > top ? span.br().y + 11 : top, m.rows - 1);
        if (bottom - top + 1 < 24) return kNoBox;
        const int left = std::max(span.x - 12, 0);
        const int right = std::min(span.br().x - 1 > left ? span.br().x + 11 : left, m.cols - 1);
        const cv::Mat in = m(cv::Rect(left, top, right - left + 1, bottom - top + 1));
        return {1,
                left,
                right - left + 1,
                top,
                bottom - top + 1,
                cv::countNonZero(in == kMaskKeep),
                cv::countNonZero(in == kMaskCut)};
    }
};

TEST(MaskBBox, BothWidthsMatchTheReferenceOnRandomMaps) {
    cv::RNG rng(42);
    for (int trial = 0; trial < 120; ++trial) {
        const int w = rng.uniform(1, 91), h = rng.uniform(1, 91), n = rng.uniform(0, 5);
        const bool is16 = trial % 2;
        SCOPED_TRACE(testing::Message() << w << "x" << h << " with " << n << " band pixels");
        // Keep on the left half, cut on the right, a few band pixels sprinkled in.
        Map m(w, h, is16, kMaskKeep);
        m.view.colRange(w / 2, w).setTo(kMaskCut);
        for (int i = 0; i < n; ++i)
            m.view(cv::Rect(rng.uniform(0, w), rng.uniform(0, h), 1, 1))
                .setTo(2 * rng.uniform(3, 125));
        clearErrMsg();
        EXPECT_EQ(m.box(), m.reference());
        EXPECT_STREQ(getErrMsg(), "");
        if (!is16) continue;
        // A host's 16-bit map need not be aligned: the same map at an odd
        // address with an odd step gives the same box.
        const int step = static_cast<int>(m.block.step) + 1;
        std::vector<unsigned char> bytes(1 + static_cast<size_t>(step) * h, 0);
        for (int y = 0; y < h; ++y) std::memcpy(&bytes[1 + y * step], m.view.ptr(y), 2 * w);
        EXPECT_EQ(m.box(&bytes[1], step), m.reference());
    }
}

TEST(MaskBBox, MarginAndTwentyFourRowRuleAtTheirBoundaries) {
    const struct {
        const char* what;
        int w, h;
        bool is16;
        int fill;
        std::vector<cv::Rect> work;  // filled with an even band value
        Box want;
    } cases[] = {
        {"only the two values", 50, 60, false, kMaskKeep, {}, kNoBox},
        // Rows 38..62: 25 rows, just passes.
        {"one pixel at row 50",
         100,
         200,
         false,
         kMaskKeep,
         {{40, 50, 1, 1}},
         {1, 28, 25, 38, 25, 25 * 25 - 1, 0}},
        // Near the top the margin is clipped: row 11 spans rows 0..23, row 10 0..22.
        {"row 11", 30, 40, false, kMaskCut, {{15, 11, 1, 1}}, {1, 3, 25, 0, 24, 0, 25 * 24 - 1}},
        {"row 10", 30, 40, false, kMaskCut, {{15, 10, 1, 1}}, kNoBox},
        {"clipped at the bottom and right",
         50,
         50,
         true,
         kMaskKeep,
         {{30, 30, 1, 1}, {45, 45, 1, 1}},
         {1, 18, 32, 18, 32, 32 * 32 - 2, 0}},
        // Work in column 0 only: left clips to 0, and the rightward scan
        // starts just right of it, so the box is one column wide.
        {"one column", 60, 120, false, kMaskKeep, {{0, 50, 1, 11}}, {1, 0, 1, 38, 35, 35 - 11, 0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Map m(c.w, c.h, c.is16, c.fill);
        for (const cv::Rect& r : c.work) m.view(r).setTo(128);
        EXPECT_EQ(m.box(), c.want);
        EXPECT_EQ(m.reference(), c.want);
    }
    Box none;
    none.result = rkMaskBBox(static_cast<const unsigned char*>(nullptr), 0, 0, 0, &none.x, &none.w,
                             &none.y, &none.h, &none.countA, &none.countB, 0, kMaskKeep, kMaskCut);
    EXPECT_EQ(none, kNoBox);
}

TEST(MaskBBox, CountsNeedBothPointersAndBadArgumentsAreRefused) {
    Map m(40, 40, false, kMaskKeep), m16(40, 40, true, kMaskKeep);
    m.view.at<unsigned char>(20, 20) = 128;
    int x = -9, w = -9, y = -9, h = -9, a = -9, b = -9;
    EXPECT_EQ(rkMaskBBox(0, m.block.data, 43, 40, 40, &x, &w, &y, &h, &a, nullptr, 0, kMaskKeep,
                         kMaskCut),
              1);
    EXPECT_EQ(a, -9);
    EXPECT_EQ(w, 25);
    const struct {
        int is16;
        const void* map;
        int step, width, height;
        int* px;
    } cases[] = {
        {0, nullptr, 40, 40, 40, &x},            // null map
        {0, m.block.data, 40, -1, 40, &x},       // negative width
        {0, m.block.data, 40, 40, -5, &x},       // negative height
        {0, m.block.data, 39, 40, 40, &x},       // rows shorter than the width
        {1, m16.block.data, 79, 40, 40, &x},     // 16-bit rows need 80 bytes
        {0, m.block.data, 40, 40, 40, nullptr},  // null box output
    };
    x = w = y = h = a = b = -9;
    for (const auto& c : cases) {
        clearErrMsg();
        EXPECT_EQ(rkMaskBBox(c.is16, c.map, c.step, c.width, c.height, c.px, &w, &y, &h, &a, &b, 0,
                             kMaskKeep, kMaskCut),
                  -2);
        EXPECT_EQ(std::string(getErrMsg()).rfind("rkMaskBBox: ", 0), 0u) << getErrMsg();
    }
    EXPECT_EQ((Box{0, x, w, y, h, a, b}), (Box{0, -9, -9, -9, -9, -9, -9}));
    clearErrMsg();
}

}  // namespace
