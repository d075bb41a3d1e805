// Address-space limit test of the main entry. A first child runs a job of
// about 600x450 and measures the address space the process needed; then a
// child per headroom limits its address space (RLIMIT_AS) to that need plus
// the headroom and runs the same job. Every call must return a documented
// result with the strokes intact, and return promptly: a dependency that
// retries a failed mapping forever is caught by an alarm.
//
//   reliability_address_limit [--parallel P]
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "alloc_origin.h"
#include "child_process.h"
#include "reliability_job.h"

namespace {

using namespace kc_sweep;

constexpr JobSpec kJobs[] = {
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

struct Report {
    int returned;
    int result;
    int paintedChanged, oddResults;
    double seconds;
    long callBytes;  // address space the call added, at its peak
};

constexpr long kUnlimited = -1;  // a budget that sets no limit

// A field of /proc/self/status in bytes ("VmSize", "VmPeak").
long addressSpace(const char* field) {
    std::ifstream status("/proc/self/status");
    const std::string key = std::string(field) + ":";
    for (std::string line; std::getline(status, line);)
        if (line.rfind(key, 0) == 0) return std::atol(line.c_str() + key.size()) * 1024;
    return 0;
}

// Runs the job; with a budget, the address space is limited to what the
// process holds when the call starts plus the budget (measured from there, as
// the set-up before the call varies a little between children).
void runLimited(const JobSpec& spec, long budget, Report* report) {
    std::chrono::steady_clock::time_point start;
    long before = 0;
    const JobOutcome outcome = runJob(
        spec,
        [&] {
            before = addressSpace("VmSize");
            if (budget != kUnlimited) {
                const auto bytes = static_cast<rlim_t>(before + budget);
                const rlimit limit{bytes, bytes};
                setrlimit(RLIMIT_AS, &limit);
            }
            alarm(kCallSeconds);  // the call alone is timed, not the job's set-up
            start = std::chrono::steady_clock::now();
        },
        [] {});
    report->seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    report->callBytes = addressSpace("VmPeak") - before;
    report->result = outcome.result;
    report->paintedChanged = outcome.paintedChanged;
    report->oddResults = outcome.oddResults;
    report->returned = 1;
}

const char* endText(const Report& r, const ChildEnd& end, char* buffer, std::size_t size) {
    if (r.returned)
        std::snprintf(buffer, size, "returned %d in %.2f s", r.result, r.seconds);
    else if (end.signal == SIGALRM)
        std::snprintf(buffer, size, "no return within %u s", kCallSeconds);
    else if (end.signal)
        std::snprintf(buffer, size, "died by signal %d (%s)", end.signal, strsignal(end.signal));
    else
        std::snprintf(buffer, size, "ended the process with exit status %d", end.status);
    return buffer;
}

bool checkJob(const ChildRunner& runner, const JobSpec& spec) {
    std::printf("job \"%s\"\n", spec.name);
    long need = 0;
    bool ok = true;
    char text[160];
    runner.run(
        1, [&](int, void* area) { runLimited(spec, kUnlimited, static_cast<Report*>(area)); },
        [&](int, const void* area, const ChildEnd& end) {
            const Report& r = *static_cast<const Report*>(area);
            std::printf("  unlimited: %s; the call needed %.0f MB more address space\n",
                        endText(r, end, text, sizeof text), r.callBytes / double(kMB));
            ok = r.returned && r.result == 1;
            need = r.callBytes;
        });
    if (!ok) return false;

    // Lines by headroom, printed in order once every child has ended.
    std::vector<std::string> lines(std::size(kHeadroomsMB));
    runner.run(
        static_cast<int>(std::size(kHeadroomsMB)),
        [&](int i, void* area) {
            runLimited(spec, std::max(0L, need + kHeadroomsMB[i] * kMB),
                       static_cast<Report*>(area));
        },
        [&](int i, const void* area, const ChildEnd& end) {
            const Report& r = *static_cast<const Report*>(area);
            const bool good = r.returned && isDocumentedResult(r.result) && r.paintedChanged == 0 &&
                              r.oddResults == 0;
            char line[320];
            std::snprintf(line, sizeof line, "  limit need%+5ld MB: %s%s\n", kHeadroomsMB[i],
                          endText(r, end, text, sizeof text), good ? "" : "  FAULT");
            lines[i] = line;
            if (good) return;
            ok = false;
            if (r.returned) {
                std::snprintf(line, sizeof line, "    painted changed %d, odd results %d\n",
                              r.paintedChanged, r.oddResults);
                lines[i] += line;
            }
            if (!end.errorText.empty())
                lines[i] += "    stderr: " + end.errorText.substr(0, 300) + "\n";
            if (end.stackDepth > 0) {
                std::printf("  stack at the signal, limit need%+ld MB:\n", kHeadroomsMB[i]);
                printStack(stdout, end.stack, end.stackDepth, "      ");
            }
        });
    for (const std::string& line : lines) std::fputs(line.c_str(), stdout);
    return ok;
}

}  // namespace

int main(int argc, char** argv) {
    ChildRunner runner;
    runner.areaBytes = sizeof(Report);
    runner.alarmSeconds = kSetUpSeconds;
    for (int i = 1; i + 1 < argc; i += 2)
        if (!std::strcmp(argv[i], "--parallel")) runner.parallel = std::atoi(argv[i + 1]);
    bool ok = true;
    for (const JobSpec& spec : kJobs) ok = checkJob(runner, spec) && ok;
    std::printf("%s\n", ok ? "PASS" : "FAIL");
    return ok ? 0 : 1;
}
