// Image containers: region arithmetic, addressing, ownership and the
// allocation paths (aligned, heap fallback, failure).
#include "core/img.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

template <typename T>
std::uintptr_t addr(const T* p) {
    return reinterpret_cast<std::uintptr_t>(p);
}

TEST(ImageContainer, RegionNarrowsWidensAndRestores) {
    GIMG<float> img(10, 8);
    img.roiRect(1, 1, -1, -1);
    EXPECT_EQ(img.roiSize, IPSize(8, 6));
    EXPECT_EQ(img.ptr(), imgPtr(img, 0, 0));
    img.restoreRect();
    EXPECT_EQ(img.roiSize, IPSize(10, 8));
    EXPECT_EQ(img.roiPtr, img.buf);

    // The first pixel of the inner region is pixel (1,1) of the block.
    img.roiRect(1, 1, -1, -1);
    EXPECT_EQ(addr(img.ptr()), addr(img.buf) + img.step + sizeof(float));

    // A region at (2,2) of 6x4 grown by two on the top-left: (0,0), 8x6.
    img.restoreRect();
    img.roiRect(2, 2, -2, -2);
    ASSERT_EQ(img.roiSize, IPSize(6, 4));
    img.border(-2, -2);
    EXPECT_EQ(img.roiSize, IPSize(8, 6));
    EXPECT_EQ(img.ptr(), img.buf);
}

TEST(ImageContainer, PixelAddressCountsChannelsAndElementBytes) {
    IMG3<float> img(7, 5);
    img.roiRect(2, 1, -2, -1);
    EXPECT_EQ(img.roiSize, IPSize(3, 3));
    const auto expected = addr(img.buf) + 1 * img.step + 2 * 3 * sizeof(float);
    EXPECT_EQ(addr(img.ptr()), expected);
    EXPECT_EQ(addr(imgPtr(img, 1, 2)), expected + 2 * img.step + 3 * sizeof(float));
    IMG3<short> s(4, 4);
    s.border(1, 0);
    EXPECT_EQ(addr(s.ptr()), addr(s.buf) + 3 * sizeof(short));

    GIMG<unsigned short> u16(9, 4);
    GIMG<short> s16(9, 4);
    GIMG<unsigned char> u8(9, 4);
    EXPECT_EQ(addr(imgPtr(u16, 3, 2)), addr(u16.buf) + 2 * u16.step + 6);
    EXPECT_EQ(addr(imgPtr(s16, 3, 2)), addr(s16.buf) + 2 * s16.step + 6);
    EXPECT_EQ(addr(imgPtr(u8, 3, 2)), addr(u8.buf) + 2 * u8.step + 3);
    EXPECT_EQ(addr(imgPtr(u8.buf, u8.step, 3, 2)), addr(u8.buf) + 2 * u8.step + 3);
}

TEST(ImageContainer, OwnedRowsAreAlignedAndLongEnough) {
    for (int w : {1, 3, 17, 333}) {
        IMG3<float> img(w, 3);
        EXPECT_TRUE(img.ippAlloc);
        EXPECT_FALSE(img.extMem);
        EXPECT_EQ(img.status, 1);
        EXPECT_EQ(addr(img.buf) % 32, 0u);
        EXPECT_EQ(img.step % 32, 0);
        EXPECT_GE(img.step, w * 3 * static_cast<int>(sizeof(float)));
        // Every byte of the block is writable (caught by sanitizers/valgrind).
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 3 * w; ++x) imgPtr(img, 0, y)[x] = 1.0f;
    }
}

TEST(ImageContainer, WrappedMemoryIsBorrowedNotFreed) {
    std::vector<unsigned char> mem(40 * 6, 0xAB);
    {
        GIMG<unsigned char> img(30, 6, mem.data(), 40);
        EXPECT_TRUE(img.extMem);
        EXPECT_FALSE(img.ippAlloc);
        EXPECT_EQ(img.step, 40);
        EXPECT_EQ(imgPtr(img, 5, 2), mem.data() + 85);
        *imgPtr(img, 5, 2) = 7;
    }
    // Still ours, and only the written byte changed.
    EXPECT_EQ(mem[85], 7);
    EXPECT_EQ(mem[84], 0xAB);
    std::vector<unsigned char> rgb(3 * 4 * 2);
    IMG3<unsigned char> wrapped(4, 2, rgb.data(), 12);
    EXPECT_EQ(imgPtr(wrapped.buf, wrapped.step, 0, 1), rgb.data() + 12);
}

// The heap fallback's step always gains (a row of 32 bytes gets 48), and the
// image built on it is fully usable.
TEST(ImageContainer, FallsBackToHeapWhenAlignedAllocatorFails) {
    for (const auto& [row, step] : {std::pair{32, 48}, {33, 48}, {1, 16}, {0, 16}})
        EXPECT_EQ(heapFallbackStep(row), step) << row;
    kc::testing::failNextAlignedAllocs(1);
    GIMG<float> img(8, 5);  // row of 32 bytes
    EXPECT_FALSE(img.ippAlloc);
    EXPECT_EQ(img.step, 48);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 8; ++x) imgPtr(img, x, y)[0] = static_cast<float>(x + y);
    EXPECT_EQ(imgPtr(img, 7, 4)[0], 11.0f);
}

TEST(ImageContainer, ThrowsOutOfMemoryWhenNothingCanBeAllocated) {
    // Negative sizes and impossible sizes both end in the engine's code 102.
    try {
        GIMG<float> img(-5, 10);
        ADD_FAILURE() << "no throw";
    } catch (int code) {
        EXPECT_EQ(code, 102);
    }
    EXPECT_THROW(IMG3<float>(1 << 28, 1 << 20), int);
    // An empty image is legal and frees cleanly.
    GIMG<unsigned char> empty(0, 0);
    EXPECT_NE(empty.buf, nullptr);
}

TEST(AlignedAllocator, VectorsAndPlanesAreAligned) {
    int step = 0;
    Ipp8u* p8 = ippiMalloc_8u_C1(5, 3, &step);
    ASSERT_NE(p8, nullptr);
    EXPECT_EQ(step % kImageAlignment, 0);
    ippiFree(p8);
    Ipp16s* p16 = ippiMalloc_16s_C1(100, 3, &step);
    EXPECT_GE(step, 200);
    ippiFree(p16);
    Ipp32f* pf = ippiMalloc_32f_C1(1, 1, &step);
    EXPECT_EQ(step, kImageAlignment);
    ippiFree(pf);
    Ipp32s* v = ippsMalloc_32s(9);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(v) % kImageAlignment, 0u);
    ippsFree(v);
    EXPECT_EQ(ippsMalloc_8u(0), nullptr);
    EXPECT_EQ(ippiMalloc_8u_C1(-1, 3, &step), nullptr);
}

}  // namespace
