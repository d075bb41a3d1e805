// Linear filters against per-pixel references: the fixed Gaussians, 2-D, row
// and column float convolutions (anchors off-centre), and the row / column
// pipelines with their borders, divisors and buffers.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "core/img_filter_ops.h"
#include "core/ippi_filter.h"
#include "prim_block.h"

namespace {

using primtest::Block;
using primtest::regionSizes;

constexpr Ipp8u kSentinel8 = 0x5A;
constexpr float kSentinelF = -777.0f;

int gaussWeight(int size, int dx, int dy) {
    static const int k3[3] = {1, 2, 1};
    static const int k5[3][5] = {{2, 7, 12, 7, 2}, {7, 31, 52, 31, 7}, {12, 52, 127, 52, 12}};
    if (size == 3) return k3[dx + 1] * k3[dy + 1];
    const int row = 2 - std::abs(dy);
    return k5[row][dx + 2];
}

TEST(LinearFilter, FixedGaussiansMatchIntegerReference) {
    std::mt19937 rng(31);
    for (const IppiSize roi : regionSizes()) {
        for (const int size : {3, 5}) {
            const int r = size / 2, total = size == 3 ? 16 : 571;
            Block<Ipp8u> src(roi, 1, 2);
            src.fillRandom(rng, 0, 255);
            Block<Ipp8u> dst(roi, 1, 1);
            dst.fillValue(kSentinel8);
            const IppiMaskSize mask = size == 3 ? ippMskSize3x3 : ippMskSize5x5;
            ASSERT_EQ(
                ippiFilterGauss_8u_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(), roi, mask),
                ippStsNoErr);
            for (int y = 0; y < roi.height; ++y)
                for (int x = 0; x < roi.width; ++x) {
                    int s = 0;
                    for (int dy = -r; dy <= r; ++dy)
                        for (int dx = -r; dx <= r; ++dx)
                            s += gaussWeight(size, dx, dy) * src.at(x + dx, y + dy);
                    // Nearest integer quotient, halves up.
                    ASSERT_EQ(dst.at(x, y), (2 * s + total) / (2 * total)) << x << "," << y;
                }
            EXPECT_TRUE(dst.outsideIs(kSentinel8));
        }
    }
}

TEST(LinearFilter, GaussianRefusesOtherMasksAndItsWrapperKeepsARamp) {
    Block<Ipp8u> src({6, 5}, 1, 2), dst({6, 5}, 1, 0);
    EXPECT_EQ(
        ippiFilterGauss_8u_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(), {6, 5}, ippMskSize1x3),
        ippStsBadArgErr);

    GIMG<unsigned char> a(9, 9), b(9, 9);
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 9; ++x) *imgPtr(a, x, y) = static_cast<unsigned char>(x * 20);
    a.roiRect(2, 2, -2, -2);
    b.roiRect(2, 2, -2, -2);
    EXPECT_EQ(FilterGauss(a, b, ippMskSize5x5), ippStsNoErr);
    EXPECT_EQ(b.status, ippStsNoErr);
    EXPECT_EQ(*imgPtr(b, 2, 2), 80);  // a linear ramp is kept by a symmetric kernel
}

std::vector<float> randomKernel(std::mt19937& rng, int n) {
    std::uniform_real_distribution<float> d(-1.0f, 1.0f);
    std::vector<float> k(n);
    for (float& v : k) v = d(rng);
    return k;
}

// A row (column) form as a general convolution with its taps along x (y).
template <auto Prim, bool Row>
IppStatus separable(const float* s, int ss, float* d, int ds, IppiSize r, const float* k,
                    IppiSize n, IppiPoint a) {
    return Row ? Prim(s, ss, d, ds, r, k, n.width, a.x) : Prim(s, ss, d, ds, r, k, n.height, a.y);
}

