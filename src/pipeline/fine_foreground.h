// Foreground colours of the fine pass: the multi-level estimate over the
// request's region from the refined alpha.
#pragma once

#include "api/keepcut.h"

// Writes the three colour bytes of every pixel of the request's region in
// `foreground` (the fourth byte stays); reads the mask as alpha (painted cut,
// byte 1, as 0). Throws what allocation throws.
void recoverForegroundMultiLevel(const RKPSStructMsk2& request);
