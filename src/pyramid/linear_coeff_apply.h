// Applies the local linear colour model at a larger size: the four coefficient maps
// are enlarged bilinearly, one at a time, and accumulated with the picture's colours.
#pragma once

#include <algorithm>
#include <opencv2/core.hpp>

#include "pyramid/linear_coeff_fit.h"

namespace kc::coeff {

// A value in [0, 1] (clamped first) as a rounded byte.
inline unsigned char unitToByte(float v) {
    return static_cast<unsigned char>(cvRound(std::clamp(v, 0.0f, 1.0f) * 255.0f));
}

// Bilinear enlargement of a CV_32FC1 map to `size`, pixel centres aligned (the
// square-pixel mapping x_src = (x + 0.5) * W / FW - 0.5, edges replicated).
void enlargeBilinear(const cv::Mat& src, cv::Mat& dst, cv::Size size);

// out = a1*c0 + a2*c1 + a3*c2 + b over the whole picture, where c are the picture's
// first three channels as floats in [0, 1] (bytes / 255 for CV_8UC3/CV_8UC4, values
// as they are for CV_32FC3/CV_32FC4). The coefficient maps are enlarged to the
// picture's size one after another and each reduced map is released as soon as it
// has been enlarged, so at most two full-size float maps exist at a time.
// Output CV_8UC1: clamped to [0, 1], times 255, rounded; `out` must already have the
// picture's size (it may be a view into a larger buffer) or be empty.
// Output CV_32FC1: the raw model value; `out` is (re)allocated as needed.
void applyEnlargedCoefficients(CoeffMaps& coeffs, const cv::Mat& picture, cv::Mat& out,
                               int outType);

}  // namespace kc::coeff
