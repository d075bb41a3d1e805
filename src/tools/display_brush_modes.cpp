// Brush-map display modes: the tinted overlay and the flat code colours, each
// a single pass over the pixels.
#include <algorithm>

#include "core/img.h"
#include "core/ipp_primitives.h"
#include "tools/display_modes.h"

namespace {

// Byte order of a host picture's pixel.
constexpr int kBlue = 0, kGreen = 1, kRed = 2, kAlpha = 3;
constexpr int kPixelBytes = 4;
// Map codes painted keep and cut.
constexpr unsigned char kKeep = 255, kCut = 1;
// Darkening of the overlay: 7/8 through a multiply by 7 scaled by 2^-3.
constexpr unsigned char kDarkenNumerator = 7;
constexpr int kDarkenScaleBits = 3;
// Tint added to the channel that names a pixel's brush code.
constexpr int kTint = 85;

void addTint(unsigned char& v) {
    v = static_cast<unsigned char>(std::min(v + kTint, 255));
}

void setPixel(unsigned char* p, unsigned char blue, unsigned char green, unsigned char red) {
    p[kBlue] = blue;
    p[kGreen] = green;
    p[kRed] = red;
    p[kAlpha] = 255;
}

}  // namespace

void showBrushOverlay(const DisplayBuffers& b) {
    const unsigned char darken[3] = {kDarkenNumerator, kDarkenNumerator, kDarkenNumerator};
    ippiMulC_8u_AC4IRSfs(darken, b.image, b.imageStep, b.size, kDarkenScaleBits);
    for (int y = 0; y < b.size.height; ++y) {
        unsigned char* p = imgPtr(b.image, b.imageStep, 0, y);
        const unsigned char* m = imgPtr(b.mask, b.maskStep, 0, y);
        for (int x = 0; x < b.size.width; ++x, p += kPixelBytes) {
            if ((m[x] & 1) == 0) {
                addTint(p[kBlue]);
            } else if (m[x] == kKeep) {
                addTint(p[kGreen]);
            } else if (m[x] == kCut) {
                addTint(p[kRed]);
            } else {
                addTint(p[kRed]);
                addTint(p[kGreen]);
            }
        }
    }
}

void showBrushCodes(const DisplayBuffers& b) {
    for (int y = 0; y < b.size.height; ++y) {
        unsigned char* p = imgPtr(b.image, b.imageStep, 0, y);
        const unsigned char* m = imgPtr(b.mask, b.maskStep, 0, y);
        for (int x = 0; x < b.size.width; ++x, p += kPixelBytes) {
            if (m[x] == 0)
                setPixel(p, 0, 0, 255);
            else if (m[x] == kKeep)
                setPixel(p, 0, 255, 0);
            else
                setPixel(p, 255, 0, 0);
        }
    }
}
