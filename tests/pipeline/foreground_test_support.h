// A keep/cut request over owned buffers built from a generated sample, and the
// alpha-weighted foreground error the recovery tests measure.
#pragma once

#include <cmath>
#include <opencv2/core.hpp>
#include <vector>

#include "api/keepcut.h"
#include "synthetic_sample.h"

// Fourth byte of picture pixels: recovery must never write it.
inline constexpr unsigned char kFourthByte = 77;

struct RequestBuffers {
    cv::Mat image, mask, foreground, brush;
    RKPSStructMsk2 r{};
    // picture: 8UC3 B,G,R; maskBytes: 8UC1. The foreground starts as the
    // picture, as a host fills it.
    RequestBuffers(const cv::Mat& picture, const cv::Mat& maskBytes) {
        cv::Mat fourth(picture.size(), CV_8UC1, cv::Scalar(kFourthByte));
        cv::Mat parts[] = {picture, fourth};
        cv::merge(parts, 2, image);
        mask = maskBytes.clone();
        foreground = image.clone();
        brush = mask.clone();
        r.image = image.data;
        r.imageRowBytes = static_cast<int>(image.step);
        r.mask = mask.data;
        r.maskRowBytes = static_cast<int>(mask.step);
        r.foreground = foreground.data;
        r.foregroundRowBytes = static_cast<int>(foreground.step);
        r.brushInfo = brush.data;
        r.brushInfoRowBytes = static_cast<int>(brush.step);
        r.width = picture.cols;
        r.height = picture.rows;
        r.roiWidth = picture.cols;
        r.roiHeight = picture.rows;
        r.mergeMode = 2;
    }
};

// Mask bytes from a true alpha: painted cut (1) where it is 0, painted keep
// (255) where it is 1, the even alpha byte elsewhere.
inline cv::Mat maskFromAlpha(const cv::Mat& alpha) {
    cv::Mat m(alpha.size(), CV_8UC1);
    for (int y = 0; y < alpha.rows; ++y)
        for (int x = 0; x < alpha.cols; ++x) {
            const int v = static_cast<int>(std::lround(alpha.at<float>(y, x) * 255.0f));
            m.at<unsigned char>(y, x) =
                v <= 0 ? 1 : (v >= 255 ? 255 : static_cast<unsigned char>(v & ~1));
        }
    return m;
}

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
