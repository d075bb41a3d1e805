// Fill-reducing elimination order for systems whose unknowns are pixels of a
// grid coupled at most two pixels apart (the matting Laplacian's 3x3 windows).
#pragma once

#include <vector>

// Nested dissection of the pixel grid: the variables' extent is cut in two by
// a separator two pixels wide (nothing couples across it), a row or column
// band placed where it holds the fewest variables per pair it separates, with
// at least a quarter of the variables on each side; the two parts are ordered
// first, recursively, and the separator last. varIndex maps
// each pixel (row-major, width w, height h) to its variable number, or to a
// negative value for a pixel that is not a variable. Returns perm with
// perm[k] = the variable eliminated k-th; n is the number of variables.
std::vector<int> gridNestedDissection(const int* varIndex, int w, int h, int n);
