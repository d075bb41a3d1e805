// Resampling against a per-pixel evaluation of each interpolation in double:
// every mode and element type, partial source and destination regions, shifts,
// reductions and enlargements; plus exactness properties (identity, flat
// images, block means) and the index-model resize with its untouched alpha.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <utility>
#include <vector>

#include "core/ippi_resize.h"
#include "prim_block.h"

namespace {

using primtest::Block;

const int kModes[] = {IPPI_INTER_NN, IPPI_INTER_LINEAR, IPPI_INTER_CUBIC, IPPI_INTER_LANCZOS,
                      IPPI_INTER_SUPER};

double kernel(int mode, double x) {
    x = std::fabs(x);
    if (mode == IPPI_INTER_LINEAR) return x < 1 ? 1 - x : 0;
    if (mode == IPPI_INTER_CUBIC) {
        if (x < 1) return 1.5 * x * x * x - 2.5 * x * x + 1;
        if (x < 2) return -0.5 * x * x * x + 2.5 * x * x - 4 * x + 2;
        return 0;
    }
    if (x < 1e-12) return 1;
    if (x >= 3) return 0;
    const double p = M_PI * x;
    return 3 * std::sin(p) * std::sin(p / 3) / (p * p);
}

// (source index, weight) along one axis for destination index d; `edge` is
// where d's left edge maps and `len` the length it covers, in source pixels.
std::vector<std::pair<int, double>> axisWeights(int mode, double edge, double len, int lo, int hi) {
    std::vector<std::pair<int, double>> out;
    const double centre = edge + len / 2 - 0.5;  // in index units (centres at k)
    auto clampIdx = [&](long k) { return static_cast<int>(std::clamp<long>(k, lo, hi - 1)); };
    if (mode == IPPI_INTER_NN) {
        out.push_back({clampIdx(std::lround(std::floor(centre + 0.5))), 1.0});
    } else if (mode == IPPI_INTER_SUPER) {
        double total = 0;
        for (long k = std::lround(std::floor(edge)) - 1; k <= std::lround(std::ceil(edge + len));
             ++k) {
            const double overlap = std::min(edge + len, k + 1.0) - std::max(edge, double(k));
            if (overlap > 0) out.push_back({clampIdx(k), overlap}), total += overlap;
        }
        for (auto& p : out) p.second /= total;
    } else {
        double total = 0;
        for (long k = std::lround(std::floor(centre)) - 3; k <= std::lround(std::floor(centre)) + 4;
             ++k) {
            const double w = kernel(mode, centre - k);
            if (w != 0) out.push_back({clampIdx(k), w}), total += w;
        }
        for (auto& p : out) p.second /= total;
    }
    return out;
}

struct Case {
    IppiSize srcSize;
    IppiRect srcRoi, dstRoi;
    double fx, fy, sx, sy;
};

template <typename T, int C>
void checkSqrPixel(const Case& k, int mode, std::mt19937& rng, double tol) {
    Block<T> src({k.srcSize.width, k.srcSize.height}, C, 2);
    src.fillRandom(rng, 0, 250);
    // Pixels outside the source region hold extremes that must never be read.
    for (int y = 0; y < k.srcSize.height; ++y)
        for (int x = 0; x < k.srcSize.width; ++x)
            if (x < k.srcRoi.x || y < k.srcRoi.y || x >= k.srcRoi.x + k.srcRoi.width ||
                y >= k.srcRoi.y + k.srcRoi.height)
                for (int c = 0; c < C; ++c) src.at(x, y, c) = T(-100);
    const IppiSize dstSize{k.dstRoi.x + k.dstRoi.width + 2, k.dstRoi.y + k.dstRoi.height + 1};
    Block<T> dst(dstSize, C, 1);
    const T sentinel = T(99);
    dst.fillValue(sentinel);
    int bytes = 0;
    ASSERT_EQ(ippiResizeGetBufSize(k.srcRoi, k.dstRoi, C, mode, &bytes), ippStsNoErr);
    std::vector<Ipp8u> buffer(bytes);
    IppStatus st;
    if constexpr (C == 4)
        st = ippiResizeSqrPixel_8u_C4R(src.ptr(), k.srcSize, src.step(), k.srcRoi, dst.ptr(),
                                       dst.step(), k.dstRoi, k.fx, k.fy, k.sx, k.sy, mode,
                                       buffer.data());
    else
        st = IPPIP::ippiResizeSqrPixel_C1R(src.ptr(), k.srcSize, src.step(), k.srcRoi, dst.ptr(),
                                           dst.step(), k.dstRoi, k.fx, k.fy, k.sx, k.sy, mode,
                                           buffer.data());
    ASSERT_EQ(st, ippStsNoErr);
    const int rx0 = k.srcRoi.x, rx1 = k.srcRoi.x + k.srcRoi.width;
    const int ry0 = k.srcRoi.y, ry1 = k.srcRoi.y + k.srcRoi.height;
    int checked = 0;
    for (int y = -1; y < dstSize.height + 1; ++y)
        for (int x = -1; x < dstSize.width + 1; ++x) {
            const double cx = (x + 0.5 - k.sx) / k.fx, cy = (y + 0.5 - k.sy) / k.fy;
            const bool written = x >= k.dstRoi.x && x < k.dstRoi.x + k.dstRoi.width &&
                                 y >= k.dstRoi.y && y < k.dstRoi.y + k.dstRoi.height &&
                                 std::floor(cx) >= rx0 && std::floor(cx) < rx1 &&
                                 std::floor(cy) >= ry0 && std::floor(cy) < ry1;
            for (int c = 0; c < C; ++c) {
                if (!written) {
                    ASSERT_EQ(dst.at(x, y, c), sentinel) << "wrote " << x << "," << y;
                    continue;
                }
                const auto wx = axisWeights(mode, (x - k.sx) / k.fx, 1 / k.fx, rx0, rx1);
                const auto wy = axisWeights(mode, (y - k.sy) / k.fy, 1 / k.fy, ry0, ry1);
                double v = 0;
                for (const auto& [iy, ay] : wy)
                    for (const auto& [ix, ax] : wx) v += ay * ax * double(src.at(ix, iy, c));
                if (!std::is_floating_point_v<T>) v = std::clamp(v, -32768.0, 32767.0);
                if (std::is_same_v<T, Ipp8u>) v = std::clamp(v, 0.0, 255.0);
                ASSERT_NEAR(double(dst.at(x, y, c)), v, tol)
                    << "mode " << mode << " at " << x << "," << y << " ch " << c;
                ++checked;
            }
        }
    EXPECT_GE(checked, C * 2);
}

const Case kCases[] = {
    {{13, 9}, {0, 0, 13, 9}, {0, 0, 6, 4}, 0.5, 0.5, 0, 0},            // halving an odd image
    {{13, 9}, {0, 0, 13, 9}, {0, 0, 30, 21}, 2.3, 2.4, 0, 0},          // enlargement
    {{20, 11}, {3, 2, 11, 7}, {1, 2, 9, 7}, 0.7, 1.3, -1.5, 0.25},     // partial regions, shifts
    {{17, 17}, {0, 0, 17, 17}, {0, 0, 3, 2}, 1 / 5.3, 1 / 7.0, 0, 0},  // strong reduction
    {{1, 1}, {0, 0, 1, 1}, {0, 0, 3, 2}, 3, 2, 0, 0},                  // one pixel
    {{9, 1}, {0, 0, 9, 1}, {0, 0, 4, 1}, 0.45, 1, 0, 0},               // one row
    // Whole reduction factors over rows long enough for the strided tap loops.
    {{75, 6}, {1, 0, 73, 6}, {0, 0, 36, 3}, 0.5, 0.5, 0, 0},
    {{70, 5}, {0, 0, 70, 5}, {0, 0, 17, 2}, 0.25, 0.5, 0.5, 0},
    {{71, 4}, {0, 0, 71, 4}, {0, 0, 23, 2}, 1 / 3.0, 0.5, 0, 0},
};

TEST(Resize, SqrPixelMatchesPerPixelEvaluation) {
    std::mt19937 rng(51);
    for (const Case& k : kCases)
        for (const int mode : kModes) {
            checkSqrPixel<Ipp8u, 1>(k, mode, rng, 1.0);
            checkSqrPixel<Ipp8u, 4>(k, mode, rng, 1.0);
            checkSqrPixel<Ipp16s, 1>(k, mode, rng, 1.0);
            checkSqrPixel<Ipp32f, 1>(k, mode, rng, 1e-3);
        }
}

TEST(Resize, IdentityAndFlatImagesAreExact) {
    std::mt19937 rng(52);
    Block<Ipp8u> src({11, 7}, 1, 0), dst({11, 7}, 1, 0), flat({11, 7}, 1, 0);
    src.fillRandom(rng, 0, 255);
    flat.fillValue(173);
    std::vector<Ipp8u> buffer(1 << 16);
    for (const int mode : kModes) {
        ASSERT_EQ(
            ippiResizeSqrPixel_8u_C1R(src.ptr(), {11, 7}, src.step(), {0, 0, 11, 7}, dst.ptr(),
                                      dst.step(), {0, 0, 11, 7}, 1, 1, 0, 0, mode, buffer.data()),
            ippStsNoErr);
        for (int y = 0; y < 7; ++y)
            for (int x = 0; x < 11; ++x) ASSERT_EQ(dst.at(x, y), src.at(x, y)) << mode;
        ASSERT_EQ(ippiResizeSqrPixel_8u_C1R(flat.ptr(), {11, 7}, flat.step(), {0, 0, 11, 7},
                                            dst.ptr(), dst.step(), {0, 0, 5, 6}, 0.47, 0.9, 0.3, 0,
                                            mode, buffer.data()),
                  ippStsNoErr);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 5; ++x) ASSERT_EQ(dst.at(x, y), 173) << mode;
    }
}

