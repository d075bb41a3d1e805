// Known/unknown maps of the matting object: the constraint masks from a brush
// or alpha map, and the one-pixel growth of the unknown region.
#include <algorithm>

#include "matting/cfmatt.h"
#include "matting/matting_map_ops.h"

namespace {
// The stretch multiplies by k / 64 with k = 255 * 64 / (high - low): 16320 is
// 255 * 64, and the shift of 6 divides the product by 64 again.
constexpr int kStretchNumerator = 16320;
constexpr int kStretchShift = 6;
constexpr int kByteMax = 255;
}  // namespace

void CFMatt::ErodeMap3x3(GIMG<unsigned char>& map) {
    erode3x3Replicated(map, primStatus);
}

void CFMatt::compMap(bool stretch, GIMG<unsigned char>& map, GIMG<unsigned char>& background,
                     GIMG<unsigned char>& foreground) {
    const int range = static_cast<int>(highCode) - static_cast<int>(lowCode);
    int low = lowCode;
    int high = highCode;
    if (stretch && range < kByteMax) {
        subConstSat(map, lowCode, primStatus);
        // An empty or inverted range stretches as steeply as the shift allows.
        const int k = range > 0 ? std::min(kStretchNumerator / range, kByteMax) : kByteMax;
        mulConstShift(map, k, kStretchShift, primStatus);
        low = 0;
        high = kByteMax;
    }
    thresholdMask(map, low, true, background, primStatus);
    thresholdMask(map, high, false, foreground, primStatus);
    // background now marks every known pixel.
    orMaps(foreground, background, primStatus);
}
