// Resampling of 8-bit (one or four channels), 16-bit and float planes by given
// x / y factors with nearest, linear, cubic (Catmull-Rom), Lanczos (three
// lobes) or supersampling (area-weighted mean) interpolation.
//
// Only source pixels inside the source region are read (the region's edge is
// replicated where a kernel reaches past it). Integer results are rounded to
// nearest and saturated; float results are not clamped.
#pragma once

#include "core/ipp_types.h"

struct IppiRect {
    int x;
    int y;
    int width;
    int height;
};

// Interpolation modes.
enum : int {
    IPPI_INTER_NN = 1,        // the source pixel under the destination pixel's centre
    IPPI_INTER_LINEAR = 2,    // bilinear
    IPPI_INTER_CUBIC = 4,     // bicubic convolution with a = -1/2 (Catmull-Rom)
    IPPI_INTER_SUPER = 8,     // mean of the source area that the destination pixel covers
    IPPI_INTER_LANCZOS = 16,  // windowed sinc over 6 x 6 pixels
};

// Work bytes that ResizeSqrPixel needs for these regions (the factors being
// the ratio of the region sizes); larger factor ratios make it find its own.
IppStatus ippiResizeGetBufSize(IppiRect srcROI, IppiRect dstROI, int nChannel, int interpolation,
                               int* pSize);

// Square-pixel model: pixels are unit squares, and the destination point x'
// shows the source point x = (x' - xShift) / xFactor (likewise y), all in
// image coordinates of pSrc and pDst (pixel centres at +0.5). Writes the
// pixels of dstROI whose centre falls inside srcROI; the rest are untouched.
IppStatus ippiResizeSqrPixel_8u_C1R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep,
                                    IppiRect srcROI, Ipp8u* pDst, int dstStep, IppiRect dstROI,
                                    double xFactor, double yFactor, double xShift, double yShift,
                                    int interpolation, Ipp8u* pBuffer);
IppStatus ippiResizeSqrPixel_8u_C4R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep,
                                    IppiRect srcROI, Ipp8u* pDst, int dstStep, IppiRect dstROI,
                                    double xFactor, double yFactor, double xShift, double yShift,
                                    int interpolation, Ipp8u* pBuffer);
IppStatus ippiResizeSqrPixel_16s_C1R(const Ipp16s* pSrc, IppiSize srcSize, int srcStep,
                                     IppiRect srcROI, Ipp16s* pDst, int dstStep, IppiRect dstROI,
                                     double xFactor, double yFactor, double xShift, double yShift,
                                     int interpolation, Ipp8u* pBuffer);
IppStatus ippiResizeSqrPixel_32f_C1R(const Ipp32f* pSrc, IppiSize srcSize, int srcStep,
                                     IppiRect srcROI, Ipp32f* pDst, int dstStep, IppiRect dstROI,
                                     double xFactor, double yFactor, double xShift, double yShift,
                                     int interpolation, Ipp8u* pBuffer);

// Index model: destination pixel (x', y') of a dstRoiSize region at pDst
// samples the source at (srcROI.x + x' / xFactor, srcROI.y + y' / yFactor)
// (supersampling: the area [x' / xFactor, (x' + 1) / xFactor) of the region).
// AC4 leaves the fourth channel of the destination untouched.
IppStatus ippiResize_8u_C1R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep, IppiRect srcROI,
                            Ipp8u* pDst, int dstStep, IppiSize dstRoiSize, double xFactor,
                            double yFactor, int interpolation);
IppStatus ippiResize_8u_AC4R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep, IppiRect srcROI,
                             Ipp8u* pDst, int dstStep, IppiSize dstRoiSize, double xFactor,
                             double yFactor, int interpolation);

namespace IPPIP {
inline IppStatus ippiResizeSqrPixel_C1R(const Ipp8u* s, IppiSize ss, int sst, IppiRect sr, Ipp8u* d,
                                        int ds, IppiRect dr, double xf, double yf, double xs,
                                        double ys, int in, Ipp8u* buf) {
    return ippiResizeSqrPixel_8u_C1R(s, ss, sst, sr, d, ds, dr, xf, yf, xs, ys, in, buf);
}
inline IppStatus ippiResizeSqrPixel_C1R(const Ipp16s* s, IppiSize ss, int sst, IppiRect sr,
                                        Ipp16s* d, int ds, IppiRect dr, double xf, double yf,
                                        double xs, double ys, int in, Ipp8u* buf) {
    return ippiResizeSqrPixel_16s_C1R(s, ss, sst, sr, d, ds, dr, xf, yf, xs, ys, in, buf);
}
inline IppStatus ippiResizeSqrPixel_C1R(const Ipp32f* s, IppiSize ss, int sst, IppiRect sr,
                                        Ipp32f* d, int ds, IppiRect dr, double xf, double yf,
                                        double xs, double ys, int in, Ipp8u* buf) {
    return ippiResizeSqrPixel_32f_C1R(s, ss, sst, sr, d, ds, dr, xf, yf, xs, ys, in, buf);
}
inline IppStatus ippiResizeSqrPixel_C4R(const Ipp8u* s, IppiSize ss, int sst, IppiRect sr, Ipp8u* d,
                                        int ds, IppiRect dr, double xf, double yf, double xs,
                                        double ys, int in, Ipp8u* buf) {
    return ippiResizeSqrPixel_8u_C4R(s, ss, sst, sr, d, ds, dr, xf, yf, xs, ys, in, buf);
}
}  // namespace IPPIP
