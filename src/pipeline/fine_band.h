// Which pixels the fine pass solves again at full resolution: where the
// coarse alpha is fractional, widened by a margin, and never a painted pixel.
#pragma once

#include <opencv2/core.hpp>

struct FineBand {
    int low;  // alpha bytes from low to high count as fractional
    int high;
    int margin;  // pixels added around the fractional ones, in every direction
};

// matte: the coarse alpha (8UC1, 0..255); painted: non-zero where the user
// painted (held as painted). Returns an 8UC1 map, 255 where alpha is solved.
cv::Mat fineVariables(const cv::Mat& matte, const cv::Mat& painted, const FineBand& band);
