// Arithmetic families (image-image and image-constant): operand order,
// Sfs scaling with ties to even, saturation at both ends, float forms.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "core/ippi_arith.h"
#include "core/ippi_arith_const.h"
#include "prim_block.h"

namespace {
using primtest::Block;
using primtest::regionSizes;
using primtest::sfsReference;

// Scale factors around every point where the scaled loops change lanes or
// fall back to the generic scaler (16-bit lanes, 32-bit lanes, beyond 16).
const std::vector<int>& laneEdgeScaleFactors() {
    static const std::vector<int> sfs = {-9, -1, 0,  1,  2,  7,  8,  9, 10,
                                         11, 13, 14, 15, 16, 17, 18, 20};
    return sfs;
}

// Runs an in-place two-operand primitive (src, srcDst) over random blocks and
// compares srcDst with ref(src, oldDst, channel).
template <typename S, typename D, typename Fn, typename Ref>
void checkInPlace(int ch, double lo, double hi, Fn prim, Ref ref, double tol = 0) {
    std::mt19937 rng(13);
    for (IppiSize r : regionSizes()) {
        Block<S> src(r, ch);
        Block<D> dst(r, ch), old(r, ch);
        src.fillRandom(rng, lo, hi);
        dst.fillRandom(rng, lo, hi);
        old = dst;
        const auto before = dst.snapshot();
        ASSERT_EQ(prim(src.ptr(), src.step(), dst.ptr(), dst.step(), r), 0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x)
                for (int c = 0; c < ch; ++c) {
                    const double want = ref(src.at(x, y, c), old.at(x, y, c), c);
                    if (tol == 0)
                        ASSERT_EQ(double(dst.at(x, y, c)), want)
                            << double(src.at(x, y, c)) << " " << double(old.at(x, y, c));
                    else
                        ASSERT_NEAR(double(dst.at(x, y, c)), want, tol * (1 + std::fabs(want)));
                }
        EXPECT_TRUE(dst.outsideUnchanged(before));
    }
}

TEST(PrimArith, IntegerSfsFormsMatchTheScaledRoundedSaturatedResult) {
    for (int sf : laneEdgeScaleFactors()) {
        checkInPlace<Ipp8u, Ipp8u>(
            1, 0, 255, [sf](auto... a) { return ippiAdd_8u_C1IRSfs(a..., sf); },
            [sf](Ipp8u s, Ipp8u d, int) { return sfsReference<Ipp8u>(d + s, sf); });
        checkInPlace<Ipp16u, Ipp16u>(
            1, 0, 65535, [sf](auto... a) { return ippiAdd_16u_C1IRSfs(a..., sf); },
            [sf](Ipp16u s, Ipp16u d, int) { return sfsReference<Ipp16u>(d + s, sf); });
        checkInPlace<Ipp8u, Ipp8u>(
            1, 0, 255, [sf](auto... a) { return ippiSub_8u_C1IRSfs(a..., sf); },
            [sf](Ipp8u s, Ipp8u d, int) { return sfsReference<Ipp8u>(d - s, sf); });
        checkInPlace<Ipp8u, Ipp8u>(
            1, 0, 255, [sf](auto... a) { return ippiMul_8u_C1IRSfs(a..., sf); },
            [sf](Ipp8u s, Ipp8u d, int) { return sfsReference<Ipp8u>(d * s, sf); });
    }
}

TEST(PrimArith, SfsTiesGoToEvenAndResultsSaturateAtBothEnds) {
    // (a + b) / 2 for sums 1, 3, 5, 7 (halves) and 510 (saturation unaffected).
    const Ipp8u a[6] = {0, 1, 2, 3, 255, 0};
    Ipp8u b[6] = {1, 2, 3, 4, 255, 0};
    ASSERT_EQ(ippiAdd_8u_C1IRSfs(a, 6, b, 6, {6, 1}, 1), 0);
    const Ipp8u halves[6] = {0, 2, 2, 4, 255, 0};  // 0.5->0 1.5->2 2.5->2 3.5->4
    for (int i = 0; i < 6; ++i) EXPECT_EQ(b[i], halves[i]) << i;

    // Subtraction below zero saturates at 0; a negative scale multiplies up to 255.
    const Ipp8u s1[3] = {10, 3, 100};
    const Ipp8u s2[3] = {3, 10, 101};
    Ipp8u d[3];
    ASSERT_EQ(ippiSub_8u_C1RSfs(s1, 3, s2, 3, d, 3, {3, 1}, 0), 0);
    EXPECT_EQ(d[0], 0);  // 3 - 10 saturates low
    EXPECT_EQ(d[1], 7);  // second minus first
    EXPECT_EQ(d[2], 1);
    ASSERT_EQ(ippiSub_8u_C1RSfs(s1, 3, s2, 3, d, 3, {3, 1}, -7), 0);
    EXPECT_EQ(d[1], 255);  // 7 * 128 saturates high
    EXPECT_EQ(d[2], 128);

    Ipp16u u[2] = {65535, 3};
    ASSERT_EQ(ippiAddC_16u_C1IRSfs(1, u, 4, {2, 1}, 0), 0);
    EXPECT_EQ(u[0], 65535);
    EXPECT_EQ(u[1], 4);
}

// Every pair of 8-bit operands, laid out in rows whose width (331) leaves a
// tail after any vector length, for every scale factor above.
TEST(PrimArith, EveryEightBitOperandPairScalesExactly) {
    const IppiSize r{331, (65536 + 330) / 331};
    Block<Ipp8u> a(r, 1), b(r, 1), d(r, 1);
    for (int i = 0; i < r.width * r.height; ++i) {
        a.at(i % r.width, i / r.width) = static_cast<Ipp8u>(i & 255);
        b.at(i % r.width, i / r.width) = static_cast<Ipp8u>((i >> 8) & 255);
    }
    const Block<Ipp8u> b0 = b;
    struct Case {
        const char* name;
        IppStatus (*run)(Block<Ipp8u>&, Block<Ipp8u>&, Block<Ipp8u>&, IppiSize, int);
        long long (*value)(long long a, long long b);
    };
    const Case cases[] = {
        {"Add",
         [](auto& a, auto& b, auto&, IppiSize r, int sf) {
             return ippiAdd_8u_C1IRSfs(a.ptr(), a.step(), b.ptr(), b.step(), r, sf);
         },
         [](long long a, long long b) { return b + a; }},
        {"Sub",
         [](auto& a, auto& b, auto&, IppiSize r, int sf) {
             return ippiSub_8u_C1IRSfs(a.ptr(), a.step(), b.ptr(), b.step(), r, sf);
         },
         [](long long a, long long b) { return b - a; }},
        {"Mul",
         [](auto& a, auto& b, auto&, IppiSize r, int sf) {
             return ippiMul_8u_C1IRSfs(a.ptr(), a.step(), b.ptr(), b.step(), r, sf);
         },
         [](long long a, long long b) { return b * a; }},
        {"Sub3",
         [](auto& a, auto& b, auto& d, IppiSize r, int sf) {
             return ippiSub_8u_C1RSfs(a.ptr(), a.step(), b.ptr(), b.step(), d.ptr(), d.step(), r,
                                      sf);
         },
         [](long long a, long long b) { return b - a; }},
    };
    for (const Case& c : cases) {
        for (int sf : laneEdgeScaleFactors()) {
            b = b0;
            d.fillValue(0);
            const bool inPlace = std::string(c.name) != "Sub3";
            ASSERT_EQ(c.run(a, b, d, r, sf), 0);
            const Block<Ipp8u>& out = inPlace ? b : d;
            for (int y = 0; y < r.height; ++y)
                for (int x = 0; x < r.width; ++x)
                    ASSERT_EQ(out.at(x, y),
                              sfsReference<Ipp8u>(c.value(a.at(x, y), b0.at(x, y)), sf))
                        << c.name << " sf " << sf << " a " << int(a.at(x, y)) << " b "
                        << int(b0.at(x, y));
        }
    }
}

// Every 8-bit value with every 8-bit constant, and 16-bit values spread over
// the whole range, likewise.
TEST(PrimArithConst, EveryConstantScalesExactly) {
    const IppiSize r{257, 3};
    Block<Ipp8u> img(r, 1);
    Block<Ipp16u> wide(r, 1), wideOut(r, 1);
    for (int sf : laneEdgeScaleFactors()) {
        for (int k = 0; k < 256; ++k) {
            const auto k8 = static_cast<Ipp8u>(k);
            const auto k16 = static_cast<Ipp16u>(k * 257);
            auto check8 = [&](auto prim, auto value, const char* name) {
                for (int y = 0; y < r.height; ++y)
                    for (int x = 0; x < r.width; ++x) img.at(x, y) = static_cast<Ipp8u>(x + y);
                ASSERT_EQ(prim(k8, img.ptr(), img.step(), r, sf), 0);
                for (int y = 0; y < r.height; ++y)
                    for (int x = 0; x < r.width; ++x)
                        ASSERT_EQ(img.at(x, y), sfsReference<Ipp8u>(value((x + y) & 255, k), sf))
                            << name << " sf " << sf << " k " << k << " v " << ((x + y) & 255);
            };
            check8(
                ippiAddC_8u_C1IRSfs, [](long long v, long long k) { return v + k; }, "AddC");
            check8(
                ippiSubC_8u_C1IRSfs, [](long long v, long long k) { return v - k; }, "SubC");
            check8(
                ippiMulC_8u_C1IRSfs, [](long long v, long long k) { return v * k; }, "MulC");
            auto wideValue = [](int x, int y) {
                return static_cast<Ipp16u>((x * 255 + y) % 65536);
            };
            for (int y = 0; y < r.height; ++y)
                for (int x = 0; x < r.width; ++x) wide.at(x, y) = wideValue(x, y);
            ASSERT_EQ(ippiSubC_16u_C1RSfs(wide.ptr(), wide.step(), k16, wideOut.ptr(),
                                          wideOut.step(), r, sf),
                      0);
            ASSERT_EQ(ippiAddC_16u_C1IRSfs(k16, wide.ptr(), wide.step(), r, sf), 0);
            for (int y = 0; y < r.height; ++y)
                for (int x = 0; x < r.width; ++x) {
                    const long long v = wideValue(x, y);
                    ASSERT_EQ(wideOut.at(x, y), sfsReference<Ipp16u>(v - k16, sf)) << sf;
                    ASSERT_EQ(wide.at(x, y), sfsReference<Ipp16u>(v + k16, sf)) << sf;
                }
        }
    }
}

// The destination may be either source or both: each element still reads the
// original operands.
TEST(PrimArith, DestinationMayCoincideWithTheSources) {
    std::mt19937 rng(29);
    const IppiSize r{67, 3};
    Block<Ipp8u> a(r, 1), b(r, 1);
    a.fillRandom(rng, 0, 255);
    b.fillRandom(rng, 0, 255);
    for (int sf : {0, 1, 8}) {
        Block<Ipp8u> d1 = a, d2 = b, both = a;
        ASSERT_EQ(
            ippiSub_8u_C1RSfs(d1.ptr(), d1.step(), b.ptr(), b.step(), d1.ptr(), d1.step(), r, sf),
            0);
        ASSERT_EQ(
            ippiSub_8u_C1RSfs(a.ptr(), a.step(), d2.ptr(), d2.step(), d2.ptr(), d2.step(), r, sf),
            0);
        ASSERT_EQ(ippiMul_8u_C1IRSfs(both.ptr(), both.step(), both.ptr(), both.step(), r, sf), 0);
        Block<Ipp16u> w(r, 1);
        w.fillRandom(rng, 0, 65535);
        const Block<Ipp16u> w0 = w;
        ASSERT_EQ(ippiSubC_16u_C1RSfs(w.ptr(), w.step(), 1000, w.ptr(), w.step(), r, sf), 0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x) {
                const long long va = a.at(x, y), vb = b.at(x, y);
                ASSERT_EQ(d1.at(x, y), sfsReference<Ipp8u>(vb - va, sf));
                ASSERT_EQ(d2.at(x, y), sfsReference<Ipp8u>(vb - va, sf));
                ASSERT_EQ(both.at(x, y), sfsReference<Ipp8u>(va * va, sf));
                ASSERT_EQ(w.at(x, y), sfsReference<Ipp16u>(w0.at(x, y) - 1000LL, sf));
            }
    }
}

TEST(PrimArith, TwoSourceSubtractionIsSecondMinusFirst) {
    std::mt19937 rng(17);
    for (int sf : {0, 1, -1}) {
        for (IppiSize r : regionSizes()) {
            Block<Ipp8u> a(r, 1), b(r, 1), d(r, 1);
            a.fillRandom(rng, 0, 255);
            b.fillRandom(rng, 0, 255);
            d.fillValue(42);
            const auto before = d.snapshot();
            ASSERT_EQ(
                ippiSub_8u_C1RSfs(a.ptr(), a.step(), b.ptr(), b.step(), d.ptr(), d.step(), r, sf),
                0);
            for (int y = 0; y < r.height; ++y)
                for (int x = 0; x < r.width; ++x)
                    ASSERT_EQ(d.at(x, y), sfsReference<Ipp8u>(b.at(x, y) - a.at(x, y), sf));
            EXPECT_TRUE(d.outsideUnchanged(before));
        }
    }
}

TEST(PrimArith, FloatFormsAreUnsaturatedIeeeArithmetic) {
    auto plain = [](auto op) { return [op](float s, float d, int) { return double(op(s, d)); }; };
    checkInPlace<Ipp32f, Ipp32f>(1, -1e3, 1e3, ippiAdd_32f_C1IR,
                                 plain([](float s, float d) { return d + s; }));
    checkInPlace<Ipp32f, Ipp32f>(3, -1e3, 1e3, ippiAdd_32f_C3IR,
                                 plain([](float s, float d) { return d + s; }));
    checkInPlace<Ipp32f, Ipp32f>(1, -1e3, 1e3, ippiSub_32f_C1IR,
                                 plain([](float s, float d) { return d - s; }));
    checkInPlace<Ipp32f, Ipp32f>(1, -1e3, 1e3, ippiMul_32f_C1IR,
                                 plain([](float s, float d) { return d * s; }));
    checkInPlace<Ipp32f, Ipp32f>(1, 0.5, 1e3, ippiDiv_32f_C1IR,
                                 plain([](float s, float d) { return d / s; }));

    // Division by zero gives the IEEE values and a warning.
    const float den[3] = {0.f, 0.f, 2.f};
    float num[3] = {1.f, 0.f, 3.f};
    EXPECT_EQ(ippiDiv_32f_C1IR(den, 12, num, 12, {3, 1}), ippStsDivByZero);
    EXPECT_TRUE(std::isinf(num[0]));
    EXPECT_TRUE(std::isnan(num[1]));
    EXPECT_EQ(num[2], 1.5f);
}

TEST(PrimArith, AbsDiffAbsSqrtAndAddProduct) {
    std::mt19937 rng(19);
    for (IppiSize r : regionSizes()) {
        Block<Ipp8u> a8(r, 1), b8(r, 1), d8(r, 1);
        Block<Ipp16u> a16(r, 1), b16(r, 1), d16(r, 1);
        Block<Ipp32f> af(r, 1), bf(r, 1), df(r, 1), acc(r, 1), acc0(r, 1);
        a8.fillRandom(rng, 0, 255);
        b8.fillRandom(rng, 0, 255);
        a16.fillRandom(rng, 0, 65535);
        b16.fillRandom(rng, 0, 65535);
        af.fillRandom(rng, -50, 50);
        bf.fillRandom(rng, -50, 50);
        d8.fillValue(1);
        d16.fillValue(1);
        df.fillValue(1);
        const auto before = df.snapshot();
        ASSERT_EQ(
            ippiAbsDiff_8u_C1R(a8.ptr(), a8.step(), b8.ptr(), b8.step(), d8.ptr(), d8.step(), r),
            0);
        ASSERT_EQ(ippiAbsDiff_16u_C1R(a16.ptr(), a16.step(), b16.ptr(), b16.step(), d16.ptr(),
                                      d16.step(), r),
                  0);
        ASSERT_EQ(
            ippiAbsDiff_32f_C1R(af.ptr(), af.step(), bf.ptr(), bf.step(), df.ptr(), df.step(), r),
            0);
        EXPECT_TRUE(df.outsideUnchanged(before));
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x) {
                ASSERT_EQ(d8.at(x, y), std::abs(a8.at(x, y) - b8.at(x, y)));
                ASSERT_EQ(d16.at(x, y), std::abs(a16.at(x, y) - b16.at(x, y)));
                ASSERT_EQ(df.at(x, y), std::fabs(af.at(x, y) - bf.at(x, y)));
            }

        ASSERT_EQ(ippiSqrt_32f_C1R(df.ptr(), df.step(), bf.ptr(), bf.step(), r), 0);
        ASSERT_EQ(ippiAbs_32f_C1IR(af.ptr(), af.step(), r), 0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x) {
                ASSERT_EQ(bf.at(x, y), std::sqrt(df.at(x, y)));
                ASSERT_GE(af.at(x, y), 0.f);
            }

        acc.fillRandom(rng, -1, 1);
        acc0 = acc;
        ASSERT_EQ(ippiAddProduct_8u32f_C1IR(a8.ptr(), a8.step(), b8.ptr(), b8.step(), acc.ptr(),
                                            acc.step(), r),
                  0);
        ASSERT_EQ(ippiAddProduct_16u32f_C1IR(a16.ptr(), a16.step(), b16.ptr(), b16.step(),
                                             acc.ptr(), acc.step(), r),
                  0);
        ASSERT_EQ(ippiAddProduct_32f_C1IR(af.ptr(), af.step(), bf.ptr(), bf.step(), acc.ptr(),
                                          acc.step(), r),
                  0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x) {
                float want = acc0.at(x, y);
                want += float(a8.at(x, y)) * float(b8.at(x, y));
                want += float(a16.at(x, y)) * float(b16.at(x, y));
                want += af.at(x, y) * bf.at(x, y);
                ASSERT_EQ(acc.at(x, y), want);
            }
    }
    const float neg[2] = {-4.f, 4.f};
    float root[2];
    EXPECT_EQ(ippiSqrt_32f_C1R(neg, 8, root, 8, {2, 1}), ippStsSqrtNegArg);
    EXPECT_TRUE(std::isnan(root[0]));
    EXPECT_EQ(root[1], 2.f);
}

