// Look-up and Colour families: tables and piecewise-linear maps against
// per-pixel references; HLS against OpenCV's float conversion (hue in
// degrees there, in turns here) and round trips; the colour twist.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "core/ippi_color.h"
#include "core/ippi_lut.h"
#include "prim_block.h"

namespace {
using primtest::Block;
using primtest::regionSizes;

TEST(PrimLut, PaletteIndexesByTheLowBits) {
    std::mt19937 rng(53);
    std::vector<Ipp8u> t8(256);
    std::vector<Ipp16u> t16(1 << 12);
    for (auto& v : t8) v = static_cast<Ipp8u>(rng());
    for (auto& v : t16) v = static_cast<Ipp16u>(rng());
    for (int bits : {1, 5, 8}) {
        SCOPED_TRACE(bits);
        primtest::checkInPlace<Ipp8u, Ipp8u>(
            1, 0, 255, [&](auto... a) { return ippiLUTPalette_8u_C1R(a..., t8.data(), bits); },
            [&](Ipp8u s, Ipp8u, int) { return t8[s % (1 << bits)]; });
        primtest::checkInPlace<Ipp16u, Ipp16u>(
            1, 0, 65535,
            [&](auto... a) { return ippiLUTPalette_16u_C1R(a..., t16.data(), bits + 4); },
            [&](Ipp16u s, Ipp16u, int) { return t16[s % (1 << (bits + 4))]; });
    }
    Ipp8u p = 0;
    EXPECT_EQ(ippiLUTPalette_8u_C1R(&p, 1, &p, 1, {1, 1}, t8.data(), 9), ippStsBadArgErr);
    EXPECT_EQ(ippiLUTPalette_8u_C1R(&p, 1, &p, 1, {1, 1}, nullptr, 8), ippStsNullPtrErr);
}

TEST(PrimLut, LinearMapInterpolatesInsideTheLevelsOnly) {
    const float levels[4] = {0.f, 0.25f, 0.5f, 1.f};
    const float values[4] = {1.f, 0.f, 10.f, 20.f};
    auto map = [&](auto s, int ss, auto... a) {
        *const_cast<float*>(s) = 0.25f;  // a level itself maps to its value
        return ippiLUT_Linear_32f_C1R(s, ss, a..., values, levels, 4);
    };
    primtest::checkInPlace<Ipp32f, Ipp32f>(
        1, -0.2, 1.2, map,
        [&](float v, float, int) {
            for (int k = 0; k < 3; ++k)
                if (v >= levels[k] && v < levels[k + 1])
                    return values[k] + (v - levels[k]) * (values[k + 1] - values[k]) /
                                           (levels[k + 1] - levels[k]);
            return v;
        },
        1e-6);
    float p = 0.f;
    EXPECT_EQ(ippiLUT_Linear_32f_C1R(&p, 4, &p, 4, {1, 1}, values, levels, 1), ippStsBadArgErr);
}

// OpenCV's float HLS (hue in degrees) of one RGB triple.
cv::Vec3f referenceHls(float r, float g, float b) {
    cv::Mat3f px(1, 1, cv::Vec3f(r, g, b)), out;
    cv::cvtColor(px, out, cv::COLOR_RGB2HLS);
    return out(0, 0);
}

float hueDistance(float a, float b) {  // in turns, around the circle
    const float d = std::fabs(a - b);
    return std::min(d, 1.f - d);
}

TEST(PrimColor, FloatHlsMatchesReferenceAndRoundTrips) {
    std::mt19937 rng(61);
    for (IppiSize r : regionSizes()) {
        Block<Ipp32f> rgb(r, 3), hls(r, 3), back(r, 3);
        rgb.fillRandom(rng, 0, 1);
        rgb.at(0, 0, 0) = rgb.at(0, 0, 1) = rgb.at(0, 0, 2) = 0.4f;  // grey
        hls.fillValue(-1.f);
        const auto before = hls;
        ASSERT_EQ(ippiRGBToHLS_32f_C3R(rgb.ptr(), rgb.step(), hls.ptr(), hls.step(), r), 0);
        ASSERT_EQ(ippiHLSToRGB_32f_C3R(hls.ptr(), hls.step(), back.ptr(), back.step(), r), 0);
        EXPECT_TRUE(hls.outsideUnchanged(before));
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x) {
                const cv::Vec3f want =
                    referenceHls(rgb.at(x, y, 0), rgb.at(x, y, 1), rgb.at(x, y, 2));
                ASSERT_LT(hueDistance(hls.at(x, y, 0), want[0] / 360.f), 1e-5);
                ASSERT_NEAR(hls.at(x, y, 1), want[1], 1e-6);
                ASSERT_NEAR(hls.at(x, y, 2), want[2], 1e-5);
                for (int c = 0; c < 3; ++c) ASSERT_NEAR(back.at(x, y, c), rgb.at(x, y, c), 1e-5);
            }
        EXPECT_EQ(hls.at(0, 0, 0), 0.f);
        EXPECT_EQ(hls.at(0, 0, 2), 0.f);
    }
    // Primaries: red at 0, green at a third, blue at two thirds of a turn.
    const float prim[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    float out[9];
    ASSERT_EQ(ippiRGBToHLS_32f_C3R(prim, 36, out, 36, {3, 1}), 0);
    EXPECT_FLOAT_EQ(out[0], 0.f);
    EXPECT_FLOAT_EQ(out[3], 1.f / 3.f);
    EXPECT_FLOAT_EQ(out[6], 2.f / 3.f);
    EXPECT_FLOAT_EQ(out[1], 0.5f);
    EXPECT_FLOAT_EQ(out[2], 1.f);
}

TEST(PrimColor, ByteHlsScalesTheFloatModelAndKeepsAlpha) {
    std::mt19937 rng(67);
    for (IppiSize r : regionSizes()) {
        Block<Ipp8u> rgba(r, 4), bgra(r, 4), hls(r, 4), hls2(r, 4), back(r, 4);
        rgba.fillRandom(rng, 0, 255);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x) {
                for (int c = 0; c < 3; ++c) bgra.at(x, y, c) = rgba.at(x, y, 2 - c);
                bgra.at(x, y, 3) = rgba.at(x, y, 3);
            }
        hls.fillValue(123);
        hls2.fillValue(123);
        back.fillValue(7);
        const auto before = hls;
        ASSERT_EQ(ippiRGBToHLS_8u_AC4R(rgba.ptr(), rgba.step(), hls.ptr(), hls.step(), r), 0);
        ASSERT_EQ(ippiBGRToHLS_8u_AC4R(bgra.ptr(), bgra.step(), hls2.ptr(), hls2.step(), r), 0);
        ASSERT_EQ(ippiHLSToRGB_8u_AC4R(hls.ptr(), hls.step(), back.ptr(), back.step(), r), 0);
        EXPECT_TRUE(hls.outsideUnchanged(before));
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x) {
                const cv::Vec3f want = referenceHls(
                    rgba.at(x, y, 0) / 255.f, rgba.at(x, y, 1) / 255.f, rgba.at(x, y, 2) / 255.f);
                const float h = hls.at(x, y, 0) / 255.f;
                ASSERT_LT(hueDistance(h, want[0] / 360.f), 0.6f / 255.f);
                ASSERT_NEAR(hls.at(x, y, 1), want[1] * 255.f, 0.51);
                ASSERT_NEAR(hls.at(x, y, 2), want[2] * 255.f, 0.51);
                ASSERT_EQ(hls.at(x, y, 3), 123);  // fourth channel untouched
                ASSERT_EQ(back.at(x, y, 3), 7);
                for (int c = 0; c < 3; ++c) ASSERT_EQ(hls2.at(x, y, c), hls.at(x, y, c));
                // The byte forms are the float forms rounded, bit for bit.
                float in[3], there[3], from[3], again[3];
                for (int c = 0; c < 3; ++c)
                    in[c] = rgba.at(x, y, c) / 255.f, from[c] = hls.at(x, y, c) / 255.f;
                ASSERT_EQ(ippiRGBToHLS_32f_C3R(in, 12, there, 12, {1, 1}), 0);
                ASSERT_EQ(ippiHLSToRGB_32f_C3R(from, 12, again, 12, {1, 1}), 0);
                for (int c = 0; c < 3; ++c) {
                    ASSERT_EQ(hls.at(x, y, c), cv::saturate_cast<Ipp8u>(there[c] * 255.f));
                    ASSERT_EQ(back.at(x, y, c), cv::saturate_cast<Ipp8u>(again[c] * 255.f));
                }
                // 8-bit HLS loses a little; the way back lands within a few levels.
                for (int c = 0; c < 3; ++c) ASSERT_NEAR(back.at(x, y, c), rgba.at(x, y, c), 4);
            }
    }
}

TEST(PrimColor, TwistAppliesTheAffineMatrixToThreePlanes) {
    const float twist[3][4] = {
        {0.5f, 0.25f, 0.f, 1.f}, {0.f, 1.f, 0.f, 0.f}, {-1.f, 2.f, 0.5f, -0.5f}};
    std::mt19937 rng(71);
    for (IppiSize r : regionSizes()) {
        std::vector<Block<Ipp32f>> planes(3, Block<Ipp32f>(r, 1));
        for (auto& p : planes) p.fillRandom(rng, -1, 1);
        const std::vector<Block<Ipp32f>> old = planes;
        const auto before = planes[2];
        Ipp32f* const ptrs[3] = {planes[0].ptr(), planes[1].ptr(), planes[2].ptr()};
        ASSERT_EQ(ippiColorTwist_32f_IP3R(ptrs, planes[0].step(), r, twist), 0);
        EXPECT_TRUE(planes[2].outsideUnchanged(before));
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x)
                for (int i = 0; i < 3; ++i) {
                    float want = twist[i][3];
                    for (int j = 0; j < 3; ++j) want += twist[i][j] * old[j].at(x, y);
                    ASSERT_NEAR(planes[i].at(x, y), want, 1e-6);
                }
    }
}

}  // namespace
