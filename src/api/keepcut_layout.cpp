// Compile-time checks that the public records keep the layout hosts were
// built against.
#include <cstddef>

#include "api/keepcut.h"

#if defined(__x86_64__) || defined(__aarch64__)
static_assert(sizeof(RKPSStructMsk2) == 160, "request record must stay 160 bytes");
static_assert(offsetof(RKPSStructMsk2, mask) == 16);
static_assert(offsetof(RKPSStructMsk2, brushInfo) == 48);
static_assert(offsetof(RKPSStructMsk2, width) == 60);
static_assert(offsetof(RKPSStructMsk2, roiX) == 68);
static_assert(offsetof(RKPSStructMsk2, cellMode) == 84);
static_assert(offsetof(RKPSStructMsk2, recoverForeground) == 88);
static_assert(offsetof(RKPSStructMsk2, progProc) == 96);
static_assert(offsetof(RKPSStructMsk2, progData) == 104);
// The selection tools' fields fill the 40 bytes between progData and mergeMode.
static_assert(offsetof(RKPSStructMsk2, hairForeColor) == 112);
static_assert(offsetof(RKPSStructMsk2, grabCutBuf) == 128);
static_assert(offsetof(RKPSStructMsk2, gcTop) == 148);
static_assert(offsetof(RKPSStructMsk2, mergeMode) == 152);
// The direct mask record: three plane pointers, then five ints.
static_assert(sizeof(RKMaskImage) == 56, "mask record must stay 56 bytes");
static_assert(offsetof(RKMaskImage, planeRowBytes) == 24);
static_assert(offsetof(RKMaskImage, alpha) == 32);
static_assert(offsetof(RKMaskImage, height) == 48);
#endif
