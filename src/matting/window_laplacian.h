// The windows of one tile's matting Laplacian: each window's inverse colour
// covariance, from which its 9x9 affinity block is formed on demand.
//
// Only windows that hold a variable pixel take part, the same windows the
// whole-picture assembly uses for those unknowns. Window arithmetic is in double
// and the centred colours are formed from the bytes as exact integers
// (9 b_j - sum b): a flat channel then contributes exactly nothing, where a
// float difference of means would leave rounding that the window's huge
// inverse covariance (up to 9 / epsilon) amplifies.
#pragma once

#include <vector>

class WindowLaplacian {
  public:
    // pixels: width x height colours of 4 bytes (three colour bytes, one
    // ignored) with rowBytes per row; vars: width x height bytes, non-zero for
    // a variable pixel. Windows are centred inside the tile only, so a
    // variable on the tile's edge has just the windows that fit, as at the
    // picture's edge in the whole-picture assembly. epsilon regularises each
    // window's covariance as the assembled Laplacian does.
    WindowLaplacian(const unsigned char* pixels, int rowBytes, const unsigned char* vars, int width,
                    int height, double epsilon);
    WindowLaplacian(const WindowLaplacian&) = delete;
    WindowLaplacian& operator=(const WindowLaplacian&) = delete;

    int width() const { return width_; }
    int height() const { return height_; }
    int windowCount() const { return static_cast<int>(centre_.size()); }

    // Pixel index of window k's centre, and its 9x9 affinity block W^k
    // (row-major over the window's pixels in row order); L sums delta - W^k.
    int centre(int k) const { return centre_[k]; }
    void block(int k, double* w81) const;

  private:
    int width_;
    int height_;
    std::vector<float> colour_;    // three planes of byte values, plane-major
    std::vector<int> centre_;      // pixel index of each active window's centre
    std::vector<float> sum_;       // per window: the three channel sums of bytes
    std::vector<double> inverse_;  // per window: 6 entries of the scaled inverse covariance

    // C'_j of pixel index j in window k (3 channels).
    void centred(int k, int j, double* c) const;
};
