// Brush-stroke restore and region merge, plus the exported recoverBrushInfo.
#include "pipeline/brush_info.h"

#include <algorithm>

#include "api/keepcut.h"
#include "pipeline/keepcut_request_check.h"
#include "pipeline/request_maps.h"
#include "runtime/entry_guard.h"

void restoreBrushStrokes(cv::Mat& mask, const cv::Mat& brush) {
    CV_Assert(mask.size() == brush.size());
    for (int y = 0; y < mask.rows; ++y) {
        unsigned char* m = mask.ptr<unsigned char>(y);
        const unsigned char* b = brush.ptr<unsigned char>(y);
        for (int x = 0; x < mask.cols; ++x)
            m[x] = (b[x] & 1) ? b[x] : static_cast<unsigned char>(m[x] & 254);
    }
}

void mergeWithBrush(cv::Mat& mask, const cv::Mat& brush, int mergeMode) {
    CV_Assert(mask.size() == brush.size());
    if (mergeMode != kMergeByMinimum && mergeMode != kMergeByMaximum) return;
    const bool byMax = mergeMode == kMergeByMaximum;
    for (int y = 0; y < mask.rows; ++y) {
        unsigned char* m = mask.ptr<unsigned char>(y);
        const unsigned char* b = brush.ptr<unsigned char>(y);
        for (int x = 0; x < mask.cols; ++x) {
            if (b[x] & 1) continue;
            m[x] = byMax ? std::max(m[x], b[x]) : std::min(m[x], b[x]);
        }
    }
}

extern "C" KC_EXPORT int recoverBrushInfo(RKPSStructMsk2* request) {
    static constexpr const char* kEntry = "recoverBrushInfo";
    return rkGuardEntry(kEntry, [&] {
        if (!checkKeepCutRequest(kEntry, request, KeepCutBuffers::MaskAndBrush))
            return kInvalidArgument;
        cv::Mat mask = regionMaskView(*request);
        restoreBrushStrokes(mask, regionBrushView(*request));
        return 1;
    });
}
