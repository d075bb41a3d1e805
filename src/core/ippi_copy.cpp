// Copy primitives over byte-stepped regions. Whole-pixel copies go through
// OpenCV headers; channel and planar copies are strided row loops.
#include "core/ippi_copy.h"

#include <cstring>

#include "core/ippi_common.h"

namespace {
using namespace kc::prim;

template <typename T>
IppStatus copyPixels(const T* s, int ss, T* d, int ds, IppiSize r, int ch) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss, ch), plane(d, ds, ch)})) return st;
    for (int y = 0; y < r.height; ++y)
        std::memmove(rowAt(d, ds, y), rowAt(s, ss, y), sizeof(T) * ch * r.width);
    return ippStsNoErr;
}

// Copies `n` channels per pixel from pixels of srcCh elements to pixels of
// dstCh elements; the pointers already select the first channel involved.
template <typename T>
IppStatus copyChannels(const T* s, int ss, int srcCh, T* d, int ds, int dstCh, int n, IppiSize r) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss, srcCh), plane(d, ds, dstCh)})) return st;
    for (int y = 0; y < r.height; ++y) {
        const T* sr = rowAt(s, ss, y);
        T* dr = rowAt(d, ds, y);
        for (int x = 0; x < r.width; ++x)
            for (int c = 0; c < n; ++c) dr[x * dstCh + c] = sr[x * srcCh + c];
    }
    return ippStsNoErr;
}

// Interleaved pixels of `ch` channels to `ch` planes (toPlanes) or back.
IppStatus planarCopy(const Ipp8u* const* planes, Ipp8u* const* outPlanes, int planeStep,
                     const Ipp8u* src, Ipp8u* dst, int pixStep, int ch, IppiSize r) {
    const bool toPlanes = outPlanes != nullptr;
    if (!(toPlanes ? src : dst)) return ippStsNullPtrErr;
    for (int c = 0; c < ch; ++c)
        if (!(toPlanes ? static_cast<const void*>(outPlanes[c]) : planes[c]))
            return ippStsNullPtrErr;
    const Ipp8u* inter = toPlanes ? src : dst;
    if (IppStatus st = checkPlanes(r, {plane(inter, pixStep, ch), plane(inter, planeStep, 1)}))
        return st;
    for (int c = 0; c < ch; ++c)
        for (int y = 0; y < r.height; ++y) {
            if (toPlanes) {
                const Ipp8u* sr = rowAt(src, pixStep, y) + c;
                Ipp8u* pr = rowAt(outPlanes[c], planeStep, y);
                for (int x = 0; x < r.width; ++x) pr[x] = sr[x * ch];
            } else {
                const Ipp8u* pr = rowAt(planes[c], planeStep, y);
                Ipp8u* dr = rowAt(dst, pixStep, y) + c;
                for (int x = 0; x < r.width; ++x) dr[x * ch] = pr[x];
            }
        }
    return ippStsNoErr;
}

template <typename T>
IppStatus copyMasked(const T* s, int ss, T* d, int ds, IppiSize r, const Ipp8u* m, int ms, int ch) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss, ch), plane(d, ds, ch), plane(m, ms)}))
        return st;
    matOver(s, ss, r, ch).copyTo(matOver(d, ds, r, ch), matOver(m, ms, r));
    return ippStsNoErr;
}
}  // namespace

IppStatus ippiCopy_8u_C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return copyPixels(s, ss, d, ds, r, 1);
}
IppStatus ippiCopy_16s_C1R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r) {
    return copyPixels(s, ss, d, ds, r, 1);
}
IppStatus ippiCopy_16u_C1R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return copyPixels(s, ss, d, ds, r, 1);
}
IppStatus ippiCopy_32f_C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return copyPixels(s, ss, d, ds, r, 1);
}
IppStatus ippiCopy_32f_C3R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return copyPixels(s, ss, d, ds, r, 3);
}
IppStatus ippiCopy_8u_AC4R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 4, d, ds, 4, 3, r);
}

IppStatus ippiCopy_8u_C1C3R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 1, d, ds, 3, 1, r);
}
IppStatus ippiCopy_16s_C1C3R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 1, d, ds, 3, 1, r);
}
IppStatus ippiCopy_16u_C1C3R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 1, d, ds, 3, 1, r);
}
IppStatus ippiCopy_32f_C1C3R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 1, d, ds, 3, 1, r);
}
IppStatus ippiCopy_8u_C1C4R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 1, d, ds, 4, 1, r);
}
IppStatus ippiCopy_16s_C1C4R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 1, d, ds, 4, 1, r);
}
IppStatus ippiCopy_16u_C1C4R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 1, d, ds, 4, 1, r);
}

IppStatus ippiCopy_8u_C3C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 3, d, ds, 1, 1, r);
}
IppStatus ippiCopy_16s_C3C1R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 3, d, ds, 1, 1, r);
}
IppStatus ippiCopy_16u_C3C1R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 3, d, ds, 1, 1, r);
}
IppStatus ippiCopy_32f_C3C1R(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 3, d, ds, 1, 1, r);
}
IppStatus ippiCopy_8u_C4C1R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 4, d, ds, 1, 1, r);
}
IppStatus ippiCopy_16s_C4C1R(const Ipp16s* s, int ss, Ipp16s* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 4, d, ds, 1, 1, r);
}
IppStatus ippiCopy_16u_C4C1R(const Ipp16u* s, int ss, Ipp16u* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 4, d, ds, 1, 1, r);
}

IppStatus ippiCopy_8u_AC4C3R(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    return copyChannels(s, ss, 4, d, ds, 3, 3, r);
}
IppStatus ippiCopy_8u_C4P4R(const Ipp8u* s, int ss, Ipp8u* const d[4], int ds, IppiSize r) {
    if (!d) return ippStsNullPtrErr;
    return planarCopy(nullptr, d, ds, s, nullptr, ss, 4, r);
}
IppStatus ippiCopy_8u_P3C3R(const Ipp8u* const s[3], int ss, Ipp8u* d, int ds, IppiSize r) {
    if (!s) return ippStsNullPtrErr;
    return planarCopy(s, nullptr, ss, nullptr, d, ds, 3, r);
}
IppStatus ippiCopy_8u_P4C4R(const Ipp8u* const s[4], int ss, Ipp8u* d, int ds, IppiSize r) {
    if (!s) return ippStsNullPtrErr;
    return planarCopy(s, nullptr, ss, nullptr, d, ds, 4, r);
}

IppStatus ippiCopy_8u_C1MR(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r, const Ipp8u* m,
                           int ms) {
    return copyMasked(s, ss, d, ds, r, m, ms, 1);
}
IppStatus ippiCopy_8u_C4MR(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r, const Ipp8u* m,
                           int ms) {
    return copyMasked(s, ss, d, ds, r, m, ms, 4);
}
IppStatus ippiCopy_32f_C1MR(const Ipp32f* s, int ss, Ipp32f* d, int ds, IppiSize r, const Ipp8u* m,
                            int ms) {
    return copyMasked(s, ss, d, ds, r, m, ms, 1);
}
