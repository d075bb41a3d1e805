// Copy family: whole-pixel, channel, planar and masked copies against
// per-pixel references, inside larger blocks with sentinels around.
#include <gtest/gtest.h>

#include "core/ippi_copy.h"
#include "prim_block.h"

namespace {
using primtest::Block;
using primtest::regionSizes;

// src has srcCh channels read from channel srcOff; dst has dstCh channels
// written from dstOff, n channels per pixel; the others keep their value.
template <typename T, typename Fn>
void checkChannelCopy(int srcCh, int srcOff, int dstCh, int dstOff, int n, Fn prim) {
    SCOPED_TRACE(testing::Message() << srcCh << "." << srcOff << " -> " << dstCh << "." << dstOff);
    primtest::checkPixels<T, T>(
        srcCh, dstCh, 0, 200,
        [&](const T* s, int ss, T* d, int ds, IppiSize r) {
            return prim(s + srcOff, ss, d + dstOff, ds, r);
        },
        [&](const Block<T>& s, const Block<T>& old, int x, int y, int c) {
            const int k = c - dstOff;
            return double(k >= 0 && k < n ? s.at(x, y, srcOff + k) : old.at(x, y, c));
        });
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

// Into channel ch of n interleaved channels and back out of it.
template <typename T, typename In, typename Out>
void checkInAndOut(int n, int ch, In in, Out out) {
    checkChannelCopy<T>(1, 0, n, ch, 1, in);
    checkChannelCopy<T>(n, ch, 1, 0, 1, out);
}

TEST(PrimCopy, ChannelInAndOutSelectedByPointer) {
    for (int ch = 0; ch < 4; ++ch) {
        if (ch < 3) {
            checkInAndOut<Ipp8u>(3, ch, ippiCopy_8u_C1C3R, ippiCopy_8u_C3C1R);
            checkInAndOut<Ipp16s>(3, ch, ippiCopy_16s_C1C3R, ippiCopy_16s_C3C1R);
            checkInAndOut<Ipp16u>(3, ch, ippiCopy_16u_C1C3R, ippiCopy_16u_C3C1R);
            checkInAndOut<Ipp32f>(3, ch, ippiCopy_32f_C1C3R, ippiCopy_32f_C3C1R);
        }
        checkInAndOut<Ipp8u>(4, ch, ippiCopy_8u_C1C4R, ippiCopy_8u_C4C1R);
        checkInAndOut<Ipp16s>(4, ch, ippiCopy_16s_C1C4R, ippiCopy_16s_C4C1R);
        checkInAndOut<Ipp16u>(4, ch, ippiCopy_16u_C1C4R, ippiCopy_16u_C4C1R);
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
        const Block<Ipp8u> planeBefore = planes[2], backBefore = back;
        Ipp8u* out[4] = {planes[0].ptr(), planes[1].ptr(), planes[2].ptr(), planes[3].ptr()};
        ASSERT_EQ(ippiCopy_8u_C4P4R(pix.ptr(), pix.step(), out, planes[0].step(), r), 0);
        EXPECT_TRUE(planes[2].outsideUnchanged(planeBefore));
        const Ipp8u* in[4] = {out[0], out[1], out[2], out[3]};
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

// Copies where the mask is non-zero (many zeros, several non-zero values).
TEST(PrimCopy, MaskedCopiesOnlyWhereMaskIsSet) {
    Block<Ipp8u> mask({300, 21});
    std::mt19937 rng(11);
    mask.fillRandom(rng, 0, 2);
    auto masked = [&](auto prim) {
        return [&, prim](auto... a) { return prim(a..., mask.ptr(), mask.step()); };
    };
    auto want = [&](const auto& s, const auto& old, int x, int y, int c) {
        return double(mask.at(x, y) ? s.at(x, y, c) : old.at(x, y, c));
    };
    primtest::checkPixels<Ipp8u, Ipp8u>(1, 1, 0, 250, masked(ippiCopy_8u_C1MR), want);
    primtest::checkPixels<Ipp8u, Ipp8u>(4, 4, 0, 250, masked(ippiCopy_8u_C4MR), want);
    primtest::checkPixels<Ipp32f, Ipp32f>(1, 1, 0, 250, masked(ippiCopy_32f_C1MR), want);
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
