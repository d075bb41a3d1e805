// Copy family: whole-pixel, channel, planar and masked copies against
// per-pixel references, inside larger blocks with sentinels around.
#include <gtest/gtest.h>

#include "core/ippi_copy.h"
#include "prim_block.h"

namespace {
using primtest::Block;
using primtest::regionSizes;

// src has srcCh channels read from channel srcOff; dst has dstCh channels
// written from dstOff, n channels per pixel.
template <typename T, typename Fn>
void checkChannelCopy(int srcCh, int srcOff, int dstCh, int dstOff, int n, Fn prim) {
    std::mt19937 rng(7);
    for (IppiSize r : regionSizes()) {
        Block<T> src(r, srcCh), dst(r, dstCh);
        src.fillRandom(rng, 0, 200);
        dst.fillValue(T(77));
        const auto before = dst.snapshot();
        ASSERT_EQ(prim(src.ptr() + srcOff, src.step(), dst.ptr() + dstOff, dst.step(), r), 0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x)
                for (int c = 0; c < dstCh; ++c) {
                    const int k = c - dstOff;
                    const T want = (k >= 0 && k < n) ? src.at(x, y, srcOff + k) : T(77);
                    ASSERT_EQ(dst.at(x, y, c), want) << r.width << "x" << r.height;
                }
        EXPECT_TRUE(dst.outsideUnchanged(before));
    }
}

TEST(PrimCopy, WholePixelCopies) {
    checkChannelCopy<Ipp8u>(1, 0, 1, 0, 1, ippiCopy_8u_C1R);
    checkChannelCopy<Ipp16s>(1, 0, 1, 0, 1, ippiCopy_16s_C1R);
    checkChannelCopy<Ipp16u>(1, 0, 1, 0, 1, ippiCopy_16u_C1R);
    checkChannelCopy<Ipp32f>(1, 0, 1, 0, 1, ippiCopy_32f_C1R);
    checkChannelCopy<Ipp32f>(3, 0, 3, 0, 3, ippiCopy_32f_C3R);
    // AC4 copies three channels and leaves the destination's fourth alone.
    checkChannelCopy<Ipp8u>(4, 0, 4, 0, 3, ippiCopy_8u_AC4R);
    checkChannelCopy<Ipp8u>(4, 0, 3, 0, 3, ippiCopy_8u_AC4C3R);
}

TEST(PrimCopy, ChannelInAndOutSelectedByPointer) {
    for (int ch = 0; ch < 3; ++ch) {
        checkChannelCopy<Ipp8u>(1, 0, 3, ch, 1, ippiCopy_8u_C1C3R);
        checkChannelCopy<Ipp16s>(1, 0, 3, ch, 1, ippiCopy_16s_C1C3R);
        checkChannelCopy<Ipp16u>(1, 0, 3, ch, 1, ippiCopy_16u_C1C3R);
        checkChannelCopy<Ipp32f>(1, 0, 3, ch, 1, ippiCopy_32f_C1C3R);
        checkChannelCopy<Ipp8u>(3, ch, 1, 0, 1, ippiCopy_8u_C3C1R);
        checkChannelCopy<Ipp16s>(3, ch, 1, 0, 1, ippiCopy_16s_C3C1R);
        checkChannelCopy<Ipp16u>(3, ch, 1, 0, 1, ippiCopy_16u_C3C1R);
        checkChannelCopy<Ipp32f>(3, ch, 1, 0, 1, ippiCopy_32f_C3C1R);
    }
    for (int ch = 0; ch < 4; ++ch) {
        checkChannelCopy<Ipp8u>(1, 0, 4, ch, 1, ippiCopy_8u_C1C4R);
        checkChannelCopy<Ipp16s>(1, 0, 4, ch, 1, ippiCopy_16s_C1C4R);
        checkChannelCopy<Ipp16u>(1, 0, 4, ch, 1, ippiCopy_16u_C1C4R);
        checkChannelCopy<Ipp8u>(4, ch, 1, 0, 1, ippiCopy_8u_C4C1R);
        checkChannelCopy<Ipp16s>(4, ch, 1, 0, 1, ippiCopy_16s_C4C1R);
        checkChannelCopy<Ipp16u>(4, ch, 1, 0, 1, ippiCopy_16u_C4C1R);
    }
}

TEST(PrimCopy, PlanarRoundTrip) {
    std::mt19937 rng(3);
    for (IppiSize r : regionSizes()) {
        Block<Ipp8u> pix(r, 4), back(r, 4), back3(r, 3);
        std::vector<Block<Ipp8u>> planes(4, Block<Ipp8u>(r, 1));
        pix.fillRandom(rng, 0, 255);
        back.fillValue(1);
        back3.fillValue(1);
        for (auto& p : planes) p.fillValue(9);
        const auto planeBefore = planes[2].snapshot();
        Ipp8u* out[4] = {planes[0].ptr(), planes[1].ptr(), planes[2].ptr(), planes[3].ptr()};
        ASSERT_EQ(ippiCopy_8u_C4P4R(pix.ptr(), pix.step(), out, planes[0].step(), r), 0);
        EXPECT_TRUE(planes[2].outsideUnchanged(planeBefore));
        const Ipp8u* in[4] = {out[0], out[1], out[2], out[3]};
        const auto backBefore = back.snapshot();
        ASSERT_EQ(ippiCopy_8u_P4C4R(in, planes[0].step(), back.ptr(), back.step(), r), 0);
        ASSERT_EQ(ippiCopy_8u_P3C3R(in, planes[0].step(), back3.ptr(), back3.step(), r), 0);
        EXPECT_TRUE(back.outsideUnchanged(backBefore));
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x)
                for (int c = 0; c < 4; ++c) {
                    ASSERT_EQ(planes[c].at(x, y), pix.at(x, y, c));
                    ASSERT_EQ(back.at(x, y, c), pix.at(x, y, c));
                    if (c < 3) {
                        ASSERT_EQ(back3.at(x, y, c), pix.at(x, y, c));
                    }
                }
    }
}

