// Memory budget, block-size calculators and the small environment services.
#include <gtest/gtest.h>

#include <thread>

#include "runtime/blocking.h"
#include "runtime/environment.h"
#include "runtime/memory_budget.h"

namespace {

TEST(MemoryBudget, UsableFigureIsClamped) {
    EXPECT_EQ(usableBytesFromPhysical(512.0 * 1024 * 1024), 500000000.0);
    EXPECT_EQ(usableBytesFromPhysical(64.0 * 1024 * 1024 * 1024), 2900000000.0);
    EXPECT_EQ(usableBytesFromPhysical(2000000000.0), 1700000000.0);
    EXPECT_EQ(usableBytesFromPhysical(0.0), 500000000.0);
}

TEST(MemoryBudget, ReadsThisMachine) {
    EXPECT_GT(physicalMemoryBytes(), 1e8);
    double a = 0, b = 1;
    EXPECT_EQ(checkMemInBytes(a, b), 1);
    EXPECT_EQ(a, b);
    EXPECT_EQ(a, usableBytesFromPhysical(physicalMemoryBytes()));
    const int mb = usableMemInMB();
    EXPECT_EQ(mb, static_cast<int>(a / 1250.0));
    EXPECT_GE(mb, 400000);
    EXPECT_LE(mb, 2320000);
}

TEST(MemoryBudget, TrialAllocation) {
    EXPECT_TRUE(testMemAlloc(64, 64, 3));
    EXPECT_TRUE(testMemAlloc(64, 64, 1000));  // clamped to 8, not 1000 images
    EXPECT_FALSE(testMemAlloc(1 << 28, 1 << 20, 1));
}

TEST(Blocking, PixelOverlapBranches) {
    int len = 0, stride = 0;
    // Up to 1.25 blocks: one block of the whole length.
    EXPECT_EQ(calcBlk(100, 100, 8, &len, &stride), 1);
    EXPECT_EQ(len, 100);
    EXPECT_EQ(stride, 100);
    EXPECT_EQ(calcBlk(124, 100, 8, &len, &stride), 1);
    // Up to 2.5 blocks: two halves plus the overlap, even.
    EXPECT_EQ(calcBlk(125, 100, 8, &len, &stride), 2);
    EXPECT_EQ(len, 70);     // MAKEM2(8 + 62)
    EXPECT_EQ(stride, 62);  // MAKEM2(62)
    // Beyond: n blocks whose strides cover the length.
    EXPECT_EQ(calcBlk(1000, 100, 8, &len, &stride), 11);
    EXPECT_EQ(stride, 91);  // q = 90, r = (1000 - 990 + 8) / 11 = 1
    EXPECT_EQ(len, 100);    // MAKEM2(91 + 8)
    EXPECT_GE(stride * 10 + len, 1000);
}

TEST(Blocking, FractionalOverlapBranches) {
    int len = 0, stride = 0;
    EXPECT_EQ(calcBlk(100, 100, 0.1f, &len, &stride), 1);
    EXPECT_EQ(len, 112);
    EXPECT_EQ(stride, 112);
    // Two blocks: each a half stretched by the overlap.
    EXPECT_EQ(calcBlk(200, 100, 0.1f, &len, &stride), 2);
    EXPECT_EQ(len, 112);  // MAKEM16(111)
    EXPECT_EQ(stride, 112);
    // Many blocks: the last one ends at or past the length, strides overlap.
    for (int total : {1500, 4000, 12345}) {
        const int n = calcBlk(total, 512, 0.03f, &len, &stride);
        ASSERT_GE(n, 2) << total;
        EXPECT_EQ(len, 512);
        EXPECT_LT(stride, len) << total;
        EXPECT_GE(stride * (n - 1) + len, total) << total;
    }
    EXPECT_EQ(calcBlk(4000, 512, 0.03f, &len, &stride), 8);
    EXPECT_EQ(stride, 499);  // 3488/7 + 1 = 499, e = 4000 - 3994 - 512 < 0
}

TEST(Blocking, DegenerateOverlapDoesNotDivideByZero) {
    int len = 0, stride = 0;
    EXPECT_EQ(calcBlk(1000, 100, 100, &len, &stride), 1);
    EXPECT_GE(calcBlk(1000, 100, 1.0f, &len, &stride), 2);
}

TEST(Environment, SwitchesCountersAndTimer) {
    EXPECT_EQ(calcPixelStep(1), 3);
    EXPECT_EQ(calcPixelStep(3), 6);
    EXPECT_EQ(calcPixelStep(5), 4);
    EXPECT_EQ(calcPixelStep(6), 8);
    EXPECT_EQ(calcPixelStep(7), 0);

    gMKL_PARDISO_OOC_OK = 1;
    EXPECT_EQ(setRKEnvVars(), 1);
    EXPECT_EQ(gMKL_PARDISO_OOC_OK, 0);
    EXPECT_EQ(restoreRKEnvVars(), 1);
    EXPECT_EQ(isPardisoOOCOk(), 0);

    clearRKPNUM();
    changeRKPNUM(3);
    changeRKPNUM(-1);
    EXPECT_EQ(getRKPNUM(), 2);
    clearRKPNUM();

    startTimer();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const double s = endTimer();
    EXPECT_GE(s, 0.015);
    EXPECT_LT(s, 5.0);
    EXPECT_EQ(g_timer, s);
}

}  // namespace
