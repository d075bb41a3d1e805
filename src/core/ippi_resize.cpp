// Separable resampling. Each axis gets a table of (source index, weight) taps
// per output position; source rows are resampled horizontally once each into a
// small ring of float rows, and every output row is a weighted sum of the ring
// rows its vertical taps name. All work memory comes in one block.
#include "core/ippi_resize.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "core/ippi_filter_support.h"
#include "core/simd_clones.h"

namespace {

using kc::filt::rowAt;

// Where an axis of the destination looks in the source, in source pixel
// indices (pixel k spans [k, k+1), its centre is k + 0.5):
//   point sample of output d:  scale * d + sampleOffset   (in centre units: k)
//   area covered by output d:  [scale * d + edgeOffset, ... + scale)
struct AxisMap {
    double scale;
    double sampleOffset;
    double edgeOffset;
};

int tapsFor(int interpolation, double scale) {
    switch (interpolation) {
        case IPPI_INTER_NN:
            return 1;
        case IPPI_INTER_LINEAR:
            return 2;
        case IPPI_INTER_CUBIC:
            return 4;
        case IPPI_INTER_LANCZOS:
            return 6;
        case IPPI_INTER_SUPER:
            return static_cast<int>(std::ceil(scale)) + 1;
        default:
            return 0;
    }
}

// Catmull-Rom: the cubic convolution kernel with a = -1/2.
double cubicWeight(double x) {
    constexpr double a = -0.5;
    x = std::fabs(x);
    if (x < 1) return ((a + 2) * x - (a + 3)) * x * x + 1;
    if (x < 2) return ((a * x - 5 * a) * x + 8 * a) * x - 4 * a;
    return 0;
}

// Lanczos window of three lobes.
double lanczosWeight(double x) {
    constexpr double kLobes = 3;
    constexpr double kPi = 3.14159265358979323846;
    x = std::fabs(x);
    if (x < 1e-12) return 1;
    if (x >= kLobes) return 0;
    const double px = kPi * x;
    return kLobes * std::sin(px) * std::sin(px / kLobes) / (px * px);
}

// Tap table of one axis: `count` outputs starting at destination index d0,
// `taps` (index, weight) pairs each, indices clamped to [lo, hi). Output-major
// (all taps of an output together) or tap-major (tap k of every output
// together, so that a row loop over outputs reads the table contiguously).
struct AxisTaps {
    int count = 0;
    int taps = 0;
    int* index = nullptr;
    float* weight = nullptr;
    bool tapMajor = false;
    std::size_t at(int o, int k) const {
        return tapMajor ? static_cast<std::size_t>(k) * count + o
                        : static_cast<std::size_t>(o) * taps + k;
    }
};

void buildTaps(const AxisTaps& t, const AxisMap& m, int d0, int interpolation, int lo, int hi) {
    for (int o = 0; o < t.count; ++o) {
        const double d = d0 + o;
        const double c = m.scale * d + m.sampleOffset;
        const double a = m.scale * d + m.edgeOffset, b = a + m.scale;
        const int base = static_cast<int>(std::floor(c));
        const double frac = c - base;
        // First source index and number of real taps; the rest weigh nothing.
        int first = base - (t.taps / 2 - 1), n = t.taps;
        if (interpolation == IPPI_INTER_NN) {
            first = static_cast<int>(std::floor(c + 0.5));
        } else if (interpolation == IPPI_INTER_SUPER) {
            first = static_cast<int>(std::floor(a));
            n = std::min(t.taps, static_cast<int>(std::ceil(b)) - first);
        }
        auto rawWeight = [&](int k) {
            if (interpolation == IPPI_INTER_NN) return 1.0;
            if (interpolation == IPPI_INTER_SUPER)  // overlap of pixel first+k with [a, b)
                return std::max(0.0, std::min(b, first + k + 1.0) - std::max(a, first + k + 0.0));
            const double x = frac + (t.taps / 2 - 1) - k;  // distance from the sample point
            if (interpolation == IPPI_INTER_LINEAR) return 1 - std::fabs(x);
            return interpolation == IPPI_INTER_CUBIC ? cubicWeight(x) : lanczosWeight(x);
        };
        double total = 0;
        for (int k = 0; k < n; ++k) total += rawWeight(k);
        for (int k = 0; k < t.taps; ++k) {
            const bool real = k < n;
            t.index[t.at(o, k)] = std::clamp(first + (real ? k : n - 1), lo, hi - 1);
            t.weight[t.at(o, k)] =
                real && total != 0 ? static_cast<float>(rawWeight(k) / total) : 0.0f;
        }
    }
}

// Work memory, carved in 64-byte pieces from one block.
constexpr std::size_t kPiece = 64;
std::size_t pieceBytes(std::size_t bytes) {
    return (bytes + kPiece - 1) / kPiece * kPiece;
}

// srcWidth: the source region's width, for the one-channel forms' float copy
// of a source row and their per-tap offsets.
struct Plan {
    int nx, ny, kx, ky, channels, srcWidth;
    std::size_t bytes() const {
        const std::size_t floatRow = channels == 1 ? pieceBytes(sizeof(float) * srcWidth) : 0;
        return pieceBytes(sizeof(int) * nx * kx) + pieceBytes(sizeof(float) * nx * kx) +
               pieceBytes(sizeof(int) * ny * ky) + pieceBytes(sizeof(float) * ny * ky) +
               pieceBytes(sizeof(float) * ky * nx * channels) + pieceBytes(sizeof(int) * ky) +
               pieceBytes(sizeof(float) * nx * channels) + floatRow + pieceBytes(sizeof(int) * kx) +
               kPiece;
    }
};

template <typename P>
P* carve(Ipp8u*& cursor, std::size_t count) {
    P* p = reinterpret_cast<P*>(cursor);
    cursor += pieceBytes(count * sizeof(P));
    return p;
}

template <typename T>
T fromFloat(float v) {
    if constexpr (std::is_same_v<T, float>) {
        return v;
    } else {
        constexpr float lo = std::is_same_v<T, Ipp8u> ? 0.0f : -32768.0f;
        constexpr float hi = std::is_same_v<T, Ipp8u> ? 255.0f : 32767.0f;
        // Shifted to non-negative so that truncation rounds to nearest. The
        // saturation happens after the conversion, in integers: rounding is
        // monotonic, so a value beyond either end still lands beyond it, and
        // an integer clamp vectorises where a float one (with its NaN rules)
        // does not. Sums of integer pixels are finite and far inside int.
        const int rounded = static_cast<int>(v - lo + 0.5f) + static_cast<int>(lo);
        return static_cast<T>(std::clamp(rounded, static_cast<int>(lo), static_cast<int>(hi)));
    }
}

// The vertical taps: acc[e] += w * h[e].
__attribute__((target_clones("avx2", "default"))) void addWeightedRow(float* __restrict acc,
                                                                      const float* __restrict h,
                                                                      float w, int n) {
    for (int e = 0; e < n; ++e) acc[e] += w * h[e];
}

// A finished row of elements to the element type. Separate restrict operands:
// stored bytes could otherwise alias the loop bound, which keeps it scalar.
template <typename T>
KC_TEMPLATE_AVX2_CLONES void storeRow(const float* __restrict acc, T* __restrict out, int n) {
    for (int e = 0; e < n; ++e) out[e] = fromFloat<T>(acc[e]);
}

// Horizontal taps of one-channel rows. Output o sums, for k = 0, 1, ..., the
// products weight(o, k) * f[index(o, k)] into a float that starts at 0; every
// path below does exactly these operations in this order, so they agree to the
// bit.
//
// Over most of a row the taps of a reduction by a whole factor S sit at
// S * o + offset[k]: there the reads are strided loads, which vectorise (the
// general index table needs gathers, which do not).
// One tap over outputs [0, n): out[i] += w[i] * f[S * i]. One call per tap:
// with the tap loop inside, the compiler jams pairs of taps into one scalar
// loop. Pointer-sized indices: an int index times S could overflow as far as
// the compiler knows, which also keeps the loop scalar.
template <int S>
KC_TEMPLATE_AVX2_CLONES void addStridedTap(const float* __restrict w, const float* __restrict f,
                                           float* __restrict out, std::ptrdiff_t n) {
    for (std::ptrdiff_t i = 0; i < n; ++i) out[i] += w[i] * f[S * i];
}

template <int S>
void stridedTaps(const float* f, const float* weight, const int* offset, int taps, int count,
                 int from, int to, float* out) {
    std::fill(out + from, out + to, 0.0f);
    for (int k = 0; k < taps; ++k)
        addStridedTap<S>(weight + static_cast<std::size_t>(k) * count + from,
                         f + offset[k] + static_cast<std::ptrdiff_t>(S) * from, out + from,
                         to - from);
}

void tableTaps(const float* f, const AxisTaps& t, int from, int to, float* out) {
    for (int o = from; o < to; ++o) {
        float v = 0.0f;
        for (int k = 0; k < t.taps; ++k) v += t.weight[t.at(o, k)] * f[t.index[t.at(o, k)]];
        out[o] = v;
    }
}

// The whole reduction factors with a strided kernel.
constexpr int kMaxStride = 4;

// Outputs [from, to) whose taps sit at stride * o + offset[k], grown from the
// middle of the row; an empty span when the scale is no whole factor.
struct StridedSpan {
    int stride = 0, from = 0, to = 0;
};

StridedSpan findStridedSpan(const AxisTaps& t, double scale, int* offset) {
    StridedSpan span;
    const int stride = static_cast<int>(std::lround(scale));
    if (stride < 1 || stride > kMaxStride || std::fabs(scale - stride) > 1e-12 || t.count == 0)
        return span;
    const int mid = t.count / 2;
    for (int k = 0; k < t.taps; ++k) offset[k] = t.index[t.at(mid, k)] - stride * mid;
    auto fits = [&](int o) {
        for (int k = 0; k < t.taps; ++k)
            if (t.index[t.at(o, k)] != stride * o + offset[k]) return false;
        return true;
    };
    span.stride = stride;
    span.from = mid;
    span.to = mid + 1;
    while (span.from > 0 && fits(span.from - 1)) --span.from;
    while (span.to < t.count && fits(span.to)) ++span.to;
    return span;
}

void horizontalRow(const float* f, const AxisTaps& t, const StridedSpan& span, const int* offset,
                   float* out) {
    if (span.stride == 0) return tableTaps(f, t, 0, t.count, out);
    tableTaps(f, t, 0, span.from, out);
    const int args[] = {t.taps, t.count, span.from, span.to};
    switch (span.stride) {
        case 1:
            stridedTaps<1>(f, t.weight, offset, args[0], args[1], args[2], args[3], out);
            break;
        case 2:
            stridedTaps<2>(f, t.weight, offset, args[0], args[1], args[2], args[3], out);
            break;
        case 3:
            stridedTaps<3>(f, t.weight, offset, args[0], args[1], args[2], args[3], out);
            break;
        default:
            stridedTaps<4>(f, t.weight, offset, args[0], args[1], args[2], args[3], out);
            break;
    }
    tableTaps(f, t, span.to, t.count, out);
}

struct Job {
    AxisMap mx, my;
    int dx0, dy0;     // first destination column / row written (destination indices)
    IppiRect srcRoi;  // clamped source region
    int interpolation;
};

// Runs a planned resample; dst points at destination pixel (dx0, dy0).
template <typename T, int C, int Written>
void resample(const T* src, int srcStep, T* dst, int dstStep, const Job& job, const Plan& plan,
              Ipp8u* work) {
    Ipp8u* cursor = reinterpret_cast<Ipp8u*>((reinterpret_cast<std::uintptr_t>(work) + kPiece - 1) /
                                             kPiece * kPiece);
    AxisTaps tx{plan.nx, plan.kx, carve<int>(cursor, plan.nx * plan.kx),
                carve<float>(cursor, plan.nx * plan.kx)};
    AxisTaps ty{plan.ny, plan.ky, carve<int>(cursor, plan.ny * plan.ky),
                carve<float>(cursor, plan.ny * plan.ky)};
    const int rowLen = plan.nx * C;
    float* ring = carve<float>(cursor, static_cast<std::size_t>(plan.ky) * rowLen);
    int* ringRow = carve<int>(cursor, plan.ky);
    float* acc = carve<float>(cursor, rowLen);
    const IppiRect& r = job.srcRoi;
    // One channel: the source row is widened to float once, then read by
    // whole-row tap loops over a tap-major table.
    constexpr bool kRowWise = C == 1;
    float* floatRow = kRowWise ? carve<float>(cursor, plan.srcWidth) : nullptr;
    int* offset = carve<int>(cursor, plan.kx);
    tx.tapMajor = kRowWise;
    buildTaps(tx, job.mx, job.dx0, job.interpolation, r.x, r.x + r.width);
    if (kRowWise)  // indices into the float row, which starts at the region's left edge
        for (std::size_t i = 0; i < static_cast<std::size_t>(plan.nx) * plan.kx; ++i)
            tx.index[i] -= r.x;
    buildTaps(ty, job.my, job.dy0, job.interpolation, r.y, r.y + r.height);
    std::fill_n(ringRow, plan.ky, -1);
    const StridedSpan span = kRowWise ? findStridedSpan(tx, job.mx.scale, offset) : StridedSpan{};

    auto horizontal = [&](int sy) {
        const int slot = sy % plan.ky;
        float* out = ring + static_cast<std::size_t>(slot) * rowLen;
        if (ringRow[slot] == sy) return out;
        ringRow[slot] = sy;
        const T* s = rowAt(src, srcStep, sy);
        if constexpr (kRowWise) {
            for (int i = 0; i < r.width; ++i) floatRow[i] = static_cast<float>(s[r.x + i]);
            horizontalRow(floatRow, tx, span, offset, out);
            return out;
        }
        for (int o = 0; o < plan.nx; ++o) {
            const int* idx = tx.index + static_cast<std::size_t>(o) * plan.kx;
            const float* w = tx.weight + static_cast<std::size_t>(o) * plan.kx;
            float v[C] = {};
            for (int k = 0; k < plan.kx; ++k)
                for (int c = 0; c < C; ++c) v[c] += w[k] * static_cast<float>(s[idx[k] * C + c]);
            for (int c = 0; c < C; ++c) out[o * C + c] = v[c];
        }
        return out;
    };

    for (int oy = 0; oy < plan.ny; ++oy) {
        const int* idx = ty.index + static_cast<std::size_t>(oy) * plan.ky;
        const float* w = ty.weight + static_cast<std::size_t>(oy) * plan.ky;
        std::fill_n(acc, rowLen, 0.0f);
        for (int k = 0; k < plan.ky; ++k) {
            if (w[k] == 0.0f) continue;
            const float* h = horizontal(idx[k]);
            addWeightedRow(acc, h, w[k], rowLen);
        }
        T* out = rowAt(dst, dstStep, oy);
        if constexpr (Written == C) {
            storeRow(acc, out, rowLen);
        } else {
            for (int o = 0; o < plan.nx; ++o)
                for (int c = 0; c < Written; ++c) out[o * C + c] = fromFloat<T>(acc[o * C + c]);
        }
    }
}

bool modeKnown(int interpolation) {
    return tapsFor(interpolation, 1.0) > 0;
}

// The clamped source region, or an empty one.
IppiRect clipToImage(IppiRect r, IppiSize size) {
    const int x0 = std::max(r.x, 0), y0 = std::max(r.y, 0);
    const int x1 = std::min(r.x + r.width, size.width), y1 = std::min(r.y + r.height, size.height);
    return {x0, y0, std::max(0, x1 - x0), std::max(0, y1 - y0)};
}

// Destination indices [from, to) of range [d0, d0 + n) whose centre samples
// land inside [lo, hi) of the source.
void coveredRange(const AxisMap& m, int d0, int n, int lo, int hi, int& from, int& to) {
    from = to = d0;
    bool started = false;
    for (int d = d0; d < d0 + n; ++d) {
        const double k = std::floor(m.scale * d + m.sampleOffset + 0.5);
        const bool in = k >= lo && k < hi;
        if (in && !started) from = d, started = true;
        if (in) to = d + 1;
    }
}

Plan planFor(int nx, int ny, const Job& job, int channels) {
    return {nx,
            ny,
            tapsFor(job.interpolation, job.mx.scale),
            tapsFor(job.interpolation, job.my.scale),
            channels,
            job.srcRoi.width};
}

template <typename T, int C, int Written>
IppStatus runWithWork(const T* src, int srcStep, T* dst, int dstStep, const Job& job,
                      const Plan& plan, Ipp8u* buffer, std::size_t bufferBytes) {
    if (buffer && bufferBytes >= plan.bytes()) {
        resample<T, C, Written>(src, srcStep, dst, dstStep, job, plan, buffer);
        return ippStsNoErr;
    }
    kc::filt::Scratch<Ipp8u> own(plan.bytes());
    if (!own.ok()) return ippStsMemAllocErr;
    resample<T, C, Written>(src, srcStep, dst, dstStep, job, plan, own.get());
    return ippStsNoErr;
}

std::size_t bufSizeFor(IppiRect srcROI, IppiRect dstROI, int nChannel, int interpolation) {
    const double sx = double(srcROI.width) / dstROI.width,
                 sy = double(srcROI.height) / dstROI.height;
    const Plan plan{
        dstROI.width, dstROI.height, tapsFor(interpolation, sx), tapsFor(interpolation, sy),
        nChannel,     srcROI.width};
    return plan.bytes();
}

template <typename T, int C>
IppStatus resizeSqrPixel(const T* src, IppiSize srcSize, int srcStep, IppiRect srcROI, T* dst,
                         int dstStep, IppiRect dstROI, double xFactor, double yFactor,
                         double xShift, double yShift, int interpolation, Ipp8u* buffer) {
    if (!src || !dst || !buffer) return ippStsNullPtrErr;
    if (srcSize.width <= 0 || srcSize.height <= 0 || dstROI.width <= 0 || dstROI.height <= 0)
        return ippStsSizeErr;
    if (srcStep < static_cast<long long>(srcSize.width) * C * static_cast<long long>(sizeof(T)))
        return ippStsStepErr;
    if (dstStep <
        static_cast<long long>(dstROI.x + dstROI.width) * C * static_cast<long long>(sizeof(T)))
        return ippStsStepErr;
    if (!(xFactor > 0) || !(yFactor > 0) || !modeKnown(interpolation)) return ippStsBadArgErr;
    if (dstROI.x < 0 || dstROI.y < 0) return ippStsSizeErr;
    const IppiRect roi = clipToImage(srcROI, srcSize);
    if (roi.width <= 0 || roi.height <= 0) return ippStsSizeErr;

    Job job;
    job.mx = {1 / xFactor, (0.5 - xShift) / xFactor - 0.5, -xShift / xFactor};
    job.my = {1 / yFactor, (0.5 - yShift) / yFactor - 0.5, -yShift / yFactor};
    job.srcRoi = roi;
    job.interpolation = interpolation;
    int x0, x1, y0, y1;
    coveredRange(job.mx, dstROI.x, dstROI.width, roi.x, roi.x + roi.width, x0, x1);
    coveredRange(job.my, dstROI.y, dstROI.height, roi.y, roi.y + roi.height, y0, y1);
    if (x1 <= x0 || y1 <= y0) return ippStsNoErr;  // nothing of the source lands in dstROI
    job.dx0 = x0;
    job.dy0 = y0;
    const Plan plan = planFor(x1 - x0, y1 - y0, job, C);
    T* first = rowAt(dst, dstStep, y0) + static_cast<std::size_t>(x0) * C;
    return runWithWork<T, C, C>(src, srcStep, first, dstStep, job, plan, buffer,
                                bufSizeFor(srcROI, dstROI, C, interpolation));
}

template <int C, int Written>
IppStatus resizeIndexed(const Ipp8u* src, IppiSize srcSize, int srcStep, IppiRect srcROI,
                        Ipp8u* dst, int dstStep, IppiSize dstRoiSize, double xFactor,
                        double yFactor, int interpolation) {
    if (!src || !dst) return ippStsNullPtrErr;
    if (srcSize.width <= 0 || srcSize.height <= 0 || dstRoiSize.width <= 0 ||
        dstRoiSize.height <= 0)
        return ippStsSizeErr;
    if (srcStep < static_cast<long long>(srcSize.width) * C ||
        dstStep < static_cast<long long>(dstRoiSize.width) * C)
        return ippStsStepErr;
    if (!(xFactor > 0) || !(yFactor > 0) || !modeKnown(interpolation)) return ippStsBadArgErr;
    const IppiRect roi = clipToImage(srcROI, srcSize);
    if (roi.width <= 0 || roi.height <= 0) return ippStsSizeErr;
    Job job;
    job.mx = {1 / xFactor, double(roi.x), double(roi.x)};
    job.my = {1 / yFactor, double(roi.y), double(roi.y)};
    job.srcRoi = roi;
    job.interpolation = interpolation;
    job.dx0 = job.dy0 = 0;
    const Plan plan = planFor(dstRoiSize.width, dstRoiSize.height, job, C);
    return runWithWork<Ipp8u, C, Written>(src, srcStep, dst, dstStep, job, plan, nullptr, 0);
}

}  // namespace

