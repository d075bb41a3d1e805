// Closed-form alpha over a set of variable pixels with every other pixel held
// exactly at its value (Dirichlet, not a weighted soft constraint): the
// reduced system L_UU x_U = -L_UK x_K is assembled from the tile's windows and
// factored by the sparse direct solver.
#pragma once

#include <vector>

#include "matting/window_laplacian.h"

// alpha: the tile plane (width x height of op, values 0..1); the pixels listed
// in rows (increasing pixel order) are solved in place, all others are read
// only. weight (empty, or one per row) pulls a row towards the value it holds
// with that weight, as the alpha driver ties its known pixels next to the
// band: they may then give a little where the colour model insists. Throws
// kErrSolverFactor when the direct solver ran out of memory.
void solveHeldLaplacianDirect(const WindowLaplacian& op, const std::vector<int>& rows,
                              const std::vector<double>& weight, std::vector<double>& alpha);
