// rkKeepCutToAlpha: the engine's main entry. It widens a small region for
// context, keeps the painted map in brushInfo during region jobs, runs one of
// the alpha strategies, puts the painted bytes back and merges a region's
// result into the earlier mask. Whatever fails, the brush strokes are back in
// the mask before the entry returns.
#include <cstring>

#include "pipeline/brush_info.h"
#include "pipeline/fg_recover.h"
#include "pipeline/keepcut_case.h"
#include "pipeline/keepcut_request_check.h"
#include "pipeline/region_widen.h"
#include "pipeline/request_maps.h"
#include "pipeline/strategies.h"
#include "runtime/entry_guard.h"
#include "runtime/progress.h"

thread_local int maskv3Decimation = kDefaultDecimation;

namespace {

constexpr const char* kEntry = "rkKeepCutToAlpha";
// The strategies' float argument: -1 picks the area-only reduction of the
// full-resolution region pass, 0 the bounded one.
constexpr float kAreaOnlyFactor = -1.0f;
constexpr float kBoundedFactor = 0.0f;

// Log texts around each strategy, so that the log tells where a failure
// happened. Kept exactly, including the missing blanks of cases 1 and 2.
struct CaseTexts {
    const char* start;
    const char* done;
};
CaseTexts textsFor(KeepCutCase c) {
    switch (c) {
        case kCaseKDTreeHiResWhole:
            return {"computeAlphaKDTreeHiRes start - 4", "computeAlphaKDTreeHiRes sucessful - 4"};
        case kCaseOriginalHiResRegion:
            return {"computeAlphaOriginalPyramid start- 1",
                    "computeAlphaOriginalPyramid sucessful - 1"};
        case kCaseKDTreeHiResRegion:
            return {"computeAlphaKDTreeHiRes start- 2", "computeAlphaKDTreeHiRes sucessful - 2"};
        case kCaseKDTreePyramidWhole:
            return {"computeAlphaKDTreePyramid start - 8",
                    "computeAlphaKDTreePyramid sucessful - 8"};
        case kCaseOriginalRegion:
            return {"computeAlphaOriginalPyramid start - 5",
                    "computeAlphaOriginalPyramid sucessful - 5"};
        case kCaseKDTreePyramidRegion:
            return {"computeAlphaKDTreePyramid start - 7",
                    "computeAlphaKDTreePyramid sucessful - 7"};
    }
    return {"", ""};
}

void runStrategy(KeepCutCase c, RKPSStructMsk2* request) {
    switch (c) {
        case kCaseKDTreeHiResWhole:
            computeAlphaKDTreeHiRes(request, false, kBoundedFactor);
            break;
        case kCaseOriginalHiResRegion:
            computeAlphaOriginalPyramid(request, false, kAreaOnlyFactor);
            break;
        case kCaseKDTreeHiResRegion:
            computeAlphaKDTreeHiRes(request, false, kAreaOnlyFactor);
            break;
        case kCaseOriginalRegion:
            computeAlphaOriginalPyramid(request, false, kBoundedFactor);
            break;
        case kCaseKDTreePyramidWhole:
        case kCaseKDTreePyramidRegion:
            computeAlphaKDTreePyramid(request);
            break;
    }
}

void setUpProgress(const RKPSStructMsk2& r, bool progressReady) {
    CProgMsgGlobal* prog = CProgMsgGlobal::Inst();
    if (progressReady)
        prog->setProgData(r.progProc, r.progData);  // a tiling loop already set the stages up
    else
        prog->setup(r.progProc, r.progData, 0.0f);
}

// Copies the whole mask map into brushInfo, row by row with each map's row
// bytes.
void keepPaintedMap(const RKPSStructMsk2& r) {
    for (int y = 0; y < r.height; ++y)
        std::memcpy(r.brushInfo + static_cast<std::ptrdiff_t>(y) * r.brushInfoRowBytes,
                    r.mask + static_cast<std::ptrdiff_t>(y) * r.maskRowBytes,
                    static_cast<size_t>(r.width));
}

int computeRegion(RKPSStructMsk2* request, int hiResPass) {
    RKPSStructMsk2& r = *request;
    const long long area = static_cast<long long>(r.roiWidth) * r.roiHeight;
    const bool regionJob = r.cellMode != 0;
    cv::Mat maskRegion = regionMaskView(r);
    const cv::Mat brushRegion = regionBrushView(r);
    if (regionJob) keepPaintedMap(r);

    const KeepCutCase chosen = chooseKeepCutCase(hiResPass, r.cellMode, area);
    const CaseTexts texts = textsFor(chosen);
    copyErrMsg(texts.start);
    runStrategy(chosen, request);
    copyErrMsg(texts.done);

    // Foreground colours are recovered from the new alpha before the painted
    // bytes return; a failure propagates to the entry's handler like the
    // strategy's own.
    if (r.recoverForeground) recoverForegroundCell(request, regionJob);

    recoverBrushInfo(request);
    if (regionJob) mergeWithBrush(maskRegion, brushRegion, r.mergeMode);
    return 1;
}

}  // namespace

extern "C" KC_EXPORT int rkKeepCutToAlpha(RKPSStructMsk2* request, int hiResPass,
                                          bool progressReady) {
    return rkGuardEntry(
        kEntry,
        [&] {
            if (!checkKeepCutRequest(kEntry, request, KeepCutBuffers::All)) return kInvalidArgument;
            setUpProgress(*request, progressReady);
            maskv3Decimation = kDefaultDecimation;

            const KeepCutRegion widened =
                widenRegion({request->roiX, request->roiY, request->roiWidth, request->roiHeight},
                            request->width, request->height);
            request->roiX = widened.x;
            request->roiY = widened.y;
            request->roiWidth = widened.width;
            request->roiHeight = widened.height;

            try {
                return computeRegion(request, hiResPass);
            } catch (...) {
                // Brush strokes go back on every path; the guard then turns
                // the failure into the result (a thrown int passes through,
                // anything else is reported as memory exhaustion, -6).
                recoverBrushInfo(request);
                throw;
            }
        },
        UnknownFailureText::OutOfMemory);
}
