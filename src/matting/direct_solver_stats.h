// What the calling thread's last direct solve did, and the knobs the
// benchmark turns to compare factorisations and orderings (process-wide; set
// by measurements only, never by the engine).
#pragma once

struct DirectSolveTimes {
    double analyse = 0.0;            // seconds: ordering and symbolic factorisation
    double factorise = 0.0;          // seconds, over both rounds when perturbed
    double solve = 0.0;              // seconds
    double factorNonzeros = 0.0;     // entries of the triangular factor
    double factorFlops = 0.0;        // floating-point operations of the factorisation
    bool perturbed = false;          // the diagonal had to be shifted
    bool givenOrderingUsed = false;  // the caller's ordering beat minimum degree
};

const DirectSolveTimes& lastDirectSolveTimes();

enum class DirectOrdering {
    GivenOrMinDegree,      // the caller's ordering if any; AMD competes on small systems (default)
    GivenOnly,             // the caller's ordering alone
    MinDegree,             // AMD only, the caller's ordering ignored
    LibraryDefault,        // the library's own strategy (AMD, then graph partitioning)
    GraphPartition,        // multilevel graph partitioning nested dissection only
    GivenOrGraphPartition  // the caller's ordering competing with graph partitioning
};

struct DirectSolveTuning {
    bool supernodal = true;
    DirectOrdering ordering = DirectOrdering::GivenOrMinDegree;
    // Relaxed amalgamation of supernodes: nrelax[] column counts and zrelax[]
    // fractions of explicit zeros; zero keeps the library's value.
    int nrelax[3] = {0, 0, 0};
    double zrelax[3] = {0.0, 0.0, 0.0};
    // Threads of the dense kernels; zero keeps the engine's choice. (The
    // factorisation's own loops always run on the calling thread.)
    int blasThreads = 0;
    // Large blocks of the factorisation on 2 MB pages where the system allows.
    bool hugePages = true;
};

// For measurements only; the engine never changes the defaults.
void setDirectSolveTuning(const DirectSolveTuning& t);