IppStatus ippiResizeGetBufSize(IppiRect srcROI, IppiRect dstROI, int nChannel, int interpolation,
                               int* pSize) {
    if (!pSize) return ippStsNullPtrErr;
    if (srcROI.width <= 0 || srcROI.height <= 0 || dstROI.width <= 0 || dstROI.height <= 0)
        return ippStsSizeErr;
    if (nChannel != 1 && nChannel != 3 && nChannel != 4) return ippStsBadArgErr;
    if (!modeKnown(interpolation)) return ippStsBadArgErr;
    const std::size_t bytes = bufSizeFor(srcROI, dstROI, nChannel, interpolation);
    if (bytes > 0x7fffffffu) return ippStsSizeErr;
    *pSize = static_cast<int>(bytes);
    return ippStsNoErr;
}

IppStatus ippiResizeSqrPixel_8u_C1R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep,
                                    IppiRect srcROI, Ipp8u* pDst, int dstStep, IppiRect dstROI,
                                    double xFactor, double yFactor, double xShift, double yShift,
                                    int interpolation, Ipp8u* pBuffer) {
    return resizeSqrPixel<Ipp8u, 1>(pSrc, srcSize, srcStep, srcROI, pDst, dstStep, dstROI, xFactor,
                                    yFactor, xShift, yShift, interpolation, pBuffer);
}
IppStatus ippiResizeSqrPixel_8u_C4R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep,
                                    IppiRect srcROI, Ipp8u* pDst, int dstStep, IppiRect dstROI,
                                    double xFactor, double yFactor, double xShift, double yShift,
                                    int interpolation, Ipp8u* pBuffer) {
    return resizeSqrPixel<Ipp8u, 4>(pSrc, srcSize, srcStep, srcROI, pDst, dstStep, dstROI, xFactor,
                                    yFactor, xShift, yShift, interpolation, pBuffer);
}
IppStatus ippiResizeSqrPixel_16s_C1R(const Ipp16s* pSrc, IppiSize srcSize, int srcStep,
                                     IppiRect srcROI, Ipp16s* pDst, int dstStep, IppiRect dstROI,
                                     double xFactor, double yFactor, double xShift, double yShift,
                                     int interpolation, Ipp8u* pBuffer) {
    return resizeSqrPixel<Ipp16s, 1>(pSrc, srcSize, srcStep, srcROI, pDst, dstStep, dstROI, xFactor,
                                     yFactor, xShift, yShift, interpolation, pBuffer);
}
IppStatus ippiResizeSqrPixel_32f_C1R(const Ipp32f* pSrc, IppiSize srcSize, int srcStep,
                                     IppiRect srcROI, Ipp32f* pDst, int dstStep, IppiRect dstROI,
                                     double xFactor, double yFactor, double xShift, double yShift,
                                     int interpolation, Ipp8u* pBuffer) {
    return resizeSqrPixel<Ipp32f, 1>(pSrc, srcSize, srcStep, srcROI, pDst, dstStep, dstROI, xFactor,
                                     yFactor, xShift, yShift, interpolation, pBuffer);
}

IppStatus ippiResize_8u_C1R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep, IppiRect srcROI,
                            Ipp8u* pDst, int dstStep, IppiSize dstRoiSize, double xFactor,
                            double yFactor, int interpolation) {
    return resizeIndexed<1, 1>(pSrc, srcSize, srcStep, srcROI, pDst, dstStep, dstRoiSize, xFactor,
                               yFactor, interpolation);
}
IppStatus ippiResize_8u_AC4R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep, IppiRect srcROI,
                             Ipp8u* pDst, int dstStep, IppiSize dstRoiSize, double xFactor,
                             double yFactor, int interpolation) {
    return resizeIndexed<4, 3>(pSrc, srcSize, srcStep, srcROI, pDst, dstStep, dstRoiSize, xFactor,
                               yFactor, interpolation);
}
