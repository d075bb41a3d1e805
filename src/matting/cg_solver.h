// Conjugate-gradient solvers for the symmetric matting systems, in double
// precision, on one-based upper-triangle compressed sparse rows.
#pragma once

// Iterations capped at maxIter, stopping when the residual has fallen below tol
// times the residual of the start vector. x holds the start vector on entry and
// the last iterate on return; work is scratch of at least 4n doubles. Returns
// the number of iterations, or a negative status: -1 invalid input, -2 the
// iteration broke down (a non-finite value appeared).
int cgSolver_jacobi(int n, double* a, int* ia, int* ja, double* b, double* x, double* work,
                    int maxIter, double tol);
// The same without preconditioner.
int cgSolver(int n, double* a, int* ia, int* ja, double* b, double* x, double* work, int maxIter,
             double tol);

inline constexpr int kCgInvalidInput = -1;
inline constexpr int kCgBreakdown = -2;
