// Noise and Small-matrix families.
#include <gtest/gtest.h>

#include <cmath>

#include "core/ippi_noise.h"
#include "core/ippm_small_matrix.h"
#include "prim_block.h"

namespace {
using primtest::Block;

TEST(PrimNoise, SeededGaussianNoiseIsReproducibleAndHasTheGivenMoments) {
    const IppiSize r{301, 203};
    Block<Ipp32f> a(r, 1), b(r, 1);
    a.fillValue(2.f);
    b.fillValue(2.f);
    const auto before = a;
    unsigned seedA = 1234, seedB = 1234;
    ASSERT_EQ(ippiAddRandGauss_Direct_32f_C1IR(a.ptr(), a.step(), r, 0.5f, 3.f, &seedA), 0);
    ASSERT_EQ(ippiAddRandGauss_Direct_32f_C1IR(b.ptr(), b.step(), r, 0.5f, 3.f, &seedB), 0);
    EXPECT_TRUE(a.outsideUnchanged(before));
    EXPECT_EQ(seedA, seedB);
    EXPECT_NE(seedA, 1234u);  // the seed advances
    double sum = 0, sum2 = 0;
    for (int y = 0; y < r.height; ++y)
        for (int x = 0; x < r.width; ++x) {
            ASSERT_EQ(a.at(x, y), b.at(x, y));
            const double n = a.at(x, y) - 2.0;
            sum += n;
            sum2 += n * n;
        }
    const double count = double(r.width) * r.height;
    const double mean = sum / count;
    const double sd = std::sqrt(sum2 / count - mean * mean);
    EXPECT_NEAR(mean, 0.5, 0.03);  // ~5 standard errors at this count
    EXPECT_NEAR(sd, 3.0, 0.03);
    // Continuing from the advanced seed gives different noise.
    Block<Ipp32f> c(r, 1);
    c.fillValue(2.f);
    ASSERT_EQ(ippiAddRandGauss_Direct_32f_C1IR(c.ptr(), c.step(), r, 0.5f, 3.f, &seedA), 0);
    EXPECT_NE(c.at(0, 0), a.at(0, 0));
}

TEST(PrimNoise, FourChannelFormLeavesAlphaAlone) {
    const IppiSize r{9, 5};
    Block<Ipp32f> img(r, 4);
    img.fillValue(0.f);
    unsigned seed = 7;
    ASSERT_EQ(ippiAddRandGauss_Direct_32f_AC4IR(img.ptr(), img.step(), r, 0.f, 1.f, &seed), 0);
    int moved = 0;
    for (int y = 0; y < r.height; ++y)
        for (int x = 0; x < r.width; ++x) {
            ASSERT_EQ(img.at(x, y, 3), 0.f);
            for (int c = 0; c < 3; ++c) moved += img.at(x, y, c) != 0.f;
        }
    EXPECT_EQ(moved, 3 * 9 * 5);
    EXPECT_EQ(ippiAddRandGauss_Direct_32f_AC4IR(img.ptr(), img.step(), r, 0.f, 1.f, nullptr),
              ippStsNullPtrErr);
}

// Column-major n x n storage: stride1 (between rows) is one element,
// stride2 (along a row) is n elements, exercising the general addressing.
double& cm(std::vector<double>& m, int n, int i, int j) {
    return m[j * n + i];
}

TEST(PrimSmallMatrix, InverseTimesMatrixIsIdentity) {
    std::mt19937 rng(73);
    std::uniform_real_distribution<double> u(-1, 1);
    for (int n : {1, 2, 3, 5}) {
        std::vector<double> a(n * n), inv(n * n, 0), prod(n * n), buf(n * n + n);
        for (auto& v : a) v = u(rng);
        for (int i = 0; i < n; ++i)
            cm(a, n, i, (i + 1) % n) += 3.0;  // well conditioned, needs pivoting
        const int s1 = 8, s2 = 8 * n;
        ASSERT_EQ(ippmInvert_m_64f(a.data(), s1, s2, buf.data(), inv.data(), s1, s2, n), 0);
        ASSERT_EQ(
            ippmMul_mm_64f(a.data(), s1, s2, n, n, inv.data(), s1, s2, n, n, prod.data(), s1, s2),
            0);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) EXPECT_NEAR(cm(prod, n, i, j), i == j ? 1.0 : 0.0, 1e-12);
    }
    std::vector<double> sing = {1, 2, 2, 4}, out(4), buf(6);
    EXPECT_EQ(ippmInvert_m_64f(sing.data(), 16, 8, buf.data(), out.data(), 16, 8, 2),
              ippStsSingularErr);
    EXPECT_EQ(ippmInvert_m_64f(sing.data(), 16, 8, nullptr, out.data(), 16, 8, 2),
              ippStsNullPtrErr);
}

