// Support of the reliability tests: their keep/cut jobs over the generated
// sample, forked children with shared report areas, and the object (found by
// dladdr) a code address belongs to, with stacks printed by function name.
#include "reliability.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <opencv2/core.hpp>
#include <string_view>

#include "api/keepcut.h"
#include "keepcut_job.h"

namespace kc_sweep {
namespace {
// A region job covers a fifth of each side around the subject's upper edge
// before the entry widens it, so that the widened region still leaves part of
// the picture outside; it has the thinnest known rim, and is merged as an
// adding stroke so that the merge step runs too.
constexpr int kRegionFraction = 5;
constexpr int kRegionCellMode = 1;
constexpr int kMergeByMaximum = 1;

// Written by the child at the start of its shared area: by the signal
// handler, or once the work has returned.
struct ChildRecord {
    int returned;
    int depth;
    void* frames[48];
};
// User areas start on a cache line after the record.
constexpr std::size_t kUserOffset = (sizeof(ChildRecord) + 63) / 64 * 64;
// The start of a child's standard error that is kept: a dependency's or the
// runtime's last words, in a line or two.
constexpr std::size_t kErrorTextBytes = 300;
// Room for the handler when the fault was a stack overflow.
constexpr std::size_t kAltStackBytes = 64 * 1024;
// Children at a time: the machine's two cores.
constexpr std::size_t kParallel = 2;

ChildRecord* g_record = nullptr;
alignas(16) char g_altStack[kAltStackBytes];

void onFatalSignal(int sig) {
    g_record->depth = backtrace(g_record->frames, std::size(g_record->frames));
    raise(sig);  // the handler was reset on entry: this ends the child
}

void installCrashHandlers() {
    const stack_t alt{g_altStack, 0, sizeof g_altStack};
    sigaltstack(&alt, nullptr);
    struct sigaction action {};
    action.sa_handler = onFatalSignal;
    action.sa_flags = SA_ONSTACK | SA_RESETHAND | SA_NODEFER;
    for (int sig : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGALRM})
        sigaction(sig, &action, nullptr);
}

const void* executableBase() {
    Dl_info self{};
    dladdr(reinterpret_cast<const void*>(&originOf), &self);
    return self.dli_fbase;
}

// The statically linked solver's functions, by the prefixes of their names,
// except its memory wrappers: they call the allocators the engine set in its
// configuration record, and when those end in a tail call to malloc, the
// wrapper is the caller malloc sees. Their allocations are the engine's.
bool isSuiteSparseSymbol(const char* symbol) {
    const std::string_view name = symbol ? symbol : "";
    const auto any = [&](auto test, auto... words) { return (test(words) || ...); };
    const auto starts = [&](std::string_view prefix) { return name.starts_with(prefix); };
    const auto is = [&](std::string_view word) { return name == word; };
    return any(starts, "cholmod_", "SuiteSparse_", "amd_", "camd_", "colamd", "ccolamd") &&
           !any(is, "cholmod_malloc", "cholmod_calloc", "cholmod_realloc", "cholmod_l_malloc",
                "cholmod_l_calloc", "cholmod_l_realloc", "SuiteSparse_malloc", "SuiteSparse_calloc",
                "SuiteSparse_realloc");
}

// Libraries by a fragment of their file names.
constexpr std::pair<const char*, Origin> kLibraries[] = {
    {"libopencv", Origin::OpenCV},       {"libtbb", Origin::Tbb},
    {"libopenblas", Origin::Blas},       {"libblas", Origin::Blas},
    {"liblapack", Origin::Blas},         {"libgomp", Origin::Gomp},
    {"libstdc++", Origin::Cxx},          {"libgcc_s", Origin::Gcc},
    {"libc.so", Origin::Libc},           {"ld-linux", Origin::Libc},
    {"libcholmod", Origin::SuiteSparse}, {"libsuitesparse", Origin::SuiteSparse},
    {"libmetis", Origin::Metis},
};

}  // namespace

// ---- jobs ------------------------------------------------------------------
bool isDocumentedResult(int result) {
    for (int documented : {1, -1, -2, -5, -6, 102, 121, 122, 123, 125, 130})
        if (result == documented) return true;
    return false;
}

JobOutcome runJob(const JobKind& kind, const std::function<void()>& before,
                  const std::function<void()>& after) {
    keepcut_test::KeepCutJob job(kind.width, kind.height);
    if (kind.region) {
        const int rw = kind.width / kRegionFraction, rh = kind.height / kRegionFraction;
        job.setRegion((kind.width - rw) / 2, kind.height / 4, rw, rh, kRegionCellMode);
        job.request.mergeMode = kMergeByMaximum;
    }
    job.request.recoverForeground = kind.recoverForeground;
    const cv::Mat painted = job.mask.clone();

    before();
    const int result = rkKeepCutToAlpha(&job.request, kind.hiResPass, false);
    after();

    // Painted bytes must come back as they were; unpainted ones of the region
    // must come back even (unpainted).
    const cv::Mat wasPainted = (painted & RK_MASK_PAINTED_BIT) != 0;
    cv::Mat region = cv::Mat::zeros(painted.size(), CV_8U);
    const RKPSStructMsk2& r = job.request;
    region(cv::Rect(r.roiX, r.roiY, r.roiWidth, r.roiHeight) & cv::Rect({}, painted.size())) = 255;
    return {result, cv::countNonZero(wasPainted & (job.mask != painted)),
            cv::countNonZero(~wasPainted & region & (job.mask & RK_MASK_PAINTED_BIT))};
}

