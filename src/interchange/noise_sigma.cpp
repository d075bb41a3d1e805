// Noise levels between RGB and YUV. Variances of independent channels add
// through a linear map with squared weights, hence sums of squares here.
#include "interchange/noise_sigma.h"

#include <algorithm>
#include <cmath>

namespace {

// Rows of the RGB -> YUV matrix, signs dropped (they vanish when squared).
constexpr double kToYuv[3][3] = {
    {0.299, 0.587, 0.114},  // Y
    {0.147, 0.289, 0.436},  // U = 0.492 (B - Y)
    {0.615, 0.515, 0.1},    // V = 0.877 (R - Y)
};
// The map back on variances, as the engine has always used it: a fitted
// inverse of the squared matrix, so small negative results can occur.
constexpr double kFromYuvSquared[3][3] = {
    {-2.4877, 0.0001, 3.232},    // R
    {3.5966, -0.2018, -0.8386},  // G
    {-1.2974, 5.3491, 0.0011},   // B
};

}  // namespace

void rkSigmaRGBToYUV(float* sRGB, float* sYUV) {
    double out[3];
    for (int i = 0; i < 3; ++i) {
        double sum = 0.0;
        for (int j = 0; j < 3; ++j) {
            const double t = kToYuv[i][j] * sRGB[j];
            sum += t * t;
        }
        out[i] = std::sqrt(sum);
    }
    for (int i = 0; i < 3; ++i) sYUV[i] = static_cast<float>(out[i]);
}

void rkSigmaRGBToYUV_inv(float* sYUV, float* sRGB) {
    double out[3];
    for (int i = 0; i < 3; ++i) {
        double sum = 0.0;
        for (int j = 0; j < 3; ++j) sum += kFromYuvSquared[i][j] * sYUV[j] * sYUV[j];
        out[i] = std::sqrt(std::max(0.0, sum));
    }
    for (int i = 0; i < 3; ++i) sRGB[i] = static_cast<float>(out[i]);
}
