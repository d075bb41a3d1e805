// Tiled alpha refinement. A recording tile solver checks what each tile is
// given (position, seam bands, skipped tiles) and scribbles over the whole
// tile, so that any leak of solved values into known pixels shows; one case
// runs the real closed-form solve on a generated sample.
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

constexpr unsigned char kKnown = 255;
// Each plane sits at (kMargin, kMargin) of a larger block filled with a
// sentinel, so writes outside the region show.
constexpr int kMargin = 3;
constexpr unsigned char kSentinel = 0xA5;

struct Plane {
    std::unique_ptr<GIMG<unsigned char>> img;
    Plane(int w, int h)
        : img(std::make_unique<GIMG<unsigned char>>(w + 2 * kMargin, h + 2 * kMargin)) {
        cv::Mat(img->size.height, img->size.width, CV_8UC1, img->buf, img->step).setTo(kSentinel);
        img->roiRect(kMargin, kMargin, -kMargin, -kMargin);
    }
    unsigned char& at(int x, int y) { return *imgPtr(*img, x, y); }
    cv::Mat block() const {
        return cv::Mat(img->size.height, img->size.width, CV_8UC1, img->buf, img->step).clone();
    }
};

struct Problem {
    int w, h;
    Plane red, green, blue, known, alpha;
    GIMG<unsigned char>* planes[3];
    Problem(int w_, int h_)
        : w(w_), h(h_), red(w_, h_), green(w_, h_), blue(w_, h_), known(w_, h_), alpha(w_, h_) {
        planes[0] = red.img.get(), planes[1] = green.img.get(), planes[2] = blue.img.get();
        std::mt19937 rng(w * 1000 + h);
        std::uniform_int_distribution<int> byte(0, 255);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                red.at(x, y) = static_cast<unsigned char>(byte(rng));
                green.at(x, y) = static_cast<unsigned char>(byte(rng));
                blue.at(x, y) = static_cast<unsigned char>(byte(rng));
                alpha.at(x, y) = static_cast<unsigned char>(byte(rng));
                known.at(x, y) = 0;
            }
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

void run(Problem& p, ScribbleSolver& s, int side, bool filter = false) {
    refineAlphaTiles(p.planes, p.known.img.get(), p.alpha.img.get(), filter, side, std::ref(s));
}

void setUnknownCount(Problem& p, int unknown) {
    int left = unknown;
    for (int y = 0; y < p.h; ++y)
        for (int x = 0; x < p.w; ++x) p.known.at(x, y) = left-- > 0 ? 0 : kKnown;
}

TEST(RefineAlpha, TileWithFiveUnknownsIsSkippedAndWithSixSolved) {
    for (int unknown : {5, 6}) {
        Problem p(30, 20);
        setUnknownCount(p, unknown);
        const cv::Mat before = p.alpha.block();
        ScribbleSolver s{&p, {}};
        run(p, s, 768);
        EXPECT_EQ(s.calls.size(), unknown == 5 ? 0u : 1u);
        const cv::Mat after = p.alpha.block();
        EXPECT_EQ(cv::countNonZero(before != after), unknown == 5 ? 0 : unknown);
    }
}

TEST(RefineAlpha, MapWithinTheSideIsOneTileWithNoSeamBands) {
    Problem p(50, 40);
    for (int y = 0; y < p.h; ++y)
        for (int x = 0; x < p.w; ++x) p.known.at(x, y) = (x * 7 + y * 3) % 5 == 0 ? 0 : kKnown;
    ScribbleSolver s{&p, {}};
    run(p, s, 50);
    ASSERT_EQ(s.calls.size(), 1u);
    const TileCall& c = s.calls[0];
    EXPECT_TRUE(c.x == 0 && c.y == 0 && c.w == 50 && c.h == 40);
    const cv::Mat knownRoi(p.h, p.w, CV_8UC1, p.known.img->ptr(), p.known.img->step);
    EXPECT_EQ(cv::countNonZero(c.known != knownRoi), 0);
}

TEST(RefineAlpha, TilesGetSeamBandsAndOnlyUnknownPixelsChange) {
    std::mt19937 rng(21);
    for (auto [w, h, side] : {std::tuple{130, 90, 40}, {97, 131, 33}, {200, 37, 60}}) {
        SCOPED_TRACE(testing::Message() << w << "x" << h << " side " << side);
        Problem p(w, h);
        std::bernoulli_distribution isKnown(0.7);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) p.known.at(x, y) = isKnown(rng) ? kKnown : 0;
        // The first tile fully known: it must be skipped.
        const RefineTiling layout = refineTiling(w, h, side);
        for (int y = 0; y < layout.tileH; ++y)
            for (int x = 0; x < layout.tileW; ++x) p.known.at(x, y) = kKnown;
        const cv::Mat alphaBefore = p.alpha.block(), knownBefore = p.known.block();
        const cv::Mat knownRoi(h, w, CV_8UC1, p.known.img->ptr(), p.known.img->step);

        ScribbleSolver s{&p, {}};
        run(p, s, side);
        ASSERT_GT(s.calls.size(), 1u);
        EXPECT_LT(s.calls.size(), layout.tiles.size());  // the known corner was skipped

        // Replay: each solved tile copies its scribble into its unknown pixels.
        cv::Mat want = alphaBefore.clone();
        cv::Mat wantRoi = want(cv::Rect(kMargin, kMargin, w, h));
        size_t call = 0;
        for (const RefineTile& t : layout.tiles) {
            const cv::Rect r(t.x, t.y, layout.tileW, layout.tileH);
            if (cv::countNonZero(knownRoi(r) == 0) <= 5) continue;
            ASSERT_LT(call, s.calls.size());
            const TileCall& c = s.calls[call++];
            EXPECT_TRUE(c.x == t.x && c.y == t.y && c.w == r.width && c.h == r.height);
            // Seam bands on inner sides, the caller's known map elsewhere.
            cv::Mat band = knownRoi(r).clone();
            if (t.left) band.colRange(0, t.left).setTo(kKnown);
            if (t.right) band.colRange(r.width - t.right, r.width).setTo(kKnown);
            if (t.top) band.rowRange(0, t.top).setTo(kKnown);
            if (t.bottom) band.rowRange(r.height - t.bottom, r.height).setTo(kKnown);
            EXPECT_EQ(cv::countNonZero(c.known != band), 0);
            wantRoi(r).setTo(static_cast<int>(call) * 7 % 256, knownRoi(r) == 0);
        }
        EXPECT_EQ(call, s.calls.size());
        EXPECT_EQ(cv::countNonZero(p.alpha.block() != want), 0);
        EXPECT_EQ(cv::countNonZero(p.known.block() != knownBefore), 0);
    }
}

