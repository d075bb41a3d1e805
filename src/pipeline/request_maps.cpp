// Request views, known maps, nearest reductions and rims for the strategies.
#include "pipeline/request_maps.h"

#include <memory>
#include <opencv2/imgproc.hpp>

#include "core/aligned_alloc.h"
#include "core/ippi_resize.h"

namespace {

cv::Mat regionOf(unsigned char* base, int rowBytes, const RKPSStructMsk2& r, int type) {
    return hostRectView(base, rowBytes, cv::Rect(r.roiX, r.roiY, r.roiWidth, r.roiHeight), type);
}

struct VectorFree {
    void operator()(Ipp8u* p) const { ippsFree(p); }
};

}  // namespace

cv::Mat hostRectView(unsigned char* base, int rowBytes, cv::Rect rect, int type) {
    if (!base) return cv::Mat();
    unsigned char* corner = base + static_cast<std::ptrdiff_t>(rect.y) * rowBytes +
                            static_cast<std::ptrdiff_t>(rect.x) * CV_ELEM_SIZE(type);
    return cv::Mat(rect.height, rect.width, type, corner, static_cast<size_t>(rowBytes));
}

cv::Mat regionMaskView(const RKPSStructMsk2& r) {
    return regionOf(r.mask, r.maskRowBytes, r, CV_8UC1);
}
cv::Mat regionPictureView(const RKPSStructMsk2& r) {
    return regionOf(r.image, r.imageRowBytes, r, CV_8UC4);
}
cv::Mat regionForegroundView(const RKPSStructMsk2& r) {
    return regionOf(r.foreground, r.foregroundRowBytes, r, CV_8UC4);
}
cv::Mat regionBrushView(const RKPSStructMsk2& r) {
    return regionOf(r.brushInfo, r.brushInfoRowBytes, r, CV_8UC1);
}

GIMG<unsigned char> planeView(cv::Mat& plane) {
    return GIMG<unsigned char>(plane.cols, plane.rows, plane.data, static_cast<int>(plane.step));
}

void knownFromBrush(const cv::Mat& brush, cv::Mat& known) {
    known.create(brush.size(), CV_8UC1);
    for (int y = 0; y < brush.rows; ++y) {
        const unsigned char* b = brush.ptr<unsigned char>(y);
        unsigned char* k = known.ptr<unsigned char>(y);
        for (int x = 0; x < brush.cols; ++x) k[x] = (b[x] & 1) ? kKnownPixel : 0;
    }
}

void knownFromBrushWidening(cv::Mat& brush, cv::Mat& known) {
    known.create(brush.size(), CV_8UC1);
    for (int y = 0; y < brush.rows; ++y) {
        unsigned char* b = brush.ptr<unsigned char>(y);
        unsigned char* k = known.ptr<unsigned char>(y);
        for (int x = 0; x < brush.cols; ++x) {
            const unsigned char v = b[x];
            k[x] = (v & 1) ? kKnownPixel : 0;
            b[x] = static_cast<unsigned char>((v & 254) + ((v >> 1) & 1));
        }
    }
}

cv::Mat resizeNearest(const cv::Mat& src, cv::Size size) {
    CV_Assert(src.type() == CV_8UC1 || src.type() == CV_8UC4);
    cv::Mat dst(size, src.type());
    const IppiRect srcRect{0, 0, src.cols, src.rows};
    const IppiRect dstRect{0, 0, size.width, size.height};
    const int channels = src.channels();
    int bytes = 0;
    if (ippiResizeGetBufSize(srcRect, dstRect, channels, IPPI_INTER_NN, &bytes) != ippStsNoErr)
        throw kErrOutOfMemory;
    std::unique_ptr<Ipp8u, VectorFree> work(ippsMalloc_8u(bytes > 0 ? bytes : 1));
    if (!work) throw kErrOutOfMemory;
    const double fx = static_cast<double>(size.width) / src.cols;
    const double fy = static_cast<double>(size.height) / src.rows;
    const IppiSize srcSize{src.cols, src.rows};
    const int srcStep = static_cast<int>(src.step), dstStep = static_cast<int>(dst.step);
    const IppStatus st =
        channels == 1
            ? ippiResizeSqrPixel_8u_C1R(src.data, srcSize, srcStep, srcRect, dst.data, dstStep,
                                        dstRect, fx, fy, 0.0, 0.0, IPPI_INTER_NN, work.get())
            : ippiResizeSqrPixel_8u_C4R(src.data, srcSize, srcStep, srcRect, dst.data, dstStep,
                                        dstRect, fx, fy, 0.0, 0.0, IPPI_INTER_NN, work.get());
    if (st == ippStsMemAllocErr) throw kErrOutOfMemory;
    CV_Assert(st == ippStsNoErr);
    return dst;
}

void drawKnownRim(cv::Mat& known, int thickness, RimSides open) {
    const cv::Point topLeft(0, 0), topRight(known.cols - 1, 0);
    const cv::Point bottomLeft(0, known.rows - 1), bottomRight(known.cols - 1, known.rows - 1);
    cv::rectangle(known, topLeft, bottomRight, cv::Scalar(kKnownPixel), thickness, cv::LINE_8);
    const cv::Scalar cleared(0);
    if (open.left) cv::line(known, topLeft, bottomLeft, cleared, thickness, cv::LINE_8);
    if (open.top) cv::line(known, topLeft, topRight, cleared, thickness, cv::LINE_8);
    if (open.right) cv::line(known, topRight, bottomRight, cleared, thickness, cv::LINE_8);
    if (open.bottom) cv::line(known, bottomLeft, bottomRight, cleared, thickness, cv::LINE_8);
}

ColourPlanes::ColourPlanes(const cv::Mat& picture, const int (&order)[3]) {
    CV_Assert(picture.type() == CV_8UC4);
    for (int i = 0; i < 3; ++i) cv::extractChannel(picture, plane[i], order[i]);
}

ColourPlaneViews::ColourPlaneViews(ColourPlanes& colours)
    : first(planeView(colours.plane[0])),
      second(planeView(colours.plane[1])),
      third(planeView(colours.plane[2])),
      planes{&first, &second, &third} {}
