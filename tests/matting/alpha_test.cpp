// The alpha solve driver: what comes back for known and unknown pixels, the
// agreement of its paths, the refused sizes and every failure code.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "core/aligned_alloc.h"
#include "matting/cfmatt.h"
#include "matting/direct_solver.h"
#include "matting_test_support.h"

namespace {

int codeOf(const std::function<int()>& f) {
    try {
        return f();
    } catch (int code) {
        return code;
    }
}

// Colour is an affine function of a hidden alpha, so alpha is an exact affine
// function of the colour and the matting model reproduces it.
struct LinearScene {
    int w, h;
    BytePlanes img;
    GIMG<unsigned char> truth, trimap;
    LinearScene(int width, int height) : w(width), h(height), img(w, h), truth(w, h), trimap(w, h) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const double a =
                    std::clamp((x - 4.0) / (w - 9.0) + 0.02 * std::sin(y * 0.7), 0.0, 1.0);
                *imgPtr(truth, x, y) = static_cast<unsigned char>(std::lround(a * 255));
                const double av = *imgPtr(truth, x, y) / 255.0;
                img.at(0, x, y) = static_cast<unsigned char>(std::lround(30 + 200 * av));
                img.at(1, x, y) = static_cast<unsigned char>(std::lround(200 - 150 * av));
                img.at(2, x, y) = static_cast<unsigned char>(std::lround(90 + 60 * av));
            }
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const int t = *imgPtr(truth, x, y);
                *imgPtr(trimap, x, y) = (t == 0 || t == 255) ? t : 128;
            }
    }
};

TEST(AlphaSolve, LinearAlphaRecoveredAndKnownPixelsExact) {
    LinearScene s(40, 24);
    GIMG<unsigned char> alpha(s.w, s.h);
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) *imgPtr(alpha, x, y) = *imgPtr(s.trimap, x, y);
    CFMatt m;
    ASSERT_EQ(m.CompAlpha(s.img.ptrs, s.img.step(), s.w, s.h, alpha), 0);
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) {
            const int t = *imgPtr(s.trimap, x, y);
            if (t == 0 || t == 255)
                EXPECT_EQ(*imgPtr(alpha, x, y), t);
            else
                EXPECT_NEAR(*imgPtr(alpha, x, y), *imgPtr(s.truth, x, y), 1.0) << x << "," << y;
        }
}

TEST(AlphaSolve, DirectAndCgAgreeAndTripletPathMatches) {
    LinearScene s(30, 20);
    // Pull the targets off the model a little so the solution is not exact.
    s.img.at(1, 15, 10) = 20;
    GIMG<unsigned char> direct(s.w, s.h), cg(s.w, s.h), manual(s.w, s.h);
    for (GIMG<unsigned char>* a : {&direct, &cg, &manual})
        for (int y = 0; y < s.h; ++y)
            for (int x = 0; x < s.w; ++x) *imgPtr(*a, x, y) = *imgPtr(s.trimap, x, y);
    CFMatt d, c;
    c.setSolver(false);
    ASSERT_EQ(d.CompAlpha(s.img.ptrs, s.img.step(), s.w, s.h, direct), 0);
    ASSERT_EQ(c.CompAlpha(s.img.ptrs, s.img.step(), s.w, s.h, cg), 0);
    // The same solve by the triplet list, sorted and merged.
    CFMatt t;
    GIMG<unsigned char> known(s.w, s.h), eroded(s.w, s.h);
    t.compMap(true, manual, known, eroded);
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) *imgPtr(eroded, x, y) = *imgPtr(known, x, y);
    t.ErodeMap3x3(eroded);
    int nnz = 0;
    ASSERT_EQ(t.compMatLap(eroded, s.img.ptrs, s.img.step(), nnz), 0);
    ASSERT_EQ(t.alphaMain(s.w, s.h, nnz, known, eroded, manual), 0);
    t.outAlpha(t.solution.get(), s.w, s.h, known, eroded, manual);
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) {
            EXPECT_NEAR(*imgPtr(cg, x, y), *imgPtr(direct, x, y), 1.0);
            EXPECT_NEAR(*imgPtr(manual, x, y), *imgPtr(direct, x, y), 1.0);
        }
}

TEST(AlphaSolve, SizesRefusedAndNothingToSolve) {
    CFMatt m;
    BytePlanes tiny(3, 3);
    GIMG<unsigned char> a3(3, 3);
    fillMap(a3, 128);
    EXPECT_EQ(m.CompAlpha(tiny.ptrs, tiny.step(), 3, 3, a3), kMattSizeOutOfRange);
    EXPECT_EQ(m.CompAlpha(tiny.ptrs, tiny.step(), 5000, 5001, a3), kMattSizeOutOfRange);
    // The float entry has no lower bound: a 3x3 picture is solved.
    GIMG<float> f0(3, 3), f1(3, 3), f2(3, 3);
    GIMG<float>* fp[3] = {&f0, &f1, &f2};
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 3; ++x) *imgPtr(*fp[c], x, y) = 0.1f * (x + y + c);
    fillMap(a3, 0);
    *imgPtr(a3, 1, 1) = 128;
    *imgPtr(a3, 2, 2) = 255;
    EXPECT_EQ(m.CompAlpha(fp, a3), 0);
    EXPECT_EQ(*imgPtr(a3, 2, 2), 255);
    EXPECT_EQ(*imgPtr(a3, 0, 0), 0);
    // No unknown pixel: 4, alpha untouched.
    BytePlanes img(8, 8);
    img.fillRandom(2);
    GIMG<unsigned char> a8(8, 8);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) *imgPtr(a8, x, y) = x < 4 ? 0 : 255;
    EXPECT_EQ(m.CompAlpha(img.ptrs, img.step(), 8, 8, a8), kMattNothingToSolve);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(*imgPtr(a8, x, y), x < 4 ? 0 : 255);
}

