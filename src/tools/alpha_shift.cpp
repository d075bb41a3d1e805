// Saturation shift under the unpainted map. The shifted colours are worked
// out in a scratch buffer and then dropped: the entry leaves picture and
// mask as they were. Hosts depend on this no-op; keep it.
#include <cmath>
#include <opencv2/core.hpp>

#include "api/keepcut.h"
#include "core/img.h"
#include "core/ippi_color.h"
#include "pipeline/mask_codes.h"
#include "runtime/entry_guard.h"

namespace {

// Name the log lines carry.
constexpr const char* kEntry = "rkAlphaShift";
// Host pictures: blue, green, red and a fourth byte per pixel.
constexpr int kPictureBytes = 4;
// Hue, lightness, saturation: saturation is the third byte.
constexpr int kSaturationByte = 2;
// Truncation to 8 bits keeps the product modulo 256.
constexpr double kByteRange = 256.0;

// The product truncated toward zero, keeping its low byte; products that are
// not finite give 0.
unsigned char lowByteOfTruncated(double v) {
    if (!std::isfinite(v)) return 0;
    double b = std::fmod(std::trunc(v), kByteRange);
    if (b < 0) b += kByteRange;
    return static_cast<unsigned char>(b);
}

int alphaShift(const unsigned char* image, int imageStep, int width, int height,
               const unsigned char* mask, int maskStep, float factor) {
    if (width == 0 || height == 0) return 1;
    cv::Mat hls(height, width, CV_8UC4);
    ippiBGRToHLS_8u_AC4R(image, imageStep, hls.ptr(), static_cast<int>(hls.step), {width, height});
    for (int y = 0; y < height; ++y) {
        unsigned char* px = hls.ptr<unsigned char>(y);
        const unsigned char* m = imgPtr(mask, maskStep, 0, y);
        for (int x = 0; x < width; ++x, px += kPictureBytes)
            if (!(m[x] & kMaskPaintedBit))
                px[kSaturationByte] =
                    lowByteOfTruncated(static_cast<double>(px[kSaturationByte]) * factor);
    }
    return 1;  // hls goes out of scope unused
}

}  // namespace

extern "C" KC_EXPORT int rkAlphaShift(const unsigned char* image, int imageStep, int width,
                                      int height, const unsigned char* mask, int maskStep,
                                      float factor) {
    return rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "image", image, width, height, imageStep, kPictureBytes) ||
            !rkCheckBuffer(kEntry, "mask", mask, width, height, maskStep, 1))
            return kInvalidArgument;
        return alphaShift(image, imageStep, width, height, mask, maskStep, factor);
    });
}
