// Test blocks for the neighbourhood primitives: a region inside a larger block
// with a margin around it and a row step that is not a multiple of the width,
// random contents, and sentinel checks that catch writes outside the region.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <type_traits>
#include <vector>

#include "core/ipp_types.h"

namespace kctest {

// Region sizes every family is run over: single pixels, single rows and
// columns, odd sizes, widths either side of vector lengths (16, 32) and a
// width beyond the median's batch of 256.
inline const std::vector<IppiSize>& regionSizes() {
    static const std::vector<IppiSize> sizes = {{1, 1},  {1, 7},  {7, 1},   {13, 9}, {16, 4},
                                                {17, 3}, {33, 2}, {37, 21}, {2, 2},  {300, 3}};
    return sizes;
}

template <typename T, int C = 1>
class Block {
  public:
    // Extra elements at the end of each row so that the step is not w * C.
    static constexpr int kRowSlack = 3;

    Block(IppiSize roi, int margin)
        : roi_(roi),
          margin_(margin),
          rowElems_((roi.width + 2 * margin) * C + kRowSlack),
          data_(static_cast<std::size_t>(rowElems_) * (roi.height + 2 * margin)) {}

    int step() const { return rowElems_ * static_cast<int>(sizeof(T)); }
    IppiSize roi() const { return roi_; }
    int margin() const { return margin_; }
    // Element c of pixel (x, y) of the region; x and y may reach into the margin.
    T& at(int x, int y, int c = 0) {
        return data_[static_cast<std::size_t>(y + margin_) * rowElems_ + (x + margin_) * C + c];
    }
    T at(int x, int y, int c = 0) const {
        return data_[static_cast<std::size_t>(y + margin_) * rowElems_ + (x + margin_) * C + c];
    }
    T* ptr() { return &at(0, 0); }

    void fill(T v) { std::fill(data_.begin(), data_.end(), v); }

    template <typename Rng>
    void randomize(Rng& rng, double lo, double hi) {
        if constexpr (std::is_floating_point_v<T>) {
            std::uniform_real_distribution<double> d(lo, hi);
            for (T& v : data_) v = static_cast<T>(d(rng));
        } else {
            std::uniform_int_distribution<long long> d(static_cast<long long>(lo),
                                                       static_cast<long long>(hi));
            for (T& v : data_) v = static_cast<T>(d(rng));
        }
    }

    bool inRegion(std::size_t index) const {
        const int y = static_cast<int>(index / rowElems_) - margin_;
        const int e = static_cast<int>(index % rowElems_) - margin_ * C;
        return y >= 0 && y < roi_.height && e >= 0 && e < roi_.width * C;
    }

    // Every element outside the region still equals the sentinel.
    void expectOutsideIs(T sentinel) const {
        int bad = 0;
        for (std::size_t i = 0; i < data_.size(); ++i)
            if (!inRegion(i) && std::memcmp(&data_[i], &sentinel, sizeof(T)) != 0) ++bad;
        EXPECT_EQ(bad, 0) << "elements written outside the region";
    }

  private:
    IppiSize roi_;
    int margin_;
    int rowElems_;
    std::vector<T> data_;
};

}  // namespace kctest
