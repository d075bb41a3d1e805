// Bilateral filter against a double-precision per-pixel evaluation, and flood
// fill against a breadth-first reference on the original values.
#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <random>
#include <vector>

#include "core/ippi_bilateral.h"
#include "core/ippi_floodfill.h"
#include "prim_block.h"

namespace {

using primtest::Block;
using primtest::regionSizes;

TEST(Bilateral, MatchesWeightedMeanOfTheSampledKernel) {
    std::mt19937 rng(61);
    const IppiSize kernels[] = {{3, 3}, {5, 5}, {4, 3}, {7, 7}};
    const float valSq = 400, posSq = 4;
    for (const int stepK : {1, 2}) {
        int bytes = 0;
        ASSERT_EQ(
            ippiFilterBilateralGetBufSize_8u_C1R(ippiFilterBilaGauss, {300, 21}, {7, 7}, &bytes),
            ippStsNoErr);
        std::vector<Ipp8u> specBytes(bytes);
        auto* filterState = reinterpret_cast<IppiFilterBilateralSpec*>(specBytes.data());
        ASSERT_EQ(ippiFilterBilateralInit_8u_C1R(ippiFilterBilaGauss, {7, 7}, valSq, posSq, stepK,
                                                 filterState),
                  ippStsNoErr);
        for (const IppiSize roi : regionSizes())
            for (const IppiSize k : kernels) {
                Block<Ipp8u> src(roi, 1, 3), dst(roi, 1, 1);
                src.fillRandom(rng, 0, 255);
                dst.fillValue(0xEE);
                ASSERT_EQ(ippiFilterBilateral_8u_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(),
                                                     roi, k, filterState),
                          ippStsNoErr);
                for (int y = 0; y < roi.height; ++y)
                    for (int x = 0; x < roi.width; ++x) {
                        double s = 0, ws = 0;
                        const int c = src.at(x, y);
                        for (int j = 0; j < k.height; j += stepK)
                            for (int i = 0; i < k.width; i += stepK) {
                                const int dx = i - k.width / 2, dy = j - k.height / 2;
                                const int v = src.at(x + dx, y + dy);
                                const double w = std::exp(-(dx * dx + dy * dy) / (2.0 * posSq)) *
                                                 std::exp(-(v - c) * (v - c) / (2.0 * valSq));
                                s += w * v, ws += w;
                            }
                        ASSERT_NEAR(dst.at(x, y), s / ws, 0.51) << x << "," << y;
                    }
                EXPECT_TRUE(dst.outsideIs(0xEE));
            }
    }
    std::vector<Ipp8u> raw(4096, 0);
    auto* filterState = reinterpret_cast<IppiFilterBilateralSpec*>(raw.data());
    Block<Ipp8u> img({4, 4}, 1, 3);
    EXPECT_EQ(ippiFilterBilateral_8u_C1R(img.ptr(), img.step(), img.ptr(), img.step(), {4, 4},
                                         {3, 3}, filterState),
              ippStsBadArgErr);  // never initialised
    EXPECT_EQ(ippiFilterBilateralInit_8u_C1R(ippiFilterBilaGauss, {3, 3}, 0, 1, 1, filterState),
              ippStsBadArgErr);
    ASSERT_EQ(ippiFilterBilateralInit_8u_C1R(ippiFilterBilaGauss, {3, 3}, 1, 1, 1, filterState), 0);
    EXPECT_EQ(ippiFilterBilateral_8u_C1R(img.ptr(), img.step(), img.ptr(), img.step(), {4, 4},
                                         {5, 5}, filterState),
              ippStsSizeErr);  // larger than the kernel it was made for
}

