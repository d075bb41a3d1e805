// Splitting a length into overlapping work blocks.
#pragma once

// n rounded up to a multiple of 16.
inline int MAKEM16(int n) {
    return (n + 15) / 16 * 16;
}
// n rounded up to an even number.
inline int MAKEM2(int n) {
    return (n + 1) / 2 * 2;
}

// Blocks of about blk pixels overlapping by `overlap` pixels; returns the count
// and writes the block length and the stride between block starts.
int calcBlk(int len, int blk, int overlap, int* blkLen, int* stride);
// Blocks of about blk pixels overlapping by a fraction of a block, lengths on
// multiples of 16.
int calcBlk(int len, int blk, float overlapFrac, int* blkLen, int* stride);

// Bytes per pixel of an interleaved host buffer type; 0 for types without one.
int calcPixelStep(int type);
