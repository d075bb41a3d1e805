// Morphology against per-pixel references: 3x3 erode/dilate (8-bit and float
// in place), erode/dilate over structuring masks, rectangular maximum, and
// the container wrappers.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "core/img_filter_ops.h"
#include "core/ippi_morph.h"
#include "prim_block.h"

namespace {

using primtest::Block;
using primtest::regionSizes;

constexpr Ipp8u kSentinel8 = 0xA5;

// Extreme of src(x - ax + i, y - ay + j) over the cells where mask is set.
template <typename T, typename Src>
T referenceExtreme(const Src& src, int x, int y, IppiSize m, IppiPoint a,
                   const std::vector<Ipp8u>& mask, bool wantMax) {
    bool first = true;
    T best{};
    for (int j = 0; j < m.height; ++j)
        for (int i = 0; i < m.width; ++i) {
            if (!mask[j * m.width + i]) continue;
            const T v = src.at(x - a.x + i, y - a.y + j);
            if (first || (wantMax ? v > best : v < best)) best = v;
            first = false;
        }
    return best;
}

const std::vector<Ipp8u> kFull3x3(9, 1);

TEST(Morphology, Square3x3FloatInPlaceReadsOnlyOriginalPixels) {
    std::mt19937 rng(2);
    for (const IppiSize roi : regionSizes()) {
        for (const bool dilate : {false, true}) {
            Block<float> img(roi, 1, 1);
            img.fillRandom(rng, -5.0, 5.0);
            const Block<float> original = img;
            const auto f = dilate ? ippiDilate3x3_32f_C1IR : ippiErode3x3_32f_C1IR;
            ASSERT_EQ(f(img.ptr(), img.step(), roi), ippStsNoErr);
            for (int y = -1; y <= roi.height; ++y)
                for (int x = -1; x <= roi.width; ++x) {
                    const bool inside = x >= 0 && y >= 0 && x < roi.width && y < roi.height;
                    const float want = inside ? referenceExtreme<float>(original, x, y, {3, 3},
                                                                        {1, 1}, kFull3x3, dilate)
                                              : original.at(x, y);
                    ASSERT_EQ(img.at(x, y), want) << x << "," << y;
                }
        }
    }
}

TEST(Morphology, StructuringMaskInPlaceMatchesReference) {
    std::mt19937 rng(3);
    const IppiSize masks[] = {{1, 1}, {3, 3}, {5, 3}, {2, 4}, {1, 5}};
    for (const IppiSize roi : regionSizes()) {
        for (const IppiSize m : masks) {
            std::vector<Ipp8u> mask(m.width * m.height);
            for (Ipp8u& c : mask) c = static_cast<Ipp8u>(rng() % 3 == 0 ? 0 : rng() % 255 + 1);
            mask[rng() % mask.size()] = 1;  // never an empty mask
            const IppiPoint a{static_cast<int>(rng() % m.width),
                              static_cast<int>(rng() % m.height)};
            for (const bool dilate : {false, true}) {
                Block<Ipp8u> img(roi, 1, 5);
                img.fillRandom(rng, 0, 255);
                const Block<Ipp8u> original = img;
                const auto f = dilate ? ippiDilate_8u_C1IR : ippiErode_8u_C1IR;
                ASSERT_EQ(f(img.ptr(), img.step(), roi, mask.data(), m, a), ippStsNoErr);
                for (int y = 0; y < roi.height; ++y)
                    for (int x = 0; x < roi.width; ++x)
                        ASSERT_EQ(img.at(x, y),
                                  referenceExtreme<Ipp8u>(original, x, y, m, a, mask, dilate));
                // The margin is only read.
                for (int y = -5; y < roi.height + 5; ++y)
                    for (int x = -5; x < roi.width + 5; ++x) {
                        if (x < 0 || y < 0 || x >= roi.width || y >= roi.height) {
                            ASSERT_EQ(img.at(x, y), original.at(x, y));
                        }
                    }
            }
        }
    }
}

// The 3x3 erode and dilate, and the rectangular maximum over masks with
// random anchors, from a source block into a destination with a sentinel.
TEST(Morphology, SourceToDestinationFormsMatchReference) {
    std::mt19937 rng(4);
    using Run = IppStatus (*)(const Ipp8u*, int, Ipp8u*, int, IppiSize, IppiSize, IppiPoint);
    const struct {
        Run run;
        bool wantMax;
        std::vector<IppiSize> masks;
    } cases[] = {
        {[](auto s, int ss, auto d, int ds, IppiSize r, IppiSize, IppiPoint) {
             return ippiErode3x3_8u_C1R(s, ss, d, ds, r);
         },
         false,
         {{3, 3}}},
        {[](auto s, int ss, auto d, int ds, IppiSize r, IppiSize, IppiPoint) {
             return ippiDilate3x3_8u_C1R(s, ss, d, ds, r);
         },
         true,
         {{3, 3}}},
        {ippiFilterMax_8u_C1R, true, {{1, 1}, {3, 3}, {4, 2}, {1, 6}, {7, 1}}},
    };
    for (const auto& c : cases)
        for (const IppiSize roi : regionSizes())
            for (const IppiSize m : c.masks) {
                const bool fixed = c.run != ippiFilterMax_8u_C1R;
                const std::vector<Ipp8u> all(m.width * m.height, 1);
                const IppiPoint a = fixed ? IppiPoint{1, 1}
                                          : IppiPoint{static_cast<int>(rng() % m.width),
                                                      static_cast<int>(rng() % m.height)};
                Block<Ipp8u> src(roi, 1, 7), dst(roi, 1, 1);
                src.fillRandom(rng, 0, 255);
                dst.fillValue(kSentinel8);
                ASSERT_EQ(c.run(src.ptr(), src.step(), dst.ptr(), dst.step(), roi, m, a),
                          ippStsNoErr);
                for (int y = 0; y < roi.height; ++y)
                    for (int x = 0; x < roi.width; ++x)
                        ASSERT_EQ(dst.at(x, y),
                                  referenceExtreme<Ipp8u>(src, x, y, m, a, all, c.wantMax))
                            << &c - cases << " " << roi.width << "x" << roi.height << " at " << x
                            << "," << y;
                EXPECT_TRUE(dst.outsideIs(kSentinel8));
            }
}

TEST(Morphology, RefusesBadArguments) {
    Block<Ipp8u> img({4, 4}, 1, 3);
    const Ipp8u none[4] = {0, 0, 0, 0};
    const Ipp8u one[4] = {0, 1, 0, 0};
    EXPECT_EQ(ippiErode3x3_8u_C1R(nullptr, 16, img.ptr(), img.step(), {4, 4}), ippStsNullPtrErr);
    EXPECT_EQ(ippiErode3x3_8u_C1R(img.ptr(), img.step(), img.ptr(), img.step(), {0, 4}),
              ippStsSizeErr);
    EXPECT_EQ(ippiDilate3x3_32f_C1IR(reinterpret_cast<float*>(img.ptr()), 8, {4, 4}),
              ippStsStepErr);
    EXPECT_EQ(ippiErode_8u_C1IR(img.ptr(), img.step(), {4, 4}, none, {2, 2}, {0, 0}),
              ippStsBadArgErr);
    EXPECT_EQ(ippiErode_8u_C1IR(img.ptr(), img.step(), {4, 4}, one, {2, 2}, {2, 0}),
              ippStsBadArgErr);
    EXPECT_EQ(ippiDilate_8u_C1IR(img.ptr(), img.step(), {4, 4}, nullptr, {2, 2}, {0, 0}),
              ippStsNullPtrErr);
}

TEST(Morphology, WrappersUseDestinationRegionAndRecordStatus) {
    std::mt19937 rng(5);
    GIMG<unsigned char> src(11, 8), dst(11, 8);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 11; ++x) *imgPtr(src, x, y) = static_cast<unsigned char>(rng());
    src.roiRect(1, 1, -1, -1);
    dst.roiRect(1, 1, -1, -1);
    EXPECT_EQ(Erode3x3(src, dst), ippStsNoErr);
    EXPECT_EQ(dst.status, ippStsNoErr);
    std::vector<unsigned char> direct(9 * 6);
    ippiErode3x3_8u_C1R(src.ptr(), src.step, direct.data(), 9, dst.roiSize);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 9; ++x) ASSERT_EQ(*imgPtr(dst, x, y), direct[y * 9 + x]);
    EXPECT_EQ(Dilate3x3(src, dst), ippStsNoErr);

    GIMG<float> f(5, 5);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 5; ++x) *imgPtr(f, x, y) = static_cast<float>(x + 10 * y);
    f.roiRect(1, 1, -1, -1);
    EXPECT_EQ(Erode3x3(f), ippStsNoErr);
    EXPECT_EQ(*imgPtr(f, 1, 1), 11.0f);  // min of the 3x3 around (2,2) of the block
    EXPECT_EQ(Dilate3x3(f), ippStsNoErr);
    EXPECT_EQ(f.status, ippStsNoErr);
    // An empty destination region is refused and the refusal is recorded.
    dst.roiSize = {0, 0};
    EXPECT_EQ(Erode3x3(src, dst), ippStsSizeErr);
    EXPECT_EQ(dst.status, ippStsSizeErr);
}

}  // namespace
