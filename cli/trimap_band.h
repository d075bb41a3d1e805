// A trimap from a rough mask: keep inside, cut outside, a band to compute
// along the mask's edge.
#pragma once

#include <opencv2/core.hpp>

// Trimap codes written by trimapFromMask.
constexpr unsigned char kTrimapCut = 0;
constexpr unsigned char kTrimapBand = 128;
constexpr unsigned char kTrimapKeep = 255;

// Mask bytes over this are foreground: the middle of the 8-bit range, so a
// mask saved with soft or lossy edges splits where it crosses half.
constexpr unsigned char kMaskForegroundOver = 127;

// Narrowest and widest band the tool accepts, in pixels. Under 1 there is no
// band to compute; 1024 is already wider than most subjects, so more is a slip.
constexpr int kMinBandWidth = 1;
constexpr int kMaxBandWidth = 1024;

// `mask` is 8-bit grey, foreground where it is over kMaskForegroundOver. The band is `width`
// pixels across the edge: foreground pixels within ceil(width/2) of the
// background and background pixels within floor(width/2) of the foreground
// (Euclidean distance between pixel centres, a touching neighbour at 1).
cv::Mat trimapFromMask(const cv::Mat& mask, int width);
