// Foreground / background extraction of one tile: the normal matrix against a
// dense product, exact picture where alpha is whole, finite in-range colours
// for any alpha, and recovery of known smooth layers from their composite.
#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>
#include <random>
#include <vector>

#include "matting/cfmatt.h"
#include "matting/csr_normal.h"
#include "matting_test_support.h"

namespace {

TEST(CsrNormal, MatchesDenseProductWithEmptyColumnsAndRows) {
    std::mt19937 rng(11);
    const int rows = 23, cols = 17;
    Eigen::MatrixXd D = Eigen::MatrixXd::Zero(rows, cols);
    CsrMatrix A;
    A.rows = rows;
    A.cols = cols;
    for (int r = 0; r < rows; ++r) {
        A.ia.push_back(static_cast<int>(A.a.size()) + 1);
        if (r % 5 == 4) continue;  // an empty row
        for (int c = 0; c < cols; ++c) {
            // Columns 3 and 11 stay empty.
            if (c == 3 || c == 11 || rng() % 4 != 0) continue;
            const float v = static_cast<float>(static_cast<int>(rng() % 200) - 100) / 16.0f;
            D(r, c) = v;
            A.a.push_back(v);
            A.ja.push_back(c + 1);
        }
    }
    A.ia.push_back(static_cast<int>(A.a.size()) + 1);

    const CsrMatrix N = csrNormalUpper(A);
    const Eigen::MatrixXd ref = D.transpose() * D;
    ASSERT_EQ(N.rows, cols);
    Eigen::MatrixXd got = Eigen::MatrixXd::Zero(cols, cols);
    for (int r = 0; r < cols; ++r) {
        ASSERT_LT(N.ia[r], N.ia[r + 1]) << "row " << r << " lacks its diagonal";
        EXPECT_EQ(N.ja[N.ia[r] - 1], r + 1);
        for (int k = N.ia[r] - 1; k < N.ia[r + 1] - 1; ++k) {
            ASSERT_GE(N.ja[k], r + 1);
            if (k > N.ia[r] - 1) {
                ASSERT_GT(N.ja[k], N.ja[k - 1]);
            }
            got(r, N.ja[k] - 1) = N.a[k];
        }
    }
    for (int r = 0; r < cols; ++r)
        for (int c = r; c < cols; ++c) EXPECT_NEAR(got(r, c), ref(r, c), 1e-3) << r << "," << c;

    std::vector<float> b(static_cast<size_t>(rows) * 2);
    for (auto& v : b) v = static_cast<float>(rng() % 9) - 4.0f;
    const std::vector<float> atb = csrTransposeTimes(A, b, 2);
    for (int s = 0; s < 2; ++s) {
        Eigen::VectorXd bs(rows);
        for (int r = 0; r < rows; ++r) bs(r) = b[static_cast<size_t>(s) * rows + r];
        const Eigen::VectorXd e = D.transpose() * bs;
        for (int c = 0; c < cols; ++c)
            EXPECT_NEAR(atb[static_cast<size_t>(s) * cols + c], e(c), 1e-3);
    }
}

struct Tile {
    BytePlanes planes;
    GIMG<unsigned char> alpha;
    Tile(int w, int h) : planes(w, h), alpha(w, h) {}
    GIMG<unsigned char>* ptrs[3];
    GIMG<unsigned char>** p() {
        for (int c = 0; c < 3; ++c) ptrs[c] = planes.p[c].get();
        return ptrs;
    }
    unsigned char& a(int x, int y) { return *imgPtr(alpha, x, y); }
};

// A tile whose colours come from known smooth layers: I = a F + (1 - a) B.
struct LayeredTile : Tile {
    std::vector<float> fg, bg;  // 3 x w x h, 0..255
    LayeredTile(int w, int h) : Tile(w, h), fg(3 * w * h), bg(3 * w * h) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                // Hair-like strands over a soft edge: alpha changes often.
                const double edge = std::clamp((x - w * 0.3) / (w * 0.4), 0.0, 1.0);
                const double strands = 0.5 + 0.5 * std::sin(x * 0.9 + 0.35 * y);
                const double av =
                    std::clamp(edge * (0.35 + 0.65 * strands) + 0.5 * edge * edge, 0.0, 1.0);
                a(x, y) = static_cast<unsigned char>(std::lround(av * 255));
                const double ar = a(x, y) / 255.0;
                for (int c = 0; c < 3; ++c) {
                    const size_t i = (static_cast<size_t>(c) * h + y) * w + x;
                    fg[i] = static_cast<float>(170 + 50 * std::sin(0.05 * x + c) +
                                               20 * std::cos(0.04 * y));
                    bg[i] = static_cast<float>(60 + 40 * std::cos(0.03 * y + 2 * c) +
                                               15 * std::sin(0.06 * x));
                    planes.at(c, x, y) =
                        static_cast<unsigned char>(std::lround(ar * fg[i] + (1 - ar) * bg[i]));
                }
            }
    }
};

