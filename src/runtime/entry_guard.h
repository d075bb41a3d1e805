// The one guard every exported computation runs inside: it turns whatever the
// engine throws into the entry's integer result and a line in the message log.
#pragma once

#include <new>
#include <utility>

#include "runtime/err_msg.h"
#include "runtime/rk_base.h"

// Result of an entry whose computation ran out of memory or failed unexpectedly.
inline constexpr int kEntryFailed = -6;

enum class UnknownFailureText {
    Unknown,     // "Unknown Engine Error."
    OutOfMemory  // the main keep/cut entry reports every unexpected failure as memory
};

// Runs body() (which returns the entry's int result) and applies the entry
// policy: memory exhaustion -> out-of-memory text and -6; a thrown int -> that
// int; anything else -> the failure text and -6. Locals of body are destroyed
// on the way out, so their memory is freed on every path.
template <typename Body>
int rkGuardEntry(Body&& body, UnknownFailureText unknown = UnknownFailureText::Unknown) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::bad_alloc&) {
        copyErrMsg(kOutOfMemoryText);
    } catch (const RkBase::RKRC&) {
        copyErrMsg(kOutOfMemoryText);
    } catch (int code) {
        return code;
    } catch (...) {
        copyErrMsg(unknown == UnknownFailureText::OutOfMemory ? kOutOfMemoryText
                                                              : kUnknownErrorText);
    }
    return kEntryFailed;
}
