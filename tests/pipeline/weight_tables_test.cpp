// Weight tables: symmetry, fall-off and frame, a few listed values, the
// product rule of the blur rows, and the lookup into the quadrant table.
#include "pipeline/weight_tables.h"

#include <gtest/gtest.h>

namespace {

constexpr int kQ = kGaussianTableSide;
constexpr int kB = kGaussianBlurTableSide;
constexpr int kCentre = kB / 2;

float quadrant(int i, int j) {
    return gaussianTable[i * kQ + j];
}
float blur(int r, int c) {
    return gaussianBlurTable[r * kB + c];
}

TEST(WeightTables, QuadrantIsSymmetricFallsOffAndIsLookedUp) {
    for (int i = 0; i < kQ; ++i)
        for (int j = 0; j < kQ; ++j) {
            EXPECT_EQ(quadrant(i, j), quadrant(j, i)) << i << "," << j;
            if (j + 1 < kQ) {
                EXPECT_GT(quadrant(i, j), quadrant(i, j + 1));
            }
            EXPECT_EQ(nDistribution(i, j), quadrant(i, j));
        }
    EXPECT_EQ(quadrant(0, 0), 0.212132f);
    EXPECT_EQ(quadrant(2, 3), 0.0337634f);
    EXPECT_EQ(quadrant(4, 4), 0.00230093f);
}

TEST(WeightTables, BlurWindowIsSymmetricWithZeroFrameAndProductRows) {
    for (int r = 0; r < kB; ++r)
        for (int c = 0; c < kB; ++c) {
            EXPECT_EQ(blur(r, c), blur(kB - 1 - r, c)) << r << "," << c;
            EXPECT_EQ(blur(r, c), blur(r, kB - 1 - c)) << r << "," << c;
            const bool frame = r == 0 || r == kB - 1 || c < 2 || c > kB - 3;
            EXPECT_EQ(blur(r, c) == 0.0f, frame) << r << "," << c;
            // Rows 2..6 are (up to their four printed digits) the outer
            // product of the centre row with itself.
            if (!frame && r >= 2 && r <= kCentre) {
                EXPECT_NEAR(blur(r, c), blur(kCentre, r) * blur(kCentre, c), 1e-4) << r << "," << c;
            }
        }
    EXPECT_EQ(blur(kCentre, kCentre), 1.0f);
    // Row 1 is hand-rounded and must be kept as it is.
    const float row1[] = {0.001f, 0.003f, 0.005f, 0.009f, 0.01f, 0.009f, 0.005f, 0.003f, 0.001f};
    for (int c = 2; c <= 10; ++c) EXPECT_EQ(blur(1, c), row1[c - 2]) << c;
    EXPECT_EQ(blur(3, 3), 0.0785f);
    EXPECT_EQ(blur(6, 2), 0.1041f);
}

}  // namespace