// Breadth-first fill on a copy; returns the membership map.
std::vector<int> referenceFill(const Block<Ipp8u>& img, IppiPoint seed, int lo, int hi) {
    const IppiSize r = img.roi();
    std::vector<int> in(r.width * r.height, 0);
    std::deque<IppiPoint> queue{seed};
    in[seed.y * r.width + seed.x] = 1;
    while (!queue.empty()) {
        const IppiPoint p = queue.front();
        queue.pop_front();
        const int v = img.at(p.x, p.y);
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                const int x = p.x + dx, y = p.y + dy;
                if (x < 0 || y < 0 || x >= r.width || y >= r.height || in[y * r.width + x])
                    continue;
                const int u = img.at(x, y);
                if (u < v - lo || u > v + hi) continue;
                in[y * r.width + x] = 1;
                queue.push_back({x, y});
            }
    }
    return in;
}

TEST(FloodFill, FollowsGradientsWithinRangeOfNeighbours) {
    std::mt19937 rng(62);
    for (const IppiSize roi : regionSizes())
        for (const int range : {0, 3, 20}) {
            Block<Ipp8u> img(roi, 1, 2);
            img.fillRandom(rng, 100, 140);
            // A ramp that only a floating range can follow along the first row.
            for (int x = 0; x < roi.width; ++x) img.at(x, 0) = static_cast<Ipp8u>(60 + 2 * x % 190);
            const Block<Ipp8u> before = img;
            const IppiPoint seed{static_cast<int>(rng() % roi.width),
                                 static_cast<int>(rng() % roi.height)};
            const auto in = referenceFill(before, seed, range, range / 2 + 1);
            int bytes = 0;
            ASSERT_EQ(ippiFloodFillGetSize_Grad(roi, &bytes), ippStsNoErr);
            std::vector<Ipp8u> buffer(bytes);
            IppiConnectedComp comp{};
            ASSERT_EQ(ippiFloodFill_Range8Con_8u_C1IR(
                          img.ptr(), img.step(), roi, seed, 7, static_cast<Ipp8u>(range),
                          static_cast<Ipp8u>(range / 2 + 1), &comp, buffer.data()),
                      ippStsNoErr);
            int area = 0, x0 = roi.width, y0 = roi.height, x1 = -1, y1 = -1;
            for (int y = -2; y < roi.height + 2; ++y)
                for (int x = -2; x < roi.width + 2; ++x) {
                    const bool inside = x >= 0 && y >= 0 && x < roi.width && y < roi.height;
                    const bool filled = inside && in[y * roi.width + x];
                    ASSERT_EQ(img.at(x, y), filled ? 7 : before.at(x, y)) << x << "," << y;
                    if (filled) {
                        ++area;
                        x0 = std::min(x0, x), x1 = std::max(x1, x);
                        y0 = std::min(y0, y), y1 = std::max(y1, y);
                    }
                }
            EXPECT_EQ(comp.area, area);
            EXPECT_EQ(comp.value[0], 7);
            EXPECT_EQ(comp.rect.x, x0);
            EXPECT_EQ(comp.rect.y, y0);
            EXPECT_EQ(comp.rect.width, x1 - x0 + 1);
            EXPECT_EQ(comp.rect.height, y1 - y0 + 1);
        }
}

TEST(FloodFill, RefusesSeedsOutsideAndMissingBuffers) {
    Block<Ipp8u> img({5, 5}, 1, 0);
    img.fillValue(1);
    std::vector<Ipp8u> buffer(1024);
    IppiConnectedComp comp{};
    EXPECT_EQ(ippiFloodFill_Range8Con_8u_C1IR(img.ptr(), img.step(), {5, 5}, {5, 0}, 2, 0, 0, &comp,
                                              buffer.data()),
              ippStsBadArgErr);
    EXPECT_EQ(ippiFloodFill_Range8Con_8u_C1IR(img.ptr(), img.step(), {5, 5}, {0, 0}, 2, 0, 0, &comp,
                                              nullptr),
              ippStsNullPtrErr);
    int size = 0;
    EXPECT_EQ(ippiFloodFillGetSize_Grad({0, 5}, &size), ippStsSizeErr);
}

}  // namespace
