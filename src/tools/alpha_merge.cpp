// Multiplies the picture's colour bytes by a 0/1 mask and marks the whole
// mask as keep.
#include "api/keepcut.h"
#include "core/img.h"
#include "runtime/entry_guard.h"

namespace {

// Name the log lines carry.
constexpr const char* kEntry = "rkAlphaMerge";
// Host pictures: blue, green, red and a fourth byte per pixel.
constexpr int kPictureBytes = 4;
constexpr int kColourBytes = 3;  // the fourth byte is left alone
// After the merge the colours carry the mask: the whole map reads keep.
constexpr unsigned char kFullAlpha = 255;

int alphaMerge(unsigned char* image, int imageStep, int width, int height, unsigned char* mask,
               int maskStep) {
    for (int y = 0; y < height; ++y) {
        unsigned char* px = imgPtr(image, imageStep, 0, y);
        unsigned char* m = imgPtr(mask, maskStep, 0, y);
        for (int x = 0; x < width; ++x, px += kPictureBytes) {
            // Not scaled: the product keeps its low byte, so only masks of 0
            // and 1 give a meaningful picture.
            for (int c = 0; c < kColourBytes; ++c) px[c] = static_cast<unsigned char>(m[x] * px[c]);
            m[x] = kFullAlpha;
        }
    }
    return 1;
}

}  // namespace

extern "C" KC_EXPORT int rkAlphaMerge(unsigned char* image, int imageStep, int width, int height,
                                      unsigned char* mask, int maskStep, float /*ignored*/) {
    return rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "image", image, width, height, imageStep, kPictureBytes) ||
            !rkCheckBuffer(kEntry, "mask", mask, width, height, maskStep, 1))
            return kInvalidArgument;
        return alphaMerge(image, imageStep, width, height, mask, maskStep);
    });
}
