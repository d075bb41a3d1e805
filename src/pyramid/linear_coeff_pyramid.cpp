// Coarse-to-fine completion of a partly known alpha with the linear colour model.
#include "pyramid/linear_coeff_pyramid.h"

#include <algorithm>
#include <vector>

#include "pyramid/linear_coeff_apply.h"
#include "pyramid/linear_coeff_fit.h"
#include "pyramid/pyramid_fill.h"

namespace {

using kc::coeff::isEmptyPixel;
using kc::coeff::kEmptyPixel;

constexpr float kByteToUnit = 1.0f / 255.0f;

// Reads the first three channels of pixel x as floats in [0, 1].
struct ColourRow {
    const void* row;
    int depth, cn;
    float at(int x, int k) const {
        if (depth == CV_8U) return static_cast<const unsigned char*>(row)[x * cn + k] * kByteToUnit;
        return static_cast<const float*>(row)[x * cn + k];
    }
};

ColourRow colourRow(const cv::Mat& m, int y) {
    return {m.ptr(y), m.depth(), m.channels()};
}

void checkColour(const cv::Mat& m, cv::Size size) {
    CV_Assert(m.depth() == CV_8U || m.depth() == CV_32F);
    CV_Assert(m.channels() == 3 || m.channels() == 4);
    CV_Assert(m.size() == size);
}

struct Level {
    cv::Mat alpha, image, known;
};

// Fit colours: the known colour where alpha is known, the level's colour elsewhere
// (where alpha is the model's own value); alpha: known values over the model.
void mergeKnown(const Level& level, cv::Mat& model, cv::Mat& fitColour) {
    fitColour = level.known;  // overwritten in place: the level is not needed after
    for (int y = 0; y < model.rows; ++y) {
        const float* a = level.alpha.ptr<float>(y);
        const float* img = level.image.ptr<float>(y);
        float* m = model.ptr<float>(y);
        float* c = fitColour.ptr<float>(y);
        for (int x = 0; x < model.cols; ++x) {
            if (!isEmptyPixel(a[x])) {
                m[x] = a[x];
            } else {
                std::copy(img + 3 * x, img + 3 * x + 3, c + 3 * x);
            }
        }
    }
}

void fitAndFill(const cv::Mat& alpha, const cv::Mat& colour, kc::coeff::CoeffMaps& coeffs) {
    kc::coeff::fitLinearCoefficients(alpha, colour, coeffs);
    for (cv::Mat& m : coeffs.map) {
        pyramidFill_32f(m);
        // Nothing could be fitted anywhere: fall back to alpha 0.
        if (countEmptyPixels_32f(m) > 0) m.setTo(0.0f);
    }
}

}  // namespace

void downSampleAIC(const cv::Mat& alpha, const cv::Mat& image, const cv::Mat& known,
                   cv::Mat& halfAlpha, cv::Mat& halfImage, cv::Mat& halfKnown) {
    CV_Assert(alpha.type() == CV_32FC1);
    checkColour(image, alpha.size());
    checkColour(known, alpha.size());
    const int w = alpha.cols, h = alpha.rows, hw = (w + 1) / 2, hh = (h + 1) / 2;
    halfAlpha.create(hh, hw, CV_32FC1);
    halfImage.create(hh, hw, CV_32FC3);
    halfKnown.create(hh, hw, CV_32FC3);
    for (int r = 0; r < hh; ++r) {
        const int rows = std::min(2, h - 2 * r);
        float* ha = halfAlpha.ptr<float>(r);
        float* hi = halfImage.ptr<float>(r);
        float* hk = halfKnown.ptr<float>(r);
        for (int c = 0; c < hw; ++c) {
            const int cols = std::min(2, w - 2 * c);
            float img[3] = {}, kn[3] = {}, a = 0.0f;
            int all = 0, valid = 0;
            for (int dy = 0; dy < rows; ++dy) {
                const float* ar = alpha.ptr<float>(2 * r + dy);
                const ColourRow ir = colourRow(image, 2 * r + dy);
                const ColourRow kr = colourRow(known, 2 * r + dy);
                for (int dx = 0; dx < cols; ++dx) {
                    const int x = 2 * c + dx;
                    for (int k = 0; k < 3; ++k) img[k] += ir.at(x, k);
                    ++all;
                    if (isEmptyPixel(ar[x])) continue;
                    for (int k = 0; k < 3; ++k) kn[k] += kr.at(x, k);
                    a += ar[x];
                    ++valid;
                }
            }
            for (int k = 0; k < 3; ++k) {
                hi[3 * c + k] = img[k] / all;
                hk[3 * c + k] = valid ? kn[k] / valid : 0.0f;
            }
            ha[c] = valid ? a / valid : kEmptyPixel;
        }
    }
}

void upsampleRecover_a1a2a3bPyramidMemorySave(cv::Mat& alpha, cv::Mat& picture, cv::Mat& fullAlpha,
                                              int levels) {
    CV_Assert(alpha.type() == CV_32FC1 && levels >= 1);
    CV_Assert(picture.type() == CV_8UC4 || picture.type() == CV_8UC3);
    CV_Assert(picture.size() == alpha.size());

    // levels[l - 1] holds level l; level 0 is the caller's alpha and picture.
    std::vector<Level> pyr(levels);
    for (int l = 0; l < levels; ++l) {
        const cv::Mat& a = l == 0 ? alpha : pyr[l - 1].alpha;
        const cv::Mat& i = l == 0 ? picture : pyr[l - 1].image;
        const cv::Mat& k = l == 0 ? picture : pyr[l - 1].known;
        downSampleAIC(a, i, k, pyr[l].alpha, pyr[l].image, pyr[l].known);
    }
    CV_Assert(pyr.back().alpha.cols >= 3 && pyr.back().alpha.rows >= 3);

    kc::coeff::CoeffMaps coeffs;
    fitAndFill(pyr.back().alpha, pyr.back().known, coeffs);
    pyr.pop_back();
    while (!pyr.empty()) {
        Level& level = pyr.back();
        cv::Mat model, fitColour;
        kc::coeff::applyEnlargedCoefficients(coeffs, level.image, model, CV_32FC1);
        mergeKnown(level, model, fitColour);
        fitAndFill(model, fitColour, coeffs);
        pyr.pop_back();
    }

    kc::coeff::applyEnlargedCoefficients(coeffs, picture, fullAlpha, CV_8UC1);
    for (int y = 0; y < alpha.rows; ++y) {
        const float* a = alpha.ptr<float>(y);
        unsigned char* out = fullAlpha.ptr<unsigned char>(y);
        for (int x = 0; x < alpha.cols; ++x)
            if (!isEmptyPixel(a[x])) out[x] = kc::coeff::unitToByte(a[x]);
    }
}