template <typename T, typename Fn>
void checkMaskedCopy(int ch, Fn prim) {
    std::mt19937 rng(11);
    for (IppiSize r : regionSizes()) {
        Block<T> src(r, ch), dst(r, ch);
        Block<Ipp8u> mask(r, 1);
        src.fillRandom(rng, 0, 250);
        dst.fillValue(T(3));
        mask.fillRandom(rng, 0, 2);  // many zeros, several non-zero values
        const auto before = dst.snapshot();
        ASSERT_EQ(prim(src.ptr(), src.step(), dst.ptr(), dst.step(), r, mask.ptr(), mask.step()),
                  0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x)
                for (int c = 0; c < ch; ++c)
                    ASSERT_EQ(dst.at(x, y, c), mask.at(x, y) ? src.at(x, y, c) : T(3));
        EXPECT_TRUE(dst.outsideUnchanged(before));
    }
}

TEST(PrimCopy, MaskedCopiesOnlyWhereMaskIsSet) {
    checkMaskedCopy<Ipp8u>(1, ippiCopy_8u_C1MR);
    checkMaskedCopy<Ipp8u>(4, ippiCopy_8u_C4MR);
    checkMaskedCopy<Ipp32f>(1, ippiCopy_32f_C1MR);
}

TEST(PrimCopy, RefusesBadArguments) {
    Ipp8u buf[64] = {};
    EXPECT_EQ(ippiCopy_8u_C1R(nullptr, 8, buf, 8, {4, 4}), ippStsNullPtrErr);
    EXPECT_EQ(ippiCopy_8u_C1R(buf, 8, buf + 32, 8, {0, 4}), ippStsSizeErr);
    EXPECT_EQ(ippiCopy_8u_C1R(buf, 8, buf + 32, 8, {4, -1}), ippStsSizeErr);
    EXPECT_EQ(ippiCopy_8u_C1R(buf, 3, buf + 32, 8, {4, 4}), ippStsStepErr);
    // A three-channel step must hold three elements per pixel.
    EXPECT_EQ(ippiCopy_8u_C1C3R(buf, 4, buf + 16, 8, {4, 2}), ippStsStepErr);
    Ipp8u* planes[4] = {buf, buf, nullptr, buf};
    EXPECT_EQ(ippiCopy_8u_C4P4R(buf, 16, planes, 4, {4, 1}), ippStsNullPtrErr);
    EXPECT_EQ(ippiCopy_8u_C1MR(buf, 8, buf + 32, 8, {4, 4}, nullptr, 8), ippStsNullPtrErr);
}

}  // namespace
