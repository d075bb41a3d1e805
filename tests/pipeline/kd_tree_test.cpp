// KD-tree partition: centroid and split axis against a direct computation,
// the termination rules, the shape of built trees, the memory guard, and the
// two-pass traversal with a recording leaf solver in place of the matting
// solve (its order, its stamps into the known map, its log and progress).
#include "pipeline/kd_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "runtime/progress.h"

namespace {

constexpr unsigned char kKnown = 255;
constexpr unsigned char kUnknown = 0;
// Bytes past the end of each row; a read or write there would show.
constexpr int kRowPad = 5;
constexpr unsigned char kPadKnown = 77;

// Planes of one problem, each row padded.
struct Scene {
    int w, h, step;
    std::vector<unsigned char> known, alpha, red, green, blue, fg;
    Scene(int w_, int h_)
        : w(w_),
          h(h_),
          step(w_ + kRowPad),
          known(static_cast<size_t>(step) * h_, kPadKnown),
          alpha(known.size(), 128),
          red(known.size(), 10),
          green(known.size(), 20),
          blue(known.size(), 30),
          fg(static_cast<size_t>(step) * 4 * h_, 0) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) k(x, y) = kUnknown;
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
        for (int x = 0; x < s.w; x += spacing) {
            if ((x + y) / spacing % 2)
                s.setForeground(x, y);
            else
                s.setBackground(x, y);
        }
}

void collectLeaves(Node* n, std::vector<Node*>& out) {
    if (!n) return;
    if (!n->left && !n->right) {
        out.push_back(n);
        return;
    }
    collectLeaves(n->left.get(), out);
    collectLeaves(n->right.get(), out);
}

void collectInner(Node* n, std::vector<Node*>& out) {
    if (!n || (!n->left && !n->right)) return;
    out.push_back(n);
    collectInner(n->left.get(), out);
    collectInner(n->right.get(), out);
}

struct Centroid {
    int cx, cy, splitOnY;
};

Centroid referenceCentroid(Scene& s, int x0, int x1, int y0, int y1) {
    double n = 0, sx = 0, sy = 0;
    for (int y = y0; y <= y1; ++y)
        for (int x = x0; x <= x1; ++x)
            if (s.k(x, y) == 0) n += 1, sx += x, sy += y;
    const int cx = static_cast<int>(sx / n), cy = static_cast<int>(sy / n);
    double sxx = 0, syy = 0;
    for (int y = y0; y <= y1; ++y)
        for (int x = x0; x <= x1; ++x)
            if (s.k(x, y) == 0) sxx += (x - cx) * double(x - cx), syy += (y - cy) * double(y - cy);
    return {cx, cy, sxx > syy ? 0 : 1};
}

TEST(KDTreeMedian, MatchesDirectComputationOnRandomBoxes) {
    std::mt19937 rng(5);
    Scene s(70, 50);
    std::bernoulli_distribution knownPixel(0.6);
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) s.k(x, y) = knownPixel(rng) ? kKnown : kUnknown;
    KDTree tree = s.makeTree();
    std::uniform_int_distribution<int> px(0, s.w - 1), py(0, s.h - 1);
    for (int trial = 0; trial < 200; ++trial) {
        int x0 = px(rng), x1 = px(rng), y0 = py(rng), y1 = py(rng);
        if (x0 > x1) std::swap(x0, x1);
        if (y0 > y1) std::swap(y0, y1);
        const Centroid want = referenceCentroid(s, x0, x1, y0, y1);
        if (want.cx < 0) continue;  // no unknown pixel in the box
        int cx = -9, cy = -9, onY = -9;
        tree.getMedianPt(x0, x1, y0, y1, cx, cy, onY);
        EXPECT_EQ(cx, want.cx);
        EXPECT_EQ(cy, want.cy);
        EXPECT_EQ(onY, want.splitOnY) << x0 << ".." << x1 << " x " << y0 << ".." << y1;
    }
}

TEST(KDTreeMedian, LargerSpreadWinsAndATieSplitsOnY) {
    Scene s(30, 30);
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) s.k(x, y) = kKnown;
    KDTree tree = s.makeTree();
    int cx, cy, onY;
    // A horizontal run of unknowns: all spread in x.
    for (int x = 4; x <= 21; ++x) s.k(x, 7) = kUnknown;
    tree.getMedianPt(0, 29, 0, 29, cx, cy, onY);
    EXPECT_EQ(cx, 12);  // (4 + 21) / 2 = 12.5, truncated
    EXPECT_EQ(cy, 7);
    EXPECT_EQ(onY, 0);
    // A plus sign with equal arms: equal spreads split on y.
    for (int x = 4; x <= 21; ++x) s.k(x, 7) = kKnown;
    for (int d = -5; d <= 5; ++d) s.k(15 + d, 15) = s.k(15, 15 + d) = kUnknown;
    tree.getMedianPt(0, 29, 0, 29, cx, cy, onY);
    EXPECT_EQ(cx, 15);
    EXPECT_EQ(cy, 15);
    EXPECT_EQ(onY, 1);
}

