// Matting Laplacian straight into merged form: the same triplets the sort and
// merge of the triplet list would leave (rows ascending, columns ascending,
// one entry per pixel pair), accumulated window by window into a pattern that
// is known in advance. Sorting tens of millions of triplets cost seconds per
// million windows; this costs a fraction of one.
#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <thread>
#include <vector>

#include "matting/cfmatt.h"
#include "matting/laplacian_window.h"

namespace {

// A pixel's upper neighbours that share a window with it lie at most two
// pixels away; one bit per offset, in ascending pixel order: the pixel itself,
// (1,0), (2,0), then dx = -2..2 on the next row and on the row after.
constexpr int kUpperOffsets = 13;
using PairMask = std::uint16_t;

int offsetBit(int dx, int dy) {
    return dy == 0 ? dx : 3 + 5 * (dy - 1) + (dx + 2);
}

// Bit of every window pair (a, b), a <= b, in the row of pixel a.
struct WindowPairBits {
    int bit[kWinPixels][kWinPixels] = {};
    WindowPairBits() {
        for (int a = 0; a < kWinPixels; ++a)
            for (int b = a; b < kWinPixels; ++b)
                bit[a][b] = offsetBit(b % 3 - a % 3, b / 3 - a / 3);
    }
};
const WindowPairBits kPairBits;

// Column offset (in pixels) of each bit for an image of width w.
void bitOffsets(int w, int* off) {
    for (int dy = 0; dy <= 2; ++dy)
        for (int dx = -2; dx <= 2; ++dx)
            if (dy > 0 || dx >= 0) off[offsetBit(dx, dy)] = dy * w + dx;
}

// Rows of window centres handled by one worker; workers are separated by
// two-row seams done afterwards, so no two workers touch the same pixel.
struct CentreBand {
    int first;
    int end;
};

// Worker count: both cores of the target machines, fewer for short images.
int assemblyWorkers(int h) {
    // Below this many centre rows per worker, thread start-up outweighs the work.
    constexpr int kMinRowsPerWorker = 32;
    const int hw = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    return std::clamp((h - 2) / kMinRowsPerWorker, 1, std::min(hw, 2));
}

}  // namespace

template <typename Gather>
int CFMatt::assembleMerged(GIMG<unsigned char>& map, const Gather& gather, int& nnz) {
    tripletsMerged_ = false;
    const int w = map.width();
    const int h = map.height();
    const long long capacity = tripletCapacity(w, h, knownInteriorCount(map, primStatus));
    nnz = static_cast<int>(std::clamp<long long>(capacity, INT_MIN, INT_MAX));
    if (capacity < 1) return kMattNothingToSolve;
    if (capacity > kMaxLaplacianTriplets) throw kMattTooLarge;
    const long long pixels = static_cast<long long>(w) * h;

    // Pattern: which upper neighbours share a used window with each pixel.
    std::vector<PairMask> mask(static_cast<size_t>(pixels), 0);
    long long windows = 0;
    for (int y = 1; y < h - 1; ++y) {
        const unsigned char* m = imgPtr(map, 0, y);
        for (int x = 1; x < w - 1; ++x) {
            if (m[x] != 0) continue;
            ++windows;
            const long long first = static_cast<long long>(y - 1) * w + x - 1;
            for (int a = 0; a < kWinPixels; ++a) {
                PairMask bits = 0;
                for (int b = a; b < kWinPixels; ++b) bits |= PairMask(1u << kPairBits.bit[a][b]);
                mask[first + (a / 3) * w + a % 3] |= bits;
            }
        }
    }
    // Row starts (zero-based) of every pixel's entries in the merged list.
    std::vector<int> rowStart(static_cast<size_t>(pixels));
    long long merged = 0;
    for (long long p = 0; p < pixels; ++p) {
        rowStart[p] = static_cast<int>(merged);
        merged += std::popcount(mask[p]);
    }
    tripVal = allocZeroedArray<float>(merged);
    tripRow = allocOwnedArray<int>(merged);
    tripCol = allocOwnedArray<int>(merged);
    diagSum = allocZeroedArray<float>(pixels);
    if (!tripVal || !tripRow || !tripCol || !diagSum) myThrow(kMattAllocFailed);
    int off[kUpperOffsets];
    bitOffsets(w, off);
    for (long long p = 0; p < pixels; ++p) {
        int k = rowStart[p];
        for (int bit = 0; bit < kUpperOffsets; ++bit)
            if (mask[p] & (1u << bit)) {
                tripRow[k] = static_cast<int>(p);
                tripCol[k] = static_cast<int>(p + off[bit]);
                ++k;
            }
    }

    // Values: every window adds its affinities into its pixels' slots.
    float* val = tripVal.get();
    float* dsum = diagSum.get();
    const double eps = epsilon;
    auto accumulateRows = [&](int yFirst, int yEnd) {
        double X[kWinValues];
        double W[kWinEntries];
        for (int y = yFirst; y < yEnd; ++y) {
            const unsigned char* m = imgPtr(map, 0, y);
            for (int x = 1; x < w - 1; ++x) {
                if (m[x] != 0) continue;
                gather(x, y, X);
                windowAffinities(X, eps, W);
                const long long first = static_cast<long long>(y - 1) * w + x - 1;
                for (int a = 0; a < kWinPixels; ++a) {
                    const long long p = first + (a / 3) * w + a % 3;
                    const unsigned before = mask[p];
                    for (int b = 0; b < kWinPixels; ++b) {
                        dsum[p] += W[a * 9 + b];
                        if (b < a) continue;
                        const unsigned below = before & ((1u << kPairBits.bit[a][b]) - 1u);
                        val[rowStart[p] + std::popcount(below)] += static_cast<float>(W[a * 9 + b]);
                    }
                }
            }
        }
    };
    const int workers = assemblyWorkers(h);
    std::vector<CentreBand> bands;
    std::vector<CentreBand> seams;
    const int rows = h - 2;
    for (int t = 0; t < workers; ++t) {
        const int first = 1 + rows * t / workers;
        const int end = 1 + rows * (t + 1) / workers;
        if (t == 0) {
            bands.push_back({first, end});
        } else {
            seams.push_back({first, first + 2});
            bands.push_back({first + 2, end});
        }
    }
    std::vector<std::thread> pool;
    for (size_t t = 1; t < bands.size(); ++t)
        pool.emplace_back(accumulateRows, bands[t].first, bands[t].end);
    accumulateRows(bands[0].first, bands[0].end);
    for (auto& th : pool) th.join();
    for (const CentreBand& s : seams) accumulateRows(s.first, s.end);

    nnz = static_cast<int>(windows * kWinUpperEntries);
    mergedCount_ = static_cast<int>(merged);
    tripletsMerged_ = true;
    return 0;
}

int CFMatt::compMatLapMerged(GIMG<unsigned char>& map, GIMG<float>** planes, int& nnz) {
    return assembleMerged(map, FloatPlanesGather{planes}, nnz);
}

int CFMatt::compMatLapMerged(GIMG<unsigned char>& map, unsigned char** planes, int step, int& nnz) {
    return assembleMerged(map, BytePlanesGather{planes, step}, nnz);
}
