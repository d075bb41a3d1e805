// Constant Gaussian weight tables shared by the pipeline: a quadrant of a small
// Gaussian for local smoothing, and a 13 x 13 blending window that is enlarged
// over a region to feather new results into old ones.
#pragma once

// Side of the quadrant table: distances 0..4 from the centre.
inline constexpr int kGaussianTableSide = 5;
// Side of the blending window; its centre is element (6, 6).
inline constexpr int kGaussianBlurTableSide = 13;

// Row-major: entry (i, j) is element i * kGaussianTableSide + j.
extern const float gaussianTable[kGaussianTableSide * kGaussianTableSide];
// Row-major, symmetric about its centre, zero on its outer rows and columns.
extern const float gaussianBlurTable[kGaussianBlurTableSide * kGaussianBlurTableSide];

// Entry (i, j) of gaussianTable. No bounds check: callers pass distances 0..4.
float nDistribution(int i, int j);
