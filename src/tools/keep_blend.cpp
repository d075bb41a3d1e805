// Weighted blend of two host display buffers, for fading between views.
#include <cmath>

#include "api/keepcut_display.h"
#include "core/img.h"
#include "runtime/entry_guard.h"
#include "tools/pixel_bytes.h"

namespace {
// Host pixels: three colour bytes, blended, and a fourth, kept.
constexpr int kPictureBytes = 4;
constexpr int kColourChannels = 3;
}  // namespace

extern "C" KC_EXPORT void rkShowKeepBlend(unsigned char* dst, int dstStep, int width, int height,
                                          unsigned char* src, int srcStep, float weight) {
    constexpr const char* kEntry = "rkShowKeepBlend";
    rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "dst", dst, width, height, dstStep, kPictureBytes) ||
            !rkCheckBuffer(kEntry, "src", src, width, height, srcStep, kPictureBytes))
            return kInvalidArgument;
        if (!std::isfinite(weight)) return rkRefuseWith(kEntry, "the weight is not finite");
        const float rest = 1.0f - weight;
        for (int y = 0; y < height; ++y) {
            unsigned char* d = imgPtr(dst, dstStep, 0, y);
            const unsigned char* s = imgPtr(src, srcStep, 0, y);
            for (int x = 0; x < width; ++x, d += kPictureBytes, s += kPictureBytes)
                for (int c = 0; c < kColourChannels; ++c)
                    d[c] = truncateToByte(s[c] * weight + d[c] * rest);
        }
        return 1;
    });
}
