// Desaturation of the unpainted part of the picture, so that the selection
// stands out in colour while the rest of the picture fades to grey.
#include <cmath>
#include <vector>

#include "api/keepcut_display.h"
#include "core/hls_rows.h"
#include "core/img.h"
#include "runtime/entry_guard.h"
#include "tools/pixel_bytes.h"

namespace {

// Host pictures: blue, green, red and a fourth byte.
constexpr int kPictureBytes = 4;
// Byte values.
constexpr int kByteValues = 256;

// New saturation per unpainted map byte m and saturation v:
// trunc(v x ((1 - s) + s f^4)) with f = m / 255; the fourth power brings
// colour back only near full alpha. Row m of the table serves map byte m;
// rows of painted (odd) bytes keep the saturation, so no pixel branches.
std::vector<unsigned char> saturationTable(float strength) {
    std::vector<unsigned char> table(kByteValues * kByteValues);
    for (int m = 0; m < kByteValues; ++m) {
        const double f = m / 255.0;
        const double factor = (1 - strength) + strength * (f * f * f * f);
        for (int v = 0; v < kByteValues; ++v)
            table[m * kByteValues + v] = (m & 1) ? v : truncateToByte(v * factor);
    }
    return table;
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
        const std::vector<unsigned char> table = saturationTable(strength);
        // Row by row through hue, lightness, saturation, chunk by chunk, so
        // the intermediate never leaves the cache.
        for (int y = 0; y < height; ++y) {
            const unsigned char* m = imgPtr(mask, maskStep, 0, y);
            adjustSaturationInHls(imgPtr(image, imageStep, 0, y), width, [&](SaturationChunk& c) {
                for (int i = 0; i < c.n; ++i) c.s[i] = table[m[c.x0 + i] * kByteValues + c.s[i]];
            });
        }
        return 1;
    });
}
