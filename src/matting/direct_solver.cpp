// Direct solver of the symmetric matting systems on a sparse Cholesky
// factorisation: analyse (ordering and symbolic factor), factorise, solve.
//
// Choice of factorisation, by measurement on matting systems of 0.2 M unknowns
// (bench_matting --compare): the supernodal LL' runs its dense blocks through
// BLAS-3 kernels and factorised 3 times faster than the simplicial LDL',
// whose column-by-column updates have no blocking. The matting system is
// positive semidefinite, so LL' needs no pivoting; the one case it cannot take
// (a group of unknowns that touches no constraint, where the matrix is only
// semidefinite) is handled by a small diagonal shift, the same remedy as pivot
// perturbation. The shift is only tried after an unshifted attempt fails.
//
// Configuration, measured on two shared cores (bench_matting --at N with
// variants run in turn; min of 2-3 runs, load 1.5-4):
//  - Memory: the factor and its workspaces are fresh blocks whose pages are
//    touched once; on 4 KB pages the first-touch faults cost more than the
//    arithmetic (a 1.2 GB block took 3.7 s to fault in, 0.1 s on 2 MB pages).
//    Large blocks are advised onto 2 MB pages: factorisation at 0.2 M
//    unknowns 1.23 s -> 0.87 s.
//  - Threads: one (see SolveThreadScope): at 0.2 M unknowns the factorisation
//    went from 2.1-3.3 s (default threads) to 0.6-0.7 s, at 1 M from 16-20 s
//    to 5.3 s; two dense-kernel threads gave at most 4% for 65% more CPU.
//  - Ordering: the caller's grid dissection (balanced cuts) alone on large
//    systems; minimum degree (AMD) competes up to 0.3 M unknowns. Factor
//    flops at 0.2 / 1 M unknowns: grid 6.3 / 71 GFlop, AMD 7.6 / 102, graph
//    partitioning (METIS) 5.7 / 73 but its analysis took 2 s / 14 s.
//  - Relaxed amalgamation: larger supernodes (nrelax 8/32/96, 16/64/128)
//    changed the factorisation by under 5%, within the noise, for up to 17%
//    more memory: the library's defaults are kept.
// Result (1 M unknowns): assembly 1.4 s, analysis 1.1 s, factorisation 6.7 s,
// solve 0.2 s, 9.4 s in all and 1.97 GB peak (before: 20-24 s, 2.07 GB);
// 0.2 M unknowns 1.3 s (before 2.6-2.9 s).
#include "matting/direct_solver.h"

#include <cholmod.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

#include "matting/blas_buffer.h"
#include "matting/direct_solver_stats.h"
#include "matting/solver_block_pool.h"
#include "runtime/arg_check.h"
#include "runtime/entry_guard.h"
#include "runtime/machine_headroom.h"
#include "runtime/progress.h"
#include "runtime/result_codes.h"

extern "C" void openblas_set_num_threads(int threads);
extern "C" int openblas_get_num_threads();

namespace {

// Relative size of the diagonal shift that makes a semidefinite system
// factorisable: small against every real coupling, yet far above rounding.
constexpr double kPivotPerturbation = 1e-8;

// What the calling thread's last solve did.
thread_local DirectSolveTimes g_lastTimes;
DirectSolveTuning g_tuning;

// ---- the library's allocator ------------------------------------------------
// The factor and its workspaces are fresh blocks of hundreds of megabytes whose
// every page is touched once; at 4 KB a page the first-touch faults took a
// quarter of the factorisation (more on a virtual machine). Large blocks are
// therefore advised to use 2 MB pages where the system allows it on request.
constexpr std::size_t kHugePage = std::size_t{2} << 20;
// Below this, the few faults saved do not pay for the extra system call.
constexpr std::size_t kAdviseFrom = 4 * kHugePage;

void* adviseHugePages(void* p, std::size_t n) {
    if (!p || n < kAdviseFrom || !g_tuning.hugePages) return p;
    const auto first = (reinterpret_cast<std::uintptr_t>(p) + kHugePage - 1) & ~(kHugePage - 1);
    const auto end = (reinterpret_cast<std::uintptr_t>(p) + n) & ~(kHugePage - 1);
    // Advice only: where it is refused, the block stays on ordinary pages.
    if (end > first) madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
    return p;
}

// ---- threads ------------------------------------------------------------------
// One thread for the dense kernels, set for the solve and the caller's setting
// restored afterwards. Measured on two shared cores (0.2 and 1 M unknowns): a
// second dense-kernel thread cut the factorisation by 4% at most for 65% more
// processor time, as the dense kernels are only a fifth of it; waiting helper
// threads spin and yield, which under load slowed the whole solve down. The
// factorisation's own parallel loops run inline on the caller's thread (see
// the redirect below): teams of four had cost more in wake-ups than they saved.
constexpr int kSolveThreads = 1;

// The dense kernels' thread count is one setting for the whole process, and
// their work buffer is mapped once (blas_buffer.h): solves from two host
// threads take turns, so that neither changes the other's setting halfway.
std::mutex& solveLock() {
    static std::mutex m;
    return m;
}

class SolveThreadScope {
  public:
    explicit SolveThreadScope(int blasThreads) {
        blasThreads_ = openblas_get_num_threads();
        openblas_set_num_threads(blasThreads);
    }
    ~SolveThreadScope() { openblas_set_num_threads(blasThreads_); }
    SolveThreadScope(const SolveThreadScope&) = delete;
    SolveThreadScope& operator=(const SolveThreadScope&) = delete;

