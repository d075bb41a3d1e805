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
                const int t = static_cast<int>(std::lround(a * 255));
                *imgPtr(truth, x, y) = static_cast<unsigned char>(t);
                *imgPtr(trimap, x, y) = static_cast<unsigned char>(t == 0 || t == 255 ? t : 128);
                img.at(0, x, y) = static_cast<unsigned char>(std::lround(30 + 200 * t / 255.0));
                img.at(1, x, y) = static_cast<unsigned char>(std::lround(200 - 150 * t / 255.0));
                img.at(2, x, y) = static_cast<unsigned char>(std::lround(90 + 60 * t / 255.0));
            }
    }
    // A fresh alpha map holding the trimap.
    void reset(GIMG<unsigned char>& a) const { matOf(trimap).copyTo(matOf(a)); }
    int solve(CFMatt& m, GIMG<unsigned char>& a) {
        return m.CompAlpha(img.ptrs, img.step(), w, h, a);
    }
};

TEST(AlphaSolve, LinearAlphaRecoveredAndKnownPixelsExact) {
    LinearScene s(40, 24);
    GIMG<unsigned char> alpha(s.w, s.h);
    s.reset(alpha);
    CFMatt m;
    ASSERT_EQ(s.solve(m, alpha), 0);
    const cv::Mat known = matOf(s.trimap) != 128;
    EXPECT_EQ(cv::norm(matOf(alpha), matOf(s.trimap), cv::NORM_INF, known), 0);
    EXPECT_LE(cv::norm(matOf(alpha), matOf(s.truth), cv::NORM_INF, ~known), 1.0);
}

// The direct and CG solvers, and the same solve by the triplet list (sorted
// and merged) step by step, agree within a grey level.
TEST(AlphaSolve, DirectAndCgAgreeAndTripletPathMatches) {
    LinearScene s(30, 20);
    // Pull the targets off the model a little so the solution is not exact.
    s.img.at(1, 15, 10) = 20;
    GIMG<unsigned char> direct(s.w, s.h), cg(s.w, s.h), manual(s.w, s.h);
    for (GIMG<unsigned char>* a : {&direct, &cg, &manual}) s.reset(*a);
    CFMatt d, c, t;
    c.setSolver(false);
    ASSERT_EQ(s.solve(d, direct), 0);
    ASSERT_EQ(s.solve(c, cg), 0);
    GIMG<unsigned char> known(s.w, s.h), eroded(s.w, s.h);
    t.compMap(true, manual, known, eroded);
    matOf(known).copyTo(matOf(eroded));
    t.ErodeMap3x3(eroded);
    int nnz = 0;
    ASSERT_EQ(t.compMatLap(eroded, s.img.ptrs, s.img.step(), nnz), 0);
    ASSERT_EQ(t.alphaMain(s.w, s.h, nnz, known, eroded, manual), 0);
    t.outAlpha(t.solution.get(), s.w, s.h, known, eroded, manual);
    EXPECT_LE(cv::norm(matOf(cg), matOf(direct), cv::NORM_INF), 1.0);
    EXPECT_LE(cv::norm(matOf(manual), matOf(direct), cv::NORM_INF), 1.0);
}

TEST(AlphaSolve, SizesRefusedAndNothingToSolve) {
    CFMatt m;
    BytePlanes tiny(3, 3);
    GIMG<unsigned char> a3(3, 3);
    fillMap(a3, 128);
    EXPECT_EQ(m.CompAlpha(tiny.ptrs, tiny.step(), 3, 3, a3), kMattSizeOutOfRange);
    EXPECT_EQ(m.CompAlpha(tiny.ptrs, tiny.step(), 5000, 5001, a3), kMattSizeOutOfRange);
    // The float entry has no lower bound: a 3x3 picture is solved.
    FloatPlanes f(3, 3);
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 3; ++x) *imgPtr(*f.p[c], x, y) = 0.1f * (x + y + c);
    fillMap(a3, 0);
    *imgPtr(a3, 1, 1) = 128;
    *imgPtr(a3, 2, 2) = 255;
    EXPECT_EQ(m.CompAlpha(f.p, a3), 0);
    EXPECT_EQ(*imgPtr(a3, 2, 2), 255);
    EXPECT_EQ(*imgPtr(a3, 0, 0), 0);
    // No unknown pixel: 4, alpha untouched.
    BytePlanes img(8, 8);
    img.fillRandom(2);
    GIMG<unsigned char> a8(8, 8);
    fillMap(a8, 255);
    matOf(a8).colRange(0, 4).setTo(0);
    const cv::Mat before = matOf(a8).clone();
    EXPECT_EQ(m.CompAlpha(img.ptrs, img.step(), 8, 8, a8), kMattNothingToSolve);
    EXPECT_EQ(cv::countNonZero(matOf(a8) != before), 0);
}

