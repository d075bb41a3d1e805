// Bounding box of the work left in a brush map: every value other than two
// given ones, with a fixed margin, plus the counts of those two values inside.
#pragma once

#include "api/keepcut.h"

// Margin added on every side of the rows and columns that hold work, so that
// the solver sees some known context around the band.
inline constexpr int kMaskBBoxMargin = 12;
// Boxes lower than this many rows are not worth a solve and report nothing.
inline constexpr int kMaskBBoxMinHeight = 24;
// Result of the typed forms when no column holds work.
inline constexpr int kMaskBBoxNoColumn = 8;

// Box (x, w, y, h) around every map value other than valueA and valueB, widened
// by kMaskBBoxMargin and clipped to the map; step is in bytes. When the box is
// lower than kMaskBBoxMinHeight, x = w = y = h = 0 and the counts are -1. When
// both count pointers are given, countA and countB receive how many box pixels
// equal valueA and valueB. Returns 1, or kMaskBBoxNoColumn (writing nothing)
// when no column holds work. `ignored` is kept for the callers' argument lists.
int rkMaskBBox(const unsigned char* map, int step, int width, int height, int* x, int* w, int* y,
               int* h, int* countA, int* countB, int ignored, int valueA, int valueB);
int rkMaskBBox(const unsigned short* map, int step, int width, int height, int* x, int* w, int* y,
               int* h, int* countA, int* countB, int ignored, int valueA, int valueB);
