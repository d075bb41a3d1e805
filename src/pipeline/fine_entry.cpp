// rkKeepCutToAlphaFine: the high-resolution pass of the keep/cut entry, then
// the fine pass over its alpha, then (if asked) the foreground colours from
// the refined alpha. A band small enough is solved whole instead, without
// the first pass.
#include "api/keepcut_fine.h"
#include "pipeline/fine_foreground.h"
#include "pipeline/fine_pass.h"
#include "pipeline/keepcut_request_check.h"
#include "pipeline/mask_codes.h"
#include "pipeline/region_widen.h"
#include "pipeline/request_maps.h"
#include "runtime/entry_guard.h"
#include "runtime/progress.h"

namespace {
constexpr const char* kEntry = "rkKeepCutToAlphaFine";
// rkKeepCutToAlpha's pass flag for its full-resolution pass.
constexpr int kHiResPass = 1;

// The request's region widened as the keep/cut entry widens it, and whether
// its band can be solved whole: small enough, and with the strokes the first
// pass would accept (anything else goes through the first pass, which then
// refuses it as the keep/cut entry does).
bool takeWholeBand(RKPSStructMsk2& r, long long limit, bool progressReady) {
    const KeepCutRegion widened =
        widenRegion({r.roiX, r.roiY, r.roiWidth, r.roiHeight}, r.width, r.height);
    RKPSStructMsk2 region = r;
    region.roiX = widened.x;
    region.roiY = widened.y;
    region.roiWidth = widened.width;
    region.roiHeight = widened.height;
    const cv::Mat mask = regionMaskView(region);
    const long long unknown = static_cast<long long>(mask.total()) - cv::countNonZero(mask & 1);
    if (unknown < kMinUnknownPixels || unknown > limit ||
        cv::countNonZero(mask == kMaskKeep) == 0 || cv::countNonZero(mask == kMaskCut) == 0)
        return false;
    r = region;
    CProgMsgGlobal* prog = CProgMsgGlobal::Inst();
    if (progressReady)
        prog->setProgData(r.progProc, r.progData);
    else
        prog->setup(r.progProc, r.progData, 0.0f);
    return true;
}

// The first pass; its (widened) region becomes the request's.
int firstPass(RKPSStructMsk2* request, bool progressReady) {
    // Colours are recovered once, from the refined alpha.
    RKPSStructMsk2 coarse = *request;
    coarse.recoverForeground = false;
    const int rc = rkKeepCutToAlpha(&coarse, kHiResPass, progressReady);
    request->roiX = coarse.roiX;
    request->roiY = coarse.roiY;
    request->roiWidth = coarse.roiWidth;
    request->roiHeight = coarse.roiHeight;
    return rc;
}
}  // namespace

extern "C" KC_EXPORT int rkKeepCutToAlphaFine(RKPSStructMsk2* request, bool progressReady) {
    return rkGuardEntry(
        kEntry,
        [&] {
            if (!checkKeepCutRequest(kEntry, request, KeepCutBuffers::All)) return kInvalidArgument;
            if (request->cellMode != 0)
                return rkRefuseWith(kEntry, "cellMode must be 0 (a whole-picture job)");

            const FineSettings settings = defaultFineSettings();
            const bool whole = takeWholeBand(*request, settings.wholeBandLimit, progressReady);
            if (!whole) {
                const int rc = firstPass(request, progressReady);
                if (rc != 1) return rc;
            }
            try {
                copyErrMsg("computeAlphaFine start");
                if (whole)
                    solveWholeBand(request);
                else
                    computeAlphaFine(request, settings);
                copyErrMsg("computeAlphaFine done");
                if (request->recoverForeground) recoverForegroundMultiLevel(*request);
                recoverBrushInfo(request);
            } catch (...) {
                recoverBrushInfo(request);
                throw;
            }
            return 1;
        },
        UnknownFailureText::OutOfMemory);
}
