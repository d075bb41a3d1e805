// Guided 2x upsampling, one pass per phase of new pixels.
//
// After the coarse values are scattered to the even/even fine pixels, three
// passes fill the rest: odd/odd pixels from their four diagonal coarse
// neighbours, then odd/even and even/odd pixels from two coarse and two
// odd/odd neighbours on the axes. Every neighbour sits at a fine position, so
// its guide colour is the guide pixel at that position, and its value is read
// back from the destination, which by then holds it.
#include "pyramid/upsample_2x.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

#include "core/half_image.h"
#include "pyramid/guide_weights.h"

namespace {

// Guide channels beyond this are refused: the engine guides by at most four.
constexpr int kMaxGuides = 4;

struct Offset {
    int dx;
    int dy;
};

// The new pixels of one phase are (x0 + 2i, y0 + 2j) for i < w' - 1, j < h' - 1;
// their four neighbours are listed in accumulation order.
struct PhaseLayout {
    int x0;
    int y0;
    std::array<Offset, 4> nb;
};

constexpr PhaseLayout kOddOdd{1, 1, {{{-1, -1}, {1, -1}, {-1, 1}, {1, 1}}}};
constexpr PhaseLayout kOddEven{1, 2, {{{-1, 0}, {1, 0}, {0, -1}, {0, 1}}}};
constexpr PhaseLayout kEvenOdd{2, 1, {{{0, -1}, {0, 1}, {-1, 0}, {1, 0}}}};

// 8-bit guides: byte difference sums saturate at 255 and index the byte table.
struct ByteMetric {
    using Diff = int;
    ByteGuideWeights table;
    explicit ByteMetric(float p) : table(makeByteGuideWeights(p)) {}
    static Diff diff(unsigned char a, unsigned char b) { return std::abs(a - b); }
    float weight(Diff sum) const { return table[std::min(sum, 255)]; }
};

// Float and 16-bit guides: float difference sums through the linear table.
template <typename T>
struct LinearMetric {
    using Diff = float;
    LinearGuideWeights table;
    explicit LinearMetric(float p) : table(p) {}
    static Diff diff(T a, T b) { return std::fabs(static_cast<float>(a) - static_cast<float>(b)); }
    float weight(Diff sum) const { return table(sum); }
};

template <typename T>
using MetricFor = std::conditional_t<std::is_same_v<T, unsigned char>, ByteMetric, LinearMetric<T>>;

// Integer results round to nearest and saturate; float results are kept as is.
template <typename T>
T fromMean(float v) {
    if constexpr (std::is_same_v<T, float>) {
        return v;
    } else {
        constexpr float lo = static_cast<float>(std::numeric_limits<T>::min());
        constexpr float hi = static_cast<float>(std::numeric_limits<T>::max());
        return static_cast<T>(std::lrintf(std::clamp(v, lo, hi)));
    }
}

// Coarse values onto the even/even fine pixels. The shared half-image helpers
// cover the element types the engine splits into phases; signed 16-bit planes
// are scattered here.
template <typename T>
void scatterCoarse(GIMG<T>& src, GIMG<T>& dst) {
    if constexpr (kc::half::HalfImageElement<T>) {
        putHalfImage(src, dst, 0, 0);
    } else {
        const IPSize n = kc::half::halfExtent(dst, src);
        for (int r = 0; r < n.height; ++r) {
            const T* from = imgPtr(src, 0, r);
            T* to = imgPtr(dst, 0, 2 * r);
            for (int c = 0; c < n.width; ++c) to[2 * c] = from[c];
        }
    }
}

template <typename T>
T* row(const GIMG<T>& img, int y) {
    return imgPtr(img, 0, y);
}

// Per-row working arrays of one pass: difference sums, the four neighbour
// weights and the reciprocal of their sum.
template <typename Diff>
struct RowScratch {
    explicit RowScratch(int count) : diff(count), inv(count) {
        for (auto& v : w) v.resize(count);
    }
    std::vector<Diff> diff;
    std::array<std::vector<float>, 4> w;
    std::vector<float> inv;
};

struct Job {
    int n;
    int nGuide;
    int cw;  // coarse working width w'
    int ch;  // coarse working height h'
};

// Weights of the four neighbours of every new pixel of one row, and the
// reciprocal of their sum. A zero (or NaN) sum falls back to the plain mean.
template <typename T, typename Metric>
void rowWeights(const Metric& metric, const PhaseLayout& ph, GIMG<T>** guide, const Job& job, int y,
                RowScratch<typename Metric::Diff>& s) {
    const int count = job.cw - 1;
    for (int k = 0; k < 4; ++k) {
        std::fill(s.diff.begin(), s.diff.end(), typename Metric::Diff{});
        for (int c = 0; c < job.nGuide; ++c) {
            const T* ref = row(*guide[c], y) + ph.x0;
            const T* nb = row(*guide[c], y + ph.nb[k].dy) + ph.x0 + ph.nb[k].dx;
            for (int i = 0; i < count; ++i) s.diff[i] += Metric::diff(ref[2 * i], nb[2 * i]);
        }
        for (int i = 0; i < count; ++i) s.w[k][i] = metric.weight(s.diff[i]);
    }
    for (int i = 0; i < count; ++i) {
        const float sum = s.w[0][i] + s.w[1][i] + s.w[2][i] + s.w[3][i];
        if (sum > 0.f) {
            s.inv[i] = 1.f / sum;
        } else {
            for (int k = 0; k < 4; ++k) s.w[k][i] = 1.f;
            s.inv[i] = 0.25f;
        }
    }
}

template <typename T, typename Metric>
void guidedPhase(const Metric& metric, const PhaseLayout& ph, GIMG<T>** dst, GIMG<T>** guide,
                 const Job& job) {
    const int count = job.cw - 1;
    if (count <= 0 || job.ch < 2) return;
    RowScratch<typename Metric::Diff> s(count);
    for (int j = 0; j + 1 < job.ch; ++j) {
        const int y = ph.y0 + 2 * j;
        rowWeights<T>(metric, ph, guide, job, y, s);
        for (int c = 0; c < job.n; ++c) {
            T* out = row(*dst[c], y) + ph.x0;
            const T* v[4];
            for (int k = 0; k < 4; ++k) v[k] = row(*dst[c], y + ph.nb[k].dy) + ph.x0 + ph.nb[k].dx;
            for (int i = 0; i < count; ++i) {
                const int x = 2 * i;
                const float acc = s.w[0][i] * static_cast<float>(v[0][x]) +
                                  s.w[1][i] * static_cast<float>(v[1][x]) +
                                  s.w[2][i] * static_cast<float>(v[2][x]) +
                                  s.w[3][i] * static_cast<float>(v[3][x]);
                out[x] = fromMean<T>(acc * s.inv[i]);
            }
        }
    }
}

}  // namespace

