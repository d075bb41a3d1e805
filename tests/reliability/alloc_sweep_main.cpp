// Allocation-failure sweep of the main entry. For each small job a clean child
// counts the allocations the call makes; then, for every k, a fresh child
// (forked before anything ran the job, so first-use allocations count too)
// runs the job with allocation k failing. A point whose failing allocation was
// made by the engine (its own code and the allocators it hands CHOLMOD) must
// survive with a documented result and intact strokes; no call may leave
// engine blocks held beyond what a clean call keeps (first-use state).
// Points in a dependency's private allocations are only counted and listed.
//
//   reliability_alloc_sweep [--job I] [--k K] [--parallel P] [--sites N]
// --k runs one point of one job and prints everything about it; --sites lists
// the N call sites that allocate most often in a clean call.
#include <execinfo.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "alloc_interpose.h"
#include "alloc_origin.h"
#include "api/keepcut.h"
#include "child_process.h"
#include "reliability_job.h"

namespace {

using namespace kc_sweep;

// Small enough that the sweeps stay within about two minutes on two cores;
// large enough that every stage of each strategy runs (pyramid, solve,
// refinement, upsampling; tiles and dense kernels of foreground recovery).
// The whole-picture full-resolution pass widens a reduced picture narrower
// than 501 columns to 501 and keeps the aspect ratio, so a low, wide picture
// is what keeps that job small (a 40x40 one solves 501x501).
constexpr JobSpec kJobs[] = {
    {"whole 40x40, hiResPass 0", 40, 40, 0, false, false},
    {"whole 480x16, hiResPass 1", 480, 16, 1, false, false},
    {"region of 48x48, hiResPass 0, foreground", 48, 48, 0, true, true},
    {"region of 48x48, hiResPass 1", 48, 48, 1, true, false},
};

// Distinct engine call sites whose blocks a child reports as still held.
constexpr int kHeldSites = 64;
// Frames kept of the failing allocation's stack.
constexpr int kFailFrames = 32;
// Message log bytes kept from a child (the end of the log tells the result's story).
constexpr int kLogBytes = 240;
// Stacks printed per library for dependency points that died, by distinct site.
constexpr int kDeathSitesShown = 3;
// Distinct fault sites printed in full (one example each); the rest are counted.
constexpr int kFaultsShown = 8;
// Busiest call sites a child reports.
constexpr int kTopSites = 32;
// Blocks, with their stacks, that a child looked into with --k reports.
constexpr int kTracedBlocks = 64;
// Points with dependency blocks held beyond a clean call, listed for --k.
constexpr int kHeldPointsShown = 4;
// A small job takes well under a second; this only ends hangs.
constexpr unsigned kChildAlarmSeconds = 30;

struct HeldSite {
    void* caller;
    long bytes;
};

struct TracedBlock {
    void* caller;
    long bytes;
    int depth;
    void* frames[kBlockFrames];
};

// What a child leaves in its shared area.
struct Report {
    int failReached;  // the chosen allocation happened
    int failOrigin;
    void* failCaller;
    int failDepth;
    void* failStack[kFailFrames];
    int returned;  // the entry returned; the fields below are valid
    int result;
    int paintedChanged, oddResults;
    long numbered;
    long heldByOrigin[kOriginCount];
    int heldOverflow;
    int heldSites;
    HeldSite held[kHeldSites];
    HeldSite busiest[kTopSites];  // callers by allocations made (bytes field: count)
    int tracedBlocks;
    TracedBlock traced[kTracedBlocks];  // every block held, when stacks were kept
    char log[kLogBytes];
};

Report* g_report = nullptr;  // this child's area

void onFailedAllocation(void* caller) {
    Report& r = *g_report;
    r.failReached = 1;
    r.failCaller = caller;
    r.failOrigin = static_cast<int>(originOf(caller));
    r.failDepth = backtrace(r.failStack, kFailFrames);
}

void collectHeld(const HeldBlock& block, void* context) {
    Report& r = *static_cast<Report*>(context);
    if (block.depth > 0 && r.tracedBlocks < kTracedBlocks) {
        TracedBlock& t = r.traced[r.tracedBlocks++];
        t = {block.caller, static_cast<long>(block.bytes), block.depth, {}};
        std::copy(block.frames, block.frames + block.depth, t.frames);
    }
    const Origin origin = originOf(block.caller);
    r.heldByOrigin[static_cast<int>(origin)] += static_cast<long>(block.bytes);
    if (origin != Origin::Engine) return;
    for (int i = 0; i < r.heldSites; ++i)
        if (r.held[i].caller == block.caller) {
            r.held[i].bytes += static_cast<long>(block.bytes);
            return;
        }
    if (r.heldSites < kHeldSites)
        r.held[r.heldSites++] = {block.caller, static_cast<long>(block.bytes)};
    else
        r.heldOverflow = 1;
}

void collectBusiest(void* caller, long count, void* context) {
    HeldSite* top = static_cast<Report*>(context)->busiest;
    if (count <= top[kTopSites - 1].bytes) return;
    int i = kTopSites - 1;
    for (; i > 0 && top[i - 1].bytes < count; --i) top[i] = top[i - 1];
    top[i] = {caller, count};
}

void runPoint(const JobSpec& spec, long failAt, bool stacks, Report* report) {
    g_report = report;
    const JobOutcome outcome = runJob(
        spec, [&] { armAllocations(failAt, onFailedAllocation, stacks); },
        [] { disarmAllocations(); });
    report->numbered = allocationsNumbered();
    if (!visitHeldBlocks(collectHeld, report)) report->heldOverflow = 1;
    visitCallers(collectBusiest, report);
    report->result = outcome.result;
    report->paintedChanged = outcome.paintedChanged;
    report->oddResults = outcome.oddResults;
    const char* log = getErrMsg();
    const std::size_t length = std::strlen(log);
    const char* tail = length >= kLogBytes ? log + length - (kLogBytes - 1) : log;
    std::snprintf(report->log, kLogBytes, "%s", tail);
    report->returned = 1;
}

std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

std::string describeEnd(const Report& r, const ChildEnd& end) {
    char text[256];
    if (r.returned)
        std::snprintf(text, sizeof text, "returned %d", r.result);
    else if (end.signal == SIGALRM)
        std::snprintf(text, sizeof text, "hung (no return in %u s)", kChildAlarmSeconds);
    else if (end.signal)
        std::snprintf(text, sizeof text, "died by signal %d (%s)", end.signal,
                      strsignal(end.signal));
    else
        std::snprintf(text, sizeof text, "ended the process with exit status %d", end.status);
    return text;
}

void printPoint(long k, const Report& r, const ChildEnd& end, const char* why) {
    std::printf("  k=%ld, allocation from %s: %s%s%s\n", k,
                originName(static_cast<Origin>(r.failOrigin)), describeEnd(r, end).c_str(),
                why[0] ? " -- " : "", why);
    if (r.failDepth > 0) {
        std::printf("    failing allocation:\n");
        printStack(stdout, r.failStack, r.failDepth, "      ");
    }
    if (end.stackDepth > 0) {
        std::printf("    at the fatal signal:\n");
        printStack(stdout, end.stack, end.stackDepth, "      ");
    }
    if (!end.errorText.empty())
        std::printf("    stderr: %s\n", oneLine(end.errorText.substr(0, 300)).c_str());
    if (r.returned) std::printf("    log tail: %s\n", oneLine(r.log).c_str());
}

// Counts per origin of the failing allocation.
struct OriginTally {
    long points = 0, survived = 0, died = 0;
    std::map<int, long> results;
    std::map<void*, long> deathSites;  // by failing caller, for dependencies
    std::map<void*, long> deathExample;
    long extraHeldMax = 0, extraHeldPoints = 0;  // held beyond the clean call
    std::vector<long> heldExamples;
};

struct Baseline {
    long numbered = 0;
    long heldByOrigin[kOriginCount] = {};
    std::map<void*, long> engineSites;  // first-use blocks a clean call keeps
    HeldSite busiest[kTopSites] = {};
    std::multimap<void*, long> tracedBlocks;  // (caller, bytes) of every block held, with --k
};

// With --k: the blocks this call holds that the clean call did not, by stack.
void printExtraBlocks(const Report& r, const Baseline& base) {
    std::multimap<void*, long> clean = base.tracedBlocks;
    for (int i = 0; i < r.tracedBlocks; ++i) {
        const TracedBlock& t = r.traced[i];
        auto [from, to] = clean.equal_range(t.caller);
        auto same = std::find_if(from, to, [&](const auto& e) { return e.second == t.bytes; });
        if (same != to) {
            clean.erase(same);
            continue;
        }
        std::printf("    held after the call, not after a clean one: %ld B from %s\n", t.bytes,
                    originName(originOf(t.caller)));
        printStack(stdout, t.frames, t.depth, "      ");
    }
}

// Engine bytes held after this call beyond what the clean call keeps at the
// same site; sites beyond the report's table count as held.
long engineExcess(const Report& r, const Baseline& base) {
    long excess = r.heldOverflow ? 1 : 0;
    for (int i = 0; i < r.heldSites; ++i) {
        const auto at = base.engineSites.find(r.held[i].caller);
        const long kept = at == base.engineSites.end() ? 0 : at->second;
        excess += std::max(0L, r.held[i].bytes - kept);
    }
    return excess;
}

Baseline cleanRuns(const ChildRunner& runner, const JobSpec& spec, bool stacks, bool* ok) {
    Baseline base;
    std::vector<long> counts;
    runner.run(
        2, [&](int, void* area) { runPoint(spec, 0, stacks, static_cast<Report*>(area)); },
        [&](int, const void* area, const ChildEnd& end) {
            const Report& r = *static_cast<const Report*>(area);
            if (!r.returned || r.result != 1 || r.paintedChanged || r.oddResults) {
                std::printf("  clean run failed: %s, painted changed %d, odd results %d\n",
                            describeEnd(r, end).c_str(), r.paintedChanged, r.oddResults);
                printPoint(0, r, end, "");
                *ok = false;
            }
            counts.push_back(r.numbered);
            if (counts.size() > 1) return;
            base.numbered = r.numbered;
            std::copy(r.heldByOrigin, r.heldByOrigin + kOriginCount, base.heldByOrigin);
            for (int i = 0; i < r.heldSites; ++i)
                base.engineSites[r.held[i].caller] = r.held[i].bytes;
            std::copy(r.busiest, r.busiest + kTopSites, base.busiest);
            for (int i = 0; i < r.tracedBlocks; ++i)
                base.tracedBlocks.emplace(r.traced[i].caller, r.traced[i].bytes);
        });
    if (counts.size() == 2 && counts[0] != counts[1])
        std::printf(
            "  note: the clean runs made %ld and %ld allocations (threads vary the order)\n",
            counts[0], counts[1]);
    return base;
}

void printBusiest(const Baseline& base, int sites) {
    std::printf("  busiest allocation sites of a clean call (%ld allocations):\n", base.numbered);
    for (int i = 0; i < std::min(sites, kTopSites) && base.busiest[i].caller; ++i) {
        std::printf("    %ld allocations by %s at\n", base.busiest[i].bytes,
                    originName(originOf(base.busiest[i].caller)));
        printStack(stdout, &base.busiest[i].caller, 1, "      ");
    }
}

bool sweepJob(const ChildRunner& runner, const JobSpec& spec, long onlyK, int sites) {
    bool ok = true;
    const auto start = std::chrono::steady_clock::now();
    std::printf("job \"%s\"\n", spec.name);
    const Baseline base = cleanRuns(runner, spec, onlyK > 0, &ok);
    if (!ok) return false;
    if (sites > 0) {
        printBusiest(base, sites);
        return true;
    }

    const long first = onlyK > 0 ? onlyK : 1;
    const long points = onlyK > 0 ? 1 : base.numbered;
    OriginTally tally[kOriginCount];
    long notReached = 0, faults = 0;
    // Faults by the failing allocation's caller and what went wrong: the
    // points that showed it.
    std::map<std::pair<void*, std::string>, std::vector<long>> faultSites;
    runner.run(
        static_cast<int>(points),
        [&](int i, void* area) {
            runPoint(spec, first + i, onlyK > 0, static_cast<Report*>(area));
        },
        [&](int i, const void* area, const ChildEnd& end) {
            const long k = first + i;
            const Report& r = *static_cast<const Report*>(area);
            if (onlyK > 0) {
                printPoint(k, r, end, "");
                printExtraBlocks(r, base);
            }
            if (!r.failReached) {
                ++notReached;
                return;
            }
            const Origin origin = static_cast<Origin>(r.failOrigin);
            OriginTally& t = tally[r.failOrigin];
            ++t.points;
            std::string why;
            if (r.returned) {
                ++t.survived;
                ++t.results[r.result];
                const long excess = engineExcess(r, base);
                if (!isDocumentedResult(r.result)) why += "undocumented result; ";
                if (r.paintedChanged || r.oddResults) why += "strokes not intact; ";
                if (excess > 0) why += "engine blocks held: " + std::to_string(excess) + " B; ";
                long extra = 0;
                for (int o = 0; o < kOriginCount; ++o)
                    extra += std::max(0L, r.heldByOrigin[o] - base.heldByOrigin[o]);
                if (extra > 0 && t.extraHeldPoints++ < kHeldPointsShown)
                    t.heldExamples.push_back(k);
                t.extraHeldMax = std::max(t.extraHeldMax, extra);
            } else {
                ++t.died;
                if (origin == Origin::Engine)
                    why = "an engine allocation failure must not end the process";
                else if (t.deathSites[r.failCaller]++ == 0)
                    t.deathExample[r.failCaller] = k;
            }
            if (why.empty()) return;
            ok = false;
            ++faults;
            std::vector<long>& seen = faultSites[{r.failCaller, why}];
            if (seen.empty() && faultSites.size() <= kFaultsShown && onlyK <= 0)
                printPoint(k, r, end, why.c_str());
            seen.push_back(k);
        });

    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("  %ld allocation points, %.1f s; by the object that made the failing one:\n",
                base.numbered, seconds);
    for (int o = 0; o < kOriginCount; ++o) {
        const OriginTally& t = tally[o];
        if (t.points == 0) continue;
        std::printf("    %-12s %5ld points: %ld survived, %ld died; results", originName(Origin(o)),
                    t.points, t.survived, t.died);
        for (const auto& [result, n] : t.results) std::printf(" %d x%ld", result, n);
        std::printf("\n");
    }
    if (notReached)
        std::printf("    %ld points not reached (the run made fewer allocations)\n", notReached);
    std::printf("  held after a clean call (first-use state):");
    for (int o = 0; o < kOriginCount; ++o)
        if (base.heldByOrigin[o])
            std::printf(" %s %ld B", originName(Origin(o)), base.heldByOrigin[o]);
    std::printf("\n  held beyond that after failed calls (points, largest), by failing object:");
    for (int o = 0; o < kOriginCount; ++o)
        if (tally[o].extraHeldPoints)
            std::printf(" %s %ld, %ld B", originName(Origin(o)), tally[o].extraHeldPoints,
                        tally[o].extraHeldMax);
    std::printf("\n");
    for (int o = 0; o < kOriginCount; ++o)
        if (!tally[o].heldExamples.empty()) {
            std::printf("    after a failing %s allocation; look with --k", originName(Origin(o)));
            for (long k : tally[o].heldExamples) std::printf(" %ld", k);
            std::printf("\n");
        }
    if (faults > 0) {
        std::printf("  %ld faults at %zu sites:\n", faults, faultSites.size());
        for (const auto& [site, ks] : faultSites) {
            std::printf("    %s, k =", site.second.c_str());
            for (std::size_t i = 0; i < ks.size() && i < 12; ++i) std::printf(" %ld", ks[i]);
            std::printf("%s at\n", ks.size() > 12 ? " ..." : "");
            void* caller = site.first;
            printStack(stdout, &caller, 1, "      ");
        }
    }

    // Dependency deaths, one example stack per distinct allocation site.
    for (int o = 0; o < kOriginCount; ++o) {
        if (o == static_cast<int>(Origin::Engine) || tally[o].died == 0) continue;
        int shown = 0;
        std::printf("  %s: %ld deaths at %zu allocation sites\n", originName(Origin(o)),
                    tally[o].died, tally[o].deathSites.size());
        for (const auto& [site, n] : tally[o].deathSites) {
            if (shown++ >= kDeathSitesShown) break;
            std::printf("    %ld deaths at this site; rerun one with --k %ld\n", n,
                        tally[o].deathExample.at(site));
        }
    }
    return ok;
}

}  // namespace

int main(int argc, char** argv) {
    int onlyJob = -1;
    long onlyK = 0;
    int sites = 0;
    ChildRunner runner;
    runner.areaBytes = sizeof(Report);
    runner.alarmSeconds = kChildAlarmSeconds;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!std::strcmp(argv[i], "--job")) onlyJob = std::atoi(argv[i + 1]);
        if (!std::strcmp(argv[i], "--k")) onlyK = std::atol(argv[i + 1]);
        if (!std::strcmp(argv[i], "--parallel")) runner.parallel = std::atoi(argv[i + 1]);
        if (!std::strcmp(argv[i], "--sites")) sites = std::atoi(argv[i + 1]);
    }
    bool ok = true;
    for (int j = 0; j < static_cast<int>(std::size(kJobs)); ++j) {
        if (onlyJob >= 0 && j != onlyJob) continue;
        if (onlyK > 0 && onlyJob < 0) onlyJob = j;  // --k without --job: the first job
        ok = sweepJob(runner, kJobs[j], onlyK, sites) && ok;
    }
    std::printf("%s\n", ok ? "PASS" : "FAIL");
    return ok ? 0 : 1;
}
