// Matting Laplacian: the assembled L against the properties that define it,
// the window indices, three picture layouts, the capacity guards and the
// constraint maps.
#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <opencv2/imgproc.hpp>

#include "matting/cfmatt.h"
#include "matting_test_support.h"

namespace {

// Dense L = D - W from the triplets (upper triangle, duplicates summed).
Eigen::MatrixXd denseLaplacian(const CFMatt& m, int nnz, int pixels) {
    Eigen::MatrixXd L = Eigen::MatrixXd::Zero(pixels, pixels);
    for (int k = 0; k < nnz; ++k) {
        const int i = m.tripRow[k], j = m.tripCol[k];
        EXPECT_LE(i, j);
        L(i, j) -= m.tripVal[k];
        if (i != j) L(j, i) -= m.tripVal[k];
    }
    for (int i = 0; i < pixels; ++i) L(i, i) += m.diagSum[i];
    return L;
}

// Random pictures (one known centre skipped): 45 triplets per unknown centre,
// zero row sums and no negative eigenvalue; a window of one colour gives
// affinities of exactly one ninth.
TEST(Laplacian, ZeroRowSumsSemidefiniteAndFlatWindows) {
    for (unsigned seed : {0u, 1u, 2u, 3u}) {
        const int w = seed ? 7 + static_cast<int>(seed) : 3, h = seed ? 6 : 3;
        BytePlanes img(w, h);
        img.fillRandom(seed);
        if (!seed)
            for (int c = 0; c < 3; ++c) img.plane(c).setTo(40 + 70 * c);
        GIMG<unsigned char> map(w, h);
        fillMap(map, 0);
        if (seed) *imgPtr(map, 2, 2) = 255;
        CFMatt m;
        int nnz = 0;
        ASSERT_EQ(m.compMatLap(map, img.ptrs, img.step(), nnz), 0);
        ASSERT_EQ(nnz, ((w - 2) * (h - 2) - (seed ? 1 : 0)) * 45);
        const Eigen::MatrixXd L = denseLaplacian(m, nnz, w * h);
        EXPECT_LT((L * Eigen::VectorXd::Ones(w * h)).cwiseAbs().maxCoeff(), 1e-4);
        Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(L);
        EXPECT_GT(es.eigenvalues().minCoeff(), -1e-3 * es.eigenvalues().maxCoeff());
        for (int k = 0; k < nnz && !seed; ++k)
            EXPECT_EQ(m.tripVal[k], static_cast<float>(1.0 / 9.0));
    }
    int idx[9];
    CFMatt::winIdx(4, 3, 10, idx);
    EXPECT_EQ(std::vector<int>(idx, idx + 9),
              (std::vector<int>{23, 24, 25, 33, 34, 35, 43, 44, 45}));
}

// Planar bytes, interleaved bytes in a wider row and float planes.
TEST(Laplacian, ThreeLayoutsGiveTheSameTriplets) {
    const int w = 9, h = 7;
    BytePlanes img(w, h);
    img.fillRandom(5);
    cv::Mat rgb(h, w + 2, CV_8UC3);
    FloatPlanes f(w, h);
    cv::Mat planes[3];
    for (int c = 0; c < 3; ++c) {
        planes[c] = img.plane(c);
        img.plane(c).convertTo(matOf(*f.p[c]), CV_32F, 1.0 / 255);
    }
    cv::merge(planes, 3, rgb.colRange(0, w));
    GIMG<unsigned char> map(w, h);
    fillMap(map, 0);
    CFMatt a, b, c;
    int na = 0, nb = 0, nc = 0;
    ASSERT_EQ(a.compMatLap(map, img.ptrs, img.step(), na), 0);
    ASSERT_EQ(b.compMatLap(map, rgb.data, static_cast<int>(rgb.step), nb), 0);
    ASSERT_EQ(c.compMatLap(map, f.p, nc), 0);
    ASSERT_EQ(na, nb);
    ASSERT_EQ(na, nc);
    for (int k = 0; k < na; ++k) {
        EXPECT_EQ(a.tripVal[k], b.tripVal[k]);
        EXPECT_NEAR(a.tripVal[k], c.tripVal[k], 1e-3f * std::max(1.0f, std::fabs(a.tripVal[k])));
        EXPECT_EQ(a.tripRow[k], c.tripRow[k]);
        EXPECT_EQ(a.tripCol[k], c.tripCol[k]);
    }
}

TEST(Laplacian, NoUnknownCentreReturnsFourAndCapacityGuardThrows) {
    CFMatt m;
    GIMG<unsigned char> known(6, 5);
    fillMap(known, 255);
    *imgPtr(known, 0, 0) = 0;  // frame pixels are never centres
    BytePlanes img(6, 5);
    int nnz = 7;
    EXPECT_EQ(m.compMatLap(known, img.ptrs, img.step(), nnz), kMattNothingToSolve);
    EXPECT_LE(nnz, 0);
    EXPECT_FALSE(m.tripVal);
    // 81 entries per unknown centre: this map needs more than 400 million.
    GIMG<unsigned char> big(2240, 2240);
    fillMap(big, 0);
    int code = 0;
    try {
        m.compMatLap(big, img.ptrs, img.step(), nnz);
    } catch (int c) {
        code = c;
    }
    EXPECT_EQ(code, kMattTooLarge);
}

TEST(ConstraintMaps, CompMapMasksAndStretch) {
    CFMatt m;
    GIMG<unsigned char> map(4, 1), bg(4, 1), fg(4, 1);
    const unsigned char in[4] = {0, 100, 255, 7};
    for (int x = 0; x < 4; ++x) *imgPtr(map, x, 0) = in[x];
    m.compMap(true, map, bg, fg);  // default codes: the map stays as it is
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(*imgPtr(map, x, 0), in[x]);
        EXPECT_EQ(*imgPtr(bg, x, 0), (in[x] == 0 || in[x] == 255) ? 255 : 0);
        EXPECT_EQ(*imgPtr(fg, x, 0), in[x] == 255 ? 255 : 0);
    }
    m.lowCode = 10;
    m.highCode = 200;
    const unsigned char in2[4] = {10, 105, 220, 5};
    for (int x = 0; x < 4; ++x) *imgPtr(map, x, 0) = in2[x];
    m.compMap(true, map, bg, fg);
    EXPECT_EQ(*imgPtr(map, 0, 0), 0);
    // The integer k leaves the high code itself just short of 255 (190 * 85 /
    // 64 = 252), so only values a little above it become foreground.
    EXPECT_NEAR(*imgPtr(map, 1, 0), 95 * 85 / 64.0, 0.5 + 1e-9);  // k = 16320 / 190 = 85
    EXPECT_EQ(*imgPtr(map, 2, 0), 255);                           // 210 * 85 / 64 saturates
    EXPECT_EQ(*imgPtr(bg, 1, 0), 0);
    EXPECT_EQ(*imgPtr(bg, 3, 0), 255);
    EXPECT_EQ(*imgPtr(fg, 2, 0), 255);
    EXPECT_EQ(*imgPtr(fg, 0, 0), 0);
}

TEST(ConstraintMaps, ErodeGrowsUnknownByOnePixelWithReplicatedEdges) {
    CFMatt m;
    GIMG<unsigned char> map(7, 6);
    fillMap(map, 255);
    *imgPtr(map, 3, 2) = *imgPtr(map, 0, 5) = 0;
    cv::Mat want;
    cv::erode(matOf(map), want, cv::Mat(), cv::Point(-1, -1), 1, cv::BORDER_REPLICATE);
    m.ErodeMap3x3(map);
    EXPECT_EQ(cv::countNonZero(matOf(map) != want), 0);
}

}  // namespace
