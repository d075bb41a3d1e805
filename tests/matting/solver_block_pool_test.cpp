// The solver's block pool: large blocks come back warm inside a reuse scope
// only, with the contents the library expects (zeroed by calloc, kept by
// realloc), and small blocks never enter it.
#include "matting/solver_block_pool.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

// Large enough for the pool, and a size that fits the same block.
constexpr std::size_t kLarge = std::size_t{12} << 20;
// Pooled too, but under half of kLarge.
constexpr std::size_t kFarSmaller = std::size_t{5} << 20;
constexpr std::size_t kSlightlySmaller = kLarge - 4096;

int adviceCount = 0;
void* countAdvice(void* p, std::size_t) {
    ++adviceCount;
    return p;
}

TEST(SolverBlockPool, ReusesLargeBlocksInsideAScopeOnly) {
    {
        const SolverBlockReuse scope;
        void* first = poolMalloc(kLarge, countAdvice);
        ASSERT_NE(first, nullptr);
        poolFree(first);
        void* again = poolMalloc(kSlightlySmaller, countAdvice);
        EXPECT_EQ(again, first);
        // A request far below the block's size does not take it.
        poolFree(again);
        void* small = poolMalloc(kFarSmaller, countAdvice);
        EXPECT_NE(small, first);
        poolFree(small);
    }
    // After the scope nothing is held: a freed block goes back to the system,
    // and a new block is taken from it (and advised) again.
    adviceCount = 0;
    void* block = poolMalloc(kLarge, countAdvice);
    poolFree(block);
    void* next = poolMalloc(kLarge, countAdvice);
    EXPECT_EQ(adviceCount, 2);
    poolFree(next);
}

TEST(SolverBlockPool, CallocZeroesAReusedBlock) {
    const SolverBlockReuse scope;
    auto* dirty = static_cast<unsigned char*>(poolMalloc(kLarge, countAdvice));
    ASSERT_NE(dirty, nullptr);
    std::memset(dirty, 0xAB, kLarge);
    poolFree(dirty);
    auto* clean = static_cast<unsigned char*>(poolCalloc(kLarge / 8, 8, countAdvice));
    ASSERT_EQ(clean, dirty);
    std::vector<unsigned char> zeros(kLarge, 0);
    EXPECT_EQ(std::memcmp(clean, zeros.data(), kLarge), 0);
    poolFree(clean);
    EXPECT_EQ(poolCalloc(SIZE_MAX / 2, 4, countAdvice), nullptr);  // overflow refused
}

TEST(SolverBlockPool, ReallocKeepsTheContents) {
    const SolverBlockReuse scope;
    // A heap block growing into a pooled one, then a pooled one growing.
    auto* p = static_cast<std::uint32_t*>(poolMalloc(4096, countAdvice));
    ASSERT_NE(p, nullptr);
    for (std::uint32_t k = 0; k < 1024; ++k) p[k] = k * 7u;
    p = static_cast<std::uint32_t*>(poolRealloc(p, kLarge, countAdvice));
    ASSERT_NE(p, nullptr);
    for (std::uint32_t k = 0; k < 1024; ++k) ASSERT_EQ(p[k], k * 7u);
    const std::size_t words = kLarge / 4;
    p[words - 1] = 99u;
    // Shrinking keeps the block; growing moves everything over.
    EXPECT_EQ(poolRealloc(p, kSlightlySmaller, countAdvice), p);
    p = static_cast<std::uint32_t*>(poolRealloc(p, 2 * kLarge, countAdvice));
    ASSERT_NE(p, nullptr);
    for (std::uint32_t k = 0; k < 1024; ++k) ASSERT_EQ(p[k], k * 7u);
    EXPECT_EQ(p[words - 1], 99u);
    poolFree(p);
}

}  // namespace
