// Brush strokes into the map: the codes each brush type paints, the gradient
// stroke's ramp, caps and axis-parallel disc, the raster routines' runs,
// discs and rounding, and the refusals of the host entries.
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "api/keepcut.h"
#include "tools/brush_raster.h"

namespace {

// A map of w x h bytes with two bytes of row padding that must stay.
struct Map {
    static constexpr unsigned char kPad = 0xEE;
    int w, h, step;
    std::vector<unsigned char> bytes;
    Map(int w_, int h_, unsigned char fill) : w(w_), h(h_), step(w_ + 2), bytes(step * h_, kPad) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) at(x, y) = fill;
    }
    unsigned char& at(int x, int y) { return bytes[y * step + x]; }
    unsigned char* data() { return bytes.data(); }
    // Pixels that differ from fill, as (x, y); padding must be intact.
    std::set<std::pair<int, int>> changed(unsigned char fill) {
        std::set<std::pair<int, int>> out;
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x)
                if (at(x, y) != fill) out.insert({x, y});
            EXPECT_EQ(bytes[y * step + w], kPad);
        }
        return out;
    }
};

TEST(DrawLine8u, BrushTypeChoosesTheCode) {
    const struct {
        unsigned char type, value, code;
    } cases[] = {{0, 9, 1}, {1, 9, 255}, {2, 9, 126}, {3, 100, 101}, {3, 101, 101}, {7, 100, 0}};
    for (const auto& c : cases) {
        Map m(5, 5, 50);
        EXPECT_EQ(rkDrawLine8u(m.data(), m.step, 5, 5, 2, 2, 2, 2, 0, c.type, c.value), 1);
        EXPECT_EQ(m.at(2, 2), c.code) << "type " << +c.type;
        EXPECT_EQ(m.changed(50).size(), 1u);
    }
}

TEST(DrawGradientLine8u, AxisParallelStrokesPaintOnlyTheStartDisc) {
    for (auto [x1, y1] : {std::pair{10, 4}, std::pair{4, 11}, std::pair{4, 4}}) {
        Map m(16, 16, 50), aux(16, 16, 9);
        rkDrawGradientLine8u(m.data(), m.step, 16, 16, aux.data(), aux.step, 4, 4, x1, y1, 2, 77,
                             200);
        // The disc OpenCV fills at the start, and nothing else.
        cv::Mat disc = cv::Mat::zeros(16, 16, CV_8UC1);
        cv::circle(disc, cv::Point(4, 4), 2, cv::Scalar(1), cv::FILLED, cv::LINE_8);
        std::set<std::pair<int, int>> want;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x)
                if (disc.at<unsigned char>(y, x)) want.insert({x, y});
        EXPECT_EQ(m.changed(50), want) << x1 << ", " << y1;
        EXPECT_EQ(m.at(4, 2), 77);
        EXPECT_EQ(m.at(6, 4), 77);
        EXPECT_TRUE(aux.changed(9).empty());
    }
}

TEST(DrawGradientLine8u, DiagonalRampsBetweenEndsAndCapsLoseThePaint) {
    Map m(16, 16, 51), aux(16, 16, 9);
    rkDrawGradientLine8u(m.data(), m.step, 16, 16, aux.data(), aux.step, 2, 2, 12, 12, 2, 0, 200);
    EXPECT_EQ(m.at(7, 7), 101);  // halfway: 100, painted
    EXPECT_EQ(m.at(2, 2), 1);    // the ends take their own values
    EXPECT_EQ(m.at(12, 12), 201);
    for (auto [x, y] : {std::pair{1, 1}, std::pair{13, 13}}) {
        EXPECT_EQ(m.at(x, y), 50) << x << ", " << y;  // in a cap: bit 0 cleared
        EXPECT_EQ(aux.at(x, y), 0) << x << ", " << y;
    }
    EXPECT_EQ(aux.at(7, 7), 9);
    EXPECT_EQ(m.at(15, 0), 51);  // off the stroke
    int previous = 0;
    for (int t = 2; t <= 12; ++t) {
        EXPECT_EQ(m.at(t, t) & 1, 1);
        EXPECT_GE(m.at(t, t), previous);
        previous = m.at(t, t);
    }
}

TEST(DrawHLine, ClipsAndOrdersTheRun) {
    const struct {
        int xa, xb, y, result, lo, hi;
    } cases[] = {
        {5, -3, 0, 1, 0, 5},  {2, 9, 1, 1, 2, 5},  {-5, -1, 0, 0, 0, -1},
        {3, 3, -1, 0, 0, -1}, {3, 3, 2, 0, 0, -1}, {7, 9, 0, 0, 0, -1},
    };
    for (const auto& c : cases) {
        Map m(6, 2, 50);
        EXPECT_EQ(drawHLine(m.data(), m.step, 6, 2, c.xa, c.xb, c.y, 9), c.result);
        std::set<std::pair<int, int>> want;
        for (int x = c.lo; x <= c.hi; ++x) want.insert({x, c.y});
        EXPECT_EQ(m.changed(50), want) << c.xa << ".." << c.xb;
    }
}

