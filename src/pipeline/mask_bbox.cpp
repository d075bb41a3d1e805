// Bounding box of a brush map's work region: the typed forms for 8- and 16-bit
// maps and the C entry for the host.
#include "pipeline/mask_bbox.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "runtime/arg_check.h"
#include "runtime/entry_guard.h"

namespace {

template <typename T>
class MapRows {
  public:
    MapRows(const T* map, int step, int valueA, int valueB)
        : map_(map), step_(step), valueA_(valueA), valueB_(valueB) {}

    // A host's 16-bit map may start at an odd address or have an odd step, so
    // elements are loaded bytewise rather than through a T pointer.
    const char* row(int y) const {
        return reinterpret_cast<const char*>(map_) + static_cast<std::ptrdiff_t>(y) * step_;
    }
    static T at(const char* r, int x) {
        T v;
        std::memcpy(&v, r + static_cast<std::ptrdiff_t>(x) * sizeof(T), sizeof(T));
        return v;
    }
    bool isWork(int v) const { return v != valueA_ && v != valueB_; }

    // First column in [from, to) of row y that holds work, or to.
    int firstWork(int y, int from, int to) const {
        const char* r = row(y);
        for (int x = from; x < to; ++x)
            if (isWork(at(r, x))) return x;
        return to;
    }
    // Last column in [from, to) of row y that holds work, or from - 1.
    int lastWork(int y, int from, int to) const {
        const char* r = row(y);
        for (int x = to - 1; x >= from; --x)
            if (isWork(at(r, x))) return x;
        return from - 1;
    }
    void count(int x, int y, int w, int h, int* countA, int* countB) const {
        int a = 0, b = 0;
        for (int yy = y; yy < y + h; ++yy) {
            const char* r = row(yy);
            for (int xx = x; xx < x + w; ++xx) {
                const T v = at(r, xx);
                a += v == valueA_;
                b += v == valueB_;
            }
        }
        *countA = a;
        *countB = b;
    }

  private:
    const T* map_;
    int step_;
    int valueA_;
    int valueB_;
};

void writeNoBox(int* x, int* w, int* y, int* h, int* countA, int* countB) {
    *x = *w = *y = *h = 0;
    if (countA) *countA = -1;
    if (countB) *countB = -1;
}

template <typename T>
int maskBBox(const T* map, int step, int width, int height, int* x, int* w, int* y, int* h,
             int* countA, int* countB, int valueA, int valueB) {
    const MapRows<T> rows(map, step, valueA, valueB);

    int top = height;
    for (int r = 0; r < height; ++r)
        if (rows.firstWork(r, 0, width) < width) {
            top = r - kMaskBBoxMargin;
            break;
        }
    top = std::max(top, 0);

    int bottom = top;
    for (int r = height - 1; r > top; --r)
        if (rows.firstWork(r, 0, width) < width) {
            bottom = r + kMaskBBoxMargin;
            break;
        }
    bottom = std::min(bottom, height - 1);
    const int bh = bottom - top + 1;
    if (bh < kMaskBBoxMinHeight) {
        writeNoBox(x, w, y, h, countA, countB);
        return 1;
    }

    // Each row only needs scanning up to the best column found so far.
    int firstColumn = width;
    for (int r = top; r < top + bh; ++r) firstColumn = rows.firstWork(r, 0, firstColumn);
    int left = firstColumn < width ? firstColumn - kMaskBBoxMargin : width;
    left = std::max(left, 0);
    if (left == width) return kMaskBBoxNoColumn;

    int lastColumn = left;
    for (int r = top; r < top + bh; ++r) lastColumn = rows.lastWork(r, lastColumn + 1, width);
    int right = lastColumn > left ? lastColumn + kMaskBBoxMargin : left;
    right = std::min(right, width - 1);
    const int bw = right - left + 1;

    // The height is tested again, not the width: a one-column band still gets
    // a box, which is what the pipeline has always relied on.
    if (bh < kMaskBBoxMinHeight) {
        writeNoBox(x, w, y, h, countA, countB);
        return 1;
    }
    *x = left;
    *w = bw;
    *y = top;
    *h = bh;
    if (countA && countB) rows.count(left, top, bw, bh, countA, countB);
    return 1;
}

}  // namespace

int rkMaskBBox(const unsigned char* map, int step, int width, int height, int* x, int* w, int* y,
               int* h, int* countA, int* countB, int /*ignored*/, int valueA, int valueB) {
    return maskBBox(map, step, width, height, x, w, y, h, countA, countB, valueA, valueB);
}

int rkMaskBBox(const unsigned short* map, int step, int width, int height, int* x, int* w, int* y,
               int* h, int* countA, int* countB, int /*ignored*/, int valueA, int valueB) {
    return maskBBox(map, step, width, height, x, w, y, h, countA, countB, valueA, valueB);
}

extern "C" KC_EXPORT int rkMaskBBox(int is16Bit, const void* map, int step, int width, int height,
                                    int* x, int* w, int* y, int* h, int* countA, int* countB,
                                    int ignored, int valueA, int valueB) {
    constexpr const char* kEntry = "rkMaskBBox";
    return rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "map", map, width, height, step, is16Bit ? 2 : 1))
            return kInvalidArgument;
        if (!x || !w || !y || !h) {
            rkRefuse(kEntry, "a box output pointer is null");
            return kInvalidArgument;
        }
        // The host only learns the box; the no-column result of the typed forms
        // leaves the outputs as they were.
        if (is16Bit)
            rkMaskBBox(static_cast<const unsigned short*>(map), step, width, height, x, w, y, h,
                       countA, countB, ignored, valueA, valueB);
        else
            rkMaskBBox(static_cast<const unsigned char*>(map), step, width, height, x, w, y, h,
                       countA, countB, ignored, valueA, valueB);
        return 1;
    });
}
