// Display compositing for the masking screen: each mode, the alpha stretch,
// the blend and the desaturation on small host buffers with padded rows, and
// the refusals that must leave every buffer as it was.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "api/keepcut.h"
#include "core/ipp_primitives.h"

namespace {

using Pixel = std::array<unsigned char, 4>;  // blue, green, red, fourth byte

// A host picture of 3 x 2 pixels over a map of one repeated byte, rows
// padded by 5 and 3 bytes that must stay; every pixel starts alike.
struct Screen {
    unsigned char image[2][17], mask[2][6];
    Screen(Pixel p, unsigned char m) {
        std::memset(image, 0xEE, sizeof image), std::memset(mask, 0xEE, sizeof mask);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 3; ++x) std::memcpy(&image[y][4 * x], p.data(), 4), mask[y][x] = m;
    }
};

struct ModeCase {
    int mode;
    Pixel picture;
    unsigned char maskByte, hi, lo;
    std::array<unsigned char, 3> color;  // red, green, blue
    Pixel expected;
};

TEST(ShowImageAlpha, EveryModeOnOnePixel) {
    const ModeCase cases[] = {
        // Overlay: 7/8 darkening, then +85 (saturating) on the code's channel.
        {1, {255, 255, 255, 7}, 128, 0, 0, {}, {255, 223, 223, 7}},
        {1, {80, 80, 80, 9}, 255, 0, 0, {}, {70, 155, 70, 9}},
        {1, {80, 80, 80, 9}, 1, 0, 0, {}, {70, 70, 155, 9}},
        {1, {80, 80, 80, 9}, 77, 0, 0, {}, {70, 155, 155, 9}},
        {1, {10, 250, 8, 9}, 255, 0, 0, {}, {9, 255, 7, 9}},
        // Flat codes: only 0 is red and only 255 green.
        {2, {1, 2, 3, 4}, 0, 0, 0, {}, {0, 0, 255, 255}},
        {2, {1, 2, 3, 4}, 255, 0, 0, {}, {0, 255, 0, 255}},
        {2, {1, 2, 3, 4}, 254, 0, 0, {}, {255, 0, 0, 255}},
        {2, {1, 2, 3, 4}, 1, 0, 0, {}, {255, 0, 0, 255}},
        // Colour over the background: full alpha shows the picture, 200 -> 199.
        {3, {200, 200, 200, 0}, 255, 255, 0, {90, 90, 90}, {199, 199, 199, 255}},
        // No alpha shows the colour, blue from color[2]; 255 x 255 -> 254.
        {3, {200, 100, 50, 0}, 0, 255, 0, {0, 0, 255}, {254, 0, 0, 255}},
        {6, {200, 100, 50, 0}, 0, 255, 0, {0, 0, 255}, {254, 0, 0, 255}},
        // Stretched 128 over lo 64, hi 192 is 126: round(126 x 100 / 256) +
        // round(129 x 40 / 256).
        {3, {100, 100, 100, 0}, 128, 192, 64, {40, 40, 40}, {69, 69, 69, 255}},
        // Colour over the foreground.
        {4, {200, 100, 50, 0}, 255, 255, 0, {0, 0, 255}, {254, 0, 0, 255}},
        {4, {200, 100, 50, 0}, 0, 255, 0, {0, 0, 255}, {199, 100, 50, 255}},
        // Grey matte.
        {5, {1, 2, 3, 4}, 128, 192, 64, {}, {126, 126, 126, 255}},
        // Unknown modes leave the picture alone.
        {0, {1, 2, 3, 4}, 128, 192, 64, {}, {1, 2, 3, 4}},
        {7, {1, 2, 3, 4}, 128, 192, 64, {}, {1, 2, 3, 4}},
    };
    for (const ModeCase& c : cases) {
        Screen s(c.picture, c.maskByte);
        std::array<unsigned char, 3> color = c.color;
        EXPECT_EQ(rkShowImageAlpha(&s.image[0][0], 17, 3, 2, &s.mask[0][0], 6, c.hi, c.lo, c.mode,
                                   color.data()),
                  1);
        for (const auto& row : s.image) {
            for (int x = 0; x < 3; ++x) {
                Pixel got;
                std::memcpy(got.data(), &row[4 * x], 4);
                EXPECT_EQ(got, c.expected) << "mode " << c.mode << " mask " << +c.maskByte;
            }
            EXPECT_EQ(std::count(row + 12, row + 17, 0xEE), 5) << "mode " << c.mode;
        }
    }
}

