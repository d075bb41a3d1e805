// Pastes a recomputed alpha rectangle into the map with a feathered edge: the
// weight ramps from the rim to full strength over `border` pixels.
#include <algorithm>

#include "api/keepcut.h"
#include "core/img.h"
#include "core/ippi_arith.h"
#include "core/ippi_arith_const.h"
#include "core/ippi_convert.h"
#include "core/ippi_set.h"
#include "runtime/entry_guard.h"

namespace {

// Name the log lines carry.
constexpr const char* kEntry = "rkMergeAlphaRect";
// Weights are bytes: 255 takes src alone, 0 keeps dst.
constexpr int kFullWeight = 255;
// The column ramp is a fraction of 256 applied with a shift by 8.
constexpr long long kColumnScale = 256;
constexpr int kColumnShift = 8;

// Ramp length along a side of `extent` pixels: the border, but never more
// than half of the side less one pixel.
long long rampLength(int extent, int border) {
    if (static_cast<long long>(extent) - 2 <= 2LL * border) return (extent - 2) / 2;
    return border;
}

void featherWeights(GIMG<unsigned char>& wt, int border) {
    const int width = wt.width(), height = wt.height();
    ippiSet_8u_C1R(kFullWeight, wt.ptr(), wt.step, wt.roiSize);
    const long long rows = rampLength(height, border);
    for (long long i = 0; i < rows; ++i) {
        const auto v = static_cast<unsigned char>((i * kFullWeight + kFullWeight) / (rows + 1));
        std::fill_n(imgPtr(wt, 0, static_cast<int>(i)), width, v);
        std::fill_n(imgPtr(wt, 0, static_cast<int>(height - 1 - i)), width, v);
    }
    // Columns scale what the rows left, so the corners get both ramps.
    const long long cols = rampLength(width, border);
    for (int y = 0; y < height; ++y) {
        unsigned char* row = imgPtr(wt, 0, y);
        for (long long i = 0; i < cols; ++i) {
            const long long t = ((i + 1) * kColumnScale / (cols + 1)) * row[i];
            row[i] = row[width - 1 - i] = static_cast<unsigned char>(t >> kColumnShift);
        }
    }
}

int mergeAlphaRect(const unsigned char* src, int srcStep, unsigned char* dst, int dstStep,
                   int width, int height, int border) {
    if (width == 0 || height == 0) return 1;
    const IppiSize roi{width, height};
    GIMG<unsigned char> wt(width, height);
    featherWeights(wt, border);
    GIMG<unsigned char> rest(width, height);  // 255 - weight, the share of dst
    ippiSet_8u_C1R(kFullWeight, rest.ptr(), rest.step, roi);
    ippiSub_8u_C1IRSfs(wt.ptr(), wt.step, rest.ptr(), rest.step, roi, 0);

    GIMG<float> sum(width, height);
    ippiSet_32f_C1R(0.0f, sum.ptr(), sum.step, roi);
    ippiAddProduct_8u32f_C1IR(src, srcStep, wt.ptr(), wt.step, sum.ptr(), sum.step, roi);
    ippiAddProduct_8u32f_C1IR(dst, dstStep, rest.ptr(), rest.step, sum.ptr(), sum.step, roi);
    ippiMulC_32f_C1IR(1.0f / kFullWeight, sum.ptr(), sum.step, roi);
    ippiConvert_32f8u_C1R(sum.ptr(), sum.step, dst, dstStep, roi, ippRndNear);
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
