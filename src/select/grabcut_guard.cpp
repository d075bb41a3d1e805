// Log lines of the GrabCut stroke's guard.
#include "select/grabcut_guard.h"

#include <cstdio>

#include "runtime/err_msg.h"
#include "runtime/result_codes.h"

int grabCutLogFailure(const char* entry, int result, const char* what) noexcept {
    // A stack buffer: this runs when memory may be exhausted.
    char line[320];
    std::snprintf(line, sizeof line, "\n%s: result %d, %s\n", entry, result, what);
    copyErrMsg(line);
    return result;
}

int grabCutOutOfMemory(const char* entry) noexcept {
    copyErrMsg(kOutOfMemoryText);
    return grabCutLogFailure(entry, kGrabCutOutOfMemory, "out of memory");
}

int grabCutThrownCode(const char* entry, int code) noexcept {
    const char* meaning = rkResultMeaning(code);
    char what[160];
    std::snprintf(what, sizeof what, "engine error %d (%s)", code,
                  meaning ? meaning : "undocumented");
    return grabCutLogFailure(entry, code - kGrabCutThrownCodeOffset, what);
}
