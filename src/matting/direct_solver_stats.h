// What the last direct solve did, and the knobs the benchmark turns to compare
// factorisations and orderings. Process-wide, like the rest of the engine's
// request state (one request at a time).
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
    GivenOrMinDegree,  // the caller's ordering if any, competing with AMD (the default)
    GivenOnly,         // the caller's ordering alone
    MinDegree,         // AMD only, the caller's ordering ignored
    LibraryDefault     // the library's own strategy (AMD, then graph partitioning)
};

struct DirectSolveTuning {
    bool supernodal = true;
    DirectOrdering ordering = DirectOrdering::GivenOrMinDegree;
};

// For measurements only; the engine never changes the defaults.
void setDirectSolveTuning(const DirectSolveTuning& t);
