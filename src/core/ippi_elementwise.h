// Row loops shared by the elementwise primitives: one output element from the
// elements at the same place in one or two operands. Kept in a header so the
// lambdas inline and the loops vectorise.
#pragma once

#include "core/ippi_common.h"

namespace kc::prim {

// d[i] = op(a[i], b[i]) over `ch` elements per pixel; d may alias a or b.
template <typename A, typename B, typename D, typename Op>
IppStatus zipRows(const A* a, int as, const B* b, int bs, D* d, int ds, IppiSize r, int ch, Op op) {
    if (IppStatus st = checkPlanes(r, {plane(a, as, ch), plane(b, bs, ch), plane(d, ds, ch)}))
        return st;
    const int n = r.width * ch;
    for (int y = 0; y < r.height; ++y) {
        const A* ar = rowAt(a, as, y);
        const B* br = rowAt(b, bs, y);
        D* dr = rowAt(d, ds, y);
        for (int i = 0; i < n; ++i) dr[i] = op(ar[i], br[i]);
    }
    return ippStsNoErr;
}

// d[i] = op(s[i], i % ch) over `ch` elements per pixel; d may alias s. The
// channel index lets per-channel constants in.
template <typename S, typename D, typename Op>
IppStatus mapRows(const S* s, int ss, D* d, int ds, IppiSize r, int ch, Op op) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss, ch), plane(d, ds, ch)})) return st;
    for (int y = 0; y < r.height; ++y) {
        const S* sr = rowAt(s, ss, y);
        D* dr = rowAt(d, ds, y);
        if (ch == 1) {
            for (int x = 0; x < r.width; ++x) dr[x] = op(sr[x], 0);
        } else {
            for (int x = 0; x < r.width; ++x)
                for (int c = 0; c < ch; ++c) dr[x * ch + c] = op(sr[x * ch + c], c);
        }
    }
    return ippStsNoErr;
}

}  // namespace kc::prim
