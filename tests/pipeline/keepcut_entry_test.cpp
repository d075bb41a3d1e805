// The main keep/cut entry end to end on the generated sample: results of the
// whole-picture strategies against the true matte, the painted bytes after
// success and after every kind of failure, the merge of region jobs, the
// strategy chosen at the area limits and the cell mode's bounds. Other refused
// requests and the restoring of painted bytes alone are the fuzz target's.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>

#include "api/keepcut.h"
#include "keepcut_job.h"

namespace {

using keepcut_test::KeepCutJob;

constexpr int kW = 320;
constexpr int kH = 240;

bool logHas(const char* text) {
    return std::string(getErrMsg()).find(text) != std::string::npos;
}

cv::Mat inside(const cv::Mat& map, const cv::Rect& region) {
    cv::Mat in(map.size(), CV_8UC1, cv::Scalar(0));
    in(region).setTo(255);
    return in;
}

// Every painted (odd) input byte is intact, no even input byte of the region
// came out odd, and nothing outside the region changed.
void expectPaintedIntact(const cv::Mat& before, const cv::Mat& after, const cv::Rect& region) {
    const cv::Mat changed = before != after, painted = (before & 1) != 0,
                  in = inside(before, region);
    EXPECT_EQ(cv::countNonZero(changed & painted), 0);
    EXPECT_EQ(cv::countNonZero(((after & 1) != 0) & ~painted & in), 0);
    EXPECT_EQ(cv::countNonZero(changed & ~in), 0);
}

cv::Rect regionOf(const RKPSStructMsk2& r) {
    return cv::Rect(r.roiX, r.roiY, r.roiWidth, r.roiHeight);
}

// Budgets of the whole-picture matte at 320 x 240, in summed grey levels over
// the picture (the unknown band holds 9933 pixels). Measured: 44,555 for the
// full-resolution pass (case 4) and 176,583 for the coarse pass (case 8, which
// solves at half size and loses single-pixel hairs); budgets are those + 5%.
constexpr double kSadBudgetCase4 = 46783;
constexpr double kSadBudgetCase8 = 185412;

TEST(KeepCutEntry, WholePictureMatteWithinBudget) {
    const struct {
        int hiResPass;
        const char* start;
        const char* done;
        double budget;
    } cases[] = {
        {1, "computeAlphaKDTreeHiRes start - 4", "computeAlphaKDTreeHiRes sucessful - 4",
         kSadBudgetCase4},
        {0, "computeAlphaKDTreePyramid start - 8", "computeAlphaKDTreePyramid sucessful - 8",
         kSadBudgetCase8},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.start);
        KeepCutJob job(kW, kH);
        const cv::Mat before = job.mask.clone();
        clearErrMsg();
        ASSERT_EQ(rkKeepCutToAlpha(&job.request, c.hiResPass, false), 1) << getErrMsg();
        EXPECT_TRUE(logHas(c.start));
        EXPECT_TRUE(logHas(c.done));
        expectPaintedIntact(before, job.mask, cv::Rect(0, 0, kW, kH));
        EXPECT_LE(job.sad(), c.budget);
        // A whole-picture job never widens: the region was already all of it.
        EXPECT_EQ(regionOf(job.request), cv::Rect(0, 0, kW, kH));
    }
}

// A region job on the subject's upper edge, run as computed (mergeMode 2) and
// merged by minimum and by maximum: the merged results are exactly the
// smaller / larger of the computed result and the pre-solve map on unpainted
// pixels, and the painted bytes and everything outside the region stay.
TEST(KeepCutEntry, RegionJobsMergeByMinimumAndMaximum) {
    for (int hiRes : {1, 0}) {
        SCOPED_TRACE(hiRes);
        KeepCutJob computed(kW, kH);
        computed.setRegion(120, 30, 60, 40, 1);
        clearErrMsg();
        ASSERT_EQ(rkKeepCutToAlpha(&computed.request, hiRes, false), 1) << getErrMsg();
        EXPECT_TRUE(logHas(hiRes == 1 ? "computeAlphaOriginalPyramid start- 1"
                                      : "computeAlphaOriginalPyramid start - 5"));
        const cv::Rect region = regionOf(computed.request);
        EXPECT_GT(region.area(), 60 * 40);  // widened for context
        const cv::Mat input = KeepCutJob(kW, kH).mask;
        expectPaintedIntact(input, computed.mask, region);
        // brushInfo held the painted map during the call.
        EXPECT_EQ(cv::countNonZero(computed.brush != input), 0);

        for (int mode : {0, 1}) {
            KeepCutJob merged(kW, kH);
            merged.setRegion(120, 30, 60, 40, 1);
            merged.request.mergeMode = mode;
            ASSERT_EQ(rkKeepCutToAlpha(&merged.request, hiRes, false), 1);
            cv::Mat want = computed.mask.clone(), merge;
            if (mode == 0)
                cv::min(want, input, merge);
            else
                cv::max(want, input, merge);
            merge.copyTo(want, ((input & 1) == 0) & inside(input, region));
            EXPECT_EQ(cv::countNonZero(merged.mask != want), 0) << "mergeMode " << mode;
        }
    }
}

