// The affinities of one 3x3 window of the matting Laplacian, and the window
// gatherers of the three colour layouts, shared by both assembly paths.
#pragma once

#include "core/img.h"
#include "matting/cfmatt.h"

// Pixels and entries of a 3x3 window and of its 9x9 affinity block.
inline constexpr int kWinPixels = 9;
inline constexpr int kWinEntries = 81;
// Entries of a window's upper triangle with diagonal: 9 + 8 + ... + 1.
inline constexpr int kWinUpperEntries = 45;
// Channel values of one window: three channels of nine, channel-major.
inline constexpr int kWinValues = 27;

// W(a,b) = (1 + (x_a - mu)' S^-1 (x_b - mu)) / 9 for the window values X
// (3 x 9, channel-major), S the channel covariance plus eps/9 on its diagonal.
// All in double precision.
inline void windowAffinities(const double* X, double eps, double* W) {
    double mu[3];
    double c[kWinValues];
    for (int ch = 0; ch < 3; ++ch) {
        double s = 0.0;
        for (int k = 0; k < kWinPixels; ++k) s += X[ch * 9 + k];
        mu[ch] = s / kWinPixels;
    }
    double S[3][3];
    for (int c1 = 0; c1 < 3; ++c1)
        for (int c2 = 0; c2 < 3; ++c2) {
            double d = 0.0;
            for (int k = 0; k < kWinPixels; ++k) d += X[c1 * 9 + k] * X[c2 * 9 + k];
            S[c1][c2] = d / kWinPixels - mu[c1] * mu[c2];
        }
    for (int ch = 0; ch < 3; ++ch) S[ch][ch] += eps / kWinPixels;

    // General 3x3 inverse through the adjugate.
    const double a00 = S[1][1] * S[2][2] - S[1][2] * S[2][1];
    const double a01 = S[0][2] * S[2][1] - S[0][1] * S[2][2];
    const double a02 = S[0][1] * S[1][2] - S[0][2] * S[1][1];
    const double a10 = S[1][2] * S[2][0] - S[1][0] * S[2][2];
    const double a11 = S[0][0] * S[2][2] - S[0][2] * S[2][0];
    const double a12 = S[0][2] * S[1][0] - S[0][0] * S[1][2];
    const double a20 = S[1][0] * S[2][1] - S[1][1] * S[2][0];
    const double a21 = S[0][1] * S[2][0] - S[0][0] * S[2][1];
    const double a22 = S[0][0] * S[1][1] - S[0][1] * S[1][0];
    const double inv = 1.0 / (S[0][0] * a00 + S[0][1] * a10 + S[0][2] * a20);
    const double Si[3][3] = {{a00 * inv, a01 * inv, a02 * inv},
                             {a10 * inv, a11 * inv, a12 * inv},
                             {a20 * inv, a21 * inv, a22 * inv}};

    for (int ch = 0; ch < 3; ++ch)
        for (int k = 0; k < kWinPixels; ++k) c[ch * 9 + k] = X[ch * 9 + k] - mu[ch];
    // T = X' S^-1 (9 x 3), then G = T X.
    double T[kWinPixels][3];
    for (int a = 0; a < kWinPixels; ++a)
        for (int j = 0; j < 3; ++j)
            T[a][j] = c[a] * Si[0][j] + c[9 + a] * Si[1][j] + c[18 + a] * Si[2][j];
    constexpr double kNinth = 1.0 / 9.0;
    for (int a = 0; a < kWinPixels; ++a)
        for (int b = 0; b < kWinPixels; ++b) {
            const double g = T[a][0] * c[b] + T[a][1] * c[9 + b] + T[a][2] * c[18 + b];
            W[a * 9 + b] = (1.0 + g) * kNinth;
        }
}

// Gatherers: the 27 window values around centre (x, y).
struct FloatPlanesGather {
    GIMG<float>** planes;
    void operator()(int x, int y, double* dst) const {
        for (int ch = 0; ch < 3; ++ch) {
            const int stride = planes[ch]->step / static_cast<int>(sizeof(float));
            CFMatt::copy3x3(imgPtr(*planes[ch], x - 1, y - 1), stride - 3, dst + ch * 9);
        }
    }
};

struct BytePlanesGather {
    unsigned char** planes;
    int step;
    void operator()(int x, int y, double* dst) const {
        for (int ch = 0; ch < 3; ++ch)
            CFMatt::copy3x3(imgPtr(planes[ch], step, x - 1, y - 1), step - 3, dst + ch * 9);
    }
};

struct InterleavedRgbGather {
    unsigned char* rgb;
    int step;
    void operator()(int x, int y, double* dst) const {
        CFMatt::copy3x3C3(imgPtr(rgb, step, 3 * (x - 1), y - 1), step - 9, dst);
    }
};

// Known interior pixels of a 0/255 map (the frame is never a window centre).
int knownInteriorCount(GIMG<unsigned char>& map, int& primStatus);

// Triplet capacity of a map: 81 per unknown interior pixel.
inline long long tripletCapacity(int width, int height, int knownInterior) {
    return (static_cast<long long>(height - 2) * (width - 2) - knownInterior) * kWinEntries;
}