TEST(KDTreeTermination, SizeAndKnownPixelRules) {
    Scene s(40, 40);
    KDTree tree = s.makeTree();
    Node n;
    n.x0 = 0, n.x1 = 11, n.y0 = 0, n.y1 = 39;
    EXPECT_EQ(tree.checkTermination(&n), kTerminateNoForeground);  // nothing known at all
    s.setBackground(3, 3);
    EXPECT_EQ(tree.checkTermination(&n), kTerminateNoForeground);
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

TEST(KDTreeConstruct, TwelveWideNodeSplitOnXIsUndone) {
    // Unknowns only along one row spread in x: the split would leave a child
    // narrower than 12, so the root stays whole as a first-pass leaf.
    Scene s(12, 40);
    sprinkleKnownGrid(s, 3);
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x)
            if (y != 20 && s.k(x, y) == kUnknown) s.setBackground(x, y);
    KDTree tree = s.makeTree();
    EXPECT_EQ(tree.constructTree(tree.root.get()), tree.root.get());
    EXPECT_EQ(tree.root->splitOnY, 0);
    EXPECT_FALSE(tree.root->left);
    EXPECT_FALSE(tree.root->right);
    EXPECT_EQ(tree.root->priority, kTreePriorityUndoneSplit);
    EXPECT_EQ(tree.leafCount, 1);
}

TEST(KDTreeConstruct, TwelveWideNodeSplitOnYProceeds) {
    Scene s(12, 40);
    sprinkleKnownGrid(s, 3);
    KDTree tree = s.makeTree();
    tree.constructTree(tree.root.get());
    ASSERT_TRUE(tree.root->left);
    EXPECT_EQ(tree.root->splitOnY, 1);
    const int cy = tree.root->cy;
    EXPECT_EQ(tree.root->left->y1, cy);
    EXPECT_EQ(tree.root->right->y0, cy);
    // Halves of 20 rows cannot split again without a child below 12 rows.
    std::vector<Node*> leaves;
    collectLeaves(tree.root.get(), leaves);
    ASSERT_EQ(leaves.size(), 2u);
    for (Node* leaf : leaves) EXPECT_EQ(leaf->priority, kTreePriorityUndoneSplit);
    EXPECT_EQ(tree.leafCount, 2);
}

TEST(KDTreeConstruct, BackgroundOnOneSideForegroundOnTheOtherIsNotSplit) {
    Scene s(60, 30);
    for (int y = 0; y < s.h; ++y) s.setBackground(0, y), s.setForeground(59, y);
    {
        KDTree tree = s.makeTree();
        tree.constructTree(tree.root.get());
        EXPECT_EQ(tree.root->splitOnY, 0);
        EXPECT_FALSE(tree.root->left);
        EXPECT_EQ(tree.root->priority, kTreePriorityUndoneSplit);
        EXPECT_EQ(tree.leafCount, 1);
    }
    // One foreground pixel on the background side: the halves now read as
    // "both" and "foreground only", and the split stands.
    s.setForeground(2, 15);
    KDTree tree = s.makeTree();
    tree.constructTree(tree.root.get());
    ASSERT_TRUE(tree.root->left);
    EXPECT_EQ(tree.root->right->priority, kTreePriorityOrdinary);
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
        collectInner(tree.root.get(), inner);
        collectLeaves(tree.root.get(), leaves);
        EXPECT_EQ(tree.leafCount, static_cast<int>(leaves.size()));
        for (Node* n : inner) {
            Node *l = n->left.get(), *r = n->right.get();
            ASSERT_TRUE(l && r);
            // The split line belongs to both children.
            if (n->splitOnY == 0) {
                EXPECT_TRUE(l->x0 == n->x0 && l->x1 == n->cx && r->x0 == n->cx && r->x1 == n->x1);
                EXPECT_TRUE(l->y0 == n->y0 && l->y1 == n->y1 && r->y0 == n->y0 && r->y1 == n->y1);
            } else {
                EXPECT_TRUE(l->y0 == n->y0 && l->y1 == n->cy && r->y0 == n->cy && r->y1 == n->y1);
                EXPECT_TRUE(l->x0 == n->x0 && l->x1 == n->x1 && r->x0 == n->x0 && r->x1 == n->x1);
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
            if (leaf == tree.root.get()) continue;
            EXPECT_GE(std::min(leaf->x1 - leaf->x0, leaf->y1 - leaf->y0) + 1, 12);
        }
    }
}

