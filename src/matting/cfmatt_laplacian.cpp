// Matting Laplacian as a list of upper-triangle triplets: window indices, the
// window gatherers and the triplet assembly over every unknown-centred window.
#include <algorithm>
#include <climits>

#include "matting/cfmatt.h"
#include "matting/laplacian_window.h"
#include "matting/matting_map_ops.h"

namespace {
// 1/255 as the byte gatherers have always multiplied by it.
constexpr double kByteScale = 0.00392156862745098;
// Known-pixel count from a sum of 255s, safe against the sum's rounding.
constexpr double kCountRounding = 0.4;
constexpr double kKnownValue = 255.0;
}  // namespace

void CFMatt::winIdx(int x, int y, int width, int* idx) {
    int k = 0;
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) idx[k++] = (y + dy) * width + x + dx;
}

void CFMatt::copy3x3(float* src, int skip, double* dst) {
    for (int r = 0; r < 3; ++r, src += 3 + skip)
        for (int k = 0; k < 3; ++k) *dst++ = src[k];
}

void CFMatt::copy3x3(float* src, int skip, float* dst) {
    for (int r = 0; r < 3; ++r, src += 3 + skip)
        for (int k = 0; k < 3; ++k) *dst++ = src[k];
}

void CFMatt::copy3x3(unsigned char* src, int skip, double* dst) {
    for (int r = 0; r < 3; ++r, src += 3 + skip)
        for (int k = 0; k < 3; ++k) dst[r * 3 + k] = src[k];
    for (int k = 0; k < kWinPixels; ++k) dst[k] *= kByteScale;
}

void CFMatt::copy3x3C3(unsigned char* src, int skip, double* dst) {
    for (int r = 0; r < 3; ++r, src += 9 + skip)
        for (int k = 0; k < 3; ++k)
            for (int ch = 0; ch < 3; ++ch) dst[ch * 9 + r * 3 + k] = src[3 * k + ch];
    for (int k = 0; k < kWinValues; ++k) dst[k] *= kByteScale;
}

int knownInteriorCount(GIMG<unsigned char>& map, int& primStatus) {
    map.roiRect(1, 1, -1, -1);
    const double sum = sumOfMap(map, primStatus);
    map.restoreRect();
    return static_cast<int>(sum / kKnownValue + kCountRounding);
}

template <typename Gather>
int CFMatt::assembleTriplets(GIMG<unsigned char>& map, const Gather& gather, int& nnz) {
    tripletsMerged_ = false;
    const int w = map.width();
    const int h = map.height();
    const long long capacity = tripletCapacity(w, h, knownInteriorCount(map, primStatus));
    nnz = static_cast<int>(std::clamp<long long>(capacity, INT_MIN, INT_MAX));
    if (capacity < 1) return kMattNothingToSolve;
    if (capacity > kMaxLaplacianTriplets) throw kMattTooLarge;

    tripVal = allocOwnedArray<float>(capacity);
    tripRow = allocOwnedArray<int>(capacity);
    tripCol = allocOwnedArray<int>(capacity);
    diagSum = allocZeroedArray<float>(static_cast<long long>(w) * h);
    if (!tripVal || !tripRow || !tripCol || !diagSum) myThrow(kMattAllocFailed);

    int count = 0;
    int idx[kWinPixels];
    double X[kWinValues];
    double W[kWinEntries];
    for (int y = 1; y < h - 1; ++y) {
        const unsigned char* m = imgPtr(map, 0, y);
        for (int x = 1; x < w - 1; ++x) {
            if (m[x] != 0) continue;
            winIdx(x, y, w, idx);
            gather(x, y, X);
            windowAffinities(X, epsilon, W);
            for (int a = 0; a < kWinPixels; ++a)
                for (int b = 0; b < kWinPixels; ++b) {
                    diagSum[idx[a]] += W[a * 9 + b];
                    if (idx[a] <= idx[b]) {
                        tripVal[count] = static_cast<float>(W[a * 9 + b]);
                        tripRow[count] = idx[a];
                        tripCol[count] = idx[b];
                        ++count;
                    }
                }
        }
    }
    nnz = count;
    return 0;
}

int CFMatt::compMatLap(GIMG<unsigned char>& map, GIMG<float>** planes, int& nnz) {
    return assembleTriplets(map, FloatPlanesGather{planes}, nnz);
}

int CFMatt::compMatLap(GIMG<unsigned char>& map, unsigned char** planes, int step, int& nnz) {
    return assembleTriplets(map, BytePlanesGather{planes, step}, nnz);
}

int CFMatt::compMatLap(GIMG<unsigned char>& map, unsigned char* rgb, int step, int& nnz) {
    return assembleTriplets(map, InterleavedRgbGather{rgb, step}, nnz);
}
