// Per-window regularised least-squares fit of alpha as a linear function of colour.
#include "pyramid/linear_coeff_fit.h"

#include <algorithm>
#include <cmath>

#include "core/ippm_small_matrix.h"

namespace kc::coeff {
namespace {

constexpr int kWindowPixels = 9;
constexpr int kRows = 13;  // nine window pixels plus four regularisation rows
constexpr int kUnknowns = 4;
// Ridge on a1..a3: the square root of 1e-7, so that a flat window (all colours equal)
// still has a full-rank system and gets small colour slopes instead of wild ones.
constexpr float kSlopeRidge = 0.00031623f;
// Ridge on b: keeps the offset bounded too when the window's colours are all zero.
constexpr float kOffsetRidge = 0.0016f;

// Clamps a 3-wide window start so that the window stays inside [0, n).
inline int windowStart(int c, int n) {
    return std::clamp(c - 1, 0, n - 3);
}

}  // namespace

bool solveWindowFit(const float rows[9][3], const float rhs[9], const bool use[9], float x[4]) {
    float a[kRows][kUnknowns] = {};
    float r[kRows] = {};
    for (int i = 0; i < kWindowPixels; ++i) {
        if (!use[i]) continue;  // a zero row adds nothing to the solution
        a[i][0] = rows[i][0];
        a[i][1] = rows[i][1];
        a[i][2] = rows[i][2];
        a[i][3] = 1.0f;
        r[i] = rhs[i];
    }
    a[9][0] = kSlopeRidge;
    a[10][1] = kSlopeRidge;
    a[11][2] = kSlopeRidge;
    a[12][3] = kOffsetRidge;
    constexpr int kRowBytes = kUnknowns * sizeof(float), kElemBytes = sizeof(float);
    float qr[kRows][kUnknowns];
    float scratch[kRows];
    return ippmQRDecomp_m_32f(&a[0][0], kRowBytes, kElemBytes, scratch, &qr[0][0], kRowBytes,
                              kElemBytes, kUnknowns, kRows) == ippStsNoErr &&
           ippmQRBackSubst_mv_32f(&qr[0][0], kRowBytes, kElemBytes, scratch, r, kElemBytes, x,
                                  kElemBytes, kUnknowns, kRows) == ippStsNoErr;
}

void fitLinearCoefficients(const cv::Mat& alpha, const cv::Mat& colour, CoeffMaps& out) {
    CV_Assert(alpha.type() == CV_32FC1);
    CV_Assert(colour.depth() == CV_32F && (colour.channels() == 3 || colour.channels() == 4));
    CV_Assert(colour.size() == alpha.size() && alpha.cols >= 3 && alpha.rows >= 3);
    const int w = alpha.cols, h = alpha.rows, cn = colour.channels();
    for (cv::Mat& m : out.map) m.create(h, w, CV_32FC1);

    float rows[kWindowPixels][3];
    float rhs[kWindowPixels];
    bool use[kWindowPixels];
    float x[kUnknowns];
    for (int y = 0; y < h; ++y) {
        const int y0 = windowStart(y, h);
        float* dst[4];
        for (int k = 0; k < 4; ++k) dst[k] = out.map[k].ptr<float>(y);
        for (int xPix = 0; xPix < w; ++xPix) {
            const int x0 = windowStart(xPix, w);
            int used = 0;
            for (int j = 0; j < 3; ++j) {
                const float* ar = alpha.ptr<float>(y0 + j) + x0;
                const float* cr = colour.ptr<float>(y0 + j) + x0 * cn;
                for (int i = 0; i < 3; ++i) {
                    const int n = j * 3 + i;
                    use[n] = !isEmptyPixel(ar[i]);
                    used += use[n];
                    rhs[n] = ar[i];
                    rows[n][0] = cr[i * cn + 0];
                    rows[n][1] = cr[i * cn + 1];
                    rows[n][2] = cr[i * cn + 2];
                }
            }
            // The ridge rows keep the system of full rank, so a failed solve is not
            // expected; it would leave the pixel empty like a window without data.
            const bool fitted = used >= kMinFitSamples && solveWindowFit(rows, rhs, use, x);
            for (int k = 0; k < 4; ++k) dst[k][xPix] = fitted ? x[k] : kEmptyPixel;
        }
    }
}

}  // namespace kc::coeff
