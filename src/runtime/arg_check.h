// Boundary checks for host buffers: entries refuse what would make them read
// or write out of bounds, and say so in the message log.
#pragma once

#include <string>

#include "runtime/err_msg.h"

// Result of an entry that refused its arguments.
inline constexpr int kInvalidArgument = -2;

// Logs "<entry>: <what>\n" and returns false.
inline bool rkRefuse(const char* entry, const char* what) {
    std::string line = std::string(entry) + ": " + what + "\n";
    copyErrMsg(line.c_str());
    return false;
}

// True when a host buffer of w x h pixels of bytesPerPixel, rowBytes apart, can
// be addressed; otherwise logs why and returns false.
inline bool rkCheckBuffer(const char* entry, const char* name, const void* p, int w, int h,
                          long long rowBytes, int bytesPerPixel) {
    if (!p) return rkRefuse(entry, (std::string(name) + " is null").c_str());
    if (w < 0 || h < 0)
        return rkRefuse(entry, (std::string(name) + " has a negative size").c_str());
    if (rowBytes < static_cast<long long>(w) * bytesPerPixel)
        return rkRefuse(entry, (std::string(name) + " rows are shorter than its width").c_str());
    return true;
}
