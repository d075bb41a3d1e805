// Shared helpers of the matting tests: planar test pictures and maps, and
// sparse rows of dense matrices.
#pragma once

#include <Eigen/Dense>
#include <array>
#include <memory>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

#include "core/img.h"

// A matrix header over a container's region (no copy).
template <typename T>
cv::Mat matOf(const GIMG<T>& m) {
    return cv::Mat(m.height(), m.width(), cv::DataType<T>::type, m.ptr(), m.step);
}

inline void fillMap(GIMG<unsigned char>& m, unsigned char v) {
    matOf(m).setTo(v);
}

// Three 8-bit planes of one size with a common step.
struct BytePlanes {
    int w, h;
    std::array<std::unique_ptr<GIMG<unsigned char>>, 3> p;
    unsigned char* ptrs[3];
    GIMG<unsigned char>* views[3];
    BytePlanes(int width, int height) : w(width), h(height) {
        for (int c = 0; c < 3; ++c) {
            p[c] = std::make_unique<GIMG<unsigned char>>(w, h);
            ptrs[c] = p[c]->ptr();
            views[c] = p[c].get();
        }
    }
    int step() const { return p[0]->step; }
    unsigned char& at(int c, int x, int y) { return *imgPtr(*p[c], x, y); }
    cv::Mat plane(int c) const { return matOf(*p[c]); }
    void fillRandom(unsigned seed) {
        cv::RNG rng(seed);
        for (int c = 0; c < 3; ++c) rng.fill(plane(c), cv::RNG::UNIFORM, 0, 256);
    }
};

// Three float planes of one size.
struct FloatPlanes {
    GIMG<float> f0, f1, f2;
    GIMG<float>* p[3] = {&f0, &f1, &f2};
    FloatPlanes(int w, int h) : f0(w, h), f1(w, h), f2(w, h) {}
};

// One-based compressed sparse rows of a dense matrix: every non-zero, or the
// upper triangle with the diagonal always kept (as the symmetric solvers
// take it).
template <typename T>
struct DenseCsr {
    std::vector<T> a;
    std::vector<int> ia{1}, ja;
    DenseCsr(const Eigen::MatrixXd& M, bool upper) {
        for (int r = 0; r < M.rows(); ++r) {
            for (int c = upper ? r : 0; c < M.cols(); ++c)
                if ((upper && c == r) || M(r, c) != 0.0) {
                    a.push_back(static_cast<T>(M(r, c)));
                    ja.push_back(c + 1);
                }
            ia.push_back(static_cast<int>(a.size()) + 1);
        }
    }
};