  private:
    int blasThreads_ = 1;
};

}  // namespace

// ---- the factorisation's parallel loops, run inline --------------------------
// The library is compiled with OpenMP, whose runtime allocates a team for every
// parallel region it enters (thousands per solve) and ends the whole process
// when such an allocation fails: a host would lose its unsaved work to a memory
// shortage. The link redirects the library's region entry and its two team
// queries here (--wrap), so a region is a plain call of its body on the calling
// thread, as a team of one. They live in this file because it is what pulls
// the library into every link. The team queries must answer for the inline
// team: a host calling us from inside its own OpenMP region would otherwise
// hand the body its team's size and this thread's number in it, and the body
// would do only that share of the loop.
extern "C" {
void __wrap_GOMP_parallel(void (*body)(void*), void* data, unsigned /*threads*/,
                          unsigned /*flags*/) {
    body(data);
}
int __wrap_omp_get_num_threads(void) {
    return 1;
}
int __wrap_omp_get_thread_num(void) {
    return 0;
}
}

namespace {

// ---- allocation failure hook for tests ------------------------------------
std::atomic<int> g_allocsBeforeFailure{-1};
std::atomic<int> g_failingAllocs{0};

bool injectAllocFailure() {
    if (g_allocsBeforeFailure.load() < 0) return false;
    if (g_allocsBeforeFailure.load() > 0) {
        --g_allocsBeforeFailure;
        return false;
    }
    if (g_failingAllocs.load() > 0) {
        --g_failingAllocs;
        return true;
    }
    g_allocsBeforeFailure = -1;
    return false;
}
// The library calls these from C: a failure is a null result, never a throw.
void* solverMalloc(size_t n) noexcept {
    return injectAllocFailure() ? nullptr : poolMalloc(n, adviseHugePages);
}
void* solverCalloc(size_t n, size_t s) noexcept {
    // The pool refuses n * s beyond size_t, as calloc does.
    return injectAllocFailure() ? nullptr : poolCalloc(n, s, adviseHugePages);
}
void* solverRealloc(void* p, size_t n) noexcept {
    return injectAllocFailure() ? nullptr : poolRealloc(p, n, adviseHugePages);
}

void installSolverAllocator() {
    static const bool installed = [] {
        SuiteSparse_config.malloc_func = solverMalloc;
        SuiteSparse_config.calloc_func = solverCalloc;
        SuiteSparse_config.realloc_func = solverRealloc;
        SuiteSparse_config.free_func = poolFree;
        // The engine never writes to a console (see solver_streams.c).
        SuiteSparse_config.printf_func = nullptr;
        return true;
    }();
    (void)installed;
}

// ---- owners of the library's objects ---------------------------------------
bool ranOutOfMemory(const cholmod_common& c) {
    return c.status == CHOLMOD_OUT_OF_MEMORY || c.status == CHOLMOD_TOO_LARGE;
}

class CholmodCommon {
  public:
    cholmod_common c;
    CholmodCommon() {
        installSolverAllocator();
        cholmod_start(&c);
        // The engine never writes to a console; failures travel as codes.
        c.print = 0;
        c.supernodal = g_tuning.supernodal ? CHOLMOD_SUPERNODAL : CHOLMOD_SIMPLICIAL;
        // A simplicial factor stays LDL' (no square roots, same sparsity).
        c.final_ll = g_tuning.supernodal;
    }
    ~CholmodCommon() { cholmod_finish(&c); }
    CholmodCommon(const CholmodCommon&) = delete;
    CholmodCommon& operator=(const CholmodCommon&) = delete;
    bool outOfMemory() const { return ranOutOfMemory(c); }
};

struct SparseDel {
    cholmod_common* c;
    void operator()(cholmod_sparse* a) const { cholmod_free_sparse(&a, c); }
};
struct FactorDel {
    cholmod_common* c;
    void operator()(cholmod_factor* l) const { cholmod_free_factor(&l, c); }
};
struct DenseDel {
    cholmod_common* c;
    void operator()(cholmod_dense* d) const { cholmod_free_dense(&d, c); }
};
using SparsePtr = std::unique_ptr<cholmod_sparse, SparseDel>;
using FactorPtr = std::unique_ptr<cholmod_factor, FactorDel>;
using DensePtr = std::unique_ptr<cholmod_dense, DenseDel>;

double secondsSince(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// Why the upper one-based rows cannot be read as a matrix, or null when they
// can: row starts from 1 and non-decreasing, columns within the matrix, never
// left of the diagonal and strictly ascending within a row. The factorisation
// takes the rows as sorted columns without repeats; a repeated column made it
// write outside its blocks, so anything else is refused before it sees them.
const char* upperCsrFault(int n, const int* ia, const int* ja) {
    if (ia[0] != 1) return "the first row start is not 1";
    for (int r = 0; r < n; ++r) {
        if (ia[r + 1] < ia[r]) return "row starts decrease";
        for (int k = ia[r] - 1; k < ia[r + 1] - 1; ++k) {
            if (ja[k] < r + 1 || ja[k] > n) return "a column lies left of the diagonal or outside";
            if (k > ia[r] - 1 && ja[k] <= ja[k - 1])
                return "columns repeat or do not ascend within a row";
        }
    }
    return nullptr;
}

// The upper one-based rows, read as zero-based lower columns (same arrays).
template <typename Real>
cholmod_sparse* lowerCscFromUpperCsr(int n, const Real* a, const int* ia, const int* ja,
                                     cholmod_common* c) {
    const int nnz = ia[n] - 1;
    cholmod_sparse* s = cholmod_allocate_sparse(n, n, std::max(nnz, 1), 1, 1, -1, CHOLMOD_REAL, c);
    if (!s) return nullptr;
    int* p = static_cast<int*>(s->p);
    int* i = static_cast<int*>(s->i);
    double* x = static_cast<double*>(s->x);
    for (int r = 0; r <= n; ++r) p[r] = ia[r] - 1;
    for (int k = 0; k < nnz; ++k) {
        i[k] = ja[k] - 1;
        x[k] = static_cast<double>(a[k]);
    }
    return s;
}

double largestDiagonal(const cholmod_sparse* s) {
    const int* p = static_cast<const int*>(s->p);
    const int* i = static_cast<const int*>(s->i);
    const double* x = static_cast<const double*>(s->x);
    double m = 0.0;
    for (size_t col = 0; col < s->ncol; ++col)
        for (int k = p[col]; k < p[col + 1]; ++k)
            if (static_cast<size_t>(i[k]) == col) m = std::max(m, std::fabs(x[k]));
    return m;
}

bool allFinite(const cholmod_dense* d) {
    const double* x = static_cast<const double*>(d->x);
    for (size_t k = 0; k < d->nrow * d->ncol; ++k)
        if (!std::isfinite(x[k])) return false;
    return true;
}

enum class Outcome { Solved, OutOfMemory };

// A one-column solve's result and workspaces, allocated here with their
// results checked. The library's solve makes the same three for itself, with
// exactly these shapes, when it is handed none; but this version of it goes
// on after such an allocation fails and reads through the null block. Handed
// blocks of the right shape, it allocates nothing.
struct SolveBlocks {
    // A simplicial solve works on four right-hand sides at a time.
    static constexpr int kSimplicialRows = 4;
    DensePtr x, y, e;
    SolveBlocks(const cholmod_factor& L, int n, cholmod_common* c)
        : x(cholmod_allocate_dense(n, 1, n, CHOLMOD_REAL, c), DenseDel{c}),
          y(L.is_super
                ? cholmod_allocate_dense(n, 1, n, CHOLMOD_REAL, c)
                : cholmod_allocate_dense(kSimplicialRows, n, kSimplicialRows, CHOLMOD_REAL, c),
            DenseDel{c}),
          e(L.is_super
                ? cholmod_allocate_dense(1, std::max<size_t>(L.maxesize, 1), 1, CHOLMOD_REAL, c)
                : nullptr,
            DenseDel{c}) {}
    bool complete(const cholmod_factor& L) const { return x && y && (e || !L.is_super); }
};

// X = A \ B with the factor L, one column at a time. Several columns at once
// would take the dense kernels' small-matrix product, which allocates from the
// heap without checking the result (it crashed when that allocation failed);
// one column takes the matrix-vector kernels, which work in the buffer mapped
// before the factorisation. Throws 123 when the library fails otherwise.
Outcome solveByColumns(cholmod_factor& L, const cholmod_dense& B, cholmod_dense& X,
                       cholmod_common* c) {
    const int n = static_cast<int>(B.nrow);
    SolveBlocks blocks(L, n, c);
    if (!blocks.complete(L)) return Outcome::OutOfMemory;
    for (size_t j = 0; j < B.ncol; ++j) {
        cholmod_dense column = B;  // a view of column j: same storage, one column
        column.ncol = 1;
        column.nzmax = B.nrow;
        column.x = static_cast<double*>(B.x) + j * B.d;
        cholmod_dense* xp = blocks.x.get();
        cholmod_dense* yp = blocks.y.get();
        cholmod_dense* ep = blocks.e.get();
        const int solved =
            cholmod_solve2(CHOLMOD_A, &L, &column, nullptr, &xp, nullptr, &yp, &ep, c);
        // The library replaces a block it finds the wrong shape; keep owning
        // whatever it left.
        blocks.x.release(), blocks.y.release(), blocks.e.release();
        blocks.x.reset(xp), blocks.y.reset(yp), blocks.e.reset(ep);
        if (!solved || !xp) {
            if (ranOutOfMemory(*c)) return Outcome::OutOfMemory;
            throw kErrSolverSolve;
        }
        std::copy_n(static_cast<const double*>(xp->x), B.nrow, static_cast<double*>(X.x) + j * X.d);
    }
    return Outcome::Solved;
}

// Bytes the factorisation and the solve will allocate after the analysis:
// the factor's values and the update workspace (supernodal), or the factor's
// entries with their row indices (simplicial), plus the solution, its
// workspaces and the integer maps of the factorisation.
double numericBytes(const cholmod_factor& L, const cholmod_common& c, int n, int nrhs) {
    const double vectors = static_cast<double>(n) * nrhs;
    const double ints = 4.0 * sizeof(int) * n;
    if (L.is_super)
        return sizeof(double) * (static_cast<double>(L.xsize) + static_cast<double>(L.maxcsize) +
                                 2.0 * vectors + static_cast<double>(L.maxesize) * nrhs) +
               ints;
    const double lnz = c.selected >= 0 && c.selected <= CHOLMOD_MAXMETHODS
                           ? c.method[c.selected].lnz
                           : static_cast<double>(n);
    return (sizeof(double) + sizeof(int)) * lnz + sizeof(double) * 2.0 * vectors + ints;
}

// Minimum degree competes with the caller's ordering up to this many unknowns,
// where it costs a tenth of a second; beyond, it took 0.6 s at 1 M unknowns
// and lost to the grid dissection by a fifth of the flops.
constexpr int kMinDegreeCompetesUpTo = 300000;

// The orderings the analysis tries (it keeps the one with the smallest factor);
// givenOnly leaves perm alone unless the benchmark asked for another choice.
void chooseOrderings(int n, cholmod_common* c, const int*& perm, bool givenOnly) {
    const DirectOrdering o = givenOnly && g_tuning.ordering == DirectOrdering::GivenOrMinDegree
                                 ? DirectOrdering::GivenOnly
                                 : g_tuning.ordering;
    if (o == DirectOrdering::MinDegree || o == DirectOrdering::LibraryDefault ||
        o == DirectOrdering::GraphPartition)
        perm = nullptr;
    c->nmethods = 0;
    if (o == DirectOrdering::LibraryDefault) return;
    if (perm) c->method[c->nmethods++].ordering = CHOLMOD_GIVEN;
    if (perm && (o == DirectOrdering::GivenOnly ||
                 (o == DirectOrdering::GivenOrMinDegree && n > kMinDegreeCompetesUpTo)))
        return;
    const bool partition =
        o == DirectOrdering::GraphPartition || o == DirectOrdering::GivenOrGraphPartition;
    c->method[c->nmethods++].ordering = partition ? CHOLMOD_METIS : CHOLMOD_AMD;
}

void applyRelaxation(cholmod_common* c) {
    for (int k = 0; k < 3; ++k) {
        if (g_tuning.nrelax[k] > 0) c->nrelax[k] = static_cast<size_t>(g_tuning.nrelax[k]);
        if (g_tuning.zrelax[k] > 0.0) c->zrelax[k] = g_tuning.zrelax[k];
    }
}

// The three phases; the solution goes over b. Throws 121/122/123.
template <typename Real>
Outcome solveUpper(int n, const Real* a, const int* ia, const int* ja, Real* b, int nrhs, int mtype,
                   const int* perm) {
    g_lastTimes = DirectSolveTimes{};
    if (n < 1 || nrhs < 1 || !a || !ia || !ja || !b) throw kErrSolverAnalysis;
    if (mtype != kMtypeSymIndefinite && mtype != kMtypeSymPosDef) throw kErrSolverAnalysis;
    if (upperCsrFault(n, ia, ja)) throw kErrSolverAnalysis;

    const std::lock_guard<std::mutex> turn(solveLock());
    const SolveThreadScope threads(g_tuning.blasThreads > 0 ? g_tuning.blasThreads : kSolveThreads);
    CholmodCommon cc;
    cholmod_common* c = &cc.c;
    // Phase 1: analysis.
    auto t0 = std::chrono::steady_clock::now();
    SparsePtr A(lowerCscFromUpperCsr(n, a, ia, ja, c), SparseDel{c});
    if (!A) {
        if (cc.outOfMemory()) return Outcome::OutOfMemory;
        throw kErrSolverAnalysis;
    }
    chooseOrderings(n, c, perm, false);
    applyRelaxation(c);
    FactorPtr L(cholmod_analyze_p(A.get(), const_cast<int*>(perm), nullptr, 0, c), FactorDel{c});
    if (!L) {
        if (cc.outOfMemory()) return Outcome::OutOfMemory;
        throw kErrSolverAnalysis;
    }
    g_lastTimes.analyse = secondsSince(t0);
    if (c->selected >= 0 && c->selected <= CHOLMOD_MAXMETHODS)
        g_lastTimes.factorNonzeros = c->method[c->selected].lnz;
    if (c->selected >= 0 && c->selected <= CHOLMOD_MAXMETHODS)
        g_lastTimes.factorFlops = c->method[c->selected].fl;
    g_lastTimes.givenOrderingUsed = perm && L->ordering == CHOLMOD_GIVEN;
    // The analysis knows the factor's size: a solve the machine cannot hold
    // is refused here, before any of it is allocated, and the dense kernels'
    // buffer is mapped before the factor can take its room.
    if (numericBytes(*L, *c, n, nrhs) > machineHeadroomBytes() || !blasBufferReady())
        return Outcome::OutOfMemory;
    progressKick();

    DensePtr B(cholmod_allocate_dense(n, nrhs, n, CHOLMOD_REAL, c), DenseDel{c});
    if (!B) {
        if (cc.outOfMemory()) return Outcome::OutOfMemory;
        throw kErrSolverSolve;
    }
    double* bx = static_cast<double*>(B->x);
    for (long long k = 0; k < static_cast<long long>(n) * nrhs; ++k) bx[k] = b[k];

    // Phases 2 and 3, again with a growing diagonal shift while the matrix
    // proves only semidefinite (or too close to it for a finite solution).
    // Its values come from single precision, so rounding alone can leave the
    // zero eigenvalue of an unconstrained group slightly negative: the shift
    // grows until it clears that.
    DensePtr X(cholmod_allocate_dense(n, nrhs, n, CHOLMOD_REAL, c), DenseDel{c});
    if (!X) {
        if (cc.outOfMemory()) return Outcome::OutOfMemory;
        throw kErrSolverSolve;
    }
    constexpr double kShifts[] = {0.0, kPivotPerturbation, kPivotPerturbation * 1e2,
                                  kPivotPerturbation * 1e4};
    constexpr int kRounds = static_cast<int>(sizeof(kShifts) / sizeof(kShifts[0]));
    const double scale = std::max(largestDiagonal(A.get()), 1.0);
    for (int round = 0; round < kRounds; ++round) {
        const bool last = round == kRounds - 1;
        double beta[2] = {kShifts[round] * scale, 0.0};
        g_lastTimes.perturbed = round > 0;
        t0 = std::chrono::steady_clock::now();
        cholmod_factorize_p(A.get(), beta, nullptr, 0, L.get(), c);
        g_lastTimes.factorise += secondsSince(t0);
        if (cc.outOfMemory()) return Outcome::OutOfMemory;
        if (c->status < 0) throw kErrSolverFactor;
        if (c->status == CHOLMOD_NOT_POSDEF) {
            if (last) throw kErrSolverFactor;
            continue;
        }
        progressKick();
        t0 = std::chrono::steady_clock::now();
        const Outcome solved = solveByColumns(*L, *B, *X, c);
        g_lastTimes.solve += secondsSince(t0);
        if (solved == Outcome::OutOfMemory) return Outcome::OutOfMemory;
        if (allFinite(X.get())) break;
        if (last) throw kErrSolverSolve;
    }
    const double* xx = static_cast<const double*>(X->x);
    for (long long k = 0; k < static_cast<long long>(n) * nrhs; ++k)
        b[k] = static_cast<Real>(xx[k]);
    progressKick();
    return Outcome::Solved;
}

}  // namespace

// ---- a factor kept for a later right-hand side -------------------------------
struct DirectFactor::State {
    CholmodCommon cc;
    SparsePtr A{nullptr, SparseDel{&cc.c}};
    FactorPtr L{nullptr, FactorDel{&cc.c}};
    int n = 0;
    int round = 0;  // index of the diagonal shift the factor carries
    double scale = 1.0;
    double analyse = 0.0, factorise = 0.0;

