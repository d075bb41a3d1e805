// The matting Laplacian of one tile as an operator, never assembled: the
// product L p is summed window by window from each window's inverse colour
// covariance, which is all a conjugate-gradient solve needs.
//
// Only windows that hold a variable pixel take part, the same windows the
// assembled system uses for those unknowns, so for every variable row the
// product equals the assembled Laplacian's row. Window arithmetic is in double
// and the centred colours are formed from the bytes as exact integers
// (9 b_j - sum b): a flat channel then contributes exactly nothing, where a
// float difference of means would leave rounding that the window's huge
// inverse covariance (up to 9 / epsilon) amplifies.
#pragma once

#include <cstdint>
#include <vector>

class WindowLaplacian {
  public:
    // pixels: width x height colours of 4 bytes (three colour bytes, one
    // ignored) with rowBytes per row; vars: width x height bytes, non-zero for
    // a variable pixel. Variables must lie at least two pixels inside the tile
    // (all nine windows around them are then interior). epsilon regularises each
    // window's covariance as the assembled Laplacian does.
    WindowLaplacian(const unsigned char* pixels, int rowBytes, const unsigned char* vars, int width,
                    int height, double epsilon);
    WindowLaplacian(const WindowLaplacian&) = delete;
    WindowLaplacian& operator=(const WindowLaplacian&) = delete;

    int width() const { return width_; }
    int height() const { return height_; }
    int windowCount() const { return static_cast<int>(centre_.size()); }

    // out = the windows' part of L p over the whole tile plane: out_i is the
    // sum over active windows k holding i of (W^k p)_i. The Laplacian row of a
    // variable i is then (L p)_i = 9 p_i - out_i. p and out are width x height.
    void windowProducts(const double* p, double* out) const;

    // (L p)_i for the given variable pixel indices into lp (one per index).
    // scratch is a width x height plane the call overwrites.
    void apply(const double* p, const std::vector<int>& rows, double* lp,
               std::vector<double>& scratch) const;

    // Pixel index of window k's centre, and its 9x9 affinity block W^k
    // (row-major over the window's pixels in row order); L sums delta - W^k.
    int centre(int k) const { return centre_[k]; }
    void block(int k, double* w81) const;

    // Diagonal of L at the given variable pixels.
    std::vector<double> diagonal(const std::vector<int>& rows) const;

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