TEST(ScaleAlpha, StretchesTheRangeAndKeepsPaintedBytesOnRequest) {
    const struct {
        unsigned char hi, lo;
        int keepPainted;
        unsigned char in, out;
    } cases[] = {
        {192, 64, 0, 128, 126},                         // k = 63: round(64 x 63 / 32)
        {192, 64, 0, 10, 0},                            // below lo
        {192, 64, 0, 250, 255},                         // saturates
        {192, 64, 0, 100, 71},                          // round(36 x 63 / 32), left odd
        {192, 64, 1, 100, 70},                          // ... or with bit 0 cleared
        {192, 64, 1, 129, 129},                         // a painted byte is kept
        {255, 0, 0, 77, 77},                            // the full range is left alone
        {255, 0, 1, 78, 78},    {101, 100, 0, 101, 8},  // k capped at 255: round(255 / 32)
        {100, 101, 0, 200, 99},  // hi below lo: k = -8160 reaches the multiply as 32
    };
    for (const auto& c : cases) {
        unsigned char map[2][5] = {{c.in, c.in, c.in, 0xEE, 0xEE}, {c.in, c.in, c.in, 0xEE, 0xEE}};
        EXPECT_EQ(rkScaleAlpha(&map[0][0], 5, 3, 2, c.hi, c.lo, c.keepPainted), 1);
        for (const auto& row : map) {
            EXPECT_EQ(row[0], c.out) << "hi " << +c.hi << " lo " << +c.lo << " in " << +c.in;
            EXPECT_EQ(row[2], c.out);
            EXPECT_EQ(row[3], 0xEE);
        }
    }
}

TEST(ShowKeepBlend, WeighsSourceAgainstDestination) {
    const struct {
        float w;
        unsigned char src, dst, out;
    } cases[] = {
        {0.25f, 200, 100, 125}, {1.0f, 200, 100, 200},
        {0.0f, 200, 100, 100},  {0.5f, 3, 0, 1},  // truncated, not rounded
        {2.0f, 200, 100, 255},                    // beyond the weight's range: saturated
        {-1.0f, 200, 10, 0},
    };
    for (const auto& c : cases) {
        unsigned char dst[8] = {c.dst, c.dst, c.dst, 42, c.dst, c.dst, c.dst, 43};
        unsigned char src[8] = {c.src, c.src, c.src, 9, c.src, c.src, c.src, 9};
        rkShowKeepBlend(dst, 8, 2, 1, src, 8, c.w);
        EXPECT_EQ(dst[0], c.out) << "w " << c.w;
        EXPECT_EQ(dst[6], c.out) << "w " << c.w;
        EXPECT_EQ(dst[3], 42);
        EXPECT_EQ(dst[7], 43);
    }
}

