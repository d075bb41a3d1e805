// Thread and solver-environment switches, the live image-record counter and
// the stopwatch.
#pragma once

#include <atomic>

#include "api/keepcut.h"

// 0: the direct solver may not work out of core. Any thread may set it up.
extern std::atomic<int> gMKL_PARDISO_OOC_OK;
// Live public image records of the whole process: a record may be created on
// one thread and freed on another, and a leak check wants them all.
extern std::atomic<int> g_rkpImgNum;
// Stopwatch start (ticks), then the last reading (s); per thread, so that one
// thread's timing does not restart another's.
extern thread_local double g_timer;

// Accepted for hosts that call them; the thread count stays the runtime's default.
void setMaxOMPThreads(int n);
void resetMaxOMPThreads();
// Always 0: the out-of-core path of the direct solver is never taken.
int isPardisoOOCOk();

void clearRKPNUM();
void changeRKPNUM(int d);
int getRKPNUM();
