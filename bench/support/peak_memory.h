// Resident-memory figures of this process for benchmarks: a field of
// /proc/self/status, and a reset of the kernel's high-water mark (VmHWM) so
// that the next reading is the peak since the reset.
#pragma once

// The field (for example "VmHWM:") in kB, or -1 when it is not there.
long procStatusKB(const char* field);
// Restarts VmHWM at the current resident size.
void resetPeakResident();
