// Window inverses and affinity blocks of the matting Laplacian of one tile.
#include "matting/window_laplacian.h"

#include <algorithm>
#include <cstddef>

namespace {

// Pixels of a 3x3 window.
constexpr int kWin = 9;
// Byte colours reach the windows as byte / 255; with window sums of bytes the
// covariance is (9 sum b1 b2 - sum b1 sum b2) / (81 * 255^2).
constexpr double kCovScale = 81.0 * 255.0 * 255.0;
// Bytes per picture pixel: three colours and an ignored fourth byte.
constexpr int kPixelBytes = 4;

// Inverse of the symmetric 3x3 matrix m (xx, xy, xz, yy, yz, zz) into the same
// packed order.
void invertSym3(const double* m, double* inv) {
    const double a = m[0], b = m[1], c = m[2], d = m[3], e = m[4], f = m[5];
    const double A = d * f - e * e, B = c * e - b * f, C = b * e - c * d;
    const double det = a * A + b * B + c * C;
    const double r = 1.0 / det;
    inv[0] = A * r;
    inv[1] = B * r;
    inv[2] = C * r;
    inv[3] = (a * f - c * c) * r;
    inv[4] = (b * c - a * e) * r;
    inv[5] = (a * d - b * b) * r;
}

}  // namespace

WindowLaplacian::WindowLaplacian(const unsigned char* pixels, int rowBytes,
                                 const unsigned char* vars, int width, int height, double epsilon)
    : width_(width), height_(height) {
    const size_t area = static_cast<size_t>(width) * height;
    colour_.resize(3 * area);
    for (int y = 0; y < height; ++y) {
        const unsigned char* row = pixels + static_cast<std::ptrdiff_t>(y) * rowBytes;
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 3; ++c)
                colour_[c * area + static_cast<size_t>(y) * width + x] = row[kPixelBytes * x + c];
    }
    // A window is active when it holds a variable: a window centre lies within
    // one pixel of a variable.
    const int offs[kWin] = {-width - 1, -width, -width + 1, -1, 0, 1, width - 1, width, width + 1};
    const double reg = kCovScale * epsilon / kWin;
    for (int y = 1; y < height - 1; ++y)
        for (int x = 1; x < width - 1; ++x) {
            const int i = y * width + x;
            bool active = false;
            for (int o : offs) active = active || vars[i + o];
            if (!active) continue;
            double s[3] = {0, 0, 0};
            double m[6] = {0, 0, 0, 0, 0, 0};
            for (int o : offs) {
                const double v0 = colour_[i + o], v1 = colour_[area + i + o],
                             v2 = colour_[2 * area + i + o];
                s[0] += v0, s[1] += v1, s[2] += v2;
                m[0] += v0 * v0, m[1] += v0 * v1, m[2] += v0 * v2;
                m[3] += v1 * v1, m[4] += v1 * v2, m[5] += v2 * v2;
            }
            // Integer sums: exact, so the covariance is as exact as double allows.
            const double cov[6] = {
                kWin * m[0] - s[0] * s[0] + reg, kWin * m[1] - s[0] * s[1],
                kWin * m[2] - s[0] * s[2],       kWin * m[3] - s[1] * s[1] + reg,
                kWin * m[4] - s[1] * s[2],       kWin * m[5] - s[2] * s[2] + reg};
            double inv[6];
            invertSym3(cov, inv);
            centre_.push_back(i);
            for (int c = 0; c < 3; ++c) sum_.push_back(static_cast<float>(s[c]));
            inverse_.insert(inverse_.end(), inv, inv + 6);
        }
}

void WindowLaplacian::centred(int k, int j, double* c) const {
    const size_t area = static_cast<size_t>(width_) * height_;
    for (int ch = 0; ch < 3; ++ch)
        c[ch] = kWin * static_cast<double>(colour_[ch * area + j]) - sum_[3 * k + ch];
}

void WindowLaplacian::block(int k, double* w81) const {
    const int w = width_;
    const int offs[kWin] = {-w - 1, -w, -w + 1, -1, 0, 1, w - 1, w, w + 1};
    const double* m = &inverse_[6 * static_cast<size_t>(k)];
    double c[kWin][3], u[kWin][3];
    for (int j = 0; j < kWin; ++j) {
        centred(k, centre_[k] + offs[j], c[j]);
        u[j][0] = m[0] * c[j][0] + m[1] * c[j][1] + m[2] * c[j][2];
        u[j][1] = m[1] * c[j][0] + m[3] * c[j][1] + m[4] * c[j][2];
        u[j][2] = m[2] * c[j][0] + m[4] * c[j][1] + m[5] * c[j][2];
    }
    for (int a = 0; a < kWin; ++a)
        for (int b = 0; b < kWin; ++b)
            w81[a * kWin + b] =
                (1.0 + c[a][0] * u[b][0] + c[a][1] * u[b][1] + c[a][2] * u[b][2]) / kWin;
}
