// Sparse direct solver front ends for the symmetric matting systems.
//
// Matrices come as one-based compressed sparse rows holding the upper triangle
// with the diagonal first in every row. The solution is written over b (x is
// workspace only). Phase failures are thrown as bare ints: 121 analysis, 122
// factorisation, 123 solve. Running out of memory is a result, not a throw.
#pragma once

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

// The out-of-core variant is pardisoSolverOOC, exported to hosts (api/keepcut.h).

namespace kc::testing {
// Makes the direct solver's allocations fail from the (after+1)-th one on, for
// n allocations; after = -1 switches the hook off.
void failDirectSolverAllocs(int after, int n);
}  // namespace kc::testing
