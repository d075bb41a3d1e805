// Plain raster routines for thick brush strokes in an 8-bit map (step in
// bytes): a thick line is a chain of filled discs, a disc a stack of
// horizontal runs, each run clipped to the map.
#pragma once

// Fills bytes min(xa, xb) .. max(xa, xb) of row y, clipped to the map.
// Returns 1 when something was drawn, 0 when the run lies outside.
int drawHLine(unsigned char* map, int step, int width, int height, int xa, int xb, int y,
              unsigned char value);

// Filled disc at (cx, cy): row cy + dy spans half-width trunc(sqrt(radius^2 -
// dy^2) + 0.49). Radius 0 is the single pixel (1 if inside, else 0); a
// negative radius draws nothing and returns 0; otherwise returns 1, also when
// every row was clipped away.
int drawCircle(unsigned char* map, int step, int width, int height, int cx, int cy, int radius,
               unsigned char value);

// Thick line from (x0, y0) to (x1, y1): a disc at the start, then one disc per
// step along the longer axis (the start excluded, the end included), centred
// on the line rounded by trunc(v + 0.49999). Returns 1.
int drawLineW(unsigned char* map, int step, int width, int height, int x0, int y0, int x1, int y1,
              int radius, unsigned char value);
