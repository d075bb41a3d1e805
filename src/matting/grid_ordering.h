// Fill-reducing elimination order for systems whose unknowns are pixels of a
// grid coupled at most two pixels apart (the matting Laplacian's 3x3 windows).
#pragma once

#include <vector>

// Nested dissection of the pixel grid: the region is cut in half across its
// longer side by a separator two pixels wide (nothing couples across it), the
// halves are ordered first, recursively, and the separator last. varIndex maps
// each pixel (row-major, width w, height h) to its variable number, or to a
// negative value for a pixel that is not a variable. Returns perm with
// perm[k] = the variable eliminated k-th; n is the number of variables.
std::vector<int> gridNestedDissection(const int* varIndex, int w, int h, int n);
