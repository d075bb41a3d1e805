// Transpose of a general one-based CSR matrix by sorting packed (column, row)
// keys, so that entries of every new row come out in ascending column order.
#include "matting/csr_transpose.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace {
// Keys pack column x kKeyStride + row; rows must stay below it.
constexpr double kKeyStride = 10000000.0;
// Widest dimension, in bits, that the packing is trusted with.
constexpr int kMaxDimensionBits = 26;
// Keeps the decoded row off a rounding edge when the key is truncated.
constexpr double kKeyRoundingGuard = 0.49;

int bitsOf(int v) {
    return static_cast<int>(std::log(static_cast<double>(v)) / std::log(2.0)) + 1;
}
}  // namespace

int scsrMTranspose(float* a, int* ia, int* ja, int rows, int cols, float* at, int* iat, int* jat) {
    const int nnz = ia[rows] - 1;
    if (bitsOf(rows) >= kMaxDimensionBits || bitsOf(cols) >= kMaxDimensionBits) return -1;

    std::vector<double> keys(static_cast<size_t>(std::max(nnz, 0)));
    for (int r = 0; r < rows; ++r)
        for (int k = ia[r] - 1; k < ia[r + 1] - 1; ++k)
            keys[k] = ja[k] * kKeyStride + (r + 1) + kKeyRoundingGuard;
    std::vector<int> order(keys.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int p, int q) { return keys[p] < keys[q]; });

    int out = 0;  // entries appended so far
    size_t next = 0;
    for (int c = 1; c <= cols; ++c) {
        iat[c - 1] = out + 1;
        bool any = false;
        while (next < order.size()) {
            const double key = keys[order[next]];
            const int col = static_cast<int>(key / kKeyStride);
            if (col != c) break;
            at[out] = a[order[next]];
            jat[out] = static_cast<int>(key - col * kKeyStride);
            ++out;
            ++next;
            any = true;
        }
        if (!any) {
            // No row of the transpose is left empty.
            at[out] = 0.0f;
            jat[out] = 1;
            ++out;
        }
    }
    iat[cols] = out + 1;
    return 0;
}
