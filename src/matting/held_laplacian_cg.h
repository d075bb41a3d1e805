// Closed-form alpha over a set of variable pixels with every other pixel held
// at a given value: L_UU x_U = -L_UK x_K, solved by Jacobi-preconditioned
// conjugate gradients on the matrix-free Laplacian, started from the values
// the variables already hold.
#pragma once

#include <vector>

#include "matting/window_laplacian.h"

struct HeldSolveStats {
    int iterations = 0;
    double startResidual = 0.0;  // |r| before the first step
    double endResidual = 0.0;    // |r| after the last
};

// alpha: the tile plane (width x height of op, values 0..1); the pixels listed
// in rows are solved in place, all others are read only. Stops when the
// residual fell by relTol or after maxIter steps.
HeldSolveStats solveHeldLaplacian(const WindowLaplacian& op, const std::vector<int>& rows,
                                  std::vector<double>& alpha, int maxIter, double relTol);