// In-place constant forms: ref(old value, channel).
template <typename T, typename Fn, typename Ref>
void checkConst(int ch, double lo, double hi, Fn prim, Ref ref) {
    checkInPlace<T, T>(
        ch, lo, hi, [prim](const T*, int, T* d, int ds, IppiSize r) { return prim(d, ds, r); },
        [ref](T, T old, int c) { return double(ref(old, c)); });
}

TEST(PrimArithConst, IntegerConstantsScaleRoundAndSaturate) {
    for (int sf : {-1, 0, 1, 2, 5}) {
        checkConst<Ipp8u>(
            1, 0, 255,
            [sf](Ipp8u* d, int s, IppiSize r) { return ippiAddC_8u_C1IRSfs(77, d, s, r, sf); },
            [sf](Ipp8u v, int) { return sfsReference<Ipp8u>(v + 77, sf); });
        checkConst<Ipp16u>(
            1, 0, 65535,
            [sf](Ipp16u* d, int s, IppiSize r) { return ippiAddC_16u_C1IRSfs(40000, d, s, r, sf); },
            [sf](Ipp16u v, int) { return sfsReference<Ipp16u>(v + 40000, sf); });
        checkConst<Ipp8u>(
            1, 0, 255,
            [sf](Ipp8u* d, int s, IppiSize r) { return ippiSubC_8u_C1IRSfs(77, d, s, r, sf); },
            [sf](Ipp8u v, int) { return sfsReference<Ipp8u>(v - 77, sf); });
        checkConst<Ipp8u>(
            1, 0, 255,
            [sf](Ipp8u* d, int s, IppiSize r) { return ippiMulC_8u_C1IRSfs(3, d, s, r, sf); },
            [sf](Ipp8u v, int) { return sfsReference<Ipp8u>(v * 3, sf); });
        const Ipp8u k[3] = {2, 0, 200};
        checkConst<Ipp8u>(
            4, 0, 255,
            [&](Ipp8u* d, int s, IppiSize r) { return ippiMulC_8u_AC4IRSfs(k, d, s, r, sf); },
            [&](Ipp8u v, int c) { return c == 3 ? v : sfsReference<Ipp8u>(v * k[c], sf); });
        // SubC with a separate destination.
        std::mt19937 rng(23);
        for (IppiSize r : regionSizes()) {
            Block<Ipp16u> s(r, 1), d(r, 1);
            s.fillRandom(rng, 0, 65535);
            d.fillValue(5);
            const auto before = d.snapshot();
            ASSERT_EQ(ippiSubC_16u_C1RSfs(s.ptr(), s.step(), 30000, d.ptr(), d.step(), r, sf), 0);
            for (int y = 0; y < r.height; ++y)
                for (int x = 0; x < r.width; ++x)
                    ASSERT_EQ(d.at(x, y), sfsReference<Ipp16u>(s.at(x, y) - 30000, sf));
            EXPECT_TRUE(d.outsideUnchanged(before));
        }
    }
}

