// Transpose of a general (non-symmetric) one-based CSR matrix.
#pragma once

// Transposes a general one-based CSR matrix of rows x cols into at/iat/jat
// (room for nnz + cols entries and cols + 1 row starts). A column without
// entries becomes a row holding one explicit 0 at column 1. Returns 0, or -1
// when a dimension needs 26 or more bits.
int scsrMTranspose(float* a, int* ia, int* ja, int rows, int cols, float* at, int* iat, int* jat);
