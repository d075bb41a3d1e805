// Invariants shared by the fuzz targets: the results each entry documents, the
// log line of a refused call, the host's progress callback, and the failure
// that stops the fuzzer (abort, so that libFuzzer keeps the input).
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "api/keepcut.h"

namespace kc_fuzz {

// Bytes of the message log's end shown with a failure.
inline constexpr size_t kLogTailShown = 600;

[[noreturn]] inline void fail(const std::string& what) {
    const std::string log = getErrMsg();
    std::fprintf(stderr, "fuzz invariant broken: %s\nmessage log ends: %s\n", what.c_str(),
                 log.substr(log.size() > kLogTailShown ? log.size() - kLogTailShown : 0).c_str());
    std::abort();
}
inline void require(bool ok, const std::string& what) {
    if (!ok) fail(what);
}
// Fails with the message of a check that returned one (empty means fine).
inline void requireNone(const std::string& problem) {
    if (!problem.empty()) fail(problem);
}

// A refused call of an entry without a result must still log why.
inline void requireLogged(const char* entry) {
    require(getErrMsg()[0] != '\0', std::string("a refused ") + entry + " left no log line");
}
inline std::string at(int x, int y) {
    return " at (" + std::to_string(x) + ", " + std::to_string(y) + ")";
}

// Results each entry documents in the public header.
struct DocumentedResults {
    const char* entry;
    std::vector<int> codes;
};
inline const DocumentedResults kKeepCutResults{"rkKeepCutToAlpha",
                                               {1, -1, -2, -5, -6, 102, 121, 122, 123, 125, 130}};
inline const DocumentedResults kRecoverBrushResults{"recoverBrushInfo", {1, -2}};
inline const DocumentedResults kForegroundCellResults{"rkRecoverForegroundCell",
                                                      {1, -2, -6, 102, 121, 122, 123, 125, 130}};
inline const DocumentedResults kComputeOnlyResults{"rkRecoverDuringComputeOnly", {1, -2, -6, 102}};
inline const DocumentedResults kMaskBBoxResults{"rkMaskBBox", {1, -2, -6}};
inline const DocumentedResults kSolverResults{"pardisoSolverOOC", {1, 0, -2, -6, 121, 122, 123}};

// Result of a refused call.
inline constexpr int kRefused = -2;

// The result is documented, and it is a refusal exactly when the arguments
// were ones the header says are refused. With the log cleared before the
// call, every failure, a refusal included, must leave a line that explains it.
inline void requireResult(const DocumentedResults& doc, int result, bool mustRefuse) {
    const std::string call = std::string(doc.entry) + " returned " + std::to_string(result);
    require(std::find(doc.codes.begin(), doc.codes.end(), result) != doc.codes.end(),
            call + ", not a documented result");
    if (mustRefuse) require(result == kRefused, call + " for arguments it must refuse");
    if (!mustRefuse) require(result != kRefused, call + " (refused) for sound arguments");
    if (result != 1) require(getErrMsg()[0] != '\0', call + " without a log line");
}

// The host's progress callback: it must only ever see the data pointer of
// the call in progress (never a stale one from an earlier call), and the
// staged reporter's values stay within its scale.
class ProgressWatch {
  public:
    // Scale of the staged reporter: values are millionths.
    static constexpr int kStagedTotal = 1000000;

    // The data pointer for the next call: alternates between two addresses
    // so that a pointer kept from the previous call is told apart. Null when
    // the host gives no data.
    static void* beginCall(bool giveData) {
        static int tokens[2];
        static int next = 0;
        expected() = giveData ? &tokens[next++ & 1] : nullptr;
        return expected();
    }
    static int callback(int current, int total, void* data) {
        require(data != nullptr && data == expected(),
                "progress callback got a data pointer that is not the current call's");
        if (total == kStagedTotal)
            require(current >= 0 && current <= total,
                    "progress " + std::to_string(current) + " of " + std::to_string(total));
        return returned();
    }
    // What the callback answers; the engine must not act on it.
    static int& returned() {
        static int r = 1;
        return r;
    }

  private:
    static void*& expected() {
        static void* p = nullptr;
        return p;
    }
};

}  // namespace kc_fuzz
