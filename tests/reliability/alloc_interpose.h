// Control of the allocation functions the sweep program defines in place of
// glibc's (malloc and friends and every operator new / delete): while armed,
// each allocation of the process is numbered, the chosen one fails, and every
// block handed out is remembered with its size and its caller until freed.
#pragma once

namespace kc_sweep {

// Starts numbering allocations from 1; allocation number failAt (0: none)
// returns null, or throws std::bad_alloc from a throwing operator new, after
// calling onFail with its caller on the failing thread (inside the allocator:
// onFail must not allocate). With stacks, every block remembered keeps the top
// of its allocation stack (slow: for looking into one run, not for sweeps).
void armAllocations(long failAt, void (*onFail)(void* caller), bool stacks);
// Stops numbering and remembering new blocks (frees are still followed, so the
// blocks held can be read afterwards); returns the count of numbered ones.
long disarmAllocations();

// One block allocated while armed and not yet freed.
inline constexpr int kBlockFrames = 10;
struct HeldBlock {
    void* caller;
    long bytes;
    int depth;  // frames kept (0 without stacks)
    void* frames[kBlockFrames];
};
// Copies up to capacity such blocks to out; returns how many there are.
int copyHeldBlocks(HeldBlock* out, int capacity);

}  // namespace kc_sweep
