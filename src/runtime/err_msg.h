// The global message log: a fixed ring of characters that the host reads.
#pragma once

#include "api/keepcut.h"

// Exactly this many bytes; the newest text overwrites the oldest.
inline constexpr int kErrMsgBytes = 40960;

extern char g_rkLastErrMsg_p[kErrMsgBytes];
extern int g_rkLastErrEnd;      // next write position
extern bool g_rkLastErrIsWrap;  // writing has wrapped past the end at least once

// Texts the entry points leave in the log.
inline constexpr const char* kOutOfMemoryText =
    "Out of System Memory !! \nPlease close unused applications or try smaller pictures.";
inline constexpr const char* kUnknownErrorText = "Unknown Engine Error.";
