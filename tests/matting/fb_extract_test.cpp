// Foreground / background extraction of one tile: the normal matrix against a
// dense product, recovery of known smooth layers from their composite, the
// exact picture where alpha is whole, and any alpha solved inside the region
// only.
#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>
#include <vector>

#include "matting/cfmatt.h"
#include "matting/csr_normal.h"
#include "matting_test_support.h"

namespace {

TEST(CsrNormal, MatchesDenseProductWithEmptyColumnsAndRows) {
    const int rows = 23, cols = 17;
    cv::RNG rng(11);
    Eigen::MatrixXd D = Eigen::MatrixXd::Zero(rows, cols);
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < cols; ++c)
            // Every fifth row and columns 3 and 11 stay empty.
            if (r % 5 != 4 && c != 3 && c != 11 && rng.uniform(0, 4) == 0)
                D(r, c) = rng.uniform(-100, 100) / 16.0;
    const DenseCsr<float> csr(D, false);
    CsrMatrix A;
    A.rows = rows, A.cols = cols, A.a = csr.a, A.ia = csr.ia, A.ja = csr.ja;

    const CsrMatrix N = csrNormalUpper(A);
    const Eigen::MatrixXd ref = D.transpose() * D;
    ASSERT_EQ(N.rows, cols);
    Eigen::MatrixXd got = Eigen::MatrixXd::Zero(cols, cols);
    for (int r = 0; r < cols; ++r) {
        ASSERT_LT(N.ia[r], N.ia[r + 1]) << "row " << r << " lacks its diagonal";
        EXPECT_EQ(N.ja[N.ia[r] - 1], r + 1);
        for (int k = N.ia[r] - 1; k < N.ia[r + 1] - 1; ++k) {
            ASSERT_TRUE(k == N.ia[r] - 1 || N.ja[k] > N.ja[k - 1]) << "row " << r;
            got(r, N.ja[k] - 1) = N.a[k];
        }
    }
    EXPECT_LT((got - Eigen::MatrixXd(ref.triangularView<Eigen::Upper>())).cwiseAbs().maxCoeff(),
              1e-3);

    Eigen::MatrixXd b(rows, 2);
    for (int k = 0; k < 2 * rows; ++k) b(k) = rng.uniform(-4, 5);
    const std::vector<float> atb =
        csrTransposeTimes(A, std::vector<float>(b.data(), b.data() + 2 * rows), 2);
    const Eigen::MatrixXd e = D.transpose() * b;
    for (int k = 0; k < 2 * cols; ++k) EXPECT_NEAR(atb[k], e(k), 1e-3);
}

// A tile whose colours come from known smooth layers, I = a F + (1 - a) B,
// over hair-like strands on a soft edge (alpha changes often).
struct LayeredTile {
    int w, h;
    BytePlanes planes;
    GIMG<unsigned char> alpha;
    std::vector<float> layer[2];  // foreground, background: 3 x w x h, 0..255
    LayeredTile(int w_, int h_) : w(w_), h(h_), planes(w_, h_), alpha(w_, h_) {
        for (auto& l : layer) l.resize(3 * w * h);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const double edge = std::clamp((x - w * 0.3) / (w * 0.4), 0.0, 1.0);
                const double strands = 0.5 + 0.5 * std::sin(x * 0.9 + 0.35 * y);
                const double av =
                    std::clamp(edge * (0.35 + 0.65 * strands) + 0.5 * edge * edge, 0.0, 1.0);
                *imgPtr(alpha, x, y) = static_cast<unsigned char>(std::lround(av * 255));
                const double ar = *imgPtr(alpha, x, y) / 255.0;
                for (int c = 0; c < 3; ++c) {
                    const size_t i = (static_cast<size_t>(c) * h + y) * w + x;
                    layer[0][i] = static_cast<float>(170 + 50 * std::sin(0.05 * x + c) +
                                                     20 * std::cos(0.04 * y));
                    layer[1][i] = static_cast<float>(60 + 40 * std::cos(0.03 * y + 2 * c) +
                                                     15 * std::sin(0.06 * x));
                    planes.at(c, x, y) = static_cast<unsigned char>(
                        std::lround(ar * layer[0][i] + (1 - ar) * layer[1][i]));
                }
            }
    }
};

