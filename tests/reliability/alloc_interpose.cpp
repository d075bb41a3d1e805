// The allocation functions of this test program. Defined in the executable,
// they take the place of glibc's for every library of the process (OpenCV,
// OpenBLAS, the C++ runtime, glibc itself), forward to glibc's own entry
// points, and number, fail and remember blocks as alloc_interpose.h says.
#include "alloc_interpose.h"

#include <execinfo.h>
#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <new>

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

struct Slot {
    void* block;  // null: empty; kRemoved: a freed entry that probing must pass
    void* caller;
    std::size_t bytes;
    int depth;
    void* frames[kc_sweep::kBlockFrames];
};
// Open-addressed table of the blocks held: a small job holds a few thousand at
// a time, so this many slots keep probing short; static, so that remembering
// never allocates.
constexpr std::size_t kSlots = std::size_t{1} << 15;
void* const kRemoved = reinterpret_cast<void*>(std::uintptr_t{1});
Slot g_slots[kSlots];
std::size_t g_used = 0;  // slots not empty (live or removed)
bool g_overflow = false;
std::atomic_flag g_lock = ATOMIC_FLAG_INIT;

std::atomic<bool> g_armed{false};      // numbering and remembering
std::atomic<bool> g_following{false};  // frees looked up in the table
bool g_stacks = false;
std::atomic<long> g_numbered{0};
long g_failAt = 0;
kc_sweep::FailObserver g_observer = nullptr;
// Set while the observer runs, so that anything it allocates is not numbered.
thread_local bool t_inObserver = false;

struct TableLock {
    TableLock() {
        while (g_lock.test_and_set(std::memory_order_acquire)) {
        }
    }
    ~TableLock() { g_lock.clear(std::memory_order_release); }
};

std::size_t slotOf(const void* block) {
    // Blocks are 16-byte aligned: drop the zero bits, then mix (Fibonacci hashing).
    const auto key = reinterpret_cast<std::uintptr_t>(block) >> 4;
    return static_cast<std::size_t>(key * 0x9E3779B97F4A7C15ull) & (kSlots - 1);
}

void insertLocked(const Slot& entry) {
    // Keep a quarter of the table empty so that a failed lookup ends quickly.
    if (g_used >= kSlots - kSlots / 4) {
        g_overflow = true;
        return;
    }
    for (std::size_t i = slotOf(entry.block);; i = (i + 1) & (kSlots - 1)) {
        Slot& s = g_slots[i];
        if (s.block == nullptr || s.block == kRemoved) {
            if (s.block == nullptr) ++g_used;
            s = entry;
            return;
        }
    }
}

void eraseLocked(void* block) {
    for (std::size_t i = slotOf(block);; i = (i + 1) & (kSlots - 1)) {
        Slot& s = g_slots[i];
        if (s.block == nullptr) return;
        if (s.block == block) {
            s.block = kRemoved;
            return;
        }
    }
}

// Allocations per caller: a job has a few hundred distinct call sites.
constexpr int kCallerSlots = 1024;
struct CallerCount {
    void* caller;
    long count;
};
CallerCount g_callers[kCallerSlots];

void countCaller(void* caller) {
    const TableLock hold;
    for (CallerCount& c : g_callers) {
        if (c.caller == caller || c.caller == nullptr) {
            c.caller = caller;
            ++c.count;
            return;
        }
    }
}

// Numbers one allocation; true if it is the one to fail.
bool failsNow(void* caller) {
    if (!g_armed.load(std::memory_order_relaxed) || t_inObserver) return false;
    countCaller(caller);
    if (g_numbered.fetch_add(1, std::memory_order_relaxed) + 1 != g_failAt) return false;
    if (g_observer) {
        t_inObserver = true;
        g_observer(caller);
        t_inObserver = false;
    }
    return true;
}

void remember(void* block, std::size_t bytes, void* caller) {
    if (!block || !g_armed.load(std::memory_order_relaxed) || t_inObserver) return;
    Slot entry{block, caller, bytes, 0, {}};
    if (g_stacks) {
        t_inObserver = true;  // the stack walk is not the program's allocation
        entry.depth = backtrace(entry.frames, kc_sweep::kBlockFrames);
        t_inObserver = false;
    }
    const TableLock hold;
    insertLocked(entry);
}

void forget(void* block) {
    if (!block || !g_following.load(std::memory_order_relaxed)) return;
    const TableLock hold;
    eraseLocked(block);
}

bool validAlignment(std::size_t align) {
    return align >= sizeof(void*) && (align & (align - 1)) == 0;
}

