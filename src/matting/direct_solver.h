// Sparse direct solver front ends for the symmetric matting systems.
//
// Matrices come as one-based compressed sparse rows holding the upper triangle
// with the diagonal first in every row. The solution is written over b (x is
// workspace only). Phase failures are thrown as bare ints: 121 analysis, 122
// factorisation, 123 solve. Running out of memory is a result, not a throw.
#pragma once

#include <memory>

#include "api/keepcut.h"

// Thrown codes of the three phases.
inline constexpr int kErrSolverAnalysis = 121;
inline constexpr int kErrSolverFactor = 122;
inline constexpr int kErrSolverSolve = 123;

// Matrix types accepted (the symmetric ones): real symmetric positive definite
// and real symmetric indefinite; the matting driver passes the latter.
inline constexpr int kMtypeSymPosDef = 2;
inline constexpr int kMtypeSymIndefinite = -2;

// 0 on success, 1 when the solver ran out of memory (the inverse sense of
// pardisoSolverIC; callers treat non-zero as failure). perm, when given, is a
// fill-reducing ordering (perm[k] = variable eliminated k-th, zero-based) that
// competes with the solver's own minimum-degree ordering.
int pardisoSolver(int n, float* a, int* ia, int* ja, float* b, float* x, int nrhs, int mtype,
                  const int* perm = nullptr);

// In-core solve: 1 on success, 0 when memory ran out.
int pardisoSolverIC(int n, float* a, int* ia, int* ja, float* b, float* x, int nrhs, int mtype,
                    const int* perm = nullptr);
int pardisoSolverIC(int n, double* a, int* ia, int* ja, double* b, double* x, int nrhs, int mtype,
                    const int* perm = nullptr);

// A symmetric positive definite system factorised now and solved for a
// right-hand side known later. The analysis never enters the dense kernels and
// runs without waiting for other solves; the factorisation and the solve take
// turns with them. Upper CSR as for pardisoSolverIC, ordered by perm alone
// (no minimum degree competing: for grid-like systems, where it never won).
// Phase failures throw 121/122/123 as above, running out of memory 122.
class DirectFactor {
  public:
    DirectFactor(int n, const double* a, const int* ia, const int* ja, const int* perm);
    ~DirectFactor();
    DirectFactor(DirectFactor&&) noexcept;
    DirectFactor& operator=(DirectFactor&&) noexcept;
    DirectFactor(const DirectFactor&) = delete;
    DirectFactor& operator=(const DirectFactor&) = delete;

    // The solution replaces b (n values).
    void solve(double* b);
    double analyseSeconds() const;
    double factoriseSeconds() const;

  private:
    struct State;
    std::unique_ptr<State> s_;
};

// The out-of-core variant is pardisoSolverOOC, exported to hosts (api/keepcut.h).

namespace kc::testing {
// Makes the direct solver's allocations fail from the (after+1)-th one on, for
// n allocations; after = -1 switches the hook off.
void failDirectSolverAllocs(int after, int n);
}  // namespace kc::testing
