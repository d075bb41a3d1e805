// Forked children with shared report areas, kept standard error, an alarm and
// a crash handler that records the stack before the signal ends the child.
#include "child_process.h"

#include <execinfo.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <vector>

namespace kc_sweep {
namespace {

// Written by the child's signal handler at the start of its shared area.
struct CrashRecord {
    int signal;
    int depth;
    void* frames[48];
};
// User areas start on a cache line after the record.
constexpr std::size_t kUserOffset = (sizeof(CrashRecord) + 63) / 64 * 64;
// The tail of a child's standard error that is kept: enough for the runtime's
// last words and a few engine messages.
constexpr std::size_t kErrorTextBytes = 16384;
// Room for the handler when the fault was a stack overflow.
constexpr std::size_t kAltStackBytes = 64 * 1024;

CrashRecord* g_crash = nullptr;
alignas(16) char g_altStack[kAltStackBytes];

void onFatalSignal(int sig) {
    if (g_crash) {
        g_crash->signal = sig;
        g_crash->depth = backtrace(g_crash->frames, 48);
    }
    // The handler was reset on entry: the signal, raised again (or the
    // faulting instruction, run again), now ends the child.
    raise(sig);
}

void installCrashHandlers() {
    stack_t alt{};
    alt.ss_sp = g_altStack;
    alt.ss_size = sizeof g_altStack;
    sigaltstack(&alt, nullptr);
    struct sigaction action {};
    action.sa_handler = onFatalSignal;
    action.sa_flags = SA_ONSTACK | SA_RESETHAND | SA_NODEFER;
    for (int sig : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGALRM})
        sigaction(sig, &action, nullptr);
}

std::string readAll(int fd) {
    std::string text;
    const off_t size = lseek(fd, 0, SEEK_END);
    const off_t from = size > static_cast<off_t>(kErrorTextBytes) ? size - kErrorTextBytes : 0;
    lseek(fd, from, SEEK_SET);
    char buffer[4096];
    for (ssize_t got; (got = read(fd, buffer, sizeof buffer)) > 0;) text.append(buffer, got);
    return text;
}

struct Slot {
    char* area = nullptr;  // CrashRecord, then the user area
    pid_t pid = 0;         // 0: free
    int index = 0;
    int errorFd = -1;
};

}  // namespace

void warmUpStackWalks() {
    void* frames[4];
    backtrace(frames, 4);
}

void ChildRunner::run(
    int count, const std::function<void(int, void*)>& work,
    const std::function<void(int, const void*, const ChildEnd&)>& finished) const {
    const std::size_t total = kUserOffset + areaBytes;
    std::vector<Slot> slots(parallel > 0 ? parallel : 1);
    for (Slot& s : slots) {
        void* area =
            mmap(nullptr, total, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (area == MAP_FAILED) {
            std::perror("mmap");
            std::exit(2);
        }
        s.area = static_cast<char*>(area);
    }
    warmUpStackWalks();

    int next = 0, running = 0;
    while (next < count || running > 0) {
        for (Slot& s : slots) {
            if (s.pid != 0 || next >= count) continue;
            std::memset(s.area, 0, total);
            s.index = next++;
            s.errorFd = memfd_create("child-stderr", 0);
            std::fflush(nullptr);
            s.pid = fork();
            if (s.pid == 0) {
                dup2(s.errorFd, STDERR_FILENO);
                g_crash = reinterpret_cast<CrashRecord*>(s.area);
                installCrashHandlers();
                alarm(alarmSeconds);
                work(s.index, s.area + kUserOffset);
                _exit(0);  // no exit handlers: dependencies' threads may be stuck
            }
            ++running;
        }
        int status = 0;
        const pid_t done = waitpid(-1, &status, 0);
        if (done < 0) {
            std::perror("waitpid");
            std::exit(2);
        }
        for (Slot& s : slots) {
            if (s.pid != done) continue;
            ChildEnd end;
            end.exited = WIFEXITED(status);
            end.status = end.exited ? WEXITSTATUS(status) : 0;
            end.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
            const auto* crash = reinterpret_cast<const CrashRecord*>(s.area);
            end.stackDepth = crash->depth;
            std::memcpy(end.stack, crash->frames, sizeof end.stack);
            end.errorText = readAll(s.errorFd);
            close(s.errorFd);
            s.pid = 0;
            --running;
            finished(s.index, s.area + kUserOffset, end);
        }
    }
    for (Slot& s : slots) munmap(s.area, total);
}

}  // namespace kc_sweep
