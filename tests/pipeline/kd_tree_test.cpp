// KD-tree partition: centroid and split axis against a direct computation,
// the termination rules, the shape of built trees, the memory guard, the
// two-pass traversal with a recording leaf solver in place of the matting
// solve (order, stamps into the known map, log, progress), and the real cell
// solve on a generated sample whose true alpha is known.
#include "pipeline/kd_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <opencv2/core.hpp>
#include <random>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "pipeline/kd_tree_solve.h"
#include "runtime/progress.h"
#include "synthetic_sample.h"

namespace {

constexpr unsigned char kKnown = 255;
constexpr unsigned char kUnknown = 0;
// Bytes past the end of each row, holding a known value; a read or write
// there would show.
constexpr int kRowPad = 5;
constexpr unsigned char kPadKnown = 77;

// Planes of one problem, each row padded.
struct Scene {
    int w, h, step;
    std::vector<unsigned char> known, alpha, red, green, blue, fg;
    Scene(int w_, int h_) : w(w_), h(h_), step(w_ + kRowPad) {
        known.assign(static_cast<size_t>(step) * h, kPadKnown);
        alpha.assign(known.size(), 128);
        red = green = blue = alpha;
        fg.assign(4 * known.size(), 0);
        for (int y = 0; y < h; ++y) std::fill_n(&k(0, y), w, kUnknown);
    }
    unsigned char& k(int x, int y) { return known[static_cast<size_t>(y) * step + x]; }
    unsigned char& a(int x, int y) { return alpha[static_cast<size_t>(y) * step + x]; }
    void setBackground(int x, int y) { k(x, y) = kKnown, a(x, y) = 0; }
    void setForeground(int x, int y) { k(x, y) = kKnown, a(x, y) = 255; }
    KDTree makeTree() {
        unsigned char* planes[3] = {red.data(), green.data(), blue.data()};
        return KDTree(known.data(), step, planes, step, alpha.data(), step, fg.data(), 4 * step, w,
                      h, nullptr);
    }
};

// Known pixels on a grid, background and foreground alternating, so that
// every cell of 12 x 12 or more holds both.
void sprinkleKnownGrid(Scene& s, int spacing) {
    for (int y = 0; y < s.h; y += spacing)
        for (int x = 0; x < s.w; x += spacing)
            (x + y) / spacing % 2 ? s.setForeground(x, y) : s.setBackground(x, y);
}

// Inner nodes or leaves of the tree, left subtree first.
void collect(Node* n, bool leaves, std::vector<Node*>& out) {
    if (!n) return;
    if (n->isLeaf() == leaves) out.push_back(n);
    collect(n->left.get(), leaves, out);
    collect(n->right.get(), leaves, out);
}

TEST(KDTreeMedian, MatchesDirectComputationAndATieSplitsOnY) {
    std::mt19937 rng(5);
    Scene s(70, 50);
    std::bernoulli_distribution knownPixel(0.6);
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) s.k(x, y) = knownPixel(rng) ? kKnown : kUnknown;
    KDTree tree = s.makeTree();
    auto check = [&](int x0, int x1, int y0, int y1) {
        double n = 0, sx = 0, sy = 0, sxx = 0, syy = 0;
        for (int y = y0; y <= y1; ++y)
            for (int x = x0; x <= x1; ++x)
                if (s.k(x, y) == kUnknown) n += 1, sx += x, sy += y;
        if (n == 0) return;
        const int cx = static_cast<int>(sx / n), cy = static_cast<int>(sy / n);
        for (int y = y0; y <= y1; ++y)
            for (int x = x0; x <= x1; ++x)
                if (s.k(x, y) == kUnknown) sxx += (x - cx) * (x - cx), syy += (y - cy) * (y - cy);
        int gx = -9, gy = -9, onY = -9;
        tree.getMedianPt(x0, x1, y0, y1, gx, gy, onY);
        EXPECT_EQ(gx, cx);
        EXPECT_EQ(gy, cy);
        EXPECT_EQ(onY, sxx > syy ? 0 : 1) << x0 << ".." << x1 << " x " << y0 << ".." << y1;
    };
    std::uniform_int_distribution<int> px(0, s.w - 1), py(0, s.h - 1);
    for (int trial = 0; trial < 200; ++trial) {
        const int xa = px(rng), xb = px(rng), ya = py(rng), yb = py(rng);
        check(std::min(xa, xb), std::max(xa, xb), std::min(ya, yb), std::max(ya, yb));
    }
    // A plus sign with equal arms: equal spreads split on y.
    std::fill(s.known.begin(), s.known.end(), kKnown);
    for (int d = -5; d <= 5; ++d) s.k(15 + d, 15) = s.k(15, 15 + d) = kUnknown;
    check(0, 29, 0, 29);
}

