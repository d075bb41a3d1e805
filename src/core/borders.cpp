// Edge replication, frame copies and frame fills over raw rows; the typed
// overloads only pick the plane, its step and the size they work on.
#include "core/borders.h"

#include <algorithm>
#include <cstring>

#include "core/ippi_filter_support.h"

namespace {

using kc::filt::rowAt;

// Replicates edges of a plane of size.width x size.height pixels of C elements.
template <typename T, int C>
void replicateEdges(T* p, int step, IppiSize size, int top, int bottom, int left, int right) {
    const int w = size.width, h = size.height;
    const std::size_t rowBytes = static_cast<std::size_t>(w) * C * sizeof(T);
    for (int y = 0; y < top; ++y) std::memcpy(rowAt(p, step, y), rowAt(p, step, top), rowBytes);
    for (int y = h - bottom; y < h; ++y)
        std::memcpy(rowAt(p, step, y), rowAt(p, step, h - bottom - 1), rowBytes);
    if (left <= 0 && right <= 0) return;
    for (int y = 0; y < h; ++y) {
        T* r = rowAt(p, step, y);
        for (int x = 0; x < left; ++x) std::copy(r + left * C, r + (left + 1) * C, r + x * C);
        const int last = w - right - 1;
        for (int x = w - right; x < w; ++x) std::copy(r + last * C, r + (last + 1) * C, r + x * C);
    }
}

template <typename T, int C>
void replicateRegion(IMG<T, C>& img, int left, int top, int right, int bottom) {
    replicateEdges<T, C>(img.ptr(), img.step, img.roiSize, top, bottom, left, right);
}

// Copies a w x h block at (x, y) of one plane into the same place of another.
template <typename T>
void copyBlock(const T* src, int srcStep, T* dst, int dstStep, int x, int y, int w, int h) {
    for (int r = y; r < y + h; ++r) {
        const T* s = rowAt(src, srcStep, r) + x;
        std::copy(s, s + w, rowAt(dst, dstStep, r) + x);
    }
}

template <typename T>
void fillBlock(T* p, int step, int x, int y, int w, int h, T value) {
    for (int r = y; r < y + h; ++r) std::fill_n(rowAt(p, step, r) + x, w, value);
}

// The four strips of a frame of a w x h plane, thickest-first order: top and
// bottom full width, then left and right full height; empty strips skipped.
template <typename Strip>
void forEachFrameStrip(IppiSize size, int top, int bottom, int left, int right, Strip strip) {
    const int w = size.width, h = size.height;
    if (top > 0) strip(0, 0, w, top);
    if (bottom > 0) strip(0, h - bottom, w, bottom);
    if (left > 0) strip(0, 0, left, h);
    if (right > 0) strip(w - right, 0, right, h);
}

template <typename T>
void copyFrame(const T* src, int srcStep, T* dst, int dstStep, IppiSize size, int top, int bottom,
               int left, int right) {
    forEachFrameStrip(size, top, bottom, left, right, [&](int x, int y, int w, int h) {
        copyBlock(src, srcStep, dst, dstStep, x, y, w, h);
    });
}

template <typename T>
void copyFrame(GIMG<T>& src, GIMG<T>& dst, int bx, int by) {
    copyFrame(src.ptr(), src.step, dst.ptr(), dst.step, dst.size, by, by, bx, bx);
}

}  // namespace

void imageExtendBorder(GIMG<unsigned char>& img, int left, int top, int right, int bottom) {
    replicateRegion(img, left, top, right, bottom);
}
void imageExtendBorder(GIMG<unsigned short>& img, int left, int top, int right, int bottom) {
    replicateRegion(img, left, top, right, bottom);
}
void imageExtendBorder(GIMG<short>& img, int left, int top, int right, int bottom) {
    replicateRegion(img, left, top, right, bottom);
}
void imageExtendBorder(GIMG<float>& img, int left, int top, int right, int bottom) {
    replicateRegion(img, left, top, right, bottom);
}
void imageExtendBorder(IMG3<float>& img, int left, int top, int right, int bottom) {
    replicateRegion(img, left, top, right, bottom);
}

void extendBorder(float* p, int step, IppiSize size, int top, int bottom, int left, int right) {
    replicateEdges<float, 1>(p, step, size, top, bottom, left, right);
}
void extendBorder(unsigned char* p, int step, IppiSize size, int top, int bottom, int left,
                  int right) {
    replicateEdges<unsigned char, 1>(p, step, size, top, bottom, left, right);
}
void extendBorder3C(unsigned char* p, int step, IppiSize size, int top, int bottom, int left,
                    int right) {
    replicateEdges<unsigned char, 3>(p, step, size, top, bottom, left, right);
}

int imageCopyExt(const GIMG<float>& src, GIMG<float>& dst) {
    const int sw = src.size.width, sh = src.size.height;
    const int dw = dst.size.width, dh = dst.size.height;
    const int w = std::min(sw, dw), h = std::min(sh, dh);
    copyBlock(src.ptr(), src.step, dst.ptr(), dst.step, 0, 0, w, h);
    const int bottom = std::max(0, dh - sh), right = std::max(0, dw - sw);
    if (bottom > 0 || right > 0) extendBorder(dst.ptr(), dst.step, dst.size, 0, bottom, 0, right);
    return 1;
}

void imageCopyBorder(GIMG<unsigned short>& src, GIMG<unsigned short>& dst, int bx, int by) {
    copyFrame(src, dst, bx, by);
}
void imageCopyBorder(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int bx, int by) {
    copyFrame(src, dst, bx, by);
}
void imageCopyBorder(GIMG<short>& src, GIMG<short>& dst, int bx, int by) {
    copyFrame(src, dst, bx, by);
}
void imageCopyBorder(const short* src, int srcStep, short* dst, int dstStep, IppiSize size, int bx,
                     int by) {
    copyFrame(src, srcStep, dst, dstStep, size, by, by, bx, bx);
}
void imageCopyBorder(GIMG<float>& src, GIMG<float>& dst, int top, int bottom, int left, int right) {
    copyFrame(src.ptr(), src.step, dst.ptr(), dst.step, dst.size, top, bottom, left, right);
}

void imageSetBorder(GIMG<unsigned char>& img, unsigned char value, int bx, int by) {
    forEachFrameStrip(img.size, by, by, bx, bx, [&](int x, int y, int w, int h) {
        fillBlock(img.ptr(), img.step, x, y, w, h, value);
    });
}

void setConstsBorder(GIMG<unsigned char>& img, int left, int right, int top, int bottom) {
    // Full-on: what the engine writes to mark a margin as definitely kept.
    constexpr unsigned char kMarked = 255;
    forEachFrameStrip(img.roiSize, top, bottom, left, right, [&](int x, int y, int w, int h) {
        fillBlock(img.ptr(), img.step, x, y, w, h, kMarked);
    });
}
