// Public alpha operations of CFMatt: constraint maps from the caller's map,
// then Laplacian, solve and write-back.
#include <new>

#include "matting/cfmatt.h"
#include "matting/matting_map_ops.h"

namespace {
// Pictures the matting object takes: at least this many pixels for the 8-bit
// entry, and never more than this many for either.
constexpr long long kMinPixels = 10;
constexpr long long kMaxPixels = 25000000;
// Sharpening runs only above this strength.
constexpr float kSharpenThreshold = 0.2f;
}  // namespace

int CFMatt::solveFromMaps(unsigned char** planes, int step, GIMG<float>** floatPlanes,
                          GIMG<unsigned char>& weights, GIMG<unsigned char>& map,
                          GIMG<unsigned char>& alpha) {
    const int width = map.width();
    const int height = map.height();
    try {
        int nnz = 0;
        const int lap = floatPlanes ? compMatLapMerged(map, floatPlanes, nnz)
                                    : compMatLapMerged(map, planes, step, nnz);
        if (lap != 0) return lap;
        const int st = alphaMain(width, height, nnz, weights, map, alpha);
        if (st != 0) return st;
    } catch (const std::bad_alloc&) {
        myThrow(kMattAllocFailed);
    }
    outAlpha(solution.get(), width, height, weights, map, alpha);
    solution.reset();
    return 0;
}

int CFMatt::CompAlpha(unsigned char** planes, int step, int width, int height,
                      GIMG<unsigned char>& alpha) {
    const long long pixels = static_cast<long long>(width) * height;
    if (pixels < kMinPixels || pixels > kMaxPixels) return kMattSizeOutOfRange;
    GIMG<unsigned char> known(width, height);
    GIMG<unsigned char> eroded(width, height);
    compMap(true, alpha, known, eroded);
    copyMap(known, eroded, primStatus);
    ErodeMap3x3(eroded);
    return solveFromMaps(planes, step, nullptr, known, eroded, alpha);
}

int CFMatt::CompAlpha(GIMG<float>** planes, GIMG<unsigned char>& alpha) {
    const int width = planes[0]->width();
    const int height = planes[0]->height();
    if (static_cast<long long>(width) * height > kMaxPixels) return kMattSizeOutOfRange;
    GIMG<unsigned char> known(width, height);
    GIMG<unsigned char> eroded(width, height);
    compMap(true, alpha, known, eroded);
    copyMap(known, eroded, primStatus);
    ErodeMap3x3(eroded);
    return solveFromMaps(nullptr, 0, planes, known, eroded, alpha);
}

int CFMatt::CompAlpha(unsigned char** planes, int step, int width, int height, unsigned char* alpha,
                      int alphaStep) {
    // Nothing to wrap; the status is not reported by this entry either way.
    if (width <= 0 || height <= 0) return 0;
    GIMG<unsigned char> caller(width, height, alpha, alphaStep);
    GIMG<unsigned char> work(width, height);
    copyMap(caller, work, primStatus);
    CompAlpha(planes, step, width, height, work);
    if (sharpenStrength > kSharpenThreshold) SharpenAlpha(work);
    copyMap(work, caller, primStatus);
    return 0;
}

int CFMatt::CompAlphaMap(unsigned char** planes, int step, int width, int height,
                         unsigned char* known, int knownStep, unsigned char* alpha, int alphaStep) {
    GIMG<unsigned char> weights(width, height, known, knownStep);
    GIMG<unsigned char> target(width, height, alpha, alphaStep);
    GIMG<unsigned char> eroded(width, height);
    copyMap(weights, eroded, primStatus);
    ErodeMap3x3(eroded);
    return solveFromMaps(planes, step, nullptr, weights, eroded, target);
}
