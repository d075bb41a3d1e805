// Push-pull hole filling over a pyramid of half-size levels.
#include "pyramid/pyramid_fill.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "pyramid/linear_coeff_fit.h"

namespace {

using kc::coeff::isEmptyPixel;
using kc::coeff::kEmptyPixel;

// Tent weights over the fine pixels 2c-1 .. 2c+2 around coarse pixel c: the adjoint
// of the bilinear interpolation used on the way up, so fills come out smooth.
constexpr float kTent[4] = {1.0f, 3.0f, 3.0f, 1.0f};

bool hasEmptyPixel(const cv::Mat& map) {
    for (int y = 0; y < map.rows; ++y) {
        const float* row = map.ptr<float>(y);
        if (std::any_of(row, row + map.cols, isEmptyPixel)) return true;
    }
    return false;
}

}  // namespace

int countEmptyPixels_32f(cv::Mat& map) {
    CV_Assert(map.type() == CV_32FC1);
    int n = 0;
    for (int y = 0; y < map.rows; ++y) {
        const float* row = map.ptr<float>(y);
        n += static_cast<int>(std::count_if(row, row + map.cols, isEmptyPixel));
    }
    return n;
}

void pyramidFillD_32f(cv::Mat& fine, cv::Mat& coarse) {
    CV_Assert(fine.type() == CV_32FC1 && !fine.empty());
    const int w = fine.cols, h = fine.rows, cw = (w + 1) / 2, ch = (h + 1) / 2;
    // Horizontal pass: weighted sums and weights of the filled pixels per fine row.
    cv::Mat sum(h, cw, CV_32FC1), weight(h, cw, CV_32FC1);
    for (int y = 0; y < h; ++y) {
        const float* src = fine.ptr<float>(y);
        float* s = sum.ptr<float>(y);
        float* wt = weight.ptr<float>(y);
        for (int c = 0; c < cw; ++c) {
            float acc = 0.0f, accW = 0.0f;
            for (int t = 0; t < 4; ++t) {
                const int x = 2 * c - 1 + t;
                if (x < 0 || x >= w || isEmptyPixel(src[x])) continue;
                acc += kTent[t] * src[x];
                accW += kTent[t];
            }
            s[c] = acc;
            wt[c] = accW;
        }
    }
    coarse.create(ch, cw, CV_32FC1);
    for (int r = 0; r < ch; ++r) {
        float* dst = coarse.ptr<float>(r);
        for (int c = 0; c < cw; ++c) {
            float acc = 0.0f, accW = 0.0f;
            for (int t = 0; t < 4; ++t) {
                const int y = 2 * r - 1 + t;
                if (y < 0 || y >= h) continue;
                acc += kTent[t] * sum.at<float>(y, c);
                accW += kTent[t] * weight.at<float>(y, c);
            }
            dst[c] = accW > 0.0f ? acc / accW : kEmptyPixel;
        }
    }
}

void pyramidFillU_32f(cv::Mat& coarse, cv::Mat& fine) {
    CV_Assert(coarse.type() == CV_32FC1 && fine.type() == CV_32FC1);
    CV_Assert(coarse.cols == (fine.cols + 1) / 2 && coarse.rows == (fine.rows + 1) / 2);
    const int cw = coarse.cols, ch = coarse.rows;
    for (int y = 0; y < fine.rows; ++y) {
        float* dst = fine.ptr<float>(y);
        // Coarse pixel r is centred on fine row 2r + 0.5.
        const float sy = std::clamp((y - 0.5f) * 0.5f, 0.0f, static_cast<float>(ch - 1));
        const int y0 = static_cast<int>(sy), y1 = std::min(y0 + 1, ch - 1);
        const float fy = sy - y0;
        const float* r0 = coarse.ptr<float>(y0);
        const float* r1 = coarse.ptr<float>(y1);
        for (int x = 0; x < fine.cols; ++x) {
            if (!isEmptyPixel(dst[x])) continue;
            const float sx = std::clamp((x - 0.5f) * 0.5f, 0.0f, static_cast<float>(cw - 1));
            const int x0 = static_cast<int>(sx), x1 = std::min(x0 + 1, cw - 1);
            const float fx = sx - x0;
            const float top = r0[x0] + fx * (r0[x1] - r0[x0]);
            const float bottom = r1[x0] + fx * (r1[x1] - r1[x0]);
            dst[x] = top + fy * (bottom - top);
        }
    }
}

void pyramidFill_32f(cv::Mat& map) {
    CV_Assert(map.type() == CV_32FC1);
    std::vector<cv::Mat> levels{map};  // level 0 shares the caller's pixels
    while (hasEmptyPixel(levels.back())) {
        // Any filled pixel reaches a coarse pixel, so an empty 1x1 level means the
        // whole map was empty: nothing to fill from.
        if (levels.back().total() == 1) return;
        cv::Mat coarse;
        pyramidFillD_32f(levels.back(), coarse);
        levels.push_back(std::move(coarse));
    }
    for (size_t i = levels.size() - 1; i >= 1; --i) {
        pyramidFillU_32f(levels[i], levels[i - 1]);
        levels.pop_back();
    }
}