TEST(KDTreeConstruct, NodeWithoutUnknownPixelsStaysWhole) {
    Scene s(40, 40);
    sprinkleKnownGrid(s, 1);
    KDTree tree = s.makeTree();
    tree.constructTree(tree.root.get());
    EXPECT_FALSE(tree.root->left);
    EXPECT_EQ(tree.root->priority, kTreePriorityUndoneSplit);
    EXPECT_EQ(tree.leafCount, 1);
}

// A single leaf of 2000 x 1001 holding `unknown` unknown pixels: background
// down the first column and foreground down the last, so the root's split is
// undone (each half would hold one kind only).
void bigSingleLeaf(Scene& s, int unknown) {
    int known = s.w * s.h - unknown;
    for (int y = 0; y < s.h && known > 0; ++y, --known) s.setBackground(0, y);
    for (int y = 0; y < s.h && known > 0; ++y, --known) s.setForeground(s.w - 1, y);
}

TEST(KDTreeMemoryGuard, LeafOverTwoMillionUnknownsThrowsMinusOne) {
    for (int unknown : {2000001, 2000000}) {
        Scene s(2000, 1001);
        bigSingleLeaf(s, unknown);
        KDTree tree = s.makeTree();
        tree.constructTree(tree.root.get());
        ASSERT_EQ(tree.leafCount, 1);
        if (unknown > 2000000) {
            try {
                tree.checkMemoryUsage(tree.root.get());
                ADD_FAILURE() << "no throw";
            } catch (int code) {
                EXPECT_EQ(code, -1);
            }
        } else {
            EXPECT_NO_THROW(tree.checkMemoryUsage(tree.root.get()));
        }
    }
}

TEST(KDTreeMemoryGuard, OnlyLeavesAreCounted) {
    // The root covers more unknowns than the limit, its leaves each fewer.
    Scene s(2000, 1100);
    sprinkleKnownGrid(s, 40);
    KDTree tree = s.makeTree();
    EXPECT_THROW(tree.checkMemoryUsage(tree.root.get()), int);  // unsplit root is a leaf
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
    std::vector<Visit> visits;
    std::vector<int> results;  // returned in turn, 1 when they run out
    int operator()(GIMG<unsigned char>** images, GIMG<unsigned char>* known,
                   GIMG<unsigned char>* alpha, int level, bool filter) {
        EXPECT_EQ(level, 1);
        EXPECT_FALSE(filter);
        EXPECT_EQ(images[3], alpha);
        const std::ptrdiff_t off = known->ptr() - scene->known.data();
        const Visit v{static_cast<int>(off % scene->step), static_cast<int>(off / scene->step),
                      known->width(), known->height()};
        EXPECT_EQ(images[0]->ptr(), scene->red.data() + off);
        EXPECT_EQ(alpha->ptr(), scene->alpha.data() + off);
        visits.push_back(v);
        const size_t i = visits.size() - 1;
        return i < results.size() ? results[i] : 1;
    }
};

Visit widened(const Node* n, int w, int h) {
    const int x0 = std::max(n->x0 - 10, 0), y0 = std::max(n->y0 - 10, 0);
    return {x0, y0, std::min(n->x1 + 10, w - 1) - x0 + 1, std::min(n->y1 + 10, h - 1) - y0 + 1};
}

// The stamp as drawn: corners (9, 9) and (w - 10, h - 10) of the widened box,
// in whichever order they come, clipped to the box.
void referenceStamp(Scene& s, const Visit& v) {
    const int ax = std::min(9, v.w - 10), bx = std::max(9, v.w - 10);
    const int ay = std::min(9, v.h - 10), by = std::max(9, v.h - 10);
    for (int y = std::max(ay, 0); y <= std::min(by, v.h - 1); ++y)
        for (int x = std::max(ax, 0); x <= std::min(bx, v.w - 1); ++x)
            s.k(v.x + x, v.y + y) = kKnown;
}

