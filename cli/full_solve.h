// The tool's quality mode: one closed-form solve of the whole picture at full
// resolution, beside the engine's main entry.
#pragma once

#include <opencv2/core.hpp>

// Pixels the full solve takes as unknowns for a trimap: the band plus the two
// pixels of context the solver adds around it.
long long fullSolveVariables(const cv::Mat& trimap);

// Solves the alpha of `picture` (8UC3 B,G,R) for `trimap` (0 cut, 255 keep,
// else unknown) and returns the 8-bit matte. Throws ToolError when the problem
// is larger than the solver takes or the solve fails.
cv::Mat solveFullResolution(const cv::Mat& picture, const cv::Mat& trimap);
