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
    primtest::checkInPlace<Ipp8u, Ipp8u>(
        1, 0, 255,
        [](auto s, int ss, auto d, int ds, IppiSize r) {
            const IppStatus st = ippiOr_8u_C1IR(s, ss, d, ds, r);
            return st != ippStsNoErr ? st : ippiAndC_8u_C1IR(0x5c, d, ds, r);
        },
        [](Ipp8u s, Ipp8u d, int) { return (s | d) & 0x5c; });
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
            const auto before = d;
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

// Clamps from below or above to a threshold per channel; the channels past
// `used` (the alpha of AC4) keep their value.
template <typename T, typename Prim>
void checkClamp(int ch, int used, const T* t, bool below, double hi, Prim prim) {
    SCOPED_TRACE(testing::Message() << ch << " channels, " << (below ? "LT" : "GT"));
    primtest::checkInPlace<T, T>(
        ch, below ? -1 : 0, hi, [&](auto, int, auto... a) { return prim(a...); },
        [&](T, T v, int c) {
            if (c >= used) return v;
            return below ? (v < t[c] ? t[c] : v) : (v > t[c] ? t[c] : v);
        });
}

TEST(PrimThreshold, ClampsFromBelowOrAbovePerChannel) {
    const float t1 = 0.25f;
    const float t3[3] = {-0.5f, 0.f, 0.75f};
    const Ipp16u u1 = 30000;
    const Ipp16u u3[3] = {100, 40000, 65535};
    checkClamp<Ipp32f>(1, 1, &t1, true, 1,
                       [&](auto... a) { return ippiThreshold_LT_32f_C1IR(a..., t1); });
    checkClamp<Ipp32f>(3, 3, t3, true, 1,
                       [&](auto... a) { return ippiThreshold_LT_32f_C3IR(a..., t3); });
    checkClamp<Ipp32f>(1, 1, &t1, false, 1,
                       [&](auto... a) { return ippiThreshold_GT_32f_C1IR(a..., t1); });
    checkClamp<Ipp32f>(3, 3, t3, false, 1,
                       [&](auto... a) { return ippiThreshold_GT_32f_C3IR(a..., t3); });
    checkClamp<Ipp16u>(1, 1, &u1, false, 65535,
                       [&](auto... a) { return ippiThreshold_GT_16u_C1IR(a..., u1); });
    checkClamp<Ipp16u>(3, 3, u3, false, 65535,
                       [&](auto... a) { return ippiThreshold_GT_16u_C3IR(a..., u3); });
    checkClamp<Ipp16u>(4, 3, u3, false, 65535,
                       [&](auto... a) { return ippiThreshold_GT_16u_AC4IR(a..., u3); });
}

TEST(PrimThreshold, ReplacesOutsideTheBandWithGivenValues) {
    primtest::checkInPlace<Ipp32f, Ipp32f>(
        1, -2, 2,
        [](auto, int, auto... a) {
            return ippiThreshold_LTValGTVal_32f_C1IR(a..., -1.f, -7.f, 0.5f, 9.f);
        },
        [](float, float v, int) { return v < -1.f ? -7.f : (v > 0.5f ? 9.f : v); });
    float one = 0.f;
    EXPECT_EQ(ippiThreshold_LTValGTVal_32f_C1IR(&one, 4, {1, 1}, 1.f, 0.f, 0.f, 0.f),
              ippStsBadArgErr);
    EXPECT_EQ(ippiThreshold_LT_32f_C3IR(&one, 12, {1, 1}, nullptr), ippStsNullPtrErr);
}

}  // namespace
