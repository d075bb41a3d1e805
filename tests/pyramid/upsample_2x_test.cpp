// Guided 2x upsampling: the row passes against a literal per-pixel reference
// (phase images, phase order, weight tables), the behaviour at colour edges,
// the zero-weight guard and the refusal cases.
#include "pyramid/upsample_2x.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "pyramid/guide_weights.h"
#include "pyramid_test_support.h"

using pyrtest::Grid;

namespace {

// ---- slow reference ---------------------------------------------------------

// exp(-L) sampled at L_k (in units of 2p); the last point is absolute.
constexpr std::array<double, 13> kRefLevels = {0.0,       0.201189,  0.676718, 1.375838, 2.276198,
                                               3.363586,  4.627748,  6.060752, 7.656186, 9.408694,
                                               11.313708, 13.367253, 131072.0};
constexpr std::array<double, 13> kRefValues = {1.0,      0.817758, 0.508283, 0.252628, 0.102674,
                                               0.034611, 0.009777, 0.002333, 0.000473, 0.000082,
                                               0.000012, 0.000002, 0.0};

double refLinearWeight(double d, double p) {
    for (int k = 0; k < 12; ++k) {
        const double lo = kRefLevels[k] * 2 * p;
        const double hi = k == 11 ? kRefLevels[12] : kRefLevels[k + 1] * 2 * p;
        if (d >= lo && d < hi)
            return kRefValues[k] + (d - lo) * (kRefValues[k + 1] - kRefValues[k]) / (hi - lo);
    }
    return 0.0;
}

int refByteWeight(int d, double p) {
    const double v = 255.0 * std::exp(-0.5 * d / p);
    return v < 1.4 ? 1 : static_cast<int>(v);
}

// Weight of one neighbour given the per-channel guide values of the new pixel
// (ref) and of the neighbour (nb).
template <typename T>
float refWeight(const std::vector<T>& ref, const std::vector<T>& nb, double p) {
    if constexpr (std::is_same_v<T, unsigned char>) {
        int d = 0;
        for (size_t c = 0; c < ref.size(); ++c) d = std::min(255, d + std::abs(ref[c] - nb[c]));
        return static_cast<float>(refByteWeight(d, p));
    } else {
        double d = 0;
        for (size_t c = 0; c < ref.size(); ++c) d += std::fabs(double(ref[c]) - double(nb[c]));
        return static_cast<float>(refLinearWeight(d, p));
    }
}

template <typename T>
T refRound(float v) {
    if constexpr (std::is_same_v<T, float>) {
        return v;
    } else {
        const double lo = std::numeric_limits<T>::min(), hi = std::numeric_limits<T>::max();
        return static_cast<T>(std::clamp(std::nearbyint(double(v)), lo, hi));
    }
}

// The algorithm step by step: phase images of the guide, then the four phases,
// with the odd/odd results kept in their own half image. Odd/odd results that
// no pass computes (last coarse column and row) are the destination's prior
// content, as the destination is what the later passes read them from.
template <typename T>
void referenceUpsample(const std::vector<Grid<T>>& src, std::vector<Grid<T>>& dst,
                       const std::vector<Grid<T>>& guide, double p) {
    const int cw = std::min(src[0].w, dst[0].w / 2);
    const int ch = std::min(src[0].h, dst[0].h / 2);
    const int ng = static_cast<int>(guide.size());
    // H[a][b][c](i, j) = guide_c(2i + a, 2j + b)
    auto H = [&](int a, int b, int i, int j) {
        std::vector<T> v(ng);
        for (int c = 0; c < ng; ++c) v[c] = guide[c].at(2 * i + a, 2 * j + b);
        return v;
    };
    struct Nb {
        T value;
        std::vector<T> g;
    };
    auto mean = [&](const std::vector<T>& ref, const std::vector<Nb>& nbs) {
        float acc = 0, wsum = 0;
        for (const auto& nb : nbs) {
            const float w = refWeight(ref, nb.g, p);
            acc += w * static_cast<float>(nb.value);
            wsum += w;
        }
        if (!(wsum > 0))
            return refRound<T>((float(nbs[0].value) + float(nbs[1].value) + float(nbs[2].value) +
                                float(nbs[3].value)) /
                               4);
        return refRound<T>(acc * (1.f / wsum));
    };
    for (size_t n = 0; n < src.size(); ++n) {
        auto& d = dst[n];
        const auto& s = src[n];
        for (int j = 0; j < ch; ++j)
            for (int i = 0; i < cw; ++i) d.at(2 * i, 2 * j) = s.at(i, j);
        Grid<T> B(cw, ch);
        for (int j = 0; j < ch; ++j)
            for (int i = 0; i < cw; ++i) B.at(i, j) = d.at(2 * i + 1, 2 * j + 1);
        for (int j = 0; j + 1 < ch; ++j)
            for (int i = 0; i + 1 < cw; ++i)
                B.at(i, j) = mean(H(1, 1, i, j), {{s.at(i, j), H(0, 0, i, j)},
                                                  {s.at(i + 1, j), H(0, 0, i + 1, j)},
                                                  {s.at(i, j + 1), H(0, 0, i, j + 1)},
                                                  {s.at(i + 1, j + 1), H(0, 0, i + 1, j + 1)}});
        for (int j = 0; j + 1 < ch; ++j)
            for (int i = 0; i + 1 < cw; ++i) d.at(2 * i + 1, 2 * j + 1) = B.at(i, j);
        for (int j = 0; j + 1 < ch; ++j)
            for (int i = 0; i + 1 < cw; ++i)
                d.at(2 * i + 1, 2 * j + 2) =
                    mean(H(1, 0, i, j + 1), {{s.at(i, j + 1), H(0, 0, i, j + 1)},
                                             {s.at(i + 1, j + 1), H(0, 0, i + 1, j + 1)},
                                             {B.at(i, j), H(1, 1, i, j)},
                                             {B.at(i, j + 1), H(1, 1, i, j + 1)}});
        for (int j = 0; j + 1 < ch; ++j)
            for (int i = 0; i + 1 < cw; ++i)
                d.at(2 * i + 2, 2 * j + 1) =
                    mean(H(0, 1, i + 1, j), {{s.at(i + 1, j), H(0, 0, i + 1, j)},
                                             {s.at(i + 1, j + 1), H(0, 0, i + 1, j + 1)},
                                             {B.at(i, j), H(1, 1, i, j)},
                                             {B.at(i + 1, j), H(1, 1, i + 1, j)}});
    }
}

// ---- running the engine on grids ----------------------------------------------

// Owned planes built from grids; the destination sits inside a larger block
// with a sentinel frame to catch writes outside its region.
template <typename T>
struct Planes {
    std::vector<std::unique_ptr<GIMG<T>>> img;
    std::vector<GIMG<T>*> ptrs;
    Planes(const std::vector<Grid<T>>& grids, int margin, T sentinel) {
        for (const auto& g : grids) {
            img.push_back(std::make_unique<GIMG<T>>(g.w + 2 * margin, g.h + 2 * margin));
            pyrtest::fillBlock(*img.back(), sentinel);
            img.back()->roiRect(margin, margin, -margin, -margin);
            pyrtest::fromGrid(g, *img.back());
            ptrs.push_back(img.back().get());
        }
    }
};

template <typename T>
struct Case {
    std::vector<Grid<T>> src, dst, guide;
};

template <typename T>
Case<T> randomCase(int cw, int chh, int dw, int dh, int nSrc, int nGuide, double lo, double hi,
                   std::mt19937& rng) {
    Case<T> c;
    for (int n = 0; n < nSrc; ++n) {
        c.src.push_back(pyrtest::randomGrid<T>(cw, chh, lo, hi, rng));
        c.dst.push_back(pyrtest::randomGrid<T>(dw, dh, lo, hi, rng));
    }
    for (int g = 0; g < nGuide; ++g) c.guide.push_back(pyrtest::randomGrid<T>(dw, dh, lo, hi, rng));
    return c;
}

// Runs the engine on a case; returns its result and the destinations as grids.
template <typename T>
int runEngine(const Case<T>& c, double p, std::vector<Grid<T>>& out, int* outside = nullptr) {
    const T sentinel = static_cast<T>(77);
    Planes<T> src(c.src, 0, sentinel), dst(c.dst, 2, sentinel), guide(c.guide, 1, sentinel);
    const int r = CUpSampleRK2X<T>(src.ptrs.data(), dst.ptrs.data(), int(c.src.size()),
                                   guide.ptrs.data(), int(c.guide.size()), float(p));
    out.clear();
    int changed = 0;
    for (auto* d : dst.ptrs) {
        out.push_back(pyrtest::toGrid(*d));
        changed += pyrtest::changedOutsideRegion(*d, sentinel);
    }
    if (outside) *outside = changed;
    return r;
}

template <typename T>
void expectMatchesReference(int cw, int chh, int dw, int dh, int nSrc, int nGuide, double lo,
                            double hi, double p, double tol, unsigned seed) {
    std::mt19937 rng(seed);
    const auto c = randomCase<T>(cw, chh, dw, dh, nSrc, nGuide, lo, hi, rng);
    auto expected = c.dst;
    referenceUpsample(c.src, expected, c.guide, p);
    std::vector<Grid<T>> got;
    int outside = -1;
    ASSERT_EQ(runEngine(c, p, got, &outside), 1);
    EXPECT_EQ(outside, 0) << "wrote outside the destination region";
    for (size_t n = 0; n < got.size(); ++n)
        EXPECT_LE(pyrtest::maxAbsDiff(got[n], expected[n]), tol)
            << "channel " << n << " coarse " << cw << "x" << chh << " fine " << dw << "x" << dh;
}

// ---- fast passes against the reference ----------------------------------------

TEST(GuidedUpsampleMatchesReference, EveryElementTypeAndShape) {
    // Bytes exactly: 8-bit weights and values make every sum exact in float. The
    // third has a source larger than half the destination and a destination
    // wider than 2w'; the fourth a low-contrast guide whose weights fall in the
    // table's middle range.
    expectMatchesReference<unsigned char>(6, 5, 12, 10, 1, 3, 0, 255, 9.0, 0, 1);
    expectMatchesReference<unsigned char>(7, 4, 15, 9, 2, 3, 0, 255, 9.0, 0, 2);
    expectMatchesReference<unsigned char>(9, 9, 13, 11, 1, 4, 0, 255, 2.0, 0, 3);
    expectMatchesReference<unsigned char>(8, 6, 16, 12, 1, 1, 100, 140, 9.0, 0, 4);
    expectMatchesReference<unsigned char>(5, 5, 10, 10, 3, 0, 0, 255, 9.0, 0, 5);
    // Float: a small p spreads guide differences of 0..3 over the whole table.
    expectMatchesReference<float>(6, 5, 12, 11, 1, 3, 0, 1, 0.05, 1e-5, 11);
    expectMatchesReference<float>(7, 6, 14, 12, 2, 2, 0, 1, 0.2, 1e-5, 12);
    // 16-bit follow the float scheme, within one level: float rounding order
    // may flip an exact half.
    expectMatchesReference<short>(6, 5, 13, 10, 1, 3, 0, 30000, 2000.0, 1, 21);
    expectMatchesReference<unsigned short>(6, 5, 12, 10, 1, 3, 0, 60000, 2000.0, 1, 22);
}

// ---- behaviour ------------------------------------------------------------------

// Guide with a sharp colour edge at fine column (or row) e, and the alpha that
// belongs to it: 0 before the edge, 255 from it on, decimated to the coarse level.
Case<unsigned char> edgeCase(int dw, int dh, int e, bool vertical, bool guided) {
    Case<unsigned char> c;
    auto side = [&](int x, int y) { return (vertical ? x : y) >= e; };
    const unsigned char colA[3] = {30, 160, 40}, colB[3] = {200, 90, 220};
    for (int g = 0; g < 3; ++g) {
        Grid<unsigned char> gr(dw, dh);
        for (int y = 0; y < dh; ++y)
            for (int x = 0; x < dw; ++x) gr.at(x, y) = guided ? (side(x, y) ? colB : colA)[g] : 128;
        c.guide.push_back(gr);
    }
    Grid<unsigned char> fine(dw, dh), coarse(dw / 2, dh / 2);
    for (int y = 0; y < dh; ++y)
        for (int x = 0; x < dw; ++x) fine.at(x, y) = side(x, y) ? 255 : 0;
    for (int y = 0; y < dh / 2; ++y)
        for (int x = 0; x < dw / 2; ++x) coarse.at(x, y) = fine.at(2 * x, 2 * y);
    c.src.push_back(coarse);
    c.dst.push_back(fine);  // as in the pyramid: the finer level's own alpha
    return c;
}

// Largest distance of any pixel from its side's alpha.
int worstBleed(const Grid<unsigned char>& d, int e, bool vertical) {
    int worst = 0;
    for (int y = 0; y < d.h; ++y)
        for (int x = 0; x < d.w; ++x) {
            const int want = (vertical ? x : y) >= e ? 255 : 0;
            worst = std::max(worst, std::abs(d.at(x, y) - want));
        }
    return worst;
}

TEST(GuidedUpsample, AlphaDoesNotBleedAcrossAColourEdge) {
    for (bool vertical : {true, false})
        for (int e : {7, 8, 9, 10}) {
            std::vector<Grid<unsigned char>> got;
            ASSERT_EQ(runEngine(edgeCase(20, 18, e, vertical, true), 9.0, got), 1);
            EXPECT_LE(worstBleed(got[0], e, vertical), 3) << "edge at " << e;
            // Without the colour edge the same alpha is averaged across: the
            // check above is what the guide buys.
            ASSERT_EQ(runEngine(edgeCase(20, 18, e, vertical, false), 9.0, got), 1);
            EXPECT_GE(worstBleed(got[0], e, vertical), 60) << "edge at " << e;
        }
}

TEST(GuidedUpsample, FloatZeroWeightSumFallsBackToThePlainMean) {
    // Every known neighbour's guide is far beyond the table's end from every
    // new pixel's, so all four weights are 0.
    const int cw = 4, chh = 4, dw = 8, dh = 8;
    Case<float> c;
    Grid<float> g(dw, dh);
    for (int y = 0; y < dh; ++y)
        for (int x = 0; x < dw; ++x) g.at(x, y) = (x % 2 == 0 && y % 2 == 0) ? 1e6f : 0.f;
    c.guide.push_back(g);
    Grid<float> s(cw, chh);
    for (int y = 0; y < chh; ++y)
        for (int x = 0; x < cw; ++x) s.at(x, y) = 0.1f * float(x + 3 * y);
    c.src.push_back(s);
    c.dst.push_back(Grid<float>(dw, dh, 0.5f));
    std::vector<Grid<float>> got;
    ASSERT_EQ(runEngine(c, 9.0, got), 1);
    const auto& d = got[0];
    for (float v : d.px) ASSERT_TRUE(std::isfinite(v));
    for (int j = 0; j + 1 < chh; ++j)
        for (int i = 0; i + 1 < cw; ++i)
            EXPECT_NEAR(d.at(2 * i + 1, 2 * j + 1),
                        (s.at(i, j) + s.at(i + 1, j) + s.at(i, j + 1) + s.at(i + 1, j + 1)) / 4,
                        1e-6);
}

// Five guides are refused with nothing written; a 1 x 1 coarse image writes
// only the fine pixel (0, 0).
TEST(GuidedUpsample, FiveGuidesOrAOnePixelCoarseImage) {
    std::mt19937 rng(41);
    for (const int nGuide : {5, 3}) {
        const int coarse = nGuide == 5 ? 4 : 1;
        const auto c = randomCase<unsigned char>(coarse, coarse, 8, 8, 1, nGuide, 0, 255, rng);
        std::vector<Grid<unsigned char>> got;
        EXPECT_EQ(runEngine(c, 9.0, got), nGuide == 5 ? 0 : 1);
        auto expected = c.dst[0];
        if (nGuide < 5) expected.at(0, 0) = c.src[0].at(0, 0);
        EXPECT_EQ(pyrtest::maxAbsDiff(got[0], expected), 0) << nGuide << " guides";
    }
}

TEST(GuidedUpsample, CombinedResizesAnyCoarseSizeOntoHalfTheDestination) {
    // A constant coarse alpha, whatever its size, must land on every coarse
    // and odd/odd position of the destination (a coarse image not brought to
    // exactly half the destination leaves or shifts some); the last column and
    // row keep their prior value, and nothing outside the region is touched.
    const int dw = 20, dh = 13, cw = dw / 2, chh = dh / 2;
    const unsigned char prior = 60, value = 140, sentinel = 3;
    std::mt19937 rng(51);
    Case<unsigned char> c;
    for (int g = 0; g < 3; ++g)
        c.guide.push_back(pyrtest::randomGrid<unsigned char>(dw, dh, 0, 255, rng));
    c.dst.push_back(Grid<unsigned char>(dw, dh, prior));
    for (IPSize coarse : {IPSize(cw, chh), IPSize(7, 5), IPSize(15, 9), IPSize(1, 1)}) {
        c.src = {Grid<unsigned char>(coarse.width, coarse.height, value)};
        Planes<unsigned char> src(c.src, 0, sentinel), dst(c.dst, 2, sentinel),
            guide(c.guide, 0, sentinel);
        ASSERT_EQ(
            CUpSampleRK2XCombined(src.ptrs.data(), dst.ptrs.data(), 1, guide.ptrs.data(), 3, 10.f),
            1);
        const auto d = pyrtest::toGrid(*dst.ptrs[0]);
        for (int y = 0; y < dh; ++y)
            for (int x = 0; x < dw; ++x) {
                const bool beyond = x >= 2 * cw - 1 || y >= 2 * chh - 1;
                const bool known = x % 2 == y % 2;  // coarse or odd/odd position
                if (beyond) {
                    EXPECT_EQ(d.at(x, y), prior) << x << "," << y;
                } else if (known) {
                    EXPECT_EQ(d.at(x, y), value) << x << "," << y;
                }
            }
        EXPECT_EQ(pyrtest::changedOutsideRegion(*dst.ptrs[0], sentinel), 0);
    }
}

// ---- weight table (the byte one is checked exactly through the byte cases) -----

TEST(GuideWeights, LinearTableFollowsTheExponentialAndEndsAtZero) {
    for (float p : {0.05f, 9.0f, 2000.0f}) {
        const LinearGuideWeights w(p);
        for (int i = 0; i <= 400; ++i) {
            const double d = i * 0.04 * p;  // 0..16 units of p
            EXPECT_NEAR(w(float(d)), std::exp(-d / (2 * p)), 0.07) << "p " << p << " d " << d;
            EXPECT_NEAR(w(float(d)), refLinearWeight(d, p), 1e-5);
        }
        EXPECT_EQ(w(131072.f), 0.f);
        EXPECT_EQ(w(std::nanf("")), 0.f);
    }
}

}  // namespace
