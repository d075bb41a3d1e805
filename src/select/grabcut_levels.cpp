// The working level of a GrabCut region.
#include "select/grabcut_levels.h"

#include <algorithm>
#include <cmath>

#include "pyramid/mask_pyramid.h"

namespace {
// The graph cut wants a longer side of about 400 to 800 pixels: the region is
// halved once per doubling of its longer side beyond 400.
constexpr double kTargetSide = 400.0;
// At most five halvings are ever asked for.
constexpr int kMaxHalvings = 5;
}  // namespace

int grabCutLevels(int width, int height) {
    // An empty region counts as one pixel: log(0) has no integer value.
    const double ratio = std::max({width, height, 1}) / kTargetSide;
    const int levels = static_cast<int>(std::log(ratio) / std::log(2.0)) + 1;
    return std::min(levels, kMaxHalvings);
}

int grabCutWorkLevel(int levels) {
    // The pyramid holds at most three halvings; a larger region runs at the
    // deepest of them (a longer side of 400 to 800 up to 6,399 pixels, more
    // beyond), a region of 200 pixels or less at its own size.
    return std::clamp(levels, 0, CMaskPyr::kMaxLevels);
}

IPSize grabCutWorkSize(int width, int height) {
    // The pyramid's halving: ceil(side / 2) per level.
    for (int l = grabCutWorkLevel(grabCutLevels(width, height)); l > 0; --l) {
        width = (width + 1) / 2;
        height = (height + 1) / 2;
    }
    return IPSize(width, height);
}
