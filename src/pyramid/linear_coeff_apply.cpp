// Enlarging the coefficient maps and accumulating the linear model at full size.
#include "pyramid/linear_coeff_apply.h"

#include <algorithm>
#include <array>
#include <vector>

#include "core/img.h"
#include "core/ippi_resize.h"

namespace kc::coeff {
namespace {

// Exact byte / 255 for every byte value, so that the per-pixel loop only looks up.
const std::array<float, 256>& byteToUnit() {
    static const std::array<float, 256> table = [] {
        std::array<float, 256> t{};
        for (int i = 0; i < 256; ++i) t[i] = static_cast<float>(i) / 255.0f;
        return t;
    }();
    return table;
}

inline float colourAt(const unsigned char* row, int i) {
    return byteToUnit()[row[i]];
}
inline float colourAt(const float* row, int i) {
    return row[i];
}

// acc = big * colour channel k (first map) or acc += big * colour channel k.
template <typename T>
void accumulateProduct(const cv::Mat& big, const cv::Mat& picture, int k, cv::Mat& acc,
                       bool first) {
    const int cn = picture.channels(), w = picture.cols;
    for (int y = 0; y < picture.rows; ++y) {
        const float* a = big.ptr<float>(y);
        const T* p = picture.ptr<T>(y);
        float* s = acc.ptr<float>(y);
        if (first)
            for (int x = 0; x < w; ++x) s[x] = a[x] * colourAt(p, x * cn + k);
        else
            for (int x = 0; x < w; ++x) s[x] += a[x] * colourAt(p, x * cn + k);
    }
}

// Adds the enlarged offset map and stores the result in the output's type.
void finishWithOffset(const cv::Mat& acc, const cv::Mat& bBig, cv::Mat& out) {
    const int w = acc.cols;
    for (int y = 0; y < acc.rows; ++y) {
        const float* s = acc.ptr<float>(y);
        const float* b = bBig.ptr<float>(y);
        if (out.depth() == CV_8U) {
            unsigned char* o = out.ptr<unsigned char>(y);
            for (int x = 0; x < w; ++x) o[x] = unitToByte(s[x] + b[x]);
        } else {
            float* o = out.ptr<float>(y);
            for (int x = 0; x < w; ++x) o[x] = s[x] + b[x];
        }
    }
}

}  // namespace

void enlargeBilinear(const cv::Mat& src, cv::Mat& dst, cv::Size size) {
    CV_Assert(src.type() == CV_32FC1 && !src.empty() && size.area() > 0);
    dst.create(size, CV_32FC1);
    const IppiRect srcRoi{0, 0, src.cols, src.rows};
    const IppiRect dstRoi{0, 0, size.width, size.height};
    int bufBytes = 0;
    ippiResizeGetBufSize(srcRoi, dstRoi, 1, IPPI_INTER_LINEAR, &bufBytes);
    std::vector<Ipp8u> work(std::max(bufBytes, 1));
    const IppStatus st = ippiResizeSqrPixel_32f_C1R(
        src.ptr<float>(), IppiSize(src.cols, src.rows), static_cast<int>(src.step), srcRoi,
        dst.ptr<float>(), static_cast<int>(dst.step), dstRoi,
        static_cast<double>(size.width) / src.cols, static_cast<double>(size.height) / src.rows,
        0.0, 0.0, IPPI_INTER_LINEAR, work.data());
    if (st == ippStsMemAllocErr) throw kErrOutOfMemory;
    CV_Assert(st == ippStsNoErr);
}

void applyEnlargedCoefficients(CoeffMaps& coeffs, const cv::Mat& picture, cv::Mat& out,
                               int outType) {
    CV_Assert(picture.channels() == 3 || picture.channels() == 4);
    CV_Assert(picture.depth() == CV_8U || picture.depth() == CV_32F);
    CV_Assert(outType == CV_8UC1 || outType == CV_32FC1);
    const cv::Size full = picture.size();
    if (outType == CV_8UC1 && !out.empty())
        CV_Assert(out.type() == CV_8UC1 && out.size() == full);  // never detach a view
    else
        out.create(full, outType);

    cv::Mat acc, big;
    for (int k = 0; k < 3; ++k) {
        enlargeBilinear(coeffs.map[k], k == 0 ? acc : big, full);
        coeffs.map[k].release();
        if (picture.depth() == CV_8U)
            accumulateProduct<unsigned char>(k == 0 ? acc : big, picture, k, acc, k == 0);
        else
            accumulateProduct<float>(k == 0 ? acc : big, picture, k, acc, k == 0);
    }
    enlargeBilinear(coeffs.map[3], big, full);
    coeffs.map[3].release();
    finishWithOffset(acc, big, out);
}

}  // namespace kc::coeff
