// Float containers to host pixels: per row, the in-place multiply, rounding,
// saturation and interleaving happen in one pass that the compiler vectorises,
// so each float is read and written once (the MulC, Convert and channel-copy
// primitives in a chain would walk the float planes three times).
#include "interchange/float_to_host.h"

#include "core/ippi_common.h"
#include "core/simd_clones.h"
#include "interchange/image_type_codes.h"

namespace {

using kc::prim::rowAt;

// The float side of a conversion: one pointer per channel with its row step.
struct FloatSource {
    float* ch[3] = {nullptr, nullptr, nullptr};
    int step[3] = {0, 0, 0};
    IppiSize size;
};

// v clamped to [0, hi] and rounded to nearest, halves to even. Adding and
// taking away 2^23 rounds a float in that range exactly so in the default
// rounding mode, and keeps the loop vectorisable where a call to nearbyint
// would not. A NaN fails the first test and goes to 0.
template <typename D>
inline D toLevel(float v, float hi) {
    constexpr float kRoundingShift = 8388608.0f;  // 2^23: the float spacing there is 1
    v = v > 0.0f ? v : 0.0f;
    v = v < hi ? v : hi;
    return static_cast<D>(static_cast<int>((v + kRoundingShift) - kRoundingShift));
}

// One row of C float channels whose pixels are S floats apart (1: planes,
// 3: interleaved) into host pixels of N elements.
template <typename D, int N, int C, int S>
KC_TEMPLATE_AVX2_CLONES void fromFloatRow(float* __restrict s0, float* __restrict s1,
                                          float* __restrict s2, int w, float mul, float hi,
                                          D* __restrict d) {
    for (int i = 0; i < w; ++i) {
        const float v0 = s0[i * S] * mul;
        s0[i * S] = v0;
        d[i * N] = toLevel<D>(v0, hi);
        if constexpr (C == 3) {
            const float v1 = s1[i * S] * mul;
            const float v2 = s2[i * S] * mul;
            s1[i * S] = v1;
            s2[i * S] = v2;
            d[i * N + 1] = toLevel<D>(v1, hi);
            d[i * N + 2] = toLevel<D>(v2, hi);
        }
    }
}

template <typename D, int N, int C, int S>
void fromFloatRows(const FloatSource& f, void* dst, int dstStep) {
    // 8-bit: 256 levels, saturated at 255. 16-bit: 32768 levels, and the
    // host's range ends at 32768, so saturation and the cap are one clamp.
    const float mul = sizeof(D) == 1 ? 256.0f : 32768.0f;
    const float hi = sizeof(D) == 1 ? 255.0f : 32768.0f;
    for (int y = 0; y < f.size.height; ++y)
        fromFloatRow<D, N, C, S>(rowAt(f.ch[0], f.step[0], y),
                                 C == 3 ? rowAt(f.ch[1], f.step[1], y) : nullptr,
                                 C == 3 ? rowAt(f.ch[2], f.step[2], y) : nullptr, f.size.width, mul,
                                 hi, rowAt(static_cast<D*>(dst), dstStep, y));
}

template <int S>
int convertColour(const FloatSource& f, int type, void* buf, int step, int x, int y) {
    void* dst = addImgPtr(type, buf, step, x, y);
    switch (type) {
        case kHostRgb8:
            fromFloatRows<unsigned char, 3, 3, S>(f, dst, step);
            return 1;
        case kHostRgb16:
            fromFloatRows<unsigned short, 3, 3, S>(f, dst, step);
            return 1;
        case kHostRgbx8:
            fromFloatRows<unsigned char, 4, 3, S>(f, dst, step);
            return 1;
        case kHostRgbx16:
            fromFloatRows<unsigned short, 4, 3, S>(f, dst, step);
            return 1;
        default:
            return 0;
    }
}

}  // namespace

int convertFromIMG332f(IMG3<float>& src, int type, void* buf, int step, int x, int y) {
    FloatSource f;
    for (int c = 0; c < 3; ++c) {
        f.ch[c] = src.ptr() + c;
        f.step[c] = src.step;
    }
    f.size = src.roiSize;
    return convertColour<3>(f, type, buf, step, x, y);
}

int convertFromIMG332f(float* const planes[3], const int steps[3], IppiSize size, int type,
                       void* buf, int step, int x, int y) {
    FloatSource f;
    for (int c = 0; c < 3; ++c) {
        f.ch[c] = planes[c];
        f.step[c] = steps[c];
    }
    f.size = size;
    return convertColour<1>(f, type, buf, step, x, y);
}

int convertFromIMG332f(GIMG<float>** planes, int type, void* buf, int step, int x, int y) {
    float* const p[3] = {planes[0]->ptr(), planes[1]->ptr(), planes[2]->ptr()};
    const int steps[3] = {planes[0]->step, planes[1]->step, planes[2]->step};
    return convertFromIMG332f(p, steps, planes[0]->roiSize, type, buf, step, x, y);
}

int convertFromIMG332f(GIMG<float>& grey, int type, void* buf, int step, int x, int y) {
    FloatSource f;
    f.ch[0] = grey.ptr();
    f.step[0] = grey.step;
    f.size = grey.roiSize;
    void* dst = addImgPtr(type, buf, step, x, y);
    switch (type) {
        case kHostGrey8:
            fromFloatRows<unsigned char, 1, 1, 1>(f, dst, step);
            return 1;
        case kHostGrey16:
            fromFloatRows<unsigned short, 1, 1, 1>(f, dst, step);
            return 1;
        default:
            return 0;
    }
}
