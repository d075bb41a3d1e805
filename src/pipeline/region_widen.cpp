// Region widening of the main keep/cut entry.
#include "pipeline/region_widen.h"

#include <algorithm>

namespace {

// Target span of one side: 1.7 times the side, or 1.4 times the mean side
// when that is larger (so a thin region still gains context across its
// length), capped by the picture. Single precision on purpose: it fixes the
// exact truncation.
constexpr float kOwnSideGain = 1.7f;
constexpr float kMeanSideGain = 1.4f;

int targetSpan(int side, int meanSide, int pictureSide) {
    const float span = std::min(std::max(static_cast<float>(side) * kOwnSideGain,
                                         static_cast<float>(meanSide) * kMeanSideGain),
                                static_cast<float>(pictureSide));
    return static_cast<int>(span);
}

// Grows [start, start + length) by margin on both ends inside [0, pictureSide):
// what falls before 0 is added at the far end. Writes the new start and length.
void growAxis(int& start, int& length, int margin, int pictureSide) {
    const int low = start - margin;
    int high = start + length - 1 + margin;
    if (low < 0) {
        start = 0;
        high = high - low;
    } else {
        start = low;
    }
    length = high < pictureSide ? high - start + 1 : pictureSide - start;
}

}  // namespace

KeepCutRegion widenRegion(KeepCutRegion region, int pictureWidth, int pictureHeight) {
    const int w = region.width;
    const int h = region.height;
    if (w >= kWidenBelowSide && h >= kWidenBelowSide) return region;
    const int meanSide = (w + h) / 2;
    // The margin is half the target span on each side, so the region grows by
    // about the whole span.
    const int marginX = targetSpan(w, meanSide, pictureWidth) / 2;
    const int marginY = targetSpan(h, meanSide, pictureHeight) / 2;
    growAxis(region.x, region.width, marginX, pictureWidth);
    growAxis(region.y, region.height, marginY, pictureHeight);
    return region;
}
