// The host entry of the display modes: checks the buffers and picks the mode.
#include "api/keepcut_display.h"
#include "runtime/entry_guard.h"
#include "tools/display_modes.h"

namespace {

// Host pictures: blue, green, red and a fourth byte.
constexpr int kPictureBytes = 4;

enum DisplayMode {
    kBrushOverlay = 1,
    kBrushCodes = 2,
    kColourOverBackground = 3,
    kColourOverForeground = 4,
    kMatteGrey = 5,
    kColourOverBackgroundAgain = 6  // the host's second name for mode 3
};

bool stretchesMatte(int mode) {
    return mode >= kColourOverBackground && mode <= kColourOverBackgroundAgain;
}
bool readsColour(int mode) {
    return stretchesMatte(mode) && mode != kMatteGrey;
}

}  // namespace

extern "C" KC_EXPORT int rkShowImageAlpha(unsigned char* image, int imageStep, int width,
                                          int height, unsigned char* mask, int maskStep,
                                          unsigned char hi, unsigned char lo, int mode,
                                          unsigned char* color) {
    constexpr const char* kEntry = "rkShowImageAlpha";
    return rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "image", image, width, height, imageStep, kPictureBytes) ||
            !rkCheckBuffer(kEntry, "mask", mask, width, height, maskStep, 1))
            return kInvalidArgument;
        if (readsColour(mode) && !color) return rkRefuseWith(kEntry, "color is null");
        if (stretchesMatte(mode) && hi == lo)
            return rkRefuseWith(kEntry, "hi equals lo, an empty range to stretch");
        if (width == 0 || height == 0) return 1;
        const DisplayBuffers b{image, imageStep, mask, maskStep, {width, height}};
        switch (mode) {
            case kBrushOverlay:
                showBrushOverlay(b);
                break;
            case kBrushCodes:
                showBrushCodes(b);
                break;
            case kColourOverBackground:
            case kColourOverBackgroundAgain:
                showMatteWithColour(b, hi, lo, color, false);
                break;
            case kColourOverForeground:
                showMatteWithColour(b, hi, lo, color, true);
                break;
            case kMatteGrey:
                showMatteGrey(b, hi, lo);
                break;
            default:
                break;  // an unknown mode shows nothing new
        }
        return 1;
    });
}