TEST(RefineAlpha, FilterSmoothsTheSolvedTileBeforeTheMaskedCopy) {
    Problem p(40, 30);
    for (int y = 0; y < p.h; ++y)
        for (int x = 0; x < p.w; ++x) p.known.at(x, y) = x < 20 ? kKnown : 0;
    const cv::Mat before(p.h, p.w, CV_8UC1, p.alpha.img->ptr(), p.alpha.img->step);
    const cv::Mat old = before.clone();
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
    EXPECT_EQ(cv::countNonZero(before != want), 0);
}

// Solved once with planes of one row step and once with the green plane on
// the heap fallback (another step): the result must be the same bytes.
TEST(RefineAlpha, ClosedFormSolveOnAGeneratedSample) {
    const SyntheticSample sample = makeSyntheticSample(96, 72);
    const int w = sample.picture.cols, h = sample.picture.rows;
    const cv::Mat truth = alphaToBytes(sample.alpha);
    cv::Mat first;
    for (bool greenOnHeap : {false, true}) {
        SCOPED_TRACE(greenOnHeap ? "green plane on the heap" : "one row step");
        // The green plane is the second container a problem allocates.
        if (greenOnHeap) kc::testing::failImageAllocs(1, 1);
        Problem p(w, h);
        kc::testing::failImageAllocs(0, 0);
        ASSERT_EQ(p.green.img->step != p.red.img->step, greenOnHeap);
        int unknown = 0;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const cv::Vec3b bgr = sample.picture.at<cv::Vec3b>(y, x);
                p.red.at(x, y) = bgr[2], p.green.at(x, y) = bgr[1], p.blue.at(x, y) = bgr[0];
                const unsigned char t = sample.trimap.at<unsigned char>(y, x);
                p.known.at(x, y) = t == 128 ? 0 : kKnown;
                p.alpha.at(x, y) = t;
                unknown += t == 128;
            }
        ASSERT_GT(unknown, 100);
        const cv::Mat before = p.alpha.block();
        EXPECT_EQ(refineAlphaMW(p.planes, p.known.img.get(), p.alpha.img.get(), false), 0);

        const cv::Mat after = p.alpha.block();
        const cv::Mat result = after(cv::Rect(kMargin, kMargin, w, h));
        if (greenOnHeap) {
            EXPECT_EQ(cv::countNonZero(result != first), 0);
            continue;
        }
        first = result.clone();
        double err = 0;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const unsigned char got = result.at<unsigned char>(y, x);
                if (p.known.at(x, y)) {
                    EXPECT_EQ(got, before.at<unsigned char>(y + kMargin, x + kMargin));
                } else {
                    err += std::abs(got - truth.at<unsigned char>(y, x));
                }
            }
        // The band starts at a flat 128 (some 80 levels off on average); a real
        // solve lands within a few levels of the truth.
        EXPECT_LT(err / unknown, 15.0);
        // Nothing outside the region moved.
        cv::Mat frame = after != before;
        frame(cv::Rect(kMargin, kMargin, w, h)).setTo(0);
        EXPECT_EQ(cv::countNonZero(frame), 0);
    }
}

}  // namespace
