// A job the memory budget cannot hold is refused before it allocates: the
// refusal runs in a child process whose address space leaves room for little
// more than the request itself.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <opencv2/core.hpp>

#include "api/keepcut.h"
#include "engine_job.h"

namespace {

// Room the child gets beyond what it has mapped already: ample for the
// request's own buffers, a tenth of what reducing a sliver used to take.
constexpr long kHeadroomBytes = 200L << 20;

// Bytes of address space the process has mapped now.
long mappedBytes() {
    long pages = 0;
    if (FILE* f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld", &pages) != 1) pages = 0;
        std::fclose(f);
    }
    return pages * sysconf(_SC_PAGESIZE);
}

// The full-resolution pass over a 2 x 2000 picture (keep above, cut below, a
// band between), which it would reduce to 501 x 501,000 pixels, under the
// address-space limit; 0 when it is refused as too large.
int sliverUnderLimit() {
    const int w = 2, h = 2000;
    cv::Mat image(h, w, CV_8UC4, cv::Scalar(40, 80, 120, 255));
    cv::Mat mask(h, w, CV_8UC1), foreground(h, w, CV_8UC4), brush;
    for (int y = 0; y < h; ++y)
        mask.row(y).setTo(y < h / 3 ? RK_MASK_KEEP : y >= 2 * h / 3 ? RK_MASK_CUT : 128);
    brush = mask.clone();
    RKPSStructMsk2 r = wholePictureRequest(image, mask, foreground, brush);
    const rlimit limit{static_cast<rlim_t>(mappedBytes() + kHeadroomBytes), RLIM_INFINITY};
    if (setrlimit(RLIMIT_AS, &limit) != 0) return 2;
    return rkKeepCutToAlpha(&r, 1, false) == -1 ? 0 : 1;
}

TEST(BudgetRefusal, SliverBeyondTheBudgetIsRefusedBeforeItsReduction) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::_Exit(sliverUnderLimit()), testing::ExitedWithCode(0), "");
}

}  // namespace
