// A generated matting problem with a known answer: a furry subject with soft,
// hair-like edges composited over a textured background. The tool's demo, the
// benchmarks and the end-to-end tests all use it, so it must be deterministic
// for a given size and seed.
#pragma once

#include <opencv2/core.hpp>

struct SyntheticSample {
    cv::Mat picture;     // 8UC3, B,G,R: alpha * foreground + (1 - alpha) * background
    cv::Mat alpha;       // 32FC1 in 0..1, the true matte
    cv::Mat foreground;  // 32FC3 in 0..255, B,G,R: the subject's true colours everywhere
    cv::Mat background;  // 32FC3 in 0..255, B,G,R
    cv::Mat trimap;      // 8UC1: 0 cut, 255 keep, 128 unknown band
};

// Builds the sample at width x height (both at least 16); the same arguments
// always give the same bytes.
SyntheticSample makeSyntheticSample(int width, int height, unsigned seed = 7);

// The true matte as 8-bit grey levels, rounded.
cv::Mat alphaToBytes(const cv::Mat& alpha);