// Half-widths of a disc's rows, listed by hand from trunc(sqrt(r^2 - dy^2) +
// 0.49) for dy = -r .. r.
TEST(DrawCircle, RowsFollowTheHalfWidthRule) {
    const struct {
        int radius;
        std::vector<int> halves;
    } cases[] = {{0, {0}}, {1, {0, 1, 0}}, {2, {0, 2, 2, 2, 0}}, {3, {0, 2, 3, 3, 3, 2, 0}}};
    for (const auto& c : cases) {
        Map m(9, 9, 50);
        EXPECT_EQ(drawCircle(m.data(), m.step, 9, 9, 4, 4, c.radius, 9), 1);
        std::set<std::pair<int, int>> want;
        for (int i = 0; i < static_cast<int>(c.halves.size()); ++i)
            for (int x = 4 - c.halves[i]; x <= 4 + c.halves[i]; ++x)
                want.insert({x, 4 - c.radius + i});
        EXPECT_EQ(m.changed(50), want) << "radius " << c.radius;
    }
}

TEST(DrawCircle, OffsetIsBelowOneHalfAndOutsideDrawsNothing) {
    // sqrt(44^2 - 23^2) = 37.5099...: 0.49 keeps the half-width at 37.
    Map big(100, 100, 0);
    EXPECT_EQ(drawCircle(big.data(), big.step, 100, 100, 50, 50, 44, 9), 1);
    EXPECT_EQ(big.at(13, 73), 9);
    EXPECT_EQ(big.at(12, 73), 0);
    EXPECT_EQ(big.at(87, 73), 9);
    EXPECT_EQ(big.at(88, 73), 0);

    const struct {
        int cx, cy, radius, result;
    } cases[] = {{4, 4, -1, 0}, {9, 4, 0, 0}, {-1, 0, 0, 0}, {30, 30, 2, 1}};
    for (const auto& c : cases) {
        Map m(9, 9, 50);
        EXPECT_EQ(drawCircle(m.data(), m.step, 9, 9, c.cx, c.cy, c.radius, 9), c.result);
        EXPECT_TRUE(m.changed(50).empty());
    }
}

// With radius 0 every disc is one pixel: the chain shows the centres, placed
// by trunc(v + 0.49999), so an exact half rounds down.
TEST(DrawLineW, CentresStepAlongTheLongerAxis) {
    using Pixels = std::set<std::pair<int, int>>;
    const struct {
        int x0, y0, x1, y1;
        Pixels want;
    } cases[] = {
        {0, 0, 2, 1, {{0, 0}, {1, 0}, {2, 1}}},
        {2, 1, 0, 0, {{2, 1}, {1, 0}, {0, 0}}},
        {0, 0, 1, 2, {{0, 0}, {0, 1}, {1, 2}}},
        {3, 3, 3, 3, {{3, 3}}},
        {0, 4, 4, 1, {{0, 4}, {1, 3}, {2, 2}, {3, 2}, {4, 1}}},  // 2.5 rounds down
    };
    for (const auto& c : cases) {
        Map m(6, 6, 50);
        EXPECT_EQ(drawLineW(m.data(), m.step, 6, 6, c.x0, c.y0, c.x1, c.y1, 0, 9), 1);
        EXPECT_EQ(m.changed(50), c.want) << c.x0 << "," << c.y0 << " - " << c.x1 << "," << c.y1;
    }
    Map thick(9, 9, 50);
    drawLineW(thick.data(), thick.step, 9, 9, 2, 4, 6, 4, 1, 9);
    EXPECT_EQ(thick.changed(50).size(), 5u + 7u + 5u);  // plus-shaped discs at x = 2..6
}

TEST(StrokeRefusals, LogAndTouchNothing) {
    Map m(6, 6, 51), aux(6, 6, 9);
    const auto refused = [&](const char* entry, int result) {
        EXPECT_EQ(result, -2) << entry;
        EXPECT_NE(std::string(getErrMsg()).find(entry), std::string::npos) << entry;
        EXPECT_TRUE(m.changed(51).empty() && aux.changed(9).empty()) << entry;
        clearErrMsg();
    };
    unsigned char* p = m.data();
    clearErrMsg();
    refused("rkDrawLine8u", rkDrawLine8u(nullptr, 8, 6, 6, 0, 0, 5, 5, 1, 1, 0));
    refused("rkDrawLine8u", rkDrawLine8u(p, 5, 6, 6, 0, 0, 5, 5, 1, 1, 0));
    refused("rkDrawLine8u", rkDrawLine8u(p, 8, 6, -1, 0, 0, 5, 5, 1, 1, 0));
    refused("rkDrawLine8u", rkDrawLine8u(p, 8, 6, 6, 0, 0, 5, 5, -1, 1, 0));
    refused("rkDrawLine8u", rkDrawLine8u(p, 8, 6, 6, 0, 0, 5, 5, 16384, 1, 0));
    const char* g = "rkDrawGradientLine8u";
    refused(g, (rkDrawGradientLine8u(p, 8, 6, 6, nullptr, 8, 0, 0, 5, 5, 1, 0, 200), -2));
    refused(g, (rkDrawGradientLine8u(p, 8, -6, 6, aux.data(), 8, 0, 0, 5, 5, 1, 0, 200), -2));
    refused(g, (rkDrawGradientLine8u(p, 8, 6, 6, aux.data(), 5, 0, 0, 5, 5, 1, 0, 200), -2));
    refused(g, (rkDrawGradientLine8u(p, 8, 6, 6, aux.data(), 8, 0, 0, 5, 5, -2, 0, 200), -2));
}

}  // namespace