template <typename T>
int CUpSampleRK2X(GIMG<T>** src, GIMG<T>** dst, int n, GIMG<T>** guide, int nGuide, float p) {
    if (nGuide > kMaxGuides) return 0;
    nGuide = std::max(nGuide, 0);
    if (n <= 0) return 1;
    if (!src || !dst || (nGuide > 0 && !guide)) return 0;
    Job job{n, nGuide, std::numeric_limits<int>::max(), std::numeric_limits<int>::max()};
    for (int c = 0; c < n; ++c) {
        if (!src[c] || !dst[c]) return 0;
        job.cw = std::min({job.cw, src[c]->width(), dst[c]->width() / 2});
        job.ch = std::min({job.ch, src[c]->height(), dst[c]->height() / 2});
    }
    job.cw = std::max(job.cw, 0);
    job.ch = std::max(job.ch, 0);
    // Every new pixel reads the guide at its neighbours, up to (2w' - 1, 2h' - 1).
    for (int c = 0; c < nGuide; ++c)
        if (!guide[c] || guide[c]->width() < 2 * job.cw || guide[c]->height() < 2 * job.ch)
            return 0;

    for (int c = 0; c < n; ++c) scatterCoarse(*src[c], *dst[c]);
    const MetricFor<T> metric(p);
    // The odd/odd pass comes first: the other two read its results.
    guidedPhase<T>(metric, kOddOdd, dst, guide, job);
    guidedPhase<T>(metric, kOddEven, dst, guide, job);
    guidedPhase<T>(metric, kEvenOdd, dst, guide, job);
    return 1;
}

template int CUpSampleRK2X<unsigned char>(GIMG<unsigned char>**, GIMG<unsigned char>**, int,
                                          GIMG<unsigned char>**, int, float);
template int CUpSampleRK2X<float>(GIMG<float>**, GIMG<float>**, int, GIMG<float>**, int, float);
template int CUpSampleRK2X<short>(GIMG<short>**, GIMG<short>**, int, GIMG<short>**, int, float);
template int CUpSampleRK2X<unsigned short>(GIMG<unsigned short>**, GIMG<unsigned short>**, int,
                                           GIMG<unsigned short>**, int, float);
