// The GrabCut entries' view of a request record: boundary checks of the
// buffers and of the GrabCut region, and views (no copies) of the region on
// the request's buffers.
#pragma once

#include <opencv2/core/mat.hpp>

#include "api/keepcut.h"

// Which buffers an entry touches.
enum class GrabCutBuffers {
    Maps,            // mask and brushInfo
    PictureAndMaps,  // the picture too
};

// True when the record, the buffers an entry touches and the GrabCut region
// are usable: non-null, non-negative sizes, rows at least as long as the
// picture's width, and a region inside the picture whose sides are at least
// minSide. Otherwise logs "<entry>: <why>" and returns false.
bool checkGrabCutRequest(const char* entry, const RKPSStructMsk2* request, GrabCutBuffers which,
                         int minSide);

// Views of the GrabCut region (gcLeft, gcTop, gcWidth x gcHeight).
cv::Mat grabCutMaskView(const RKPSStructMsk2& request);
cv::Mat grabCutBrushView(const RKPSStructMsk2& request);
cv::Mat grabCutPictureView(const RKPSStructMsk2& request);
