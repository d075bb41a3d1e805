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
    return failures == 0 ? 0 : 1;
}
