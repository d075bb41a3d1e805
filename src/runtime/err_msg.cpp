// Message log ring: append, rotate to oldest-first on read, clear. One lock
// covers every change to the ring, so texts from requests on several threads
// land whole and in the order their appends took the lock.
#include "runtime/err_msg.h"

#include <algorithm>
#include <cstring>
#include <mutex>

// The ring plus one byte that stays zero: a host still reading the returned
// text while another thread appends (and so moves the terminator) stops at
// the end of the buffer at the latest.
char g_rkLastErrMsg_p[kErrMsgBytes + 1];
int g_rkLastErrEnd = 0;
bool g_rkLastErrIsWrap = false;

namespace {
// Constant-initialised, so it is ready even for texts logged during start-up.
constinit std::mutex g_logLock;
}  // namespace

int copyErrMsg(const char* text) {
    const std::lock_guard<std::mutex> hold(g_logLock);
    if (!text) return g_rkLastErrEnd;
    for (const char* c = text; *c; ++c) {
        g_rkLastErrMsg_p[g_rkLastErrEnd++] = *c;
        if (g_rkLastErrEnd >= kErrMsgBytes) {
            g_rkLastErrEnd = 0;
            g_rkLastErrIsWrap = true;
        }
    }
    return g_rkLastErrEnd;
}

char* getErrMsg(void) {
    const std::lock_guard<std::mutex> hold(g_logLock);
    if (g_rkLastErrIsWrap) {
        // Rotate so that the byte after the end position becomes byte 0. In
        // place: a host reads the log after a failure, often one of memory.
        std::rotate(g_rkLastErrMsg_p, g_rkLastErrMsg_p + g_rkLastErrEnd + 1,
                    g_rkLastErrMsg_p + kErrMsgBytes);
        g_rkLastErrEnd = kErrMsgBytes - 1;
        g_rkLastErrIsWrap = false;
    }
    g_rkLastErrMsg_p[g_rkLastErrEnd] = '\0';
    return g_rkLastErrMsg_p;
}

void clearErrMsg(void) {
    const std::lock_guard<std::mutex> hold(g_logLock);
    g_rkLastErrEnd = 0;
    g_rkLastErrIsWrap = false;
}
