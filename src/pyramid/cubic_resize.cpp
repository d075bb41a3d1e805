// Cubic resampling of byte planes through OpenCV (saturating fixed-point
// arithmetic for 8-bit data).
#include "pyramid/cubic_resize.h"

#include <opencv2/imgproc.hpp>

void resizeCubic(const GIMG<unsigned char>& src, GIMG<unsigned char>& dst) {
    const cv::Mat in(src.height(), src.width(), CV_8UC1, src.ptr(), static_cast<size_t>(src.step));
    cv::Mat out(dst.height(), dst.width(), CV_8UC1, dst.ptr(), static_cast<size_t>(dst.step));
    cv::resize(in, out, out.size(), 0, 0, cv::INTER_CUBIC);
}
