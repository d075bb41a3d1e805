// Fill primitives: OpenCV setTo over region headers, std::fill for vectors.
#include "core/ippi_set.h"

#include <algorithm>

#include "core/ippi_common.h"

namespace {
using namespace kc::prim;

template <typename T>
IppStatus setRegion(T value, T* d, int ds, IppiSize r) {
    if (IppStatus st = checkPlanes(r, {plane(d, ds)})) return st;
    matOver(d, ds, r).setTo(cv::Scalar::all(value));
    return ippStsNoErr;
}

template <typename T>
IppStatus setVector(T value, T* d, int len) {
    if (IppStatus st = checkVector(len, {d})) return st;
    std::fill(d, d + len, value);
    return ippStsNoErr;
}
}  // namespace

IppStatus ippiSet_8u_C1R(Ipp8u v, Ipp8u* d, int ds, IppiSize r) {
    return setRegion(v, d, ds, r);
}
IppStatus ippiSet_16s_C1R(Ipp16s v, Ipp16s* d, int ds, IppiSize r) {
    return setRegion(v, d, ds, r);
}
IppStatus ippiSet_16u_C1R(Ipp16u v, Ipp16u* d, int ds, IppiSize r) {
    return setRegion(v, d, ds, r);
}
IppStatus ippiSet_32f_C1R(Ipp32f v, Ipp32f* d, int ds, IppiSize r) {
    return setRegion(v, d, ds, r);
}
IppStatus ippiSet_32f_C3R(const Ipp32f v[3], Ipp32f* d, int ds, IppiSize r) {
    if (!v) return ippStsNullPtrErr;
    if (IppStatus st = checkPlanes(r, {plane(d, ds, 3)})) return st;
    matOver(d, ds, r, 3).setTo(cv::Scalar(v[0], v[1], v[2]));
    return ippStsNoErr;
}
IppStatus ippiSet_8u_C4CR(Ipp8u v, Ipp8u* d, int ds, IppiSize r) {
    if (IppStatus st = checkPlanes(r, {plane(d, ds, 4)})) return st;
    for (int y = 0; y < r.height; ++y) {
        Ipp8u* row = rowAt(d, ds, y);
        for (int x = 0; x < r.width; ++x) row[4 * x] = v;
    }
    return ippStsNoErr;
}

IppStatus ippsSet_8u(Ipp8u v, Ipp8u* d, int n) {
    return setVector(v, d, n);
}
IppStatus ippsSet_16s(Ipp16s v, Ipp16s* d, int n) {
    return setVector(v, d, n);
}
IppStatus ippsSet_32f(Ipp32f v, Ipp32f* d, int n) {
    return setVector(v, d, n);
}
IppStatus ippsZero_16s(Ipp16s* d, int n) {
    return setVector<Ipp16s>(0, d, n);
}
IppStatus ippsZero_32f(Ipp32f* d, int n) {
    return setVector<Ipp32f>(0.f, d, n);
}
