/* The direct mask entry from strict C99 through the public header and the
   shared library: a rough mask over a two-colour picture is refined, and a
   broken record is refused. */
#include <stdio.h>
#include <string.h>

#include "keepcut.h"

enum { W = 24, H = 16, STEP = W + 3 };

static int failures;

static void check(int ok, const char* what) {
    if (!ok) {
        printf("%s\n", what);
        ++failures;
    }
}

int main(void) {
    static unsigned char red[H][STEP], green[H][STEP], blue[H][STEP], alpha[H][STEP];
    RKMaskImage image;
    int x, y, inBand = 1, keptSides = 1;

    /* Dark left half, bright right half; the mask is cut on the left third,
       keep on the right third and unknown between. */
    for (y = 0; y < H; ++y)
        for (x = 0; x < W; ++x) {
            red[y][x] = green[y][x] = blue[y][x] = (unsigned char)(x < W / 2 ? 20 : 220);
            alpha[y][x] = (unsigned char)(x < W / 3 ? 0 : x >= 2 * W / 3 ? 255 : 128);
        }
    memset(&image, 0, sizeof image);
    image.planes[0] = &red[0][0];
    image.planes[1] = &green[0][0];
    image.planes[2] = &blue[0][0];
    image.planeRowBytes = STEP;
    image.alpha = &alpha[0][0];
    image.alphaRowBytes = STEP;
    image.width = W;
    image.height = H;

    check(rkMaskAlpha(&image, 0, 255, 0, 255, 0, 0, 0.0f) == 1, "rkMaskAlpha failed");
    /* Unknown pixels never reach 0 or 255; the dark side of the band leans to
       cut and the bright side to keep. */
    for (y = 1; y < H - 1; ++y)
        for (x = W / 3; x < 2 * W / 3; ++x)
            inBand = inBand && alpha[y][x] >= 1 && alpha[y][x] <= 254;
    for (y = 1; y < H - 1; ++y)
        keptSides = keptSides && alpha[y][W / 3 + 1] < 128 && alpha[y][2 * W / 3 - 2] > 128;
    check(inBand, "an unknown pixel reached 0 or 255");
    check(keptSides, "the band did not follow the colours");

    image.planes[2] = NULL;
    check(rkMaskAlpha(&image, 0, 255, 0, 255, 0, 0, 0.0f) == -2, "a null plane was accepted");
    check(rkMaskAlpha(NULL, 0, 255, 0, 255, 0, 0, 0.0f) == -2, "a null record was accepted");
    return failures == 0 ? 0 : 1;
}
