// The pyramid level GrabCut runs at for a region, and that level's size: the
// size a session used for the region must have.
#pragma once

#include "core/ip_size.h"

// Halvings asked for by a region whose longer side is L pixels:
// trunc(log2(L / 400)) + 1, at most 5 (201..799: 1, 800..1599: 2, ...;
// 101..200: 0, 100 and less: negative).
int grabCutLevels(int width, int height);
// The level the pyramid can give for those halvings: clamped to 0 (the region
// itself) from below and to the pyramid's deepest level from above.
int grabCutWorkLevel(int levels);
// The region's size at the working level: each halving rounds up.
IPSize grabCutWorkSize(int width, int height);