TEST(PrimSmallMatrix, ProductsPlainAndTransposed) {
    std::mt19937 rng(79);
    std::uniform_real_distribution<double> u(-2, 2);
    // A is 3 x 4 (row-major), B is 4 x 2, C is 3 x 2 (so A^T C is 4 x 2).
    std::vector<double> a(12), b(8), c(6), ab(6), atc(8);
    for (auto* v : {&a, &b, &c})
        for (auto& x : *v) x = u(rng);
    ASSERT_EQ(ippmMul_mm_64f(a.data(), 32, 8, 4, 3, b.data(), 16, 8, 2, 4, ab.data(), 16, 8), 0);
    ASSERT_EQ(ippmMul_tm_64f(a.data(), 32, 8, 4, 3, c.data(), 16, 8, 2, 3, atc.data(), 16, 8), 0);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 2; ++j) {
            double want = 0;
            for (int k = 0; k < 4; ++k) want += a[i * 4 + k] * b[k * 2 + j];
            EXPECT_NEAR(ab[i * 2 + j], want, 1e-12);
        }
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 2; ++j) {
            double want = 0;
            for (int k = 0; k < 3; ++k) want += a[k * 4 + i] * c[k * 2 + j];
            EXPECT_NEAR(atc[i * 2 + j], want, 1e-12);
        }
    EXPECT_EQ(ippmMul_mm_64f(a.data(), 32, 8, 4, 3, c.data(), 16, 8, 2, 3, ab.data(), 16, 8),
              ippStsSizeErr);
    // The destination may be one of the sources.
    std::vector<double> sq = {1, 2, 3, 4};
    ASSERT_EQ(ippmMul_mm_64f(sq.data(), 16, 8, 2, 2, sq.data(), 16, 8, 2, 2, sq.data(), 16, 8), 0);
    EXPECT_EQ(sq, (std::vector<double>{7, 10, 15, 22}));
}

TEST(PrimSmallMatrix, QrSolvesSquareAndLeastSquaresSystems) {
    std::mt19937 rng(83);
    std::uniform_real_distribution<float> u(-1, 1);
    for (auto [w, h] : {std::pair{1, 1}, std::pair{3, 3}, std::pair{3, 7}, std::pair{4, 9}}) {
        std::vector<float> a(w * h), qr(w * h), b(h), x(w), buf(h);
        for (auto& v : a) v = u(rng);
        for (int i = 0; i < w; ++i) a[i * w + i] += 2.f;
        std::vector<float> xTrue(w);
        for (auto& v : xTrue) v = u(rng);
        for (int i = 0; i < h; ++i) {
            double acc = 0;
            for (int j = 0; j < w; ++j) acc += double(a[i * w + j]) * xTrue[j];
            b[i] = float(acc);
        }
        ASSERT_EQ(ippmQRDecomp_m_32f(a.data(), 4 * w, 4, buf.data(), qr.data(), 4 * w, 4, w, h), 0);
        ASSERT_EQ(
            ippmQRBackSubst_mv_32f(qr.data(), 4 * w, 4, buf.data(), b.data(), 4, x.data(), 4, w, h),
            0);
        // A consistent system: the least-squares solution is the exact one.
        for (int j = 0; j < w; ++j) EXPECT_NEAR(x[j], xTrue[j], 1e-5) << w << "x" << h;

        // Perturbed right side: the residual is orthogonal to A's columns.
        for (auto& v : b) v += 0.1f * u(rng);
        ASSERT_EQ(
            ippmQRBackSubst_mv_32f(qr.data(), 4 * w, 4, buf.data(), b.data(), 4, x.data(), 4, w, h),
            0);
        for (int j = 0; j < w; ++j) {
            double dot = 0;
            for (int i = 0; i < h; ++i) {
                double res = b[i];
                for (int k = 0; k < w; ++k) res -= double(a[i * w + k]) * x[k];
                dot += res * a[i * w + j];
            }
            EXPECT_NEAR(dot, 0.0, 1e-5);
        }
    }
    std::vector<float> zero(6, 0.f), out(6), buf(3);
    EXPECT_EQ(ippmQRDecomp_m_32f(zero.data(), 8, 4, buf.data(), out.data(), 8, 4, 2, 3),
              ippStsSingularErr);
    EXPECT_EQ(ippmQRDecomp_m_32f(zero.data(), 8, 4, buf.data(), out.data(), 8, 4, 3, 2),
              ippStsSizeErr);
}

}  // namespace
