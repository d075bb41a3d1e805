// Hair alpha on an interleaved picture, and the projection both forms share.
#include "select/hair_alpha.h"

#include <algorithm>
#include <cstddef>

#include "core/img.h"
#include "core/ippi_convert.h"
#include "select/hair_neighbourhood.h"

namespace kc::hair {

namespace {

// Bytes map onto 0..1 so that the picked colours and the picture meet on one
// scale.
constexpr double kByteMax = 255.0;

const float* rowOf(const IMG<float, 3>& img, int y) {
    return reinterpret_cast<const float*>(reinterpret_cast<const char*>(img.ptr()) +
                                          static_cast<std::ptrdiff_t>(y) * img.step);
}
float* rowOf(GIMG<float>& img, int y) {
    return reinterpret_cast<float*>(reinterpret_cast<char*>(img.ptr()) +
                                    static_cast<std::ptrdiff_t>(y) * img.step);
}

}  // namespace

bool sameColour(const unsigned char* foreColor, const unsigned char* backColor) {
    return std::equal(foreColor, foreColor + 3, backColor);
}

void projectAlpha(const unsigned char* rgb, int rgbStep, int width, int height,
                  const int channelOf[3], bool clamp, const unsigned char* lineMask,
                  int lineMaskStep, unsigned char* alpha, int alphaStep,
                  const unsigned char* foreColor, const unsigned char* backColor) {
    // No colour line to project onto: every alpha stays as it was.
    if (sameColour(foreColor, backColor) || width <= 0 || height <= 0) return;
    float fore[3], back[3], e[3];
    for (int k = 0; k < 3; ++k) {
        fore[k] = static_cast<float>(foreColor[k] / kByteMax);
        back[k] = static_cast<float>(backColor[k] / kByteMax);
        e[k] = fore[k] - back[k];
    }
    const float lengthSquared = sumsquare(e[0], e[1], e[2]);

    const IppiSize roi{width, height};
    GIMG<float> a(width, height);
    IMG3<float> colour(width, height);
    ippiScale_8u32f_C1R(alpha, alphaStep, a.ptr(), a.step, roi, 0.0f, 1.0f);
    ippiScale_8u32f_C3R(rgb, rgbStep, colour.ptr(), colour.step, roi, 0.0f, 1.0f);
    for (int y = 0; y < height; ++y) {
        const unsigned char* line = imgPtr(lineMask, lineMaskStep, 0, y);
        const float* c = rowOf(colour, y);
        float* out = rowOf(a, y);
        for (int x = 0; x < width; ++x) {
            if (!line[x]) continue;
            const float* px = c + 3 * x;
            float dot = 0.0f;
            for (int k = 0; k < 3; ++k) dot += (px[channelOf[k]] - back[k]) * e[k];
            const float v = dot / lengthSquared;
            out[x] = clamp ? std::min(std::max(v, 0.0f), 1.0f) : v;
        }
    }
    // Over the whole box: pixels off the line come back to their own byte.
    ippiScale_32f8u_C1R(a.ptr(), a.step, alpha, alphaStep, roi, 0.0f, 1.0f);
}

}  // namespace kc::hair

int CompAlphaMapHair(const unsigned char* rgb, int rgbStep, int width, int height,
                     const unsigned char* lineMask, int lineMaskStep, unsigned char* alpha,
                     int alphaStep, const unsigned char* foreColor,
                     const unsigned char* backColor) {
    // Colours come red, green, blue; the picture's channels blue, green, red.
    static constexpr int kReversed[3] = {2, 1, 0};
    kc::hair::projectAlpha(rgb, rgbStep, width, height, kReversed, true, lineMask, lineMaskStep,
                           alpha, alphaStep, foreColor, backColor);
    return 0;
}
