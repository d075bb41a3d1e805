// The tile's window blocks against the assembly's window arithmetic, on random
// colours with a flat patch (where the window inverses are largest) and random
// variables, the picture's edge included; and the held direct solve leaves
// L x = 0 on every variable row without moving a held pixel.
#include "matting/window_laplacian.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "matting/cfmatt.h"
#include "matting/held_laplacian_direct.h"
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
                vars[i] = rng() % 3 != 0;
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

// (L p)_i for every pixel from the assembly's own window arithmetic, over the
// windows that hold a variable.
std::vector<double> referenceProduct(const Tile& t, const std::vector<double>& p, double eps) {
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
    return ref;
}

TEST(WindowLaplacian, BlocksEqualTheAssembly) {
    for (unsigned seed : {1u, 2u, 3u}) {
        const Tile t(14, 11, seed);
        const double eps = CFMatt().epsilon;
        const WindowLaplacian op(t.bgrx.data(), 4 * t.w, t.vars.data(), t.w, t.h, eps);
        int active = 0;
        for (int y = 1; y < t.h - 1; ++y)
            for (int x = 1; x < t.w - 1; ++x) active += t.windowHoldsVariable(x, y);
        ASSERT_EQ(op.windowCount(), active);
        for (int k = 0; k < op.windowCount(); ++k) {
            const int x = op.centre(k) % t.w, y = op.centre(k) / t.w;
            ASSERT_TRUE(t.windowHoldsVariable(x, y));
            int idx[kWinPixels];
            CFMatt::winIdx(x, y, t.w, idx);
            double X[kWinValues], ref[kWinEntries], got[kWinEntries];
            for (int a = 0; a < kWinPixels; ++a)
                for (int c = 0; c < 3; ++c) X[c * 9 + a] = t.rgb[3 * idx[a] + c] / 255.0;
            windowAffinities(X, eps, ref);
            op.block(k, got);
            for (int e = 0; e < kWinEntries; ++e)
                EXPECT_NEAR(got[e], ref[e], 1e-6 * (1.0 + std::abs(ref[e])))
                    << "seed " << seed << " window " << k << " entry " << e;
        }
    }
}

TEST(WindowLaplacian, HeldDirectSolveZeroesEveryVariableRow) {
    const Tile t(16, 12, 5);
    const double eps = 1e-7;
    const WindowLaplacian op(t.bgrx.data(), 4 * t.w, t.vars.data(), t.w, t.h, eps);
    const std::vector<int> rows = t.rows();
    std::vector<double> alpha(t.w * t.h);
    for (int i = 0; i < t.w * t.h; ++i) alpha[i] = (i % t.w) / double(t.w - 1);
    const std::vector<double> start = alpha;
    solveHeldLaplacianDirect(op, rows, {}, alpha);
    const std::vector<double> lx = referenceProduct(t, alpha, eps);
    for (int i : rows) EXPECT_NEAR(lx[i], 0.0, 1e-6) << "pixel " << i;
    for (int i = 0; i < t.w * t.h; ++i) {
        if (!t.vars[i]) {
            EXPECT_EQ(alpha[i], start[i]);
        }
    }
}

}  // namespace
