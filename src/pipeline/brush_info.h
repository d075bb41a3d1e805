// The painted map kept in brushInfo during a keep/cut call: putting the
// painted bytes back into the result, and merging a region's result with the
// map as it stood before the solve.
#pragma once

#include <opencv2/core.hpp>

// Where brush (the painted map) is odd, mask takes the brush byte; elsewhere
// mask keeps its value with bit 0 cleared. Both are 8-bit views of one size.
void restoreBrushStrokes(cv::Mat& mask, const cv::Mat& brush);

// mergeMode values of a region job.
inline constexpr int kMergeByMinimum = 0;  // a subtracting stroke
inline constexpr int kMergeByMaximum = 1;  // an adding stroke

// Where brush (the pre-solve map) is even, mask becomes the smaller
// (kMergeByMinimum) or the larger (kMergeByMaximum) of mask and brush; any
// other mode, and every odd brush pixel, leaves mask as it is.
void mergeWithBrush(cv::Mat& mask, const cv::Mat& brush, int mergeMode);
