// Geometric nested dissection of a pixel grid, iteratively over a stack of
// rectangles.
#include "matting/grid_ordering.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

// Regions this small are ordered row by row; the minimum-degree pass of the
// solver's analysis tidies them up. Chosen by measurement (bench_matting):
// smaller leaves add separators without reducing the factor.
constexpr int kLeafPixels = 64;
// Pixels coupled to each other lie at most this far apart, so a separator of
// this width splits a region into two uncoupled halves.
constexpr int kSeparatorWidth = 2;

struct Rect {
    int x0, y0, x1, y1;  // half-open
    int w() const { return x1 - x0; }
    int h() const { return y1 - y0; }
};

// A rectangle still to be ordered, or (emitOnly) one to be emitted as it is.
struct Task {
    Rect r;
    bool emitOnly;
};

// The smallest rectangle inside r holding all of r's variables (empty if none):
// cutting the variables' own extent in half balances the halves far better
// than cutting the region's, as the variables of a matting system form bands.
Rect variableBounds(const Rect& r, const int* varIndex, int w) {
    Rect b{r.x1, r.y1, r.x0, r.y0};
    for (int y = r.y0; y < r.y1; ++y) {
        const int* row = varIndex + static_cast<long long>(y) * w;
        for (int x = r.x0; x < r.x1; ++x)
            if (row[x] >= 0) {
                b.x0 = std::min(b.x0, x);
                b.x1 = std::max(b.x1, x + 1);
                b.y0 = std::min(b.y0, y);
                b.y1 = std::max(b.y1, y + 1);
            }
    }
    return b;
}

}  // namespace

std::vector<int> gridNestedDissection(const int* varIndex, int w, int h, int n) {
    std::vector<int> perm;
    perm.reserve(static_cast<std::size_t>(n));
    auto emit = [&](const Rect& r) {
        for (int y = r.y0; y < r.y1; ++y)
            for (int x = r.x0; x < r.x1; ++x) {
                const int v = varIndex[static_cast<long long>(y) * w + x];
                if (v >= 0) perm.push_back(v);
            }
    };
    // The stack pops the last task first: push separator, then the second
    // half, then the first, so they come out first half, second, separator.
    std::vector<Task> stack{{{0, 0, w, h}, false}};
    while (!stack.empty()) {
        Task t = stack.back();
        stack.pop_back();
        if (!t.emitOnly) t.r = variableBounds(t.r, varIndex, w);
        const Rect& r = t.r;
        if (r.w() <= 0 || r.h() <= 0) continue;
        if (t.emitOnly || static_cast<long long>(r.w()) * r.h() <= kLeafPixels ||
            (r.w() <= kSeparatorWidth + 1 && r.h() <= kSeparatorWidth + 1)) {
            emit(r);
            continue;
        }
        if (r.w() >= r.h()) {
            const int s = r.x0 + (r.w() - kSeparatorWidth) / 2;
            stack.push_back({{s, r.y0, s + kSeparatorWidth, r.y1}, true});
            stack.push_back({{s + kSeparatorWidth, r.y0, r.x1, r.y1}, false});
            stack.push_back({{r.x0, r.y0, s, r.y1}, false});
        } else {
            const int s = r.y0 + (r.h() - kSeparatorWidth) / 2;
            stack.push_back({{r.x0, s, r.x1, s + kSeparatorWidth}, true});
            stack.push_back({{r.x0, s + kSeparatorWidth, r.x1, r.y1}, false});
            stack.push_back({{r.x0, r.y0, r.x1, s}, false});
        }
    }
    return perm;
}
