// The pool of large solver blocks: a record of every large block handed out
// (its capacity), and while a reuse scope is open, a few freed ones.
#include "matting/solver_block_pool.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace {

// Blocks from this size on go through the pool: the factor and its largest
// workspaces. Smaller ones come from the heap warm anyway.
constexpr std::size_t kPooledFrom = std::size_t{4} << 20;
// A pooled block serves a request down to this fraction of its capacity, so
// that a small request does not hold a large block.
constexpr std::size_t kLargestSlack = 2;
// What the pool may hold between solves: a cell's factor and workspaces on
// the cells the KD-tree makes (tens of megabytes), never a large solve's.
constexpr std::size_t kPoolBytes = std::size_t{256} << 20;

struct Pool {
    std::mutex lock;
    std::unordered_map<void*, std::size_t> capacity;  // large blocks handed out
    std::vector<std::pair<void*, std::size_t>> idle;  // freed, kept for reuse
    std::size_t idleBytes = 0;
    int scopes = 0;
};

Pool& pool() {
    static Pool p;
    return p;
}

void releaseIdle(Pool& p) {
    for (auto& [block, size] : p.idle) std::free(block);
    p.idle.clear();
    p.idleBytes = 0;
}

}  // namespace

void* poolMalloc(std::size_t n, void* (*advise)(void*, std::size_t)) noexcept {
    if (n < kPooledFrom) return std::malloc(n);
    Pool& p = pool();
    const std::lock_guard<std::mutex> hold(p.lock);
    // Best fit among the idle blocks that are large enough.
    auto best = p.idle.end();
    for (auto it = p.idle.begin(); it != p.idle.end(); ++it)
        if (it->second >= n && it->second / kLargestSlack <= n &&
            (best == p.idle.end() || it->second < best->second))
            best = it;
    if (best != p.idle.end()) {
        void* block = best->first;
        try {
            p.capacity[block] = best->second;
        } catch (...) {
            return nullptr;  // the block stays idle; the library sees "no memory"
        }
        p.idleBytes -= best->second;
        p.idle.erase(best);
        return block;
    }
    void* block = advise(std::malloc(n), n);
    if (!block) return nullptr;
    // The record may need memory of its own; without it the block cannot be
    // tracked, and the library is told "no memory" rather than an exception
    // unwinding through its C frames.
    try {
        p.capacity[block] = n;
    } catch (...) {
        std::free(block);
        return nullptr;
    }
    return block;
}

void* poolCalloc(std::size_t count, std::size_t size,
                 void* (*advise)(void*, std::size_t)) noexcept {
    if (size != 0 && count > static_cast<std::size_t>(-1) / size) return nullptr;
    const std::size_t n = count * size;
    if (n < kPooledFrom) return std::calloc(count, size);
    void* block = poolMalloc(n, advise);
    if (block) std::memset(block, 0, n);
    return block;
}

void* poolRealloc(void* old, std::size_t n, void* (*advise)(void*, std::size_t)) noexcept {
    if (!old) return poolMalloc(n, advise);
    std::size_t had = 0;
    {
        Pool& p = pool();
        const std::lock_guard<std::mutex> hold(p.lock);
        const auto it = p.capacity.find(old);
        if (it != p.capacity.end()) had = it->second;
    }
    if (had == 0 && n < kPooledFrom) return std::realloc(old, n);
    if (had >= n) return old;  // a shrinking large block keeps its capacity
    // Growing, or a heap block becoming large: a new block and a copy. The
    // old size of a heap block is unknown, so it is read up to n bytes only
    // as far as the heap says it reaches.
    void* block = poolMalloc(n, advise);
    if (!block) return nullptr;
    const std::size_t keep = had > 0 ? had : std::min(n, malloc_usable_size(old));
    std::memcpy(block, old, std::min(keep, n));
    poolFree(old);
    return block;
}

void poolFree(void* block) noexcept {
    if (!block) return;
    Pool& p = pool();
    {
        const std::lock_guard<std::mutex> hold(p.lock);
        const auto it = p.capacity.find(block);
        if (it != p.capacity.end()) {
            const std::size_t size = it->second;
            p.capacity.erase(it);
            if (p.scopes > 0 && p.idleBytes + size <= kPoolBytes) {
                // Keeping it is an optimisation: without room in the list the
                // block simply goes back to the heap.
                try {
                    p.idle.emplace_back(block, size);
                    p.idleBytes += size;
                    return;
                } catch (...) {
                }
            }
        }
    }
    std::free(block);
}

SolverBlockReuse::SolverBlockReuse() {
    Pool& p = pool();
    const std::lock_guard<std::mutex> hold(p.lock);
    ++p.scopes;
}

SolverBlockReuse::~SolverBlockReuse() {
    Pool& p = pool();
    const std::lock_guard<std::mutex> hold(p.lock);
    if (--p.scopes == 0) releaseIdle(p);
}
