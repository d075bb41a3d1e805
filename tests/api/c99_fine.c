/* The fine pass from strict C99 through the public header and the shared
   library: a whole picture with keep, cut and a band between gets an alpha
   that follows the colours, and a region job is refused. */
#include <stdio.h>
#include <string.h>

#include "keepcut.h"

enum { W = 64, H = 48 };

int main(void) {
    static unsigned char image[H][W * 4], mask[H][W], brush[H][W], fg[H][W * 4];
    RKPSStructMsk2 r;
    int x, y, failures = 0, followed = 1;

    /* Dark left half, bright right half; cut on the left quarter, keep on the
       right quarter, the band between. */
    for (y = 0; y < H; ++y)
        for (x = 0; x < W; ++x) {
            memset(&image[y][4 * x], x < W / 2 ? 30 : 220, 4);
            mask[y][x] = (unsigned char)(x < W / 4 ? 1 : x >= 3 * W / 4 ? 255 : 128);
        }
    memcpy(brush, mask, sizeof mask);
    memcpy(fg, image, sizeof image);
    memset(&r, 0, sizeof r);
    r.image = &image[0][0];
    r.imageRowBytes = W * 4;
    r.mask = &mask[0][0];
    r.maskRowBytes = W;
    r.foreground = &fg[0][0];
    r.foregroundRowBytes = W * 4;
    r.brushInfo = &brush[0][0];
    r.brushInfoRowBytes = W;
    r.width = r.roiWidth = W;
    r.height = r.roiHeight = H;

    if (rkKeepCutToAlphaFine(&r, false) != 1) {
        printf("rkKeepCutToAlphaFine failed: %s\n", getErrMsg());
        ++failures;
    }
    for (y = 2; y < H - 2; ++y)
        followed = followed && mask[y][W / 4 + 2] < 128 && mask[y][3 * W / 4 - 3] > 128 &&
                   (mask[y][W / 2] & 1) == 0;
    if (!followed) {
        printf("the alpha does not follow the colours\n");
        ++failures;
    }
    r.cellMode = 1;
    if (rkKeepCutToAlphaFine(&r, false) != -2) {
        printf("a region job was accepted\n");
        ++failures;
    }
    return failures == 0 ? 0 : 1;
}