    // Factorises with the shift of this round and the following ones until
    // the matrix proves positive definite. Takes the solver's turn.
    // The shifts solveUpper tries, in the same order.
    static constexpr double kShifts[] = {0.0, kPivotPerturbation, kPivotPerturbation * 1e2,
                                         kPivotPerturbation * 1e4};
    static constexpr int kRounds = static_cast<int>(sizeof(kShifts) / sizeof(kShifts[0]));

    void factoriseFrom(int first) {
        cholmod_common* c = &cc.c;
        const std::lock_guard<std::mutex> turn(solveLock());
        const SolveThreadScope threads(g_tuning.blasThreads > 0 ? g_tuning.blasThreads
                                                                : kSolveThreads);
        if (numericBytes(*L, *c, n, 1) > machineHeadroomBytes() || !blasBufferReady())
            throw kErrSolverFactor;
        for (round = first; round < kRounds; ++round) {
            double beta[2] = {kShifts[round] * scale, 0.0};
            const auto t0 = std::chrono::steady_clock::now();
            cholmod_factorize_p(A.get(), beta, nullptr, 0, L.get(), c);
            factorise += secondsSince(t0);
            if (c->status < 0 || cc.outOfMemory()) throw kErrSolverFactor;
            if (c->status != CHOLMOD_NOT_POSDEF) return;
        }
        throw kErrSolverFactor;
    }
    bool lastRound() const { return round >= kRounds - 1; }
};

DirectFactor::DirectFactor(int n, const double* a, const int* ia, const int* ja, const int* perm)
    : s_(std::make_unique<State>()) {
    if (n < 1 || !a || !ia || !ja || upperCsrFault(n, ia, ja)) throw kErrSolverAnalysis;
    cholmod_common* c = &s_->cc.c;
    s_->n = n;
    const auto t0 = std::chrono::steady_clock::now();
    s_->A.reset(lowerCscFromUpperCsr(n, a, ia, ja, c));
    if (!s_->A) throw s_->cc.outOfMemory() ? kErrSolverFactor : kErrSolverAnalysis;
    chooseOrderings(n, c, perm, true);
    applyRelaxation(c);
    s_->L.reset(cholmod_analyze_p(s_->A.get(), const_cast<int*>(perm), nullptr, 0, c));
    if (!s_->L) throw s_->cc.outOfMemory() ? kErrSolverFactor : kErrSolverAnalysis;
    s_->analyse = secondsSince(t0);
    s_->scale = std::max(largestDiagonal(s_->A.get()), 1.0);
    progressKick();
    s_->factoriseFrom(0);
}

DirectFactor::~DirectFactor() = default;
DirectFactor::DirectFactor(DirectFactor&&) noexcept = default;
DirectFactor& DirectFactor::operator=(DirectFactor&&) noexcept = default;

void DirectFactor::solve(double* b) {
    cholmod_common* c = &s_->cc.c;
    const int n = s_->n;
    DensePtr B(cholmod_allocate_dense(n, 1, n, CHOLMOD_REAL, c), DenseDel{c});
    DensePtr X(cholmod_allocate_dense(n, 1, n, CHOLMOD_REAL, c), DenseDel{c});
    if (!B || !X) throw kErrSolverFactor;
    std::copy_n(b, n, static_cast<double*>(B->x));
    for (;;) {
        {
            const std::lock_guard<std::mutex> turn(solveLock());
            const SolveThreadScope threads(g_tuning.blasThreads > 0 ? g_tuning.blasThreads
                                                                    : kSolveThreads);
            if (solveByColumns(*s_->L, *B, *X, c) == Outcome::OutOfMemory) throw kErrSolverFactor;
        }
        if (allFinite(X.get())) break;
        // Too close to semidefinite for a finite solution: a larger shift.
        if (s_->lastRound()) throw kErrSolverSolve;
        s_->factoriseFrom(s_->round + 1);
    }
    std::copy_n(static_cast<const double*>(X->x), n, b);
}

double DirectFactor::analyseSeconds() const {
    return s_->analyse;
}
double DirectFactor::factoriseSeconds() const {
    return s_->factorise;
}

const DirectSolveTimes& lastDirectSolveTimes() {
    return g_lastTimes;
}
void setDirectSolveTuning(const DirectSolveTuning& t) {
    g_tuning = t;
}

int pardisoSolverIC(int n, float* a, int* ia, int* ja, float* b, float* /*x*/, int nrhs, int mtype,
                    const int* perm) {
    return solveUpper(n, a, ia, ja, b, nrhs, mtype, perm) == Outcome::Solved ? 1 : 0;
}

int pardisoSolverIC(int n, double* a, int* ia, int* ja, double* b, double* /*x*/, int nrhs,
                    int mtype, const int* perm) {
    return solveUpper(n, a, ia, ja, b, nrhs, mtype, perm) == Outcome::Solved ? 1 : 0;
}

// This solver has no out-of-core mode, so the variant runs in core. It is a
// host entry: the phase failures it would throw come back as its result, and
// every result but success leaves a line in the log.
extern "C" int pardisoSolverOOC(int n, float* a, int* ia, int* ja, float* b, float* x, int nrhs,
                                int mtype) {
    constexpr const char* kEntry = "pardisoSolverOOC";
    return rkGuardEntry(kEntry, [&] {
        if (!a || !ia || !ja || !b) return rkRefuseWith(kEntry, "a matrix array or b is null");
        if (n < 1 || nrhs < 1) return rkRefuseWith(kEntry, "n and nrhs must be positive");
        if (mtype != kMtypeSymIndefinite && mtype != kMtypeSymPosDef)
            return rkRefuseWith(kEntry, "mtype must be 2 or -2 (a symmetric matrix)");
        if (const char* fault = upperCsrFault(n, ia, ja)) return rkRefuseWith(kEntry, fault);
        const int solved = pardisoSolverIC(n, a, ia, ja, b, x, nrhs, mtype);
        if (solved != 1) rkLogResult(kEntry, solved);
        return solved;
    });
}

int pardisoSolver(int n, float* a, int* ia, int* ja, float* b, float* x, int nrhs, int mtype,
                  const int* perm) {
    return pardisoSolverIC(n, a, ia, ja, b, x, nrhs, mtype, perm) == 1 ? 0 : 1;
}

namespace kc::testing {
void failDirectSolverAllocs(int after, int n) {
    installSolverAllocator();
    g_failingAllocs = n;
    g_allocsBeforeFailure = after;
}
}  // namespace kc::testing