TEST(PrimArithConst, FloatConstantsPerChannel) {
    const float k3[3] = {0.5f, -2.f, 3.25f};
    checkConst<Ipp32f>(
        1, -9, 9, [](Ipp32f* d, int s, IppiSize r) { return ippiAddC_32f_C1IR(1.25f, d, s, r); },
        [](float v, int) { return v + 1.25f; });
    checkConst<Ipp32f>(
        3, -9, 9, [&](Ipp32f* d, int s, IppiSize r) { return ippiAddC_32f_C3IR(k3, d, s, r); },
        [&](float v, int c) { return v + k3[c]; });
    checkConst<Ipp32f>(
        1, -9, 9, [](Ipp32f* d, int s, IppiSize r) { return ippiMulC_32f_C1IR(-1.5f, d, s, r); },
        [](float v, int) { return v * -1.5f; });
    checkConst<Ipp32f>(
        3, -9, 9, [&](Ipp32f* d, int s, IppiSize r) { return ippiMulC_32f_C3IR(k3, d, s, r); },
        [&](float v, int c) { return v * k3[c]; });
    // Not-in-place forms read src and leave it alone.
    checkInPlace<Ipp32f, Ipp32f>(
        1, -9, 9,
        [](const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
            return ippiMulC_32f_C1R(s, ss, 0.75f, d, ds, r);
        },
        [](float s, float, int) { return double(s * 0.75f); });
    checkInPlace<Ipp32f, Ipp32f>(
        3, -9, 9,
        [&](const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
            return ippiMulC_32f_C3R(s, ss, k3, d, ds, r);
        },
        [&](float s, float, int c) { return double(s * k3[c]); });
}

