// The buffers of one keep/cut request, owned by the tool (and by the tests and
// benchmarks), and the request record that points at them.
#pragma once

#include <opencv2/core.hpp>

#include "api/keepcut.h"

// A whole-picture request over a B,G,R,x picture and foreground and two 1-byte
// maps; region results are left as computed (mergeMode 2).
RKPSStructMsk2 wholePictureRequest(cv::Mat& image, cv::Mat& mask, cv::Mat& foreground,
                                   cv::Mat& brushInfo);

struct EngineJob {
    cv::Mat image;       // 8UC4 B,G,R and a carried fourth byte, as the engine reads pictures
    cv::Mat mask;        // 8UC1 brush map in, alpha out
    cv::Mat brushInfo;   // 8UC1 copy of the painted map
    cv::Mat foreground;  // 8UC4 recovered colours (starts as the picture, as a host fills it)
    RKPSStructMsk2 r;    // whole-picture request over the buffers above

    EngineJob(const cv::Mat& pictureBgr, const cv::Mat& brushMap, unsigned char fourthByte = 255);
    EngineJob(const EngineJob&) = delete;
    EngineJob& operator=(const EngineJob&) = delete;

    // The foreground buffer as B,G,R.
    cv::Mat foregroundBgr() const;
};

// Engine brush map from a trimap: 0 -> painted cut, 255 -> painted keep,
// anything else -> an unpainted estimate in the middle of the band.
cv::Mat brushMapFromTrimap(const cv::Mat& trimap);

// Engine brush map from a 0..1 float alpha: painted cut where it rounds to 0,
// painted keep where it rounds to 255, the even alpha byte between.
cv::Mat brushMapFromAlpha(const cv::Mat& alpha01);

// The main entry on `r` with the tool's progress bar drawn from it (over
// whatever progProc `r` had), the message log cleared first; returns the
// entry's result and leaves the log for the caller to print.
int runMainEntry(RKPSStructMsk2 r, int hiResPass);

// The fine pass (rkKeepCutToAlphaFine) the same way.
int runFineEntry(RKPSStructMsk2 r);

// The 8-bit matte in a finished mask map: painted cut reads as 0.
cv::Mat matteFromMask(const cv::Mat& mask);

// Foreground colours for the tool's cut-outs (B,G,R), estimated over the
// whole picture (B,G,R or B,G,R,x) at full resolution from its final 8-bit
// matte by the multi-level estimator: with the same matte it reproduces the
// picture better than the engine's reduced-scale recovery, in less time.
cv::Mat cutoutColours(const cv::Mat& picture, const cv::Mat& alpha);
