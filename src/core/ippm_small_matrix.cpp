// Small-matrix numerics written out plainly: the sizes are tiny (colour
// models, local fits), so clarity and strided access matter more than speed.
// Work happens in double even for float matrices.
#include "core/ippm_small_matrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace {

// A strided view of a matrix's elements.
template <typename T>
struct Strided {
    T* p;
    int s1, s2;
    T& operator()(int i, int j) const {
        using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
        return *reinterpret_cast<T*>(reinterpret_cast<Byte*>(p) +
                                     static_cast<std::ptrdiff_t>(i) * s1 +
                                     static_cast<std::ptrdiff_t>(j) * s2);
    }
};

// Zeroed scratch of n doubles: on the stack for the small systems solved once
// per pixel (the 13 x 4 window fit of the coefficient upsampling, where three
// heap blocks per pixel cost more than the arithmetic), on the heap beyond.
class Scratch {
  public:
    explicit Scratch(std::size_t n) {
        if (n > kOnStack) {
            heap_.assign(n, 0.0);
            data_ = heap_.data();
        } else {
            std::fill_n(onStack_, n, 0.0);
        }
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    double& operator[](std::size_t i) { return data_[i]; }

  private:
    // Room for a 13 x 4 fit with some to spare.
    static constexpr std::size_t kOnStack = 64;
    double onStack_[kOnStack];
    std::vector<double> heap_;
    double* data_ = onStack_;
};

bool badStrides(std::initializer_list<int> strides) {
    for (int s : strides)
        if (s <= 0) return true;
    return false;
}

// dst = op(A) * B where op transposes when `transposeA`; rows x cols result.
IppStatus product(Strided<const Ipp64f> a, bool transposeA, Strided<const Ipp64f> b,
                  Strided<Ipp64f> dst, int rows, int inner, int cols) {
    std::vector<double> out(static_cast<size_t>(rows) * cols);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) {
            double acc = 0.0;
            for (int k = 0; k < inner; ++k) acc += (transposeA ? a(k, i) : a(i, k)) * b(k, j);
            out[static_cast<size_t>(i) * cols + j] = acc;
        }
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) dst(i, j) = out[static_cast<size_t>(i) * cols + j];
    return ippStsNoErr;
}

IppStatus multiply(const Ipp64f* p1, int a1, int a2, int w1, int h1, const Ipp64f* p2, int b1,
                   int b2, int w2, int h2, Ipp64f* pd, int d1, int d2, bool transposeA) {
    if (!p1 || !p2 || !pd) return ippStsNullPtrErr;
    if (w1 <= 0 || h1 <= 0 || w2 <= 0 || h2 <= 0) return ippStsSizeErr;
    if (badStrides({a1, a2, b1, b2, d1, d2})) return ippStsStepErr;
    const int inner = transposeA ? h1 : w1;
    if (inner != h2) return ippStsSizeErr;
    return product({p1, a1, a2}, transposeA, {p2, b1, b2}, {pd, d1, d2}, transposeA ? w1 : h1,
                   inner, w2);
}
}  // namespace

IppStatus ippmInvert_m_64f(const Ipp64f* src, int s1, int s2, Ipp64f* buffer, Ipp64f* dst, int d1,
                           int d2, int n) {
    if (!src || !buffer || !dst) return ippStsNullPtrErr;
    if (n <= 0) return ippStsSizeErr;
    if (badStrides({s1, s2, d1, d2})) return ippStsStepErr;
    const Strided<const Ipp64f> a{src, s1, s2};
    // Augmented rows [A | I] in a dense n x 2n scratch.
    std::vector<double> m(static_cast<size_t>(n) * 2 * n, 0.0);
    double scale = 0.0;
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            m[static_cast<size_t>(i) * 2 * n + j] = a(i, j);
            scale = std::max(scale, std::fabs(a(i, j)));
        }
        m[static_cast<size_t>(i) * 2 * n + n + i] = 1.0;
    }
    // A pivot this small relative to the largest entry means rank loss.
    const double tiny = scale * n * std::numeric_limits<double>::epsilon();
    auto row = [&](int i) { return m.data() + static_cast<size_t>(i) * 2 * n; };
    for (int k = 0; k < n; ++k) {
        int piv = k;
        for (int i = k + 1; i < n; ++i)
            if (std::fabs(row(i)[k]) > std::fabs(row(piv)[k])) piv = i;
        if (!(std::fabs(row(piv)[k]) > tiny)) return ippStsSingularErr;
        if (piv != k)
            for (int j = 0; j < 2 * n; ++j) std::swap(row(piv)[j], row(k)[j]);
        const double inv = 1.0 / row(k)[k];
        for (int j = 0; j < 2 * n; ++j) row(k)[j] *= inv;
        for (int i = 0; i < n; ++i) {
            if (i == k || row(i)[k] == 0.0) continue;
            const double f = row(i)[k];
            for (int j = 0; j < 2 * n; ++j) row(i)[j] -= f * row(k)[j];
        }
    }
    const Strided<Ipp64f> out{dst, d1, d2};
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) out(i, j) = row(i)[n + j];
    return ippStsNoErr;
}

