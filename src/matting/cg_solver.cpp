// Conjugate gradient on the upper-triangle matting systems, built on Eigen's
// solver. The stopping test is relative to the residual of the start vector:
// the solve runs on the correction A d = b - A x0 from zero, so Eigen's test
// (residual below tol times the right-hand side) becomes exactly that.
#include "matting/cg_solver.h"

#include <Eigen/IterativeLinearSolvers>
#include <Eigen/SparseCore>
#include <cmath>
#include <vector>

#include "runtime/progress.h"

namespace {

// The host hears from a long iteration once every this many steps.
constexpr int kStepsPerKick = 21;

using RowMatrix = Eigen::SparseMatrix<double, Eigen::RowMajor, int>;
using ConstRowMatrixMap = Eigen::Map<const RowMatrix>;

// Kicks the progress counter as the iteration goes: the preconditioner is
// applied once per step, so it is where the steps can be counted.
template <typename Base>
class KickingPreconditioner : public Base {
  public:
    using Base::Base;
    template <typename Rhs>
    decltype(auto) solve(const Eigen::MatrixBase<Rhs>& r) const {
        if (++steps_ >= kStepsPerKick) {
            steps_ = 0;
            progressKick();
        }
        return Base::solve(r.derived());
    }

  private:
    mutable int steps_ = 0;
};

template <typename Preconditioner>
int conjugateGradient(int n, const double* a, const int* ia, const int* ja, const double* b,
                      double* x, double* work, int maxIter, double tol) {
    if (n < 1 || !a || !ia || !ja || !b || !x || !work || maxIter < 0 || ia[0] != 1)
        return kCgInvalidInput;
    const int nnz = ia[n] - 1;
    for (int r = 0; r < n; ++r)
        if (ia[r + 1] < ia[r]) return kCgInvalidInput;
    // Eigen reads zero-based indices.
    std::vector<int> outer(ia, ia + n + 1);
    std::vector<int> inner(ja, ja + nnz);
    for (int& v : outer) --v;
    for (int& v : inner) {
        if (v < 1 || v > n) return kCgInvalidInput;
        --v;
    }
    ConstRowMatrixMap A(n, n, nnz, outer.data(), inner.data(), a);
    const auto S = A.selfadjointView<Eigen::Upper>();

    Eigen::Map<Eigen::VectorXd> xv(x, n);
    Eigen::Map<const Eigen::VectorXd> bv(b, n);
    Eigen::Map<Eigen::VectorXd> r0(work, n);
    Eigen::Map<Eigen::VectorXd> d(work + n, n);
    r0 = bv - S * xv;

    Eigen::ConjugateGradient<RowMatrix, Eigen::Upper, Preconditioner> cg;  // reads A in place
    cg.setMaxIterations(maxIter);
    cg.setTolerance(tol);
    cg.compute(A);
    d = cg.solve(r0);
    if (!d.allFinite()) return kCgBreakdown;
    xv += d;
    return static_cast<int>(cg.iterations());
}

}  // namespace

int cgSolver_jacobi(int n, double* a, int* ia, int* ja, double* b, double* x, double* work,
                    int maxIter, double tol) {
    return conjugateGradient<KickingPreconditioner<Eigen::DiagonalPreconditioner<double>>>(
        n, a, ia, ja, b, x, work, maxIter, tol);
}

int cgSolver(int n, double* a, int* ia, int* ja, double* b, double* x, double* work, int maxIter,
             double tol) {
    return conjugateGradient<KickingPreconditioner<Eigen::IdentityPreconditioner>>(
        n, a, ia, ja, b, x, work, maxIter, tol);
}
