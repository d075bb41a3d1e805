// Logic, Compare and Threshold families against per-pixel references.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/ippi_logic_compare.h"
#include "core/ippi_threshold.h"
#include "prim_block.h"

namespace {
using primtest::Block;
using primtest::regionSizes;

const IppCmpOp kOps[] = {ippCmpLess, ippCmpLessEq, ippCmpEq, ippCmpGreaterEq, ippCmpGreater};

template <typename T>
bool holds(T a, T b, IppCmpOp op) {
    switch (op) {
        case ippCmpLess:
            return a < b;
        case ippCmpLessEq:
            return a <= b;
        case ippCmpEq:
            return a == b;
        case ippCmpGreaterEq:
            return a >= b;
        case ippCmpGreater:
            return a > b;
    }
    return false;
}

TEST(PrimLogic, AndConstantAndOrImage) {
    std::mt19937 rng(29);
    for (IppiSize r : regionSizes()) {
        Block<Ipp8u> a(r, 1), d(r, 1), old(r, 1);
        a.fillRandom(rng, 0, 255);
        d.fillRandom(rng, 0, 255);
        old = d;
        const auto before = d.snapshot();
        ASSERT_EQ(ippiOr_8u_C1IR(a.ptr(), a.step(), d.ptr(), d.step(), r), 0);
        ASSERT_EQ(ippiAndC_8u_C1IR(0x5c, d.ptr(), d.step(), r), 0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x)
                ASSERT_EQ(d.at(x, y), (a.at(x, y) | old.at(x, y)) & 0x5c);
        EXPECT_TRUE(d.outsideUnchanged(before));
    }
}

TEST(PrimCompare, WritesFullOnesWhereTheRelationHolds) {
    std::mt19937 rng(31);
    for (IppCmpOp op : kOps) {
        for (IppiSize r : regionSizes()) {
            // Small value ranges so that equality occurs often.
            Block<Ipp32f> a(r, 1), b(r, 1);
            Block<Ipp8u> s(r, 1), d(r, 1), dc(r, 1);
            a.fill([&] { return float(rng() % 4); });
            b.fill([&] { return float(rng() % 4); });
            a.at(0, 0) = std::numeric_limits<float>::quiet_NaN();  // false for every op
            s.fillRandom(rng, 5, 9);
            d.fillValue(7);
            dc.fillValue(7);
            const auto before = d.snapshot();
            ASSERT_EQ(
                ippiCompare_32f_C1R(a.ptr(), a.step(), b.ptr(), b.step(), d.ptr(), d.step(), r, op),
                0);
            ASSERT_EQ(ippiCompareC_8u_C1R(s.ptr(), s.step(), 7, dc.ptr(), dc.step(), r, op), 0);
            for (int y = 0; y < r.height; ++y)
                for (int x = 0; x < r.width; ++x) {
                    ASSERT_EQ(d.at(x, y), holds(a.at(x, y), b.at(x, y), op) ? 255 : 0);
                    ASSERT_EQ(dc.at(x, y), holds<int>(s.at(x, y), 7, op) ? 255 : 0);
                }
            EXPECT_EQ(d.at(0, 0), 0);
            EXPECT_TRUE(d.outsideUnchanged(before));
        }
    }
    Ipp8u p[4] = {};
    EXPECT_EQ(ippiCompareC_8u_C1R(p, 4, 1, p, 4, {4, 1}, IppCmpOp(9)), ippStsBadArgErr);
}

template <typename T, typename Fn>
void checkClamp(int ch, int used, const T* t, bool below, double lo, double hi, Fn prim) {
    std::mt19937 rng(37);
    for (IppiSize r : regionSizes()) {
        Block<T> d(r, ch), old(r, ch);
        d.fillRandom(rng, lo, hi);
        old = d;
        const auto before = d.snapshot();
        ASSERT_EQ(prim(d.ptr(), d.step(), r), 0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x)
                for (int c = 0; c < ch; ++c) {
                    const T v = old.at(x, y, c);
                    T want = v;
                    if (c < used) want = below ? (v < t[c] ? t[c] : v) : (v > t[c] ? t[c] : v);
                    ASSERT_EQ(d.at(x, y, c), want);
                }
        EXPECT_TRUE(d.outsideUnchanged(before));
    }
}

TEST(PrimThreshold, ClampsFromBelowOrAbovePerChannel) {
    const float t1 = 0.25f;
    const float t3[3] = {-0.5f, 0.f, 0.75f};
    const Ipp16u u1 = 30000;
    const Ipp16u u3[3] = {100, 40000, 65535};
    checkClamp<Ipp32f>(1, 1, &t1, true, -1, 1, [&](auto d, int s, IppiSize r) {
        return ippiThreshold_LT_32f_C1IR(d, s, r, t1);
    });
    checkClamp<Ipp32f>(3, 3, t3, true, -1, 1, [&](auto d, int s, IppiSize r) {
        return ippiThreshold_LT_32f_C3IR(d, s, r, t3);
    });
    checkClamp<Ipp32f>(1, 1, &t1, false, -1, 1, [&](auto d, int s, IppiSize r) {
        return ippiThreshold_GT_32f_C1IR(d, s, r, t1);
    });
    checkClamp<Ipp32f>(3, 3, t3, false, -1, 1, [&](auto d, int s, IppiSize r) {
        return ippiThreshold_GT_32f_C3IR(d, s, r, t3);
    });
    checkClamp<Ipp16u>(1, 1, &u1, false, 0, 65535, [&](auto d, int s, IppiSize r) {
        return ippiThreshold_GT_16u_C1IR(d, s, r, u1);
    });
    checkClamp<Ipp16u>(3, 3, u3, false, 0, 65535, [&](auto d, int s, IppiSize r) {
        return ippiThreshold_GT_16u_C3IR(d, s, r, u3);
    });
    checkClamp<Ipp16u>(4, 3, u3, false, 0, 65535, [&](auto d, int s, IppiSize r) {
        return ippiThreshold_GT_16u_AC4IR(d, s, r, u3);
    });
}

TEST(PrimThreshold, ReplacesOutsideTheBandWithGivenValues) {
    std::mt19937 rng(41);
    for (IppiSize r : regionSizes()) {
        Block<Ipp32f> d(r, 1), old(r, 1);
        d.fillRandom(rng, -2, 2);
        old = d;
        const auto before = d.snapshot();
        ASSERT_EQ(ippiThreshold_LTValGTVal_32f_C1IR(d.ptr(), d.step(), r, -1.f, -7.f, 0.5f, 9.f),
                  0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x) {
                const float v = old.at(x, y);
                ASSERT_EQ(d.at(x, y), v < -1.f ? -7.f : (v > 0.5f ? 9.f : v));
            }
        EXPECT_TRUE(d.outsideUnchanged(before));
    }
    float one = 0.f;
    EXPECT_EQ(ippiThreshold_LTValGTVal_32f_C1IR(&one, 4, {1, 1}, 1.f, 0.f, 0.f, 0.f),
              ippStsBadArgErr);
    EXPECT_EQ(ippiThreshold_LT_32f_C3IR(&one, 12, {1, 1}, nullptr), ippStsNullPtrErr);
}

}  // namespace
