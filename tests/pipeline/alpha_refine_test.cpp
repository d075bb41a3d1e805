// Tiled alpha refinement. The tile layout over many sizes and sides; then a
// recording tile solver checks what each tile is given (position, seam bands,
// skipped tiles) and scribbles over the whole tile, so that any leak of
// solved values into known pixels shows; one case runs the real closed-form
// solve on a generated sample.
#include "pipeline/alpha_refine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

#include "core/aligned_alloc.h"
#include "filters/cross_bilateral.h"
#include "pipeline/refine_tiles.h"
#include "synthetic_sample.h"

namespace {

// Sides from here on give overlaps wider than two seam bands.
constexpr int kRealisticSide = 100;

// Every pixel covered, tiles of one size inside the map, a whole row and
// column of tiles snapped to the far edges, seam bands exactly on inner
// sides, and (for realistic sides) every pixel free in some tile.
void checkLayout(int W, int H, int side) {
    SCOPED_TRACE(testing::Message() << W << "x" << H << " side " << side);
    const RefineTiling t = refineTiling(W, H, side);
    ASSERT_FALSE(t.tiles.empty());
    if (W <= side) {
        EXPECT_EQ(t.tileW, W);
    }
    if (H <= side) {
        EXPECT_EQ(t.tileH, H);
    }
    cv::Mat covered(H, W, CV_8UC1, cv::Scalar(0)), free = covered.clone();
    int rightEdgeTiles = 0, bottomEdgeTiles = 0, cols = 0;
    for (const RefineTile& tile : t.tiles) {
        const cv::Rect r(tile.x, tile.y, t.tileW, t.tileH);
        ASSERT_TRUE(tile.x >= 0 && tile.y >= 0 && r.br().x <= W && r.br().y <= H);
        const bool atRight = r.br().x == W, atBottom = r.br().y == H;
        EXPECT_EQ(tile.left, tile.x == 0 ? 0 : kRefineSeamBand);
        EXPECT_EQ(tile.top, tile.y == 0 ? 0 : kRefineSeamBand);
        EXPECT_EQ(tile.right, atRight ? 0 : kRefineSeamBand);
        EXPECT_EQ(tile.bottom, atBottom ? 0 : kRefineSeamBand);
        rightEdgeTiles += atRight, bottomEdgeTiles += atBottom, cols += tile.y == 0;
        covered(r).setTo(1);
        if (side >= kRealisticSide)
            free(cv::Rect(r.x + tile.left, r.y + tile.top, r.width - tile.left - tile.right,
                          r.height - tile.top - tile.bottom))
                .setTo(1);
    }
    EXPECT_EQ(cv::countNonZero(covered), W * H);
    const int rows = static_cast<int>(t.tiles.size()) / cols;
    EXPECT_EQ(static_cast<int>(t.tiles.size()), rows * cols);
    EXPECT_EQ(rightEdgeTiles, rows);
    EXPECT_EQ(bottomEdgeTiles, cols);
    if (side >= kRealisticSide) {
        EXPECT_EQ(cv::countNonZero(free), W * H);
    }
}

TEST(RefineTiles, CoverManySizesAndSides) {
    const int sizes[] = {1, 2, 3, 15, 16, 17, 49, 55, 100, 101, 333, 1000, 2000};
    for (int side : {2, 7, 16, 50, 97, 454, 768})
        for (int W : sizes)
            for (int H : sizes)
                if (static_cast<long long>(W) * H <= 300000) checkLayout(W, H, side);
}

TEST(RefineTiles, CountsSizesStridesAndSideFollowTheTenPercentRule) {
    // 2000 wide with side 454: count = (int)(2000 / (454 / 1.1) + 0.75) = 5,
    // tile = (int)(2200 / 5) = 440, stride = 400 - (int)(44.0 / 5) = 392.
    // 1500: count = (int)(1500 / 412.7 + 0.75) = 4, tile = 412, stride = 375 - 10.
    const RefineTiling t = refineTiling(2000, 1500, 454);
    EXPECT_EQ(std::vector<int>({t.tileW, t.strideX, t.tileH, t.strideY}),
              std::vector<int>({440, 392, 412, 365}));
    ASSERT_EQ(t.tiles.size(), 20u);
    EXPECT_EQ(t.tiles[4].x, 2000 - 440);  // the last of a row snapped to the edge
    EXPECT_EQ(t.tiles.back().y, 1500 - 412);
    EXPECT_EQ(refineTiling(300, 300, 768).tiles, std::vector<RefineTile>{RefineTile{}});
    EXPECT_TRUE(refineTiling(0, 10, 768).tiles.empty());
    // The smallest budget (400,000 units) gives sqrt(400e6 / 1940) = 454; the
    // largest is capped without the product overflowing.
    EXPECT_EQ(refineTileSide(400000), 454);
    EXPECT_EQ(refineTileSide(1000000), static_cast<int>(std::sqrt(1e9 / 1940.0)));
    EXPECT_EQ(refineTileSide(2320000), kRefineMaxTileSide);
}

constexpr unsigned char kKnown = 255;
// Each plane sits at (kMargin, kMargin) of a larger block filled with a
// sentinel, so writes outside the region show.
constexpr int kMargin = 3;
constexpr unsigned char kSentinel = 0xA5;

struct Plane {
    std::unique_ptr<GIMG<unsigned char>> img;
    Plane(int w, int h)
        : img(std::make_unique<GIMG<unsigned char>>(w + 2 * kMargin, h + 2 * kMargin)) {
        block().setTo(kSentinel);
        img->roiRect(kMargin, kMargin, -kMargin, -kMargin);
    }
    unsigned char& at(int x, int y) { return *imgPtr(*img, x, y); }
    cv::Mat block() const {
        return cv::Mat(img->size.height, img->size.width, CV_8UC1, img->buf, img->step);
    }
    cv::Mat roi() const { return block()(cv::Rect(kMargin, kMargin, img->width(), img->height())); }
};

// Random colours and alpha, everything unknown.
struct Problem {
    int w, h;
    Plane red, green, blue, known, alpha;
    GIMG<unsigned char>* planes[3];
    Problem(int w_, int h_)
        : w(w_), h(h_), red(w_, h_), green(w_, h_), blue(w_, h_), known(w_, h_), alpha(w_, h_) {
        planes[0] = red.img.get(), planes[1] = green.img.get(), planes[2] = blue.img.get();
        cv::RNG rng(w * 1000 + h);
        for (Plane* p : {&red, &green, &blue, &alpha}) rng.fill(p->roi(), cv::RNG::UNIFORM, 0, 256);
        known.roi().setTo(0);
    }
};

struct TileCall {
    int x, y, w, h;
    cv::Mat known;  // the known map the solver was given
};

// Records each tile and writes a value into every pixel of the tile's alpha.
struct ScribbleSolver {
    Problem* p;
    std::vector<TileCall> calls;
    void operator()(unsigned char** planes, int planeStep, int w, int h, unsigned char* known,
                    int knownStep, unsigned char* alpha, int alphaStep) {
        EXPECT_EQ(planeStep, p->red.img->step);
        const std::ptrdiff_t off = planes[0] - p->red.img->ptr();
        const int x = static_cast<int>(off % planeStep), y = static_cast<int>(off / planeStep);
        EXPECT_EQ(planes[1], imgPtr(*p->green.img, x, y));
        EXPECT_EQ(planes[2], imgPtr(*p->blue.img, x, y));
        calls.push_back({x, y, w, h, cv::Mat(h, w, CV_8UC1, known, knownStep).clone()});
        cv::Mat(h, w, CV_8UC1, alpha, alphaStep).setTo(static_cast<int>(calls.size()) * 7 % 256);
    }
};

// Maps of 30 x 20 in one tile with 5, 6 unknowns (a tile needs 6 to be
// solved, and then gets the caller's known map), and larger maps in many
// tiles, the first fully known: solved tiles get seam bands on inner sides,
// and only unknown pixels of solved tiles change.
TEST(RefineAlpha, TilesGetSeamBandsAndOnlyUnknownPixelsChange) {
    std::mt19937 rng(21);
    const struct {
        int w, h, side, unknown;  // unknown < 0: 30% at random
    } cases[] = {{30, 20, 768, 5},
                 {30, 20, 768, 6},
                 {130, 90, 40, -1},
                 {97, 131, 33, -1},
                 {200, 37, 60, -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << " side " << c.side);
        Problem p(c.w, c.h);
        std::bernoulli_distribution isKnown(0.7);
        const RefineTiling layout = refineTiling(c.w, c.h, c.side);
        for (int y = 0, n = 0; y < c.h; ++y)
            for (int x = 0; x < c.w; ++x, ++n)
                p.known.at(x, y) = (c.unknown < 0 ? isKnown(rng) : n >= c.unknown) ? kKnown : 0;
        if (c.unknown < 0) p.known.roi()(cv::Rect(0, 0, layout.tileW, layout.tileH)).setTo(kKnown);
        const cv::Mat alphaBefore = p.alpha.block().clone(), knownBefore = p.known.block().clone();
        const cv::Mat knownRoi = p.known.roi();

        ScribbleSolver s{&p, {}};
        refineAlphaTiles(p.planes, p.known.img.get(), p.alpha.img.get(), false, c.side,
                         std::ref(s));
        EXPECT_EQ(s.calls.empty(), c.unknown == 5);
        if (c.unknown < 0) {
            EXPECT_LT(s.calls.size(), layout.tiles.size());
        }

        // Replay: each solved tile copies its scribble into its unknown pixels.
        cv::Mat want = alphaBefore.clone();
        cv::Mat wantRoi = want(cv::Rect(kMargin, kMargin, c.w, c.h));
        size_t call = 0;
        for (const RefineTile& t : layout.tiles) {
            const cv::Rect r(t.x, t.y, layout.tileW, layout.tileH);
            if (cv::countNonZero(knownRoi(r) == 0) <= 5) continue;
            ASSERT_LT(call, s.calls.size());
            const TileCall& tc = s.calls[call++];
            EXPECT_EQ(cv::Rect(tc.x, tc.y, tc.w, tc.h), r);
            cv::Mat band = knownRoi(r).clone();
            band.colRange(0, t.left).setTo(kKnown);
            band.colRange(r.width - t.right, r.width).setTo(kKnown);
            band.rowRange(0, t.top).setTo(kKnown);
            band.rowRange(r.height - t.bottom, r.height).setTo(kKnown);
            EXPECT_EQ(cv::countNonZero(tc.known != band), 0);
            wantRoi(r).setTo(static_cast<int>(call) * 7 % 256, knownRoi(r) == 0);
        }
        EXPECT_EQ(call, s.calls.size());
        EXPECT_EQ(cv::countNonZero(p.alpha.block() != want), 0);
        EXPECT_EQ(cv::countNonZero(p.known.block() != knownBefore), 0);
    }
}

TEST(RefineAlpha, FilterSmoothsTheSolvedTileBeforeTheMaskedCopy) {
    Problem p(40, 30);
    p.known.roi().colRange(0, 20).setTo(kKnown);
    const cv::Mat old = p.alpha.roi().clone();
    // A solver that leaves a ramp, which the filter then smooths.
    auto ramp = [](unsigned char**, int, int w, int h, unsigned char*, int, unsigned char* a,
                   int as) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                a[y * as + x] = static_cast<unsigned char>((x * 37 + y * 11) % 256);
    };
    refineAlphaTiles(p.planes, p.known.img.get(), p.alpha.img.get(), true, 768, ramp);