IppStatus ippmMul_mm_64f(const Ipp64f* p1, int a1, int a2, int w1, int h1, const Ipp64f* p2, int b1,
                         int b2, int w2, int h2, Ipp64f* pd, int d1, int d2) {
    return multiply(p1, a1, a2, w1, h1, p2, b1, b2, w2, h2, pd, d1, d2, false);
}
IppStatus ippmMul_tm_64f(const Ipp64f* p1, int a1, int a2, int w1, int h1, const Ipp64f* p2, int b1,
                         int b2, int w2, int h2, Ipp64f* pd, int d1, int d2) {
    return multiply(p1, a1, a2, w1, h1, p2, b1, b2, w2, h2, pd, d1, d2, true);
}

IppStatus ippmQRDecomp_m_32f(const Ipp32f* src, int s1, int s2, Ipp32f* buffer, Ipp32f* dst, int d1,
                             int d2, int w, int h) {
    if (!src || !buffer || !dst) return ippStsNullPtrErr;
    if (w <= 0 || h < w) return ippStsSizeErr;
    if (badStrides({s1, s2, d1, d2})) return ippStsStepErr;
    const Strided<const Ipp32f> a{src, s1, s2};
    Scratch m(static_cast<size_t>(h) * w);
    auto at = [&](int i, int j) -> double& { return m[static_cast<size_t>(i) * w + j]; };
    for (int i = 0; i < h; ++i)
        for (int j = 0; j < w; ++j) at(i, j) = a(i, j);
    Scratch v(h);
    for (int k = 0; k < w; ++k) {
        double norm2 = 0.0;
        for (int i = k; i < h; ++i) norm2 += at(i, k) * at(i, k);
        if (norm2 == 0.0) return ippStsSingularErr;
        // alpha takes the sign opposite to the pivot so that v's head never cancels.
        const double alpha = at(k, k) > 0 ? -std::sqrt(norm2) : std::sqrt(norm2);
        const double head = at(k, k) - alpha;
        v[k] = 1.0;
        for (int i = k + 1; i < h; ++i) v[i] = at(i, k) / head;
        double vv = 0.0;
        for (int i = k; i < h; ++i) vv += v[i] * v[i];
        const double tau = 2.0 / vv;
        for (int j = k + 1; j < w; ++j) {
            double dot = 0.0;
            for (int i = k; i < h; ++i) dot += v[i] * at(i, j);
            for (int i = k; i < h; ++i) at(i, j) -= tau * dot * v[i];
        }
        at(k, k) = alpha;
        for (int i = k + 1; i < h; ++i) at(i, k) = v[i];
    }
    const Strided<Ipp32f> out{dst, d1, d2};
    for (int i = 0; i < h; ++i)
        for (int j = 0; j < w; ++j) out(i, j) = static_cast<Ipp32f>(at(i, j));
    return ippStsNoErr;
}

IppStatus ippmQRBackSubst_mv_32f(const Ipp32f* qr, int s1, int s2, Ipp32f* buffer, const Ipp32f* b,
                                 int bStride, Ipp32f* x, int xStride, int w, int h) {
    if (!qr || !buffer || !b || !x) return ippStsNullPtrErr;
    if (w <= 0 || h < w) return ippStsSizeErr;
    if (badStrides({s1, s2, bStride, xStride})) return ippStsStepErr;
    const Strided<const Ipp32f> m{qr, s1, s2};
    const Strided<const Ipp32f> bv{b, 0, bStride};
    Scratch y(h);
    for (int i = 0; i < h; ++i) y[i] = bv(0, i);
    // y = Q^T b: the reflections in the order they were made.
    for (int k = 0; k < w; ++k) {
        double vv = 1.0, dot = y[k];
        for (int i = k + 1; i < h; ++i) {
            vv += double(m(i, k)) * m(i, k);
            dot += double(m(i, k)) * y[i];
        }
        const double f = 2.0 / vv * dot;
        y[k] -= f;
        for (int i = k + 1; i < h; ++i) y[i] -= f * m(i, k);
    }
    // R x = y, bottom up.
    const Strided<Ipp32f> xv{x, 0, xStride};
    for (int i = w - 1; i >= 0; --i) {
        double acc = y[i];
        for (int j = i + 1; j < w; ++j) acc -= double(m(i, j)) * y[j];
        if (m(i, i) == 0.f) return ippStsSingularErr;
        y[i] = acc / m(i, i);
    }
    for (int i = 0; i < w; ++i) xv(0, i) = static_cast<Ipp32f>(y[i]);
    return ippStsNoErr;
}
