// Brings an alpha computed on a reduced picture back to full size through the local
// linear colour model: coefficients fitted per 3x3 window at reduced size, enlarged
// bilinearly and applied to the full picture's colours.
#pragma once

#include <opencv2/core.hpp>

// reducedAlpha: CV_8UC1, W x H (both at least 3). reducedPicture: CV_8UC4 (or
// CV_8UC3) of the same size, colours c0, c1, c2 in storage order. fullPicture: CV_8UC4
// (or CV_8UC3), FW x FH. fullAlpha: CV_8UC1 view of FW x FH (allocated when empty),
// written over every pixel. spare1, spare2, fullKnown and factor are accepted for the
// callers' sake and not used. The result is the same on every call (seeded noise).
void computeUpsampled_a1a2a3b_memorySave(cv::Mat& reducedAlpha, cv::Mat& reducedPicture,
                                         cv::Mat& spare1, cv::Mat& spare2, cv::Mat& fullPicture,
                                         cv::Mat& fullKnown, cv::Mat& fullAlpha, int factor);
