// Thread and solver-environment switches, the live image-record counter and
// the stopwatch.
#pragma once

#include "api/keepcut.h"

extern int gMKL_PARDISO_OOC_OK;  // 0: the direct solver may not work out of core
extern int g_rkpImgNum;          // live public image records
extern double g_timer;           // stopwatch start (ticks), then the last reading (s)

// Accepted for hosts that call them; the thread count stays the runtime's default.
void setMaxOMPThreads(int n);
void resetMaxOMPThreads();
// Always 0: the out-of-core path of the direct solver is never taken.
int isPardisoOOCOk();

void clearRKPNUM();
void changeRKPNUM(int d);
int getRKPNUM();
