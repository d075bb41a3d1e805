// Byte-map operations of the matting object, on OpenCV views of the maps'
// regions of interest. OpenCV's saturating arithmetic rounds half to even and
// clamps to 0..255, which is what these operations promise.
#include "matting/matting_map_ops.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace {
cv::Mat view(GIMG<unsigned char>& m) {
    return cv::Mat(m.height(), m.width(), CV_8UC1, m.ptr(), static_cast<size_t>(m.step));
}
// The region's surroundings as they are in the block: neighbours outside the
// region are real pixels, not a synthesised border.
constexpr int kInsideBlock = cv::BORDER_REPLICATE;
const cv::Mat kBox3 = cv::Mat::ones(3, 3, CV_8U);
}  // namespace

double sumOfMap(GIMG<unsigned char>& map, int& status) {
    status = 0;
    return cv::sum(view(map))[0];
}

void copyMap(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int& status) {
    status = 0;
    cv::Mat d = view(dst);
    view(src).copyTo(d);
}

void subConstSat(GIMG<unsigned char>& map, int v, int& status) {
    status = 0;
    cv::Mat m = view(map);
    cv::subtract(m, cv::Scalar(v), m);
}

void mulConstShift(GIMG<unsigned char>& map, int k, int shift, int& status) {
    status = 0;
    cv::Mat m = view(map);
    m.convertTo(m, CV_8U, static_cast<double>(k) / (1 << shift));
}

void thresholdMask(GIMG<unsigned char>& src, int v, bool lessOrEqual, GIMG<unsigned char>& dst,
                   int& status) {
    status = 0;
    cv::Mat d = view(dst);
    cv::compare(view(src), cv::Scalar(v), d, lessOrEqual ? cv::CMP_LE : cv::CMP_GE);
}

void orMaps(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int& status) {
    status = 0;
    cv::Mat d = view(dst);
    cv::bitwise_or(view(src), d, d);
}

void erode3x3Replicated(GIMG<unsigned char>& map, int& status) {
    status = 0;
    cv::Mat m = view(map);
    cv::erode(m, m, kBox3, cv::Point(-1, -1), 1, cv::BORDER_REPLICATE);
}

namespace {
// A region view that may read one or two pixels beyond its edges.
cv::Mat regionWithSurroundings(GIMG<unsigned char>& m, int margin, cv::Rect& inner) {
    m.border(-margin, -margin);
    m.roiSize.resize(margin, margin);
    cv::Mat wide = view(m);
    m.border(margin, margin);
    m.roiSize.resize(-margin, -margin);
    inner = cv::Rect(margin, margin, m.width(), m.height());
    return wide;
}
}  // namespace

void erode3x3Into(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int& status) {
    status = 0;
    cv::Rect inner;
    cv::Mat wide = regionWithSurroundings(src, 1, inner);
    cv::Mat out;
    cv::erode(wide, out, kBox3, cv::Point(-1, -1), 1, kInsideBlock);
    cv::Mat d = view(dst);
    out(inner).copyTo(d);
}

void dilate3x3Into(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int& status) {
    status = 0;
    cv::Rect inner;
    cv::Mat wide = regionWithSurroundings(src, 1, inner);
    cv::Mat out;
    cv::dilate(wide, out, kBox3, cv::Point(-1, -1), 1, kInsideBlock);
    cv::Mat d = view(dst);
    out(inner).copyTo(d);
}

void gauss5x5Into(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int& status) {
    status = 0;
    cv::Rect inner;
    cv::Mat wide = regionWithSurroundings(src, 2, inner);
    cv::Mat out;
    cv::GaussianBlur(wide, out, cv::Size(5, 5), 0, 0, kInsideBlock);
    cv::Mat d = view(dst);
    out(inner).copyTo(d);
}

void subSat(GIMG<unsigned char>& a, GIMG<unsigned char>& b, GIMG<unsigned char>& dst, int& status) {
    status = 0;
    cv::Mat d = view(dst);
    cv::subtract(view(a), view(b), d);
}

void addSat(GIMG<unsigned char>& a, GIMG<unsigned char>& b, GIMG<unsigned char>& dst, int& status) {
    status = 0;
    cv::Mat d = view(dst);
    cv::add(view(a), view(b), d);
}

void mulShift(GIMG<unsigned char>& a, GIMG<unsigned char>& b, int shift, GIMG<unsigned char>& dst,
              int& status) {
    status = 0;
    cv::Mat d = view(dst);
    cv::multiply(view(a), view(b), d, 1.0 / (1 << shift));
}

void addConstSat(GIMG<unsigned char>& map, int v, int& status) {
    status = 0;
    cv::Mat m = view(map);
    cv::add(m, cv::Scalar(v), m);
}

void complementMap(GIMG<unsigned char>& map, int& status) {
    status = 0;
    cv::Mat m = view(map);
    cv::bitwise_not(m, m);
}
