// The allocation functions of the sweep program: defined in the executable,
// they replace glibc's for every library of the process, forward to glibc's
// own entry points, and number, fail and remember blocks.
#include "alloc_interpose.h"

#include <execinfo.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory_resource>
#include <mutex>
#include <new>
#include <unordered_map>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);
void* __libc_memalign(std::size_t, std::size_t);
void* __libc_valloc(std::size_t);
void* __libc_pvalloc(std::size_t);
}

namespace {

// The blocks held, by address, in a static arena (so that keeping the table
// never re-enters the functions below) with freed nodes reused; a small job
// holds a few thousand blocks at a time, far from filling it.
alignas(std::max_align_t) char g_arenaBytes[std::size_t{64} << 20];
std::pmr::monotonic_buffer_resource g_arena(g_arenaBytes, sizeof g_arenaBytes,
                                            std::pmr::null_memory_resource());
std::pmr::unsynchronized_pool_resource g_pool(&g_arena);
std::pmr::unordered_map<void*, kc_sweep::HeldBlock> g_held(&g_pool);
std::mutex g_lock;  // of the table; taking it never allocates

// Armed: allocations numbered and remembered; after it, frees still followed.
enum State { kIdle, kFollowing, kArmed };
std::atomic<State> g_state{kIdle};
bool g_stacks = false;
std::atomic<long> g_numbered{0};
long g_failAt = 0;
void (*g_onFail)(void*) = nullptr;
// Set while the observer or a stack walk runs: their allocations are not the program's.
thread_local bool t_aside = false;

// Numbers one allocation; true if it is the one to fail.
bool failsNow(void* caller) {
    if (g_state.load(std::memory_order_relaxed) != kArmed || t_aside) return false;
    if (g_numbered.fetch_add(1, std::memory_order_relaxed) + 1 != g_failAt) return false;
    t_aside = true;
    g_onFail(caller);
    t_aside = false;
    return true;
}

void remember(void* block, std::size_t bytes, void* caller) {
    if (!block || g_state.load(std::memory_order_relaxed) != kArmed || t_aside) return;
    kc_sweep::HeldBlock entry{caller, static_cast<long>(bytes), 0, {}};
    if (g_stacks) {
        t_aside = true;
        entry.depth = backtrace(entry.frames, kc_sweep::kBlockFrames);
        t_aside = false;
    }
    const std::lock_guard hold(g_lock);
    g_held.insert_or_assign(block, entry);
}

void forget(void* block) {
    if (!block || g_state.load(std::memory_order_relaxed) == kIdle) return;
    const std::lock_guard hold(g_lock);
    g_held.erase(block);
}

// One C allocation by caller of n bytes through glibc's function get().
template <typename Get>
void* cBlock(void* caller, std::size_t n, Get get) {
    if (failsNow(caller)) {
        errno = ENOMEM;
        return nullptr;
    }
    void* block = get();
    remember(block, n, caller);
    return block;
}

void* newBlock(std::size_t n, std::size_t align, void* caller, bool nothrow) {
    n = std::max<std::size_t>(n, 1);  // every operator new returns a distinct block
    void* block = cBlock(caller, n, [&] {
        return align > alignof(std::max_align_t) ? __libc_memalign(align, n) : __libc_malloc(n);
    });
    if (!block && !nothrow) throw std::bad_alloc();
    return block;
}

void* reallocBlock(void* old, std::size_t n, void* caller) {
    if (old && n == 0) {  // glibc frees the block and returns null
        forget(old);
        return __libc_realloc(old, 0);
    }
    if (failsNow(caller)) {  // the old block stays valid, as on a real failure
        errno = ENOMEM;
        return nullptr;
    }
    void* block = __libc_realloc(old, n);
    if (block) {
        forget(old);
        remember(block, n, caller);
    }
    return block;
}

}  // namespace

namespace kc_sweep {

void armAllocations(long failAt, void (*onFail)(void*), bool stacks) {
    g_failAt = failAt;
    g_onFail = onFail;
    g_stacks = stacks;
    g_numbered.store(0);
    g_state.store(kArmed);
}

long disarmAllocations() {
    g_state.store(kFollowing);
    return g_numbered.load();
}

int copyHeldBlocks(HeldBlock* out, int capacity) {
    const std::lock_guard hold(g_lock);
    int count = 0;
    for (const auto& [block, held] : g_held)
        if (count++ < capacity) out[count - 1] = held;
    return count;
}

}  // namespace kc_sweep

// ---- the C allocation functions --------------------------------------------
extern "C" {

#define KC_C_ALLOC(name, params, bytes, call)                                    \
    void* name params {                                                          \
        return cBlock(__builtin_return_address(0), bytes, [&] { return call; }); \
    }
KC_C_ALLOC(malloc, (std::size_t n), n, __libc_malloc(n))
KC_C_ALLOC(calloc, (std::size_t k, std::size_t n), (k * n), __libc_calloc(k, n))
KC_C_ALLOC(aligned_alloc, (std::size_t align, std::size_t n), n, __libc_memalign(align, n))
KC_C_ALLOC(memalign, (std::size_t align, std::size_t n), n, __libc_memalign(align, n))
KC_C_ALLOC(valloc, (std::size_t n), n, __libc_valloc(n))
KC_C_ALLOC(pvalloc, (std::size_t n), n, __libc_pvalloc(n))
void free(void* block) {
    forget(block);
    __libc_free(block);
}
void* realloc(void* old, std::size_t n) {
    return reallocBlock(old, n, __builtin_return_address(0));
}
void* reallocarray(void* old, std::size_t count, std::size_t size) {
    std::size_t n = 0;
    if (__builtin_mul_overflow(count, size, &n)) {
        errno = ENOMEM;
        return nullptr;
    }
    return reallocBlock(old, n, __builtin_return_address(0));
}
int posix_memalign(void** out, std::size_t align, std::size_t n) {
    if (align < sizeof(void*) || (align & (align - 1)) != 0) return EINVAL;
    void* block = cBlock(__builtin_return_address(0), n, [&] { return __libc_memalign(align, n); });
    if (!block) return ENOMEM;
    *out = block;
    return 0;
}

}  // extern "C"

// ---- the C++ allocation functions: every form, scalar and array, so that
// each allocation is seen from its own caller rather than from the runtime's
// forwarding form.
#define KC_NEW(params, align, nothrow)                                   \
    void* operator new params noexcept(nothrow) {                        \
        return newBlock(n, align, __builtin_return_address(0), nothrow); \
    }                                                                    \
    void* operator new[] params noexcept(nothrow) {                      \
        return newBlock(n, align, __builtin_return_address(0), nothrow); \
    }
KC_NEW((std::size_t n), 0, false)
KC_NEW((std::size_t n, const std::nothrow_t&), 0, true)
KC_NEW((std::size_t n, std::align_val_t a), std::size_t(a), false)
KC_NEW((std::size_t n, std::align_val_t a, const std::nothrow_t&), std::size_t(a), true)

#define KC_DELETE(...)                                                    \
    void operator delete(void* p __VA_OPT__(, ) __VA_ARGS__) noexcept {   \
        free(p);                                                          \
    }                                                                     \
    void operator delete[](void* p __VA_OPT__(, ) __VA_ARGS__) noexcept { \
        free(p);                                                          \
    }
KC_DELETE()
KC_DELETE(std::size_t)
KC_DELETE(const std::nothrow_t&)
KC_DELETE(std::align_val_t)
KC_DELETE(std::size_t, std::align_val_t)
KC_DELETE(std::align_val_t, const std::nothrow_t&)