TEST(Resize, SupersamplingByThreeIsTheBlockMeanAndToleratesSmallBuffers) {
    std::mt19937 rng(53);
    Block<float> src({12, 9}, 1, 0), dst({4, 3}, 1, 0);
    src.fillRandom(rng, 0, 1);
    // A buffer sized for a milder reduction: the primitive finds its own work memory.
    int bytes = 0;
    ippiResizeGetBufSize({0, 0, 12, 9}, {0, 0, 12, 9}, 1, IPPI_INTER_SUPER, &bytes);
    std::vector<Ipp8u> buffer(bytes);
    ASSERT_EQ(ippiResizeSqrPixel_32f_C1R(src.ptr(), {12, 9}, src.step(), {0, 0, 12, 9}, dst.ptr(),
                                         dst.step(), {0, 0, 4, 3}, 1 / 3.0, 1 / 3.0, 0, 0,
                                         IPPI_INTER_SUPER, buffer.data()),
              ippStsNoErr);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) {
            double mean = 0;
            for (int j = 0; j < 3; ++j)
                for (int i = 0; i < 3; ++i) mean += src.at(3 * x + i, 3 * y + j) / 9.0;
            ASSERT_NEAR(dst.at(x, y), mean, 1e-5);
        }
}

TEST(Resize, IndexModelSamplesFromTheRegionOriginAndKeepsAlpha) {
    std::mt19937 rng(54);
    Block<Ipp8u> src({10, 8}, 1, 0), dst({7, 5}, 1, 1);
    src.fillRandom(rng, 0, 255);
    dst.fillValue(3);
    const IppiRect roi{2, 1, 5, 4};
    ASSERT_EQ(ippiResize_8u_C1R(src.ptr(), {10, 8}, src.step(), roi, dst.ptr(), dst.step(), {7, 5},
                                1.5, 1.25, IPPI_INTER_NN),
              ippStsNoErr);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 7; ++x)
            ASSERT_EQ(dst.at(x, y), src.at(2 + std::min(int(std::floor(x / 1.5 + 0.5)), 4),
                                           1 + std::min(int(std::floor(y / 1.25 + 0.5)), 3)));
    EXPECT_TRUE(dst.outsideIs(3));

    Block<Ipp8u> src4({6, 6}, 4, 0), dst4({12, 6}, 4, 0);
    src4.fillRandom(rng, 0, 255);
    dst4.fillValue(201);
    ASSERT_EQ(ippiResize_8u_AC4R(src4.ptr(), {6, 6}, src4.step(), {0, 0, 6, 6}, dst4.ptr(),
                                 dst4.step(), {12, 6}, 2, 1, IPPI_INTER_LINEAR),
              ippStsNoErr);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 12; ++x) {
            ASSERT_EQ(dst4.at(x, y, 3), 201);
            const int x0 = x / 2, x1 = std::min(x0 + 1, 5);
            const double t = x / 2.0 - x0;
            for (int c = 0; c < 3; ++c)
                ASSERT_NEAR(dst4.at(x, y, c), (1 - t) * src4.at(x0, y, c) + t * src4.at(x1, y, c),
                            1.0);
        }
}

