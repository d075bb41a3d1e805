// Weight tables: symmetry, the listed values, and the lookup into the
// quadrant table.
#include "pipeline/weight_tables.h"

#include <gtest/gtest.h>

namespace {

constexpr int kQ = kGaussianTableSide;
constexpr int kB = kGaussianBlurTableSide;
constexpr int kCentre = kB / 2;

float blur(int r, int c) {
    return gaussianBlurTable[r * kB + c];
}

TEST(WeightTables, QuadrantIsSymmetricAndFallsOff) {
    for (int i = 0; i < kQ; ++i)
        for (int j = 0; j < kQ; ++j) {
            EXPECT_EQ(gaussianTable[i * kQ + j], gaussianTable[j * kQ + i]) << i << "," << j;
            if (j + 1 < kQ) {
                EXPECT_GT(gaussianTable[i * kQ + j], gaussianTable[i * kQ + j + 1]);
            }
        }
}

TEST(WeightTables, QuadrantValuesAndLookup) {
    EXPECT_EQ(gaussianTable[0], 0.212132f);
    EXPECT_EQ(gaussianTable[1 * kQ + 1], 0.159887f);
    EXPECT_EQ(gaussianTable[2 * kQ + 3], 0.0337634f);
    EXPECT_EQ(gaussianTable[3 * kQ + 4], 0.00618989f);
    EXPECT_EQ(gaussianTable[4 * kQ + 4], 0.00230093f);
    for (int i = 0; i < kQ; ++i)
        for (int j = 0; j < kQ; ++j) EXPECT_EQ(nDistribution(i, j), gaussianTable[i * kQ + j]);
}

TEST(WeightTables, BlurWindowIsSymmetricWithZeroFrame) {
    for (int r = 0; r < kB; ++r)
        for (int c = 0; c < kB; ++c) {
            EXPECT_EQ(blur(r, c), blur(kB - 1 - r, c)) << r << "," << c;
            EXPECT_EQ(blur(r, c), blur(r, kB - 1 - c)) << r << "," << c;
            const bool frame = r == 0 || r == kB - 1 || c < 2 || c > kB - 3;
            if (frame) {
                EXPECT_EQ(blur(r, c), 0.0f) << r << "," << c;
            } else {
                EXPECT_GT(blur(r, c), 0.0f) << r << "," << c;
            }
        }
    EXPECT_EQ(blur(kCentre, kCentre), 1.0f);
}

TEST(WeightTables, BlurWindowListedValues) {
    // Row 1 is hand-rounded and must be kept as it is.
    const float row1[] = {0.001f, 0.003f, 0.005f, 0.009f, 0.01f, 0.009f, 0.005f, 0.003f, 0.001f};
    for (int c = 2; c <= 10; ++c) EXPECT_EQ(blur(1, c), row1[c - 2]) << c;
    EXPECT_EQ(blur(2, 2), 0.0108f);
    EXPECT_EQ(blur(3, 3), 0.0785f);
    EXPECT_EQ(blur(4, 6), 0.5681f);
    EXPECT_EQ(blur(5, 5), 0.7537f);
    EXPECT_EQ(blur(6, 5), 0.8682f);
    EXPECT_EQ(blur(6, 2), 0.1041f);
    EXPECT_EQ(blur(11, 6), 0.01f);
}

TEST(WeightTables, BlurRowsBelowOneFollowTheProductRule) {
    // Rows 2..6 are (up to their four printed digits) the outer product of the
    // centre row with itself.
    for (int r = 2; r <= kCentre; ++r)
        for (int c = 2; c <= 10; ++c)
            EXPECT_NEAR(blur(r, c), blur(kCentre, r) * blur(kCentre, c), 1e-4) << r << "," << c;
}

}  // namespace
