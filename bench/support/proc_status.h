// Resident memory figures of this process for the benchmarks: the kernel's
// high-water mark (VmHWM) and how to restart it.
#pragma once

// A field of /proc/self/status ("VmHWM:", "VmRSS:") in kB, or -1.
long procStatusKB(const char* field);
// Restarts the high-water mark at the current resident size.
void resetPeakResident();