TEST(KDTreeTermination, SizeAndKnownPixelRules) {
    Scene s(40, 40);
    KDTree tree = s.makeTree();
    Node n;
    n.x0 = 0, n.x1 = 11, n.y0 = 0, n.y1 = 39;
    EXPECT_EQ(tree.checkTermination(&n), kTerminateNoForeground);  // nothing known at all
    s.setBackground(3, 3);
    s.setForeground(30, 30);  // outside the box: does not count
    EXPECT_EQ(tree.checkTermination(&n), kTerminateNoForeground);
    s.k(5, 5) = kKnown, s.a(5, 5) = 6;  // 6 is the lowest foreground alpha
    EXPECT_EQ(tree.checkTermination(&n), kTerminateSplitMore);
    s.k(3, 3) = kUnknown;
    EXPECT_EQ(tree.checkTermination(&n), kTerminateNoBackground);
    s.a(5, 5) = 5;
    EXPECT_EQ(tree.checkTermination(&n), kTerminateNoForeground);
    n.x1 = 10;  // 11 wide
    EXPECT_EQ(tree.checkTermination(&n), kTerminateTooSmall);
    n.x1 = 39, n.y1 = 10;  // 11 high
    EXPECT_EQ(tree.checkTermination(&n), kTerminateTooSmall);
}

