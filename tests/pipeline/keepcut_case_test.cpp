// The main entry's choices: the strategy at each area limit, and the widening
// of small regions with the expected regions worked out by hand from the
// margins (half of 1.7 times the side, or of 1.4 times the mean side when
// larger, capped by the picture).
#include "pipeline/keepcut_case.h"

#include <gtest/gtest.h>

#include "pipeline/region_widen.h"

namespace {

TEST(ChooseKeepCutCase, ByPassJobKindAndAreaLimit) {
    const struct {
        int pass, cellMode;
        long long area;
        KeepCutCase want;
    } cases[] = {
        {1, 0, 1, kCaseKDTreeHiResWhole},           {1, 0, 100000000, kCaseKDTreeHiResWhole},
        {1, 1, 2249999, kCaseOriginalHiResRegion},  {1, 1, 2250000, kCaseKDTreeHiResRegion},
        {1, 4, 937024, kCaseOriginalHiResRegion},   {0, 0, 1, kCaseKDTreePyramidWhole},
        {2, 1, 937023, kCaseOriginalRegion},        {-1, 1, 937024, kCaseKDTreePyramidRegion},
        {0, -3, 2250000, kCaseKDTreePyramidRegion},
    };
    for (const auto& c : cases)
        EXPECT_EQ(chooseKeepCutCase(c.pass, c.cellMode, c.area), c.want)
            << c.pass << " " << c.cellMode << " " << c.area;
}

TEST(WidenRegion, MarginsOverflowAndClipping) {
    const struct {
        const char* what;
        KeepCutRegion in;
        int pw, ph;
        KeepCutRegion want;
    } cases[] = {
        // 1500 x 1499: margins 2550 / 2 = 1275 across, 2548 / 2 = 1274 down.
        {"height below 1500", {3000, 3000, 1500, 1499}, 10000, 10000, {1725, 1726, 4050, 4047}},
        {"width below 1500", {3000, 3000, 1499, 1500}, 10000, 10000, {1726, 1725, 4047, 4050}},
        {"both 1500", {3000, 3000, 1500, 1500}, 10000, 10000, {3000, 3000, 1500, 1500}},
        // 400 x 20: across 680 / 2 = 340; down the mean side 210 x 1.4 = 294
        // wins over 34, giving 147.
        {"thin", {1000, 1000, 400, 20}, 4000, 3000, {660, 853, 1080, 314}},
        // 200 x 300 at (10, 20): margins 175 (the mean side 250 x 1.4 beats
        // 200 x 1.7) and 255; the 165 columns and 235 rows that would fall off
        // grow the far ends instead.
        {"left and top overflow", {10, 20, 200, 300}, 2000, 2000, {0, 0, 550, 810}},
        // Margin 8, clipped at column / row 99.
        {"bottom-right corner", {90, 90, 10, 10}, 100, 100, {82, 82, 18, 18}},
        {"span capped by the picture", {20, 20, 60, 60}, 100, 100, {0, 0, 100, 100}},
        {"overflow left and past the right", {5, 0, 90, 10}, 100, 10, {0, 0, 100, 10}},
    };
    for (const auto& c : cases) {
        const KeepCutRegion r = widenRegion(c.in, c.pw, c.ph);
        EXPECT_EQ(r, c.want) << c.what << ": " << r.x << "," << r.y << " " << r.width << "x"
                             << r.height;
    }
}

}  // namespace
