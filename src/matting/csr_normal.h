// Normal matrix A'A of a general one-based CSR matrix, as the upper triangle
// the symmetric solvers take.
#pragma once

#include <vector>

// One-based compressed sparse rows: row r holds entries ia[r] - 1 .. ia[r+1] - 2
// of a / ja, columns ascending.
struct CsrMatrix {
    int rows = 0, cols = 0;
    std::vector<float> a;
    std::vector<int> ia, ja;
};

// Upper triangle (columns ascending, diagonal first) of A'A for A of rows x
// cols, formed from A and its transpose (scsrMTranspose). Every row of the
// result holds at least its diagonal, so the solvers accept it even where a
// column of A is empty.
CsrMatrix csrNormalUpper(const CsrMatrix& A);

// A'b for each of nrhs right-hand sides stored one after another (rows values
// each); the result holds cols values per side.
std::vector<float> csrTransposeTimes(const CsrMatrix& A, const std::vector<float>& b, int nrhs);
