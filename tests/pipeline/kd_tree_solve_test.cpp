// The cell solve on its own and under a whole KD-tree traversal, on a
// generated sample whose true alpha is known.
#include "pipeline/kd_tree_solve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <vector>

#include "pipeline/kd_tree.h"
#include "synthetic_sample.h"

namespace {

constexpr unsigned char kKnown = 255;
constexpr unsigned char kTrimapUnknown = 128;

// The sample split into the planes a KD-tree works on.
struct SamplePlanes {
    SyntheticSample sample;
    int w, h;
    cv::Mat red, green, blue, known, alpha, truth;
    explicit SamplePlanes(int width, int height)
        : sample(makeSyntheticSample(width, height)), w(width), h(height) {
        std::vector<cv::Mat> bgr;
        cv::split(sample.picture, bgr);
        blue = bgr[0], green = bgr[1], red = bgr[2];
        known = sample.trimap != kTrimapUnknown;  // 255 known, 0 unknown
        alpha = sample.trimap.clone();
        truth = alphaToBytes(sample.alpha);
    }
    GIMG<unsigned char> view(cv::Mat& m) {
        return GIMG<unsigned char>(m.cols, m.rows, m.data, static_cast<int>(m.step));
    }
    // Mean absolute error over the unknown band.
    double bandError() const {
        double err = 0;
        int n = 0;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                if (sample.trimap.at<unsigned char>(y, x) == kTrimapUnknown) {
                    err += std::abs(alpha.at<unsigned char>(y, x) - truth.at<unsigned char>(y, x));
                    ++n;
                }
        return err / n;
    }
};

TEST(CompAlphaKDTree, FewerThanThreeUnknownsIsRefused) {
    SamplePlanes s(40, 30);
    s.known.setTo(kKnown);
    s.known.at<unsigned char>(10, 10) = 0;
    s.known.at<unsigned char>(20, 12) = 0;
    const cv::Mat before = s.alpha.clone();
    GIMG<unsigned char> r = s.view(s.red), g = s.view(s.green), b = s.view(s.blue);
    GIMG<unsigned char> k = s.view(s.known), a = s.view(s.alpha);
    GIMG<unsigned char>* images[] = {&r, &g, &b, &a};
    EXPECT_EQ(compAlphaKDTree(images, &k, &a, 1, false), -5);
    EXPECT_EQ(cv::countNonZero(before != s.alpha), 0);
}

TEST(CompAlphaKDTree, SolvesTheBandOfACell) {
    SamplePlanes s(80, 60);
    GIMG<unsigned char> r = s.view(s.red), g = s.view(s.green), b = s.view(s.blue);
    GIMG<unsigned char> k = s.view(s.known), a = s.view(s.alpha);
    GIMG<unsigned char>* images[] = {&r, &g, &b, &a};
    const double start = s.bandError();
    EXPECT_EQ(compAlphaKDTree(images, &k, &a, 1, false), 1);
    EXPECT_LT(s.bandError(), 15.0);
    EXPECT_LT(s.bandError(), start / 4);
}

TEST(CompAlphaKDTree, TreeTraversalSolvesEveryCell) {
    SamplePlanes s(240, 180);
    std::vector<unsigned char> fg(static_cast<size_t>(s.w) * 4 * s.h);
    unsigned char* planes[] = {s.red.data, s.green.data, s.blue.data};
    KDTree tree(s.known.data, static_cast<int>(s.known.step), planes, static_cast<int>(s.red.step),
                s.alpha.data, static_cast<int>(s.alpha.step), fg.data(), 4 * s.w, s.w, s.h,
                nullptr);
    tree.constructTree(tree.root.get());
    ASSERT_GT(tree.leafCount, 1);
    tree.checkMemoryUsage(tree.root.get());
    tree.traverseTree(tree.root.get(), kTreePriorityUndoneSplit);
    tree.traverseTree(tree.root.get(), kTreePriorityOrdinary);
    EXPECT_LT(s.bandError(), 15.0);
}

}  // namespace
