// Keep/cut jobs of the reliability tests over the generated sample.
#include "reliability_job.h"

#include <opencv2/core.hpp>

#include "api/keepcut.h"
#include "keepcut_job.h"

namespace kc_sweep {
namespace {

// A region job covers a fifth of each side around the subject's upper edge
// before the entry widens it, so that the widened region still leaves part of
// the picture outside.
constexpr int kRegionFraction = 5;
// A region job with the thinnest known rim; merged as an adding stroke, so
// that the merge step runs too.
constexpr int kRegionCellMode = 1;
constexpr int kMergeByMaximum = 1;

}  // namespace

bool isDocumentedResult(int result) {
    for (int documented : {1, -1, -2, -5, -6, 102, 121, 122, 123, 125, 130})
        if (result == documented) return true;
    return false;
}

JobOutcome runJob(const JobSpec& spec, const std::function<void()>& before,
                  const std::function<void()>& after) {
    keepcut_test::KeepCutJob job(spec.width, spec.height);
    if (spec.region) {
        const int rw = spec.width / kRegionFraction, rh = spec.height / kRegionFraction;
        job.setRegion((spec.width - rw) / 2, spec.height / 4, rw, rh, kRegionCellMode);
        job.request.mergeMode = kMergeByMaximum;
    }
    job.request.recoverForeground = spec.recoverForeground;
    const cv::Mat painted = job.mask.clone();

    before();
    const int result = rkKeepCutToAlpha(&job.request, spec.hiResPass, false);
    after();

    JobOutcome outcome{result, 0, 0};
    const RKPSStructMsk2& r = job.request;
    const cv::Rect region(r.roiX, r.roiY, r.roiWidth, r.roiHeight);
    for (int y = 0; y < job.h; ++y)
        for (int x = 0; x < job.w; ++x) {
            const unsigned char in = painted.at<unsigned char>(y, x);
            const unsigned char out = job.mask.at<unsigned char>(y, x);
            if (in & RK_MASK_PAINTED_BIT)
                outcome.paintedChanged += out != in;
            else if (region.contains(cv::Point(x, y)))
                outcome.oddResults += out & RK_MASK_PAINTED_BIT;
        }
    return outcome;
}

}  // namespace kc_sweep
