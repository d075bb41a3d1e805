// Support shared by the whole-process reliability tests: the keep/cut jobs
// they run, the forked children that run them, and which object of the
// process a code address belongs to.
#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

namespace kc_sweep {

struct JobKind {
    const char* name;
    int width, height, hiResPass;
    bool region;  // a region job over part of the picture (cellMode 1, merged by maximum)
    bool recoverForeground;
};

struct JobOutcome {
    int result;
    int paintedChanged;  // painted (odd) input bytes that changed
    int oddResults;      // unpainted input bytes of the region that came out odd
    bool strokesIntact() const { return paintedChanged == 0 && oddResults == 0; }
};

// Builds the job, calls before(), runs the main entry, calls after() and
// checks the painted bytes: nothing between the hooks allocates but the entry.
JobOutcome runJob(const JobKind& kind, const std::function<void()>& before,
                  const std::function<void()>& after);
// The results the main entry documents: success, the engine's thrown codes
// and -6 for memory or an unexpected failure.
bool isDocumentedResult(int result);
std::string format(const char* pattern, ...) __attribute__((format(printf, 1, 2)));

// How a forked child ended.
struct ChildEnd {
    bool returned = false;       // its work returned; otherwise signal or status tells
    int status = 0, signal = 0;  // signal SIGALRM: the alarm ended a hang
    int stackDepth = 0;
    void* stack[48] = {};   // at the fatal signal, if one was caught
    std::string errorText;  // the start of its standard error, on one line
    std::string describe(unsigned alarmSeconds) const;  // when the work did not return
};

// Runs work(i, area) in a forked child, two at a time, for every i in [0, count)
// with an alarm against hangs and a zeroed area shared with the parent (what it
// wrote before dying stays readable); finished(i, area, end) then runs in the
// parent, which must not have started threads (a child inherits only the
// forking one).
void runChildren(int count, std::size_t areaBytes, unsigned alarmSeconds,
                 const std::function<void(int, void*)>& work,
                 const std::function<void(int, const void*, const ChildEnd&)>& finished);
template <class Report, class Work, class Finished>
void runChildren(int count, unsigned alarmSeconds, Work work, Finished finished) {
    runChildren(
        count, sizeof(Report), alarmSeconds,
        [&](int i, void* area) { work(i, *static_cast<Report*>(area)); },
        [&](int i, const void* area, const ChildEnd& end) {
            finished(i, *static_cast<const Report*>(area), end);
        });
}

// Engine: this executable (engine code and the allocators it hands CHOLMOD);
// SuiteSparse: CHOLMOD and its orderings, linked in; Libc: glibc and the loader.
enum class Origin { Engine, SuiteSparse, Metis, OpenCV, Tbb, Blas, Gomp, Cxx, Gcc, Libc, Other };
inline constexpr int kOriginCount = static_cast<int>(Origin::Other) + 1;
Origin originOf(const void* codeAddress);
inline const char* originName(Origin origin) {
    static constexpr const char* kNames[kOriginCount] = {
        "engine",  "suitesparse", "libmetis", "libopencv", "libtbb", "libopenblas",
        "libgomp", "libstdc++",   "libgcc_s", "libc",      "other"};
    return kNames[static_cast<int>(origin)];
}
// One line per frame: object, function and offset (the executable's frames
// named by addr2line, which sees local symbols too). Runs in the process whose
// addresses these are, or in its parent before it forked.
void printStack(std::FILE* out, void* const* frames, int depth, const char* indent);

}  // namespace kc_sweep
