// Gaussian noise: a 32-bit linear congruential generator (small state that
// fits the seed word exactly) feeding the Box-Muller transform.
#include "core/ippi_noise.h"

#include <cmath>

#include "core/ippi_common.h"

namespace {
using namespace kc::prim;

class GaussSource {
  public:
    explicit GaussSource(unsigned int seed) : state_(seed) {}

    float next(float mean, float stdev) {
        if (hasSpare_) {
            hasSpare_ = false;
            return mean + stdev * spare_;
        }
        // u1 in (0, 1] keeps the logarithm finite.
        const double u1 = (uniform24() + 1.0) / 16777216.0;
        const double u2 = uniform24() / 16777216.0;
        const double radius = std::sqrt(-2.0 * std::log(u1));
        const double angle = 6.283185307179586 * u2;  // 2*pi
        spare_ = static_cast<float>(radius * std::sin(angle));
        hasSpare_ = true;
        return mean + stdev * static_cast<float>(radius * std::cos(angle));
    }
    unsigned int state() const { return state_; }

  private:
    // The multiplier and increment of the classic full-period 32-bit LCG; the
    // top 24 bits are the well-mixed ones.
    unsigned int uniform24() {
        state_ = state_ * 1664525u + 1013904223u;
        return state_ >> 8;
    }
    unsigned int state_;
    float spare_ = 0.f;
    bool hasSpare_ = false;
};

IppStatus addGauss(Ipp32f* d, int ds, IppiSize r, int ch, int used, Ipp32f mean, Ipp32f stdev,
                   unsigned int* seed) {
    if (!seed) return ippStsNullPtrErr;
    if (IppStatus st = checkPlanes(r, {plane(d, ds, ch)})) return st;
    if (!(stdev >= 0.f)) return ippStsBadArgErr;
    GaussSource source(*seed);
    for (int y = 0; y < r.height; ++y) {
        Ipp32f* row = rowAt(d, ds, y);
        for (int x = 0; x < r.width; ++x)
            for (int c = 0; c < used; ++c) row[x * ch + c] += source.next(mean, stdev);
    }
    *seed = source.state();
    return ippStsNoErr;
}
}  // namespace

IppStatus ippiAddRandGauss_Direct_32f_C1IR(Ipp32f* d, int ds, IppiSize r, Ipp32f mean, Ipp32f stdev,
                                           unsigned int* seed) {
    return addGauss(d, ds, r, 1, 1, mean, stdev, seed);
}
IppStatus ippiAddRandGauss_Direct_32f_AC4IR(Ipp32f* d, int ds, IppiSize r, Ipp32f mean,
                                            Ipp32f stdev, unsigned int* seed) {
    return addGauss(d, ds, r, 4, 3, mean, stdev, seed);
}
