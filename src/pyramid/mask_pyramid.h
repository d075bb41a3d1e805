// CMaskPyr: up to three halvings of one matting problem (three colour planes,
// the constraint map and the alpha). The alpha is solved at a coarse level and
// carried back up level by level with guided 2x upsampling.
//
// Level 0 is the caller's images, borrowed: they must outlive the pyramid's
// use and are never freed by it. Levels 1 and above are owned.
#pragma once

#include <array>
#include <memory>

#include "core/img.h"

class CMaskPyr {
  public:
    // Deepest level a pyramid may have.
    static constexpr int kMaxLevels = 3;
    static constexpr int kChannels = 3;

    CMaskPyr();
    ~CMaskPyr();
    CMaskPyr(const CMaskPyr&) = delete;
    CMaskPyr& operator=(const CMaskPyr&) = delete;

    // Builds levels 1..maxLevel from the caller's level 0 (previous owned
    // levels are released first). Returns 0 when built, 1 when maxLevel is not
    // within 0..3 or an image is missing (nothing changes then).
    int build(GIMG<unsigned char>** rgb, GIMG<unsigned char>* constraints,
              GIMG<unsigned char>* alpha, int maxLevel);
    // Forgets level 0 and frees the owned levels.
    void cleanUp();

    // The image of a level, or null when the level is not built.
    GIMG<unsigned char>* getRGBPtr(int level, int channel) const;
    GIMG<unsigned char>* getConstPtr(int level) const;
    GIMG<unsigned char>* getAlphaPtr(int level) const;
    int getMaxLevel() const { return maxLevel_; }

    // Carries the alpha from the top level down to level 0.
    void upSampling();
    // Upsamples the alpha of level (clamped to the top) into level - 1, guided
    // by the colour planes of level - 1; does nothing for level <= 0.
    void upSamplingOneLevel(int level);

  private:
    using Plane = GIMG<unsigned char>;
    static constexpr int kLevels = kMaxLevels + 1;

    bool hasLevel(int level) const { return level >= 0 && level <= maxLevel_; }

    int maxLevel_ = -1;
    std::array<std::array<Plane*, kLevels>, kChannels> rgb_{};
    std::array<Plane*, kLevels> consts_{};
    std::array<Plane*, kLevels> alphas_{};
    // Storage of levels 1..3 (index 0 stays empty: level 0 is borrowed).
    std::array<std::array<std::unique_ptr<Plane>, kLevels>, kChannels> ownedRgb_;
    std::array<std::unique_ptr<Plane>, kLevels> ownedConsts_;
    std::array<std::unique_ptr<Plane>, kLevels> ownedAlphas_;
};
