/* Compiled as strict C99 against the public header alone and linked to the
   shared library: the C face must be usable from C. */
#include <stdio.h>
#include <string.h>

#include "keepcut.h"

static int kicks;
static int lastCurrent;

static int onProgress(int current, int total, void* data) {
    (void)total;
    ++*(int*)data;
    lastCurrent = current;
    return 7;
}

int main(void) {
    double usable = 0.0, again = 0.0;
    int failures = 0;

    clearErrMsg();
    copyErrMsg("hello ");
    copyErrMsg("host");
    if (strcmp(getErrMsg(), "hello host") != 0) {
        puts("message log did not round-trip");
        ++failures;
    }

    setProgProc(onProgress, &kicks, 100, 30);
    if (progressKick() != 7 || kicks != 1 || lastCurrent != 30) {
        puts("progress callback not reached");
        ++failures;
    }
    initProgProc();

    checkMemInBytes(&usable, &again);
    if (usable < 500000000.0 || usable != again || usableMemInMB() <= 0) {
        puts("memory budget out of range");
        ++failures;
    }
    if (setRKEnvVars() != 1 || restoreRKEnvVars() != 1) ++failures;
    startTimer();
    if (endTimer() < 0.0) ++failures;
    gTempPath[0] = '\0';

    {
        /* A keep map with one band pixel: the box is that pixel plus the
           12-pixel margin, and every other box pixel counts as keep. */
        unsigned char map[40 * 40];
        int x = -1, w = -1, y = -1, h = -1, keep = -1, cut = -1;
        memset(map, 255, sizeof map);
        map[20 * 40 + 20] = 128;
        if (rkMaskBBox(0, map, 40, 40, 40, &x, &w, &y, &h, &keep, &cut, 0, 255, 1) != 1 || x != 8 ||
            w != 25 || y != 8 || h != 25 || keep != 25 * 25 - 1 || cut != 0) {
            puts("mask bounding box wrong");
            ++failures;
        }
    }
    {
        /* A 48 x 40 picture, dark on the left and bright on the right, cut
           painted on the left quarter and keep on the right quarter, the
           middle unknown: a whole-picture job must succeed, keep every
           painted byte and leave only even bytes in the middle. */
        enum { W = 48, H = 40 };
        static unsigned char image[H][W * 4], mask[H][W], brush[H][W], before[H][W];
        RKPSStructMsk2 request;
        int x, y, intact = 1, even = 1;
        for (y = 0; y < H; ++y)
            for (x = 0; x < W; ++x) {
                unsigned char v = (unsigned char)(x < W / 2 ? 30 + x : 200 + x / 2);
                image[y][4 * x] = v;
                image[y][4 * x + 1] = (unsigned char)(v / 2 + y);
                image[y][4 * x + 2] = v;
                image[y][4 * x + 3] = 255;
                mask[y][x] = x < W / 4 ? RK_MASK_CUT : (x >= 3 * W / 4 ? RK_MASK_KEEP : 128);
            }
        memcpy(brush, mask, sizeof mask);
        memcpy(before, mask, sizeof mask);
        memset(&request, 0, sizeof request);
        request.image = &image[0][0];
        request.imageRowBytes = W * 4;
        request.mask = &mask[0][0];
        request.maskRowBytes = W;
        request.brushInfo = &brush[0][0];
        request.brushInfoRowBytes = W;
        request.width = request.roiWidth = W;
        request.height = request.roiHeight = H;
        if (rkKeepCutToAlpha(&request, 0, false) != 1) {
            puts("keep/cut entry failed");
            puts(getErrMsg());
            ++failures;
        }
        for (y = 0; y < H; ++y)
            for (x = 0; x < W; ++x) {
                if ((before[y][x] & 1) && mask[y][x] != before[y][x]) intact = 0;
                if (!(before[y][x] & 1) && (mask[y][x] & 1)) even = 0;
            }
        if (!intact || !even) {
            puts("keep/cut entry changed painted bytes or left odd results");
            ++failures;
        }
        if (recoverBrushInfo(NULL) != -2) ++failures;
    }
    return failures == 0 ? 0 : 1;
}
