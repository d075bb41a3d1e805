// Colour-difference weights of the guided 2x upsampling: how much a known
// neighbour counts when its guide colour differs from the new pixel's by d.
#pragma once

#include <array>

// 8-bit weights, indexed by a byte difference sum d (0..255): trunc(255 *
// exp(-d / (2p))), floored at 1 so that a weight sum can never be zero.
using ByteGuideWeights = std::array<unsigned char, 256>;
ByteGuideWeights makeByteGuideWeights(float p);

// Weights for float and 16-bit guides: a 13-point piecewise-linear
// approximation of exp(-d / (2p)) that reaches 0 at the last point.
class LinearGuideWeights {
  public:
    static constexpr int kPoints = 13;

    explicit LinearGuideWeights(float p);

    // Weight of a difference sum d (d >= 0). A NaN difference weighs 0.
    float operator()(float d) const {
        if (d <= 0.f) return kValues[0];
        for (int k = 0; k + 1 < kPoints; ++k)
            if (d < levels_[k + 1]) return kValues[k] + (d - levels_[k]) * slopes_[k];
        return 0.f;
    }

    float level(int k) const { return levels_[k]; }
    static float value(int k) { return kValues[k]; }

  private:
    // exp(-L_k) at the table's levels L_k; the last point ends the table at 0.
    static constexpr std::array<float, kPoints> kValues = {
        1.0f,      0.817758f, 0.508283f, 0.252628f, 0.102674f, 0.034611f, 0.009777f,
        0.002333f, 0.000473f, 0.000082f, 0.000012f, 0.000002f, 0.0f};
    std::array<float, kPoints> levels_{};
    std::array<float, kPoints - 1> slopes_{};
};
