// The buffers of one keep/cut request, owned by the tool, and the request
// record that points at them.
#pragma once

#include <opencv2/core.hpp>

#include "api/keepcut.h"

struct EngineJob {
    cv::Mat image;       // 8UC4 B,G,R,A as the engine reads pictures
    cv::Mat mask;        // 8UC1 brush map in, alpha out
    cv::Mat brushInfo;   // 8UC1 copy of the painted map
    cv::Mat foreground;  // 8UC4 recovered colours (starts as the picture)

    EngineJob(const cv::Mat& pictureBgr, const cv::Mat& brushMap);

    // A whole-picture request over these buffers; the region is the picture.
    RKPSStructMsk2 request();

    // The foreground buffer as B,G,R.
    cv::Mat foregroundBgr() const;
};

// Engine brush map from a trimap: 0 -> painted cut, 255 -> painted keep,
// anything else -> an unpainted estimate in the middle of the band.
cv::Mat brushMapFromTrimap(const cv::Mat& trimap);

// The 8-bit matte in a finished mask map: painted cut reads as 0.
cv::Mat matteFromMask(const cv::Mat& mask);
