// Multi-level foreground and background estimation: each level starts from
// the coarser level's colours enlarged (nearest) and relaxes every pixel in
// turn toward the pair (F, B) that best fits the compositing equation and the
// weighted means of its four neighbours' colours.
#include "pipeline/fg_multilevel.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace {

// Number of levels above 1 x 1: each level about doubles the longer side.
int levelCount(cv::Size size) {
    const int longer = std::max(size.width, size.height);
    return longer > 1 ? static_cast<int>(std::ceil(std::log2(static_cast<double>(longer)))) : 0;
}

// Size of level i of n: both sides grow geometrically from 1 to full size.
cv::Size levelSize(cv::Size full, int i, int n) {
    if (n == 0 || i == n) return full;
    const double t = static_cast<double>(i) / n;
    const auto side = [t](int s) {
        return std::max(1, static_cast<int>(std::lround(std::pow(static_cast<double>(s), t))));
    };
    return {side(full.width), side(full.height)};
}

// One Gauss-Seidel sweep over a level (picture I and alpha A, 32FC3 and
// 32FC1), updating F and B in place, row by row.
//
// Per pixel the energy is (a F + (1 - a) B - I)^2 + sum_k w_k ((F - F_k)^2 +
// (B - B_k)^2) with w_k = eps + omega |a - a_k|. Its minimiser, with W = sum
// w_k and F*, B* the w-weighted means of the neighbours' colours, is the
// neighbour means moved along (a, 1 - a) by the compositing residual:
//   r = I - a F* - (1 - a) B*,  D = a^2 + (1 - a)^2 + W,
//   F = F* + a r / D,  B = B* + (1 - a) r / D.
// Written this way the picture term never cancels against itself, which keeps
// single precision exact to well under a grey level even at W = 4 eps.
void relax(const cv::Mat& I, const cv::Mat& A, cv::Mat& F, cv::Mat& B, float eps, float omega) {
    const int w = I.cols, h = I.rows;
    for (int y = 0; y < h; ++y) {
        const int yUp = std::max(y - 1, 0), yDown = std::min(y + 1, h - 1);
        const float* a = A.ptr<float>(y);
        const float* aRows[2] = {A.ptr<float>(yUp), A.ptr<float>(yDown)};
        const float* pic = I.ptr<float>(y);
        float* f = F.ptr<float>(y);
        float* b = B.ptr<float>(y);
        const float* fRows[2] = {F.ptr<float>(yUp), F.ptr<float>(yDown)};
        const float* bRows[2] = {B.ptr<float>(yUp), B.ptr<float>(yDown)};
        for (int x = 0; x < w; ++x) {
            const int xl = x > 0 ? x - 1 : 0, xr = x + 1 < w ? x + 1 : w - 1;
            const float ax = a[x];
            // Neighbours: left, right (this row), up, down (same column).
            const float wk[4] = {eps + omega * std::fabs(ax - a[xl]),
                                 eps + omega * std::fabs(ax - a[xr]),
                                 eps + omega * std::fabs(ax - aRows[0][x]),
                                 eps + omega * std::fabs(ax - aRows[1][x])};
            const float W = wk[0] + wk[1] + wk[2] + wk[3];
            const float invW = 1.0f / W;
            const float ab = 1.0f - ax;
            const float invD = 1.0f / (ax * ax + ab * ab + W);
            const int cl = 3 * xl, cr = 3 * xr, cx = 3 * x;
            for (int c = 0; c < 3; ++c) {
                const float fm = (wk[0] * f[cl + c] + wk[1] * f[cr + c] + wk[2] * fRows[0][cx + c] +
                                  wk[3] * fRows[1][cx + c]) *
                                 invW;
                const float bm = (wk[0] * b[cl + c] + wk[1] * b[cr + c] + wk[2] * bRows[0][cx + c] +
                                  wk[3] * bRows[1][cx + c]) *
                                 invW;
                const float r = (pic[cx + c] - ax * fm - ab * bm) * invD;
                f[cx + c] = std::clamp(fm + ax * r, 0.0f, 1.0f);
                b[cx + c] = std::clamp(bm + ab * r, 0.0f, 1.0f);
            }
        }
    }
}

}  // namespace

ForegroundLayers estimateForegroundMultiLevel(const cv::Mat& picture, const cv::Mat& alpha,
                                              const MultiLevelOptions& o) {
    CV_Assert(!picture.empty() && (picture.type() == CV_8UC3 || picture.type() == CV_8UC4));
    CV_Assert(alpha.type() == CV_8UC1 && alpha.size() == picture.size());
    constexpr double kByte = 1.0 / 255.0;  // bytes to 0..1, so that 0 and 255 are exact
    cv::Mat image, a;
    if (picture.channels() == 4) {
        cv::Mat bgr;
        cv::cvtColor(picture, bgr, cv::COLOR_BGRA2BGR);
        bgr.convertTo(image, CV_32FC3, kByte);
    } else {
        picture.convertTo(image, CV_32FC3, kByte);
    }
    alpha.convertTo(a, CV_32FC1, kByte);

    const cv::Size full = picture.size();
    const int n = levelCount(full);
    ForegroundLayers out;
    for (int i = 0; i <= n; ++i) {
        const cv::Size s = levelSize(full, i, n);
        cv::Mat levelImage = image, levelAlpha = a;
        if (s != full) {
            cv::resize(image, levelImage, s, 0, 0, cv::INTER_NEAREST);
            cv::resize(a, levelAlpha, s, 0, 0, cv::INTER_NEAREST);
        }
        if (i == 0) {
            // Both layers start as the picture's colour: the first sweeps
            // then only have to pull them apart where alpha says so.
            out.foreground = levelImage.clone();
            out.background = levelImage.clone();
        } else if (out.foreground.size() != s) {
            cv::Mat f, b;
            cv::resize(out.foreground, f, s, 0, 0, cv::INTER_NEAREST);
            cv::resize(out.background, b, s, 0, 0, cv::INTER_NEAREST);
            out.foreground = std::move(f);
            out.background = std::move(b);
        }
        const bool small = s.width <= o.smallSize && s.height <= o.smallSize;
        const int sweeps = small ? o.smallIterations : o.bigIterations;
        for (int k = 0; k < sweeps; ++k)
            relax(levelImage, levelAlpha, out.foreground, out.background, o.regularization,
                  o.gradientWeight);
    }
    return out;
}

cv::Mat foregroundBytesMultiLevel(const cv::Mat& picture, const cv::Mat& alpha) {
    cv::Mat bytes;
    estimateForegroundMultiLevel(picture, alpha).foreground.convertTo(bytes, CV_8UC3, 255.0);
    return bytes;
}
