// Control of the allocation functions this test program defines in place of
// glibc's (malloc and friends and every operator new / delete): while armed,
// each allocation of the process is numbered, the chosen one fails, and every
// block handed out is remembered with its size and its caller until freed.
#pragma once

#include <cstddef>

namespace kc_sweep {

// Called on the thread whose allocation was made to fail, with the address the
// allocation function returns to (its caller). It runs inside the allocator
// with allocation switched off for that thread and must not allocate.
using FailObserver = void (*)(void* caller);

// Starts numbering allocations from 1; allocation number failAt (0: none)
// returns null, or throws std::bad_alloc from a throwing operator new. With
// stacks, every block remembered keeps the top of its allocation stack (slow:
// for looking into one run, not for sweeps).
void armAllocations(long failAt, FailObserver onFail, bool stacks = false);
// Stops numbering and remembering new blocks; frees are still followed, so the
// blocks held can be read afterwards.
void disarmAllocations();
// Allocations numbered since armAllocations.
long allocationsNumbered();

// One block allocated while armed and not yet freed.
inline constexpr int kBlockFrames = 10;
struct HeldBlock {
    void* caller;
    std::size_t bytes;
    int depth;  // frames kept (0 without stacks)
    void* const* frames;
};
// Calls visit for every such block, under the allocator's lock (visit must
// not allocate). Returns false if the table of blocks overflowed, in which
// case some blocks were not remembered.
bool visitHeldBlocks(void (*visit)(const HeldBlock&, void* context), void* context);

// Allocations numbered per caller since armAllocations, for the callers seen
// first (a fixed table); visit must not allocate.
void visitCallers(void (*visit)(void* caller, long count, void* context), void* context);

}  // namespace kc_sweep