TEST(CompFBExtract, LayersOfASmoothCompositeAreRecovered) {
    const int w = 64, h = 48;
    LayeredTile t(w, h);
    std::vector<unsigned char> picture[3];
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) picture[c].push_back(t.planes.at(c, x, y));
    CFMatt matt;
    ASSERT_EQ(matt.CompFBExtract(t.p(), false, &t.alpha), 1);

    // Alpha-weighted error of F (what a composite over a new background
    // shows) against the naive F = picture.
    double err = 0, naive = 0, worst = 0;
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const double av = t.a(x, y) / 255.0;
                if (t.a(x, y) == 0 || t.a(x, y) == 255) continue;
                const double truth = t.fg[(static_cast<size_t>(c) * h + y) * w + x];
                err += av * std::fabs(t.planes.at(c, x, y) - truth);
                naive += av * std::fabs(picture[c][y * w + x] - truth);
                if (av > 0.3) worst = std::max(worst, std::fabs(t.planes.at(c, x, y) - truth));
            }
    EXPECT_LT(err * 4, naive) << "recovered " << err << " naive " << naive;
    // Where the foreground shows at least 30%, no colour is more than 25 levels off.
    EXPECT_LT(worst, 25.0);

    // The background layer, asked for, is close to the truth where it shows.
    LayeredTile tb(w, h);
    ASSERT_EQ(matt.CompFBExtract(tb.p(), true, &tb.alpha), 1);
    double berr = 0, bnaive = 0;
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                if (tb.a(x, y) == 0 || tb.a(x, y) == 255) continue;
                const double sv = 1.0 - tb.a(x, y) / 255.0;
                const double truth = tb.bg[(static_cast<size_t>(c) * h + y) * w + x];
                berr += sv * std::fabs(tb.planes.at(c, x, y) - truth);
                bnaive += sv * std::fabs(picture[c][y * w + x] - truth);
            }
    EXPECT_LT(berr * 3, bnaive);
}

TEST(CompFBExtract, WholeAlphaKeepsThePictureExactly) {
    const int w = 37, h = 29;
    Tile t(w, h);
    t.planes.fillRandom(5);
    std::mt19937 rng(3);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const unsigned r = rng() % 3;
            t.a(x, y) = r == 0 ? 255 : (r == 1 ? 0 : static_cast<unsigned char>(rng() % 256));
        }
    std::vector<unsigned char> before[3];
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) before[c].push_back(t.planes.at(c, x, y));
    CFMatt matt;
    ASSERT_EQ(matt.CompFBExtract(t.p(), false, &t.alpha), 1);
    int changed = 0;
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                if (t.a(x, y) == 255) {
                    ASSERT_EQ(t.planes.at(c, x, y), before[c][y * w + x]) << x << "," << y;
                }
                changed += t.planes.at(c, x, y) != before[c][y * w + x];
            }
    EXPECT_GT(changed, 0);  // the fractional pixels were solved
}

TEST(CompFBExtract, UniformAlphasLeaveThePicture) {
    for (unsigned char v : {0, 255}) {
        Tile t(20, 15);
        t.planes.fillRandom(9);
        fillMap(t.alpha, v);
        std::vector<unsigned char> before;
        for (int c = 0; c < 3; ++c)
            for (int y = 0; y < 15; ++y)
                for (int x = 0; x < 20; ++x) before.push_back(t.planes.at(c, x, y));
        CFMatt matt;
        EXPECT_EQ(matt.CompFBExtract(t.p(), false, &t.alpha), kMattNothingToSolve);
        size_t k = 0;
        for (int c = 0; c < 3; ++c)
            for (int y = 0; y < 15; ++y)
                for (int x = 0; x < 20; ++x) ASSERT_EQ(t.planes.at(c, x, y), before[k++]);
    }
}

// Random and nearly singular alphas (one fractional pixel among zeros; a
// constant fractional alpha) still solve; the region of interest inside a
// larger block is the only part written.
TEST(CompFBExtract, AnyAlphaSolvesInsideTheRegionOnly) {
    const int w = 31, h = 22, pad = 3;
    for (int mode = 0; mode < 3; ++mode) {
        Tile t(w + 2 * pad, h + 2 * pad);
        t.planes.fillRandom(20 + mode);
        std::mt19937 rng(mode);
        for (int y = 0; y < h + 2 * pad; ++y)
            for (int x = 0; x < w + 2 * pad; ++x)
                t.a(x, y) =
                    mode == 0 ? static_cast<unsigned char>(rng() % 256) : (mode == 1 ? 0 : 77);
        if (mode == 1) t.a(pad + 5, pad + 6) = 140;
        std::vector<unsigned char> before[3];
        for (int c = 0; c < 3; ++c)
            for (int y = 0; y < h + 2 * pad; ++y)
                for (int x = 0; x < w + 2 * pad; ++x) before[c].push_back(t.planes.at(c, x, y));
        GIMG<unsigned char>** full = t.p();
        for (int c = 0; c < 3; ++c) full[c]->roiRect(pad, pad, -pad, -pad);
        t.alpha.roiRect(pad, pad, -pad, -pad);
        CFMatt matt;
        ASSERT_EQ(matt.CompFBExtract(full, false, &t.alpha), 1) << mode;
        for (int c = 0; c < 3; ++c) full[c]->restoreRect();
        t.alpha.restoreRect();
        for (int c = 0; c < 3; ++c)
            for (int y = 0; y < h + 2 * pad; ++y)
                for (int x = 0; x < w + 2 * pad; ++x) {
                    const bool inside = x >= pad && x < pad + w && y >= pad && y < pad + h;
                    if (!inside) {
                        ASSERT_EQ(t.planes.at(c, x, y), before[c][y * (w + 2 * pad) + x]);
                    }
                }
    }
}

}  // namespace
