// 2x decimation: the fused smoothed pass against blurring the interior with the
// rounded 1-2-1 Gaussian (the same rounding as the engine's Gaussian primitive)
// and then decimating, plain decimation, region clipping and the resizing variant.
#include "pyramid/downsample_2x.h"

#include <gtest/gtest.h>

#include <random>

#include "pyramid_test_support.h"

using pyrtest::Grid;

namespace {

using Byte = unsigned char;

// Blur the interior with the 1-2-1 Gaussian (rounded to nearest), keep the
// one-pixel frame, then take every second pixel from (0, 0).
Grid<Byte> referenceDownsample(const Grid<Byte>& s, int dw, int dh, bool smooth,
                               const Grid<Byte>& priorDst) {
    Grid<Byte> blurred = s;
    if (smooth)
        for (int y = 1; y + 1 < s.h; ++y)
            for (int x = 1; x + 1 < s.w; ++x) {
                int sum = 0;
                for (int dy = -1; dy <= 1; ++dy)
                    for (int dx = -1; dx <= 1; ++dx)
                        sum += s.at(x + dx, y + dy) * (2 - std::abs(dx)) * (2 - std::abs(dy));
                blurred.at(x, y) = static_cast<Byte>((sum + 8) / 16);
            }
    Grid<Byte> d = priorDst;
    for (int y = 0; y < std::min(dh, s.h / 2); ++y)
        for (int x = 0; x < std::min(dw, s.w / 2); ++x) d.at(x, y) = blurred.at(2 * x, 2 * y);
    return d;
}

void expectMatchesReference(int sw, int sh, int dw, int dh, bool smooth, unsigned seed) {
    std::mt19937 rng(seed);
    const auto s = pyrtest::randomGrid<Byte>(sw, sh, 0, 255, rng);
    const auto prior = pyrtest::randomGrid<Byte>(dw, dh, 0, 255, rng);
    // Both images as regions inside larger blocks with a sentinel frame.
    const Byte sentinel = 201;
    GIMG<Byte> src(sw + 4, sh + 4), dst(dw + 2, dh + 2);
    pyrtest::fillBlock(src, sentinel);
    pyrtest::fillBlock(dst, sentinel);
    src.roiRect(2, 2, -2, -2);
    dst.roiRect(1, 1, -1, -1);
    pyrtest::fromGrid(s, src);
    pyrtest::fromGrid(prior, dst);
    ASSERT_EQ(CDnsampleRK2X(src, dst, smooth), 1);
    EXPECT_EQ(
        pyrtest::maxAbsDiff(pyrtest::toGrid(dst), referenceDownsample(s, dw, dh, smooth, prior)), 0)
        << sw << "x" << sh << " -> " << dw << "x" << dh << (smooth ? " smoothed" : "");
    EXPECT_EQ(pyrtest::changedOutsideRegion(dst, sentinel), 0);
}

TEST(Downsample2x, MatchesBlurThenDecimateForOddAndEvenSides) {
    for (bool smooth : {false, true}) {
        expectMatchesReference(16, 12, 8, 6, smooth, 1);
        expectMatchesReference(17, 13, 9, 7, smooth, 2);  // ceil-sized destination
        expectMatchesReference(9, 20, 3, 4, smooth, 3);   // destination smaller than half
        expectMatchesReference(2, 2, 1, 1, smooth, 4);    // no interior to blur
        expectMatchesReference(3, 7, 2, 4, smooth, 5);
    }
}

TEST(Downsample2x, CombinedLandsOnAnyDestinationSize) {
    std::mt19937 rng(7);
    const auto s = pyrtest::randomGrid<Byte>(40, 30, 0, 255, rng);
    GIMG<Byte> src(40, 30);
    pyrtest::fromGrid(s, src);

    // Exactly half: the plain decimation.
    GIMG<Byte> half(20, 15), direct(20, 15);
    ASSERT_EQ(CDnsampleRK2XCombined(src, half, true), 1);
    ASSERT_EQ(CDnsampleRK2X(src, direct, true), 1);
    EXPECT_EQ(pyrtest::maxAbsDiff(pyrtest::toGrid(half), pyrtest::toGrid(direct)), 0);

    // Any other size: every destination pixel is written, and a constant
    // plane stays constant.
    for (IPSize size : {IPSize(13, 9), IPSize(31, 22), IPSize(1, 1)}) {
        GIMG<Byte> flat(40, 30), out(size.width + 2, size.height + 2);
        pyrtest::fillBlock(flat, Byte{90});
        pyrtest::fillBlock(out, Byte{5});
        out.roiRect(1, 1, -1, -1);
        ASSERT_EQ(CDnsampleRK2XCombined(flat, out, true), 1);
        EXPECT_EQ(
            pyrtest::maxAbsDiff(pyrtest::toGrid(out), Grid<Byte>(size.width, size.height, 90)), 0);
        EXPECT_EQ(pyrtest::changedOutsideRegion(out, Byte{5}), 0);
    }
}

}  // namespace
