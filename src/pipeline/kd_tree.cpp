// KD-tree construction, the memory guard and the two-pass leaf traversal.
#include "pipeline/kd_tree.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>

#include "api/keepcut.h"
#include "pipeline/kd_tree_solve.h"
#include "runtime/progress.h"

namespace {

// A cell narrower or lower than this has too little context for a solve.
constexpr int kMinCellSide = 12;
// Known alpha below this reads as background, from it on as foreground.
constexpr int kKnownForegroundMin = 6;
// Unknown pixels one leaf may hold: beyond this a single solve outgrows memory.
constexpr int kMaxLeafUnknowns = 2000000;
// Context around a leaf during its solve, so that its edges see neighbours.
constexpr int kLeafMargin = 10;
// The stamped rectangle runs from this corner of the widened box to kStampFar
// before its far corner: the leaf plus one line where the margin is whole.
// Fixed offsets, also where the margin was clipped at the plane's edge.
constexpr int kStampNear = 9;
constexpr int kStampFar = 10;
constexpr unsigned char kKnown = 255;
// Level and filter flag of a leaf solve.
constexpr int kLeafSolveLevel = 1;
constexpr bool kLeafSolveFilter = false;
constexpr int kColourPlanes = 3;

constexpr const char* kLeafStartText = " start ";
constexpr const char* kLeafGoodText = " compAlphaKDTree good \n";
constexpr const char* kLeafProblemText = " compAlphaKDTree problem \n";

}  // namespace

KDTree::KDTree(unsigned char* knownMap_, int knownStep_, unsigned char** colorPlanes_,
               int planeStep_, unsigned char* alphaMap_, int alphaStep_,
               unsigned char* foregroundBuf_, int foregroundStep_, int width_, int height_,
               CFMatt* matt_)
    : knownMap(knownMap_),
      knownStep(knownStep_),
      alphaMap(alphaMap_),
      alphaStep(alphaStep_),
      colorPlanes{colorPlanes_[0], colorPlanes_[1], colorPlanes_[2]},
      planeStep(planeStep_),
      foregroundBuf(foregroundBuf_),
      foregroundStep(foregroundStep_),
      width(width_),
      height(height_),
      matt(matt_),
      leafSolver(compAlphaKDTree) {
    root = makeNode(0, width - 1, 0, height - 1);
}

KDTree::~KDTree() {
    destroyTree(root.get());
    root.reset();
}

bool KDTree::boxInside(int x0, int x1, int y0, int y1) const {
    return x0 >= 0 && x1 >= 0 && y0 >= 0 && y1 >= 0 && x0 < width && x1 < width && y0 < height &&
           y1 < height;
}

std::unique_ptr<Node> KDTree::makeNode(int x0, int x1, int y0, int y1) const {
    auto node = std::make_unique<Node>();
    node->x0 = x0;
    node->x1 = x1;
    node->y0 = y0;
    node->y1 = y1;
    // A box outside the planes (from the split of a cell without unknown
    // pixels) is undone at once; it gets no pointers into the buffers.
    if (!boxInside(x0, x1, y0, y1)) return node;
    for (int c = 0; c < kColourPlanes; ++c)
        node->planePtr[c] = imgPtr(colorPlanes[c], planeStep, x0, y0);
    node->knownPtr = imgPtr(knownMap, knownStep, x0, y0);
    node->alphaPtr = imgPtr(alphaMap, alphaStep, x0, y0);
    if (foregroundBuf) node->foregroundPtr = imgPtr(foregroundBuf, foregroundStep, 4 * x0, y0);
    return node;
}

void KDTree::getMedianPt(int x0, int x1, int y0, int y1, int& cx, int& cy, int& splitOnY) {
    // Integer sums are exact, so the spreads equal the sums of squared
    // distances from the truncated centroid.
    std::int64_t n = 0, sx = 0, sy = 0, sxx = 0, syy = 0;
    for (int y = y0; y <= y1; ++y) {
        const unsigned char* row = imgPtr(knownMap, knownStep, 0, y);
        for (int x = x0; x <= x1; ++x) {
            if (row[x] != 0) continue;
            ++n;
            sx += x;
            sy += y;
            sxx += static_cast<std::int64_t>(x) * x;
            syy += static_cast<std::int64_t>(y) * y;
        }
    }
    if (n == 0) {
        // No centroid: a split just before the box gives a child of no size,
        // which the size test refuses, so the node stays whole.
        cx = x0 - 1;
        cy = y0 - 1;
        splitOnY = 1;
        return;
    }
    cx = static_cast<int>(static_cast<double>(sx) / static_cast<double>(n));
    cy = static_cast<int>(static_cast<double>(sy) / static_cast<double>(n));
    const double spreadX = static_cast<double>(sxx - 2 * cx * sx + n * cx * cx);
    const double spreadY = static_cast<double>(syy - 2 * cy * sy + n * cy * cy);
    splitOnY = spreadX > spreadY ? 0 : 1;
}

int KDTree::checkTermination(Node* node) {
    const int w = node->x1 - node->x0 + 1;
    const int h = node->y1 - node->y0 + 1;
    // A box reaching outside the planes is as unusable as a tiny one.
    if (std::min(w, h) < kMinCellSide || !boxInside(node->x0, node->x1, node->y0, node->y1))
        return kTerminateTooSmall;
    bool knownBackground = false, knownForeground = false;
    for (int y = node->y0; y <= node->y1 && !(knownBackground && knownForeground); ++y) {
        const unsigned char* known = imgPtr(knownMap, knownStep, 0, y);
        const unsigned char* alpha = imgPtr(alphaMap, alphaStep, 0, y);
        for (int x = node->x0; x <= node->x1; ++x) {
            if (known[x] == 0) continue;
            if (alpha[x] < kKnownForegroundMin)
                knownBackground = true;
            else
                knownForeground = true;
        }
    }
    if (!knownForeground) return kTerminateNoForeground;
    if (!knownBackground) return kTerminateNoBackground;
    return kTerminateSplitMore;
}

