// Shared helpers of the matting tests: planar test pictures and maps.
#pragma once

#include <array>
#include <memory>
#include <random>
#include <vector>

#include "core/img.h"

// Three 8-bit planes of one size with a common step.
struct BytePlanes {
    int w, h;
    std::array<std::unique_ptr<GIMG<unsigned char>>, 3> p;
    unsigned char* ptrs[3];
    BytePlanes(int width, int height) : w(width), h(height) {
        for (int c = 0; c < 3; ++c) {
            p[c] = std::make_unique<GIMG<unsigned char>>(w, h);
            ptrs[c] = p[c]->ptr();
        }
    }
    int step() const { return p[0]->step; }
    unsigned char& at(int c, int x, int y) { return *imgPtr(*p[c], x, y); }
    void fillRandom(unsigned seed) {
        std::mt19937 rng(seed);
        for (int c = 0; c < 3; ++c)
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) at(c, x, y) = static_cast<unsigned char>(rng() & 255);
    }
};

inline void fillMap(GIMG<unsigned char>& m, unsigned char v) {
    for (int y = 0; y < m.height(); ++y)
        for (int x = 0; x < m.width(); ++x) *imgPtr(m, x, y) = v;
}

// A trimap with a background left part, a foreground right part and an
// unknown band of the given width in the middle.
inline void bandTrimap(GIMG<unsigned char>& m, int band) {
    const int w = m.width();
    const int x0 = (w - band) / 2;
    for (int y = 0; y < m.height(); ++y)
        for (int x = 0; x < w; ++x) *imgPtr(m, x, y) = x < x0 ? 0 : (x >= x0 + band ? 255 : 128);
}
