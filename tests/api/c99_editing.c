/* The editing entries from strict C99 through the public header and the
   shared library: each is called once on a small map and one value checked. */
#include <stdio.h>
#include <string.h>

#include "keepcut.h"

enum { W = 8, H = 6 };

static int failures;

static void check(int ok, const char* what) {
    if (!ok) {
        printf("%s\n", what);
        ++failures;
    }
}

int main(void) {
    static unsigned char image[H][W * 4], mask[H][W], src[H][W];
    const unsigned char white[3] = {255, 255, 255}, black[3] = {0, 0, 0};
    RKPSStructMsk2 request;
    int rect[4] = {-1, -1, -1, -1};
    int x, y;

    memset(image, 100, sizeof image);
    memset(mask, 128, sizeof mask);
    memset(&request, 0, sizeof request);
    request.image = &image[0][0];
    request.imageRowBytes = W * 4;
    request.mask = &mask[0][0];
    request.maskRowBytes = W;
    request.width = W;
    request.height = H;
    request.hairForeColor = white;
    request.hairBackColor = black;

    /* The whole map is one unpainted area: type 2 makes it the band. */
    check(rkFloodFillAlpha(&mask[0][0], W, W, H, 3, 3, 0, 0, 2, 0, rect) == 1 &&
              mask[5][7] == 126 && rect[2] == W && rect[3] == H,
          "flood fill did not fill the band");

    /* Grey 100 under white over black projects to 100: painted as 101. */
    check(rkHairSelect(&request, 2, 2, 5, 2, 1) == 1 && mask[2][2] == 101,
          "hair selection did not paint the stroke's start");

    /* The picture's colour exactly, tolerance 1: unpainted bytes become keep. */
    {
        const unsigned char grey[3] = {100, 100, 100};
        check(rkColorRangeSelect(&request, 0, 4, W - 1, 4, 0, grey, 1, true) == 1 &&
                  mask[4][3] == 255,
              "colour range did not select the exact colour");
    }

    /* No border: src replaces dst. */
    memset(src, 40, sizeof src);
    check(rkMergeAlphaRect(&src[0][0], W, &mask[0][0], W, W, H, 0) == 1 && mask[1][1] == 40,
          "merge did not paste src");

    check(rkAlphaShift(&image[0][0], W * 4, W, H, &mask[0][0], W, 2.0f) == 1 && image[0][0] == 100,
          "alpha shift changed the picture");

    for (y = 0; y < H; ++y)
        for (x = 0; x < W; ++x) mask[y][x] = 1;
    check(rkAlphaMerge(&image[0][0], W * 4, W, H, &mask[0][0], W, 0.0f) == 1 &&
              image[0][4] == 100 && mask[0][0] == 255,
          "alpha merge did not keep the picture under a mask of 1");

    check(rkFloodFillAlpha(NULL, W, W, H, 0, 0, 0, 0, 0, 0, rect) == -2,
          "flood fill accepted a null map");
    return failures == 0 ? 0 : 1;
}
