// rkGrabCutEdgeGen: turns a finished GrabCut selection (in brushInfo) into a
// keep / cut / compute trimap (in mask): a band about one brush wide around
// the selection's edge becomes the compute band, the rest keep or cut, and
// painted bytes stay as painted.
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "core/img.h"
#include "core/ippi_morph.h"
#include "runtime/entry_guard.h"
#include "select/grabcut_request.h"

namespace {

constexpr const char* kEntry = "rkGrabCutEdgeGen";
constexpr int kMinRegionSide = 1;
// Widest brush accepted: the disc's k x k cells are each one pass over the
// region, so a wider brush costs minutes on a large region and is of no use
// on a selection's edge.
constexpr int kMaxBrushSize = 1024;
constexpr unsigned char kInside = 255;
constexpr unsigned char kOutside = 0;
// Band value: unpainted and in the middle of the compute band.
constexpr unsigned char kBand = 127;
// A difference below this with nothing left after erosion is outside.
constexpr int kOutsideDifference = 130;
// Selection bytes that count as inside: keep with and without bit 0.
constexpr unsigned char kSelectedEven = 254;
constexpr unsigned char kSelectedOdd = 255;

// The disc the band is drawn with: k x k, radius r, centre (r, r).
cv::Mat discKernel(int brushSize) {
    const int r = brushSize / 2;
    const int k = brushSize | 1;
    cv::Mat kernel = cv::Mat::zeros(k, k, CV_8UC1);
    cv::circle(kernel, cv::Point(r, r), r, cv::Scalar(kInside), cv::FILLED, cv::LINE_8, 0);
    return kernel;
}

// The selection with a border of r filled with borderValue, then eroded or
// dilated over its inside by the disc.
cv::Mat morphed(const cv::Mat& selection, const cv::Mat& kernel, int r, unsigned char borderValue,
                bool erode) {
    cv::Mat padded(selection.rows + 2 * r, selection.cols + 2 * r, CV_8UC1,
                   cv::Scalar(borderValue));
    cv::Mat inside = padded(cv::Rect(r, r, selection.cols, selection.rows));
    selection.copyTo(inside);
    const IppiSize roi{selection.cols, selection.rows};
    const IppiSize maskSize{kernel.cols, kernel.rows};
    const IppiPoint anchor{r, r};
    const int step = static_cast<int>(padded.step);
    const IppStatus st =
        erode ? ippiErode_8u_C1IR(inside.data, step, roi, kernel.data, maskSize, anchor)
              : ippiDilate_8u_C1IR(inside.data, step, roi, kernel.data, maskSize, anchor);
    if (st == ippStsMemAllocErr) throw kErrOutOfMemory;
    if (st != ippStsNoErr) throw std::runtime_error("morphology of the selection failed");
    return inside;
}

void edgeGen(RKPSStructMsk2& request, int brushSize) {
    const cv::Mat selected = grabCutBrushView(request);
    cv::Mat trimap = grabCutMaskView(request);
    for (int y = 0; y < trimap.rows; ++y) {
        const unsigned char* a = selected.ptr<unsigned char>(y);
        unsigned char* b = trimap.ptr<unsigned char>(y);
        for (int x = 0; x < trimap.cols; ++x)
            b[x] = (a[x] == kSelectedEven || a[x] == kSelectedOdd) ? kInside : kOutside;
    }
    const cv::Mat kernel = discKernel(brushSize);
    const int r = brushSize / 2;
    // A border of 255 keeps the image edge from eating into the selection
    // when eroding; a border of 0 keeps the outside from growing in.
    const cv::Mat eroded = morphed(trimap, kernel, r, kInside, true);
    const cv::Mat dilated = morphed(trimap, kernel, r, kOutside, false);
    for (int y = 0; y < trimap.rows; ++y) {
        const unsigned char* a = selected.ptr<unsigned char>(y);
        const unsigned char* e = eroded.ptr<unsigned char>(y);
        const unsigned char* d = dilated.ptr<unsigned char>(y);
        unsigned char* b = trimap.ptr<unsigned char>(y);
        for (int x = 0; x < trimap.cols; ++x) {
            const int diff = d[x] - e[x];
            unsigned char v = d[x];
            if (diff == 255)
                v = kBand;
            else if (diff < kOutsideDifference && e[x] == 0)
                v = kOutside;
            // Painted bytes of the selection stay as painted; the rest is
            // written unpainted.
            b[x] = (a[x] & 1) ? a[x] : static_cast<unsigned char>(v & ~1);
        }
    }
}

}  // namespace

extern "C" KC_EXPORT void rkGrabCutEdgeGen(RKPSStructMsk2* request, int brushSize) {
    rkGuardEntry(kEntry, [&] {
        if (!checkGrabCutRequest(kEntry, request, GrabCutBuffers::Maps, kMinRegionSide))
            return kInvalidArgument;
        if (brushSize < 0 || brushSize > kMaxBrushSize)
            return rkRefuseWith(kEntry, "brushSize must lie in 0..1024");
        edgeGen(*request, brushSize);
        return 1;
    });
}