TEST(AlphaSolve, RawMapFormsTouchOnlyTheirUnknownPixels) {
    // One unknown pixel in a map with a wider row step; sharpening at its
    // threshold (0.2) does not run.
    BytePlanes img(9, 9);
    img.fillRandom(4);
    cv::Mat alpha(9, 12, CV_8UC1, cv::Scalar(0));
    alpha.colRange(5, 9).setTo(255);
    alpha.at<unsigned char>(4, 4) = 100;
    const cv::Mat before = alpha.clone();
    CFMatt m;
    m.sharpenStrength = 0.2f;
    EXPECT_EQ(m.CompAlpha(img.ptrs, img.step(), 9, 9, alpha.data, 12), 0);
    cv::Mat changed = alpha != before;
    changed.at<unsigned char>(4, 4) = 0;
    EXPECT_EQ(cv::countNonZero(changed), 0);
    // No constraint anywhere: the system is only semidefinite, and the one
    // group comes back as one finite value.
    cv::Mat known(10, 12, CV_8UC1, cv::Scalar(0)), all(10, 12, CV_8UC1, cv::Scalar(77));
    BytePlanes img12(12, 10);
    img12.fillRandom(9);
    EXPECT_EQ(m.CompAlphaMap(img12.ptrs, img12.step(), 12, 10, known.data, 12, all.data, 12), 0);
    EXPECT_EQ(cv::countNonZero(all != all.at<unsigned char>(0, 0)), 0);
}

TEST(AlphaSolve, FailureCodesAreThrownWithArraysReleased) {
    LinearScene s(20, 12);
    GIMG<unsigned char> a(s.w, s.h);
    {  // 125: the direct solver ran out of memory
        CFMatt m;
        s.reset(a);
        kc::testing::failDirectSolverAllocs(0, 100000);
        const int code = codeOf([&] { return s.solve(m, a); });
        kc::testing::failDirectSolverAllocs(-1, 0);
        EXPECT_EQ(code, kMattSolverCodeBase + 1);
        EXPECT_FALSE(m.tripVal);
        EXPECT_FALSE(m.solution);
    }
    {  // 130: a work array could not be had (images fall back to the heap)
        CFMatt m;
        s.reset(a);
        kc::testing::failNextAlignedAllocs(1000);
        const int code = codeOf([&] { return s.solve(m, a); });
        kc::testing::failNextAlignedAllocs(0);
        EXPECT_EQ(code, kMattAllocFailed);
    }
    {  // 123 and 124 + (-2): a picture with a NaN breaks both solvers
        FloatPlanes f(s.w, s.h);
        for (int c = 0; c < 3; ++c) s.img.plane(c).convertTo(matOf(*f.p[c]), CV_32F, 1 / 255.0);
        *imgPtr(f.f1, s.w / 2, s.h / 2) = std::nanf("");
        CFMatt direct, cg;
        cg.setSolver(false);
        s.reset(a);
        EXPECT_EQ(codeOf([&] { return direct.CompAlpha(f.p, a); }), 123);
        s.reset(a);
        EXPECT_EQ(codeOf([&] { return cg.CompAlpha(f.p, a); }), kMattSolverCodeBase - 2);
    }
    {  // -1: more than two million variables
        CFMatt m;
        BytePlanes img(5, 5);
        GIMG<unsigned char> small(5, 5), big(1500, 1400);
        fillMap(small, 0);
        fillMap(big, 0);
        int nnz = 0;
        ASSERT_EQ(m.compMatLap(small, img.ptrs, img.step(), nnz), 0);
        EXPECT_EQ(codeOf([&] { return m.alphaMain(1500, 1400, nnz, big, big, big); }),
                  kMattTooLarge);
        EXPECT_FALSE(m.tripVal);
    }
}

TEST(Sharpen, FlatAlphaUnchangedAndEdgesSteeper) {
    CFMatt m;
    m.sharpenStrength = 3.0f;
    GIMG<unsigned char> flat(10, 10), ramp(16, 8);
    fillMap(flat, 90);
    m.SharpenAlpha(flat);
    EXPECT_EQ(cv::countNonZero(matOf(flat) != 90), 0);
    fillMap(ramp, 100);
    matOf(ramp).colRange(8, 16).setTo(140);
    m.SharpenAlpha(ramp);
    EXPECT_LT(*imgPtr(ramp, 7, 4), 100);  // pushed away from the blur
    EXPECT_GT(*imgPtr(ramp, 8, 4), 140);
    EXPECT_EQ(*imgPtr(ramp, 2, 4), 100);  // far from the edge nothing moves
}

}  // namespace