void* newBlock(std::size_t n, std::size_t align, void* caller, bool nothrow) {
    if (n == 0) n = 1;  // every operator new returns a distinct block
    void* block = nullptr;
    if (!failsNow(caller))
        block = align > alignof(std::max_align_t) ? __libc_memalign(align, n) : __libc_malloc(n);
    if (!block) {
        if (nothrow) return nullptr;
        throw std::bad_alloc();
    }
    remember(block, n, caller);
    return block;
}

void deleteBlock(void* block) {
    forget(block);
    __libc_free(block);
}

}  // namespace

namespace kc_sweep {

void armAllocations(long failAt, FailObserver onFail, bool stacks) {
    {
        const TableLock hold;
        // A fresh child's tables are still zero: clearing them would only
        // touch megabytes of pages.
        static bool armedBefore = false;
        if (armedBefore) {
            for (Slot& s : g_slots) s = {};
            for (CallerCount& c : g_callers) c = {};
        }
        armedBefore = true;
        g_used = 0;
        g_overflow = false;
    }
    g_failAt = failAt;
    g_observer = onFail;
    g_stacks = stacks;
    g_numbered.store(0);
    g_following.store(true);
    g_armed.store(true);
}

void disarmAllocations() {
    g_armed.store(false);
}

long allocationsNumbered() {
    return g_numbered.load();
}

bool visitHeldBlocks(void (*visit)(const HeldBlock&, void*), void* context) {
    const TableLock hold;
    for (const Slot& s : g_slots)
        if (s.block != nullptr && s.block != kRemoved)
            visit({s.caller, s.bytes, s.depth, s.frames}, context);
    return !g_overflow;
}

void visitCallers(void (*visit)(void*, long, void*), void* context) {
    const TableLock hold;
    for (const CallerCount& c : g_callers)
        if (c.caller) visit(c.caller, c.count, context);
}

}  // namespace kc_sweep

// ---- the C allocation functions --------------------------------------------
namespace {
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

extern "C" {

void* malloc(std::size_t n) {
    return cBlock(__builtin_return_address(0), n, [&] { return __libc_malloc(n); });
}
void* calloc(std::size_t count, std::size_t size) {
    return cBlock(__builtin_return_address(0), count * size,
                  [&] { return __libc_calloc(count, size); });
}
void* aligned_alloc(std::size_t align, std::size_t n) {
    return cBlock(__builtin_return_address(0), n, [&] { return __libc_memalign(align, n); });
}
void* memalign(std::size_t align, std::size_t n) {
    return cBlock(__builtin_return_address(0), n, [&] { return __libc_memalign(align, n); });
}
void* valloc(std::size_t n) {
    return cBlock(__builtin_return_address(0), n, [&] { return __libc_valloc(n); });
}
void* pvalloc(std::size_t n) {
    return cBlock(__builtin_return_address(0), n, [&] { return __libc_pvalloc(n); });
}
void free(void* block) {
    deleteBlock(block);
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
    if (!validAlignment(align)) return EINVAL;
    void* block = cBlock(__builtin_return_address(0), n, [&] { return __libc_memalign(align, n); });
    if (!block) return ENOMEM;
    *out = block;
    return 0;
}

}  // extern "C"

// ---- the C++ allocation functions ------------------------------------------
void* operator new(std::size_t n) {
    return newBlock(n, 0, __builtin_return_address(0), false);
}
void* operator new[](std::size_t n) {
    return newBlock(n, 0, __builtin_return_address(0), false);
}
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
    return newBlock(n, 0, __builtin_return_address(0), true);
}
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept {
    return newBlock(n, 0, __builtin_return_address(0), true);
}
void* operator new(std::size_t n, std::align_val_t a) {
    return newBlock(n, static_cast<std::size_t>(a), __builtin_return_address(0), false);
}
void* operator new[](std::size_t n, std::align_val_t a) {
    return newBlock(n, static_cast<std::size_t>(a), __builtin_return_address(0), false);
}
void* operator new(std::size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
    return newBlock(n, static_cast<std::size_t>(a), __builtin_return_address(0), true);
}
void* operator new[](std::size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
    return newBlock(n, static_cast<std::size_t>(a), __builtin_return_address(0), true);
}

void operator delete(void* p) noexcept {
    deleteBlock(p);
}
void operator delete[](void* p) noexcept {
    deleteBlock(p);
}
void operator delete(void* p, std::size_t) noexcept {
    deleteBlock(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    deleteBlock(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
    deleteBlock(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
    deleteBlock(p);
}
void operator delete(void* p, std::align_val_t) noexcept {
    deleteBlock(p);
}
void operator delete[](void* p, std::align_val_t) noexcept {
    deleteBlock(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
    deleteBlock(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept {
    deleteBlock(p);
}
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept {
    deleteBlock(p);
}
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept {
    deleteBlock(p);
}