TEST(KDTreeTraverse, FirstPassLeavesFirstInTreeOrderAndStamped) {
    std::mt19937 rng(3);
    int firstPass = 0, secondPass = 0;
    for (int trial = 0; trial < 8; ++trial) {
        std::uniform_int_distribution<int> side(40, 150);
        Scene s(side(rng), side(rng));
        sprinkleKnownGrid(s, 5);
        // Strip the known pixels from a corner so that splits there are undone.
        for (int y = 0; y < s.h / 3; ++y)
            for (int x = 0; x < s.w / 3; ++x)
                if (x > 0) s.k(x, y) = kUnknown;
        SCOPED_TRACE(testing::Message() << s.w << "x" << s.h);
        KDTree tree = s.makeTree();
        tree.constructTree(tree.root.get());
        std::vector<Node*> leaves;
        collectLeaves(tree.root.get(), leaves);

        std::vector<Visit> want;
        Scene expected = s;
        for (TreePriority p : {kTreePriorityUndoneSplit, kTreePriorityOrdinary})
            for (Node* leaf : leaves)
                if (leaf->priority == p) want.push_back(widened(leaf, s.w, s.h));
        for (const Visit& v : want) referenceStamp(expected, v);
        for (Node* leaf : leaves) (leaf->priority ? firstPass : secondPass)++;

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

TEST(KDTreeTraverse, StampOffsetsStayFixedAtThePlaneEdge) {
    // The whole 22 x 20 plane is one leaf (any split leaves a child below 12
    // columns): its margin is clipped on every side, yet the stamp still
    // starts 9 in and ends 10 before the far edge.
    Scene s(22, 20);
    KDTree tree = s.makeTree();
    tree.constructTree(tree.root.get());
    ASSERT_EQ(tree.leafCount, 1);
    Recorder rec{&s, {}, {}};
    tree.leafSolver = std::ref(rec);
    tree.traverseTree(tree.root.get(), kTreePriorityOrdinary);
    EXPECT_TRUE(rec.visits.empty());  // wrong pass
    tree.traverseTree(tree.root.get(), kTreePriorityUndoneSplit);
    ASSERT_EQ(rec.visits.size(), 1u);
    EXPECT_EQ(rec.visits[0], (Visit{0, 0, 22, 20}));
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) {
            const bool stamped = x >= 9 && x <= 12 && y >= 9 && y <= 10;
            EXPECT_EQ(s.k(x, y), stamped ? kKnown : kUnknown) << x << "," << y;
        }
}

int recordProgress(int current, int total, void* data) {
    static_cast<std::vector<std::pair<int, int>>*>(data)->push_back({current, total});
    return 1;
}

TEST(KDTreeTraverse, LogAndProgressOfASingleLeaf) {
    Scene s(22, 20);
    KDTree tree = s.makeTree();
    tree.constructTree(tree.root.get());
    ASSERT_EQ(tree.leafCount, 1);
    std::vector<std::pair<int, int>> reports;
    CProgMsgGlobal::Inst()->setup(recordProgress, &reports, 0.0f);
    clearErrMsg();
    Recorder rec{&s, {}, {-5}};
    tree.leafSolver = std::ref(rec);
    tree.traverseTree(tree.root.get(), kTreePriorityUndoneSplit);
    EXPECT_EQ(std::string(getErrMsg()), " start  compAlphaKDTree problem \n");
    // The single leaf takes the whole range.
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], std::make_pair(kProgFullScale, kProgFullScale));
    CProgMsgGlobal::Inst()->setup(nullptr, nullptr, 0.0f);
}

TEST(KDTreeTraverse, LogAndProgressOverSeveralLeaves) {
    Scene s(100, 60);
    sprinkleKnownGrid(s, 4);
    KDTree tree = s.makeTree();
    tree.constructTree(tree.root.get());
    ASSERT_GT(tree.leafCount, 2);
    std::vector<std::pair<int, int>> reports;
    CProgMsgGlobal::Inst()->setup(recordProgress, &reports, 0.0f);
    clearErrMsg();
    Recorder rec{&s, {}, {1, -5, 1}};
    tree.leafSolver = std::ref(rec);
    tree.traverseTree(tree.root.get(), kTreePriorityUndoneSplit);
    tree.traverseTree(tree.root.get(), kTreePriorityOrdinary);
    ASSERT_EQ(static_cast<int>(rec.visits.size()), tree.leafCount);
    std::string want = " start  compAlphaKDTree good \n start  compAlphaKDTree problem \n";
    for (int i = 2; i < tree.leafCount; ++i) want += " start  compAlphaKDTree good \n";
    EXPECT_EQ(std::string(getErrMsg()), want);
    ASSERT_EQ(static_cast<int>(reports.size()), tree.leafCount);
    for (size_t i = 1; i < reports.size(); ++i) EXPECT_GT(reports[i].first, reports[i - 1].first);
    EXPECT_NEAR(reports.back().first, kProgFullScale, 10);
    CProgMsgGlobal::Inst()->setup(nullptr, nullptr, 0.0f);
}

}  // namespace
