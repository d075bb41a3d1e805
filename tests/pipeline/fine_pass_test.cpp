// The fine pass entry: it only changes soft-edge pixels of the first pass's
// result (painted pixels and pixels away from the edge stay exactly), it
// brings the generated sample closer to its true matte than case 4 does, and
// it refuses what the keep/cut entry refuses plus region jobs.
#include "pipeline/fine_pass.h"

#include <gtest/gtest.h>

#include "api/keepcut_fine.h"
#include "keepcut_job.h"
#include "pipeline/fine_band.h"

namespace {

using keepcut_test::KeepCutJob;

// Large enough that case 4 works at reduced scale (about 2.4 times smaller).
constexpr int kWidth = 1200;
constexpr int kHeight = 900;

TEST(FinePass, ChangesOnlySoftEdgesAndBeatsTheHighResolutionPass) {
    KeepCutJob coarse(kWidth, kHeight), fine(kWidth, kHeight);
    ASSERT_EQ(rkKeepCutToAlpha(&coarse.request, 1, false), 1);
    ASSERT_EQ(rkKeepCutToAlphaFine(&fine.request, false), 1);

    const cv::Mat painted = (coarse.sample.trimap == 0) | (coarse.sample.trimap == 255);
    const cv::Mat vars =
        fineVariables(matteFromMask(coarse.mask), painted, defaultFineSettings().band);
    cv::Mat changed = fine.mask != coarse.mask;
    EXPECT_EQ(cv::countNonZero(changed & ~vars), 0) << "a pixel outside the soft band changed";
    EXPECT_EQ(cv::countNonZero((fine.mask != fine.brush) & painted), 0) << "a painted pixel moved";
    EXPECT_EQ(cv::countNonZero((fine.mask & 1) & ~painted), 0) << "a computed byte is odd";
    EXPECT_GT(cv::countNonZero(changed), 0);
    EXPECT_LT(fine.sad(), 0.97 * coarse.sad());
}

TEST(FinePass, RefusesBrokenRequestsAndLonelyStrokes) {
    struct Case {
        const char* what;
        void (*breakIt)(RKPSStructMsk2&, KeepCutJob&);
        int result;
    };
    const Case cases[] = {
        {"region job", [](RKPSStructMsk2& r, KeepCutJob&) { r.cellMode = 1; }, -2},
        {"null image", [](RKPSStructMsk2& r, KeepCutJob&) { r.image = nullptr; }, -2},
        {"negative width", [](RKPSStructMsk2& r, KeepCutJob&) { r.width = -4; }, -2},
        {"short mask rows", [](RKPSStructMsk2& r, KeepCutJob&) { r.maskRowBytes = r.width - 1; },
         -2},
        {"keep strokes only",
         [](RKPSStructMsk2&, KeepCutJob& j) {
             j.mask.setTo(RK_MASK_KEEP, j.mask == RK_MASK_CUT);
             j.mask.copyTo(j.brush);
         },
         -5},
    };
    for (const Case& c : cases) {
        KeepCutJob job(64, 48);
        c.breakIt(job.request, job);
        const cv::Mat before = job.mask.clone();
        EXPECT_EQ(rkKeepCutToAlphaFine(&job.request, false), c.result) << c.what;
        if (c.result == -2) {
            EXPECT_EQ(cv::countNonZero(job.mask != before), 0) << c.what;
        }
    }
    EXPECT_EQ(rkKeepCutToAlphaFine(nullptr, false), -2);
}

}  // namespace
