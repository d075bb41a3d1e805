// Morphology: a fused single sweep for the 8-bit 3x3 square, separable passes
// for other rectangles (a column pass over the rows of the neighbourhood, then
// a row pass over the shifts), one pass per mask cell for structuring masks. Every pass is a plain
// loop over a row, which the compiler turns into vector min/max instructions.
#include "core/ippi_morph.h"

#include <algorithm>
#include <limits>

#include "core/ippi_filter_support.h"
#include "core/simd_clones.h"

namespace {

using kc::filt::rowAt;
using kc::filt::Scratch;
using kc::filt::SourceRowWindow;

struct MinOp {
    template <typename T>
    static T apply(T a, T b) {
        return b < a ? b : a;
    }
    template <typename T>
    static constexpr T neutral() {
        return std::numeric_limits<T>::has_infinity ? std::numeric_limits<T>::infinity()
                                                    : std::numeric_limits<T>::max();
    }
};

struct MaxOp {
    template <typename T>
    static T apply(T a, T b) {
        return a < b ? b : a;
    }
    template <typename T>
    static constexpr T neutral() {
        return std::numeric_limits<T>::has_infinity ? -std::numeric_limits<T>::infinity()
                                                    : std::numeric_limits<T>::lowest();
    }
};

bool anchorInside(IppiSize mask, IppiPoint anchor) {
    return mask.width > 0 && mask.height > 0 && anchor.x >= 0 && anchor.x < mask.width &&
           anchor.y >= 0 && anchor.y < mask.height;
}

// Extreme over a w x h rectangle anchored at (ax, ay).
template <typename Op, typename T>
IppStatus rectExtreme(const T* src, int srcStep, T* dst, int dstStep, IppiSize roi, IppiSize mask,
                      IppiPoint anchor, bool inPlace) {
    const IppStatus st = kc::filt::checkPlanes(src, srcStep, dst, dstStep, roi, sizeof(T));
    if (st != ippStsNoErr) return st;
    if (!anchorInside(mask, anchor)) return ippStsBadArgErr;
    const int left = anchor.x, right = mask.width - 1 - anchor.x;
    const int span = left + roi.width + right;
    SourceRowWindow<T> window(src, srcStep, roi.width, left, right, anchor.y, mask.height, inPlace);
    Scratch<T> column(span);
    if (!window.ok() || !column.ok()) return ippStsMemAllocErr;
    T* v = column.get();
    for (int y = 0; y < roi.height; ++y) {
        const T* const* rows = window.rowsFor(y);
        // Column pass: the first two rows combine in one sweep (no plain copy).
        const T* r0 = rows[0] - left;
        const T* r1 = rows[mask.height > 1 ? 1 : 0] - left;
        for (int t = 0; t < span; ++t) v[t] = Op::apply(r0[t], r1[t]);
        for (int j = 2; j < mask.height; ++j) {
            const T* r = rows[j] - left;
            for (int t = 0; t < span; ++t) v[t] = Op::apply(v[t], r[t]);
        }
        // Row pass over the shifts, likewise starting with two at once.
        T* out = rowAt(dst, dstStep, y);
        const T* v1 = v + (mask.width > 1 ? 1 : 0);
        for (int x = 0; x < roi.width; ++x) out[x] = Op::apply(v[x], v1[x]);
        for (int i = 2; i < mask.width; ++i) {
            const T* shifted = v + i;
            for (int x = 0; x < roi.width; ++x) out[x] = Op::apply(out[x], shifted[x]);
        }
    }
    return ippStsNoErr;
}

// The 3x3 extreme of 8-bit planes in one sweep per pair of output rows: the
// two rows share their middle source rows, and no intermediate row goes
// through memory. Cloned for AVX2, where a vector holds 32 pixels.
template <typename Op>
KC_TEMPLATE_AVX2_CLONES void extreme3x3Pair(const Ipp8u* r0, const Ipp8u* r1, const Ipp8u* r2,
                                            const Ipp8u* r3, Ipp8u* out0, Ipp8u* out1, int width) {
    for (int x = 0; x < width; ++x) {
        const Ipp8u left = Op::apply(r1[x - 1], r2[x - 1]);
        const Ipp8u mid = Op::apply(r1[x], r2[x]);
        const Ipp8u right = Op::apply(r1[x + 1], r2[x + 1]);
        const Ipp8u shared = Op::apply(Op::apply(left, mid), right);
        const Ipp8u top = Op::apply(Op::apply(r0[x - 1], r0[x]), r0[x + 1]);
        const Ipp8u bottom = Op::apply(Op::apply(r3[x - 1], r3[x]), r3[x + 1]);
        out0[x] = Op::apply(shared, top);
        out1[x] = Op::apply(shared, bottom);
    }
}

template <typename Op>
KC_TEMPLATE_AVX2_CLONES void extreme3x3Row(const Ipp8u* r0, const Ipp8u* r1, const Ipp8u* r2,
                                           Ipp8u* out, int width) {
    for (int x = 0; x < width; ++x) {
        const Ipp8u left = Op::apply(Op::apply(r0[x - 1], r1[x - 1]), r2[x - 1]);
        const Ipp8u mid = Op::apply(Op::apply(r0[x], r1[x]), r2[x]);
        const Ipp8u right = Op::apply(Op::apply(r0[x + 1], r1[x + 1]), r2[x + 1]);
        out[x] = Op::apply(Op::apply(left, mid), right);
    }
}

template <typename Op>
IppStatus extreme3x3(const Ipp8u* src, int srcStep, Ipp8u* dst, int dstStep, IppiSize roi) {
    const IppStatus st = kc::filt::checkPlanes(src, srcStep, dst, dstStep, roi, 1);
    if (st != ippStsNoErr) return st;
    int y = 0;
    for (; y + 1 < roi.height; y += 2)
        extreme3x3Pair<Op>(rowAt(src, srcStep, y - 1), rowAt(src, srcStep, y),
                           rowAt(src, srcStep, y + 1), rowAt(src, srcStep, y + 2),
                           rowAt(dst, dstStep, y), rowAt(dst, dstStep, y + 1), roi.width);
    if (y < roi.height)
        extreme3x3Row<Op>(rowAt(src, srcStep, y - 1), rowAt(src, srcStep, y),
                          rowAt(src, srcStep, y + 1), rowAt(dst, dstStep, y), roi.width);
    return ippStsNoErr;
}

// Extreme over the non-zero cells of a structuring mask, in place.
template <typename Op>
IppStatus maskedExtreme(Ipp8u* img, int step, IppiSize roi, const Ipp8u* mask, IppiSize maskSize,
                        IppiPoint anchor) {
    const IppStatus st = kc::filt::checkPlane(img, step, roi, 1);
    if (st != ippStsNoErr) return st;
    if (!mask) return ippStsNullPtrErr;
    if (!anchorInside(maskSize, anchor)) return ippStsBadArgErr;
    const long long cells = static_cast<long long>(maskSize.width) * maskSize.height;
    if (std::none_of(mask, mask + cells, [](Ipp8u m) { return m != 0; })) return ippStsBadArgErr;
    SourceRowWindow<Ipp8u> window(img, step, roi.width, anchor.x, maskSize.width - 1 - anchor.x,
                                  anchor.y, maskSize.height, true);
    if (!window.ok()) return ippStsMemAllocErr;
    for (int y = 0; y < roi.height; ++y) {
        const Ipp8u* const* rows = window.rowsFor(y);
        Ipp8u* out = rowAt(img, step, y);
        std::fill(out, out + roi.width, Op::template neutral<Ipp8u>());
        for (int j = 0; j < maskSize.height; ++j) {
            for (int i = 0; i < maskSize.width; ++i) {
                if (!mask[j * maskSize.width + i]) continue;
                const Ipp8u* r = rows[j] + (i - anchor.x);
                for (int x = 0; x < roi.width; ++x) out[x] = Op::apply(out[x], r[x]);
            }
        }
    }
    return ippStsNoErr;
}

// The 3x3 square centred on the pixel.
const IppiSize kSquare3{3, 3};
constexpr IppiPoint kCentre3{1, 1};

}  // namespace

