// rkEstimateForeground: the multi-level foreground estimate for hosts, over
// their own 4-byte pictures, so a host's cut-out equals the tool's.
#include <opencv2/core/mat.hpp>

#include "api/keepcut.h"
#include "pipeline/fg_multilevel.h"
#include "runtime/arg_check.h"
#include "runtime/entry_guard.h"

namespace {
constexpr int kPictureBytes = 4;
constexpr int kColourBytes = 3;
}  // namespace

extern "C" KC_EXPORT int rkEstimateForeground(const unsigned char* image, int imageRowBytes,
                                              const unsigned char* alpha, int alphaRowBytes,
                                              unsigned char* foreground, int foregroundRowBytes,
                                              int width, int height) {
    constexpr const char* kEntry = "rkEstimateForeground";
    return rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "image", image, width, height, imageRowBytes, kPictureBytes) ||
            !rkCheckBuffer(kEntry, "alpha", alpha, width, height, alphaRowBytes, 1) ||
            !rkCheckBuffer(kEntry, "foreground", foreground, width, height, foregroundRowBytes,
                           kPictureBytes))
            return kInvalidArgument;
        if (width == 0 || height == 0) return 1;
        // Views only: the estimate reads them whole before anything is written,
        // so foreground may be the picture itself.
        const cv::Mat picture(height, width, CV_8UC4, const_cast<unsigned char*>(image),
                              static_cast<size_t>(imageRowBytes));
        const cv::Mat matte(height, width, CV_8UC1, const_cast<unsigned char*>(alpha),
                            static_cast<size_t>(alphaRowBytes));
        const cv::Mat colours = foregroundBytesMultiLevel(picture, matte);
        for (int y = 0; y < height; ++y) {
            const unsigned char* in = colours.ptr<unsigned char>(y);
            unsigned char* out = foreground + static_cast<std::ptrdiff_t>(y) * foregroundRowBytes;
            for (int x = 0; x < width; ++x)
                for (int c = 0; c < kColourBytes; ++c)
                    out[x * kPictureBytes + c] = in[x * kColourBytes + c];
        }
        return 1;
    });
}