TEST(AlphaSolve, SingleUnknownLiesBetweenItsNeighbours) {
    BytePlanes img(9, 9);
    img.fillRandom(4);
    std::vector<unsigned char> alpha(9 * 12, 0);
    for (int y = 0; y < 9; ++y)
        for (int x = 5; x < 9; ++x) alpha[y * 12 + x] = 255;
    alpha[4 * 12 + 4] = 100;
    const std::vector<unsigned char> before = alpha;
    CFMatt m;
    m.sharpenStrength = 0.2f;  // at the threshold: no sharpening
    EXPECT_EQ(m.CompAlpha(img.ptrs, img.step(), 9, 9, alpha.data(), 12), 0);
    for (size_t i = 0; i < alpha.size(); ++i)
        if (i != 4 * 12 + 4) {
            EXPECT_EQ(alpha[i], before[i]);
        }
}

TEST(AlphaSolve, CompAlphaMapAllUnknownStaysFinite) {
    // No constraint anywhere: the system is only semidefinite.
    BytePlanes img(12, 10);
    img.fillRandom(9);
    std::vector<unsigned char> known(12 * 10, 0), alpha(12 * 10, 77);
    CFMatt m;
    EXPECT_EQ(m.CompAlphaMap(img.ptrs, img.step(), 12, 10, known.data(), 12, alpha.data(), 12), 0);
    for (unsigned char v : alpha) EXPECT_EQ(v, alpha[0]);  // one group, one value
}

TEST(AlphaSolve, FailureCodesAreThrownWithArraysReleased) {
    LinearScene s(20, 12);
    auto fresh = [&](GIMG<unsigned char>& a) {
        for (int y = 0; y < s.h; ++y)
            for (int x = 0; x < s.w; ++x) *imgPtr(a, x, y) = *imgPtr(s.trimap, x, y);
    };
    GIMG<unsigned char> a(s.w, s.h);
    {  // 125: the direct solver ran out of memory
        CFMatt m;
        fresh(a);
        kc::testing::failDirectSolverAllocs(0, 100000);
        const int code = codeOf([&] { return m.CompAlpha(s.img.ptrs, s.img.step(), s.w, s.h, a); });
        kc::testing::failDirectSolverAllocs(-1, 0);
        EXPECT_EQ(code, kMattSolverCodeBase + 1);
        EXPECT_FALSE(m.tripVal);
        EXPECT_FALSE(m.solution);
    }
    {  // 130: a work array could not be had (images fall back to the heap)
        CFMatt m;
        fresh(a);
        kc::testing::failNextAlignedAllocs(1000);
        const int code = codeOf([&] { return m.CompAlpha(s.img.ptrs, s.img.step(), s.w, s.h, a); });
        kc::testing::failNextAlignedAllocs(0);
        EXPECT_EQ(code, kMattAllocFailed);
    }
    {  // 123 and 124 + (-2): a picture with a NaN breaks both solvers
        GIMG<float> f0(s.w, s.h), f1(s.w, s.h), f2(s.w, s.h);
        GIMG<float>* fp[3] = {&f0, &f1, &f2};
        for (int c = 0; c < 3; ++c)
            for (int y = 0; y < s.h; ++y)
                for (int x = 0; x < s.w; ++x) *imgPtr(*fp[c], x, y) = s.img.at(c, x, y) / 255.0f;
        *imgPtr(f1, s.w / 2, s.h / 2) = std::nanf("");
        CFMatt direct, cg;
        cg.setSolver(false);
        fresh(a);
        EXPECT_EQ(codeOf([&] { return direct.CompAlpha(fp, a); }), 123);
        fresh(a);
        EXPECT_EQ(codeOf([&] { return cg.CompAlpha(fp, a); }), kMattSolverCodeBase - 2);
    }
    {  // -1: more than two million variables
        CFMatt m;
        BytePlanes img(5, 5);
        GIMG<unsigned char> small(5, 5);
        fillMap(small, 0);
        int nnz = 0;
        ASSERT_EQ(m.compMatLap(small, img.ptrs, img.step(), nnz), 0);
        GIMG<unsigned char> big(1500, 1400);
        fillMap(big, 0);
        EXPECT_EQ(codeOf([&] { return m.alphaMain(1500, 1400, nnz, big, big, big); }),
                  kMattTooLarge);
        EXPECT_FALSE(m.tripVal);
    }
}

TEST(Sharpen, FlatAlphaUnchangedAndEdgesSteeper) {
    CFMatt m;
    m.sharpenStrength = 3.0f;
    GIMG<unsigned char> flat(10, 10);
    fillMap(flat, 90);
    m.SharpenAlpha(flat);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x) EXPECT_EQ(*imgPtr(flat, x, y), 90);
    GIMG<unsigned char> ramp(16, 8);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x)
            *imgPtr(ramp, x, y) = static_cast<unsigned char>(x < 8 ? 100 : 140);
    m.SharpenAlpha(ramp);
    EXPECT_LT(*imgPtr(ramp, 7, 4), 100);  // pushed away from the blur
    EXPECT_GT(*imgPtr(ramp, 8, 4), 140);
    EXPECT_EQ(*imgPtr(ramp, 2, 4), 100);  // far from the edge nothing moves
}

}  // namespace
