// How much memory the engine lets itself use, and a trial allocation.
#pragma once

#include "api/keepcut.h"

// Memory kept back for the host and the system.
inline constexpr double kMemReserveBytes = 300000000.0;
// Floor and ceiling of the usable figure, whatever the machine has.
inline constexpr double kMemUsableMin = 500000000.0;
inline constexpr double kMemUsableMax = 2900000000.0;
// usableMemInMB's divisor: deliberately not a true megabyte; callers multiply
// by 1000, so their budget is 0.8 of the usable bytes.
inline constexpr double kMemUnitBytes = 1250.0;

// The usable figure for a machine with the given physical memory.
double usableBytesFromPhysical(double physicalBytes);
// Physical memory of this machine in bytes.
double physicalMemoryBytes();

// Tries to build n (at most 8) three-channel float images of w x h at once;
// true when all fit. Nothing stays allocated.
bool testMemAlloc(int w, int h, int n);
