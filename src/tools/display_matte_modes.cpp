// Matte display modes: the stretched matte laid over a colour, or shown as
// grey. They work plane by plane with whole-image 8-bit primitives so that a
// repaint of a large picture stays interactive.
#include "core/img_ops.h"
#include "core/ipp_primitives.h"
#include "tools/alpha_scale.h"
#include "tools/display_modes.h"

namespace {

// Bytes 0..2 of a host pixel are colour, byte 3 is made opaque.
constexpr int kColourChannels = 3;
constexpr int kAlphaByte = 3;
// Products of two bytes scaled by 2^-8: 255 x 255 gives 254, a slight
// darkening that is part of the screen's look.
constexpr int kProductScaleBits = 8;

// The stretched matte: a copy of the map through scaleAlpha, painted bits
// not kept.
void stretchedMatte(const DisplayBuffers& b, unsigned char hi, unsigned char lo,
                    GIMG<unsigned char>& a) {
    ippiCopy_8u_C1R(b.mask, b.maskStep, a.ptr(), a.step, b.size);
    scaleAlpha(a, hi, lo, false);
}

void setOpaque(const DisplayBuffers& b) {
    ippiSet_8u_C4CR(255, b.image + kAlphaByte, b.imageStep, b.size);
}

}  // namespace

void showMatteWithColour(const DisplayBuffers& b, unsigned char hi, unsigned char lo,
                         const unsigned char* color, bool colourOverForeground) {
    const int w = b.size.width, h = b.size.height;
    // Every plane is allocated before the picture is touched.
    GIMG<unsigned char> a(w, h), inverse(w, h), picture(w, h), colour(w, h);
    stretchedMatte(b, hi, lo, a);
    Set(static_cast<unsigned char>(255), inverse);
    Sub(a, inverse, 0);
    // The picture is weighted by alpha where the colour covers the background,
    // by its inverse where the colour covers the foreground.
    const GIMG<unsigned char>& pictureWeight = colourOverForeground ? inverse : a;
    const GIMG<unsigned char>& colourWeight = colourOverForeground ? a : inverse;
    for (int c = 0; c < kColourChannels; ++c) {
        // color is red, green, blue; the picture's byte 0 is blue.
        const unsigned char k = color[2 - c];
        ippiCopy_8u_C4C1R(b.image + c, b.imageStep, picture.ptr(), picture.step, b.size);
        Mul(pictureWeight, picture, kProductScaleBits);
        Copy(colourWeight, colour);
        Mul(k, colour, kProductScaleBits);
        Add(colour, picture, 0);
        ippiCopy_8u_C1C4R(picture.ptr(), picture.step, b.image + c, b.imageStep, b.size);
    }
    setOpaque(b);
}

void showMatteGrey(const DisplayBuffers& b, unsigned char hi, unsigned char lo) {
    GIMG<unsigned char> a(b.size.width, b.size.height);
    stretchedMatte(b, hi, lo, a);
    for (int c = 0; c < kColourChannels; ++c)
        ippiCopy_8u_C1C4R(a.ptr(), a.step, b.image + c, b.imageStep, b.size);
    setOpaque(b);
}
