// The one guard every exported computation runs inside: it turns whatever the
// engine throws into the entry's integer result and a line in the message log.
#pragma once

#include <cstdio>
#include <new>
#include <utility>

#include "runtime/arg_check.h"
#include "runtime/err_msg.h"
#include "runtime/result_codes.h"
#include "runtime/rk_base.h"

// Result of an entry whose computation ran out of memory or failed unexpectedly.
inline constexpr int kEntryFailed = -6;

enum class UnknownFailureText {
    Unknown,     // "Unknown Engine Error."
    OutOfMemory  // the main keep/cut entry reports every unexpected failure as memory
};

// Logs "<entry>: result <code>, <meaning>" on a line of its own, so that the
// log says which entry failed and why even where the thrower left no text.
// Formats into a stack buffer: this runs when memory may be exhausted.
inline void rkLogResult(const char* entry, int code) noexcept {
    const char* meaning = rkResultMeaning(code);
    char line[256];
    std::snprintf(line, sizeof line, "\n%s: result %d, %s\n", entry, code,
                  meaning ? meaning : "an undocumented failure");
    copyErrMsg(line);
}

// Refusal of an entry's arguments: logs "<entry>: <what>" and returns -2.
inline int rkRefuseWith(const char* entry, const char* what) {
    rkRefuse(entry, what);
    return kInvalidArgument;
}

// Runs body() (which returns the entry's int result) and applies the entry
// policy: memory exhaustion -> out-of-memory text and -6; a thrown int -> that
// int; anything else -> the failure text and -6. Each of these also logs the
// entry's name, the result and its meaning. Locals of body are destroyed on
// the way out, so their memory is freed on every path.
template <typename Body>
int rkGuardEntry(const char* entry, Body&& body,
                 UnknownFailureText unknown = UnknownFailureText::Unknown) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::bad_alloc&) {
        copyErrMsg(kOutOfMemoryText);
    } catch (const RkBase::RKRC&) {
        copyErrMsg(kOutOfMemoryText);
    } catch (int code) {
        rkLogResult(entry, code);
        return code;
    } catch (...) {
        copyErrMsg(unknown == UnknownFailureText::OutOfMemory ? kOutOfMemoryText
                                                              : kUnknownErrorText);
    }
    rkLogResult(entry, kEntryFailed);
    return kEntryFailed;
}
