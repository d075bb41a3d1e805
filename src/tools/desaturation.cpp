// Desaturation of the unpainted part of the picture, so that the selection
// stands out in colour while the rest of the picture fades to grey.
#include <cmath>
#include <opencv2/core.hpp>

#include "api/keepcut_display.h"
#include "core/img.h"
#include "core/ipp_primitives.h"
#include "runtime/entry_guard.h"
#include "tools/pixel_bytes.h"

namespace {

// Host pictures: blue, green, red and a fourth byte.
constexpr int kPictureBytes = 4;
// Byte of a hue, lightness, saturation pixel that holds the saturation.
constexpr int kSaturationByte = 2;
// One factor per possible map byte.
constexpr int kByteValues = 256;

// Factor on the saturation per map byte: (1 - s) + s f^4 with f = m / 255;
// the fourth power brings colour back only near full alpha.
void saturationFactors(float strength, double (&factor)[kByteValues]) {
    for (int m = 0; m < kByteValues; ++m) {
        const double f = m / 255.0;
        factor[m] = (1 - strength) + strength * (f * f * f * f);
    }
}

}  // namespace

extern "C" KC_EXPORT int rkDesaturation(unsigned char* image, int imageStep, int width, int height,
                                        unsigned char* mask, int maskStep, float strength) {
    constexpr const char* kEntry = "rkDesaturation";
    return rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "image", image, width, height, imageStep, kPictureBytes) ||
            !rkCheckBuffer(kEntry, "mask", mask, width, height, maskStep, 1))
            return kInvalidArgument;
        if (!std::isfinite(strength)) return rkRefuseWith(kEntry, "the strength is not finite");
        if (width == 0 || height == 0) return 1;
        const IppiSize size{width, height};
        cv::Mat hls(height, width, CV_8UC4);
        ippiRGBToHLS_8u_AC4R(image, imageStep, hls.data, static_cast<int>(hls.step), size);
        double factor[kByteValues];
        saturationFactors(strength, factor);
        for (int y = 0; y < height; ++y) {
            unsigned char* p = hls.ptr<unsigned char>(y) + kSaturationByte;
            const unsigned char* m = imgPtr(mask, maskStep, 0, y);
            for (int x = 0; x < width; ++x, p += kPictureBytes)
                if ((m[x] & 1) == 0) *p = truncateToByte(*p * factor[m[x]]);
        }
        ippiHLSToRGB_8u_AC4R(hls.data, static_cast<int>(hls.step), image, imageStep, size);
        return 1;
    });
}
