// Mask bounding box through the C entry on 8- and 16-bit maps: the margin and
// 24-row rules at their boundaries, with boxes and counts worked out by hand.
// Random maps against a plain scan, odd steps and addresses, null outputs and
// refused arguments are the entry's fuzz target's.
#include "pipeline/mask_bbox.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
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
    Box box(int step = 0) const {
        Box b;
        b.result = rkMaskBBox(view.depth() == CV_16U, block.data,
                              step ? step : static_cast<int>(block.step), view.cols, view.rows,
                              &b.x, &b.w, &b.y, &b.h, &b.countA, &b.countB, 0, kMaskKeep, kMaskCut);
        return b;
    }
};

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
        // The leftmost work sits on the box's last row (clipped at the bottom).
        {"leftmost work on the last row",
         60,
         40,
         false,
         kMaskKeep,
         {{30, 10, 1, 1}, {5, 39, 1, 1}},
         {1, 0, 43, 0, 40, 43 * 40 - 2, 0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Map m(c.w, c.h, c.is16, c.fill);
        for (const cv::Rect& r : c.work) m.view(r).setTo(128);
        EXPECT_EQ(m.box(), c.want);
    }
    Box none;
    none.result = rkMaskBBox(static_cast<const unsigned char*>(nullptr), 0, 0, 0, &none.x, &none.w,
                             &none.y, &none.h, &none.countA, &none.countB, 0, kMaskKeep, kMaskCut);
    EXPECT_EQ(none, kNoBox);
}

// 16-bit rows need two bytes a pixel: 79 bytes are short for 40, and a
// refusal writes no output.
TEST(MaskBBox, SixteenBitRowsOfOneByteAPixelAreRefused) {
    EXPECT_EQ(Map(40, 40, true, kMaskKeep).box(79), (Box{-2}));
}

}  // namespace
