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
using primtest::regionSizes;

template <typename T, typename Fn>
void checkSet(int ch, int firstCh, int nCh, const T* values, Fn call) {
    for (IppiSize r : regionSizes()) {
        Block<T> dst(r, ch);
        dst.fillValue(T(5));
        const auto before = dst.snapshot();
        ASSERT_EQ(call(dst.ptr() + firstCh, dst.step(), r), 0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x)
                for (int c = 0; c < ch; ++c) {
                    const int k = c - firstCh;
                    ASSERT_EQ(dst.at(x, y, c), (k >= 0 && k < nCh) ? values[k] : T(5));
                }
        EXPECT_TRUE(dst.outsideUnchanged(before));
    }
}

TEST(PrimSet, FillsRegionOrOneChannel) {
    const Ipp8u u8 = 200;
    const Ipp16s s16 = -1234;
    const Ipp16u u16 = 60000;
    const Ipp32f f = -0.75f;
    const Ipp32f f3[3] = {1.5f, -2.f, 1e-7f};
    checkSet<Ipp8u>(1, 0, 1, &u8,
                    [&](Ipp8u* d, int s, IppiSize r) { return ippiSet_8u_C1R(u8, d, s, r); });
    checkSet<Ipp16s>(1, 0, 1, &s16,
                     [&](Ipp16s* d, int s, IppiSize r) { return ippiSet_16s_C1R(s16, d, s, r); });
    checkSet<Ipp16u>(1, 0, 1, &u16,
                     [&](Ipp16u* d, int s, IppiSize r) { return ippiSet_16u_C1R(u16, d, s, r); });
    checkSet<Ipp32f>(1, 0, 1, &f,
                     [&](Ipp32f* d, int s, IppiSize r) { return ippiSet_32f_C1R(f, d, s, r); });
    checkSet<Ipp32f>(3, 0, 3, f3,
                     [&](Ipp32f* d, int s, IppiSize r) { return ippiSet_32f_C3R(f3, d, s, r); });
    for (int ch = 0; ch < 4; ++ch)
        checkSet<Ipp8u>(4, ch, 1, &u8,
                        [&](Ipp8u* d, int s, IppiSize r) { return ippiSet_8u_C4CR(u8, d, s, r); });
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

// Converts random sources and compares with `ref` per element.
template <typename S, typename D, typename Fn, typename Ref>
void checkConvert(int ch, double lo, double hi, Fn prim, Ref ref) {
    std::mt19937 rng(5);
    for (IppiSize r : regionSizes()) {
        Block<S> src(r, ch);
        Block<D> dst(r, ch);
        src.fillRandom(rng, lo, hi);
        dst.fillValue(D(1));
        const auto before = dst.snapshot();
        ASSERT_EQ(prim(src.ptr(), src.step(), dst.ptr(), dst.step(), r), 0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x)
                for (int c = 0; c < ch; ++c)
                    ASSERT_EQ(dst.at(x, y, c), ref(src.at(x, y, c))) << double(src.at(x, y, c));
        EXPECT_TRUE(dst.outsideUnchanged(before));
    }
}

template <typename D>
D saturate(double v) {
    const double lo = std::numeric_limits<D>::min(), hi = std::numeric_limits<D>::max();
    return static_cast<D>(v < lo ? lo : (v > hi ? hi : v));
}
template <typename D>
D nearestEven(float v) {
    return saturate<D>(std::nearbyint(static_cast<double>(v)));  // default mode: ties to even
}
template <typename D>
D towardZero(float v) {
    return saturate<D>(std::trunc(static_cast<double>(v)));
}

TEST(PrimConvert, WideningIsExactAndNarrowingSaturates) {
    auto widen = [](auto v) { return static_cast<Ipp32f>(v); };
    checkConvert<Ipp8u, Ipp32f>(1, 0, 255, ippiConvert_8u32f_C1R, widen);
    checkConvert<Ipp8u, Ipp32f>(3, 0, 255, ippiConvert_8u32f_C3R, widen);
    checkConvert<Ipp16u, Ipp32f>(1, 0, 65535, ippiConvert_16u32f_C1R, widen);
    checkConvert<Ipp16u, Ipp32f>(3, 0, 65535, ippiConvert_16u32f_C3R, widen);
    checkConvert<Ipp16s, Ipp32f>(1, -32768, 32767, ippiConvert_16s32f_C1R, widen);
    checkConvert<Ipp8u, Ipp16u>(1, 0, 255, ippiConvert_8u16u_C1R,
                                [](Ipp8u v) { return Ipp16u(v); });
    checkConvert<Ipp16u, Ipp8u>(1, 0, 600, ippiConvert_16u8u_C1R,
                                [](Ipp16u v) { return saturate<Ipp8u>(v); });
}

TEST(PrimConvert, FloatToIntegerRoundsByModeAndSaturates) {
    for (IppRoundMode m : {ippRndNear, ippRndZero}) {
        auto ref8 = [m](float v) {
            return m == ippRndNear ? nearestEven<Ipp8u>(v) : towardZero<Ipp8u>(v);
        };
        auto ref16u = [m](float v) {
            return m == ippRndNear ? nearestEven<Ipp16u>(v) : towardZero<Ipp16u>(v);
        };
        auto ref16s = [m](float v) {
            return m == ippRndNear ? nearestEven<Ipp16s>(v) : towardZero<Ipp16s>(v);
        };
        auto bind = [m](auto prim) {
            return [m, prim](auto s, int ss, auto d, int ds, IppiSize r) {
                return prim(s, ss, d, ds, r, m);
            };
        };
        checkConvert<Ipp32f, Ipp8u>(1, -40, 300, bind(ippiConvert_32f8u_C1R), ref8);
        checkConvert<Ipp32f, Ipp8u>(3, -40, 300, bind(ippiConvert_32f8u_C3R), ref8);
        checkConvert<Ipp32f, Ipp16u>(1, -9e3, 7e4, bind(ippiConvert_32f16u_C1R), ref16u);
        checkConvert<Ipp32f, Ipp16u>(3, -9e3, 7e4, bind(ippiConvert_32f16u_C3R), ref16u);
        checkConvert<Ipp32f, Ipp16s>(1, -4e4, 4e4, bind(ippiConvert_32f16s_C1R), ref16s);
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

TEST(PrimConvert, DoubleVectorToFloat) {
    const std::vector<double> in = {1.0 / 3, -1e-40, 3e38, 0.1};
    std::vector<float> out(4);
    ASSERT_EQ(ippsConvert_64f32f(in.data(), out.data(), 4), 0);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(out[i], static_cast<float>(in[i]));
}

TEST(PrimScale, MapsBetweenByteRangeAndFloatRange) {
    std::mt19937 rng(2);
    const float vMin = -1.f, vMax = 3.f;
    for (int ch : {1, 3, 4}) {
        auto up = ch == 1   ? ippiScale_8u32f_C1R
                  : ch == 3 ? ippiScale_8u32f_C3R
                            : ippiScale_8u32f_C4R;
        for (IppiSize r : regionSizes()) {
            Block<Ipp8u> src(r, ch);
            Block<Ipp32f> mid(r, ch);
            src.fillRandom(rng, 0, 255);
            mid.fillValue(-9.f);
            const auto before = mid.snapshot();
            ASSERT_EQ(up(src.ptr(), src.step(), mid.ptr(), mid.step(), r, vMin, vMax), 0);
            EXPECT_TRUE(mid.outsideUnchanged(before));
            for (int y = 0; y < r.height; ++y)
                for (int x = 0; x < r.width; ++x)
                    for (int c = 0; c < ch; ++c)
                        ASSERT_NEAR(mid.at(x, y, c), vMin + src.at(x, y, c) * (vMax - vMin) / 255.0,
                                    1e-5);
            if (ch == 4) continue;
            // And back: the round trip restores every byte.
            auto down = ch == 1 ? ippiScale_32f8u_C1R : ippiScale_32f8u_C3R;
            Block<Ipp8u> back(r, ch);
            ASSERT_EQ(down(mid.ptr(), mid.step(), back.ptr(), back.step(), r, vMin, vMax), 0);
            for (int y = 0; y < r.height; ++y)
                for (int x = 0; x < r.width; ++x)
                    for (int c = 0; c < ch; ++c) ASSERT_EQ(back.at(x, y, c), src.at(x, y, c));
        }
    }
    // Out-of-range floats clamp to the ends of the byte range.
    const float f[4] = {-5.f, 7.f, 1.f, 0.5f};
    Ipp8u b[4];
    ASSERT_EQ(ippiScale_32f8u_C1R(f, 16, b, 4, {4, 1}, 0.f, 1.f), 0);
    EXPECT_EQ(b[0], 0);
    EXPECT_EQ(b[1], 255);
    EXPECT_EQ(b[2], 255);
    EXPECT_EQ(b[3], 128);  // 127.5 rounds to the even neighbour
    EXPECT_EQ(ippiScale_32f8u_C1R(f, 16, b, 4, {4, 1}, 1.f, 1.f), ippStsBadArgErr);
}

}  // namespace
