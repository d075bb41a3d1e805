// Two host threads, each with its own pictures and requests, computing at the
// same time: every result equals the one its request gives alone, byte for
// byte, and every progress report reaches the thread whose request asked for
// it, with that request's data.
#include <gtest/gtest.h>

#include <atomic>
#include <opencv2/core.hpp>
#include <string>
#include <thread>
#include <vector>

#include "api/keepcut.h"
#include "pipeline/keepcut_job.h"

namespace {

using keepcut_test::KeepCutJob;

// Each thread's reports, counted by that thread only.
struct Probe {
    int reports = 0;
    int foreign = 0;  // reports that carried another probe's data
};
thread_local Probe* tProbe = nullptr;
// Reports on a thread that runs no request (the engine's own workers).
std::atomic<int> gStrayReports{0};

int report(int, int, void* data) {
    if (!tProbe) {
        ++gStrayReports;
        return 1;
    }
    ++tProbe->reports;
    if (data != tProbe) ++tProbe->foreign;
    return 1;
}

enum class Entry { KeepCut, RecoverDuringComputeOnly };

// The jobs mix the strategies that set and read the decimation factor (the
// full-resolution KD-tree on a whole picture, the area-only reduction of a
// small region, the bounded reduction of a large one), both foreground
// recoveries and the tiled pass that re-enters the main entry. Each size is
// its own picture.
struct HostJob {
    const char* name;
    int width, height;
    int hiResPass;
    cv::Rect region;  // empty: the whole picture
    bool recoverForeground;
    Entry entry;
};
const HostJob kJobs[] = {
    {"whole, full resolution", 320, 240, 1, {}, false, Entry::KeepCut},
    {"small region, full resolution, foreground",
     160,
     120,
     1,
     {50, 40, 30, 20},
     true,
     Entry::KeepCut},
    {"whole, coarse, foreground", 240, 180, 0, {}, true, Entry::KeepCut},
    {"tiled recovery pass", 200, 150, 0, {}, false, Entry::RecoverDuringComputeOnly},
    // Widened to the whole picture: 192,000 pixels, reduced by 3 only while
    // the factor the entry set is still 9.
    {"large region, coarse", 480, 400, 0, {140, 120, 200, 160}, false, Entry::KeepCut},
};
// Which jobs each thread runs, in turn, every round: the first thread's
// small region sets the factor to 1 just after the other thread's large
// region set it to 9 and before it reads it.
const std::vector<int> kLanes[2] = {{1, 3}, {4, 0, 2}};
// Rounds each thread runs at least; the thread with the shorter jobs goes on
// until the other is done, so that every phase of the long jobs overlaps
// some job of the other thread.
constexpr int kRounds = 2;

struct Outcome {
    int result = 0;
    cv::Rect region;
    cv::Mat mask, foreground;
};

Outcome run(const HostJob& host, Probe& probe) {
    KeepCutJob job(host.width, host.height);
    if (!host.region.empty())
        job.setRegion(host.region.x, host.region.y, host.region.width, host.region.height, 1);
    job.request.recoverForeground = host.recoverForeground;
    job.request.progProc = report;
    job.request.progData = &probe;
    tProbe = &probe;
    Outcome o;
    o.result = host.entry == Entry::KeepCut ? rkKeepCutToAlpha(&job.request, host.hiResPass, false)
                                            : rkRecoverDuringComputeOnly(&job.request);
    const RKPSStructMsk2& r = job.request;
    o.region = cv::Rect(r.roiX, r.roiY, r.roiWidth, r.roiHeight);
    o.mask = job.mask.clone();
    o.foreground = job.foreground.clone();
    return o;
}

// Empty when equal, else what differs.
std::string difference(const Outcome& got, const Outcome& want) {
    if (got.result != want.result) return "result " + std::to_string(got.result);
    if (got.region != want.region) return "widened region";
    const int maskBytes = cv::countNonZero(got.mask != want.mask);
    const int fgPixels = cv::countNonZero(got.foreground.reshape(1) != want.foreground.reshape(1));
    if (maskBytes || fgPixels)
        return std::to_string(maskBytes) + " mask and " + std::to_string(fgPixels) +
               " foreground bytes";
    return {};
}

TEST(TwoHostThreads, EachRequestComputesAsItDoesAlone) {
    std::vector<Outcome> alone;
    Probe lone;
    for (const HostJob& host : kJobs) {
        alone.push_back(run(host, lone));
        ASSERT_EQ(alone.back().result, 1) << host.name << ": " << getErrMsg();
    }
    ASSERT_GT(lone.reports, 0);

    struct Lane {
        Probe probe;
        std::vector<std::string> faults;
    } lanes[2];
    std::atomic<int> finished{0};  // threads that have run their kRounds
    auto work = [&](int lane) {
        for (int round = 0;; ++round) {
            if (round == kRounds) ++finished;
            if (round >= kRounds && finished.load() == 2) break;
            for (int j : kLanes[lane]) {
                const std::string d = difference(run(kJobs[j], lanes[lane].probe), alone[j]);
                if (!d.empty())
                    lanes[lane].faults.push_back(std::string(kJobs[j].name) + ", round " +
                                                 std::to_string(round) + ": " + d);
            }
        }
    };
    std::thread first(work, 0), second(work, 1);
    first.join();
    second.join();

    for (const Lane& lane : lanes) {
        EXPECT_TRUE(lane.faults.empty()) << lane.faults.front();
        EXPECT_GT(lane.probe.reports, 0);
        EXPECT_EQ(lane.probe.foreign, 0);
    }
    EXPECT_EQ(gStrayReports.load(), 0);
}

}  // namespace
