// The solve of one KD-tree cell.
#pragma once

#include "core/img.h"

// Solves one cell in place: images holds the red, green and blue planes (and
// the alpha view as a fourth entry), known is 0 for unknown and 255 for fixed
// pixels, alpha holds the estimate and receives the result. Returns 1, or -5
// when the cell holds fewer than 3 unknown pixels.
int compAlphaKDTree(GIMG<unsigned char>** images, GIMG<unsigned char>* known,
                    GIMG<unsigned char>* alpha, int level, bool filter);
