// What the machine can still give this process right now: the smaller of the
// memory the system reports available and what the process's address-space
// limit leaves. The budget of usableMemInMB is a fixed share of the machine;
// this is the figure that says whether one large block can come at all.
#pragma once

// Bytes; a very large value when neither figure can be read.
double machineHeadroomBytes();
