// The row step never changes a result: keep/cut jobs run with their image
// containers on the heap fallback (whose rows are laid out with another step
// than the aligned allocator's), all at once and one at a time, must leave the
// same mask and foreground bytes as a normal run.
#include <gtest/gtest.h>

#include <climits>
#include <opencv2/core.hpp>

#include "api/keepcut.h"
#include "core/aligned_alloc.h"
#include "keepcut_job.h"

namespace {

using keepcut_test::KeepCutJob;

// Small enough that a job runs in a blink, large enough for a KD-tree of
// several cells and for foreground tiles.
constexpr int kW = 64;
constexpr int kH = 48;

struct RowStepCase {
    const char* name;
    int hiResPass;
    int cellMode;  // 0: whole picture; else a region job over the middle
    bool recoverForeground;
    int sweep;  // how many containers, from the first, are sent to the heap one by one
};

struct Outcome {
    int result;
    bool reached;  // the job made as many container allocations as were to fail
    cv::Mat mask, foreground;
};

Outcome run(const RowStepCase& c, int after, int failing) {
    KeepCutJob job(kW, kH);
    if (c.cellMode) job.setRegion(kW / 4, kH / 4, kW / 2, kH / 2, c.cellMode);
    job.request.recoverForeground = c.recoverForeground;
    kc::testing::failImageAllocs(after, failing);
    const int result = rkKeepCutToAlpha(&job.request, c.hiResPass, false);
    const bool reached = kc::testing::imageAllocFailuresLeft() == 0;
    kc::testing::failImageAllocs(0, 0);
    return {result, reached, job.mask.clone(), job.foreground.clone()};
}

void expectSameBytes(const Outcome& want, const Outcome& got) {
    EXPECT_EQ(got.result, want.result);
    EXPECT_EQ(cv::norm(got.mask, want.mask, cv::NORM_INF), 0);
    EXPECT_EQ(cv::norm(got.foreground, want.foreground, cv::NORM_INF), 0);
}

TEST(RowStep, HeapFallbackLeavesEveryResultByteAsItWas) {
    // The full-resolution pass solves a reduced problem of 501 columns: its
    // sweep is cut short to keep the test quick.
    const RowStepCase cases[] = {
        {"whole picture, coarse pass", 0, 0, true, INT_MAX},
        {"whole picture, full-resolution pass", 1, 0, false, 6},
        {"region job", 0, 1, false, INT_MAX},
        {"region job with foreground", 1, 4, true, INT_MAX},
    };
    for (const RowStepCase& c : cases) {
        SCOPED_TRACE(c.name);
        const Outcome normal = run(c, 0, 0);
        ASSERT_EQ(normal.result, 1) << getErrMsg();
        {
            SCOPED_TRACE("every container on the heap");
            expectSameBytes(normal, run(c, 0, INT_MAX));
        }
        int swept = 0;
        for (; swept < c.sweep; ++swept) {
            SCOPED_TRACE(testing::Message() << "container " << swept + 1 << " on the heap");
            const Outcome one = run(c, swept, 1);
            if (!one.reached) break;
            expectSameBytes(normal, one);
        }
        EXPECT_GT(swept, 0);
    }
}

}  // namespace
