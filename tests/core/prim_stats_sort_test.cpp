// Statistics and Sorting families.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "core/ippi_stats.h"
#include "core/ipps_sort.h"
#include "prim_block.h"

namespace {
using primtest::Block;
using primtest::regionSizes;

TEST(PrimStats, RegionSumsCountOnlyTheRegion) {
    std::mt19937 rng(43);
    for (IppiSize r : regionSizes()) {
        Block<Ipp8u> b(r, 1);
        Block<Ipp32f> f(r, 1);
        b.fillRandom(rng, 0, 255);
        f.fillRandom(rng, -1, 1);
        double want8 = 0, wantF = 0;
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x) {
                want8 += b.at(x, y);
                wantF += f.at(x, y);
            }
        double got8 = -1, gotF = -1;
        ASSERT_EQ(ippiSum_8u_C1R(b.ptr(), b.step(), r, &got8), 0);
        ASSERT_EQ(ippiSum_32f_C1R(f.ptr(), f.step(), r, &gotF, ippAlgHintAccurate), 0);
        EXPECT_EQ(got8, want8);
        EXPECT_NEAR(gotF, wantF, 1e-9);
    }
    // Exact for an all-255 region far beyond 32-bit float precision.
    std::vector<Ipp8u> big(4096 * 4096, 255);
    double s = 0;
    ASSERT_EQ(ippiSum_8u_C1R(big.data(), 4096, {4096, 4096}, &s), 0);
    EXPECT_EQ(s, 255.0 * 4096 * 4096);
    EXPECT_EQ(ippiSum_8u_C1R(big.data(), 4096, {4, 4}, nullptr), ippStsNullPtrErr);
}

TEST(PrimStats, MeanAndDotProduct) {
    const std::vector<double> a = {1, 2, 3, 4.5}, b = {2, -1, 0.5, 2};
    double m = 0, dp = 0;
    ASSERT_EQ(ippsMean_64f(a.data(), 4, &m), 0);
    ASSERT_EQ(ippsDotProd_64f(a.data(), b.data(), 4, &dp), 0);
    EXPECT_DOUBLE_EQ(m, 10.5 / 4);
    EXPECT_DOUBLE_EQ(dp, 2 - 2 + 1.5 + 9);
    EXPECT_EQ(ippsMean_64f(a.data(), 0, &m), ippStsSizeErr);
    EXPECT_EQ(ippsDotProd_64f(a.data(), nullptr, 4, &dp), ippStsNullPtrErr);
}

template <typename T>
void checkSortIndex(std::vector<T> v) {
    const std::vector<T> orig = v;
    std::vector<int> idx(v.size(), -1);
    ASSERT_EQ(IPPIP::ippsSortIndexAscend_I(v.data(), idx.data(), static_cast<int>(v.size())), 0);
    for (size_t i = 0; i < v.size(); ++i) {
        EXPECT_EQ(v[i], orig[idx[i]]);
        if (i > 0) {
            EXPECT_LE(v[i - 1], v[i]);
            if (v[i - 1] == v[i]) {
                EXPECT_LT(idx[i - 1], idx[i]);  // stable
            }
        }
    }
    std::vector<int> seen = idx;
    std::sort(seen.begin(), seen.end());
    for (size_t i = 0; i < seen.size(); ++i) EXPECT_EQ(seen[i], static_cast<int>(i));
}

TEST(PrimSort, AscendingWithStablePermutation) {
    std::mt19937 rng(47);
    for (int n : {1, 2, 17, 1000}) {
        std::vector<Ipp32s> i32(n);
        std::vector<Ipp64f> f64(n);
        for (int k = 0; k < n; ++k) {
            i32[k] = static_cast<int>(rng() % 13) - 6;  // many ties
            f64[k] = static_cast<double>(rng() % 29) / 4.0;
        }
        checkSortIndex(i32);
        checkSortIndex(f64);
    }
    std::vector<double> withNan = {3, std::nan(""), 1};
    std::vector<int> idx(3);
    ASSERT_EQ(ippsSortIndexAscend_64f_I(withNan.data(), idx.data(), 3), 0);
    EXPECT_EQ(idx, (std::vector<int>{2, 0, 1}));  // NaN goes last
    EXPECT_EQ(ippsSortIndexAscend_32s_I(nullptr, idx.data(), 3), ippStsNullPtrErr);
    EXPECT_EQ(ippsSortIndexAscend_32s_I(reinterpret_cast<int*>(withNan.data()), idx.data(), 0),
              ippStsSizeErr);
}

}  // namespace