    cv::Mat want(p.h, p.w, CV_8UC1);
    unsigned char* alphaPlane[1] = {want.data};
    unsigned char* guide[3] = {p.red.img->ptr(), p.green.img->ptr(), p.blue.img->ptr()};
    ramp(nullptr, 0, p.w, p.h, nullptr, 0, want.data, static_cast<int>(want.step));
    ASSERT_EQ(CBLFRGB(p.w, p.h, alphaPlane, static_cast<int>(want.step), 1, guide, p.red.img->step,
                      3, 1, 15.0f, 0.825f, 1.0e-6f),
              1);
    old.colRange(0, 20).copyTo(want.colRange(0, 20));
    EXPECT_EQ(cv::countNonZero(p.alpha.roi() != want), 0);
}

// Solved once with planes of one row step and once with the green plane on
// the heap fallback (another step): the result must be the same bytes, close
// to the truth in the band and the known pixels and the frame untouched.
TEST(RefineAlpha, ClosedFormSolveOnAGeneratedSample) {
    const SyntheticSample sample = makeSyntheticSample(96, 72);
    const int w = sample.picture.cols, h = sample.picture.rows;
    const cv::Mat unknown = sample.trimap == 128;
    ASSERT_GT(cv::countNonZero(unknown), 100);
    cv::Mat first;
    for (bool greenOnHeap : {false, true}) {
        SCOPED_TRACE(greenOnHeap ? "green plane on the heap" : "one row step");
        // The green plane is the second container a problem allocates.
        if (greenOnHeap) kc::testing::failImageAllocs(1, 1);
        Problem p(w, h);
        kc::testing::failImageAllocs(0, 0);
        ASSERT_EQ(p.green.img->step != p.red.img->step, greenOnHeap);
        cv::Mat bgr[3];
        cv::split(sample.picture, bgr);
        bgr[0].copyTo(p.blue.roi()), bgr[1].copyTo(p.green.roi()), bgr[2].copyTo(p.red.roi());
        sample.trimap.copyTo(p.alpha.roi());
        p.known.roi().setTo(kKnown);
        p.known.roi().setTo(0, unknown);
        const cv::Mat before = p.alpha.block().clone();
        EXPECT_EQ(refineAlphaMW(p.planes, p.known.img.get(), p.alpha.img.get(), false), 0);

        const cv::Mat result = p.alpha.roi();
        if (greenOnHeap) {
            EXPECT_EQ(cv::countNonZero(result != first), 0);
            continue;
        }
        first = result.clone();
        // The band starts at a flat 128 (some 80 levels off on average); a real
        // solve lands within a few levels of the truth.
        cv::Mat diff;
        cv::absdiff(result, alphaToBytes(sample.alpha), diff);
        EXPECT_LT(cv::mean(diff, unknown)[0], 15.0);
        cv::Mat changed = p.alpha.block() != before;
        changed(cv::Rect(kMargin, kMargin, w, h)).setTo(0, unknown);
        EXPECT_EQ(cv::countNonZero(changed), 0);
    }
}

}  // namespace