// ---- children --------------------------------------------------------------
std::string format(const char* pattern, ...) {
    char text[512];
    va_list args;
    va_start(args, pattern);
    std::vsnprintf(text, sizeof text, pattern, args);
    va_end(args);
    return text;
}

std::string ChildEnd::describe(unsigned alarmSeconds) const {
    if (signal == SIGALRM) return format("no return within %u s", alarmSeconds);
    if (signal) return format("died by signal %d (%s)", signal, strsignal(signal));
    return format("ended the process with exit status %d", status);
}

void runChildren(int count, std::size_t areaBytes, unsigned alarmSeconds,
                 const std::function<void(int, void*)>& work,
                 const std::function<void(int, const void*, const ChildEnd&)>& finished) {
    // One zeroed area per child: its record, then the user area on a cache line.
    const std::size_t stride = kUserOffset + (areaBytes + 63) / 64 * 64;
    const std::size_t total = stride * std::max(count, 1);
    void* mapped = mmap(nullptr, total, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        std::perror("mmap");
        std::exit(2);
    }
    char* const areas = static_cast<char*>(mapped);
    void* warmUp[4];  // the stack walker's first use loads a library and allocates
    backtrace(warmUp, 4);

    std::map<pid_t, std::pair<int, int>> running;  // child: index, standard error
    for (int next = 0; next < count || !running.empty();) {
        while (next < count && running.size() < kParallel) {
            const int errorFd = memfd_create("child-stderr", 0);
            char* const area = areas + next * stride;
            std::fflush(nullptr);
            const pid_t pid = fork();
            if (pid == 0) {
                dup2(errorFd, STDERR_FILENO);
                g_record = reinterpret_cast<ChildRecord*>(area);
                installCrashHandlers();
                alarm(alarmSeconds);
                work(next, area + kUserOffset);
                g_record->returned = 1;
                _exit(0);  // no exit handlers: dependencies' threads may be stuck
            }
            running[pid] = {next++, errorFd};
        }
        int status = 0;
        const pid_t done = waitpid(-1, &status, 0);
        if (done < 0) {
            std::perror("waitpid");
            std::exit(2);
        }
        const auto child = running.extract(done);
        if (child.empty()) continue;
        const auto [index, errorFd] = child.mapped();
        const char* const area = areas + index * stride;
        const auto* record = reinterpret_cast<const ChildRecord*>(area);
        ChildEnd end;
        end.returned = record->returned;
        end.status = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
        end.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        end.stackDepth = record->depth;
        std::memcpy(end.stack, record->frames, sizeof end.stack);
        char text[kErrorTextBytes];
        end.errorText.assign(text, std::max<ssize_t>(0, pread(errorFd, text, sizeof text, 0)));
        std::replace(end.errorText.begin(), end.errorText.end(), '\n', ' ');
        close(errorFd);
        finished(index, area + kUserOffset, end);
    }
    munmap(areas, total);
}

// ---- origins of code addresses ---------------------------------------------
Origin originOf(const void* codeAddress) {
    static const void* const exeBase = executableBase();
    Dl_info info{};
    if (!dladdr(codeAddress, &info)) return Origin::Other;
    if (info.dli_fbase == exeBase)
        return isSuiteSparseSymbol(info.dli_sname) ? Origin::SuiteSparse : Origin::Engine;
    for (const auto& [fragment, origin] : kLibraries)
        if (info.dli_fname && std::strstr(info.dli_fname, fragment)) return origin;
    return Origin::Other;
}

void printStack(std::FILE* out, void* const* frames, int depth, const char* indent) {
    static const void* const exeBase = executableBase();
    char** symbols = backtrace_symbols(frames, depth);
    for (int i = 0; i < depth; ++i) {
        // addr2line reads the executable's local symbols too; a return address
        // points after its call, so the address looked up is one byte earlier.
        std::string name = symbols ? symbols[i] : "?";
        Dl_info info{};
        if (dladdr(frames[i], &info) && info.dli_fbase == exeBase) {
            const auto offset = reinterpret_cast<std::uintptr_t>(frames[i]) -
                                reinterpret_cast<std::uintptr_t>(exeBase) - 1;
            const std::string command =
                format("addr2line -C -f -p -e /proc/%d/exe 0x%jx", getpid(), offset);
            char line[1024];
            if (std::FILE* pipe = popen(command.c_str(), "r")) {
                if (std::fgets(line, sizeof line, pipe))
                    name.assign(line, std::strcspn(line, "\n"));
                pclose(pipe);
            }
        }
        std::fprintf(out, "%s#%d %s\n", indent, i, name.c_str());
    }
    std::free(symbols);
}

}  // namespace kc_sweep
