/* Compiled as strict C99 against the public header alone and linked to the
   shared library: every display and stroke entry is callable from C. */
#include <stdio.h>
#include <string.h>

#include "keepcut.h"

static int failures;

static void expect(int ok, const char* what) {
    if (!ok) {
        puts(what);
        ++failures;
    }
}

int main(void) {
    unsigned char image[4 * 4], mask[4], src[4 * 4], map[8 * 8], aux[8 * 8];
    unsigned char color[3] = {0, 0, 255}; /* red, green, blue */

    /* Mode 3 with no alpha shows the colour: blue 255 x 255 / 256 gives 254. */
    memset(image, 100, sizeof image);
    memset(mask, 0, sizeof mask);
    expect(rkShowImageAlpha(image, 16, 4, 1, mask, 4, 255, 0, 3, color) == 1 && image[0] == 254 &&
               image[1] == 0 && image[3] == 255,
           "rkShowImageAlpha mode 3 wrong");
    expect(rkShowImageAlpha(NULL, 16, 4, 1, mask, 4, 255, 0, 3, color) == -2,
           "rkShowImageAlpha accepted a null image");

    mask[0] = 128;
    expect(rkScaleAlpha(mask, 4, 4, 1, 192, 64, 0) == 1 && mask[0] == 126, "rkScaleAlpha wrong");

    memset(image, 100, sizeof image);
    memset(src, 200, sizeof src);
    rkShowKeepBlend(image, 16, 4, 1, src, 16, 0.25f);
    expect(image[0] == 125 && image[3] == 100, "rkShowKeepBlend wrong");

    /* Full strength turns an unpainted, alpha-0 pixel grey. */
    image[0] = 30, image[1] = 90, image[2] = 200;
    mask[0] = 0;
    expect(rkDesaturation(image, 16, 4, 1, mask, 4, 1.0f) == 1 && image[0] == image[1] &&
               image[1] == image[2],
           "rkDesaturation wrong");

    memset(map, 50, sizeof map);
    expect(rkDrawLine8u(map, 8, 8, 8, 3, 3, 3, 3, 0, 3, 100) == 1 && map[3 * 8 + 3] == 101,
           "rkDrawLine8u wrong");

    memset(map, 50, sizeof map);
    memset(aux, 9, sizeof aux);
    rkDrawGradientLine8u(map, 8, 8, 8, aux, 8, 1, 1, 6, 6, 1, 10, 210);
    expect(map[1 * 8 + 1] == 11 && map[6 * 8 + 6] == 211, "rkDrawGradientLine8u wrong");
    return failures == 0 ? 0 : 1;
}
