// KDTree: cuts a matting problem too large for one solve into rectangular
// cells. Each cell is split at the centroid of its unknown pixels along the
// axis on which they spread most, as long as both halves keep painted
// foreground and background; leaves are then solved one by one with a margin
// of context, and each solved leaf becomes a constraint for its neighbours.
//
// The tree borrows every plane it is given; the planes must outlive it.
#pragma once

#include <functional>
#include <memory>
#include <opencv2/core/mat.hpp>

#include "core/img.h"

class CFMatt;

// Thrown (as a bare int) when a piece of the job is too large for the memory
// available: a leaf with too many unknown pixels, or a reduced problem beyond
// the memory budget. The main entry returns it.
inline constexpr int kErrCellTooLarge = -1;

// Which pass of the traversal solves a leaf.
enum TreePriority : int {
    kTreePriorityOrdinary = 0,     // an ordinary leaf, solved in the second pass
    kTreePriorityUndoneSplit = 1,  // a node whose split was undone, solved first
};

// checkTermination results.
enum TerminationCode : int {
    kTerminateSplitMore = 0,     // known foreground and background both present: may split
    kTerminateNoBackground = 1,  // known pixels are all foreground
    kTerminateNoForeground = 2,  // no known foreground (possibly nothing known)
    kTerminateTooSmall = 4,      // narrower or lower than the smallest cell
};

struct Node {
    unsigned char* planePtr[3] = {nullptr, nullptr, nullptr};  // colour planes at (x0, y0)
    unsigned char* foregroundPtr = nullptr;  // 4-byte-per-pixel foreground at (x0, y0)
    unsigned char* knownPtr = nullptr;       // known map at (x0, y0)
    unsigned char* alphaPtr = nullptr;       // alpha map at (x0, y0)
    int cx = -1, cy = -1;                    // centroid of the unknown pixels
    int splitOnY = -1;                       // 0: split at column cx; 1: at row cy
    int x0 = -1, x1 = -1, y0 = -1, y1 = -1;  // box, both ends inclusive
    std::unique_ptr<Node> left, right;       // both null in a leaf
    TreePriority priority = kTreePriorityOrdinary;
    bool marked = false;  // free for traversals that need to tag a leaf

    bool isLeaf() const { return !left && !right; }
};

class KDTree {
  public:
    // Solves one leaf: {red, green, blue, alpha} views, known view, alpha
    // view, pyramid level, filter flag; 1 on success.
    using LeafSolver = std::function<int(GIMG<unsigned char>** images, GIMG<unsigned char>* known,
                                         GIMG<unsigned char>* alpha, int level, bool filter)>;

    unsigned char* knownMap;
    int knownStep;
    unsigned char* alphaMap;
    int alphaStep;
    unsigned char* colorPlanes[3];
    int planeStep;
    unsigned char* foregroundBuf;
    int foregroundStep;
    int width, height;
    int counter = 0;  // kept for traversals that number their cells
    cv::Mat work;     // scratch for traversals that need one
    std::unique_ptr<Node> root;
    CFMatt* matt;  // borrowed from the caller
    int leafCount = 0;
    // The solve applied to each leaf; compAlphaKDTree unless a caller swaps it.
    LeafSolver leafSolver;

    KDTree(unsigned char* knownMap, int knownStep, unsigned char** colorPlanes, int planeStep,
           unsigned char* alphaMap, int alphaStep, unsigned char* foregroundBuf, int foregroundStep,
           int width, int height, CFMatt* matt);
    ~KDTree();
    KDTree(const KDTree&) = delete;
    KDTree& operator=(const KDTree&) = delete;

    // Splits node recursively; returns the root.
    Node* constructTree(Node* node);
    // Centroid of the unknown pixels of the box and the axis of larger spread.
    void getMedianPt(int x0, int x1, int y0, int y1, int& cx, int& cy, int& splitOnY);
    // One of the TerminationCode values for the node's box.
    int checkTermination(Node* node);
    // Throws the integer -1 when a leaf holds more unknown pixels than one
    // solve can take.
    void checkMemoryUsage(Node* node);
    // Solves every leaf of the given priority, left subtree first.
    void traverseTree(Node* node, TreePriority priority);
    // Extracts the foreground colours of every leaf of the given priority into
    // the foreground buffer, the alpha map serving as alpha, left subtree first.
    void traverseTreeFBRecovery(Node* node, TreePriority priority);
    // Frees everything below node, children before parents; node itself is
    // freed by the pointer that owns it (the destructor drops the root).
    void destroyTree(Node* node);

  private:
    // Both ends of both ranges inside the planes.
    bool boxInside(int x0, int x1, int y0, int y1) const;
    // A node over the box, its pointers set from its corner.
    std::unique_ptr<Node> makeNode(int x0, int x1, int y0, int y1) const;
};
