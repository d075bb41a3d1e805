// Multi-level foreground and background estimation from a picture and its
// alpha at full resolution: coarse to fine over sizes from 1 x 1 up to the
// picture's, a few relaxation sweeps per level of the compositing equation
// regularised toward the four neighbours where alpha is smooth.
#pragma once

#include <opencv2/core/mat.hpp>

struct MultiLevelOptions {
    // Pull of each pixel toward its neighbours where alpha is flat: just
    // enough to make the 2 x 2 system of a pixel with alpha 0 or 1 solvable,
    // too weak to blur colours the picture determines.
    float regularization = 1e-5f;
    // Extra pull toward neighbours across an alpha step, per unit of |step|:
    // colours of a soft edge follow the nearby pure pixels.
    float gradientWeight = 1.0f;
    // Levels no larger than smallSize in either direction are cheap and set
    // the colours that spread into the wide pure regions: many sweeps there,
    // few above (each level starts from the previous one's answer).
    int smallSize = 32;
    int smallIterations = 10;
    int bigIterations = 2;
};

struct ForegroundLayers {
    cv::Mat foreground;  // 32FC3 in 0..1, the picture's channel order
    cv::Mat background;  // 32FC3 in 0..1
};

// picture: 8UC3 or 8UC4 (the fourth byte ignored); alpha: 8UC1 (0..255) of
// the same size. Every pixel gets a foreground and a background colour with
// alpha F + (1 - alpha) B close to the picture. Throws cv::Exception on
// mismatched or empty inputs.
ForegroundLayers estimateForegroundMultiLevel(const cv::Mat& picture, const cv::Mat& alpha,
                                              const MultiLevelOptions& options = {});

// The foreground alone as bytes (8UC3, B,G,R), rounded.
cv::Mat foregroundBytesMultiLevel(const cv::Mat& picture, const cv::Mat& alpha);
