// Row loops shared by the elementwise primitives: one output element from the
// elements at the same place in one or two operands, and the Sfs-scaled
// integer forms. Kept in a header so the lambdas inline and the loops
// vectorise.
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

// The integer operations the Sfs primitives scale: op(a, b) = b op a (the
// primitives' operand order), and the range of values it yields for operands
// in [0, m], which picks the lanes the scaled loops run in.
struct SfsPlus {
    template <typename L>
    static L apply(L a, L b) {
        return static_cast<L>(b + a);
    }
    static constexpr long long lo(long long) { return 0; }
    static constexpr long long hi(long long m) { return 2 * m; }
};
struct SfsMinus {
    template <typename L>
    static L apply(L a, L b) {
        return static_cast<L>(b - a);
    }
    static constexpr long long lo(long long m) { return -m; }
    static constexpr long long hi(long long m) { return m; }
};
struct SfsTimes {
    template <typename L>
    static L apply(L a, L b) {
        return static_cast<L>(b * a);
    }
    static constexpr long long lo(long long) { return 0; }
    static constexpr long long hi(long long m) { return m * m; }
};

// Runs rows(scale) with the fastest scaler that is exact for Op on T.
template <typename T, typename Op, typename Rows>
void withSfs(int sf, Rows&& rows) {
    constexpr long long m = std::numeric_limits<T>::max();
    if (!withFixedSfs<T, Op::lo(m), Op::hi(m)>(sf, rows)) rows(SfsScaler<T>(sf));
}

// Row loops for the scaled forms, one per way the operands can coincide.
// A row that reads and writes the same pointer must not go through two
// pointers: the compiler's run-time overlap check would send it to the scalar
// loop. Distinct rows pass that check and run vectorised.
template <typename T, typename F>
void freshRow(const T* a, const T* b, T* d, int n, F f) {
    for (int x = 0; x < n; ++x) d[x] = f(a[x], b[x]);
}
template <typename T, typename F>
void updateRow(const T* o, T* d, int n, F f) {
    for (int x = 0; x < n; ++x) d[x] = f(o[x], d[x]);
}
template <typename T, typename F>
void selfRow(T* d, int n, F f) {
    for (int x = 0; x < n; ++x) d[x] = f(d[x]);
}

// d = Sfs(Op(a, b)) over one-channel regions; d may alias a or b.
template <typename Op, typename T>
IppStatus scaledZip(const T* a, int as, const T* b, int bs, T* d, int ds, IppiSize r, int sf) {
    if (IppStatus st = checkPlanes(r, {plane(a, as), plane(b, bs), plane(d, ds)})) return st;
    withSfs<T, Op>(sf, [&](auto scale) {
        using L = typename decltype(scale)::Lane;
        auto f = [scale](T x, T y) {
            return scale(Op::apply(static_cast<L>(x), static_cast<L>(y)));
        };
        for (int y = 0; y < r.height; ++y) {
            const T* ar = rowAt(a, as, y);
            const T* br = rowAt(b, bs, y);
            T* dr = rowAt(d, ds, y);
            if (dr == br && dr != ar)
                updateRow(ar, dr, r.width, f);
            else if (dr == ar && dr != br)
                updateRow(br, dr, r.width, [f](T o, T v) { return f(v, o); });
            else if (dr == ar)
                selfRow(dr, r.width, [f](T v) { return f(v, v); });
            else
                freshRow(ar, br, dr, r.width, f);
        }
    });
    return ippStsNoErr;
}

// d = Sfs(Op(k, s)) over one-channel regions (s op k); d may alias s.
template <typename Op, typename T>
IppStatus scaledConst(T k, const T* s, int ss, T* d, int ds, IppiSize r, int sf) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss), plane(d, ds)})) return st;
    withSfs<T, Op>(sf, [&](auto scale) {
        using L = typename decltype(scale)::Lane;
        const L kl = static_cast<L>(k);
        auto f = [scale, kl](T v) { return scale(Op::apply(kl, static_cast<L>(v))); };
        for (int y = 0; y < r.height; ++y) {
            const T* sr = rowAt(s, ss, y);
            T* dr = rowAt(d, ds, y);
            if (sr == dr)
                selfRow(dr, r.width, f);
            else
                updateRow(sr, dr, r.width, [f](T v, T) { return f(v); });
        }
    });
    return ippStsNoErr;
}

}  // namespace kc::prim
