// Building, releasing and upsampling the mask pyramid.
#include "pyramid/mask_pyramid.h"

#include "core/borders.h"
#include "pyramid/downsample_2x.h"
#include "pyramid/upsample_2x.h"

namespace {

// Upsampling weight parameter of the pyramid: how fast a neighbour's weight
// falls off with its colour difference.
constexpr float kPyramidGuideParam = 9.0f;

using Plane = GIMG<unsigned char>;

// The next level of one plane, of size ceil(src / 2) in each direction. The
// decimation stops at floor(src / 2); when a side is odd, the last column or
// row repeats its neighbour.
std::unique_ptr<Plane> halveLevel(Plane& src, bool smooth) {
    const int w = src.width();
    const int h = src.height();
    auto out = std::make_unique<Plane>((w + 1) / 2, (h + 1) / 2);
    if (w < 2 || h < 2) {
        // A one-pixel side has no pair to decimate and nothing to repeat from;
        // there is no interior to blur either, so plain decimation is exact.
        for (int y = 0; y < out->height(); ++y)
            for (int x = 0; x < out->width(); ++x) *imgPtr(*out, x, y) = *imgPtr(src, 2 * x, 2 * y);
        return out;
    }
    CDnsampleRK2X(src, *out, smooth);
    imageExtendBorder(*out, 0, 0, w % 2, h % 2);
    return out;
}

}  // namespace

CMaskPyr::CMaskPyr() = default;

CMaskPyr::~CMaskPyr() {
    cleanUp();
}

int CMaskPyr::build(Plane** rgb, Plane* constraints, Plane* alpha, int maxLevel) {
    if (maxLevel < 0 || maxLevel > kMaxLevels) return 1;
    if (!rgb || !rgb[0] || !rgb[1] || !rgb[2] || !constraints || !alpha) return 1;
    cleanUp();
    maxLevel_ = maxLevel;
    for (int c = 0; c < kChannels; ++c) rgb_[c][0] = rgb[c];
    consts_[0] = constraints;
    alphas_[0] = alpha;
    for (int l = 1; l <= maxLevel; ++l) {
        // Colours are smoothed before decimation; brush codes and alpha values
        // must never be blended, so those are decimated plainly.
        for (int c = 0; c < kChannels; ++c) {
            ownedRgb_[c][l] = halveLevel(*rgb_[c][l - 1], true);
            rgb_[c][l] = ownedRgb_[c][l].get();
        }
        ownedConsts_[l] = halveLevel(*consts_[l - 1], false);
        consts_[l] = ownedConsts_[l].get();
        ownedAlphas_[l] = halveLevel(*alphas_[l - 1], false);
        alphas_[l] = ownedAlphas_[l].get();
    }
    return 0;
}

void CMaskPyr::cleanUp() {
    for (int c = 0; c < kChannels; ++c) {
        rgb_[c].fill(nullptr);
        for (auto& p : ownedRgb_[c]) p.reset();
    }
    consts_.fill(nullptr);
    alphas_.fill(nullptr);
    for (auto& p : ownedConsts_) p.reset();
    for (auto& p : ownedAlphas_) p.reset();
}

GIMG<unsigned char>* CMaskPyr::getRGBPtr(int level, int channel) const {
    if (!hasLevel(level) || channel < 0 || channel >= kChannels) return nullptr;
    return rgb_[channel][level];
}

GIMG<unsigned char>* CMaskPyr::getConstPtr(int level) const {
    return hasLevel(level) ? consts_[level] : nullptr;
}

GIMG<unsigned char>* CMaskPyr::getAlphaPtr(int level) const {
    return hasLevel(level) ? alphas_[level] : nullptr;
}

void CMaskPyr::upSampling() {
    for (int level = maxLevel_; level >= 1; --level) upSamplingOneLevel(level);
}

void CMaskPyr::upSamplingOneLevel(int level) {
    if (level <= 0) return;
    if (level > maxLevel_) level = maxLevel_;
    if (level <= 0 || !alphas_[level] || !alphas_[level - 1]) return;
    Plane* guide[kChannels] = {rgb_[0][level - 1], rgb_[1][level - 1], rgb_[2][level - 1]};
    CUpSampleRK2X(&alphas_[level], &alphas_[level - 1], 1, guide, kChannels, kPyramidGuideParam);
}
