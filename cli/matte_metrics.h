// How far a matte is from the truth, the way matting benchmarks score it.
#pragma once

#include <opencv2/core.hpp>

struct MatteError {
    double sad = 0.0;  // sum of |alpha - truth| over the scored pixels, alpha in 0..1, / 1000
    double mse = 0.0;  // mean squared error over the scored pixels, alpha in 0..1
    int pixels = 0;    // how many pixels were scored
};

// Scores an 8-bit matte against an 8-bit or 0..1 float truth over the pixels
// where `where` is non-zero (typically the trimap's unknown band).
MatteError scoreMatte(const cv::Mat& alpha8, const cv::Mat& truth, const cv::Mat& where);

// The trimap's unknown band: neither 0 nor 255.
cv::Mat unknownBand(const cv::Mat& trimap);
