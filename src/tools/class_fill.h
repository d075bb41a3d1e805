// Scanline flood fill over the classes of a brush map (cut, keep, anything
// else): the 8-connected area of the seed's class is overwritten with a
// marker byte outside that class, run by run.
#pragma once

#include <vector>

#include "core/ipp_types.h"
#include "core/ippi_resize.h"

// One filled run: row y, columns x0 .. x1 - 1.
struct FillRun {
    int y, x0, x1;
};

// Fills from (seedX, seedY), which must lie inside the map, writing `marker`
// (a byte not of the seed's class) over the area; returns the area's bounding
// rectangle. With `runs`, every filled run is appended to it.
IppiRect fillClassArea(unsigned char* mask, int maskStep, IppiSize size, IppiPoint seed,
                       unsigned char marker, std::vector<FillRun>* runs);