// Desaturation against the plain hue, lightness, saturation round trip.
TEST(Desaturation, FadesOnlyUnpaintedPixelsByAlpha) {
    const struct {
        float strength;
        unsigned char maskByte;
        bool grey;       // every colour byte equal afterwards
        bool roundTrip;  // exactly what the round trip alone gives
    } cases[] = {
        {0.0f, 0, false, true},  {1.0f, 0, true, false},  {1.0f, 255, false, true},
        {1.0f, 77, false, true}, {0.5f, 0, false, false}, {1.0f, 254, false, false},
    };
    const IppiSize size{2, 1};
    for (const auto& c : cases) {
        unsigned char image[8] = {30, 90, 200, 17, 200, 40, 60, 18};
        unsigned char mask[2] = {c.maskByte, c.maskByte};
        unsigned char hls[8], trip[8];
        ippiRGBToHLS_8u_AC4R(image, 8, hls, 8, size);
        std::memcpy(trip, image, sizeof trip);
        ippiHLSToRGB_8u_AC4R(hls, 8, trip, 8, size);
        ASSERT_EQ(rkDesaturation(image, 8, 2, 1, mask, 2, c.strength), 1);
        for (int x = 0; x < 2; ++x) {
            const unsigned char* p = image + 4 * x;
            const std::string what = "s " + std::to_string(c.strength) + " m " +
                                     std::to_string(c.maskByte) + " x " + std::to_string(x);
            EXPECT_EQ(p[0] == p[1] && p[1] == p[2], c.grey) << what;
            EXPECT_EQ(std::memcmp(p, trip + 4 * x, 3) == 0, c.roundTrip) << what;
            EXPECT_EQ(p[3], 17 + x) << what;
        }
    }
}

// A refused call returns -2 (or, without a result, returns), logs a line
// naming the entry and leaves every buffer as it was.
TEST(DisplayRefusals, LogAndTouchNothing) {
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    unsigned char im[16], m[4], src[16], color[3] = {1, 2, 3};
    std::memset(im, 100, sizeof im), std::memset(m, 100, sizeof m), std::memset(src, 7, sizeof src);
    const auto refused = [&](const char* entry, int result) {
        EXPECT_EQ(result, -2) << entry;
        EXPECT_NE(std::string(getErrMsg()).find(entry), std::string::npos) << entry;
        EXPECT_EQ(std::count(im, im + 16, 100) + std::count(m, m + 4, 100), 20) << entry;
        clearErrMsg();
    };
    clearErrMsg();
    refused("rkShowImageAlpha", rkShowImageAlpha(nullptr, 8, 2, 2, m, 2, 255, 0, 1, color));
    refused("rkShowImageAlpha", rkShowImageAlpha(im, 8, 2, 2, nullptr, 2, 255, 0, 2, color));
    refused("rkShowImageAlpha", rkShowImageAlpha(im, 7, 2, 2, m, 2, 255, 0, 1, color));
    refused("rkShowImageAlpha", rkShowImageAlpha(im, 8, -1, 2, m, 2, 255, 0, 1, color));
    refused("rkShowImageAlpha", rkShowImageAlpha(im, 8, 2, 2, m, 2, 255, 0, 4, nullptr));
    refused("rkShowImageAlpha", rkShowImageAlpha(im, 8, 2, 2, m, 2, 90, 90, 5, color));
    refused("rkShowImageAlpha", rkShowImageAlpha(im, 8, 2, 2, m, 2, 90, 90, 6, color));
    refused("rkScaleAlpha", rkScaleAlpha(m, 2, 2, 2, 90, 90, 1));
    refused("rkScaleAlpha", rkScaleAlpha(m, 1, 2, 2, 192, 64, 1));
    refused("rkDesaturation", rkDesaturation(im, 8, 2, -2, m, 2, 1.0f));
    refused("rkDesaturation", rkDesaturation(im, 8, 2, 2, m, 2, kNaN));
    refused("rkDesaturation", rkDesaturation(im, 8, 2, 2, m, 1, 1.0f));
    refused("rkShowKeepBlend", (rkShowKeepBlend(im, 8, 2, 2, src, 7, 0.5f), -2));
    refused("rkShowKeepBlend", (rkShowKeepBlend(im, 8, 2, 2, nullptr, 8, 0.5f), -2));
    refused("rkShowKeepBlend", (rkShowKeepBlend(im, 8, 2, 2, src, 8, kNaN), -2));
}

}  // namespace
