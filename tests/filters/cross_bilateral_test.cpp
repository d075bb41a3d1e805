// Cross bilateral filter against a per-pixel reference that follows the
// algorithm literally, on random images of odd sizes and several settings;
// whole padded rows are compared, so the frame and row padding must survive.
#include "filters/cross_bilateral.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

// A byte plane with padding after every row, filled with a sentinel there so
// that writes beyond the width show up.
struct Plane {
    static constexpr unsigned char kSentinel = 0xA5;
    int width, height, step;
    std::vector<unsigned char> bytes;
    Plane(int w, int h, int pad) : width(w), height(h), step(w + pad), bytes(step * h, kSentinel) {}
    unsigned char& at(int x, int y) { return bytes[static_cast<size_t>(y) * step + x]; }
    unsigned char at(int x, int y) const { return bytes[static_cast<size_t>(y) * step + x]; }
    unsigned char* data() { return bytes.data(); }
};

// Colour-like guide: flat 8x8 blocks plus a little noise, so that range
// weights take every value from 255 down to 0.
Plane blockyPlane(int w, int h, int pad, std::mt19937& rng) {
    Plane p(w, h, pad);
    std::uniform_int_distribution<int> level(0, 255), noise(-6, 6);
    std::vector<int> blocks((w / 8 + 1) * (h / 8 + 1));
    for (int& b : blocks) b = level(rng);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            p.at(x, y) = static_cast<unsigned char>(
                std::clamp(blocks[(y / 8) * (w / 8 + 1) + x / 8] + noise(rng), 0, 255));
    return p;
}

Plane randomPlane(int w, int h, int pad, std::mt19937& rng) {
    Plane p(w, h, pad);
    std::uniform_int_distribution<int> level(0, 255);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) p.at(x, y) = static_cast<unsigned char>(level(rng));
    return p;
}

struct Settings {
    int radius;
    float sigmaRange, sigmaSpace, centreWeight;
};

// The filter written pixel by pixel: same float operations in the same order
// (centre term first, then offsets rows-outer), so the result must be
// identical to the whole-image passes, not merely close.
std::vector<Plane> referenceFilter(const std::vector<Plane>& planes,
                                   const std::vector<Plane>& guide, const Settings& s) {
    std::vector<Plane> out = planes;
    const int r = s.radius;
    const int w = planes[0].width, h = planes[0].height;
    int range[256];
    for (int d = 0; d < 256; ++d) {
        const double q = d == 0 ? 0.0 : d / static_cast<double>(s.sigmaRange);
        range[d] = static_cast<int>(255.0 * std::exp(-3.0 * q * q));
    }
    const float centre = s.centreWeight * 255.0f;
    for (int y = r; y < h - r; ++y) {
        for (int x = r; x < w - r; ++x) {
            float sum = centre;
            std::vector<float> acc;
            for (const Plane& p : planes) acc.push_back(p.at(x, y) * centre);
            for (int dy = -r; dy <= r; ++dy) {
                for (int dx = -r; dx <= r; ++dx) {
                    if (dx == 0 && dy == 0) continue;
                    const double sp =
                        std::exp(-(dx * dx + dy * dy) /
                                 (2.0 * s.sigmaSpace * static_cast<double>(s.sigmaSpace)));
                    const int k = static_cast<int>(sp * 128.0);
                    int d = 0;
                    for (const Plane& g : guide)
                        d = std::min(255, d + std::abs(g.at(x + dx, y + dy) - g.at(x, y)));
                    // Byte multiply with shift 7: round to nearest, ties to even.
                    const int wgt =
                        std::min(255, static_cast<int>(std::nearbyint(range[d] * k / 128.0)));
                    for (size_t p = 0; p < planes.size(); ++p)
                        acc[p] += static_cast<float>(wgt * planes[p].at(x + dx, y + dy));
                    sum += static_cast<float>(wgt);
                }
            }
            const float inv = 1.0f / sum;
            for (size_t p = 0; p < planes.size(); ++p)
                out[p].at(x, y) = static_cast<unsigned char>(
                    std::clamp(std::nearbyint(acc[p] * inv), 0.0f, 255.0f));
        }
    }
    return out;
}

