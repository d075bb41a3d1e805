// Fuzz target for the exported direct solver: small symmetric systems in
// one-based upper-triangle compressed rows, sound ones (diagonally dominant,
// so the solution is well defined) and broken ones: columns out of order,
// repeated or out of range, entries left of the diagonal, falling row starts,
// a missing diagonal, non-finite values, null arrays and bad sizes. Checks: a
// documented result; refusal exactly for refused arguments (b untouched); a
// log line for every failure; success for sound systems with a small
// residual; the matrix arrays only read; nothing written outside b and x.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "guarded_buffer.h"

namespace {

using namespace kc_fuzz;

constexpr int kMaxOrder = 12;
constexpr int kMaxRhs = 3;
constexpr int kBrokenOdds = 32;
// Residual allowed of a single-precision solve of these well-conditioned
// systems (diagonal dominance of at least 1), relative to the right side.
constexpr double kResidualTolerance = 1e-3;

enum class Flaw {
    None,
    Unsorted,         // two columns of a row swapped
    RepeatedColumn,   // a column twice in a row
    OutOfRange,       // a column outside 1..n
    BelowDiagonal,    // an entry left of the diagonal
    FallingRowStart,  // row starts decrease
    FirstRowStart,    // the first row start is not 1
    MissingDiagonal,  // a row without its diagonal entry
    NonFinite,        // a NaN or infinite value
};
constexpr int kFlawKinds = 9;

// Rows that cannot be read as the upper triangle in order: refused. (A row
// without its diagonal, or a non-finite value, is a matrix the solve may
// fail on, not a malformed one.)
bool malformed(Flaw f) {
    return f == Flaw::Unsorted || f == Flaw::RepeatedColumn || f == Flaw::OutOfRange ||
           f == Flaw::BelowDiagonal || f == Flaw::FallingRowStart || f == Flaw::FirstRowStart;
}

template <typename T>
GuardedBuffer guarded(const std::vector<T>& v) {
    GuardedBuffer g(static_cast<int>(v.size()), 1, sizeof(T),
                    static_cast<long long>(v.size() * sizeof(T)), 0);
    if (!v.empty()) std::memcpy(g.data(), v.data(), v.size() * sizeof(T));
    g.snapshot();
    return g;
}

struct System {
    int n;
    std::vector<double> dense;  // the full symmetric matrix, row-major
    std::vector<int> ia, ja;
    std::vector<float> a;
};

// Upper rows, diagonal first, columns ascending; diagonal = 1 + the row's
// absolute off-diagonal sum (both triangles) plus a little.
System soundSystem(FuzzInput& in, int n) {
    System s{n, std::vector<double>(static_cast<size_t>(n) * n, 0.0), {1}, {}, {}};
    for (int r = 0; r < n; ++r)
        for (int c = r + 1; c < n; ++c)
            if (in.range(0, 3) == 0) {
                const double v = static_cast<int8_t>(in.byte()) / 16.0;
                s.dense[r * n + c] = s.dense[c * n + r] = v;
            }
    for (int r = 0; r < n; ++r) {
        double sum = 1.0 + in.byte() / 32.0;
        for (int c = 0; c < n; ++c)
            if (c != r) sum += std::fabs(s.dense[r * n + c]);
        s.dense[r * n + r] = static_cast<float>(sum);
    }
    for (int r = 0; r < n; ++r) {
        for (int c = r; c < n; ++c)
            if (c == r || s.dense[r * n + c] != 0.0) {
                s.ja.push_back(c + 1);
                s.a.push_back(static_cast<float>(s.dense[r * n + c]));
            }
        s.ia.push_back(static_cast<int>(s.ja.size()) + 1);
    }
    return s;
}

// Applies the flaw where the system has room for it; returns the flaw made
// (None when it had no room). Row starts stay within the arrays.
Flaw applyFlaw(FuzzInput& in, System& s, Flaw f) {
    const int n = s.n, nnz = static_cast<int>(s.ja.size());
    const int r = in.range(0, n - 1);
    const int first = s.ia[r] - 1, count = s.ia[r + 1] - s.ia[r];
    switch (f) {
        case Flaw::None:
            return f;
        case Flaw::Unsorted:
            if (count < 2) return Flaw::None;
            std::swap(s.ja[first], s.ja[first + count - 1]);
            std::swap(s.a[first], s.a[first + count - 1]);
            return f;
        case Flaw::RepeatedColumn:
            if (count < 2) return Flaw::None;
            s.ja[first + count - 1] = s.ja[first + in.range(0, count - 2)];
            return f;
        case Flaw::OutOfRange: {
            static constexpr int kBad[] = {0, -1, std::numeric_limits<int>::max(),
                                           std::numeric_limits<int>::min()};
            s.ja[in.range(0, nnz - 1)] = in.flag() ? n + in.range(1, 3) : kBad[in.range(0, 3)];
            return f;
        }
        case Flaw::BelowDiagonal:
            if (r == 0) return Flaw::None;
            s.ja[first + in.range(0, count - 1)] = in.range(1, r);
            return f;
        case Flaw::FallingRowStart:
            if (count < 1 || r == 0) return Flaw::None;
            std::swap(s.ia[r], s.ia[r + 1]);
            return f;
        case Flaw::FirstRowStart:
            s.ia[0] = in.flag() ? 0 : std::min(2, s.ia[1]);
            return s.ia[0] == 1 ? Flaw::None : f;
        case Flaw::MissingDiagonal:
            s.ja.erase(s.ja.begin() + first);
            s.a.erase(s.a.begin() + first);
            for (int k = r + 1; k <= n; ++k) --s.ia[k];
            return f;
        case Flaw::NonFinite: {
            static constexpr float kBad[] = {std::numeric_limits<float>::quiet_NaN(),
                                             std::numeric_limits<float>::infinity(),
                                             -std::numeric_limits<float>::infinity()};
            s.a[in.range(0, nnz - 1)] = kBad[in.range(0, 2)];
            return f;
        }
    }
    return Flaw::None;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    const int n = in.range(1, kMaxOrder), nrhs = in.range(1, kMaxRhs);
    const int mtypePick = in.range(0, 3);
    const int mtype = mtypePick < 2 ? -2 : mtypePick == 2 ? 2 : in.range(-4, 13);
    System s = soundSystem(in, n);
    const int flawPick = in.range(0, 2 * kFlawKinds - 1);  // half of the systems are sound
    const Flaw flaw =
        applyFlaw(in, s, static_cast<Flaw>(flawPick < kFlawKinds ? 0 : flawPick - kFlawKinds));

    std::vector<float> b0(static_cast<size_t>(n) * nrhs);
    for (auto& v : b0) v = static_cast<int8_t>(in.byte()) / 8.0f;
    GuardedBuffer ga = guarded(s.a), gia = guarded(s.ia), gja = guarded(s.ja), gb = guarded(b0),
                  gx = guarded(std::vector<float>(b0.size(), 0.0f));
    const bool nullA = in.rarely(kBrokenOdds), nullIa = in.rarely(kBrokenOdds),
               nullJa = in.rarely(kBrokenOdds), nullB = in.rarely(kBrokenOdds), nullX = in.flag();
    int nArg = n, nrhsArg = nrhs;
    if (in.rarely(kBrokenOdds)) nArg = in.range(-2, 0);
    if (in.rarely(kBrokenOdds)) nrhsArg = in.range(-2, 0);
    const bool symmetric = mtype == 2 || mtype == -2;
    const bool mustRefuse = nullA || nullIa || nullJa || nullB || nArg < 1 || nrhsArg < 1 ||
                            !symmetric || malformed(flaw);

    clearErrMsg();
    const int result =
        pardisoSolverOOC(nArg, nullA ? nullptr : reinterpret_cast<float*>(ga.data()),
                         nullIa ? nullptr : reinterpret_cast<int*>(gia.data()),
                         nullJa ? nullptr : reinterpret_cast<int*>(gja.data()),
                         nullB ? nullptr : reinterpret_cast<float*>(gb.data()),
                         nullX ? nullptr : reinterpret_cast<float*>(gx.data()), nrhsArg, mtype);
    requireResult(kSolverResults, result, mustRefuse);
    requireNone(ga.unexpectedChange("a"));
    requireNone(gia.unexpectedChange("ia"));
    requireNone(gja.unexpectedChange("ja"));
    requireNone(gx.unexpectedChange("x", anyPixel));
    if (result == kRefused) return requireNone(gb.unexpectedChange("b")), 0;
    requireNone(gb.unexpectedChange("b", anyPixel));
    require(!(result == 1 && malformed(flaw)), "pardisoSolverOOC solved a malformed matrix (flaw " +
                                                   std::to_string(static_cast<int>(flaw)) + ")");
    const bool soundMatrix = flaw == Flaw::None || flaw == Flaw::Unsorted;
    if (soundMatrix && (mtype == 2 || mtype == -2))
        require(result == 1,
                "pardisoSolverOOC returned " + std::to_string(result) + " for a sound system");
    if (result != 1 || !soundMatrix) return 0;

    // The solution is over b: A x = b0 within single-precision accuracy.
    std::vector<float> x(b0.size());
    std::memcpy(x.data(), gb.data(), x.size() * sizeof(float));
    for (int k = 0; k < nrhs; ++k) {
        double scale = 1.0, worst = 0.0;
        for (int r = 0; r < n; ++r) {
            double ax = 0.0;
            for (int c = 0; c < n; ++c) ax += s.dense[r * n + c] * x[k * n + c];
            worst = std::max(worst, std::fabs(ax - b0[k * n + r]));
            scale = std::max(scale, std::fabs(static_cast<double>(b0[k * n + r])));
        }
        require(worst <= kResidualTolerance * scale,
                "pardisoSolverOOC's solution leaves a residual of " + std::to_string(worst));
    }
    return 0;
}