TEST(PrimArithConst, DoubleVectors) {
    std::vector<double> v = {1, -2, 3.5};
    ASSERT_EQ(ippsAddC_64f_I(0.5, v.data(), 3), 0);
    ASSERT_EQ(ippsMulC_64f_I(2, v.data(), 3), 0);
    ASSERT_EQ(ippsSubC_64f_I(1, v.data(), 2), 0);
    EXPECT_EQ(v, (std::vector<double>{2, -4, 8}));
    EXPECT_EQ(ippsAddC_64f_I(1, nullptr, 3), ippStsNullPtrErr);
    EXPECT_EQ(ippsAddC_64f_I(1, v.data(), 0), ippStsSizeErr);
}

TEST(PrimArith, RefusesBadArguments) {
    Ipp8u b[32] = {};
    float f[8] = {};
    EXPECT_EQ(ippiAdd_8u_C1IRSfs(nullptr, 4, b, 4, {4, 2}, 0), ippStsNullPtrErr);
    EXPECT_EQ(ippiAdd_8u_C1IRSfs(b, 4, b, 4, {0, 2}, 0), ippStsSizeErr);
    EXPECT_EQ(ippiAdd_32f_C1IR(f, 8, f, 16, {4, 2}), ippStsStepErr);
    EXPECT_EQ(ippiAddC_32f_C3IR(nullptr, f, 24, {2, 1}), ippStsNullPtrErr);
    EXPECT_EQ(ippiMulC_8u_C1IRSfs(2, b, 0, {1, 1}, 0), ippStsStepErr);
}

}  // namespace
