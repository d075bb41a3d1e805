// Normal equations on one-based CSR: transpose once, then row r of A'A is the
// sum over the entries (r, k) of A' of A'(r, k) times row k of A, gathered in
// a dense accumulator and emitted in ascending column order.
#include "matting/csr_normal.h"

#include <algorithm>
#include <stdexcept>

#include "matting/csr_transpose.h"

CsrMatrix csrNormalUpper(const CsrMatrix& A) {
    const int nnz = A.ia[A.rows] - 1;
    CsrMatrix At;
    At.rows = A.cols;
    At.cols = A.rows;
    At.a.resize(static_cast<size_t>(nnz) + A.cols);
    At.ja.resize(At.a.size());
    At.ia.resize(static_cast<size_t>(A.cols) + 1);
    // The const_casts only satisfy the transpose's C-style signature; it reads A.
    if (scsrMTranspose(const_cast<float*>(A.a.data()), const_cast<int*>(A.ia.data()),
                       const_cast<int*>(A.ja.data()), A.rows, A.cols, At.a.data(), At.ia.data(),
                       At.ja.data()) != 0)
        throw std::length_error("normal matrix: dimensions too large");

    CsrMatrix N;
    N.rows = N.cols = A.cols;
    N.ia.resize(static_cast<size_t>(A.cols) + 1);
    N.a.reserve(static_cast<size_t>(nnz) * 2);
    N.ja.reserve(N.a.capacity());
    std::vector<double> acc(static_cast<size_t>(A.cols), 0.0);
    std::vector<char> used(static_cast<size_t>(A.cols), 0);
    std::vector<int> touched;
    for (int r = 0; r < A.cols; ++r) {
        N.ia[r] = static_cast<int>(N.a.size()) + 1;
        touched.clear();
        touched.push_back(r);  // the diagonal is always present
        used[r] = 1;
        for (int p = At.ia[r] - 1; p < At.ia[r + 1] - 1; ++p) {
            const double v = At.a[p];
            if (v == 0.0) continue;  // includes the filler of an empty column
            const int k = At.ja[p] - 1;
            for (int q = A.ia[k] - 1; q < A.ia[k + 1] - 1; ++q) {
                const int c = A.ja[q] - 1;
                if (c < r) continue;
                if (!used[c]) {
                    used[c] = 1;
                    touched.push_back(c);
                }
                acc[c] += v * A.a[q];
            }
        }
        std::sort(touched.begin(), touched.end());
        for (int c : touched) {
            N.a.push_back(static_cast<float>(acc[c]));
            N.ja.push_back(c + 1);
            acc[c] = 0.0;
            used[c] = 0;
        }
    }
    N.ia[A.cols] = static_cast<int>(N.a.size()) + 1;
    return N;
}

std::vector<float> csrTransposeTimes(const CsrMatrix& A, const std::vector<float>& b, int nrhs) {
    std::vector<double> out(static_cast<size_t>(A.cols) * nrhs, 0.0);
    for (int s = 0; s < nrhs; ++s) {
        const float* bs = b.data() + static_cast<size_t>(s) * A.rows;
        double* os = out.data() + static_cast<size_t>(s) * A.cols;
        for (int r = 0; r < A.rows; ++r) {
            if (bs[r] == 0.0f) continue;
            for (int q = A.ia[r] - 1; q < A.ia[r + 1] - 1; ++q) os[A.ja[q] - 1] += A.a[q] * bs[r];
        }
    }
    return std::vector<float>(out.begin(), out.end());
}
