// Allocation-failure sweep of the main entry. For each small job a clean child
// counts the allocations the call makes; then, for every k, a fresh child
// (forked before anything ran the job, so first-use allocations count too)
// runs the job with allocation k failing. A point whose failing allocation was
// made by the engine (its own code and the allocators it hands CHOLMOD) must
// survive with a documented result and intact strokes; no call may leave
// engine blocks held beyond what a clean call keeps (first-use state).
// Points in a dependency's private allocations are only counted and listed.
//   reliability_alloc_sweep [--job I] [--k K]
// --k reruns one point (of job 0 without --job) and prints all about it,
// with the stacks of the blocks held after the call.
#include <execinfo.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <map>
#include <ranges>
#include <set>
#include <span>

#include "alloc_interpose.h"
#include "api/keepcut.h"
#include "reliability.h"

namespace {

using namespace kc_sweep;

// Small enough that the sweeps take about a minute on two cores; large enough
// that every stage of each strategy runs (pyramid, solve, refinement,
// upsampling; tiles and dense kernels of foreground recovery). The whole-picture
// full-resolution pass widens a reduced picture narrower than 501 columns to
// 501, keeping the aspect ratio: a low, wide picture keeps that job small.
constexpr JobKind kJobs[] = {
    {"whole 40x40, hiResPass 0", 40, 40, 0, false, false},
    {"whole 480x16, hiResPass 1", 480, 16, 1, false, false},
    {"region of 48x48, hiResPass 0, foreground", 48, 48, 0, true, true},
    {"region of 48x48, hiResPass 1", 48, 48, 1, true, false},
};

// Blocks a child reports as held after the call: a clean call keeps a few,
// a failed one rarely dozens; more count as engine blocks held.
constexpr int kHeldBlocks = 1024;
// Frames kept of the failing allocation's stack.
constexpr int kFailFrames = 32;
// Message log bytes kept from a child (the end of the log tells the result's story).
constexpr std::size_t kLogBytes = 240;
// Examples listed per object, and fault sites shown in full.
constexpr std::size_t kExamples = 4;
// A small job takes well under a second; this only ends hangs.
constexpr unsigned kChildAlarmSeconds = 30;

// What a child leaves in its shared area.
struct Report {
    void* failCaller;  // null: the chosen allocation did not happen
    int failDepth;
    void* failStack[kFailFrames];
    JobOutcome outcome;  // valid if the child's work returned
    long numbered;
    char log[kLogBytes];
    int heldCount;  // blocks held after the call, the first kHeldBlocks kept
    HeldBlock held[kHeldBlocks];
    std::span<const HeldBlock> blocks() const {
        return {held, std::size_t(std::min(heldCount, kHeldBlocks))};
    }
};

Report* g_report = nullptr;  // this child's area

void onFailedAllocation(void* caller) {
    g_report->failCaller = caller;
    g_report->failDepth = backtrace(g_report->failStack, kFailFrames);
}

void runPoint(const JobKind& kind, long failAt, bool stacks, Report& r) {
    g_report = &r;
    r.outcome = runJob(
        kind, [&] { armAllocations(failAt, onFailedAllocation, stacks); },
        [&] { r.numbered = disarmAllocations(); });
    r.heldCount = copyHeldBlocks(r.held, kHeldBlocks);
    const std::string_view log = getErrMsg();  // its tail (a suffix of a C string), on one line
    std::strcpy(r.log, log.substr(log.size() - std::min(log.size(), kLogBytes - 1)).data());
    std::replace(r.log, r.log + kLogBytes, '\n', ' ');
}

// What a call left held: bytes by object, and the engine's by allocation site.
struct Held {
    long byOrigin[kOriginCount] = {};
    std::map<void*, long> engineSites;
    explicit Held(const Report& r) {
        for (const HeldBlock& b : r.blocks()) {
            const Origin origin = originOf(b.caller);
            byOrigin[static_cast<int>(origin)] += b.bytes;
            if (origin == Origin::Engine) engineSites[b.caller] += b.bytes;
        }
    }
};

void printPoint(long k, const Report& r, const ChildEnd& end, const std::string& why) {
    std::printf("  k=%ld, allocation from %s: %s%s%s\n", k, originName(originOf(r.failCaller)),
                end.returned ? format("returned %d", r.outcome.result).c_str()
                             : end.describe(kChildAlarmSeconds).c_str(),
                why.empty() ? "" : " -- ", why.c_str());
    if (r.failDepth > 0) std::printf("    failing allocation:\n");
    printStack(stdout, r.failStack, r.failDepth, "      ");
    if (end.stackDepth > 0) std::printf("    at the fatal signal:\n");
    printStack(stdout, end.stack, end.stackDepth, "      ");
    if (!end.errorText.empty()) std::printf("    stderr: %s\n", end.errorText.c_str());
    if (end.returned) std::printf("    log tail: %s\n", r.log);
    for (const HeldBlock& b : r.blocks()) {
        if (b.depth == 0) continue;  // stacks are kept with --k only
        std::printf("    held after the call: %ld B from %s\n", b.bytes,
                    originName(originOf(b.caller)));
        printStack(stdout, b.frames, b.depth, "      ");
    }
}

// Counts per object that made the failing allocation.
struct Tally {
    long points = 0, survived = 0, died = 0;
    std::map<int, long> results;
    std::map<void*, std::pair<long, long>> deathSites;  // by failing caller: deaths, first k
    std::set<long> extraHeld;  // points that left bytes held beyond a clean call
    long extraHeldMax = 0;
};

void printSummary(const Held& base, const Tally* tally, long numbered, double seconds) {
    std::printf("  %ld allocation points, %.1f s; by the object that made the failing one:\n",
                numbered, seconds);
    std::string cleanHeld, extraHeld, examples;
    for (int o = 0; o < kOriginCount; ++o) {
        const Tally& t = tally[o];
        const char* name = originName(Origin(o));
        if (base.byOrigin[o]) cleanHeld += format(" %s %ld B", name, base.byOrigin[o]);
        if (!t.extraHeld.empty()) {
            extraHeld += format(" %s %zu, %ld B", name, t.extraHeld.size(), t.extraHeldMax);
            examples += format("    after a failing %s allocation; look with --k", name);
            for (long k : t.extraHeld | std::views::take(kExamples)) examples += format(" %ld", k);
            examples += "\n";
        }
        if (!t.deathSites.empty())  // dependency deaths, by allocation site
            examples += format("  %s: %ld deaths at %zu allocation sites\n", name, t.died,
                               t.deathSites.size());
        for (const auto& [site, deaths] : t.deathSites | std::views::take(kExamples))
            examples += format("    %ld deaths at this site; rerun one with --k %ld\n",
                               deaths.first, deaths.second);
        if (t.points == 0) continue;
        std::printf("    %-12s %5ld points: %ld survived, %ld died; results", name, t.points,
                    t.survived, t.died);
        for (const auto& [result, n] : t.results) std::printf(" %d x%ld", result, n);
        std::printf("\n");
    }
    std::printf("  held after a clean call (first-use state):%s\n", cleanHeld.c_str());
    std::printf("  held beyond that after failed calls (points, largest), by failing object:%s\n%s",
                extraHeld.c_str(), examples.c_str());
}

bool sweepJob(const JobKind& kind, long onlyK) {
    const auto start = std::chrono::steady_clock::now();
    std::printf("job \"%s\"\n", kind.name);
    Report clean{};  // a clean call: its count of allocations and first-use state
    bool ok = true;
    runChildren<Report>(
        1, kChildAlarmSeconds, [&](int, Report& r) { runPoint(kind, 0, onlyK > 0, r); },
        [&](int, const Report& r, const ChildEnd& end) {
            clean = r;
            ok = end.returned && r.outcome.result == 1 && r.outcome.strokesIntact();
            if (!ok)
                printPoint(0, r, end,
                           format("clean call failed; painted changed %d, odd results %d",
                                  r.outcome.paintedChanged, r.outcome.oddResults));
        });
    if (!ok) return false;
    const Held base(clean);

    Tally tally[kOriginCount];
    std::set<std::pair<void*, std::string>> faultSites;  // failing caller, what went wrong
    long faults = 0, notReached = 0;
    const long first = onlyK > 0 ? onlyK : 1;
    runChildren<Report>(
        onlyK > 0 ? 1 : static_cast<int>(clean.numbered), kChildAlarmSeconds,
        [&](int i, Report& r) { runPoint(kind, first + i, onlyK > 0, r); },
        [&](int i, const Report& r, const ChildEnd& end) {
            const long k = first + i;
            if (onlyK > 0) printPoint(k, r, end, "");
            if (!r.failCaller) {
                ++notReached;
                return;
            }
            const Origin origin = originOf(r.failCaller);
            Tally& t = tally[static_cast<int>(origin)];
            ++t.points;
            std::string why;
            if (end.returned) {
                ++t.survived;
                ++t.results[r.outcome.result];
                const Held held(r);
                std::map<void*, long> kept = base.engineSites;
                long excess = r.heldCount > kHeldBlocks ? 1 : 0, extra = 0;
                for (const auto& [site, bytes] : held.engineSites)
                    excess += std::max(0L, bytes - kept[site]);
                for (int o = 0; o < kOriginCount; ++o)
                    extra += std::max(0L, held.byOrigin[o] - base.byOrigin[o]);
                if (!isDocumentedResult(r.outcome.result)) why += "undocumented result; ";
                if (!r.outcome.strokesIntact()) why += "strokes not intact; ";
                if (excess > 0) why += format("engine blocks held: %ld B; ", excess);
                if (extra > 0) t.extraHeld.insert(k);
                t.extraHeldMax = std::max(t.extraHeldMax, extra);
            } else {
                ++t.died;
                if (origin == Origin::Engine)
                    why = "an engine allocation failure must not end the process";
                else if (t.deathSites[r.failCaller].first++ == 0)
                    t.deathSites[r.failCaller].second = k;
            }
            if (why.empty()) return;
            ++faults;  // the first point of each of the first few sites in full
            if (faultSites.insert({r.failCaller, why}).second && faultSites.size() <= kExamples &&
                onlyK <= 0)
                printPoint(k, r, end, why);
        });

    printSummary(base, tally, clean.numbered,
                 std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    if (notReached)
        std::printf("  %ld points not reached (the call made fewer allocations)\n", notReached);
    if (faults) std::printf("  %ld faults at %zu sites\n", faults, faultSites.size());
    return faults == 0;
}

}  // namespace

int main(int argc, char** argv) {
    int onlyJob = -1;
    long onlyK = 0;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!std::strcmp(argv[i], "--job")) onlyJob = std::atoi(argv[i + 1]);
        if (!std::strcmp(argv[i], "--k")) onlyK = std::atol(argv[i + 1]);
    }
    if (onlyK > 0 && onlyJob < 0) onlyJob = 0;
    bool ok = true;
    for (int j = 0; j < static_cast<int>(std::size(kJobs)); ++j)
        if (onlyJob < 0 || j == onlyJob) ok = sweepJob(kJobs[j], onlyK) && ok;
    std::printf("%s\n", ok ? "PASS" : "FAIL");
    return ok ? 0 : 1;
}
