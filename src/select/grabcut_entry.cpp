// rkGrabCut: one GrabCut stroke over the request's GrabCut region. The map's
// bit 0 is the user's foreground and bit 1 (or any higher bit) makes a pixel a
// hard constraint; the selection runs through the session in grabCutBuf
// (created on the first call) and the map comes back with bit 0 cleared where
// the cut found background.
#include <opencv2/core.hpp>

#include "core/ippi_copy.h"
#include "core/ippi_logic_compare.h"
#include "pipeline/request_maps.h"
#include "runtime/arg_check.h"
#include "select/grabcut.h"
#include "select/grabcut_control.h"
#include "select/grabcut_guard.h"
#include "select/grabcut_levels.h"
#include "select/grabcut_request.h"

namespace {

constexpr const char* kEntry = "rkGrabCut";
// The cut needs a rectangle inside a 5-pixel margin: a side of 10 or less
// leaves none.
constexpr int kMinRegionSide = 11;
// Progress set up for the stroke: a total and the increment of each kick.
constexpr int kProgressTotal = 10000;
constexpr int kProgressInc = 10;
// Picture bytes that make planes 0, 1 and 2: red, green, blue.
constexpr int kRgbOrder[3] = {2, 1, 0};
// Map byte bits: the user's foreground, and the hard-constraint bit.
constexpr unsigned char kForegroundBit = 1;
constexpr unsigned char kHardBit = 2;
constexpr unsigned char kSelected = 255;

// The session in grabCutBuf must be live and of the size the region works at.
bool checkSession(const RKPSStructMsk2& r) {
    if (!r.grabCutBuf) return true;
    if (!isLiveGrabCutSession(r.grabCutBuf))
        return rkRefuse(kEntry, "grabCutBuf is not a live GrabCut session");
    const auto& s = *static_cast<const GrabCutControl*>(r.grabCutBuf);
    if (IPSize(s.width, s.height) != grabCutWorkSize(r.gcWidth, r.gcHeight))
        return rkRefuse(kEntry,
                        "the GrabCut session was made for another region size; delete it and "
                        "start a new session");
    return true;
}

// alpha = 255 where the map's foreground bit is set, else 0; the map's bit 0
// then takes bit 1's value, so that a non-zero byte marks a hard constraint.
void splitUserMap(cv::Mat& map, cv::Mat& alpha) {
    for (int y = 0; y < map.rows; ++y) {
        unsigned char* m = map.ptr<unsigned char>(y);
        unsigned char* a = alpha.ptr<unsigned char>(y);
        for (int x = 0; x < map.cols; ++x) {
            a[x] = (m[x] & kForegroundBit) ? kSelected : 0;
            m[x] = static_cast<unsigned char>((m[x] & ~kForegroundBit) | ((m[x] & kHardBit) >> 1));
        }
    }
}

int stroke(RKPSStructMsk2& r, int stepwiseUpsampling) {
    setProgProc(r.progProc, r.progData, kProgressTotal, kProgressInc);
    const IppiSize size{r.gcWidth, r.gcHeight};
    cv::Mat map = grabCutMaskView(r);
    cv::Mat alpha(map.size(), CV_8UC1);
    cv::Mat entryMap;
    map.copyTo(entryMap);
    {
        ColourPlanes colours(grabCutPictureView(r), kRgbOrder);
        ColourPlaneViews planes(colours);
        splitUserMap(map, alpha);
        GIMG<unsigned char> alphaView = planeView(alpha);
        GIMG<unsigned char> constsView = planeView(map);
        rkMapAlphaProcGrabCut(planes.planes, &alphaView, &constsView, r.grabCutBuf,
                              stepwiseUpsampling, true);
    }
    // Background loses bit 0; the selection gets its entry byte back as it
    // was, so a newly selected pixel keeps the bit 0 it came with.
    ippiAndC_8u_C1IR(static_cast<Ipp8u>(~kForegroundBit), map.data, static_cast<int>(map.step),
                     size);
    ippiCopy_8u_C1MR(entryMap.data, static_cast<int>(entryMap.step), map.data,
                     static_cast<int>(map.step), size, alpha.data, static_cast<int>(alpha.step));
    cv::Mat brush = grabCutBrushView(r);
    ippiCopy_8u_C1R(map.data, static_cast<int>(map.step), brush.data, static_cast<int>(brush.step),
                    size);
    return 1;
}

}  // namespace

extern "C" KC_EXPORT int rkGrabCut(RKPSStructMsk2* request, int stepwiseUpsampling) {
    return grabCutGuard(kEntry, [&] {
        if (!checkGrabCutRequest(kEntry, request, GrabCutBuffers::PictureAndMaps, kMinRegionSide) ||
            !checkSession(*request))
            return kInvalidArgument;
        return stroke(*request, stepwiseUpsampling);
    });
}
