// Optional smoothing of the reduced-size strategies: a bilateral filter over
// a reduced alpha, and a feathered one over the full-size alpha. The main
// entry never asks for it.
#pragma once

#include <opencv2/core.hpp>

// Bilateral filter of an 8-bit alpha in place: window side a tenth of the
// smaller side (at least 3, odd), range sigma sigma x 255, edges replicated.
// Does nothing unless both exceed 0.01.
void smoothAlphaBilateral(cv::Mat& alpha, float sigma);

// smoothAlphaBilateral on a copy of alpha, blended back with the 13 x 13
// Gaussian blending window enlarged over the whole alpha: the centre takes the
// smoothed value, the rim keeps the old one.
void smoothAlphaFeathered(cv::Mat& alpha, float sigma);
