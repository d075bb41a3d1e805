// Host pixels to float containers: one row at a time, channels separated,
// widened and scaled in a single pass that the compiler vectorises. (Chained
// primitives, a channel copy, a widening and a multiply-add per channel, would
// walk the 12-byte float pixels three times; at 12 megapixels that is the
// difference between a memcpy and several.) Borders use the edge replication
// of core/borders.h.
#include "interchange/host_to_float.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "core/borders.h"
#include "core/ippi_common.h"
#include "core/simd_clones.h"
#include "interchange/image_type_codes.h"

namespace {

using kc::prim::rowAt;

// The float side of a conversion: one pointer per channel with its row step,
// and the rectangle's size.
struct FloatRect {
    float* ch[3] = {nullptr, nullptr, nullptr};
    int step[3] = {0, 0, 0};
    IppiSize size;
};

FloatRect rectOf(GIMG<float>** planes) {
    FloatRect r;
    for (int c = 0; c < 3; ++c) {
        r.ch[c] = planes[c]->ptr();
        r.step[c] = planes[c]->step;
    }
    r.size = planes[0]->roiSize;
    return r;
}

FloatRect rectOf(IMG3<float>& img) {
    FloatRect r;
    for (int c = 0; c < 3; ++c) {
        r.ch[c] = img.ptr() + c;
        r.step[c] = img.step;
    }
    r.size = img.roiSize;
    return r;
}

FloatRect rectOf(GIMG<float>& grey) {
    FloatRect r;
    r.ch[0] = grey.ptr();
    r.step[0] = grey.step;
    r.size = grey.roiSize;
    return r;
}

// The rectangle less `border` pixels on every side; pixels are `stride`
// floats apart.
FloatRect inset(FloatRect r, int border, int stride) {
    for (int c = 0; c < 3; ++c)
        if (r.ch[c]) r.ch[c] = rowAt(r.ch[c], r.step[c], border) + border * stride;
    r.size = {r.size.width - 2 * border, r.size.height - 2 * border};
    return r;
}

// One host row of N elements per pixel into C float channels whose pixels are
// D floats apart (1: planes, 3: interleaved).
template <typename S, int N, int C, int D>
KC_TEMPLATE_AVX2_CLONES void toFloatRow(const S* __restrict s, int w, float scale, float offset,
                                        float* __restrict d0, float* __restrict d1,
                                        float* __restrict d2) {
    for (int i = 0; i < w; ++i) {
        d0[i * D] = static_cast<float>(s[i * N]) * scale + offset;
        if constexpr (C == 3) {
            d1[i * D] = static_cast<float>(s[i * N + 1]) * scale + offset;
            d2[i * D] = static_cast<float>(s[i * N + 2]) * scale + offset;
        }
    }
}

template <typename S, int N, int C, int D>
void toFloatRows(const void* src, int srcStep, const FloatRect& r, bool withOffset) {
    // A level of the host range: 8-bit hosts count 256 levels, 16-bit hosts 32768.
    const float scale = sizeof(S) == 1 ? 1.0f / 256.0f : 1.0f / 32768.0f;
    // Just short of half a level (0.49, not 0.5): the engine's tuning assumes it.
    const float offset = withOffset ? 0.49f * scale : 0.0f;
    for (int y = 0; y < r.size.height; ++y)
        toFloatRow<S, N, C, D>(rowAt(static_cast<const S*>(src), srcStep, y), r.size.width, scale,
                               offset, rowAt(r.ch[0], r.step[0], y),
                               C == 3 ? rowAt(r.ch[1], r.step[1], y) : nullptr,
                               C == 3 ? rowAt(r.ch[2], r.step[2], y) : nullptr);
}

// Colour codes into three channels D floats apart; 0 for other codes.
template <int D>
int convertColour(int type, const void* buf, int step, int x, int y, const FloatRect& r,
                  bool withOffset) {
    const void* src = addImgPtr(type, buf, step, x, y);
    switch (type) {
        case kHostRgb8:
            toFloatRows<unsigned char, 3, 3, D>(src, step, r, withOffset);
            return 1;
        case kHostRgb16:
            toFloatRows<unsigned short, 3, 3, D>(src, step, r, withOffset);
            return 1;
        case kHostRgbx8:
            toFloatRows<unsigned char, 4, 3, D>(src, step, r, withOffset);
            return 1;
        case kHostRgbx16:
            toFloatRows<unsigned short, 4, 3, D>(src, step, r, withOffset);
            return 1;
        default:
            return 0;
    }
}

int convertGrey(int type, const void* buf, int step, int x, int y, const FloatRect& r,
                bool withOffset) {
    const void* src = addImgPtr(type, buf, step, x, y);
    switch (type) {
        case kHostGrey8:
            toFloatRows<unsigned char, 1, 1, 1>(src, step, r, withOffset);
            return 1;
        case kHostGrey16:
            toFloatRows<unsigned short, 1, 1, 1>(src, step, r, withOffset);
            return 1;
        default:
            return 0;
    }
}

// The w x h top-left corner of the region, w and h clamped to it.
FloatRect corner(FloatRect r, int w, int h) {
    r.size = {std::clamp(w, 0, r.size.width), std::clamp(h, 0, r.size.height)};
    return r;
}

// Repeats the corner's last column and row over the rest of the region.
void extendCorner(GIMG<float>& img, IppiSize corner) {
    if (corner.width < 1 || corner.height < 1) return;
    imageExtendBorder(img, 0, 0, img.roiSize.width - corner.width,
                      img.roiSize.height - corner.height);
}

}  // namespace

