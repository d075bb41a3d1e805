// Message log ring: append, rotate to oldest-first on read, clear.
#include "runtime/err_msg.h"

#include <cstring>
#include <vector>

char g_rkLastErrMsg_p[kErrMsgBytes];
int g_rkLastErrEnd = 0;
bool g_rkLastErrIsWrap = false;

int copyErrMsg(const char* text) {
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
    if (g_rkLastErrIsWrap) {
        // Rotate so that the byte after the end position becomes byte 0.
        std::vector<char> copy(g_rkLastErrMsg_p, g_rkLastErrMsg_p + kErrMsgBytes);
        for (int i = 0; i < kErrMsgBytes; ++i)
            g_rkLastErrMsg_p[i] = copy[(g_rkLastErrEnd + 1 + i) % kErrMsgBytes];
        g_rkLastErrEnd = kErrMsgBytes - 1;
        g_rkLastErrIsWrap = false;
    }
    g_rkLastErrMsg_p[g_rkLastErrEnd] = '\0';
    return g_rkLastErrMsg_p;
}

void clearErrMsg(void) {
    g_rkLastErrEnd = 0;
    g_rkLastErrIsWrap = false;
}
