// Views and small map operations shared by the keep/cut strategies: headers
// over the request's buffers (no copies), the known map of a brush map, the
// nearest-neighbour reductions and the known rim of region jobs.
#pragma once

#include <opencv2/core.hpp>

#include "api/keepcut.h"
#include "core/img.h"

// Thrown (as a bare int) when a whole-picture job lacks keep or cut strokes or
// has too little left to compute.
inline constexpr int kErrNotEnoughStrokes = -5;
// Known-map value of a fixed pixel.
inline constexpr unsigned char kKnownPixel = 255;
// Fewest unknown pixels worth a closed-form solve.
inline constexpr int kMinUnknownPixels = 3;
// The linear colour model fits 3 x 3 windows: reduced regions keep at least
// this many rows and columns.
inline constexpr int kMinReducedSide = 3;
// Known rim of a region job at reduced size (pixels), and how near (in
// full-size pixels) the region must come to the picture's edge for that side
// of the rim to stay open.
inline constexpr int kReducedRimThickness = 7;
inline constexpr int kRimEdgeDistance = 10;

// A view (no copy) of rect of a host buffer whose rows are rowBytes apart;
// empty when base is null.
cv::Mat hostRectView(unsigned char* base, int rowBytes, cv::Rect rect, int type);

// Views of the request's region on its buffers; foreground is empty when the
// request has no foreground buffer.
cv::Mat regionMaskView(const RKPSStructMsk2& request);
cv::Mat regionPictureView(const RKPSStructMsk2& request);
cv::Mat regionForegroundView(const RKPSStructMsk2& request);
cv::Mat regionBrushView(const RKPSStructMsk2& request);

// A container view (borrowed memory) over an 8-bit single-channel matrix.
GIMG<unsigned char> planeView(cv::Mat& plane);

// known = 255 where the brush byte is odd (painted), else 0.
void knownFromBrush(const cv::Mat& brush, cv::Mat& known);
// knownFromBrush, and in the same pass each brush byte's bit 0 takes the value
// of its bit 1: painted keep stays 255, painted cut becomes 0 and a 7-bit
// alpha is widened back to 8 bits.
void knownFromBrushWidening(cv::Mat& brush, cv::Mat& known);

// Nearest-neighbour resampling of an 8-bit one- or four-channel matrix to size
// through the square-pixel resize primitive (factors size / src size).
cv::Mat resizeNearest(const cv::Mat& src, cv::Size size);

// Sides of a region that lie on (or near) the picture's edge.
struct RimSides {
    bool left = false, top = false, right = false, bottom = false;
};
// Draws the outline of known as a 255 rim of the given thickness (8-connected),
// then clears (0) the rim again along the sides listed in open.
void drawKnownRim(cv::Mat& known, int thickness, RimSides open);

// Three planes of a four-byte picture: plane i is byte order[i] of each pixel.
struct ColourPlanes {
    cv::Mat plane[3];
    ColourPlanes(const cv::Mat& picture, const int (&order)[3]);
    int step() const { return static_cast<int>(plane[0].step); }
};

// Container views over the three planes, as the solvers take them.
struct ColourPlaneViews {
    GIMG<unsigned char> first, second, third;
    GIMG<unsigned char>* planes[3];
    explicit ColourPlaneViews(ColourPlanes& colours);
    ColourPlaneViews(const ColourPlaneViews&) = delete;
    ColourPlaneViews& operator=(const ColourPlaneViews&) = delete;
};
