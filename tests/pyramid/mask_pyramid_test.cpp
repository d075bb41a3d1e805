// The mask pyramid: level sizes and repeated edges, what is smoothed and what
// is not, ownership of the levels, and carrying the alpha back up.
#include "pyramid/mask_pyramid.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "core/aligned_alloc.h"
#include "pyramid_test_support.h"

using pyrtest::Grid;

namespace {

using Byte = unsigned char;
using Plane = GIMG<Byte>;

// Level 0 as the caller holds it: five planes in the caller's own memory.
struct Level0 {
    int w, h;
    std::vector<std::vector<Byte>> memory;
    std::vector<std::unique_ptr<Plane>> planes;  // r, g, b, constraints, alpha
    Plane* rgb[3];

    Level0(int width, int height, unsigned seed) : w(width), h(height) {
        std::mt19937 rng(seed);
        const int step = w + 3;  // rows with slack, as host buffers have
        for (int i = 0; i < 5; ++i) {
            memory.emplace_back(size_t(step) * h, Byte{0});
            planes.push_back(std::make_unique<Plane>(w, h, memory.back().data(), step));
            pyrtest::fromGrid(pyrtest::randomGrid<Byte>(w, h, 0, 255, rng), *planes.back());
        }
        for (int c = 0; c < 3; ++c) rgb[c] = planes[c].get();
    }
    Plane* consts() { return planes[3].get(); }
    Plane* alpha() { return planes[4].get(); }
    int build(CMaskPyr& pyr, int levels) { return pyr.build(rgb, consts(), alpha(), levels); }
};

std::vector<Plane*> levelPlanes(const CMaskPyr& pyr, int l) {
    return {pyr.getRGBPtr(l, 0), pyr.getRGBPtr(l, 1), pyr.getRGBPtr(l, 2), pyr.getConstPtr(l),
            pyr.getAlphaPtr(l)};
}

// Where a side is odd, the last column (row) of the next level is one the
// decimation does not reach and repeats its neighbour: a 5 x 3 level 0 gives a
// 3 x 2 level 1 whose last column repeats column 1.
TEST(MaskPyramid, LevelsHalveRoundingUpAndRepeatTheEdgeOfOddSides) {
    struct Expect {
        IPSize level0;
        std::array<IPSize, 3> next;
    };
    for (const Expect& e :
         {Expect{{5, 3}, {{{3, 2}, {2, 1}, {1, 1}}}}, Expect{{8, 6}, {{{4, 3}, {2, 2}, {1, 1}}}},
          Expect{{1, 9}, {{{1, 5}, {1, 3}, {1, 2}}}}}) {
        Level0 in(e.level0.width, e.level0.height, 1);
        CMaskPyr pyr;
        ASSERT_EQ(in.build(pyr, 3), 0);
        EXPECT_EQ(pyr.getMaxLevel(), 3);
        IPSize prev = e.level0;
        for (int l = 1; l <= 3; ++l) {
            for (Plane* p : levelPlanes(pyr, l)) {
                ASSERT_NE(p, nullptr);
                ASSERT_EQ(p->roiSize, e.next[l - 1]) << "level " << l;
                // A side of one has nothing to decimate from; it is the caller's to avoid.
                if (prev.width < 2 || prev.height < 2) continue;
                const auto g = pyrtest::toGrid(*p);
                for (int y = 0; y < g.h && prev.width % 2; ++y)
                    EXPECT_EQ(g.at(g.w - 1, y), g.at(g.w - 2, y)) << "level " << l;
                for (int x = 0; x < g.w && prev.height % 2; ++x)
                    EXPECT_EQ(g.at(x, g.h - 1), g.at(x, g.h - 2)) << "level " << l;
            }
            prev = e.next[l - 1];
        }
    }
}

TEST(MaskPyramid, BrushCodesAndAlphaAreDecimatedColoursSmoothed) {
    Level0 in(12, 10, 3);
    // A spike in every plane at an interior decimation-grid pixel.
    for (auto& p : in.planes) {
        pyrtest::fillBlock(*p, Byte{0});
        *imgPtr(*p, 4, 6) = 255;
    }
    CMaskPyr pyr;
    ASSERT_EQ(in.build(pyr, 2), 0);
    // Codes and alpha are never blended: the spike survives untouched.
    EXPECT_EQ(*imgPtr(*pyr.getConstPtr(1), 2, 3), 255);
    EXPECT_EQ(*imgPtr(*pyr.getAlphaPtr(1), 2, 3), 255);
    EXPECT_EQ(*imgPtr(*pyr.getAlphaPtr(2), 1, 1), 0);  // level-1 (2,2) is 0
    // Colours are blurred before decimation: 255 * 4 / 16, rounded.
    for (int c = 0; c < 3; ++c) EXPECT_EQ(*imgPtr(*pyr.getRGBPtr(1, c), 2, 3), 64);
}

TEST(MaskPyramid, LevelZeroIsBorrowedHigherLevelsAreOwned) {
    Level0 in(10, 8, 4);
    const std::vector<Grid<Byte>> before = [&] {
        std::vector<Grid<Byte>> g;
        for (auto& p : in.planes) g.push_back(pyrtest::toGrid(*p));
        return g;
    }();
    {
        CMaskPyr pyr;
        ASSERT_EQ(in.build(pyr, 2), 0);
        const auto l0 = levelPlanes(pyr, 0);
        for (int i = 0; i < 5; ++i) EXPECT_EQ(l0[i], in.planes[i].get());
        for (int l = 1; l <= 2; ++l)
            for (Plane* p : levelPlanes(pyr, l)) {
                EXPECT_FALSE(p->extMem);
                for (auto& q : in.planes) EXPECT_NE(p, q.get());
            }
        // A rebuild with fewer levels releases the deeper ones.
        ASSERT_EQ(in.build(pyr, 1), 0);
        EXPECT_EQ(pyr.getAlphaPtr(2), nullptr);
        pyr.cleanUp();
        for (int l = 0; l <= 1; ++l)
            for (Plane* p : levelPlanes(pyr, l)) EXPECT_EQ(p, nullptr);
        ASSERT_EQ(in.build(pyr, 2), 0);
    }  // the destructor frees levels 1 and 2 and leaves level 0 alone
    for (int i = 0; i < 5; ++i) {
        EXPECT_FALSE(in.planes[i]->buf == nullptr);
        EXPECT_EQ(pyrtest::maxAbsDiff(pyrtest::toGrid(*in.planes[i]), before[i]), 0);
    }
}

TEST(MaskPyramid, RefusesLevelsOutsideZeroToThree) {
    Level0 in(6, 6, 5);
    CMaskPyr pyr;
    EXPECT_EQ(pyr.getMaxLevel(), -1);
    EXPECT_EQ(in.build(pyr, 4), 1);
    EXPECT_EQ(in.build(pyr, -1), 1);
    EXPECT_EQ(pyr.getAlphaPtr(0), nullptr);
    ASSERT_EQ(in.build(pyr, 0), 0);
    EXPECT_EQ(pyr.getAlphaPtr(0), in.alpha());
    EXPECT_EQ(pyr.getAlphaPtr(1), nullptr);
    EXPECT_EQ(pyr.getAlphaPtr(-1), nullptr);
    EXPECT_EQ(pyr.getAlphaPtr(4), nullptr);
    EXPECT_EQ(pyr.getRGBPtr(0, 3), nullptr);
    EXPECT_EQ(pyr.getRGBPtr(0, -1), nullptr);
}

TEST(MaskPyramid, UpSamplingOneLevelClampsToTheTopLevel) {
    Level0 in(16, 12, 6);
    CMaskPyr pyr;
    ASSERT_EQ(in.build(pyr, 2), 0);
    pyrtest::fillBlock(*pyr.getAlphaPtr(2), Byte{200});
    pyrtest::fillBlock(*pyr.getAlphaPtr(1), Byte{0});
    const auto level0 = pyrtest::toGrid(*in.alpha());
    pyr.upSamplingOneLevel(0);
    pyr.upSamplingOneLevel(-3);
    pyr.upSamplingOneLevel(7);  // acts on level 2
    const auto l1 = pyrtest::toGrid(*pyr.getAlphaPtr(1));
    for (int y = 0; y <= 4; ++y)
        for (int x = 0; x <= 6; ++x)
            if (x % 2 == y % 2) {
                EXPECT_EQ(l1.at(x, y), 200) << x << "," << y;
            }
    EXPECT_EQ(pyrtest::maxAbsDiff(pyrtest::toGrid(*in.alpha()), level0), 0);
}

// Owned levels on the heap fallback have other row steps than the aligned
// ones and than each other: building and carrying the alpha back up must give
// the same bytes whichever level image (or all of them) took that path.
TEST(MaskPyramid, HeapFallbackOfAnyLevelImageChangesNoByte) {
    auto run = [](int after, int failing) {
        Level0 in(37, 29, 8);  // odd sides: every level repeats an edge
        kc::testing::failImageAllocs(after, failing);
        CMaskPyr pyr;
        EXPECT_EQ(in.build(pyr, 3), 0);
        kc::testing::failImageAllocs(0, 0);
        std::vector<Grid<Byte>> out;
        for (int l = 1; l <= 3; ++l)
            for (Plane* p : levelPlanes(pyr, l)) out.push_back(pyrtest::toGrid(*p));
        pyr.upSampling();
        out.push_back(pyrtest::toGrid(*in.alpha()));
        return out;
    };
    const auto normal = run(0, 0);
    constexpr int kOwnedImages = 3 * 5;
    for (int k = -1; k < kOwnedImages; ++k) {
        SCOPED_TRACE(k < 0 ? std::string("all on the heap") : "image " + std::to_string(k + 1));
        const auto got = k < 0 ? run(0, kOwnedImages) : run(k, 1);
        for (size_t i = 0; i < normal.size(); ++i)
            EXPECT_EQ(pyrtest::maxAbsDiff(got[i], normal[i]), 0) << "plane " << i;
    }
}

// A picture of two colours split by a slanted edge, with its exact matte as
// level 0 alpha.
struct EdgeScene {
    static constexpr int w = 61, h = 47;
    Level0 in{w, h, 7};
    static bool inside(int x, int y) { return 2 * x + y > 70; }
    // Distance in pixels from the edge line 2x + y = 70.5.
    static double distance(int x, int y) { return std::fabs(2 * x + y - 70.5) / std::sqrt(5.0); }
    EdgeScene() {
        const Byte colA[3] = {40, 120, 200}, colB[3] = {220, 60, 30};
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                for (int c = 0; c < 3; ++c)
                    *imgPtr(*in.rgb[c], x, y) = (inside(x, y) ? colB : colA)[c];
                *imgPtr(*in.alpha(), x, y) = inside(x, y) ? 255 : 0;
            }
    }
    // Largest alpha error among pixels at least minDistance from the edge.
    int worstError(double minDistance) {
        int worst = 0;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                if (distance(x, y) >= minDistance)
                    worst = std::max(
                        worst, std::abs(*imgPtr(*in.alpha(), x, y) - (inside(x, y) ? 255 : 0)));
        return worst;
    }
};

TEST(MaskPyramid, UpSamplingKeepsASharpMatteOnItsColourEdge) {
    // One level: the guide is the exact picture, so no pixel may bleed.
    EdgeScene one;
    CMaskPyr pyr;
    ASSERT_EQ(one.in.build(pyr, 1), 0);
    pyr.upSampling();
    EXPECT_LE(one.worstError(0), 3);

    // Three levels: coarser guides are smoothed, so the edge softens, but only
    // within a band narrower than one coarsest pixel (8 fine pixels).
    EdgeScene three;
    ASSERT_EQ(three.in.build(pyr, 3), 0);
    pyr.upSampling();
    EXPECT_LE(three.worstError(6), 3);
    EXPECT_GT(three.worstError(0), 3);  // the softening is real, so the band matters
}

}  // namespace
