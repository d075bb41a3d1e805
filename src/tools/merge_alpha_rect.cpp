// Pastes a recomputed alpha rectangle into the map with a feathered edge: the
// weight ramps from the rim to full strength over `border` pixels.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "api/keepcut.h"
#include "core/img.h"
#include "core/simd_clones.h"
#include "runtime/entry_guard.h"

namespace {

// Name the log lines carry.
constexpr const char* kEntry = "rkMergeAlphaRect";
// Weights are bytes: 255 takes src alone, 0 keeps dst.
constexpr int kFullWeight = 255;
// Added before dividing by kFullWeight to round to nearest.
constexpr int kHalfWeight = kFullWeight / 2;
// Division by 256, on the way to dividing by 255.
constexpr int kByteShift = 8;
// The column ramp is a fraction of 256 applied with a shift by 8.
constexpr long long kColumnScale = 256;
constexpr int kColumnShift = 8;

// Ramp length along a side of `extent` pixels: the border, but never more
// than half of the side less one pixel.
long long rampLength(int extent, int border) {
    if (static_cast<long long>(extent) - 2 <= 2LL * border) return (extent - 2) / 2;
    return border;
}

// The weight of row y before the column ramp: the row ramp near the top and
// bottom edges, full weight between.
unsigned char rowWeight(int y, int height, long long rows) {
    const long long fromEdge = std::min<long long>(y, height - 1 - y);
    if (fromEdge >= rows) return kFullWeight;
    return static_cast<unsigned char>((fromEdge * kFullWeight + kFullWeight) / (rows + 1));
}

// One row of the weight map. Columns scale what the row ramp left, so the
// corners get both ramps.
void featherRow(unsigned char* wt, int width, unsigned char rowValue, long long cols) {
    std::fill_n(wt, width, rowValue);
    for (long long i = 0; i < cols; ++i) {
        const long long t = ((i + 1) * kColumnScale / (cols + 1)) * rowValue;
        wt[i] = wt[width - 1 - i] = static_cast<unsigned char>(t >> kColumnShift);
    }
}

// dst = round((src wt + dst (255 - wt)) x (1 / 255)), the product taken in
// floats and rounded to nearest. For integer sums 0..65025 that equals
// (sum + 127) / 255 in integers: the quotient is never within 1/510 of a
// half, far beyond the float error (checked for every sum). The division is
// (t + 1 + t / 256) / 256, exact for every t up to 65152 (checked), so the
// loop stays in 16-bit lanes and vectorises.
KC_TEMPLATE_AVX2_CLONES
void mergeRow(const unsigned char* src, const unsigned char* wt, unsigned char* dst, int width) {
    for (int x = 0; x < width; ++x) {
        const auto t = static_cast<std::uint16_t>(src[x] * wt[x] + dst[x] * (kFullWeight - wt[x]) +
                                                  kHalfWeight);
        const auto q = static_cast<std::uint16_t>(t + 1 + (t >> kByteShift));
        dst[x] = static_cast<unsigned char>(q >> kByteShift);
    }
}

int mergeAlphaRect(const unsigned char* src, int srcStep, unsigned char* dst, int dstStep,
                   int width, int height, int border) {
    if (width == 0 || height == 0) return 1;
    std::vector<unsigned char> wt(width);
    const long long rows = rampLength(height, border), cols = rampLength(width, border);
    // Columns of a full-weight row between the two column ramps.
    const int ramp = static_cast<int>(std::max(cols, 0LL));
    for (int y = 0; y < height; ++y) {
        const unsigned char rowValue = rowWeight(y, height, rows);
        featherRow(wt.data(), width, rowValue, cols);
        const unsigned char* s = imgPtr(src, srcStep, 0, y);
        unsigned char* d = imgPtr(dst, dstStep, 0, y);
        if (rowValue != kFullWeight) {
            mergeRow(s, wt.data(), d, width);
            continue;
        }
        // Full weight gives (src x 255 + 127) / 255 = src: a plain copy.
        mergeRow(s, wt.data(), d, ramp);
        std::memmove(d + ramp, s + ramp, width - 2 * ramp);
        mergeRow(s + width - ramp, wt.data() + width - ramp, d + width - ramp, ramp);
    }
    return 1;
}

}  // namespace

extern "C" KC_EXPORT int rkMergeAlphaRect(const unsigned char* src, int srcStep, unsigned char* dst,
                                          int dstStep, int width, int height, int border) {
    return rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "src", src, width, height, srcStep, 1) ||
            !rkCheckBuffer(kEntry, "dst", dst, width, height, dstStep, 1))
            return kInvalidArgument;
        return mergeAlphaRect(src, srcStep, dst, dstStep, width, height, border);
    });
}
