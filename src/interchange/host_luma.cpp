// Luma rows: one weighted sum per pixel, read through three channel pointers
// so that interleaved and planar sources share the loop.
#include "interchange/host_luma.h"

#include <cstddef>

#include "core/ippi_common.h"
#include "core/simd_clones.h"
#include "interchange/image_type_codes.h"

namespace {

using kc::prim::rowAt;

// The broadcast luma weights of red, green and blue.
constexpr float kWeightR = 0.299f;
constexpr float kWeightG = 0.587f;
constexpr float kWeightB = 0.114f;
// One 8-bit level spans 128 host 16-bit levels.
constexpr float kHostLevel = 128.0f;

struct Luma {
    float r, g, b;
    float cap;  // the output's top value
};

// Three channel pointers whose pixels are N elements apart, row steps in bytes.
template <typename S>
struct ChannelRows {
    const S* ch[3];
    int step;
};

template <typename S, int N, typename D>
KC_TEMPLATE_AVX2_CLONES void lumaRow(const S* __restrict r, const S* __restrict g,
                                     const S* __restrict b, int w, Luma k, D* __restrict out) {
    for (int i = 0; i < w; ++i) {
        const float y = k.r * static_cast<float>(r[i * N]) + k.g * static_cast<float>(g[i * N]) +
                        k.b * static_cast<float>(b[i * N]);
        out[i] = static_cast<D>(y < k.cap ? y : k.cap);
    }
}

template <typename S, int N, typename D>
void lumaRows(const ChannelRows<S>& src, int w, int h, Luma k, cv::Mat& out) {
    for (int y = 0; y < h; ++y)
        lumaRow<S, N, D>(rowAt(src.ch[0], src.step, y), rowAt(src.ch[1], src.step, y),
                         rowAt(src.ch[2], src.step, y), w, k, out.ptr<D>(y));
}

template <typename S>
ChannelRows<S> interleaved(const void* buf, int step) {
    const S* p = static_cast<const S*>(buf);
    return {{p, p + 1, p + 2}, step};
}

template <typename S>
ChannelRows<S> planar(const void* const* planes, int step, int x, int y) {
    ChannelRows<S> rows{{}, step};
    for (int c = 0; c < 3; ++c) rows.ch[c] = rowAt(static_cast<const S*>(planes[c]), step, y) + x;
    return rows;
}

bool readsBytes(int type) {
    return type == kHostRgb8 || type == kHostCvRgb8;
}

constexpr Luma kLuma8{kWeightR, kWeightG, kWeightB, 255.0f};
constexpr Luma kLuma16To8{kWeightR / kHostLevel, kWeightG / kHostLevel, kWeightB / kHostLevel,
                          255.0f};
constexpr Luma kLuma8To16{kWeightR * kHostLevel, kWeightG* kHostLevel, kWeightB* kHostLevel,
                          32767.0f};
constexpr Luma kLuma16{kWeightR, kWeightG, kWeightB, 32767.0f};

}  // namespace

void PSRGB2Y8U(int type, const void* buf, int step, int w, int h, cv::Mat& out) {
    out.create(h, w, CV_8UC1);
    if (readsBytes(type))
        lumaRows<unsigned char, 3, unsigned char>(interleaved<unsigned char>(buf, step), w, h,
                                                  kLuma8, out);
    else
        lumaRows<unsigned short, 3, unsigned char>(interleaved<unsigned short>(buf, step), w, h,
                                                   kLuma16To8, out);
}

void PSRGB2Y16S(int type, const void* buf, int step, int w, int h, cv::Mat& out) {
    out.create(h, w, CV_16SC1);
    if (type == kHostRgb8)
        lumaRows<unsigned char, 3, short>(interleaved<unsigned char>(buf, step), w, h, kLuma8To16,
                                          out);
    else
        lumaRows<unsigned short, 3, short>(interleaved<unsigned short>(buf, step), w, h, kLuma16,
                                           out);
}

void planarPSRGB2Y8U(int type, const void* const* planes, int step, int w, int h, int x, int y,
                     cv::Mat& out) {
    out.create(h, w, CV_8UC1);
    if (readsBytes(type))
        lumaRows<unsigned char, 1, unsigned char>(planar<unsigned char>(planes, step, x, y), w, h,
                                                  kLuma8, out);
    else
        lumaRows<unsigned short, 1, unsigned char>(planar<unsigned short>(planes, step, x, y), w, h,
                                                   kLuma16To8, out);
}
