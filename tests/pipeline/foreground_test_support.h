// A keep/cut request over owned buffers built from a generated sample, and the
// alpha-weighted foreground error the recovery tests measure.
#pragma once

#include <cmath>
#include <opencv2/core.hpp>
#include <vector>

#include "api/keepcut.h"
#include "engine_job.h"
#include "synthetic_sample.h"

// Fourth byte of picture pixels: recovery must never write it.
inline constexpr unsigned char kFourthByte = 77;

// Alpha-weighted mean |F - F_true| per channel over fractional pixels inside
// box (what a composite over a new background shows), for a B,G,R,x buffer.
inline double alphaWeightedError(const cv::Mat& fg4, const SyntheticSample& s,
                                 const cv::Rect& box) {
    double err = 0, weight = 0;
    for (int y = box.y; y < box.y + box.height; ++y)
        for (int x = box.x; x < box.x + box.width; ++x) {
            const float a = s.alpha.at<float>(y, x);
            if (a <= 0.0f || a >= 1.0f) continue;
            const cv::Vec4b f = fg4.at<cv::Vec4b>(y, x);
            const cv::Vec3f t = s.foreground.at<cv::Vec3f>(y, x);
            for (int c = 0; c < 3; ++c) err += a * std::fabs(f[c] - t[c]);
            weight += 3 * a;
        }
    return weight > 0 ? err / weight : 0.0;
}
