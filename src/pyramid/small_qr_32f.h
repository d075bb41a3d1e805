// Stand-in for the small-matrix QR primitives until the shared primitive set has
// them: a single-precision Householder least-squares solve of a tall system.
#pragma once

namespace kc::coeff {

// Minimises |A x - r| for a row-major A of `rows` x `cols` (rows >= cols, full
// column rank) by Householder QR in single precision. A and r are overwritten.
void qrLeastSquares_32f(float* a, float* r, int rows, int cols, float* x);

}  // namespace kc::coeff
