// Arithmetic families (image-image and image-constant): operand order,
// Sfs scaling with ties to even, saturation at both ends, float forms.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/ippi_arith.h"
#include "core/ippi_arith_const.h"
#include "prim_block.h"

namespace {
using primtest::Block;
using primtest::checkInPlace;
using primtest::regionSizes;
using primtest::sfsReference;

// Scale factors around every point where the scaled loops change lanes or
// fall back to the generic scaler (16-bit lanes, 32-bit lanes, beyond 16).
const std::vector<int> kLaneEdgeScaleFactors = {-9, -1, 0,  1,  2,  7,  8,  9, 10,
                                                11, 13, 14, 15, 16, 17, 18, 20};

// An integer form as an in-place step on (src, srcDst), and the unscaled
// value it must give from the source and the old destination.
template <typename T>
struct IntForm {
    const char* name;
    IppStatus (*run)(const T* s, int ss, T* d, int ds, IppiSize r, int sf);
    long long (*value)(long long s, long long d);
};

// Every integer form on every region size, including destinations that are
// one of the sources.
TEST(PrimArith, IntegerFormsScaleRoundAndSaturateOnEveryRegion) {
    static const IntForm<Ipp8u> bytes[] = {
        {"Add", [](auto... a) { return ippiAdd_8u_C1IRSfs(a...); },
         [](long long s, long long d) { return d + s; }},
        {"Sub", [](auto... a) { return ippiSub_8u_C1IRSfs(a...); },
         [](long long s, long long d) { return d - s; }},
        {"Mul", [](auto... a) { return ippiMul_8u_C1IRSfs(a...); },
         [](long long s, long long d) { return d * s; }},
        {"Sub3 into the second source",
         [](auto s, int ss, auto d, int ds, IppiSize r, int sf) {
             return ippiSub_8u_C1RSfs(s, ss, d, ds, d, ds, r, sf);
         },
         [](long long s, long long d) { return d - s; }},
        {"Sub3 into the first source",
         [](auto s, int ss, auto d, int ds, IppiSize r, int sf) {
             return ippiSub_8u_C1RSfs(d, ds, s, ss, d, ds, r, sf);
         },
         [](long long s, long long d) { return s - d; }},
        {"Mul by itself",
         [](auto, int, auto d, int ds, IppiSize r, int sf) {
             return ippiMul_8u_C1IRSfs(d, ds, d, ds, r, sf);
         },
         [](long long, long long d) { return d * d; }},
        {"AddC", [](auto, int, auto... a) { return ippiAddC_8u_C1IRSfs(77, a...); },
         [](long long, long long d) { return d + 77; }},
        {"SubC", [](auto, int, auto... a) { return ippiSubC_8u_C1IRSfs(77, a...); },
         [](long long, long long d) { return d - 77; }},
        {"MulC", [](auto, int, auto... a) { return ippiMulC_8u_C1IRSfs(3, a...); },
         [](long long, long long d) { return d * 3; }},
    };
    static const IntForm<Ipp16u> words[] = {
        {"Add16", [](auto... a) { return ippiAdd_16u_C1IRSfs(a...); },
         [](long long s, long long d) { return d + s; }},
        {"AddC16", [](auto, int, auto... a) { return ippiAddC_16u_C1IRSfs(40000, a...); },
         [](long long, long long d) { return d + 40000; }},
        {"SubC16 into its source",
         [](auto, int, auto d, int ds, IppiSize r, int sf) {
             return ippiSubC_16u_C1RSfs(d, ds, 30000, d, ds, r, sf);
         },
         [](long long, long long d) { return d - 30000; }},
    };
    auto check = [](const auto& form, int sf, auto hi) {
        using T = decltype(hi);
        SCOPED_TRACE(testing::Message() << form.name << " sf " << sf);
        checkInPlace<T, T>(
            1, 0, hi, [&](auto... a) { return form.run(a..., sf); },
            [&](T s, T d, int) { return double(sfsReference<T>(form.value(s, d), sf)); });
    };
    const Ipp8u k[3] = {2, 0, 200};
    for (int sf : kLaneEdgeScaleFactors) {
        for (const auto& f : bytes) check(f, sf, Ipp8u{255});
        for (const auto& f : words) check(f, sf, Ipp16u{65535});
        checkInPlace<Ipp8u, Ipp8u>(  // the fourth channel is left alone
            4, 0, 255, [&](auto, int, auto... a) { return ippiMulC_8u_AC4IRSfs(k, a..., sf); },
            [&](Ipp8u, Ipp8u v, int c) { return c == 3 ? v : sfsReference<Ipp8u>(v * k[c], sf); });
    }
}

// Every pair of 8-bit operands, laid out in rows whose width (331) leaves a
// tail after any vector length, for every scale factor above; the three-
// operand subtraction here writes to a destination of its own.
TEST(PrimArith, EveryEightBitOperandPairScalesExactly) {
    const IppiSize r{331, (65536 + 330) / 331};
    Block<Ipp8u> a(r), b0(r), d0(r);
    for (int i = 0; i < r.width * r.height; ++i) {
        a.at(i % r.width, i / r.width) = static_cast<Ipp8u>(i & 255);
        b0.at(i % r.width, i / r.width) = static_cast<Ipp8u>((i >> 8) & 255);
    }
    const struct {
        const char* name;
        IppStatus (*run)(Block<Ipp8u>& a, Block<Ipp8u>& b, Block<Ipp8u>& d, int sf);
        long long (*value)(long long a, long long b);
    } cases[] = {
        {"Add",
         [](auto& a, auto& b, auto&, int sf) {
             return ippiAdd_8u_C1IRSfs(a.ptr(), a.step(), b.ptr(), b.step(), a.roi(), sf);
         },
         [](long long a, long long b) { return b + a; }},
        {"Sub",
         [](auto& a, auto& b, auto&, int sf) {
             return ippiSub_8u_C1IRSfs(a.ptr(), a.step(), b.ptr(), b.step(), a.roi(), sf);
         },
         [](long long a, long long b) { return b - a; }},
        {"Mul",
         [](auto& a, auto& b, auto&, int sf) {
             return ippiMul_8u_C1IRSfs(a.ptr(), a.step(), b.ptr(), b.step(), a.roi(), sf);
         },
         [](long long a, long long b) { return b * a; }},
        {"Sub3",
         [](auto& a, auto& b, auto& d, int sf) {
             const IppStatus st = ippiSub_8u_C1RSfs(a.ptr(), a.step(), b.ptr(), b.step(), d.ptr(),
                                                    d.step(), a.roi(), sf);
             b = d;  // the result is read from b
             return st;
         },
         [](long long a, long long b) { return b - a; }},
    };
    for (const auto& c : cases)
        for (int sf : kLaneEdgeScaleFactors) {
            Block<Ipp8u> b = b0, d = d0;
            ASSERT_EQ(c.run(a, b, d, sf), 0);
            EXPECT_TRUE(b.outsideUnchanged(b0));
            for (int y = 0; y < r.height; ++y)
                for (int x = 0; x < r.width; ++x)
                    ASSERT_EQ(b.at(x, y), sfsReference<Ipp8u>(c.value(a.at(x, y), b0.at(x, y)), sf))
                        << c.name << " sf " << sf << " a " << int(a.at(x, y)) << " b "
                        << int(b0.at(x, y));
        }
}

// Every 8-bit value with every 8-bit constant, and 16-bit values spread over
// the whole range, likewise (the 16-bit subtraction to a separate destination).
TEST(PrimArithConst, EveryConstantScalesExactly) {
    const IppiSize r{257, 3};
    Block<Ipp8u> img(r);
    Block<Ipp16u> wide(r), wideOut(r);
    const struct {
        const char* name;
        IppStatus (*run)(Ipp8u, Ipp8u*, int, IppiSize, int);
        long long (*value)(long long v, long long k);
    } forms[] = {
        {"AddC", ippiAddC_8u_C1IRSfs, [](long long v, long long k) { return v + k; }},
        {"SubC", ippiSubC_8u_C1IRSfs, [](long long v, long long k) { return v - k; }},
        {"MulC", ippiMulC_8u_C1IRSfs, [](long long v, long long k) { return v * k; }},
    };
    auto wideValue = [](int x, int y) { return static_cast<Ipp16u>((x * 255 + y) % 65536); };
    for (int sf : kLaneEdgeScaleFactors)
        for (int k = 0; k < 256; ++k) {
            for (const auto& f : forms) {
                for (int y = 0; y < r.height; ++y)
                    for (int x = 0; x < r.width; ++x) img.at(x, y) = static_cast<Ipp8u>(x + y);
                ASSERT_EQ(f.run(static_cast<Ipp8u>(k), img.ptr(), img.step(), r, sf), 0);
                for (int y = 0; y < r.height; ++y)
                    for (int x = 0; x < r.width; ++x)
                        ASSERT_EQ(img.at(x, y), sfsReference<Ipp8u>(f.value((x + y) & 255, k), sf))
                            << f.name << " sf " << sf << " k " << k << " v " << ((x + y) & 255);
            }
            const auto k16 = static_cast<Ipp16u>(k * 257);
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

// Per-channel constants for the three-channel float forms.
constexpr float kK3[3] = {0.5f, -2.f, 3.25f};

// Float forms: unsaturated IEEE arithmetic, per-channel constants, and the
// not-in-place constant forms read their source and leave it alone.
TEST(PrimArith, FloatFormsAreUnsaturatedIeeeArithmetic) {
    const struct {
        int ch;
        double lo, hi;
        IppStatus (*run)(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r);
        float (*want)(float s, float d, int c);
    } forms[] = {
        {1, -1e3, 1e3, ippiAdd_32f_C1IR, [](float s, float d, int) { return d + s; }},
        {3, -1e3, 1e3, ippiAdd_32f_C3IR, [](float s, float d, int) { return d + s; }},
        {1, -1e3, 1e3, ippiSub_32f_C1IR, [](float s, float d, int) { return d - s; }},
        {1, -1e3, 1e3, ippiMul_32f_C1IR, [](float s, float d, int) { return d * s; }},
        {1, 0.5, 1e3, ippiDiv_32f_C1IR, [](float s, float d, int) { return d / s; }},
        {1, -9, 9, [](auto, int, auto... a) { return ippiAddC_32f_C1IR(1.25f, a...); },
         [](float, float d, int) { return d + 1.25f; }},
        {3, -9, 9, [](auto, int, auto... a) { return ippiAddC_32f_C3IR(kK3, a...); },
         [](float, float d, int c) { return d + kK3[c]; }},
        {1, -9, 9, [](auto, int, auto... a) { return ippiMulC_32f_C1IR(-1.5f, a...); },
         [](float, float d, int) { return d * -1.5f; }},
        {3, -9, 9, [](auto, int, auto... a) { return ippiMulC_32f_C3IR(kK3, a...); },
         [](float, float d, int c) { return d * kK3[c]; }},
        {1, -9, 9, [](auto s, int ss, auto... a) { return ippiMulC_32f_C1R(s, ss, 0.75f, a...); },
         [](float s, float, int) { return s * 0.75f; }},
        {3, -9, 9, [](auto s, int ss, auto... a) { return ippiMulC_32f_C3R(s, ss, kK3, a...); },
         [](float s, float, int c) { return s * kK3[c]; }},
    };
    for (const auto& f : forms) {
        SCOPED_TRACE(&f - forms);
        checkInPlace<Ipp32f, Ipp32f>(f.ch, f.lo, f.hi, f.run, [&](float s, float d, int c) {
            return double(f.want(s, d, c));
        });
    }

    // Division by zero gives the IEEE values and a warning; so does a negative root.
    const float den[3] = {0.f, 0.f, 2.f};
    float num[3] = {1.f, 0.f, 3.f};
    EXPECT_EQ(ippiDiv_32f_C1IR(den, 12, num, 12, {3, 1}), ippStsDivByZero);
    EXPECT_TRUE(std::isinf(num[0]));
    EXPECT_TRUE(std::isnan(num[1]));
    EXPECT_EQ(num[2], 1.5f);
    const float neg[2] = {-4.f, 4.f};
    float root[2];
    EXPECT_EQ(ippiSqrt_32f_C1R(neg, 8, root, 8, {2, 1}), ippStsSqrtNegArg);
    EXPECT_TRUE(std::isnan(root[0]));
    EXPECT_EQ(root[1], 2.f);
}

TEST(PrimArith, AbsDiffAbsSqrtAndAddProduct) {
    std::mt19937 rng(19);
    for (IppiSize r : regionSizes()) {
        Block<Ipp8u> a8(r), b8(r), d8(r);
        Block<Ipp16u> a16(r), b16(r), d16(r);
        Block<Ipp32f> af(r), bf(r), df(r), acc(r);
        a8.fillRandom(rng, 0, 255);
        b8.fillRandom(rng, 0, 255);
        a16.fillRandom(rng, 0, 65535);
        b16.fillRandom(rng, 0, 65535);
        af.fillRandom(rng, -50, 50);
        bf.fillRandom(rng, -50, 50);
        acc.fillRandom(rng, -1, 1);
        const Block<Ipp8u> d8Before = d8;
        const Block<Ipp16u> d16Before = d16;
        const Block<Ipp32f> afBefore = af, bfBefore = bf, dfBefore = df, accBefore = acc;
        ASSERT_EQ(
            ippiAbsDiff_8u_C1R(a8.ptr(), a8.step(), b8.ptr(), b8.step(), d8.ptr(), d8.step(), r),
            0);
        ASSERT_EQ(ippiAbsDiff_16u_C1R(a16.ptr(), a16.step(), b16.ptr(), b16.step(), d16.ptr(),
                                      d16.step(), r),
                  0);
        ASSERT_EQ(
            ippiAbsDiff_32f_C1R(af.ptr(), af.step(), bf.ptr(), bf.step(), df.ptr(), df.step(), r),
            0);
        ASSERT_EQ(ippiAddProduct_8u32f_C1IR(a8.ptr(), a8.step(), b8.ptr(), b8.step(), acc.ptr(),
                                            acc.step(), r),
                  0);
        ASSERT_EQ(ippiAddProduct_16u32f_C1IR(a16.ptr(), a16.step(), b16.ptr(), b16.step(),
                                             acc.ptr(), acc.step(), r),
                  0);
        ASSERT_EQ(ippiAddProduct_32f_C1IR(af.ptr(), af.step(), bf.ptr(), bf.step(), acc.ptr(),
                                          acc.step(), r),
                  0);
        ASSERT_EQ(ippiSqrt_32f_C1R(df.ptr(), df.step(), bf.ptr(), bf.step(), r), 0);
        ASSERT_EQ(ippiAbs_32f_C1IR(af.ptr(), af.step(), r), 0);
        EXPECT_TRUE(d8.outsideUnchanged(d8Before) && d16.outsideUnchanged(d16Before));
        EXPECT_TRUE(df.outsideUnchanged(dfBefore) && acc.outsideUnchanged(accBefore));
        EXPECT_TRUE(bf.outsideUnchanged(bfBefore) && af.outsideUnchanged(afBefore));
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x) {
                const float a = afBefore.at(x, y), b = bfBefore.at(x, y);
                ASSERT_EQ(d8.at(x, y), std::abs(a8.at(x, y) - b8.at(x, y)));
                ASSERT_EQ(d16.at(x, y), std::abs(a16.at(x, y) - b16.at(x, y)));
                ASSERT_EQ(df.at(x, y), std::fabs(a - b));
                ASSERT_EQ(bf.at(x, y), std::sqrt(df.at(x, y)));
                ASSERT_EQ(af.at(x, y), std::fabs(a));
                float want = accBefore.at(x, y);
                want += float(a8.at(x, y)) * float(b8.at(x, y));
                want += float(a16.at(x, y)) * float(b16.at(x, y));
                want += a * b;
                ASSERT_EQ(acc.at(x, y), want);
            }
    }
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
