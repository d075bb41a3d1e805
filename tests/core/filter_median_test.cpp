// Medians against a sort of each neighbourhood: rectangles with off-centre
// anchors (odd and even counts), the 3x3 and 5x5 crosses on 8 and 16 bits,
// and the container wrappers.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "core/img_filter_ops.h"
#include "core/ippi_median.h"
#include "prim_block.h"

namespace {

using primtest::Block;
using primtest::regionSizes;

template <typename T>
T middleOf(std::vector<T> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

TEST(Median, RectangleWithAnchorMatchesSortedNeighbourhood) {
    std::mt19937 rng(41);
    const IppiSize masks[] = {{1, 1}, {3, 3}, {5, 5}, {3, 1}, {1, 5}, {4, 3}, {7, 3}};
    for (const IppiSize roi : regionSizes())
        for (const IppiSize m : masks) {
            const IppiPoint a{static_cast<int>(rng() % m.width),
                              static_cast<int>(rng() % m.height)};
            Block<Ipp16s> src(roi, 1, 7), dst(roi, 1, 1);
            // A narrow value range makes ties common.
            src.fillRandom(rng, -20, 20);
            dst.fillValue(0x4321);
            ASSERT_EQ(
                ippiFilterMedian_16s_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(), roi, m, a),
                ippStsNoErr);
            for (int y = 0; y < roi.height; ++y)
                for (int x = 0; x < roi.width; ++x) {
                    std::vector<Ipp16s> v;
                    for (int j = 0; j < m.height; ++j)
                        for (int i = 0; i < m.width; ++i)
                            v.push_back(src.at(x - a.x + i, y - a.y + j));
                    ASSERT_EQ(dst.at(x, y), middleOf(v)) << m.width << "x" << m.height;
                }
            EXPECT_TRUE(dst.outsideIs(0x4321));
        }
}

template <typename T>
void checkCross(double lo, double hi, std::mt19937& rng) {
    for (const IppiSize roi : regionSizes())
        for (const int r : {1, 2}) {
            Block<T> src(roi, 1, 2), dst(roi, 1, 1);
            src.fillRandom(rng, lo, hi);
            const T sentinel = static_cast<T>(77);
            dst.fillValue(sentinel);
            const IppiMaskSize mask = r == 1 ? ippMskSize3x3 : ippMskSize5x5;
            ASSERT_EQ(IPPIP::ippiFilterMedianCross_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(),
                                                       roi, mask),
                      ippStsNoErr);
            for (int y = 0; y < roi.height; ++y)
                for (int x = 0; x < roi.width; ++x) {
                    std::vector<T> v{src.at(x, y)};
                    for (int d = 1; d <= r; ++d)
                        for (const auto& [dx, dy] : {std::pair{d, 0}, {-d, 0}, {0, d}, {0, -d}})
                            v.push_back(src.at(x + dx, y + dy));
                    ASSERT_EQ(dst.at(x, y), middleOf(v));
                }
            EXPECT_TRUE(dst.outsideIs(sentinel));
        }
}

TEST(Median, CrossesOnBothDepths) {
    std::mt19937 rng(42);
    checkCross<Ipp8u>(0, 255, rng);
    checkCross<Ipp16s>(-32768, 32767, rng);
}

TEST(Median, WrappersAndRefusals) {
    GIMG<short> src(12, 9), dst(12, 9);
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 12; ++x)
            *imgPtr(src, x, y) = static_cast<short>((x * 37 + y * 11) % 23);
    src.roiRect(2, 2, -2, -2);
    dst.roiRect(2, 2, -2, -2);
    std::vector<short> direct(8 * 5);
    EXPECT_EQ(FilterMedian(src, dst, IppiSize{5, 3}, IppiPoint{2, 1}), ippStsNoErr);
    ippiFilterMedian_16s_C1R(src.ptr(), src.step, direct.data(), 16, dst.roiSize, {5, 3}, {2, 1});
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(*imgPtr(dst, x, y), direct[y * 8 + x]);
    EXPECT_EQ(FilterMedianCross(src, dst, ippMskSize5x5), ippStsNoErr);
    EXPECT_EQ(dst.status, ippStsNoErr);
    EXPECT_EQ(FilterMedianCross(src, dst, ippMskSize1x3), ippStsBadArgErr);
    EXPECT_EQ(dst.status, ippStsBadArgErr);
    EXPECT_EQ(FilterMedian(src, dst, IppiSize{3, 3}, IppiPoint{3, 0}), ippStsBadArgErr);
    EXPECT_EQ(FilterMedian(src, dst, IppiSize{0, 3}, IppiPoint{0, 0}), ippStsSizeErr);
}

}  // namespace
