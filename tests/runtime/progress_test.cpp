// Progress reporting: the flat counter, nested stages and per-task steps.
#include "runtime/progress.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace {

struct Calls {
    std::vector<int> current;
    std::vector<int> total;
    int answer = 5;
};

int record(int current, int total, void* data) {
    auto* c = static_cast<Calls*>(data);
    c->current.push_back(current);
    c->total.push_back(total);
    return c->answer;
}

int throwing(int, int, void*) {
    throw std::runtime_error("host failed");
}

TEST(FlatProgress, KicksAdvanceAndFallBackToHalf) {
    Calls calls;
    setProgProc(record, &calls, 100, 30);
    EXPECT_EQ(progressKick(), 5);
    progressKick();
    progressKick();
    progressKick();
    EXPECT_EQ(calls.current, (std::vector<int>{30, 60, 90, 50}));
    EXPECT_EQ(setProgRange(200, 10), 50);
    progressKick();
    EXPECT_EQ(calls.current.back(), 60);
    EXPECT_EQ(calls.total.back(), 200);
    initProgProc();
    EXPECT_EQ(progressKick(), 1);
    EXPECT_EQ(calls.current.size(), 5u);
    EXPECT_EQ(gProgressCurrent, 0);
}

// Whatever the host passes, the counter stays an int: past the end it falls
// back to half the total, and a negative step stops at the lowest int.
TEST(FlatProgress, ExtremeTotalsAndIncrementsDoNotOverflow) {
    Calls calls;
    setProgProc(record, &calls, INT_MAX, INT_MAX);
    for (int i = 0; i < 3; ++i) progressKick();
    EXPECT_EQ(calls.current, (std::vector<int>{INT_MAX / 2, INT_MAX / 2, INT_MAX / 2}));
    setProgProc(record, &calls, 0, INT_MIN);
    for (int i = 0; i < 3; ++i) progressKick();
    EXPECT_EQ(calls.current.back(), INT_MIN);
    initProgProc();
}

TEST(FlatProgress, NeedsBothCallbackAndData) {
    setProgProc(record, nullptr, 100, 10);
    EXPECT_EQ(progressKick(), 1);
    EXPECT_EQ(gProgressCurrent, 0);
    initProgProc();
}

class StageProgress : public ::testing::Test {
  protected:
    Calls calls;
    CProgMsgGlobal* g = nullptr;
    void SetUp() override {
        g = CProgMsgGlobal::Inst();
        g->setup(record, &calls, 0.0f);
    }
    void TearDown() override { g->setup(nullptr, nullptr, 0.0f); }
};

TEST_F(StageProgress, TwoHalvesReportHalfThenAll) {
    g->progStart(0.5f);
    g->progDone();
    g->progStart(0.5f);
    g->progDone();
    EXPECT_EQ(calls.current, (std::vector<int>{500000, 1000000}));
    EXPECT_EQ(calls.total.back(), 1000000);
    EXPECT_EQ(g->progComplete(), 5);
    EXPECT_EQ(calls.current.back(), 1000000);
}

TEST_F(StageProgress, NestedStagesWeighByTheirParents) {
    g->progStart(0.5f);   // a half of the job ...
    g->progStart(0.25f);  // ... of which a quarter is done
    g->progDone();
    EXPECT_EQ(calls.current.back(), 125000);
    g->progDone();  // the half closes: its done share is counted whole
    EXPECT_EQ(calls.current.back(), 500000);
    // Overfull stages are capped at 1.
    for (int i = 0; i < 3; ++i) {
        g->progStart(0.5f);
        g->progDone();
    }
    EXPECT_EQ(calls.current.back(), 1000000);
}

TEST_F(StageProgress, DepthIsCappedAt126) {
    for (int i = 0; i < 200; ++i) g->progStart(1.0f);
    EXPECT_EQ(g->level, kProgMaxLevel);
    g->progStart(0.3f);
    EXPECT_FLOAT_EQ(g->weight[kProgMaxLevel], 0.3f);
    for (int i = 0; i < 300; ++i) g->progDone();
    EXPECT_EQ(g->level, 0);
}

TEST_F(StageProgress, SilentWithoutCallback) {
    g->setup(nullptr, nullptr, 0.0f);
    g->progStart(0.5f);
    EXPECT_FLOAT_EQ(g->progDone(), 1.0f);
    EXPECT_EQ(g->progress(), 1);
    EXPECT_EQ(g->progComplete(), 1);
    EXPECT_TRUE(calls.current.empty());
}

TEST_F(StageProgress, HostExceptionBecomesReporterText) {
    g->setProgData(throwing, &calls);
    try {
        g->progress();
        FAIL() << "no throw";
    } catch (const char* text) {
        EXPECT_STREQ(text, "CProgMsg - proggress ");
    }
    EXPECT_THROW(g->progComplete(), const char*);
}

TEST(TaskProgress, SpreadsShareOverSteps) {
    Calls calls;
    ProgRecord rec{1000.0f, 1000, record, &calls, 100};
    CProgMsg p(&rec);
    EXPECT_EQ(p.set(0.5f, 4), 125);  // 500 units over 4 steps
    EXPECT_EQ(calls.current.back(), 101);
    EXPECT_EQ(p.end, 600);
    for (int i = 0; i < 5; ++i) p.proggress();
    EXPECT_EQ(rec.current, 600);  // clamped to the share's end
    p.startSubInc(4);
    EXPECT_EQ(p.inc, 31);
    p.proggress();
    p.endSubInc();
    EXPECT_EQ(rec.current, 600 + 125);
    EXPECT_EQ(p.inc, 125);
    EXPECT_EQ(p.done(), 5);
    EXPECT_EQ(rec.current, 600);
}

TEST(TaskProgress, ShareIsClampedAndStepIsAtLeastOne) {
    Calls calls;
    ProgRecord rec{1000.0f, 300, record, &calls, 250};
    CProgMsg p(&rec);
    EXPECT_EQ(p.set(1.0f, 1000), 1);
    EXPECT_EQ(p.end, 300);
}

TEST(TaskProgress, MissingPiecesAndHostFailures) {
    CProgMsg none(nullptr);
    EXPECT_EQ(none.set(0.5f, 2), 0);
    EXPECT_EQ(none.proggress(), 1);
    EXPECT_EQ(none.done(), 1);
    none.startSubInc(2);  // no record: nothing happens
    Calls calls;
    ProgRecord rec{100.0f, 100, throwing, &calls, 0};
    CProgMsg p(&rec);
    const char* texts[3] = {};
    try {
        p.set(0.5f, 2);
    } catch (const char* t) {
        texts[0] = t;
    }
    try {
        p.proggress();
    } catch (const char* t) {
        texts[1] = t;
    }
    try {
        p.done();
    } catch (const char* t) {
        texts[2] = t;
    }
    EXPECT_STREQ(texts[0], "CProgMsg - set ");
    EXPECT_STREQ(texts[1], "CProgMsg - proggress ");
    EXPECT_STREQ(texts[2], "CProgMsg - done ");
}

}  // namespace