std::vector<unsigned char*> pointers(std::vector<Plane>& planes) {
    std::vector<unsigned char*> ptrs;
    for (Plane& p : planes) ptrs.push_back(p.data());
    return ptrs;
}

int runFilter(std::vector<Plane>& planes, std::vector<Plane>& guide, const Settings& s) {
    std::vector<unsigned char*> pp = pointers(planes), gp = pointers(guide);
    return CBLFRGB(planes[0].width, planes[0].height, pp.data(), planes[0].step,
                   static_cast<int>(pp.size()), gp.data(), guide[0].step,
                   static_cast<int>(gp.size()), s.radius, s.sigmaRange, s.sigmaSpace,
                   s.centreWeight);
}

TEST(CrossBilateral, MatchesPerPixelReference) {
    std::mt19937 rng(1234);
    const Settings settings[] = {{1, 20.0f, 1.0f, 1.0f},
                                 {2, 40.0f, 1.5f, 0.5f},
                                 {3, 60.0f, 2.5f, 2.0f},
                                 {2, 8.0f, 0.8f, 1.0f},
                                 {3, 150.0f, 4.0f, 0.25f}};
    const int sizes[][2] = {{37, 23}, {8, 41}, {65, 9}, {2 * 3 + 2, 2 * 3 + 3}};
    for (const Settings& s : settings) {
        for (const auto& sz : sizes) {
            for (int nGuide : {1, 3}) {
                SCOPED_TRACE(testing::Message()
                             << "radius " << s.radius << " sigmaRange " << s.sigmaRange << " size "
                             << sz[0] << "x" << sz[1] << " guides " << nGuide);
                // Different paddings for planes and guides: the two steps are
                // separate arguments.
                std::vector<Plane> planes{randomPlane(sz[0], sz[1], 5, rng),
                                          randomPlane(sz[0], sz[1], 5, rng)};
                std::vector<Plane> guide;
                for (int g = 0; g < nGuide; ++g) guide.push_back(blockyPlane(sz[0], sz[1], 3, rng));
                const std::vector<Plane> expected = referenceFilter(planes, guide, s);
                const std::vector<Plane> guideBefore = guide;

                ASSERT_EQ(runFilter(planes, guide, s), 1);
                for (size_t p = 0; p < planes.size(); ++p)
                    EXPECT_EQ(planes[p].bytes, expected[p].bytes) << "plane " << p;
                for (int g = 0; g < nGuide; ++g) EXPECT_EQ(guide[g].bytes, guideBefore[g].bytes);
            }
        }
    }
}

// Radius outside 1..3, or an interior of fewer than two pixels along a side
// (5x5 with radius 2 leaves 1x1; 6x5 leaves 2x1), is refused untouched.
TEST(CrossBilateral, RefusesRadiusOutsideOneToThreeAndTinyInteriors) {
    std::mt19937 rng(7);
    const struct {
        int w, h, radius;
    } cases[] = {{30, 30, 0}, {30, 30, 4}, {5, 5, 2}, {6, 5, 2}, {5, 6, 2}};
    for (const auto& c : cases) {
        std::vector<Plane> planes{randomPlane(c.w, c.h, 2, rng)},
            guide{randomPlane(c.w, c.h, 0, rng)};
        const std::vector<unsigned char> before = planes[0].bytes;
        EXPECT_EQ(runFilter(planes, guide, {c.radius, 20.0f, 1.0f, 1.0f}), 0)
            << c.w << "x" << c.h << " radius " << c.radius;
        EXPECT_EQ(planes[0].bytes, before);
    }
}

}  // namespace
