// Weight tables of the guided 2x upsampling.
#include "pyramid/guide_weights.h"

#include <cmath>

namespace {

// Byte weights below this are raised to 1: the floor keeps far neighbours
// faintly present instead of letting them vanish.
constexpr double kByteWeightFloorBelow = 1.4;

// Levels L_k (in units of 2p) of the piecewise-linear exponential; the last
// level is absolute and far beyond any reachable difference sum.
constexpr std::array<float, LinearGuideWeights::kPoints - 1> kScaledLevels = {
    0.0f,      0.201189f, 0.676718f, 1.375838f, 2.276198f,  3.363586f,
    4.627748f, 6.060752f, 7.656186f, 9.408694f, 11.313708f, 13.367253f};
constexpr float kLastLevel = 131072.0f;

}  // namespace

ByteGuideWeights makeByteGuideWeights(float p) {
    ByteGuideWeights table{};
    for (int d = 0; d < 256; ++d) {
        // A non-positive p is the limit of a vanishing p: only d = 0 keeps full weight.
        const double v = p > 0.f ? 255.0 * std::exp(-0.5 * d / p) : (d == 0 ? 255.0 : 0.0);
        table[d] = v < kByteWeightFloorBelow ? 1 : static_cast<unsigned char>(v);
    }
    return table;
}

LinearGuideWeights::LinearGuideWeights(float p) {
    const float scale = p > 0.f ? 2.f * p : 0.f;
    for (int k = 0; k + 1 < kPoints; ++k) levels_[k] = kScaledLevels[k] * scale;
    levels_[kPoints - 1] = kLastLevel;
    for (int k = 0; k + 1 < kPoints; ++k) {
        const float width = levels_[k + 1] - levels_[k];
        slopes_[k] = width > 0.f ? (kValues[k + 1] - kValues[k]) / width : 0.f;
    }
}
