// Trimap from a rough mask by exact distance transforms on both sides of the
// edge, so the band has the same width whichever way the edge runs.
#include "trimap_band.h"

#include <opencv2/imgproc.hpp>

cv::Mat trimapFromMask(const cv::Mat& mask, int width) {
    CV_Assert(mask.type() == CV_8UC1 && width >= kMinBandWidth);
    const cv::Mat inside = mask > kMaskForegroundOver;
    const cv::Mat outside = ~inside;
    // Each pixel's distance to the nearest pixel of the other side; with no
    // other side at all the distances are huge and no band is drawn.
    cv::Mat toOutside, toInside;
    cv::distanceTransform(inside, toOutside, cv::DIST_L2, cv::DIST_MASK_PRECISE);
    cv::distanceTransform(outside, toInside, cv::DIST_L2, cv::DIST_MASK_PRECISE);

    const int reachIn = width - width / 2;
    const int reachOut = width / 2;
    cv::Mat trimap(mask.size(), CV_8UC1, cv::Scalar(kTrimapCut));
    trimap.setTo(kTrimapKeep, inside);
    trimap.setTo(kTrimapBand, inside & (toOutside <= reachIn));
    trimap.setTo(kTrimapBand, outside & (toInside <= reachOut));
    return trimap;
}
