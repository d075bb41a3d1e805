// The fine pass's foreground recovery: the multi-level estimate, which keeps
// the full-resolution detail the refined alpha carries.
#include "pipeline/fine_foreground.h"

#include "pipeline/fg_multilevel.h"
#include "pipeline/mask_codes.h"
#include "pipeline/request_maps.h"

namespace {
constexpr int kPictureBytes = 4;
constexpr int kColourBytes = 3;
}  // namespace

void recoverForegroundMultiLevel(const RKPSStructMsk2& request) {
    const cv::Mat picture = regionPictureView(request);
    cv::Mat alpha = regionMaskView(request).clone();
    alpha.setTo(0, alpha == kMaskCut);
    const cv::Mat colours = foregroundBytesMultiLevel(picture, alpha);
    cv::Mat out = regionForegroundView(request);
    for (int y = 0; y < out.rows; ++y) {
        const unsigned char* in = colours.ptr<unsigned char>(y);
        unsigned char* o = out.ptr<unsigned char>(y);
        for (int x = 0; x < out.cols; ++x)
            for (int c = 0; c < kColourBytes; ++c)
                o[x * kPictureBytes + c] = in[x * kColourBytes + c];
    }
}