IppStatus ippiErode3x3_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                              IppiSize roiSize) {
    return extreme3x3<MinOp>(pSrc, srcStep, pDst, dstStep, roiSize);
}

IppStatus ippiDilate3x3_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roiSize) {
    return extreme3x3<MaxOp>(pSrc, srcStep, pDst, dstStep, roiSize);
}

IppStatus ippiErode3x3_32f_C1IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roiSize) {
    return rectExtreme<MinOp>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, kSquare3, kCentre3,
                              true);
}

IppStatus ippiDilate3x3_32f_C1IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roiSize) {
    return rectExtreme<MaxOp>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, kSquare3, kCentre3,
                              true);
}

IppStatus ippiErode_8u_C1IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize, const Ipp8u* pMask,
                            IppiSize maskSize, IppiPoint anchor) {
    return maskedExtreme<MinOp>(pSrcDst, srcDstStep, roiSize, pMask, maskSize, anchor);
}

IppStatus ippiDilate_8u_C1IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize, const Ipp8u* pMask,
                             IppiSize maskSize, IppiPoint anchor) {
    return maskedExtreme<MaxOp>(pSrcDst, srcDstStep, roiSize, pMask, maskSize, anchor);
}

IppStatus ippiFilterMax_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize dstRoiSize, IppiSize maskSize, IppiPoint anchor) {
    return rectExtreme<MaxOp>(pSrc, srcStep, pDst, dstStep, dstRoiSize, maskSize, anchor, false);
}
