// The alpha solve: triplets to one sparse system with soft constraints,
// solved directly or by conjugate gradient, and the result written back.
#include <algorithm>
#include <cmath>
#include <new>
#include <numeric>
#include <vector>

#include "matting/cfmatt.h"
#include "matting/cg_solver.h"
#include "matting/direct_solver.h"
#include "matting/grid_ordering.h"
#include "matting/laplacian_window.h"
#include "matting/matting_map_ops.h"

namespace {
// Loose and tight CG tolerances; the second run starts from the first result.
constexpr double kCgCoarseTol = 0.001;
constexpr double kCgFineTol = 1e-5;
// Iteration cap of each CG run (and never more than the unknowns).
constexpr int kCgMaxIter = 500;
constexpr double kByteMax = 255.0;
}  // namespace

void CFMatt::cleanMemAll() {
    tripVal.reset();
    diagSum.reset();
    tripRow.reset();
    tripCol.reset();
    spare.reset();
    varIndex.reset();
    lambda.reset();
    target.reset();
    solution.reset();
    tripletsMerged_ = false;
    mergedCount_ = 0;
}

void CFMatt::myThrow(int code) {
    cleanMemAll();
    throw code;
}

// Sorts the triplets by row, then each row's run by column (both stable, so
// equal pairs keep the order their windows added them in), and merges pairs
// that repeat by adding their values.
void CFMatt::sortAndMergeTriplets(int& nnz) {
    std::vector<int> order(static_cast<size_t>(std::max(nnz, 0)));
    std::iota(order.begin(), order.end(), 0);
    const int* row = tripRow.get();
    const int* col = tripCol.get();
    std::stable_sort(order.begin(), order.end(), [&](int p, int q) {
        return row[p] != row[q] ? row[p] < row[q] : col[p] < col[q];
    });
    auto val = allocOwnedArray<float>(nnz);
    auto r = allocOwnedArray<int>(nnz);
    auto c = allocOwnedArray<int>(nnz);
    if (!val || !r || !c) myThrow(kMattAllocFailed);
    int kept = 0;
    for (int k = 0; k < nnz; ++k) {
        const int s = order[k];
        if (kept > 0 && r[kept - 1] == row[s] && c[kept - 1] == col[s]) {
            val[kept - 1] += tripVal[s];
        } else {
            val[kept] = tripVal[s];
            r[kept] = row[s];
            c[kept] = col[s];
            ++kept;
        }
    }
    tripVal = std::move(val);
    tripRow = std::move(r);
    tripCol = std::move(c);
    nnz = kept;
    mergedCount_ = kept;
    tripletsMerged_ = true;
}

namespace {

// Upper one-based CSR of L + Lambda over the variables, and Lambda g. Walks the
// merged triplets in row order: a variable without triplets holds only its
// weight on the diagonal.
template <typename Real>
void buildSystem(const CFMatt& m, int pixels, int merged, Real* a, int* ia, int* ja, Real* rhs) {
    int t = 0;
    int pos = 0;
    int k = 0;
    for (int p = 0; p < pixels; ++p) {
        if (m.varIndex[p] < 0) continue;
        const double weight = m.lambda[k];
        ia[k] = pos + 1;
        if (t < merged && m.tripRow[t] == p) {
            for (; t < merged && m.tripRow[t] == p; ++t) {
                const int col = m.tripCol[t];
                if (col == p) {
                    a[pos] = static_cast<Real>(weight + m.diagSum[p] - m.tripVal[t]);
                    ja[pos] = k + 1;
                } else {
                    a[pos] = static_cast<Real>(-m.tripVal[t]);
                    ja[pos] = m.varIndex[col] + 1;
                }
                ++pos;
            }
        } else {
            a[pos] = static_cast<Real>(weight);
            ja[pos] = k + 1;
            ++pos;
        }
        rhs[k] = static_cast<Real>(weight * m.target[k] / kByteMax);
        ++k;
    }
    ia[k] = pos + 1;
}

}  // namespace

void CFMatt::solveDirect(int n, int width, int height, OwnedArray<float>& a, OwnedArray<int>& ia,
                         OwnedArray<int>& ja) {
    std::vector<int> perm = gridNestedDissection(varIndex.get(), width, height, n);
    tripVal.reset();
    tripRow.reset();
    tripCol.reset();
    diagSum.reset();
    varIndex.reset();
    // The solver writes the solution over the right-hand side; it needs no
    // separate workspace.
    const int r = pardisoSolver(n, a.get(), ia.get(), ja.get(), solution.get(), nullptr, 1,
                                kMtypeSymIndefinite, perm.data());
    if (r != 0) myThrow(r + kMattSolverCodeBase);
}