// Errors weighted by how much a layer shows, against the naive answer (the
// picture): the foreground four times better and, where it shows at least
// 30%, never 25 levels off; the background three times better.
TEST(CompFBExtract, LayersOfASmoothCompositeAreRecovered) {
    for (const bool background : {false, true}) {
        SCOPED_TRACE(background ? "background" : "foreground");
        LayeredTile t(64, 48);
        cv::Mat picture[3];
        for (int c = 0; c < 3; ++c) picture[c] = t.planes.plane(c).clone();
        CFMatt matt;
        ASSERT_EQ(matt.CompFBExtract(t.planes.views, background, &t.alpha), 1);
        double err = 0, naive = 0, worst = 0;
        for (int c = 0; c < 3; ++c)
            for (int y = 0; y < t.h; ++y)
                for (int x = 0; x < t.w; ++x) {
                    const int a = *imgPtr(t.alpha, x, y);
                    if (a == 0 || a == 255) continue;
                    const double shows = background ? 1.0 - a / 255.0 : a / 255.0;
                    const double truth =
                        t.layer[background][(static_cast<size_t>(c) * t.h + y) * t.w + x];
                    const double off = std::fabs(t.planes.at(c, x, y) - truth);
                    err += shows * off;
                    naive += shows * std::fabs(picture[c].at<unsigned char>(y, x) - truth);
                    if (shows > 0.3) worst = std::max(worst, off);
                }
        EXPECT_LT(err * (background ? 3 : 4), naive) << "recovered " << err << " naive " << naive;
        if (!background) {
            EXPECT_LT(worst, 25.0);
        }
    }
}

// Mixed, uniform, random and nearly singular alphas (one fractional pixel
// among zeros; a constant fractional alpha) in the region of a larger block:
// the picture is kept exactly where alpha is 255 and outside the region,
// and left whole when no alpha is fractional.
TEST(CompFBExtract, AnyAlphaSolvesInsideTheRegionOnly) {
    const int w = 31, h = 22, pad = 3;
    enum Fill { kMixed, kAllZero, kAllOne, kRandom, kOneFractional, kConstant };
    for (const Fill fill : {kMixed, kAllZero, kAllOne, kRandom, kOneFractional, kConstant}) {
        SCOPED_TRACE(fill);
        BytePlanes planes(w + 2 * pad, h + 2 * pad);
        GIMG<unsigned char> alpha(w + 2 * pad, h + 2 * pad);
        planes.fillRandom(20 + fill);
        cv::RNG rng(fill);
        cv::Mat a = matOf(alpha);
        rng.fill(a, cv::RNG::UNIFORM, 0, 256);
        if (fill == kMixed) {
            a.setTo(255, a < 85);
            a.setTo(0, (a > 170) & (a < 255));
        }
        if (fill != kMixed && fill != kRandom)
            a.setTo(fill == kAllOne ? 255 : (fill == kConstant ? 77 : 0));
        if (fill == kOneFractional) a.at<unsigned char>(pad + 6, pad + 5) = 140;
        cv::Mat before[3];
        for (int c = 0; c < 3; ++c) before[c] = planes.plane(c).clone();
        for (int c = 0; c < 3; ++c) planes.views[c]->roiRect(pad, pad, -pad, -pad);
        alpha.roiRect(pad, pad, -pad, -pad);
        CFMatt matt;
        const bool nothing = fill == kAllZero || fill == kAllOne;
        ASSERT_EQ(matt.CompFBExtract(planes.views, false, &alpha),
                  nothing ? kMattNothingToSolve : 1);
        for (int c = 0; c < 3; ++c) planes.views[c]->restoreRect();
        alpha.restoreRect();
        const cv::Rect region(pad, pad, w, h);
        cv::Mat mustKeep(a.size(), CV_8UC1, cv::Scalar(255));
        if (!nothing) mustKeep(region).setTo(0, a(region) != 255);
        int changed = 0;
        for (int c = 0; c < 3; ++c) {
            EXPECT_EQ(cv::norm(planes.plane(c), before[c], cv::NORM_INF, mustKeep), 0) << c;
            changed += cv::countNonZero(planes.plane(c) != before[c]);
        }
        if (fill == kMixed) {
            EXPECT_GT(changed, 0);  // the fractional pixels were solved
        }
    }
}

}  // namespace