// 2-D, row and column convolutions (one and three channels) with random
// anchors against the definition: tap (i, j) multiplies src(x + ax - i, y + ay - j).
TEST(LinearFilter, ConvolutionsWithOffCentreAnchorsMatchTheDefinition) {
    using Run =
        IppStatus (*)(const float*, int, float*, int, IppiSize, const float*, IppiSize, IppiPoint);
    const struct {
        int ch;
        Run run;
        std::vector<IppiSize> kernels;
    } cases[] = {
        {1, ippiFilter_32f_C1R, {{1, 1}, {3, 3}, {4, 2}, {1, 5}}},
        {1, separable<ippiFilterRow_32f_C1R, true>, {{1, 1}, {3, 1}, {6, 1}}},
        {3, separable<ippiFilterRow_32f_C3R, true>, {{1, 1}, {3, 1}, {6, 1}}},
        {1, separable<ippiFilterColumn_32f_C1R, false>, {{1, 1}, {1, 3}, {1, 6}}},
        {3, separable<ippiFilterColumn_32f_C3R, false>, {{1, 1}, {1, 3}, {1, 6}}},
    };
    std::mt19937 rng(32);
    for (const auto& c : cases)
        for (const IppiSize roi : regionSizes())
            for (const IppiSize ks : c.kernels) {
                SCOPED_TRACE(testing::Message() << "case " << &c - cases << " kernel " << ks.width
                                                << "x" << ks.height);
                const IppiPoint a{static_cast<int>(rng() % ks.width),
                                  static_cast<int>(rng() % ks.height)};
                const auto k = randomKernel(rng, ks.width * ks.height);
                Block<float> src(roi, c.ch, 6), dst(roi, c.ch, 1);
                src.fillRandom(rng, -3, 3);
                dst.fillValue(kSentinelF);
                ASSERT_EQ(c.run(src.ptr(), src.step(), dst.ptr(), dst.step(), roi, k.data(), ks, a),
                          ippStsNoErr);
                for (int y = 0; y < roi.height; ++y)
                    for (int x = 0; x < roi.width; ++x)
                        for (int ch = 0; ch < c.ch; ++ch) {
                            double want = 0;
                            for (int j = 0; j < ks.height; ++j)
                                for (int i = 0; i < ks.width; ++i)
                                    want += double(k[j * ks.width + i]) *
                                            src.at(x + a.x - i, y + a.y - j, ch);
                            ASSERT_NEAR(dst.at(x, y, ch), want, 1e-4) << x << "," << y;
                        }
                EXPECT_TRUE(dst.outsideIs(kSentinelF));
            }
}

// Nearest integer quotient, halves away from zero, saturated to 16 bits.
Ipp16s roundedShort(long long sum, int divisor) {
    const double q = double(sum) / divisor;
    const double r = q < 0 ? -std::floor(-q + 0.5) : std::floor(q + 0.5);
    return static_cast<Ipp16s>(std::clamp(r, -32768.0, 32767.0));
}

TEST(LinearFilter, RowPipelineMakesItsOwnBorder) {
    std::mt19937 rng(34);
    for (const IppiSize roi : regionSizes())
        for (const IppiBorderType border : {ippBorderRepl, ippBorderConst})
            for (const int n : {1, 3, 4}) {
                const int anchor = static_cast<int>(rng() % n), divisor = 1 + rng() % 9;
                std::vector<Ipp16s> k16(n);
                std::vector<float> k32(n);
                for (int i = 0; i < n; ++i) k32[i] = k16[i] = static_cast<Ipp16s>(rng() % 41) - 20;
                Block<Ipp16s> src(roi, 1, 0), dst(roi, 1, 1);
                Block<float> srcF(roi, 1, 0), dstF(roi, 1, 1);
                src.fillRandom(rng, -3000, 3000);
                for (int y = 0; y < roi.height; ++y)
                    for (int x = 0; x < roi.width; ++x) srcF.at(x, y) = src.at(x, y);
                dst.fillValue(0x7777);
                dstF.fillValue(kSentinelF);
                std::vector<Ipp16s*> rows(roi.height);
                std::vector<Ipp32f*> rowsF(roi.height);
                for (int y = 0; y < roi.height; ++y)
                    rows[y] = &dst.at(0, y), rowsF[y] = &dstF.at(0, y);
                int size16 = 0, size32 = 0;
                ASSERT_EQ(ippiFilterRowBorderPipelineGetBufferSize_16s_C1R(roi, n, &size16), 0);
                ASSERT_EQ(ippiFilterRowBorderPipelineGetBufferSize_32f_C1R(roi, n, &size32), 0);
                std::vector<Ipp8u> buf16(size16), buf32(size32);
                const Ipp16s bv = -123;
                ASSERT_EQ(ippiFilterRowBorderPipeline_16s_C1R(src.ptr(), src.step(), rows.data(),
                                                              roi, k16.data(), n, anchor, border,
                                                              bv, divisor, buf16.data()),
                          ippStsNoErr);
                ASSERT_EQ(ippiFilterRowBorderPipeline_32f_C1R(srcF.ptr(), srcF.step(), rowsF.data(),
                                                              roi, k32.data(), n, anchor, border,
                                                              bv, buf32.data()),
                          ippStsNoErr);
                for (int y = 0; y < roi.height; ++y)
                    for (int x = 0; x < roi.width; ++x) {
                        long long s = 0;
                        for (int i = 0; i < n; ++i) {
                            const int sx = x + anchor - i;
                            const bool in = sx >= 0 && sx < roi.width;
                            const int v = in ? src.at(sx, y)
                                          : border == ippBorderRepl
                                              ? src.at(std::clamp(sx, 0, roi.width - 1), y)
                                              : bv;
                            s += k16[i] * v;
                        }
                        ASSERT_EQ(dst.at(x, y), roundedShort(s, divisor));
                        ASSERT_NEAR(dstF.at(x, y), double(s), 1e-2 * (1 + std::abs(double(s))));
                    }
                EXPECT_TRUE(dst.outsideIs(0x7777));
                EXPECT_TRUE(dstF.outsideIs(kSentinelF));
            }
}

