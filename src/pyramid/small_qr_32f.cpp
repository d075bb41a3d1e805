// Householder QR least squares in single precision for the per-window fits.
#include "pyramid/small_qr_32f.h"

#include <cmath>

namespace kc::coeff {

void qrLeastSquares_32f(float* a, float* r, int rows, int cols, float* x) {
    for (int k = 0; k < cols; ++k) {
        float norm2 = 0.0f;
        for (int i = k; i < rows; ++i) norm2 += a[i * cols + k] * a[i * cols + k];
        if (norm2 == 0.0f) continue;  // column already zero below the diagonal
        const float norm = std::sqrt(norm2);
        // Reflect onto the sign opposite to the pivot to avoid cancellation.
        const float diag = a[k * cols + k] > 0.0f ? -norm : norm;
        const float v0 = a[k * cols + k] - diag;
        // |v|^2 with v = (v0, a[k+1..][k]) = norm2 - pivot^2 + v0^2.
        const float vNorm2 = norm2 - a[k * cols + k] * a[k * cols + k] + v0 * v0;
        a[k * cols + k] = v0;
        for (int j = k + 1; j < cols; ++j) {
            float s = 0.0f;
            for (int i = k; i < rows; ++i) s += a[i * cols + k] * a[i * cols + j];
            s = 2.0f * s / vNorm2;
            for (int i = k; i < rows; ++i) a[i * cols + j] -= s * a[i * cols + k];
        }
        float s = 0.0f;
        for (int i = k; i < rows; ++i) s += a[i * cols + k] * r[i];
        s = 2.0f * s / vNorm2;
        for (int i = k; i < rows; ++i) r[i] -= s * a[i * cols + k];
        a[k * cols + k] = diag;
    }
    for (int k = cols - 1; k >= 0; --k) {
        float s = r[k];
        for (int j = k + 1; j < cols; ++j) s -= a[k * cols + j] * x[j];
        const float d = a[k * cols + k];
        x[k] = d != 0.0f ? s / d : 0.0f;
    }
}

}  // namespace kc::coeff
