// The trace lines that image records leave in the message log, so that a
// host's log shows every allocation and release with the live-record count.
#pragma once

#include "api/keepcut_image.h"

// "ImageReAlloc-<record>-<old type, w, h, planes> <new type, w, h, planes>
// <live count>- <four planes>"
void traceReallocRequest(const RKPImage* img, int type, int width, int height, int numPlane);
// "ImageReAlloc done- <four planes> <live count>"
void traceReallocDone(const RKPImage* img);
// "<what>-<record> - <type, w, h, planes> <live count>- <four planes>"
void traceRecord(const char* what, const RKPImage* img);
