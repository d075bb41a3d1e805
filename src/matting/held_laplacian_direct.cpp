// Assembly and direct solve of a tile's held Laplacian system.
#include "matting/held_laplacian_direct.h"

#include <algorithm>
#include <cstddef>
#include <utility>

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
// Held partners of a variable lie anywhere in its 5x5 neighbourhood.
constexpr int kAround = (2 * kReach + 1) * (2 * kReach + 1);
int aroundSlot(int dx, int dy) {
    return (dy + kReach) * (2 * kReach + 1) + dx + kReach;
}
}  // namespace

HeldSystem::HeldSystem(const WindowLaplacian& op, std::vector<int> rows, std::vector<double> weight)
    : rows_(std::move(rows)), weight_(std::move(weight)) {
    const int w = op.width(), h = op.height();
    const int n = static_cast<int>(rows_.size());
    if (n == 0) return;
    std::vector<int> var(static_cast<size_t>(w) * h, -1);
    for (int v = 0; v < n; ++v) var[rows_[v]] = v;

    // L = sum over windows of (delta - W^k); a held partner b of a variable a
    // moves W^k_ab alpha_b to the right-hand side, summed here per pair and
    // applied when the held values are known.
    std::vector<double> upper(static_cast<size_t>(n) * kUpper, 0.0);
    std::vector<double> held(static_cast<size_t>(n) * kAround, 0.0);
    for (size_t v = 0; v < weight_.size(); ++v) upper[v * kUpper] = weight_[v];
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
                const int dx = b % kSide - a % kSide, dy = b / kSide - a / kSide;
                if (vb < 0) {
                    held[static_cast<size_t>(va) * kAround + aroundSlot(dx, dy)] +=
                        blk[a * kWin + b];
                } else if (vb >= va) {
                    row[upperSlot(dx, dy)] -= blk[a * kWin + b];
                }
            }
        }
    }

    // One-based upper CSR, diagonal first, columns rising with pixel order.
    std::vector<int> ia(n + 1), ja;
    std::vector<double> a;
    ja.reserve(static_cast<size_t>(n) * kUpper);
    a.reserve(static_cast<size_t>(n) * kUpper);
    heldStart_.resize(n + 1);
    for (int v = 0; v < n; ++v) {
        ia[v] = static_cast<int>(ja.size()) + 1;
        heldStart_[v] = static_cast<int>(heldPixel_.size());
        const int p = rows_[v], x = p % w, y = p / w;
        for (int dy = -kReach; dy <= kReach; ++dy)
            for (int dx = -kReach; dx <= kReach; ++dx) {
                const int xb = x + dx, yb = y + dy;
                if (xb < 0 || xb >= w || yb < 0 || yb >= h) continue;
                const int pb = yb * w + xb;
                const int vb = var[pb];
                if (vb < 0) {
                    const double coef = held[static_cast<size_t>(v) * kAround + aroundSlot(dx, dy)];
                    if (coef == 0.0) continue;
                    heldPixel_.push_back(pb);
                    heldCoef_.push_back(coef);
                } else if (dy > 0 || (dy == 0 && dx >= 0)) {
                    ja.push_back(vb + 1);
                    a.push_back(upper[static_cast<size_t>(v) * kUpper + upperSlot(dx, dy)]);
                }
            }
    }
    ia[n] = static_cast<int>(ja.size()) + 1;
    heldStart_[n] = static_cast<int>(heldPixel_.size());
    upper = {};
    held = {};
    // Tiles are grid-like throughout: the dissection beat minimum degree on
    // every tile measured, and trying both doubled the analysis.
    const std::vector<int> perm = gridNestedDissection(var.data(), w, h, n);
    factor_.emplace(n, a.data(), ia.data(), ja.data(), perm.data());
}

void HeldSystem::solve(std::vector<double>& alpha) {
    const int n = variables();
    if (n == 0) return;
    std::vector<double> rhs(n, 0.0);
    for (int v = 0; v < n; ++v) {
        double r = weight_.empty() ? 0.0 : weight_[v] * alpha[rows_[v]];
        for (int e = heldStart_[v]; e < heldStart_[v + 1]; ++e)
            r += heldCoef_[e] * alpha[heldPixel_[e]];
        rhs[v] = r;
    }
    factor_->solve(rhs.data());
    for (int v = 0; v < n; ++v) alpha[rows_[v]] = rhs[v];
}

void solveHeldLaplacianDirect(const WindowLaplacian& op, const std::vector<int>& rows,
                              const std::vector<double>& weight, std::vector<double>& alpha) {
    HeldSystem(op, rows, weight).solve(alpha);
}
