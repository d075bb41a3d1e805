// Local linear colour model of alpha: in every 3x3 window of a picture, alpha is
// fitted as a1*c0 + a2*c1 + a3*c2 + b by a regularised least-squares solve, and the
// four coefficient maps are what the upsampling routes enlarge and apply.
#pragma once

#include <opencv2/core.hpp>

namespace kc::coeff {

// Values at or below this mark an empty pixel of a float map (no data there).
inline constexpr float kEmptyPixel = -1.0e20f;
// Anything at or below this threshold counts as empty, so that a marker that went
// through float arithmetic (a mean of markers, a scale) is still recognised.
inline constexpr float kEmptyThreshold = -9.9e19f;

inline bool isEmptyPixel(float v) {
    return v <= kEmptyThreshold;
}

// The four coefficient maps a1, a2, a3, b (32-bit float, one channel each).
struct CoeffMaps {
    cv::Mat map[4];
};

// Fits the model at every pixel of `alpha` (CV_32FC1, values in [0, 1], empty pixels
// allowed) against `colour` (CV_32FC3 or CV_32FC4 of the same size; the first three
// channels are c0, c1, c2). The 3x3 window is clamped inside the picture. Empty alpha
// pixels are left out of their windows; a window with fewer than kMinFitSamples
// usable pixels yields empty coefficients. Both sides must be at least 3 pixels.
void fitLinearCoefficients(const cv::Mat& alpha, const cv::Mat& colour, CoeffMaps& out);

// Fewest non-empty alpha samples a window needs: one per unknown of the model, so
// that the fit is carried by the data rather than by the regularisation.
inline constexpr int kMinFitSamples = 4;

// Least-squares solve of the 13x4 regularised system for one window in single
// precision by QR decomposition (exposed for tests). rows: the nine [c0, c1, c2]
// triplets, rhs: their alphas, use: false where a row is left out. Writes a1, a2, a3,
// b to x; false if the solve failed.
bool solveWindowFit(const float rows[9][3], const float rhs[9], const bool use[9], float x[4]);

}  // namespace kc::coeff
