// `keepcut band`: a trimap from a rough mask, ready for `keepcut matte`.
#include <cstdio>
#include <opencv2/core.hpp>

#include "commands.h"
#include "image_io.h"
#include "trimap_band.h"

int runBand(const BandOptions& o) {
    if (o.width < kMinBandWidth || o.width > kMaxBandWidth)
        throw ToolError("--width must be " + std::to_string(kMinBandWidth) + " to " +
                        std::to_string(kMaxBandWidth) + " pixels, not " + std::to_string(o.width));
    const cv::Mat mask = loadMask(o.mask);
    // An empty mask is most often a mask kept in an alpha channel, which is
    // not read, or one drawn dark on light; either way the trimap would be
    // all cut.
    if (cv::countNonZero(mask > kMaskForegroundOver) == 0)
        throw ToolError("mask has no foreground (no byte over 127): " + o.mask);
    const cv::Mat trimap = trimapFromMask(mask, o.width);
    writeImage(o.trimapOut, trimap);
    std::printf("trimap %dx%d, band %d px, %d px to compute -> %s\n", trimap.cols, trimap.rows,
                o.width, cv::countNonZero(trimap == kTrimapBand), o.trimapOut.c_str());
    return 0;
}
