// Large blocks of the direct solver, kept for its next solve while a
// SolverBlockReuse scope is open.
//
// A run of solves (the cells of a KD-tree) allocates factors of similar size
// one after the other. Each fresh block is faulted in page by page (on a
// virtual machine a trap per page, even on 2 MB pages the kernel clears every
// page first) and unmapped again after the solve. While a scope is open, a
// freed large block waits in a small pool instead, and the next solve takes
// it back warm. Outside any scope the pool holds nothing.
#pragma once

#include <cstddef>

// The library's allocation functions routed through the pool. advise is
// applied to every block the pool takes from the system. They are called from
// C code: failure is a null result, never an exception.
void* poolMalloc(std::size_t n, void* (*advise)(void*, std::size_t)) noexcept;
void* poolCalloc(std::size_t count, std::size_t size,
                 void* (*advise)(void*, std::size_t)) noexcept;
void* poolRealloc(void* p, std::size_t n, void* (*advise)(void*, std::size_t)) noexcept;
void poolFree(void* p) noexcept;

class SolverBlockReuse {
  public:
    SolverBlockReuse();
    // Returns the pooled blocks to the system when the outermost scope ends.
    ~SolverBlockReuse();
    SolverBlockReuse(const SolverBlockReuse&) = delete;
    SolverBlockReuse& operator=(const SolverBlockReuse&) = delete;
};
