// YCbCr through the colour-twist primitive, HLS through the interleaved float
// HLS primitives, and luma as a weighted sum of planes.
#include "interchange/colour_matrix.h"

#include "core/img_ops.h"
#include "core/ippi_color.h"
#include "interchange/yuv_pixel.h"

namespace {

// Rows: three coefficients on (R, G, B) and an offset. The coefficients are
// the engine's own and kept digit for digit, including where the biased and
// unbiased forms were rounded differently; matte results depend on them.
constexpr Ipp32f kRgbToYcbcr[3][4] = {
    {0.299f, 0.587f, 0.114f, 0.f},
    {-0.13062f, -0.25644f, 0.38706f, 0.61176f},
    {0.37288f, -0.31224f, -0.060639f, 0.53725f},
};
constexpr Ipp32f kRgbToYcbcrNoBias[3][4] = {
    {0.299f, 0.587f, 0.114f, 0.f},
    {-0.1306f, -0.2564f, 0.3871f, 0.f},
    {0.3729f, -0.3122f, -0.0606f, 0.f},
};
// Rows on (Y, Cb, Cr) giving R, G, B.
constexpr Ipp32f kYcbcrToRgb[3][4] = {
    {1.f, 0.f, 1.88f, -1.01003f},
    {1.f, -0.4446f, -0.9576f, 0.786429f},
    {1.f, 2.289f, 0.f, -1.400319f},
};
constexpr Ipp32f kYcbcrToRgbNoBias[3][4] = {
    {1.f, 0.f, 1.88f, 0.f},
    {1.f, -0.4446f, -0.9576f, 0.f},
    {1.f, 2.289f, 0.f, 0.f},
};

// The twist takes one row step for its three planes. Planes whose steps
// differ (one fell back to the general heap) are twisted one row at a time.
int twist(GIMG<float>** planes, const Ipp32f matrix[3][4]) {
    const IppiSize roi = planes[0]->roiSize;
    const int step = planes[0]->step;
    if (planes[1]->step == step && planes[2]->step == step) {
        Ipp32f* const p[3] = {planes[0]->ptr(), planes[1]->ptr(), planes[2]->ptr()};
        ippiColorTwist_32f_IP3R(p, step, roi, matrix);
        return 1;
    }
    for (int y = 0; y < roi.height; ++y) {
        Ipp32f* const p[3] = {imgPtr(*planes[0], 0, y), imgPtr(*planes[1], 0, y),
                              imgPtr(*planes[2], 0, y)};
        ippiColorTwist_32f_IP3R(p, step, IppiSize{roi.width, 1}, matrix);
    }
    return 1;
}

using PixelConversion = IppStatus (*)(const Ipp32f*, int, Ipp32f*, int, IppiSize);

// Interleaves the planes, converts the pixels in place, splits them back.
int throughInterleaved(GIMG<float>** planes, PixelConversion convert) {
    const int w = planes[0]->width(), h = planes[0]->height();
    if (w <= 0 || h <= 0) return 1;
    IMG3<float> pixels(w, h);
    for (int c = 0; c < 3; ++c) Copy(c, *planes[c], pixels);
    convert(pixels.ptr(), pixels.step, pixels.ptr(), pixels.step, pixels.roiSize);
    for (int c = 0; c < 3; ++c) Copy(c, pixels, *planes[c]);
    return 1;
}

}  // namespace

int RGB2YCbCr(GIMG<float>** planes, bool noBias) {
    return twist(planes, noBias ? kRgbToYcbcrNoBias : kRgbToYcbcr);
}
int YCbCr2RGB(GIMG<float>** planes, bool noBias) {
    return twist(planes, noBias ? kYcbcrToRgbNoBias : kYcbcrToRgb);
}

int RGB2HLS(GIMG<float>** planes) {
    return throughInterleaved(planes, ippiRGBToHLS_32f_C3R);
}
int HLS2RGB(GIMG<float>** planes) {
    return throughInterleaved(planes, ippiHLSToRGB_32f_C3R);
}

void RGB2Gray(GIMG<float>& r, GIMG<float>& g, GIMG<float>& b, GIMG<float>& gray) {
    using namespace kc::yuv;
    Mul(r, kLumaR, gray);
    GIMG<float> term(gray.width(), gray.height());
    Mul(g, kLumaG, term);
    Add(term, gray);
    Mul(b, kLumaB, term);
    Add(term, gray);
}
void RGB2Gray(GIMG<float>** rgb, GIMG<float>* gray) {
    RGB2Gray(*rgb[0], *rgb[1], *rgb[2], *gray);
}
