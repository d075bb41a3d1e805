// The GrabCut session state and its constraint-change test.
#include "select/grabcut_control.h"

#include "core/ippi_stats.h"

GrabCutControl::GrabCutControl(int w, int h)
    : width(w), height(h), constsSum(0.0), maskInitialized(false) {
    fgdModel = std::make_unique<cv::Mat>();
    bgdModel = std::make_unique<cv::Mat>();
    mask = std::make_unique<cv::Mat>(h, w, CV_8UC1);
}

bool GrabCutControl::isConstsChanged(unsigned char* consts, int constsStep) {
    Ipp64f sum = 0.0;
    ippiSum_8u_C1R(consts, constsStep, IppiSize{width, height}, &sum);
    // Compared as rounded 32-bit integers against the truncated old sum.
    if (static_cast<int>(sum + 0.5) == static_cast<int>(constsSum)) return false;
    constsSum = sum;
    return true;
}
