// Pixel counts over 8-bit maps, row by row so that padded rows and views into
// larger buffers are counted correctly.
#include "pipeline/comp_pixels.h"

#include <opencv2/core.hpp>

#include "pipeline/mask_codes.h"

namespace {

// Bytes 0..5 already read as background and 250..255 as foreground.
constexpr int kBandAbove = kMaskBandLow - 1;
constexpr int kBandBelow = 250;

bool inBand(unsigned char v) {
    return v > kBandAbove && v < kBandBelow;
}

template <typename Pred>
int countBytes(const unsigned char* map, std::ptrdiff_t rowBytes, int width, int height,
               Pred pred) {
    int n = 0;
    for (int y = 0; y < height; ++y) {
        const unsigned char* row = map + y * rowBytes;
        for (int x = 0; x < width; ++x) n += pred(row[x]) ? 1 : 0;
    }
    return n;
}

}  // namespace

int numCompPixels(GIMG<unsigned char>& map) {
    return countBytes(map.ptr(), map.step, map.width(), map.height(),
                      [](unsigned char v) { return (v & kMaskPaintedBit) == 0; });
}

int numCompPixels(unsigned char* map, int rowBytes, int width, int height) {
    return countBytes(map, rowBytes, width, height,
                      [](unsigned char v) { return (v & kMaskPaintedBit) == 0 && inBand(v); });
}

int numCompPixelsRecoverComputeOnly(cv::Mat& map) {
    CV_Assert(map.type() == CV_8UC1);
    return countBytes(map.ptr(), static_cast<std::ptrdiff_t>(map.step), map.cols, map.rows, inBand);
}
