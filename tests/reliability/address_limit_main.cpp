// Address-space limit test of the main entry. A first child runs a job of
// about 600x450 and measures the address space the call needed; then a child
// per headroom runs it with its address space (RLIMIT_AS) limited to that need
// plus the headroom. Every call must return a documented result with the
// strokes intact, and promptly (an alarm catches a retry loop on mappings).
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "reliability.h"

namespace {

using namespace kc_sweep;

constexpr JobKind kJobs[] = {
    {"whole 600x450, hiResPass 0", 600, 450, 0, false, false},
    {"whole 600x450, hiResPass 1", 600, 450, 1, false, false},
    {"region of 600x450, hiResPass 0, foreground", 600, 450, 0, true, true},
};

// Limits around the measured need: below it (the call must fail cleanly), at
// it, and through the margins where a dependency's retry loop or a late large
// block used to be hit (48 to 192 MB above need).
constexpr long kHeadroomsMB[] = {-64, -16, 0, 8, 16, 32, 48, 64, 96, 128, 192, 256, 512};
constexpr long kMB = 1L << 20;
// The job takes about a second on a loaded machine; ten times that is a hang.
constexpr unsigned kCallSeconds = 10;
// Building the job's picture and maps, before the call's own alarm is set.
constexpr unsigned kSetUpSeconds = 60;
constexpr long kUnlimited = -1;  // a budget that sets no limit

struct Report {
    JobOutcome outcome;
    double seconds;
    long callBytes;  // address space the call added, at its peak
};

// A field of /proc/self/status in bytes ("VmSize:", "VmPeak:").
long addressSpace(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (word == field && status >> word) return std::atol(word.c_str()) * 1024;
    return 0;
}

// Runs the job; with a budget, the address space is limited to what the
// process holds when the call starts plus the budget (measured from there, as
// the set-up before the call varies a little between children).
void runLimited(const JobKind& kind, long budget, Report& r) {
    std::chrono::steady_clock::time_point start;
    long before = 0;
    r.outcome = runJob(
        kind,
        [&] {
            before = addressSpace("VmSize:");
            if (budget != kUnlimited) {
                const auto bytes = static_cast<rlim_t>(before + budget);
                const rlimit limit{bytes, bytes};
                setrlimit(RLIMIT_AS, &limit);
            }
            alarm(kCallSeconds);  // the call alone is timed, not the job's set-up
            start = std::chrono::steady_clock::now();
        },
        [] {});
    r.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    r.callBytes = addressSpace("VmPeak:") - before;
}

std::string endText(const Report& r, const ChildEnd& end) {
    return end.returned ? format("returned %d in %.2f s", r.outcome.result, r.seconds)
                        : end.describe(kCallSeconds);
}

bool checkJob(const JobKind& kind) {
    std::printf("job \"%s\"\n", kind.name);
    long need = 0;
    bool ok = false;
    runChildren<Report>(
        1, kSetUpSeconds, [&](int, Report& r) { runLimited(kind, kUnlimited, r); },
        [&](int, const Report& r, const ChildEnd& end) {
            std::printf("  unlimited: %s; the call needed %.0f MB more address space\n",
                        endText(r, end).c_str(), r.callBytes / double(kMB));
            ok = end.returned && r.outcome.result == 1;
            need = r.callBytes;
        });
    if (!ok) return false;

    // Lines by headroom, printed in order once every child has ended.
    std::vector<std::string> lines(std::size(kHeadroomsMB));
    runChildren<Report>(
        static_cast<int>(std::size(kHeadroomsMB)), kSetUpSeconds,
        [&](int i, Report& r) { runLimited(kind, std::max(0L, need + kHeadroomsMB[i] * kMB), r); },
        [&](int i, const Report& r, const ChildEnd& end) {
            const bool good =
                end.returned && isDocumentedResult(r.outcome.result) && r.outcome.strokesIntact();
            lines[i] = format("  limit need%+5ld MB: %s%s\n", kHeadroomsMB[i],
                              endText(r, end).c_str(), good ? "" : "  FAULT");
            if (good) return;
            ok = false;
            lines[i] +=
                format("    painted changed %d, odd results %d; stderr: %s\n",
                       r.outcome.paintedChanged, r.outcome.oddResults, end.errorText.c_str());
            if (end.stackDepth > 0) {
                std::printf("  stack at the signal, limit need%+ld MB:\n", kHeadroomsMB[i]);
                printStack(stdout, end.stack, end.stackDepth, "      ");
            }
        });
    for (const std::string& line : lines) std::fputs(line.c_str(), stdout);
    return ok;
}

}  // namespace

int main() {
    bool ok = true;
    for (const JobKind& kind : kJobs) ok = checkJob(kind) && ok;
    std::printf("%s\n", ok ? "PASS" : "FAIL");
    return ok ? 0 : 1;
}