Node* KDTree::constructTree(Node* node) {
    getMedianPt(node->x0, node->x1, node->y0, node->y1, node->cx, node->cy, node->splitOnY);
    // The split line belongs to both children: they overlap by one line.
    if (node->splitOnY == 0) {
        node->left = makeNode(node->x0, node->cx, node->y0, node->y1);
        node->right = makeNode(node->cx, node->x1, node->y0, node->y1);
    } else {
        node->left = makeNode(node->x0, node->x1, node->y0, node->cy);
        node->right = makeNode(node->x0, node->x1, node->cy, node->y1);
    }
    const int r1 = checkTermination(node->left.get());
    const int r2 = checkTermination(node->right.get());
    // Undo a split that leaves a child too small, or that would separate the
    // known background from the known foreground.
    if (r1 == kTerminateTooSmall || r2 == kTerminateTooSmall ||
        r1 + r2 == kTerminateNoBackground + kTerminateNoForeground) {
        node->priority = kTreePriorityUndoneSplit;
        destroyTree(node);
        ++leafCount;
        return root.get();
    }
    // A child that holds only one kind of known pixel stays a leaf as it is.
    // Hosts rely on this partition, but it has a known weakness: such a leaf
    // is solved with nothing but its own box and a 10-pixel margin of context,
    // and when neither holds known background (no cut stroke, and no
    // neighbour solved earlier near 0), the matting energy is lowest near an
    // all-white cell, so background inside it comes out white. The tree's
    // shape follows the picture's size (its smallest cell has a fixed side in
    // pixels), and larger pictures gave more such leaves: on a photo enlarged
    // 5x (11 MP, the tree on its 2.9 MP half level), a 66 x 122 leaf between
    // claws, with 848 keep pixels, no cut pixel in reach and 7204 unknown
    // ones, came out at a mean of 252 where the truth averages 193; at 1x the
    // photo has no such leaf there. The high-resolution pass reduces every
    // picture to about half a megapixel first, so its tree stays the same.
    for (auto [child, result] :
         {std::pair{node->left.get(), r1}, std::pair{node->right.get(), r2}}) {
        if (result == kTerminateSplitMore)
            constructTree(child);
        else
            ++leafCount;
    }
    return root.get();
}

void KDTree::checkMemoryUsage(Node* node) {
    if (!node) return;
    if (!node->isLeaf()) {
        checkMemoryUsage(node->left.get());
        checkMemoryUsage(node->right.get());
        return;
    }
    int unknown = 0;
    for (int y = node->y0; y <= node->y1; ++y) {
        const unsigned char* known = imgPtr(knownMap, knownStep, 0, y);
        for (int x = node->x0; x <= node->x1; ++x) unknown += (known[x] & 1) == 0 ? 1 : 0;
    }
    if (unknown > kMaxLeafUnknowns) throw kErrCellTooLarge;
}

void KDTree::traverseTree(Node* node, TreePriority priority) {
    if (!node) return;
    if (!node->isLeaf()) {
        traverseTree(node->left.get(), priority);
        traverseTree(node->right.get(), priority);
        return;
    }
    if (!boxInside(node->x0, node->x1, node->y0, node->y1) || node->priority != priority) return;

    const int ex0 = std::max(node->x0 - kLeafMargin, 0);
    const int ex1 = std::min(node->x1 + kLeafMargin, width - 1);
    const int ey0 = std::max(node->y0 - kLeafMargin, 0);
    const int ey1 = std::min(node->y1 + kLeafMargin, height - 1);
    const int ew = ex1 - ex0 + 1;
    const int eh = ey1 - ey0 + 1;

    GIMG<unsigned char> red(ew, eh, imgPtr(colorPlanes[0], planeStep, ex0, ey0), planeStep);
    GIMG<unsigned char> green(ew, eh, imgPtr(colorPlanes[1], planeStep, ex0, ey0), planeStep);
    GIMG<unsigned char> blue(ew, eh, imgPtr(colorPlanes[2], planeStep, ex0, ey0), planeStep);
    GIMG<unsigned char> knownView(ew, eh, imgPtr(knownMap, knownStep, ex0, ey0), knownStep);
    GIMG<unsigned char> alphaView(ew, eh, imgPtr(alphaMap, alphaStep, ex0, ey0), alphaStep);
    GIMG<unsigned char>* images[] = {&red, &green, &blue, &alphaView};

    copyErrMsg(kLeafStartText);
    const int solved =
        leafSolver(images, &knownView, &alphaView, kLeafSolveLevel, kLeafSolveFilter);
    copyErrMsg(solved == 1 ? kLeafGoodText : kLeafProblemText);

    // All leaves together make one full progress range.
    CProgMsgGlobal* prog = CProgMsgGlobal::Inst();
    prog->progStart(static_cast<float>(1.0 / std::max(leafCount, 1)));
    prog->progDone();

    // The solved leaf becomes a constraint for the leaves solved after it.
    cv::Mat known(eh, ew, CV_8UC1, knownView.ptr(), static_cast<size_t>(knownStep));
    cv::rectangle(known, cv::Point(kStampNear, kStampNear),
                  cv::Point(ew - kStampFar, eh - kStampFar), cv::Scalar(kKnown), cv::FILLED);
}

void KDTree::destroyTree(Node* node) {
    if (!node) return;
    destroyTree(node->left.get());
    destroyTree(node->right.get());
    node->left.reset();
    node->right.reset();
}
