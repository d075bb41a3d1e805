// Alpha refinement: re-solves the unknown pixels of an alpha map at full size
// in overlapping, memory-sized tiles, optionally smoothing each tile along
// colour edges.
#pragma once

#include <functional>

#include "core/img.h"

// Solves one tile in place: three colour planes at the tile's corner with
// their common row bytes, the tile size, the known map (0 unknown, 255 fixed)
// and the alpha map that holds the targets and receives the result.
using RefineTileSolver =
    std::function<void(unsigned char** planes, int planeStep, int width, int height,
                       unsigned char* known, int knownStep, unsigned char* alpha, int alphaStep)>;

// The closed-form solver on one tile, direct solver selected.
void refineSolveTileClosedForm(unsigned char** planes, int planeStep, int width, int height,
                               unsigned char* known, int knownStep, unsigned char* alpha,
                               int alphaStep);

// The tiling loop with the tile side and the solver given: tiles with at most
// 5 unknown pixels are skipped, the seam bands of inner sides are held fixed,
// and only unknown pixels of alpha change. The planes may have different row
// bytes; the solver is handed them under one.
void refineAlphaTiles(GIMG<unsigned char>** planes, GIMG<unsigned char>* known,
                      GIMG<unsigned char>* alpha, bool filter, int side,
                      const RefineTileSolver& solve);

// Refines alpha (in place) over tiles sized by usable memory with the
// closed-form solver. Internal to the engine despite its C linkage: it takes
// the engine's containers. Always returns 0; failures propagate as exceptions.
extern "C" int refineAlphaMW(GIMG<unsigned char>** planes, GIMG<unsigned char>* known,
                             GIMG<unsigned char>* alpha, bool filter);
