// Test blocks for the primitives and filters: a region of interest inside a
// larger block whose row step is not a multiple of the region's width, so that
// any write outside the region, or any read of the wrong row, shows up.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "core/ipp_types.h"

namespace primtest {

// Region sizes every family runs over: single pixels, single rows and
// columns, odd sizes, widths either side of the vector lengths (16, 32, 64)
// and a width beyond the median's batch of 256.
inline const std::vector<IppiSize>& regionSizes() {
    static const std::vector<IppiSize> sizes = {{1, 1},   {1, 7},  {7, 1},  {2, 2},
                                                {13, 9},  {16, 4}, {17, 3}, {33, 2},
                                                {37, 21}, {66, 3}, {300, 3}};
    return sizes;
}

// `pad` pixels of margin on every side of the region; rows carry three spare
// elements so that the step is never a multiple of the width.
template <typename T>
class Block {
  public:
    Block(IppiSize roi, int channels = 1, int pad = 2)
        : roi_(roi),
          ch_(channels),
          pad_(pad),
          rowElems_((roi.width + 2 * pad) * channels + 3),
          data_(static_cast<size_t>(rowElems_) * (roi.height + 2 * pad)) {}

    T* ptr() { return &at(0, 0, 0); }
    const T* ptr() const { return const_cast<Block*>(this)->ptr(); }
    int step() const { return rowElems_ * static_cast<int>(sizeof(T)); }
    IppiSize roi() const { return roi_; }
    int channels() const { return ch_; }

    // Element c of region pixel (x, y); x and y may reach into the margin.
    T& at(int x, int y, int c = 0) {
        return data_[static_cast<size_t>(y + pad_) * rowElems_ + (x + pad_) * ch_ + c];
    }
    T at(int x, int y, int c = 0) const { return const_cast<Block*>(this)->at(x, y, c); }

    // Every element of the block, margin included, from the generator.
    template <typename Gen>
    void fill(Gen gen) {
        for (T& v : data_) v = gen();
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

    // True when no element outside the region differs (bit for bit, so NaN
    // sentinels work) from the same element of `before`.
    bool outsideUnchanged(const Block& before) const {
        for (size_t i = 0; i < data_.size(); ++i) {
            const long long y = static_cast<long long>(i / rowElems_) - pad_;
            const long long e = static_cast<long long>(i % rowElems_) - pad_ * ch_;
            const bool inside = y >= 0 && y < roi_.height && e >= 0 && e < roi_.width * ch_;
            if (!inside && std::memcmp(&data_[i], &before.data_[i], sizeof(T)) != 0) return false;
        }
        return true;
    }

    bool outsideIs(T v) const {
        Block filled = *this;
        filled.fillValue(v);
        return outsideUnchanged(filled);
    }

  private:
    IppiSize roi_;
    int ch_;
    int pad_;
    int rowElems_;
    std::vector<T> data_;
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

// Random blocks of every region size, the source with srcCh channels and the
// destination with dstCh: after prim(src, dst) every destination element must
// equal want(src, old dst, x, y, c) (within tol, relative, when tol > 0), and
// nothing outside the destination's region may change.
template <typename S, typename D, typename Prim, typename Want>
void checkPixels(int srcCh, int dstCh, double lo, double hi, Prim prim, Want want, double tol = 0) {
    std::mt19937 rng(13);
    for (IppiSize r : regionSizes()) {
        SCOPED_TRACE(testing::Message() << r.width << "x" << r.height);
        Block<S> src(r, srcCh);
        Block<D> dst(r, dstCh);
        src.fillRandom(rng, lo, hi);
        dst.fillRandom(rng, lo, hi);
        const Block<D> old = dst;
        ASSERT_EQ(prim(src.ptr(), src.step(), dst.ptr(), dst.step(), r), 0);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x)
                for (int c = 0; c < dstCh; ++c) {
                    const double w = want(src, old, x, y, c);
                    if (tol == 0)
                        ASSERT_EQ(double(dst.at(x, y, c)), w)
                            << "at " << x << "," << y << " channel " << c;
                    else
                        ASSERT_NEAR(double(dst.at(x, y, c)), w, tol * (1 + std::fabs(w)));
                }
        EXPECT_TRUE(dst.outsideUnchanged(old));
    }
}

// The same with as many channels on both sides, each destination element
// computed from ref(source element, old destination element, channel).
template <typename S, typename D, typename Prim, typename Ref>
void checkInPlace(int ch, double lo, double hi, Prim prim, Ref ref, double tol = 0) {
    checkPixels<S, D>(
        ch, ch, lo, hi, prim,
        [&](const Block<S>& s, const Block<D>& d, int x, int y, int c) {
            return double(ref(s.at(x, y, c), d.at(x, y, c), c));
        },
        tol);
}

}  // namespace primtest
