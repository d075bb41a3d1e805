// Scanline class fill: each run of the seed's class is found once, filled,
// and the rows above and below are searched for runs touching it (one column
// wider on each side, for 8-connectivity). Runs are found sixteen bytes at a
// time; the class test is a compare with the cut and keep codes.
#include "tools/class_fill.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstring>

#include "core/img.h"
#include "pipeline/mask_codes.h"
#include "tools/byte_simd.h"

namespace {

enum class MapClass { Cut, Keep, Other };

MapClass classOf(unsigned char b) {
    return b == kMaskCut ? MapClass::Cut : b == kMaskKeep ? MapClass::Keep : MapClass::Other;
}

class ClassRows {
  public:
    explicit ClassRows(MapClass c) : class_(c) {}

    bool member(unsigned char b) const { return classOf(b) == class_; }

    // The first column in [x, end) whose membership differs from `inside`,
    // or end.
    int runEnd(const unsigned char* row, int x, int end, bool inside) const {
        const __m128i cut = _mm_set1_epi8(static_cast<char>(kMaskCut));
        const __m128i keep = _mm_set1_epi8(static_cast<char>(kMaskKeep));
        // One movemask bit per byte of a 16-byte vector.
        constexpr int kAllLanes = 0xffff;
        for (; x + kVectorBytes <= end; x += kVectorBytes) {
            const __m128i v = loadBytes(row + x);
            int members;
            if (class_ == MapClass::Cut)
                members = _mm_movemask_epi8(_mm_cmpeq_epi8(v, cut));
            else if (class_ == MapClass::Keep)
                members = _mm_movemask_epi8(_mm_cmpeq_epi8(v, keep));
            else
                members = kAllLanes ^ _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(v, cut),
                                                                     _mm_cmpeq_epi8(v, keep)));
            const int stops = inside ? kAllLanes ^ members : members;
            if (stops) return x + __builtin_ctz(static_cast<unsigned>(stops));
        }
        while (x < end && member(row[x]) == inside) ++x;
        return x;
    }

  private:
    MapClass class_;
};

}  // namespace

IppiRect fillClassArea(unsigned char* mask, int maskStep, IppiSize size, IppiPoint seed,
                       unsigned char marker, std::vector<FillRun>* runs) {
    const ClassRows rows(classOf(*imgPtr(mask, maskStep, seed.x, seed.y)));
    int x0 = size.width, y0 = size.height, x1 = -1, y1 = -1;
    std::vector<IppiPoint> pending{seed};
    while (!pending.empty()) {
        const IppiPoint p = pending.back();
        pending.pop_back();
        unsigned char* row = imgPtr(mask, maskStep, 0, p.y);
        if (!rows.member(row[p.x])) continue;  // filled since it was queued
        int left = p.x;
        while (left > 0 && rows.member(row[left - 1])) --left;
        const int right = rows.runEnd(row, p.x, size.width, true);
        std::memset(row + left, marker, right - left);
        if (runs) runs->push_back({p.y, left, right});
        x0 = std::min(x0, left), x1 = std::max(x1, right - 1);
        y0 = std::min(y0, p.y), y1 = std::max(y1, p.y);
        const int from = std::max(left - 1, 0), to = std::min(right + 1, size.width);
        for (const int ny : {p.y - 1, p.y + 1}) {
            if (ny < 0 || ny >= size.height) continue;
            const unsigned char* next = imgPtr(mask, maskStep, 0, ny);
            for (int x = rows.runEnd(next, from, to, false); x < to;
                 x = rows.runEnd(next, rows.runEnd(next, x, to, true), to, false))
                pending.push_back({x, ny});
        }
    }
    return {x0, y0, x1 - x0 + 1, y1 - y0 + 1};
}
