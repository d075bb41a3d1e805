// The matrix-free Laplacian against the assembly's window arithmetic: the same
// rows for every variable pixel, on random colours with a flat patch (where
// the window inverses are largest) and random variables; and the held solve
// converges to L x = 0 on the variables without moving a held pixel.
#include "matting/window_laplacian.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "matting/cfmatt.h"
#include "matting/held_laplacian_cg.h"
#include "matting/laplacian_window.h"

namespace {

struct Tile {
    int w, h;
    std::vector<unsigned char> bgrx, rgb, vars;
    Tile(int width, int height, unsigned seed) : w(width), h(height) {
        std::mt19937 rng(seed);
        bgrx.resize(4 * w * h);
        rgb.resize(3 * w * h);
        vars.assign(w * h, 0);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const int i = y * w + x;
                const bool flat = x < w / 3;
                for (int c = 0; c < 3; ++c) {
                    const int v = flat ? 90 : static_cast<int>(rng() % 256);
                    bgrx[4 * i + c] = rgb[3 * i + c] = static_cast<unsigned char>(v);
                }
                if (x >= 2 && y >= 2 && x < w - 2 && y < h - 2) vars[i] = rng() % 3 != 0;
            }
    }
    bool windowHoldsVariable(int x, int y) const {
        bool any = false;
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) any = any || vars[(y + dy) * w + x + dx];
        return any;
    }
    std::vector<int> rows() const {
        std::vector<int> r;
        for (int i = 0; i < w * h; ++i)
            if (vars[i]) r.push_back(i);
        return r;
    }
};

TEST(WindowLaplacian, RowsEqualTheAssembledLaplacian) {
    for (unsigned seed : {1u, 2u, 3u}) {
        const Tile t(14, 11, seed);
        const double eps = CFMatt().epsilon;
        std::mt19937 rng(seed + 10);
        std::uniform_real_distribution<double> u(0.0, 1.0);
        std::vector<double> p(t.w * t.h);
        for (double& v : p) v = u(rng);
        // Slow reference: each window's 9 x 9 affinities from the assembly's
        // own window arithmetic, (L p)_i = sum over windows of (p_i - (W p)_i).
        std::vector<double> ref(t.w * t.h, 0.0);
        for (int y = 1; y < t.h - 1; ++y)
            for (int x = 1; x < t.w - 1; ++x) {
                if (!t.windowHoldsVariable(x, y)) continue;
                int idx[kWinPixels];
                CFMatt::winIdx(x, y, t.w, idx);
                double X[kWinValues], W[kWinEntries];
                for (int a = 0; a < kWinPixels; ++a)
                    for (int c = 0; c < 3; ++c) X[c * 9 + a] = t.rgb[3 * idx[a] + c] / 255.0;
                windowAffinities(X, eps, W);
                for (int a = 0; a < kWinPixels; ++a) {
                    double wp = 0.0;
                    for (int b = 0; b < kWinPixels; ++b) wp += W[a * 9 + b] * p[idx[b]];
                    ref[idx[a]] += p[idx[a]] - wp;
                }
            }

        const WindowLaplacian op(t.bgrx.data(), 4 * t.w, t.vars.data(), t.w, t.h, eps);
        const std::vector<int> rows = t.rows();
        std::vector<double> lp(rows.size()), scratch;
        op.apply(p.data(), rows, lp.data(), scratch);
        const std::vector<double> diag = op.diagonal(rows);
        std::vector<double> e(t.w * t.h, 0.0), col(rows.size());
        for (size_t r = 0; r < rows.size(); ++r) {
            const int i = rows[r];
            EXPECT_NEAR(lp[r], ref[i], 1e-6 * (1.0 + std::abs(ref[i])))
                << "seed " << seed << " pixel " << i;
            // The diagonal is the row's product with the unit vector.
            e[i] = 1.0;
            op.apply(e.data(), rows, col.data(), scratch);
            e[i] = 0.0;
            EXPECT_NEAR(diag[r], col[r], 1e-9 * (1.0 + std::abs(col[r])));
        }
    }
}

TEST(WindowLaplacian, HeldSolveReachesTheExactSolution) {
    const Tile t(16, 12, 5);
    const WindowLaplacian op(t.bgrx.data(), 4 * t.w, t.vars.data(), t.w, t.h, 1e-7);
    const std::vector<int> rows = t.rows();
    std::vector<double> alpha(t.w * t.h);
    for (int i = 0; i < t.w * t.h; ++i) alpha[i] = (i % t.w) / double(t.w - 1);
    std::vector<double> start = alpha;
    const HeldSolveStats s = solveHeldLaplacian(op, rows, alpha, 2000, 1e-12);
    EXPECT_LT(s.endResidual, 1e-10 * (1.0 + s.startResidual));
    // Held pixels never move; at the solution every variable row of L x is 0.
    std::vector<double> lx(rows.size()), scratch;
    op.apply(alpha.data(), rows, lx.data(), scratch);
    for (double v : lx) EXPECT_NEAR(v, 0.0, 1e-8);
    for (int i = 0; i < t.w * t.h; ++i) {
        if (!t.vars[i]) {
            EXPECT_EQ(alpha[i], start[i]);
        }
    }
}

}  // namespace
