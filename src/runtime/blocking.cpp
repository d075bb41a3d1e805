// Block-size calculators for tiling.
#include "runtime/blocking.h"

namespace {
// A length up to this multiple of the block size still goes in one block
// (pixel overlap form) rather than two thin ones.
constexpr double kOneBlockSlackPx = 1.25;
// The same slack for the fractional-overlap form.
constexpr double kOneBlockSlackFrac = 1.5;
// Rounding bias when counting fractional-overlap blocks: a remainder above 15%
// of a block earns a block of its own.
constexpr double kBlockCountBias = 0.85;
}  // namespace

int calcBlk(int len, int blk, int overlap, int* blkLen, int* stride) {
    if (len < static_cast<int>(blk * kOneBlockSlackPx)) {
        *blkLen = *stride = len;
        return 1;
    }
    if (len < static_cast<int>(2 * blk * kOneBlockSlackPx)) {
        *blkLen = MAKEM2(overlap + len / 2);
        *stride = MAKEM2(len / 2);
        return 2;
    }
    // An overlap as large as the block would never advance: one block then.
    const double advance = static_cast<double>(blk) - overlap;
    int n = advance > 0 ? static_cast<int>(len / advance + 0.5) : 1;
    if (n < 1) n = 1;
    const int q = len / n;
    int r = (len - n * q + overlap) / n;
    if (r < 0) r = 0;
    *stride = q + r;
    *blkLen = MAKEM2(*stride + overlap);
    return n;
}

int calcBlk(int len, int blk, float overlapFrac, int* blkLen, int* stride) {
    const float keep = 1.0f - overlapFrac;
    if (len < static_cast<int>(blk * kOneBlockSlackFrac)) {
        *blkLen = *stride = MAKEM16(len);
        return 1;
    }
    if (len < static_cast<int>(2 * blk * keep * kOneBlockSlackFrac)) {
        *blkLen = MAKEM16(static_cast<int>(len * 0.5 / keep));
        *stride = MAKEM16(len / 2);
        return 2;
    }
    const int b = MAKEM16(blk);
    const int rest = len - b;
    const double advance = static_cast<double>(b) * keep;
    int n = advance > 0 ? static_cast<int>(rest / advance + kBlockCountBias) + 1 : 2;
    if (n < 2) n = 2;
    *blkLen = b;
    int s = rest / (n - 1) + 1;
    const int e = len - (s * (n - 1) + b);
    if (e > 0) s += e / n + 1;
    if (s >= *blkLen) s = static_cast<int>(*blkLen * keep);
    *stride = s;
    return n;
}

int calcPixelStep(int type) {
    switch (type) {
        case 1:
            return 3;  // 8-bit RGB
        case 3:
            return 6;  // 16-bit RGB
        case 5:
            return 4;  // 8-bit RGB plus a carried byte
        case 6:
            return 8;  // 16-bit RGB plus a carried channel
        default:
            return 0;
    }
}
