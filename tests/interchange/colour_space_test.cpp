// Colour spaces: YUV against the formulas evaluated in double (truncation may
// land one step apart; grey must be exact), centring and edge replication in
// the planes, the in-place and 16-bit forms, noise levels by hand, and round
// trips of the float-plane conversions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "interchange/colour_matrix.h"
#include "interchange/noise_sigma.h"
#include "interchange/yuv_convert.h"

namespace {

template <typename T>
struct Planes {
    std::unique_ptr<GIMG<T>> own[3];
    GIMG<T>* p[3];
    int w;
    Planes(int width, int h, int widen2 = 0) : w(width) {  // plane 2 wider: another row step
        for (int c = 0; c < 3; ++c) {
            own[c] = std::make_unique<GIMG<T>>(w + (c == 2 ? widen2 : 0), h);
            own[c]->roiSize.width = w;
            p[c] = own[c].get();
        }
    }
    T& at(int c, int i) { return *imgPtr(*p[c], i % w, i / w); }
};

// The formulas in double: scale 128 for 8-bit samples, 1 for 16-bit.
double yuvOf(int ch, double r, double g, double b, double scale) {
    const double l = 0.299 * r + 0.587 * g + 0.114 * b;
    return std::trunc((ch == 0 ? l : ch == 1 ? (b - l) * 0.492 : (r - l) * 0.877) * scale);
}
double rgbOf(int ch, double y, double u, double v, double hi) {
    const double x[3] = {y + 1.14 * v, y - 0.394 * u - 0.581 * v, y + 2.032 * u};
    return std::trunc(std::clamp(x[ch], 0.0, hi));
}

TEST(YuvConvert, PixelsFollowTheFormulasBothWidths) {
    // 37 and 61 are greys that a naive float sum (even in double) lands a step low.
    const int cases[][3] = {{0, 0, 0},   {37, 37, 37}, {61, 61, 61},  {255, 255, 255}, {255, 0, 0},
                            {0, 255, 0}, {0, 0, 255},  {255, 255, 0}, {12, 200, 99}};
    for (const auto& c : cases)
        for (const bool bytes : {true, false}) {  // 16-bit samples are the 8-bit ones * 128
            SCOPED_TRACE(testing::Message() << c[0] << "," << c[1] << "," << c[2] << " " << bytes);
            const int f = bytes ? 1 : 128;
            const bool grey = c[0] == c[1] && c[1] == c[2];
            Planes<short> yuv(1, 1);
            unsigned char px8[3];
            short px16[3];
            for (int ch = 0; ch < 3; ++ch) px16[ch] = static_cast<short>(px8[ch] = c[ch]) * f;
            ASSERT_EQ(bytes ? rkRGBToYUV(px8, 3, 1, 1, yuv.p) : rkRGBToYUV(px16, 6, 1, 1, yuv.p),
                      1);
            for (int ch = 0; ch < 3; ++ch) {
                EXPECT_NEAR(yuv.at(ch, 0), yuvOf(ch, c[0] * f, c[1] * f, c[2] * f, 128 / f), 1);
                if (grey) {
                    EXPECT_EQ(yuv.at(ch, 0), ch == 0 ? c[0] * 128 : 0);
                }
            }
            // Back: the inverse matrix has three or four digits (2.032 * 0.492 = 0.99974),
            // which loses up to 3e-4 of full scale (10 in 16 bits) beside truncation.
            bytes ? rkYUVToRGB(yuv.p, px8, 3, 1, 1) : rkYUVToRGB(yuv.p, px16, 6, 1, 1);
            for (int ch = 0; ch < 3; ++ch)
                EXPECT_NEAR(bytes ? px8[ch] : px16[ch], c[ch] * f, grey ? 0 : (bytes ? 2 : 16));
        }
}

TEST(YuvConvert, BackToRgbClampsAndTruncatesAlsoInPlace) {
    const short cases[][3] = {{255 * 128, 0, 0},   {-1, 0, 0},           {-30000, 0, 0},
                              {32767, 0, 0},       {16000, 9000, -9000}, {100, -3000, 20000},
                              {20000, 1000, 2000}, {32767, 32767, 32767}};
    for (const auto& c : cases) {
        Planes<short> yuv(1, 1);
        for (int ch = 0; ch < 3; ++ch) yuv.at(ch, 0) = c[ch];
        unsigned char px8[3];
        short px16[3];
        rkYUVToRGB(yuv.p, px8, 3, 1, 1);
        rkYUVToRGB(yuv.p, px16, 6, 1, 1);
        rkP3YUV2RGB(yuv.p);
        for (int ch = 0; ch < 3; ++ch) {
            EXPECT_NEAR(px8[ch], rgbOf(ch, c[0] / 128., c[1] / 128., c[2] / 128., 255), 1) << ch;
            EXPECT_NEAR(px16[ch], rgbOf(ch, c[0], c[1], c[2], 32767), 1) << ch;
            EXPECT_EQ(yuv.at(ch, 0), px16[ch]) << "in place, channel " << ch;
        }
    }
}

TEST(YuvConvert, PictureIsCentredAndItsMarginReplicated) {
    // Picture w x h into planes pw x ph; larger pictures are clamped to the planes.
    const int cases[][4] = {{3, 2, 7, 6}, {7, 6, 7, 6}, {9, 8, 7, 6}, {4, 1, 5, 4}, {1, 3, 4, 3}};
    for (const auto& [w, h, pw, ph] : cases) {
        const int step = 3 * w + 5, cw = std::min(w, pw), ch = std::min(h, ph);
        const int ox = (pw - cw) / 2, oy = (ph - ch) / 2;
        SCOPED_TRACE(testing::Message() << w << "x" << h << " in " << pw << "x" << ph);
        std::vector<unsigned char> pic(step * h), back(step * h, 7);
        auto grey = [](int x, int y) { return 10 + 30 * y + 3 * x; };  // distinct per pixel
        for (int i = 0; i < step * h; ++i) pic[i] = grey(i % step / 3, i / step);
        Planes<short> yuv(pw, ph);
        rkRGBToYUV(pic.data(), step, w, h, yuv.p);
        for (int i = 0; i < pw * ph; ++i) {
            const int sx = std::clamp(i % pw - ox, 0, cw - 1),
                      sy = std::clamp(i / pw - oy, 0, ch - 1);
            ASSERT_EQ(yuv.at(0, i), grey(sx, sy) * 128) << i;
            ASSERT_EQ(yuv.at(1, i) | yuv.at(2, i), 0) << i;
        }
        rkYUVToRGB(yuv.p, back.data(), step, w, h);
        for (int i = 0; i < step * h; ++i)
            ASSERT_EQ(back[i], i % step < 3 * cw && i / step < ch ? pic[i] : 7) << i;
    }
}

TEST(YuvConvert, InPlaceFormMatchesTheInterleavedOne) {
    std::mt19937 rng(5);
    const int w = 37, h = 3;
    Planes<short> planes(w, h), ref(w, h);
    std::vector<short> rgb(3 * w * h);
    for (int i = 0; i < 3 * w * h; ++i) planes.at(i % 3, i / 3) = rgb[i] = rng() % 32768;
    rkP3RGB2YUV(planes.p);
    rkRGBToYUV(rgb.data(), 6 * w, w, h, ref.p);
    for (int i = 0; i < 3 * w * h; ++i) ASSERT_EQ(planes.at(i % 3, i / 3), ref.at(i % 3, i / 3));
}

TEST(NoiseSigma, ThroughTheSquaredMatrices) {
    struct Case {
        float in[3];
        double yuv[3], rgb[3];  // rkSigmaRGBToYUV(in), rkSigmaRGBToYUV_inv(in), by hand
    } cases[] = {
        {{1, 1, 1}, {0.6686, 0.5433, 0.8084}, {0.86279, 1.59881, 2.01316}},
        {{2, 0, 0}, {0.598, 0.294, 1.23}, {0, 3.79294, 0}},  // negative squares clamp to 0
        {{0, 0, 3}, {0.342, 1.308, 0.3}, {5.39333, 0, 0.0995}},
    };
    for (Case& c : cases) {
        float out[3];
        rkSigmaRGBToYUV(c.in, out);
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(out[i], c.yuv[i], 5e-5) << i;
        rkSigmaRGBToYUV_inv(c.in, out);
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(out[i], c.rgb[i], 5e-5) << i;
    }
}

// Round trips on random RGB in 0..1. The YCbCr pairs are affine, so their
// worst miss lies on a corner of the unit cube: 5e-5 with bias, 2.3e-4 without
// (rounded to four places), hence 5e-4. HLS is exact up to float rounding.
TEST(ColourMatrix, RoundTripsAndGrey) {
    struct Case {
        int bias;  // -1: HLS; 0/1: YCbCr with noBias / with bias
        double tol;
        int widen;  // one plane with another row step
    } cases[] = {{1, 5e-4, 0}, {0, 5e-4, 0}, {1, 5e-4, 64}, {-1, 1e-5, 0}, {-1, 1e-5, 64}};
    std::mt19937 rng(11);
    std::uniform_real_distribution<float> unit(0.f, 1.f);
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "bias " << c.bias << " widen " << c.widen);
        const int n = 21 * 4;
        Planes<float> px(21, 4, c.widen), orig(21, 4);
        ASSERT_EQ(px.p[2]->step == px.p[0]->step, c.widen == 0);
        for (int i = 0; i < 3 * n; ++i) px.at(i % 3, i / 3) = orig.at(i % 3, i / 3) = unit(rng);
        for (int ch = 0; ch < 3; ++ch) px.at(ch, 0) = 0.3f;  // grey
        c.bias < 0 ? RGB2HLS(px.p) : RGB2YCbCr(px.p, c.bias == 0);
        // Hue, lightness, saturation or Y, Cb, Cr of grey; the unbiased chroma
        // rows sum to 1e-4, not 0, which leaves 3e-5.
        const float grey[2][3] = {{0.f, 0.3f, 0.f},
                                  {0.3f, c.bias ? 0.61176f : 0, c.bias ? 0.53725f : 0}};
        for (int ch = 0; ch < 3; ++ch) EXPECT_NEAR(px.at(ch, 0), grey[c.bias >= 0][ch], 1e-4);
        c.bias < 0 ? HLS2RGB(px.p) : YCbCr2RGB(px.p, c.bias == 0);
        for (int i = 3; i < 3 * n; ++i)
            ASSERT_NEAR(px.at(i % 3, i / 3), orig.at(i % 3, i / 3), c.tol) << i;
    }
}

TEST(ColourMatrix, GrayIsTheWeightedSum) {
    Planes<float> rgb(13, 2), gray(13, 2);
    for (int i = 0; i < 3 * 26; ++i) rgb.at(i % 3, i / 3) = (i * 37 % 101) / 100.f;
    RGB2Gray(rgb.p, gray.p[0]);
    RGB2Gray(*rgb.p[0], *rgb.p[0], *rgb.p[0], *gray.p[1]);  // grey stays itself
    for (int i = 0; i < 26; ++i) {
        const double sum = 0.299 * rgb.at(0, i) + 0.587 * rgb.at(1, i) + 0.114 * rgb.at(2, i);
        EXPECT_NEAR(gray.at(0, i), sum, 1e-6);
        EXPECT_NEAR(gray.at(1, i), rgb.at(0, i), 1e-6);
    }
}

}  // namespace
