// Which object of the process a code address belongs to (the engine, linked
// into this executable, or one of its dependencies' libraries), and readable
// stacks of code addresses.
#pragma once

#include <cstdio>

namespace kc_sweep {

enum class Origin {
    Engine,       // this executable: engine code and the allocators it hands CHOLMOD
    SuiteSparse,  // CHOLMOD and its orderings, linked into this executable
    Metis,
    OpenCV,
    Tbb,
    OpenBlas,
    Gomp,
    StdCxx,
    GccRuntime,
    Libc,  // glibc and the dynamic loader
    Other,
};
inline constexpr int kOriginCount = static_cast<int>(Origin::Other) + 1;

// Does not allocate, so it may run inside the allocator.
Origin originOf(const void* codeAddress);
const char* originName(Origin origin);

// One line per frame: object, function and offset; engine frames are named
// through addr2line, which sees the executable's local symbols too. Runs in
// the process whose addresses these are, or in its parent before it forked.
void printStack(std::FILE* out, void* const* frames, int depth, const char* indent);

}  // namespace kc_sweep
