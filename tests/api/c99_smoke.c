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
    return failures == 0 ? 0 : 1;
}
