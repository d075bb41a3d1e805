// The display modes of the masking screen: a host picture (4 bytes a pixel,
// blue, green, red, fourth byte) composed in place with a brush map or matte.
#pragma once

#include "core/ipp_types.h"

// The two host buffers of one repaint, already checked by the entry.
struct DisplayBuffers {
    unsigned char* image;
    int imageStep;
    const unsigned char* mask;
    int maskStep;
    IppiSize size;
};

// Mode 1: darken to 7/8 and tint by brush code (blue computed, green keep,
// red cut, red and green other painted values).
void showBrushOverlay(const DisplayBuffers& b);
// Mode 2: brush codes as flat opaque colours (red 0, green 255, blue else).
void showBrushCodes(const DisplayBuffers& b);
// Modes 3, 6 (colourOverForeground false) and 4 (true): the stretched matte
// blended with the colour (red, green, blue) over background or foreground.
void showMatteWithColour(const DisplayBuffers& b, unsigned char hi, unsigned char lo,
                         const unsigned char* color, bool colourOverForeground);
// Mode 5: the stretched matte as opaque grey.
void showMatteGrey(const DisplayBuffers& b, unsigned char hi, unsigned char lo);
