// Peak resident memory of this process around a piece of work, from the
// kernel's high-water mark (Linux /proc/self).
#pragma once

// Restarts the high-water mark at the current resident size.
void resetPeakMemory();
// Resident memory now, in MiB.
double residentMB();
// Highest resident memory since the last reset, in MiB.
double peakMB();
