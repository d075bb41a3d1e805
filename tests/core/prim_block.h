// Test blocks for the primitives: a region of interest inside a larger block
// whose row step is not a multiple of the region's width, pre-filled so that
// any write outside the region shows up.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "core/ipp_types.h"

namespace primtest {

// Region sizes every family runs over: single pixels, single rows and
// columns, odd sizes, and widths past any vector length.
inline const std::vector<IppiSize>& regionSizes() {
    static const std::vector<IppiSize> sizes = {{1, 1}, {1, 5}, {7, 1}, {13, 5}, {37, 9}, {66, 3}};
    return sizes;
}

// `pad` pixels of margin on every side of the region; rows carry three spare
// elements so that the step is never a multiple of the width.
template <typename T>
class Block {
  public:
    Block(IppiSize roi, int channels, int pad = 2)
        : roi_(roi),
          ch_(channels),
          pad_(pad),
          step_(static_cast<int>(sizeof(T)) * ((roi.width + 2 * pad) * channels + 3)),
          bytes_(static_cast<size_t>(step_) * (roi.height + 2 * pad)) {}

    T* ptr() { return &at(0, 0, 0); }
    const T* ptr() const { return const_cast<Block*>(this)->ptr(); }
    int step() const { return step_; }
    IppiSize roi() const { return roi_; }
    int channels() const { return ch_; }

    // Element c of region pixel (x, y); x and y may reach into the margin.
    T& at(int x, int y, int c = 0) {
        unsigned char* row = bytes_.data() + static_cast<size_t>(y + pad_) * step_;
        return reinterpret_cast<T*>(row)[(x + pad_) * ch_ + c];
    }
    T at(int x, int y, int c = 0) const { return const_cast<Block*>(this)->at(x, y, c); }

    // Every element of the block, margin included, from the generator.
    template <typename Gen>
    void fill(Gen gen) {
        T* all = reinterpret_cast<T*>(bytes_.data());
        for (size_t i = 0; i < bytes_.size() / sizeof(T); ++i) all[i] = gen();
    }
    void fillRandom(std::mt19937& rng, double lo, double hi) {
        if constexpr (std::is_floating_point_v<T>) {
            std::uniform_real_distribution<double> d(lo, hi);
            fill([&] { return static_cast<T>(d(rng)); });
        } else {
            std::uniform_int_distribution<long long> d(static_cast<long long>(lo),
                                                       static_cast<long long>(hi));
            fill([&] { return static_cast<T>(d(rng)); });
        }
    }
    void fillValue(T v) {
        fill([v] { return v; });
    }

    // A copy of the whole block to compare against later.
    std::vector<unsigned char> snapshot() const { return bytes_; }

    // True when no byte outside the region's pixels differs from the snapshot.
    bool outsideUnchanged(const std::vector<unsigned char>& before) const {
        const size_t pixelBytes = sizeof(T) * ch_;
        for (size_t i = 0; i < bytes_.size(); ++i) {
            const long long y = static_cast<long long>(i / step_) - pad_;
            const long long x =
                static_cast<long long>(i % step_) / static_cast<long long>(pixelBytes) - pad_;
            const bool inside = y >= 0 && y < roi_.height && x >= 0 && x < roi_.width;
            if (!inside && bytes_[i] != before[i]) return false;
        }
        return true;
    }

  private:
    IppiSize roi_;
    int ch_;
    int pad_;
    int step_;
    std::vector<unsigned char> bytes_;
};

// Round half to even of v / 2^sf (sf >= 0) or v * 2^-sf, saturated: the
// slow statement of the Sfs rule.
template <typename T>
T sfsReference(long long v, int sf) {
    long double q = static_cast<long double>(v);
    for (int i = 0; i < sf; ++i) q /= 2;
    for (int i = 0; i < -sf; ++i) q *= 2;
    long double fl = static_cast<long double>(static_cast<long long>(q));
    if (fl > q) fl -= 1;  // floor for negatives
    const long double frac = q - fl;
    long long r = static_cast<long long>(fl);
    if (frac > 0.5L || (frac == 0.5L && (r % 2 != 0))) ++r;
    const long long lo = std::numeric_limits<T>::min(), hi = std::numeric_limits<T>::max();
    return static_cast<T>(r < lo ? lo : (r > hi ? hi : r));
}

}  // namespace primtest
