// The flat progress counter driven by the solvers, one per thread.
#include <algorithm>
#include <climits>

#include "runtime/progress.h"

thread_local RKProgressProc gProgProc = nullptr;
thread_local void* gProgDatap = nullptr;
thread_local int gProgressCurrent = 0;
thread_local int gProgressInc = 0;
thread_local int gProgressTotal = 0;

int initProgProc(void) {
    gProgressTotal = gProgressCurrent = gProgressInc = 0;
    gProgProc = nullptr;
    gProgDatap = nullptr;
    return 1;
}

int setProgProc(RKProgressProc proc, void* data, int total, int inc) {
    gProgProc = proc;
    gProgDatap = data;
    gProgressTotal = total;
    gProgressInc = inc;
    gProgressCurrent = 0;
    return 1;
}

int setProgRange(int total, int inc) {
    gProgressTotal = total;
    gProgressInc = inc;
    return gProgressCurrent;
}

int progressKick(void) {
    if (!gProgProc || !gProgDatap) return 1;
    // Added in 64 bits: the host's total and increment are arbitrary ints, and
    // the sum must not overflow.
    long long next = static_cast<long long>(gProgressCurrent) + gProgressInc;
    // At the end the bar falls back to half-way rather than sitting full while
    // work goes on.
    if (next >= gProgressTotal) next = gProgressTotal / 2;
    gProgressCurrent = static_cast<int>(std::max<long long>(next, INT_MIN));
    return gProgProc(gProgressCurrent, gProgressTotal, gProgDatap);
}
