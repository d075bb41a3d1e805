// Set and Convert families: fills, exact widening, saturating narrowing and
// the two float-to-integer rounding modes (halves to even when rounding).
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/ippi_convert.h"
#include "core/ippi_set.h"
#include "prim_block.h"

namespace {
using primtest::Block;
using primtest::checkInPlace;
using primtest::regionSizes;

// Fills of whole pixels, and of one channel of four (the others keep their value).
TEST(PrimSet, FillsRegionOrOneChannel) {
    const Ipp32f f3[3] = {1.5f, -2.f, 1e-7f};
    auto fills = [](auto v) { return [v](auto, auto, int) { return double(v); }; };
    checkInPlace<Ipp8u, Ipp8u>(
        1, 0, 255, [](auto, int, auto... a) { return ippiSet_8u_C1R(200, a...); },
        fills(Ipp8u{200}));
    checkInPlace<Ipp16s, Ipp16s>(
        1, -9, 9, [](auto, int, auto... a) { return ippiSet_16s_C1R(-1234, a...); },
        fills(Ipp16s{-1234}));
    checkInPlace<Ipp16u, Ipp16u>(
        1, 0, 9, [](auto, int, auto... a) { return ippiSet_16u_C1R(60000, a...); },
        fills(Ipp16u{60000}));
    checkInPlace<Ipp32f, Ipp32f>(
        1, -9, 9, [](auto, int, auto... a) { return ippiSet_32f_C1R(-0.75f, a...); },
        fills(-0.75f));
    checkInPlace<Ipp32f, Ipp32f>(
        3, -9, 9, [&](auto, int, auto... a) { return ippiSet_32f_C3R(f3, a...); },
        [&](float, float, int c) { return double(f3[c]); });
    for (int ch = 0; ch < 4; ++ch)
        checkInPlace<Ipp8u, Ipp8u>(
            4, 0, 255,
            [ch](auto, int, Ipp8u* d, int ds, IppiSize r) {
                return ippiSet_8u_C4CR(200, d + ch, ds, r);
            },
            [ch](Ipp8u, Ipp8u old, int c) { return c == ch ? 200.0 : double(old); });
}

TEST(PrimSet, VectorsFillExactlyTheirLength) {
    std::vector<Ipp32f> f(10, 9.f);
    std::vector<Ipp16s> s(10, 9);
    std::vector<Ipp8u> b(10, 9);
    ASSERT_EQ(ippsSet_32f(2.5f, f.data() + 1, 8), 0);
    ASSERT_EQ(ippsSet_16s(-3, s.data() + 1, 8), 0);
    ASSERT_EQ(ippsSet_8u(4, b.data() + 1, 8), 0);
    for (int i = 0; i < 10; ++i) {
        const bool in = i >= 1 && i <= 8;
        EXPECT_EQ(f[i], in ? 2.5f : 9.f);
        EXPECT_EQ(s[i], in ? -3 : 9);
        EXPECT_EQ(b[i], in ? 4 : 9);
    }
    ASSERT_EQ(ippsZero_32f(f.data(), 3), 0);
    ASSERT_EQ(ippsZero_16s(s.data(), 3), 0);
    EXPECT_EQ(f[2], 0.f);
    EXPECT_EQ(f[3], 2.5f);
    EXPECT_EQ(s[2], 0);
    EXPECT_EQ(ippsSet_8u(1, nullptr, 3), ippStsNullPtrErr);
    EXPECT_EQ(ippsZero_32f(f.data(), 0), ippStsSizeErr);
}

// The converted value of v, saturated to D, after rounding to nearest (ties to
// even, the default floating-point mode) or toward zero.
template <typename D>
double converted(double v, IppRoundMode m = ippRndZero) {
    v = m == ippRndNear ? std::nearbyint(v) : std::trunc(v);
    return std::clamp<double>(v, std::numeric_limits<D>::lowest(), std::numeric_limits<D>::max());
}

// Converts random sources (the destination's old value plays no part).
template <typename S, typename D, typename Prim>
void checkConvert(int ch, double lo, double hi, Prim prim, IppRoundMode m = ippRndZero) {
    SCOPED_TRACE(testing::Message() << "channels " << ch << " mode " << m);
    checkInPlace<S, D>(ch, lo, hi, prim, [m](S s, D, int) { return converted<D>(s, m); });
}

TEST(PrimConvert, WideningIsExactAndNarrowingSaturates) {
    checkConvert<Ipp8u, Ipp32f>(1, 0, 255, ippiConvert_8u32f_C1R);
    checkConvert<Ipp8u, Ipp32f>(3, 0, 255, ippiConvert_8u32f_C3R);
    checkConvert<Ipp16u, Ipp32f>(1, 0, 65535, ippiConvert_16u32f_C1R);
    checkConvert<Ipp16u, Ipp32f>(3, 0, 65535, ippiConvert_16u32f_C3R);
    checkConvert<Ipp16s, Ipp32f>(1, -32768, 32767, ippiConvert_16s32f_C1R);
    checkConvert<Ipp8u, Ipp16u>(1, 0, 255, ippiConvert_8u16u_C1R);
    checkConvert<Ipp16u, Ipp8u>(1, 0, 600, ippiConvert_16u8u_C1R);
}

TEST(PrimConvert, FloatToIntegerRoundsByModeAndSaturates) {
    for (IppRoundMode m : {ippRndNear, ippRndZero}) {
        auto bind = [m](auto prim) { return [m, prim](auto... a) { return prim(a..., m); }; };
        checkConvert<Ipp32f, Ipp8u>(1, -40, 300, bind(ippiConvert_32f8u_C1R), m);
        checkConvert<Ipp32f, Ipp8u>(3, -40, 300, bind(ippiConvert_32f8u_C3R), m);
        checkConvert<Ipp32f, Ipp16u>(1, -9e3, 7e4, bind(ippiConvert_32f16u_C1R), m);
        checkConvert<Ipp32f, Ipp16u>(3, -9e3, 7e4, bind(ippiConvert_32f16u_C3R), m);
        checkConvert<Ipp32f, Ipp16s>(1, -4e4, 4e4, bind(ippiConvert_32f16s_C1R), m);
    }
}

TEST(PrimConvert, ExactHalvesGoToEvenAndTruncationGoesTowardZero) {
    // Every wide SIMD lane and the scalar tail see the same ties.
    const std::vector<float> in = {0.5f,  1.5f,   2.5f,     3.5f,      -0.5f, -1.5f,
                                   -2.5f, 254.5f, 255.5f,   2.49f,     -2.7f, 2.7f,
                                   1e9f,  -1e9f,  32766.5f, -32768.5f, 0.5f};
    const int n = static_cast<int>(in.size());
    const int step32 = n * 4;
    std::vector<Ipp16s> near(n), zero(n);
    ASSERT_EQ(ippiConvert_32f16s_C1R(in.data(), step32, near.data(), n * 2, {n, 1}, ippRndNear), 0);
    ASSERT_EQ(ippiConvert_32f16s_C1R(in.data(), step32, zero.data(), n * 2, {n, 1}, ippRndZero), 0);
    const std::vector<Ipp16s> wantNear = {0, 2,  2, 4,     0,      -2,    -2,     254, 256,
                                          2, -3, 3, 32767, -32768, 32766, -32768, 0};
    const std::vector<Ipp16s> wantZero = {0, 1,  2, 3,     0,      -1,    -2,     254, 255,
                                          2, -2, 2, 32767, -32768, 32766, -32768, 0};
    EXPECT_EQ(near, wantNear);
    EXPECT_EQ(zero, wantZero);

    std::vector<Ipp8u> u8(n);
    ASSERT_EQ(ippiConvert_32f8u_C1R(in.data(), step32, u8.data(), n, {n, 1}, ippRndNear), 0);
    EXPECT_EQ(u8[7], 254);  // 254.5 -> even
    EXPECT_EQ(u8[8], 255);  // 255.5 -> 256 saturates
    EXPECT_EQ(u8[6], 0);    // negatives saturate at 0
    EXPECT_EQ(ippiConvert_32f8u_C1R(in.data(), step32, u8.data(), n, {n, 1}, IppRoundMode(7)),
              ippStsBadArgErr);
}

TEST(PrimScale, MapsBetweenByteRangeAndFloatRange) {
    const float vMin = -1.f, vMax = 3.f;
    auto up = [&](auto prim) { return [&, prim](auto... a) { return prim(a..., vMin, vMax); }; };
    auto upRef = [&](Ipp8u s, float, int) { return double(vMin + s * (vMax - vMin) / 255.0); };
    primtest::checkInPlace<Ipp8u, Ipp32f>(1, 0, 255, up(ippiScale_8u32f_C1R), upRef, 1e-6);
    primtest::checkInPlace<Ipp8u, Ipp32f>(3, 0, 255, up(ippiScale_8u32f_C3R), upRef, 1e-6);
    primtest::checkInPlace<Ipp8u, Ipp32f>(4, 0, 255, up(ippiScale_8u32f_C4R), upRef, 1e-6);
    // And back: the round trip restores every byte.
    std::mt19937 rng(2);
    for (int ch : {1, 3}) {
        auto down = ch == 1 ? ippiScale_32f8u_C1R : ippiScale_32f8u_C3R;
        auto upward = ch == 1 ? ippiScale_8u32f_C1R : ippiScale_8u32f_C3R;
        for (IppiSize r : regionSizes()) {
            Block<Ipp8u> src(r, ch), back(r, ch);
            Block<Ipp32f> mid(r, ch);
            src.fillRandom(rng, 0, 255);
            const Block<Ipp8u> backBefore = back;
            ASSERT_EQ(upward(src.ptr(), src.step(), mid.ptr(), mid.step(), r, vMin, vMax), 0);
            ASSERT_EQ(down(mid.ptr(), mid.step(), back.ptr(), back.step(), r, vMin, vMax), 0);
            EXPECT_TRUE(back.outsideUnchanged(backBefore));
            for (int y = 0; y < r.height; ++y)
                for (int x = 0; x < r.width; ++x)
                    for (int c = 0; c < ch; ++c) ASSERT_EQ(back.at(x, y, c), src.at(x, y, c));
        }
    }
    // Out-of-range floats clamp to the ends of the byte range.
    const float f[4] = {-5.f, 7.f, 1.f, 0.5f};
    Ipp8u b[4];
    ASSERT_EQ(ippiScale_32f8u_C1R(f, 16, b, 4, {4, 1}, 0.f, 1.f), 0);
    EXPECT_EQ(std::vector<Ipp8u>(b, b + 4),
              (std::vector<Ipp8u>{0, 255, 255, 128}));  // 127.5 to even
    EXPECT_EQ(ippiScale_32f8u_C1R(f, 16, b, 4, {4, 1}, 1.f, 1.f), ippStsBadArgErr);
}

}  // namespace
