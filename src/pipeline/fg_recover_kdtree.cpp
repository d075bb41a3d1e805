// Foreground recovery over the leaves of a KD-tree: the reduced picture is
// cut into cells the way the alpha solve cuts it, and each leaf is extracted
// with a margin of context, in the tree's two-pass order.
#include <algorithm>
#include <opencv2/core.hpp>

#include "matting/cfmatt.h"
#include "pipeline/fg_extract.h"
#include "pipeline/fg_recover.h"
#include "pipeline/kd_tree.h"
#include "runtime/progress.h"

namespace {

// Context around a leaf, as in the alpha traversal.
constexpr int kLeafMargin = 10;
constexpr unsigned char kKnown = 255;

}  // namespace

void KDTree::traverseTreeFBRecovery(Node* node, TreePriority priority) {
    if (!node) return;
    if (!node->isLeaf()) {
        traverseTreeFBRecovery(node->left.get(), priority);
        traverseTreeFBRecovery(node->right.get(), priority);
        return;
    }
    if (node->x0 < 0 || node->y0 < 0 || node->x1 >= width || node->y1 >= height ||
        node->x1 < node->x0 || node->y1 < node->y0 || node->priority != priority)
        return;

    const int ex0 = std::max(node->x0 - kLeafMargin, 0);
    const int ex1 = std::min(node->x1 + kLeafMargin, width - 1);
    const int ey0 = std::max(node->y0 - kLeafMargin, 0);
    const int ey1 = std::min(node->y1 + kLeafMargin, height - 1);
    const cv::Rect box(ex0, ey0, ex1 - ex0 + 1, ey1 - ey0 + 1);
    const cv::Rect leaf(node->x0, node->y0, node->x1 - node->x0 + 1, node->y1 - node->y0 + 1);

    const cv::Mat alpha(height, width, CV_8UC1, alphaMap, static_cast<size_t>(alphaStep));
    cv::Mat foreground(height, width, CV_8UC4, foregroundBuf, static_cast<size_t>(foregroundStep));
    extractForegroundTiles(colorPlanes, planeStep, alpha, foreground, box, leaf, *matt);

    // All leaves together make one full progress range.
    CProgMsgGlobal* prog = CProgMsgGlobal::Inst();
    prog->progStart(static_cast<float>(1.0 / std::max(leafCount, 1)));
    prog->progDone();
}

int rkRecoverForegroundKDTree(RKPSStructMsk2* request) {
    const cv::Rect all(0, 0, request->width, request->height);
    auto overLeaves = [](const cv::Mat& pic, const cv::Mat& mask, cv::Mat& fg) {
        RgbPlanes planes(pic);
        // Pixels whose colour needs no recovery (the picture is kept there)
        // are the tree's known pixels.
        cv::Mat known(mask.size(), CV_8UC1);
        for (int y = 0; y < mask.rows; ++y) {
            const unsigned char* m = mask.ptr<unsigned char>(y);
            unsigned char* k = known.ptr<unsigned char>(y);
            for (int x = 0; x < mask.cols; ++x)
                k[x] = (m[x] >= kFgPictureFrom || m[x] <= kFgPictureUpTo) ? kKnown : 0;
        }
        cv::Mat alpha = mask.clone();
        CFMatt matt;
        KDTree tree(known.data, static_cast<int>(known.step), planes.ptr, planes.step, alpha.data,
                    static_cast<int>(alpha.step), fg.data, static_cast<int>(fg.step), mask.cols,
                    mask.rows, &matt);
        tree.constructTree(tree.root.get());
        // Leaves are extracted tile by tile, so no leaf outgrows memory: the
        // alpha solve's size guard is not needed here.
        tree.traverseTreeFBRecovery(tree.root.get(), kTreePriorityUndoneSplit);
        tree.traverseTreeFBRecovery(tree.root.get(), kTreePriorityOrdinary);
    };
    recoverForegroundRegion(*request, all, fgRecoverScale(request->width, request->height, false),
                            false, overLeaves);
    return 1;
}
