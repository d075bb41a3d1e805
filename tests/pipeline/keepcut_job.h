// A keep/cut request over the generated sample, with the buffers it points at:
// the 4-byte picture, the brush map (cut, keep and the unknown band as 128),
// brushInfo holding the painted map and a foreground buffer. Each buffer row
// is padded so that row bytes larger than the width are exercised.
#pragma once

#include <cstring>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "api/keepcut.h"
#include "engine_job.h"
#include "synthetic_sample.h"

namespace keepcut_test {

// Bytes added to every row of every buffer.
inline constexpr int kRowPadding = 24;
inline constexpr unsigned char kTrimapUnknown = 128;
inline constexpr unsigned char kTrimapKeep = 255;

struct KeepCutJob {
    SyntheticSample sample;
    int w, h;
    cv::Mat imageBlock, maskBlock, brushBlock, fgBlock;  // padded storage
    cv::Mat image, mask, brush, foreground;              // w x h views
    RKPSStructMsk2 request;

    KeepCutJob(int width, int height)
        : sample(makeSyntheticSample(width, height)), w(width), h(height) {
        imageBlock = cv::Mat(h, w + kRowPadding, CV_8UC4, cv::Scalar::all(0));
        fgBlock = cv::Mat(h, w + kRowPadding, CV_8UC4, cv::Scalar::all(0));
        maskBlock = cv::Mat(h, w + kRowPadding, CV_8UC1, cv::Scalar(0));
        brushBlock = cv::Mat(h, w + kRowPadding, CV_8UC1, cv::Scalar(0));
        image = imageBlock(cv::Rect(0, 0, w, h));
        foreground = fgBlock(cv::Rect(0, 0, w, h));
        mask = maskBlock(cv::Rect(0, 0, w, h));
        brush = brushBlock(cv::Rect(0, 0, w, h));
        cv::cvtColor(sample.picture, image, cv::COLOR_BGR2BGRA);
        brushMapFromTrimap(sample.trimap).copyTo(mask);
        mask.copyTo(brush);
        request = wholePictureRequest(image, mask, foreground, brush);
    }
    KeepCutJob(const KeepCutJob&) = delete;
    KeepCutJob& operator=(const KeepCutJob&) = delete;

    void setRegion(int x, int y, int rw, int rh, int cellMode) {
        request.roiX = x, request.roiY = y, request.roiWidth = rw, request.roiHeight = rh;
        request.cellMode = cellMode;
    }

    // The mask read as alpha (painted cut 1 reads 0) against the true matte:
    // the sum of absolute differences in grey levels over the whole picture.
    double sad() const {
        return cv::norm(matteFromMask(mask), alphaToBytes(sample.alpha), cv::NORM_L1);
    }
};

}  // namespace keepcut_test
