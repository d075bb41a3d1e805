// Test helpers for the pyramid: plain pixel grids for slow references,
// filling, reading and comparing image regions, and random pictures with a
// linear colour-to-alpha model for the coefficient routes.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <random>
#include <type_traits>
#include <vector>

#include "core/img.h"

namespace pyrtest {

// A dense w x h grid: the obviously-correct side of every comparison.
template <typename T>
struct Grid {
    int w = 0;
    int h = 0;
    std::vector<T> px;
    Grid(int width, int height, T v = T{}) : w(width), h(height), px(size_t(width) * height, v) {}
    T& at(int x, int y) { return px[size_t(y) * w + x]; }
    T at(int x, int y) const { return px[size_t(y) * w + x]; }
};

template <typename T>
Grid<T> toGrid(const GIMG<T>& img) {
    Grid<T> g(img.width(), img.height());
    for (int y = 0; y < g.h; ++y)
        for (int x = 0; x < g.w; ++x) g.at(x, y) = *imgPtr(img, x, y);
    return g;
}

template <typename T>
void fromGrid(const Grid<T>& g, GIMG<T>& img) {
    for (int y = 0; y < g.h; ++y)
        for (int x = 0; x < g.w; ++x) *imgPtr(img, x, y) = g.at(x, y);
}

// Random values in [lo, hi] (integers for integer types).
template <typename T>
Grid<T> randomGrid(int w, int h, double lo, double hi, std::mt19937& rng) {
    Grid<T> g(w, h);
    if constexpr (std::is_floating_point_v<T>) {
        std::uniform_real_distribution<double> d(lo, hi);
        for (auto& v : g.px) v = static_cast<T>(d(rng));
    } else {
        std::uniform_int_distribution<int> d(static_cast<int>(lo), static_cast<int>(hi));
        for (auto& v : g.px) v = static_cast<T>(d(rng));
    }
    return g;
}

// Fills the whole block (not only the region) with v.
template <typename T>
void fillBlock(GIMG<T>& img, T v) {
    for (int y = 0; y < img.size.height; ++y) {
        T* row = reinterpret_cast<T*>(reinterpret_cast<char*>(img.buf) + size_t(y) * img.step);
        for (int x = 0; x < img.size.width; ++x) row[x] = v;
    }
}

// Counts block pixels outside the current region that differ from v.
template <typename T>
int changedOutsideRegion(const GIMG<T>& img, T v) {
    const auto* base = reinterpret_cast<const char*>(img.buf);
    const auto offset = reinterpret_cast<const char*>(img.roiPtr) - base;
    const int rx = static_cast<int>((offset % img.step) / sizeof(T));
    const int ry = static_cast<int>(offset / img.step);
    int changed = 0;
    for (int y = 0; y < img.size.height; ++y) {
        const T* row = reinterpret_cast<const T*>(base + size_t(y) * img.step);
        for (int x = 0; x < img.size.width; ++x) {
            const bool inside = x >= rx && x < rx + img.width() && y >= ry && y < ry + img.height();
            if (!inside && row[x] != v) ++changed;
        }
    }
    return changed;
}

// Largest absolute difference between two grids of the same size.
template <typename T>
double maxAbsDiff(const Grid<T>& a, const Grid<T>& b) {
    EXPECT_EQ(a.w, b.w);
    EXPECT_EQ(a.h, b.h);
    double worst = 0;
    for (size_t i = 0; i < a.px.size() && i < b.px.size(); ++i)
        worst = std::max(worst, std::fabs(double(a.px[i]) - double(b.px[i])));
    return worst;
}

// Random four-byte picture with every channel in [lo, hi].
inline cv::Mat randomPicture(int w, int h, uint64_t seed, int lo = 0, int hi = 255) {
    cv::Mat m(h, w, CV_8UC4);
    cv::RNG(seed).fill(m, cv::RNG::UNIFORM, lo, hi + 1);
    return m;
}

// alpha = b + a1*c0 + a2*c1 + a3*c2 with colours in [0, 1].
struct LinearModel {
    double a1, a2, a3, b;
    double at(const float* c) const { return b + a1 * c[0] + a2 * c[1] + a3 * c[2]; }
    double at(const cv::Vec4b& p) const {
        const float c[3] = {p[0] / 255.0f, p[1] / 255.0f, p[2] / 255.0f};
        return at(c);
    }
};

}  // namespace pyrtest
