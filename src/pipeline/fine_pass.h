// The fine pass over a request whose mask already holds the high-resolution
// pass's alpha: full-resolution closed-form detail where that alpha is soft.
#pragma once

#include "api/keepcut.h"
#include "pipeline/fine_band.h"
#include "pipeline/fine_tiles.h"

struct FineSettings {
    FineBand band;
    FineTiling tiling;
    // Up to this many unpainted pixels the entry skips the first pass and
    // solves the whole band at once (solveWholeBand).
    long long wholeBandLimit;
};

// The settings the entry uses (see fine_pass.cpp for the measurements).
FineSettings defaultFineSettings();

// Rewrites the unpainted pixels of the request's region that the band selects
// (painted pixels per brushInfo stay); results are even bytes, as every
// computed mask byte. Throws what allocation throws.
FineStats computeAlphaFine(RKPSStructMsk2* request, const FineSettings& settings);

// Every unpainted pixel of the request's region solved in one system, the
// painted ones tied at their values: the whole-picture closed-form solve,
// written as even bytes. Needs no first pass.
FineStats solveWholeBand(RKPSStructMsk2* request);
