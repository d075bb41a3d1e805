// Boundary checks of a keep/cut request record: entries refuse a record that
// would make them read or write outside the host's buffers.
#pragma once

#include "api/keepcut.h"
#include "runtime/arg_check.h"

// Which buffers an entry touches.
enum class KeepCutBuffers {
    MaskAndBrush,  // the two maps only (restoring brush strokes)
    All,           // picture and maps; foreground when given or recoverForeground is set
};

// True when the request is usable: non-null record and buffers, non-negative
// sizes, rows at least as long as the picture's width, and a non-empty region
// inside the picture. Otherwise logs "<entry>: <why>" and returns false.
bool checkKeepCutRequest(const char* entry, const RKPSStructMsk2* request, KeepCutBuffers which);