int throwingProgress(int, int, void*) {
    throw std::runtime_error("host callback failed");
}

// Failures on either pass leave every painted byte as it was: too few strokes
// (cut strokes turned into band) and an unexpected exception, which reads as
// out of memory.
TEST(KeepCutEntry, FailuresReturnTheirCodeWithStrokesRestored) {
    const struct {
        bool onlyKeep;
        int hiRes, result;
        const char* log;
    } cases[] = {
        {true, 1, -5, "rkKeepCutToAlpha: result -5, not enough keep and cut strokes"},
        {true, 0, -5, "rkKeepCutToAlpha: result -5, not enough keep and cut strokes"},
        {false, 1, -6,
         "Out of System Memory !! \nPlease close unused applications or try smaller pictures."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.log);
        KeepCutJob job(kW, kH);
        int data = 0;
        if (c.onlyKeep) {
            job.mask.setTo(100, job.mask == RK_MASK_CUT);
            job.mask.copyTo(job.brush);
        } else {
            job.request.progProc = throwingProgress;
            job.request.progData = &data;
        }
        const cv::Mat before = job.mask.clone();
        clearErrMsg();
        EXPECT_EQ(rkKeepCutToAlpha(&job.request, c.hiRes, false), c.result);
        EXPECT_TRUE(logHas(c.log));
        expectPaintedIntact(before, job.mask, cv::Rect(0, 0, kW, kH));
        initProgProc();
    }
}

// A whole picture whose only strokes sit on either side of the first split:
// the split is undone and the single leaf at half size holds more than
// 2,000,000 unknown pixels, so the KD-tree guard refuses the job.
TEST(KeepCutEntry, KDTreeGuardFailureReturnsMinusOne) {
    const int w = 2900, h = 2800;  // 1450 x 1400 = 2,030,000 at half size
    cv::Mat image(h, w, CV_8UC4, cv::Scalar(40, 80, 120, 255));
    cv::Mat mask(h, w, CV_8UC1, cv::Scalar(128)), brush(h, w, CV_8UC1);
    mask.at<unsigned char>(2, 2) = RK_MASK_KEEP;
    mask.at<unsigned char>(h - 4, w - 4) = RK_MASK_CUT;
    mask.copyTo(brush);
    const cv::Mat before = mask.clone();
    cv::Mat foreground(h, w, CV_8UC4);
    RKPSStructMsk2 r = wholePictureRequest(image, mask, foreground, brush);
    EXPECT_EQ(rkKeepCutToAlpha(&r, 0, false), -1);
    expectPaintedIntact(before, mask, cv::Rect(0, 0, w, h));
}

// A region job of exactly 968 x 968 pixels (the whole picture, so widening
// cannot grow it) leaves the original-pyramid strategy on the coarse pass.
TEST(KeepCutEntry, CoarseRegionAtTheAreaLimitRunsTheKDTree) {
    KeepCutJob job(968, 968);
    job.setRegion(0, 0, 968, 968, 1);
    const cv::Mat before = job.mask.clone();
    clearErrMsg();
    ASSERT_EQ(rkKeepCutToAlpha(&job.request, 0, false), 1) << getErrMsg();
    EXPECT_TRUE(logHas("computeAlphaKDTreePyramid sucessful - 7"));
    expectPaintedIntact(before, job.mask, cv::Rect(0, 0, 968, 968));
}

// The rim a region job draws is 2 x cellMode + 1 thick: beyond 16383 it
// cannot be drawn, and far beyond it the thickness overflows.
TEST(KeepCutEntry, RefusesCellModesBeyondTheDrawableRim) {
    for (int cellMode : {-1, 16384, 1 << 30}) {
        KeepCutJob job(64, 48);
        job.request.cellMode = cellMode;
        clearErrMsg();
        EXPECT_EQ(rkKeepCutToAlpha(&job.request, 1, false), -2) << cellMode;
        EXPECT_TRUE(logHas("rkKeepCutToAlpha: cellMode must lie in 0..16383"));
    }
}

}  // namespace