TEST(Resize, RefusesBadArguments) {
    Ipp8u px[16] = {};
    Ipp8u buf[4096];
    int size = 0;
    EXPECT_EQ(ippiResizeSqrPixel_8u_C1R(px, {4, 4}, 4, {0, 0, 4, 4}, px, 4, {0, 0, 2, 2}, 0, 1, 0,
                                        0, IPPI_INTER_NN, buf),
              ippStsBadArgErr);
    EXPECT_EQ(ippiResizeSqrPixel_8u_C1R(px, {4, 4}, 4, {0, 0, 4, 4}, px, 4, {0, 0, 2, 2}, 1, 1, 0,
                                        0, 3, buf),
              ippStsBadArgErr);
    EXPECT_EQ(ippiResizeSqrPixel_8u_C1R(px, {4, 4}, 4, {5, 0, 4, 4}, px, 4, {0, 0, 2, 2}, 1, 1, 0,
                                        0, IPPI_INTER_NN, buf),
              ippStsSizeErr);
    EXPECT_EQ(ippiResizeSqrPixel_8u_C1R(px, {4, 4}, 4, {0, 0, 4, 4}, px, 4, {0, 0, 2, 2}, 1, 1, 0,
                                        0, IPPI_INTER_NN, nullptr),
              ippStsNullPtrErr);
    EXPECT_EQ(ippiResize_8u_C1R(px, {4, 4}, 3, {0, 0, 4, 4}, px, 4, {2, 2}, 1, 1, IPPI_INTER_NN),
              ippStsStepErr);
    EXPECT_EQ(ippiResizeGetBufSize({0, 0, 4, 4}, {0, 0, 2, 2}, 2, IPPI_INTER_NN, &size),
              ippStsBadArgErr);
}

}  // namespace
