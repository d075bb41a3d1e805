// Request buffers for the tool, tests and benchmarks.
#include "engine_job.h"

#include <opencv2/imgproc.hpp>

#include "image_io.h"
#include "progress_bar.h"

namespace {
// Unpainted start value of the band: even (not painted) and mid-way, so no
// region test counts it as decided.
constexpr unsigned char kBandStart = 128;
// Leaves region results as computed instead of merging by minimum or maximum.
constexpr int kMergeAsComputed = 2;
}  // namespace

RKPSStructMsk2 wholePictureRequest(cv::Mat& image, cv::Mat& mask, cv::Mat& foreground,
                                   cv::Mat& brushInfo) {
    RKPSStructMsk2 r{};
    r.image = image.data;
    r.imageRowBytes = static_cast<int>(image.step);
    r.mask = mask.data;
    r.maskRowBytes = static_cast<int>(mask.step);
    r.foreground = foreground.data;
    r.foregroundRowBytes = static_cast<int>(foreground.step);
    r.brushInfo = brushInfo.data;
    r.brushInfoRowBytes = static_cast<int>(brushInfo.step);
    r.width = r.roiWidth = image.cols;
    r.height = r.roiHeight = image.rows;
    r.mergeMode = kMergeAsComputed;
    return r;
}

EngineJob::EngineJob(const cv::Mat& pictureBgr, const cv::Mat& brushMap, unsigned char fourthByte) {
    const cv::Mat parts[] = {pictureBgr,
                             cv::Mat(pictureBgr.size(), CV_8UC1, cv::Scalar(fourthByte))};
    cv::merge(parts, 2, image);
    mask = brushMap.clone();
    brushInfo = brushMap.clone();
    foreground = image.clone();
    r = wholePictureRequest(image, mask, foreground, brushInfo);
}

cv::Mat EngineJob::foregroundBgr() const {
    cv::Mat bgr;
    cv::cvtColor(foreground, bgr, cv::COLOR_BGRA2BGR);
    return bgr;
}

cv::Mat brushMapFromTrimap(const cv::Mat& trimap) {
    cv::Mat map(trimap.size(), CV_8UC1, cv::Scalar(kBandStart));
    map.setTo(RK_MASK_CUT, trimap == 0);
    map.setTo(RK_MASK_KEEP, trimap == 255);
    return map;
}

cv::Mat brushMapFromAlpha(const cv::Mat& alpha01) {
    cv::Mat bytes;
    alpha01.convertTo(bytes, CV_8U, 255.0);  // rounds to nearest
    cv::Mat map = bytes & cv::Scalar(0xFE);
    map.setTo(RK_MASK_CUT, bytes == 0);
    map.setTo(RK_MASK_KEEP, bytes == 255);
    return map;
}

int runMainEntry(RKPSStructMsk2 r, int hiResPass) {
    r.progProc = drawProgressBar;
    r.progData = &r;  // any non-null pointer: without one no progress is reported
    clearErrMsg();
    const int rc = rkKeepCutToAlpha(&r, hiResPass, false);
    finishProgressBar();
    return rc;
}

int runFineEntry(RKPSStructMsk2 r) {
    r.progProc = drawProgressBar;
    r.progData = &r;  // any non-null pointer: without one no progress is reported
    clearErrMsg();
    const int rc = rkKeepCutToAlphaFine(&r, false);
    finishProgressBar();
    return rc;
}

cv::Mat matteFromMask(const cv::Mat& mask) {
    cv::Mat out(mask.size(), CV_8UC1);
    rkMapToMatte(mask.data, static_cast<int>(mask.step), out.data, static_cast<int>(out.step),
                 mask.cols, mask.rows);
    return out;
}

cv::Mat cutoutColours(const cv::Mat& picture, const cv::Mat& alpha) {
    // The library's entry, as a host calls it: 4-byte pixels in, in place.
    cv::Mat bgra;
    if (picture.channels() == 4)
        bgra = picture.clone();
    else
        cv::cvtColor(picture, bgra, cv::COLOR_BGR2BGRA);
    const cv::Mat matte = alpha.isContinuous() ? alpha : alpha.clone();
    const int rc = rkEstimateForeground(bgra.data, static_cast<int>(bgra.step), matte.data,
                                        static_cast<int>(matte.step), bgra.data,
                                        static_cast<int>(bgra.step), bgra.cols, bgra.rows);
    if (rc != 1) throw ToolError("the foreground estimate failed with code " + std::to_string(rc));
    cv::Mat bgr;
    cv::cvtColor(bgra, bgr, cv::COLOR_BGRA2BGR);
    return bgr;
}
