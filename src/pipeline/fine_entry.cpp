// rkKeepCutToAlphaFine: the high-resolution pass of the keep/cut entry, then
// the fine pass over its alpha, then (if asked) the foreground colours from
// the refined alpha.
#include "api/keepcut_fine.h"
#include "pipeline/fg_recover.h"
#include "pipeline/fine_pass.h"
#include "pipeline/keepcut_request_check.h"
#include "runtime/entry_guard.h"

namespace {
constexpr const char* kEntry = "rkKeepCutToAlphaFine";
// rkKeepCutToAlpha's pass flag for its full-resolution pass.
constexpr int kHiResPass = 1;
}  // namespace

extern "C" KC_EXPORT int rkKeepCutToAlphaFine(RKPSStructMsk2* request, bool progressReady) {
    return rkGuardEntry(
        kEntry,
        [&] {
            if (!checkKeepCutRequest(kEntry, request, KeepCutBuffers::All)) return kInvalidArgument;
            if (request->cellMode != 0)
                return rkRefuseWith(kEntry, "cellMode must be 0 (a whole-picture job)");

            // Colours are recovered once, from the refined alpha.
            RKPSStructMsk2 coarse = *request;
            coarse.recoverForeground = false;
            const int rc = rkKeepCutToAlpha(&coarse, kHiResPass, progressReady);
            request->roiX = coarse.roiX;
            request->roiY = coarse.roiY;
            request->roiWidth = coarse.roiWidth;
            request->roiHeight = coarse.roiHeight;
            if (rc != 1) return rc;

            try {
                copyErrMsg("computeAlphaFine start");
                computeAlphaFine(request, defaultFineSettings());
                copyErrMsg("computeAlphaFine done");
                if (request->recoverForeground) recoverForegroundCell(request, false);
                recoverBrushInfo(request);
            } catch (...) {
                recoverBrushInfo(request);
                throw;
            }
            return 1;
        },
        UnknownFailureText::OutOfMemory);
}
