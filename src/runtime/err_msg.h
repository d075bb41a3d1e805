// The global message log: a fixed ring of characters that the host reads.
// It is shared by all threads; appends, reads and clears take one lock.
#pragma once

#include "api/keepcut.h"

// Exactly this many bytes; the newest text overwrites the oldest.
inline constexpr int kErrMsgBytes = 40960;

// The ring, followed by one byte that is always zero. Change it only through
// copyErrMsg, getErrMsg and clearErrMsg, which hold the log's lock.
extern char g_rkLastErrMsg_p[kErrMsgBytes + 1];
extern int g_rkLastErrEnd;      // next write position
extern bool g_rkLastErrIsWrap;  // writing has wrapped past the end at least once

// Texts the entry points leave in the log.
inline constexpr const char* kOutOfMemoryText =
    "Out of System Memory !! \nPlease close unused applications or try smaller pictures.";
inline constexpr const char* kUnknownErrorText = "Unknown Engine Error.";
