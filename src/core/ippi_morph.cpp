// Morphology: separable passes for rectangles (a column pass over the rows of
// the neighbourhood, then a row pass over the shifts), one pass per mask cell
// for structuring masks. Every pass is a plain loop over a row, which the
// compiler turns into vector min/max instructions.
#include "core/ippi_morph.h"

#include <algorithm>
#include <limits>

#include "core/ippi_filter_support.h"

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
    return rectExtreme<MinOp>(pSrc, srcStep, pDst, dstStep, roiSize, kSquare3, kCentre3, false);
}

IppStatus ippiDilate3x3_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                               IppiSize roiSize) {
    return rectExtreme<MaxOp>(pSrc, srcStep, pDst, dstStep, roiSize, kSquare3, kCentre3, false);
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