// Splits that leave a child below 12 lines, that would part the known
// background from the known foreground, or that have no centroid are undone
// (the node becomes a first-pass leaf); others stand.
TEST(KDTreeConstruct, UndoneAndStandingSplits) {
    const struct {
        const char* what;
        int w, h;
        void (*paint)(Scene&);
        int splitOnY;
        const char* leafPriorities;  // of the leaves in tree order; after '*' only the last ones
    } cases[] = {
        {"12 wide, unknowns spread in x", 12, 40,
         [](Scene& s) {
             sprinkleKnownGrid(s, 3);
             for (int y = 0; y < s.h; ++y)
                 for (int x = 0; x < s.w; ++x)
                     if (y != 20 && s.k(x, y) == kUnknown) s.setBackground(x, y);
         },
         0, "1"},
        {"12 wide, unknowns spread in y", 12, 40, [](Scene& s) { sprinkleKnownGrid(s, 3); }, 1,
         "11"},
        {"background left, foreground right", 60, 30,
         [](Scene& s) {
             for (int y = 0; y < s.h; ++y) s.setBackground(0, y), s.setForeground(59, y);
         },
         0, "1"},
        {"one foreground pixel on the background side", 60, 30,
         [](Scene& s) {
             for (int y = 0; y < s.h; ++y) s.setBackground(0, y), s.setForeground(59, y);
             s.setForeground(2, 15);
         },
         0, "*0"},
        {"no unknown pixel", 40, 40, [](Scene& s) { sprinkleKnownGrid(s, 1); }, -1, "1"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Scene s(c.w, c.h);
        c.paint(s);
        KDTree tree = s.makeTree();
        EXPECT_EQ(tree.constructTree(tree.root.get()), tree.root.get());
        if (c.splitOnY >= 0) {
            EXPECT_EQ(tree.root->splitOnY, c.splitOnY);
        }
        std::vector<Node*> leaves;
        collect(tree.root.get(), true, leaves);
        EXPECT_EQ(tree.leafCount, static_cast<int>(leaves.size()));
        std::string priorities;
        for (Node* leaf : leaves) priorities += static_cast<char>('0' + leaf->priority);
        const std::string want = c.leafPriorities;
        EXPECT_TRUE(want[0] == '*' ? priorities.ends_with(want.substr(1)) : priorities == want)
            << priorities;
    }
}

TEST(KDTreeConstruct, BuiltTreesKeepTheirInvariants) {
    std::mt19937 rng(9);
    for (int trial = 0; trial < 12; ++trial) {
        std::uniform_int_distribution<int> side(12, 160), spacing(2, 9);
        Scene s(side(rng), side(rng));
        sprinkleKnownGrid(s, spacing(rng));
        // A blob of known foreground and one of background skew the centroids.
        std::uniform_int_distribution<int> px(0, s.w - 1), py(0, s.h - 1);
        for (int i = 0; i < 3; ++i) {
            const int bx = px(rng), by = py(rng);
            for (int y = by; y < std::min(by + 8, s.h); ++y)
                for (int x = bx; x < std::min(bx + 8, s.w); ++x)
                    i % 2 ? s.setForeground(x, y) : s.setBackground(x, y);
        }
        SCOPED_TRACE(testing::Message() << s.w << "x" << s.h);
        KDTree tree = s.makeTree();
        tree.constructTree(tree.root.get());

        std::vector<Node*> inner, leaves;
        collect(tree.root.get(), false, inner);
        collect(tree.root.get(), true, leaves);
        EXPECT_EQ(tree.leafCount, static_cast<int>(leaves.size()));
        for (Node* n : inner) {
            Node *l = n->left.get(), *r = n->right.get();
            ASSERT_TRUE(l && r);
            // The split line belongs to both children.
            const cv::Rect box(n->x0, n->y0, n->x1 - n->x0, n->y1 - n->y0);
            const cv::Rect lb(l->x0, l->y0, l->x1 - l->x0, l->y1 - l->y0);
            const cv::Rect rb(r->x0, r->y0, r->x1 - r->x0, r->y1 - r->y0);
            if (n->splitOnY == 0) {
                EXPECT_EQ(lb, cv::Rect(box.x, box.y, n->cx - box.x, box.height));
                EXPECT_EQ(rb, cv::Rect(n->cx, box.y, n->x1 - n->cx, box.height));
            } else {
                EXPECT_EQ(lb, cv::Rect(box.x, box.y, box.width, n->cy - box.y));
                EXPECT_EQ(rb, cv::Rect(box.x, n->cy, box.width, n->y1 - n->cy));
            }
            const int r1 = tree.checkTermination(l), r2 = tree.checkTermination(r);
            EXPECT_TRUE(r1 != kTerminateTooSmall && r2 != kTerminateTooSmall && r1 + r2 != 3);
            EXPECT_EQ(n->priority, kTreePriorityOrdinary);
        }
        for (Node* leaf : leaves) {
            const size_t at = static_cast<size_t>(leaf->y0) * s.step + leaf->x0;
            EXPECT_EQ(leaf->knownPtr, s.known.data() + at);
            EXPECT_EQ(leaf->alphaPtr, s.alpha.data() + at);
            EXPECT_EQ(leaf->planePtr[2], s.blue.data() + at);
            EXPECT_EQ(leaf->foregroundPtr, s.fg.data() + 4 * at);
            EXPECT_TRUE(leaf == tree.root.get() ||
                        std::min(leaf->x1 - leaf->x0, leaf->y1 - leaf->y0) + 1 >= 12);
        }
    }
}

TEST(KDTreeMemoryGuard, LeafOverTwoMillionUnknownsThrowsMinusOne) {
    // A single leaf of 2000 x 1001: background down the first column and
    // foreground down the last undo the root's split.
    for (int unknown : {2000001, 2000000}) {
        Scene s(2000, 1001);
        int known = s.w * s.h - unknown;
        for (int y = 0; y < s.h && known > 0; ++y, --known) s.setBackground(0, y);
        for (int y = 0; y < s.h && known > 0; ++y, --known) s.setForeground(s.w - 1, y);
        KDTree tree = s.makeTree();
        tree.constructTree(tree.root.get());
        ASSERT_EQ(tree.leafCount, 1);
        int code = 0;
        try {
            tree.checkMemoryUsage(tree.root.get());
        } catch (int c) {
            code = c;
        }
        EXPECT_EQ(code, unknown > 2000000 ? -1 : 0) << unknown;
    }
    // Only leaves count: the unsplit root holds too many, its leaves fewer.
    Scene s(2000, 1100);
    sprinkleKnownGrid(s, 40);
    KDTree tree = s.makeTree();
    EXPECT_THROW(tree.checkMemoryUsage(tree.root.get()), int);
    tree.constructTree(tree.root.get());
    ASSERT_TRUE(tree.root->left);
    EXPECT_NO_THROW(tree.checkMemoryUsage(tree.root.get()));
}

// Where a leaf's widened box sits, read back from the view the solver got.
struct Visit {
    int x, y, w, h;
    bool operator==(const Visit&) const = default;
};

struct Recorder {
    Scene* scene;
    std::vector<int> results;  // returned in turn, 1 when they run out
    std::vector<Visit> visits;
    int operator()(GIMG<unsigned char>** images, GIMG<unsigned char>* known,
                   GIMG<unsigned char>* alpha, int level, bool filter) {
        EXPECT_EQ(level, 1);
        EXPECT_FALSE(filter);
        EXPECT_EQ(images[3], alpha);
        const std::ptrdiff_t off = known->ptr() - scene->known.data();
        EXPECT_EQ(images[0]->ptr(), scene->red.data() + off);
        EXPECT_EQ(alpha->ptr(), scene->alpha.data() + off);
        visits.push_back({static_cast<int>(off % scene->step), static_cast<int>(off / scene->step),
                          known->width(), known->height()});
        return visits.size() <= results.size() ? results[visits.size() - 1] : 1;
    }
};

TEST(KDTreeTraverse, FirstPassLeavesFirstInTreeOrderAndStamped) {
    std::mt19937 rng(3);
    int firstPass = 0, secondPass = 0;
    for (int trial = 0; trial < 8; ++trial) {
        std::uniform_int_distribution<int> side(40, 150);
        Scene s(side(rng), side(rng));
        sprinkleKnownGrid(s, 5);
        // Strip the known pixels from a corner so that splits there are undone.
        for (int y = 0; y < s.h / 3; ++y)
            for (int x = 1; x < s.w / 3; ++x) s.k(x, y) = kUnknown;
        SCOPED_TRACE(testing::Message() << s.w << "x" << s.h);
        KDTree tree = s.makeTree();
        tree.constructTree(tree.root.get());
        std::vector<Node*> leaves;
        collect(tree.root.get(), true, leaves);

        // Each leaf widened by 10 (clipped), then stamped known from (9, 9) to
        // 10 before the far corner of the widened box, in whichever order.
        std::vector<Visit> want;
        Scene expected = s;
        for (TreePriority p : {kTreePriorityUndoneSplit, kTreePriorityOrdinary})
            for (Node* n : leaves) {
                if (n->priority != p) continue;
                const int x0 = std::max(n->x0 - 10, 0), y0 = std::max(n->y0 - 10, 0);
                const Visit v{x0, y0, std::min(n->x1 + 10, s.w - 1) - x0 + 1,
                              std::min(n->y1 + 10, s.h - 1) - y0 + 1};
                want.push_back(v);
                const int ax = std::min(9, v.w - 10), bx = std::max(9, v.w - 10);
                const int ay = std::min(9, v.h - 10), by = std::max(9, v.h - 10);
                for (int y = std::max(ay, 0); y <= std::min(by, v.h - 1); ++y)
                    for (int x = std::max(ax, 0); x <= std::min(bx, v.w - 1); ++x)
                        expected.k(v.x + x, v.y + y) = kKnown;
                (p ? firstPass : secondPass)++;
            }

        Recorder rec{&s, {}, {}};
        tree.leafSolver = std::ref(rec);
        tree.traverseTree(tree.root.get(), kTreePriorityUndoneSplit);
        tree.traverseTree(tree.root.get(), kTreePriorityOrdinary);
        EXPECT_EQ(rec.visits, want);
        EXPECT_EQ(s.known, expected.known);  // padding included
        EXPECT_EQ(s.alpha, expected.alpha);
    }
    EXPECT_GT(firstPass, 0);
    EXPECT_GT(secondPass, 0);
}

int recordProgress(int current, int total, void* data) {
    static_cast<std::vector<std::pair<int, int>>*>(data)->push_back({current, total});
    return 1;
}

// A single leaf (22 x 20: any split leaves a child below 12 columns) and a
// tree of several: the log line of each leaf by its result, progress over the
// leaves, and the stamp of a leaf whose margin is clipped on every side (still
// 9 in and 10 before the far edge).
TEST(KDTreeTraverse, LogProgressAndStampPerLeaf) {
    for (const bool single : {true, false}) {
        Scene s(single ? 22 : 100, single ? 20 : 60);
        if (!single) sprinkleKnownGrid(s, 4);
        KDTree tree = s.makeTree();
        tree.constructTree(tree.root.get());
        ASSERT_EQ(tree.leafCount > 2, !single);
        std::vector<std::pair<int, int>> reports;
        CProgMsgGlobal::Inst()->setup(recordProgress, &reports, 0.0f);
        clearErrMsg();
        Recorder rec{&s, single ? std::vector<int>{-5} : std::vector<int>{1, -5, 1}, {}};
        tree.leafSolver = std::ref(rec);
        tree.traverseTree(tree.root.get(), kTreePriorityUndoneSplit);
        tree.traverseTree(tree.root.get(), kTreePriorityOrdinary);
        CProgMsgGlobal::Inst()->setup(nullptr, nullptr, 0.0f);
        ASSERT_EQ(static_cast<int>(rec.visits.size()), tree.leafCount);
        std::string want;
        for (size_t i = 0; i < rec.visits.size(); ++i)
            want += i < rec.results.size() && rec.results[i] != 1
                        ? " start  compAlphaKDTree problem \n"
                        : " start  compAlphaKDTree good \n";
        EXPECT_EQ(std::string(getErrMsg()), want);
        ASSERT_EQ(static_cast<int>(reports.size()), tree.leafCount);
        for (size_t i = 1; i < reports.size(); ++i)
            EXPECT_GT(reports[i].first, reports[i - 1].first);
        EXPECT_NEAR(reports.back().first, kProgFullScale, single ? 0 : 10);
        EXPECT_EQ(reports.back().second, kProgFullScale);
        if (!single) continue;
        EXPECT_EQ(rec.visits[0], (Visit{0, 0, 22, 20}));
        for (int y = 0; y < s.h; ++y)
            for (int x = 0; x < s.w; ++x)
                EXPECT_EQ(s.k(x, y), x >= 9 && x <= 12 && y >= 9 && y <= 10 ? kKnown : kUnknown)
                    << x << "," << y;
    }
}

// The sample split into the planes a KD-tree works on.
struct SamplePlanes {
    SyntheticSample sample;
    cv::Mat red, green, blue, known, alpha, truth;
    std::vector<unsigned char> fg;
    explicit SamplePlanes(int w, int h) : sample(makeSyntheticSample(w, h)) {
        std::vector<cv::Mat> bgr;
        cv::split(sample.picture, bgr);
        blue = bgr[0], green = bgr[1], red = bgr[2];
        known = sample.trimap != 128;  // 255 known, 0 unknown
        alpha = sample.trimap.clone();
        truth = alphaToBytes(sample.alpha);
        fg.resize(static_cast<size_t>(w) * 4 * h);
    }
    // Mean absolute error over the unknown band.
    double bandError() const {
        cv::Mat diff;
        cv::absdiff(alpha, truth, diff);
        return cv::mean(diff, known == 0)[0];
    }
    int solveWhole() {
        auto view = [](cv::Mat& m) {
            return GIMG<unsigned char>(m.cols, m.rows, m.data, static_cast<int>(m.step));
        };
        GIMG<unsigned char> r = view(red), g = view(green), b = view(blue);
        GIMG<unsigned char> k = view(known), a = view(alpha);
        GIMG<unsigned char>* images[] = {&r, &g, &b, &a};
        return compAlphaKDTree(images, &k, &a, 1, false);
    }
};

TEST(CompAlphaKDTree, SolvesACellAlonePastThreeUnknownsAndUnderATree) {
    SamplePlanes few(40, 30);
    few.known.setTo(kKnown);
    few.known.at<unsigned char>(10, 10) = few.known.at<unsigned char>(20, 12) = 0;
    const cv::Mat before = few.alpha.clone();
    EXPECT_EQ(few.solveWhole(), -5);
    EXPECT_EQ(cv::countNonZero(before != few.alpha), 0);

    SamplePlanes cell(80, 60);
    const double start = cell.bandError();
    EXPECT_EQ(cell.solveWhole(), 1);
    EXPECT_LT(cell.bandError(), std::min(15.0, start / 4));

    SamplePlanes s(240, 180);
    unsigned char* planes[] = {s.red.data, s.green.data, s.blue.data};
    KDTree tree(s.known.data, static_cast<int>(s.known.step), planes, static_cast<int>(s.red.step),
                s.alpha.data, static_cast<int>(s.alpha.step), s.fg.data(), 4 * s.red.cols,
                s.red.cols, s.red.rows, nullptr);
    tree.constructTree(tree.root.get());
    ASSERT_GT(tree.leafCount, 1);
    tree.checkMemoryUsage(tree.root.get());
    tree.traverseTree(tree.root.get(), kTreePriorityUndoneSplit);
    tree.traverseTree(tree.root.get(), kTreePriorityOrdinary);
    EXPECT_LT(s.bandError(), 15.0);
}

}  // namespace