int initGIMGP32f(int type, void* base, int step, int, int, int x, int y, int w, int h,
                 GIMG<float>** planes) {
    for (int c = 0; c < 3; ++c) {
        if (planes[c] && planes[c]->size == IPSize(w, h)) continue;
        std::unique_ptr<GIMG<float>>(planes[c]).reset();
        // Null first, so that a failed allocation leaves no dangling plane.
        planes[c] = nullptr;
        planes[c] = std::make_unique<GIMG<float>>(w, h).release();
    }
    convertToIMG332f(type, base, step, x, y, planes);
    return 3;
}

int convertToIMG332f(int type, const void* buf, int step, int x, int y, GIMG<float>** planes) {
    return convertColour<1>(type, buf, step, x, y, rectOf(planes), true);
}

int convertToIMG332f(int type, const void* buf, int step, int x, int y, IMG3<float>& dst) {
    return convertColour<3>(type, buf, step, x, y, rectOf(dst), true);
}

int convertToIMG332f(int type, const void* buf, int step, int x, int y, GIMG<float>& grey) {
    return convertGrey(type, buf, step, x, y, rectOf(grey), true);
}

int convertToIMG332fDupBorder(int type, const void* buf, int step, int x, int y, int border,
                              IMG3<float>& dst) {
    if (!convertColour<3>(type, buf, step, x, y, inset(rectOf(dst), border, 3), true)) return 0;
    imageExtendBorder(dst, border, border, border, border);
    return 1;
}

int convertToIMGP32fDupBorder(int type, const void* buf, int step, int x, int y, int border,
                              GIMG<float>** planes) {
    if (!convertColour<1>(type, buf, step, x, y, inset(rectOf(planes), border, 1), true)) return 0;
    for (int c = 0; c < 3; ++c) imageExtendBorder(*planes[c], border, border, border, border);
    return 1;
}

int convertToGIMG32fBExt(int type, const void* buf, int step, int x, int y, int w, int h,
                         GIMG<float>& dst) {
    const FloatRect r = corner(rectOf(dst), w, h);
    if (!convertGrey(type, buf, step, x, y, r, false)) return 0;
    extendCorner(dst, r.size);
    return 1;
}

int convertToGIMG32fBExt(int type, const void* buf, int step, int x, int y, int w, int h,
                         GIMG<float>** planes) {
    const FloatRect r = corner(rectOf(planes), w, h);
    if (!convertColour<1>(type, buf, step, x, y, r, false)) return 0;
    for (int c = 0; c < 3; ++c) extendCorner(*planes[c], r.size);
    return 1;
}
