// Hair selection: the seven-pixel neighbourhood, the colour projection, and
// the brush entry's box, stroke shape and refusals.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "api/keepcut.h"
#include "select/hair_alpha.h"
#include "select/hair_neighbourhood.h"

namespace {

using Bytes = std::vector<unsigned char>;

TEST(HairNeighbourhood, ScansSevenPixelsShiftedBelow) {
    // Every 3 x 3 offset and the one left of it below; the set the test
    // shape is documented to read.
    const struct {
        int dx, dy;
        bool read;
    } cases[] = {{-1, -1, true}, {0, -1, true}, {1, -1, true}, {-1, 0, true}, {0, 0, true},
                 {1, 0, false},  {-2, 1, true}, {-1, 1, true}, {0, 1, false}, {1, 1, false}};
    for (const auto& c : cases) {
        for (const unsigned char odd : {0, 200}) {
            unsigned char patch[5][5];
            for (auto& row : patch)
                for (auto& v : row) v = 100;
            patch[2 + c.dy][2 + c.dx] = odd;
            unsigned char lo = 0, hi = 0;
            get3x3C1Min(&patch[2][2], 5, lo);
            get3x3C1Max(&patch[2][2], 5, hi);
            const unsigned char want = c.read ? odd : 100;
            EXPECT_EQ(odd == 0 ? lo : hi, want) << c.dx << "," << c.dy;
        }
    }
}

TEST(CompAlphaMapHair, ProjectsOntoTheColourLine) {
    // Colours are red, green, blue; interleaved pixels blue, green, red;
    // planes pair with colour bytes in order.
    const struct {
        unsigned char fore[3], back[3], px[3];
        bool planar, onLine;
        int want;
    } cases[] = {
        {{255, 255, 255}, {0, 0, 0}, {77, 77, 77}, false, true, 77},  // grey g gives g
        {{255, 255, 255}, {0, 0, 0}, {200, 200, 200}, true, true, 200},
        {{255, 0, 0}, {0, 0, 0}, {0, 0, 128}, false, true, 128},  // red is byte 2
        {{255, 0, 0}, {0, 0, 0}, {128, 0, 0}, false, true, 0},
        {{255, 0, 0}, {0, 0, 0}, {128, 0, 0}, true, true, 128},         // plane 0 with byte 0
        {{200, 200, 200}, {50, 50, 50}, {20, 20, 20}, false, true, 0},  // darker than back
        {{200, 200, 200}, {50, 50, 50}, {230, 230, 230}, false, true, 255},
        {{200, 200, 200}, {50, 50, 50}, {230, 230, 230}, true, true, 255},  // saturated
        {{200, 200, 200}, {50, 50, 50}, {125, 125, 125}, false, true, 128},
        {{255, 255, 255}, {0, 0, 0}, {77, 77, 77}, false, false, 42},  // off the line
        {{9, 9, 9}, {9, 9, 9}, {77, 77, 77}, false, true, 42},         // no colour line
        {{9, 9, 9}, {9, 9, 9}, {77, 77, 77}, true, true, 42},
    };
    for (const auto& c : cases) {
        unsigned char alpha = 42, line = c.onLine ? 255 : 0;
        if (c.planar) {
            const unsigned char* planes[3] = {&c.px[0], &c.px[1], &c.px[2]};
            EXPECT_EQ(CompAlphaMapHair(planes, 1, 1, 1, &line, 1, &alpha, 1, c.fore, c.back), 0);
        } else {
            EXPECT_EQ(CompAlphaMapHair(c.px, 3, 1, 1, &line, 1, &alpha, 1, c.fore, c.back), 0);
        }
        EXPECT_EQ(alpha, c.want) << int(c.px[0]) << "," << int(c.px[1]) << "," << int(c.px[2])
                                 << (c.planar ? " planar" : "");
    }
}

// A w x h grey picture with a flat map of the same grey: white over black
// makes the new alpha flat, so every stroke pixel off the box's ring is an
// extreme and is written as grey | 1.
struct HairScene {
    static constexpr int w = 24, h = 20;
    static constexpr unsigned char grey = 100;
    Bytes image = Bytes(w * h * 4, grey), mask = Bytes(w * h, grey);
    unsigned char white[3] = {255, 255, 255}, black[3] = {0, 0, 0};
    RKPSStructMsk2 r{};
    HairScene() {
        r.image = image.data(), r.imageRowBytes = 4 * w, r.mask = mask.data();
        r.maskRowBytes = w, r.width = w, r.height = h;
        r.hairForeColor = white, r.hairBackColor = black;
    }
    bool written(int x, int y) const { return mask[y * w + x] == (grey | 1); }
    bool onlyUnchangedOrWritten() const {
        for (unsigned char v : mask)
            if (v != grey && v != (grey | 1)) return false;
        return true;
    }
};

TEST(HairSelect, WritesExtremesInsideTheStrokeBoxOnly) {
    // Box pixels (inclusive) that may change, and pixels that must or must not.
    const struct {
        const char* what;
        int x1, y1, x2, y2, radius;
        int bx0, by0, bx1, by1;
        std::vector<std::pair<int, int>> mustWrite, mustKeep;
    } cases[] = {
        {"horizontal, radius 0", 3, 10, 15, 10, 0, 3, 10, 15, 10, {}, {{8, 10}}},  // 1 row: all
                                                                                   // ring
        {"radius 1", 3, 10, 15, 10, 1, 2, 9, 16, 11, {{3, 10}, {4, 10}}, {{8, 10}, {15, 10}}},
        {"right edge", 3, 10, 23, 10, 1, 2, 9, 23, 11, {{3, 10}}, {{22, 10}}},
        {"x = width", 3, 10, 24, 10, 1, 1, 1, 0, 0, {}, {{8, 10}}},
        {"negative", -1, 10, 5, 10, 1, 1, 1, 0, 0, {}, {{3, 10}}},
        // The stroke runs from the box's top-left corner to the point radius
        // pixels inside its bottom-right one: unclipped, both are (radius,
        // radius), one spot at the top-left end point whatever the drag.
        {"up-right", 8, 14, 16, 4, 2, 6, 2, 18, 16, {{8, 4}}, {{12, 9}, {16, 4}, {8, 14}}},
        {"equal colours", 3, 10, 15, 10, 1, 1, 1, 0, 0, {}, {{8, 10}}},
    };
    for (const auto& c : cases) {
        HairScene s;
        if (std::string(c.what) == "equal colours") s.r.hairBackColor = s.white;
        EXPECT_EQ(rkHairSelect(&s.r, c.x1, c.y1, c.x2, c.y2, c.radius), 1) << c.what;
        EXPECT_TRUE(s.onlyUnchangedOrWritten()) << c.what;
        for (int y = 0; y < s.h; ++y)
            for (int x = 0; x < s.w; ++x) {
                const bool inner = x > c.bx0 && x < c.bx1 && y > c.by0 && y < c.by1;
                EXPECT_TRUE(inner || !s.written(x, y)) << c.what << " at " << x << "," << y;
            }
        for (auto [x, y] : c.mustWrite)
            EXPECT_TRUE(s.written(x, y)) << c.what << " " << x << "," << y;
        for (auto [x, y] : c.mustKeep)
            EXPECT_FALSE(s.written(x, y)) << c.what << " " << x << "," << y;
    }
}

TEST(HairSelect, RefusesBrokenRequestsWithALogLine) {
    const struct {
        const char* what;
        void (*breakIt)(RKPSStructMsk2&);
        int radius;
    } cases[] = {
        {"null hair colour", [](RKPSStructMsk2& r) { r.hairForeColor = nullptr; }, 1},
        {"short image rows", [](RKPSStructMsk2& r) { r.imageRowBytes -= 1; }, 1},
        {"negative height", [](RKPSStructMsk2& r) { r.height = -1; }, 1},
        {"negative radius", [](RKPSStructMsk2&) {}, -1},
        {"radius too thick to draw", [](RKPSStructMsk2&) {}, 16384},
    };
    for (const auto& c : cases) {
        HairScene s;
        c.breakIt(s.r);
        clearErrMsg();
        EXPECT_EQ(rkHairSelect(&s.r, 3, 10, 15, 10, c.radius), -2) << c.what;
        EXPECT_NE(std::string(getErrMsg()).find("rkHairSelect"), std::string::npos) << c.what;
        EXPECT_EQ(s.mask, Bytes(s.w * s.h, s.grey)) << c.what;
    }
    clearErrMsg();
    EXPECT_EQ(rkHairSelect(nullptr, 0, 0, 0, 0, 0), -2);
    EXPECT_NE(std::string(getErrMsg()).find("rkHairSelect"), std::string::npos);
}

}  // namespace
