// Typed wrappers of the neighbourhood primitives over the image containers:
// each passes ptr() and step, takes the destination's region as the region,
// stores the primitive's status in the destination and returns it. The source
// region must have the border the primitive reads around it.
#pragma once

#include "core/img.h"
#include "core/ipp_filters.h"

template <typename T>
IppStatus Erode3x3(const GIMG<T>& src, GIMG<T>& dst) {
    return dst.status =
               IPPIP::ippiErode3x3_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize);
}

template <typename T>
IppStatus Dilate3x3(const GIMG<T>& src, GIMG<T>& dst) {
    return dst.status =
               IPPIP::ippiDilate3x3_C1R(src.ptr(), src.step, dst.ptr(), dst.step, dst.roiSize);
}

// In place (float planes).
template <typename T>
IppStatus Erode3x3(GIMG<T>& img) {
    return img.status = IPPIP::ippiErode3x3_C1IR(img.ptr(), img.step, img.roiSize);
}

template <typename T>
IppStatus Dilate3x3(GIMG<T>& img) {
    return img.status = IPPIP::ippiDilate3x3_C1IR(img.ptr(), img.step, img.roiSize);
}

// maskSize is ippMskSize3x3 or ippMskSize5x5.
template <typename T>
IppStatus FilterGauss(const GIMG<T>& src, GIMG<T>& dst, IppiMaskSize maskSize) {
    return dst.status = IPPIP::ippiFilterGauss_C1R(src.ptr(), src.step, dst.ptr(), dst.step,
                                                   dst.roiSize, maskSize);
}

template <typename T>
IppStatus FilterMedian(const GIMG<T>& src, GIMG<T>& dst, IppiSize mask, IppiPoint anchor) {
    return dst.status = IPPIP::ippiFilterMedian_C1R(src.ptr(), src.step, dst.ptr(), dst.step,
                                                    dst.roiSize, mask, anchor);
}

template <typename T>
IppStatus FilterMedianCross(const GIMG<T>& src, GIMG<T>& dst, IppiMaskSize maskSize) {
    return dst.status = IPPIP::ippiFilterMedianCross_C1R(src.ptr(), src.step, dst.ptr(), dst.step,
                                                         dst.roiSize, maskSize);
}