TEST(LinearFilter, ColumnPipelineReadsTheGivenRowsAndSaturates) {
    std::mt19937 rng(35);
    for (const IppiSize roi : regionSizes())
        for (const int n : {1, 3, 5}) {
            const int divisor = 1 + rng() % 4;
            std::vector<Ipp16s> k16(n);
            std::vector<float> k32(n);
            for (int i = 0; i < n; ++i) k32[i] = k16[i] = static_cast<Ipp16s>(rng() % 61) - 30;
            // Source rows with the border rows supplied by repeating pointers.
            Block<Ipp16s> src(roi, 1, 0);
            Block<float> srcF(roi, 1, 0);
            src.fillRandom(rng, -32768, 32767);
            for (int y = 0; y < roi.height; ++y)
                for (int x = 0; x < roi.width; ++x) srcF.at(x, y) = src.at(x, y);
            std::vector<const Ipp16s*> rows;
            std::vector<const Ipp32f*> rowsF;
            for (int j = -(n / 2); j < roi.height + n - 1 - n / 2; ++j) {
                const int sy = std::clamp(j, 0, roi.height - 1);
                rows.push_back(&src.at(0, sy));
                rowsF.push_back(&srcF.at(0, sy));
            }
            Block<Ipp16s> dst(roi, 1, 2);
            Block<float> dstF(roi, 1, 2);
            dst.fillValue(0x1234);
            dstF.fillValue(kSentinelF);
            int size16 = 0, size32 = 0;
            ASSERT_EQ(ippiFilterColumnPipelineGetBufferSize_16s_C1R(roi, n, &size16), 0);
            ASSERT_EQ(ippiFilterColumnPipelineGetBufferSize_32f_C1R(roi, n, &size32), 0);
            std::vector<Ipp8u> buf16(size16), buf32(size32);
            ASSERT_EQ(ippiFilterColumnPipeline_16s_C1R(rows.data(), dst.ptr(), dst.step(), roi,
                                                       k16.data(), n, divisor, buf16.data()),
                      ippStsNoErr);
            ASSERT_EQ(ippiFilterColumnPipeline_32f_C1R(rowsF.data(), dstF.ptr(), dstF.step(), roi,
                                                       k32.data(), n, buf32.data()),
                      ippStsNoErr);
            for (int y = 0; y < roi.height; ++y)
                for (int x = 0; x < roi.width; ++x) {
                    long long s = 0;
                    for (int j = 0; j < n; ++j) s += k16[j] * rows[y + n - 1 - j][x];
                    ASSERT_EQ(dst.at(x, y), roundedShort(s, divisor));
                    ASSERT_NEAR(dstF.at(x, y), double(s), 1e-5 * (1 + std::abs(double(s))));
                }
            EXPECT_TRUE(dst.outsideIs(0x1234));
            EXPECT_TRUE(dstF.outsideIs(kSentinelF));
        }
}

TEST(LinearFilter, RefusesBadKernelsAndDivisors) {
    Block<float> f({4, 4}, 1, 2);
    const float k[3] = {1, 2, 1};
    EXPECT_EQ(ippiFilterRow_32f_C1R(f.ptr(), f.step(), f.ptr(), f.step(), {4, 4}, k, 3, 3),
              ippStsBadArgErr);
    EXPECT_EQ(ippiFilterColumn_32f_C1R(f.ptr(), f.step(), f.ptr(), f.step(), {4, 4}, nullptr, 3, 1),
              ippStsNullPtrErr);
    EXPECT_EQ(ippiFilter_32f_C1R(f.ptr(), f.step(), f.ptr(), f.step(), {4, 4}, k, {3, 1}, {1, 1}),
              ippStsBadArgErr);
    Block<Ipp16s> s({4, 4}, 1, 0);
    Ipp16s* rows[4] = {&s.at(0, 0), &s.at(0, 1), &s.at(0, 2), &s.at(0, 3)};
    const Ipp16s k16[3] = {1, 2, 1};
    Ipp8u buf[256];
    EXPECT_EQ(ippiFilterRowBorderPipeline_16s_C1R(s.ptr(), s.step(), rows, {4, 4}, k16, 3, 1,
                                                  ippBorderRepl, 0, 0, buf),
              ippStsBadArgErr);
    int size = 0;
    EXPECT_EQ(ippiFilterColumnPipelineGetBufferSize_16s_C1R({0, 3}, 3, &size), ippStsSizeErr);
}

}  // namespace
