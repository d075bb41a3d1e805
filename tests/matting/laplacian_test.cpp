// Matting Laplacian: the assembled L against the properties that define it,
// window gathering, the capacity guards and the constraint maps.
#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <map>

#include "matting/cfmatt.h"
#include "matting_test_support.h"

namespace {

// Dense L = D - W from the triplets (upper triangle, duplicates summed).
Eigen::MatrixXd denseLaplacian(const CFMatt& m, int nnz, int pixels) {
    Eigen::MatrixXd W = Eigen::MatrixXd::Zero(pixels, pixels);
    for (int k = 0; k < nnz; ++k) {
        const int i = m.tripRow[k], j = m.tripCol[k];
        EXPECT_LE(i, j);
        W(i, j) += m.tripVal[k];
        if (i != j) W(j, i) += m.tripVal[k];
    }
    Eigen::MatrixXd L = -W;
    for (int i = 0; i < pixels; ++i) L(i, i) += m.diagSum[i];
    return L;
}

TEST(Laplacian, SymmetricZeroRowSumsAndSemidefiniteOnRandomImages) {
    for (unsigned seed : {1u, 2u, 3u}) {
        const int w = 7 + static_cast<int>(seed), h = 6;
        BytePlanes img(w, h);
        img.fillRandom(seed);
        GIMG<unsigned char> map(w, h);
        fillMap(map, 0);
        *imgPtr(map, 2, 2) = 255;  // one known centre is skipped
        CFMatt m;
        int nnz = 0;
        ASSERT_EQ(m.compMatLap(map, img.ptrs, img.step(), nnz), 0);
        const int centres = (w - 2) * (h - 2) - 1;
        EXPECT_EQ(nnz, centres * 45);
        const Eigen::MatrixXd L = denseLaplacian(m, nnz, w * h);
        // Built from the upper triangle, so symmetry holds by construction;
        // the zero row sums and the spectrum test the values.
        const Eigen::VectorXd rowSums = L * Eigen::VectorXd::Ones(w * h);
        EXPECT_LT(rowSums.cwiseAbs().maxCoeff(), 1e-4);
        Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(L);
        EXPECT_GT(es.eigenvalues().minCoeff(), -1e-3 * es.eigenvalues().maxCoeff());
    }
}

TEST(Laplacian, ConstantColourWindowGivesAffinitiesOfOneNinth) {
    BytePlanes img(3, 3);
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 3; ++x) img.at(c, x, y) = static_cast<unsigned char>(40 + 70 * c);
    GIMG<unsigned char> map(3, 3);
    fillMap(map, 0);
    CFMatt m;
    int nnz = 0;
    ASSERT_EQ(m.compMatLap(map, img.ptrs, img.step(), nnz), 0);
    ASSERT_EQ(nnz, 45);
    for (int k = 0; k < nnz; ++k) EXPECT_EQ(m.tripVal[k], static_cast<float>(1.0 / 9.0));
    for (int i = 0; i < 9; ++i) EXPECT_NEAR(m.diagSum[i], 1.0f, 1e-6f);
}

TEST(Laplacian, ThreeLayoutsGiveTheSameTriplets) {
    const int w = 9, h = 7;
    BytePlanes img(w, h);
    img.fillRandom(5);
    std::vector<unsigned char> rgb(static_cast<size_t>(w) * 3 * h + 5);
    GIMG<float> f0(w, h), f1(w, h), f2(w, h);
    GIMG<float>* fp[3] = {&f0, &f1, &f2};
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c) {
                rgb[y * w * 3 + x * 3 + c] = img.at(c, x, y);
                *imgPtr(*fp[c], x, y) = static_cast<float>(img.at(c, x, y) * (1.0 / 255));
            }
    GIMG<unsigned char> map(w, h);
    fillMap(map, 0);
    CFMatt a, b, c;
    int na = 0, nb = 0, nc = 0;
    ASSERT_EQ(a.compMatLap(map, img.ptrs, img.step(), na), 0);
    ASSERT_EQ(b.compMatLap(map, rgb.data(), w * 3, nb), 0);
    ASSERT_EQ(c.compMatLap(map, fp, nc), 0);
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
    try {
        m.compMatLap(big, img.ptrs, img.step(), nnz);
        FAIL() << "no throw";
    } catch (int code) {
        EXPECT_EQ(code, kMattTooLarge);
    }
}

TEST(Laplacian, WindowIndicesAndGatherers) {
    int idx[9];
    CFMatt::winIdx(4, 3, 10, idx);
    const int want[9] = {23, 24, 25, 33, 34, 35, 43, 44, 45};
    for (int k = 0; k < 9; ++k) EXPECT_EQ(idx[k], want[k]);
    // Three rows of 12 bytes (four pixels); the window is the first three.
    unsigned char rgb[3][12];
    for (int i = 0; i < 36; ++i) rgb[i / 12][i % 12] = static_cast<unsigned char>(i * 7);
    double d[27];
    CFMatt::copy3x3C3(rgb[0], 12 - 9, d);
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k)
            for (int c = 0; c < 3; ++c)
                EXPECT_DOUBLE_EQ(d[c * 9 + r * 3 + k], rgb[r][3 * k + c] * 0.00392156862745098);
    float plane[3][5];
    for (int i = 0; i < 15; ++i) plane[i / 5][i % 5] = static_cast<float>(i);
    double pd[9];
    CFMatt::copy3x3(plane[0], 5 - 3, pd);
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k) EXPECT_EQ(pd[r * 3 + k], plane[r][k]);
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
    *imgPtr(map, 3, 2) = 0;
    *imgPtr(map, 0, 5) = 0;
    m.ErodeMap3x3(map);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 7; ++x) {
            const bool nearA = std::abs(x - 3) <= 1 && std::abs(y - 2) <= 1;
            const bool nearB = x <= 1 && y >= 4;
            EXPECT_EQ(*imgPtr(map, x, y), (nearA || nearB) ? 0 : 255) << x << "," << y;
        }
}

}  // namespace
