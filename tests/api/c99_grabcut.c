/* Compiled as strict C99 against the public header alone and linked to the
   shared library: one GrabCut session from C. A dark square on a light
   background is selected from a probable-foreground box, turned into a
   trimap, and the session is given back. */
#include <stdio.h>
#include <string.h>

#include "keepcut.h"

#define SIDE 64

static unsigned char image[SIDE * SIDE * 4];
static unsigned char mask[SIDE * SIDE];
static unsigned char brush[SIDE * SIDE];

int main(void) {
    RKPSStructMsk2 r;
    int failures = 0, x, y, result;

    for (y = 0; y < SIDE; ++y)
        for (x = 0; x < SIDE; ++x) {
            const int inSquare = x >= 20 && x < 44 && y >= 20 && y < 44;
            unsigned char* p = image + 4 * (y * SIDE + x);
            p[0] = (unsigned char)(inSquare ? 30 + (x * 7 + y) % 9 : 200 + (x + y * 5) % 9);
            p[1] = (unsigned char)(inSquare ? 40 + (x + y) % 7 : 190 + (x * 3 + y) % 7);
            p[2] = (unsigned char)(inSquare ? 150 + (x * y) % 11 : 60 + (x + 2 * y) % 11);
            p[3] = 255;
            /* probable foreground in a box around the square */
            mask[y * SIDE + x] = (unsigned char)(x >= 14 && x < 50 && y >= 14 && y < 50);
        }
    memset(&r, 0, sizeof r);
    r.image = image;
    r.imageRowBytes = SIDE * 4;
    r.mask = mask;
    r.maskRowBytes = SIDE;
    r.brushInfo = brush;
    r.brushInfoRowBytes = SIDE;
    r.width = r.height = SIDE;
    r.gcWidth = r.gcHeight = SIDE;

    result = rkGrabCut(&r, 1);
    if (result != 1 || r.grabCutBuf == NULL) {
        printf("rkGrabCut returned %d: %s\n", result, getErrMsg());
        ++failures;
    }
    /* The square stays selected, the box's rim around it does not. */
    if (mask[32 * SIDE + 32] != 1 || mask[16 * SIDE + 16] != 0 || brush[32 * SIDE + 32] != 1) {
        puts("selection wrong");
        ++failures;
    }

    /* The selection as the trimap entry reads it (254/255 selected). */
    for (y = 0; y < SIDE * SIDE; ++y) brush[y] = (unsigned char)(mask[y] == 1 ? 254 : 0);
    rkGrabCutEdgeGen(&r, 6);
    if (mask[32 * SIDE + 32] != 254 || mask[32 * SIDE + 20] != 126 || mask[2 * SIDE + 2] != 0) {
        puts("trimap wrong");
        ++failures;
    }

    rkGrabCutDeleteBuf(&r);
    r.grabCutBuf = NULL;
    if (mask[2 * SIDE + 2] != 1 || mask[32 * SIDE + 32] != 255) {
        puts("map not normalised at the end of the session");
        ++failures;
    }
    if (rkGrabCutCreateBuf(5, 5) != NULL) ++failures;
    if (failures == 0) puts("c99 grabcut: ok");
    return failures != 0;
}