int CFMatt::alphaMain(int width, int height, int nnz, GIMG<unsigned char>& weights,
                      GIMG<unsigned char>& map, GIMG<unsigned char>& target) {
    if (!tripletsMerged_) sortAndMergeTriplets(nnz);
    const int merged = mergedCount_;

    ErodeMap3x3(map);
    const int known = static_cast<int>(sumOfMap(map, primStatus) / kByteMax + 0.4);
    const long long pixels = static_cast<long long>(width) * height;
    const long long nLong = pixels - known;
    if (nLong > kMaxSystemVariables) myThrow(kMattTooLarge);
    const int n = static_cast<int>(nLong);

    varIndex = allocOwnedArray<int>(pixels);
    lambda = allocOwnedArray<unsigned char>(n);
    this->target = allocOwnedArray<unsigned char>(n);
    solution = allocOwnedArray<float>(n);
    if (!varIndex || !lambda || !this->target || !solution) myThrow(kMattAllocFailed);
    int k = 0;
    for (int y = 0; y < height; ++y) {
        const unsigned char* m = imgPtr(map, 0, y);
        const unsigned char* wt = imgPtr(weights, 0, y);
        const unsigned char* tg = imgPtr(target, 0, y);
        for (int x = 0; x < width; ++x) {
            const long long p = static_cast<long long>(y) * width + x;
            if (m[x] != 0 || k >= n) {
                varIndex[p] = -1;
                continue;
            }
            varIndex[p] = k;
            lambda[k] = wt[x];
            this->target[k] = tg[x];
            ++k;
        }
    }

    // A row holds its triplets, or its diagonal alone.
    const long long entries = static_cast<long long>(merged) + n;
    auto ia = allocOwnedArray<int>(n + 1);
    auto ja = allocOwnedArray<int>(entries);
    if (!ia || !ja) myThrow(kMattAllocFailed);
    if (useDirectSolver) {
        auto a = allocOwnedArray<float>(entries);
        if (!a) myThrow(kMattAllocFailed);
        buildSystem(*this, static_cast<int>(pixels), merged, a.get(), ia.get(), ja.get(),
                    solution.get());
        solveDirect(n, width, height, a, ia, ja);
    } else {
        auto a = allocOwnedArray<double>(entries);
        auto rhs = allocOwnedArray<double>(n);
        auto x = allocOwnedArray<double>(n);
        auto work = allocOwnedArray<double>(4LL * n + 8);
        if (!a || !rhs || !x || !work) myThrow(kMattAllocFailed);
        buildSystem(*this, static_cast<int>(pixels), merged, a.get(), ia.get(), ja.get(),
                    rhs.get());
        for (int v = 0; v < n; ++v) x[v] = this->target[v] / kByteMax;
        tripVal.reset();
        tripRow.reset();
        tripCol.reset();
        diagSum.reset();
        varIndex.reset();
        const int cap = std::min(n, kCgMaxIter);
        cgSolver_jacobi(n, a.get(), ia.get(), ja.get(), rhs.get(), x.get(), work.get(), cap,
                        kCgCoarseTol);
        const int iters = cgSolver_jacobi(n, a.get(), ia.get(), ja.get(), rhs.get(), x.get(),
                                          work.get(), cap, kCgFineTol);
        if (iters < 0) myThrow(iters + kMattSolverCodeBase);
        for (int v = 0; v < n; ++v) solution[v] = static_cast<float>(x[v]);
    }
    tripletsMerged_ = false;
    mergedCount_ = 0;

    for (int v = 0; v < n; ++v) {
        // Clamped to 0..255; a NaN (which a solver that returned cannot give)
        // would fail both tests and become 0.
        const float s = solution[v] * static_cast<float>(kByteMax);
        solution[v] = s > kByteMax ? static_cast<float>(kByteMax) : (s >= 0.0f ? s : 0.0f);
    }
    return 0;
}

void CFMatt::outAlpha(float* sol, int width, int height, GIMG<unsigned char>& weights,
                      GIMG<unsigned char>& map, GIMG<unsigned char>& alpha) {
    int k = 0;
    for (int y = 0; y < height; ++y) {
        const unsigned char* m = imgPtr(map, 0, y);
        const unsigned char* wt = imgPtr(weights, 0, y);
        unsigned char* out = imgPtr(alpha, 0, y);
        for (int x = 0; x < width; ++x) {
            if (m[x] != 0) continue;
            const float v = sol[k++];
            if (wt[x] == 0) out[x] = static_cast<unsigned char>(static_cast<int>(v));
        }
    }
}
