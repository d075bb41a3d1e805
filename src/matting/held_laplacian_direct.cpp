// Assembly and direct solve of a tile's held Laplacian system.
#include "matting/held_laplacian_direct.h"

#include <algorithm>
#include <cstddef>

#include "matting/direct_solver.h"
#include "matting/grid_ordering.h"

namespace {
// Pixels of a 3x3 window, and its side.
constexpr int kWin = 9;
constexpr int kSide = 3;
// Two pixels of a row couple when some 3x3 window holds both: at most two
// pixels apart in x and y. In row-major order the upper triangle of a row is
// the pixel itself, two to its right, and the 5 x 2 block of the next two rows.
constexpr int kReach = 2;
constexpr int kUpper = 1 + kReach + (2 * kReach + 1) * kReach;

// Slot of the coupling from pixel a to pixel b (b at or after a in row-major
// order, dx = xb - xa, dy = yb - ya) in a row's kUpper values.
int upperSlot(int dx, int dy) {
    return dy == 0 ? dx : 1 + kReach + (dy - 1) * (2 * kReach + 1) + dx + kReach;
}
}  // namespace

void solveHeldLaplacianDirect(const WindowLaplacian& op, const std::vector<int>& rows,
                              const std::vector<double>& weight, std::vector<double>& alpha) {
    const int w = op.width(), h = op.height();
    const int n = static_cast<int>(rows.size());
    if (n == 0) return;
    std::vector<int> var(static_cast<size_t>(w) * h, -1);
    for (int v = 0; v < n; ++v) var[rows[v]] = v;

    // L = sum over windows of (delta - W^k); a held partner b of a variable a
    // moves W^k_ab alpha_b to the right-hand side.
    std::vector<double> upper(static_cast<size_t>(n) * kUpper, 0.0);
    std::vector<double> rhs(n, 0.0);
    for (size_t v = 0; v < weight.size(); ++v) {
        upper[v * kUpper] = weight[v];
        rhs[v] = weight[v] * alpha[rows[v]];
    }
    double blk[kWin * kWin];
    int pix[kWin];
    for (int k = 0; k < op.windowCount(); ++k) {
        const int c = op.centre(k);
        for (int j = 0; j < kWin; ++j) pix[j] = c + (j / kSide - 1) * w + (j % kSide - 1);
        op.block(k, blk);
        for (int a = 0; a < kWin; ++a) {
            const int va = var[pix[a]];
            if (va < 0) continue;
            double* row = &upper[static_cast<size_t>(va) * kUpper];
            row[0] += 1.0;
            for (int b = 0; b < kWin; ++b) {
                const int vb = var[pix[b]];
                if (vb < 0) {
                    rhs[va] += blk[a * kWin + b] * alpha[pix[b]];
                } else if (vb >= va) {
                    row[upperSlot(b % kSide - a % kSide, b / kSide - a / kSide)] -=
                        blk[a * kWin + b];
                }
            }
        }
    }

    // One-based upper CSR, diagonal first, columns rising with pixel order.
    std::vector<int> ia(n + 1), ja;
    std::vector<double> a;
    ja.reserve(static_cast<size_t>(n) * kUpper);
    a.reserve(static_cast<size_t>(n) * kUpper);
    for (int v = 0; v < n; ++v) {
        ia[v] = static_cast<int>(ja.size()) + 1;
        const int p = rows[v], x = p % w, y = p / w;
        for (int dy = 0; dy <= kReach; ++dy)
            for (int dx = dy == 0 ? 0 : -kReach; dx <= kReach; ++dx) {
                const int xb = x + dx, yb = y + dy;
                if (xb < 0 || xb >= w || yb >= h) continue;
                const int vb = var[static_cast<size_t>(yb) * w + xb];
                if (vb < 0) continue;
                ja.push_back(vb + 1);
                a.push_back(upper[static_cast<size_t>(v) * kUpper + upperSlot(dx, dy)]);
            }
    }
    ia[n] = static_cast<int>(ja.size()) + 1;
    upper = {};

    std::vector<int> perm = gridNestedDissection(var.data(), w, h, n);
    if (pardisoSolverIC(n, a.data(), ia.data(), ja.data(), rhs.data(), nullptr, 1, kMtypeSymPosDef,
                        perm.data()) != 1)
        throw kErrSolverFactor;
    for (int v = 0; v < n; ++v) alpha[rows[v]] = rhs[v];
}
