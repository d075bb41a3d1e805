// Origin of code addresses by the object that maps them (dladdr), and stacks
// printed with the function names of every object.
#include "alloc_origin.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace kc_sweep {
namespace {

const void* executableBase() {
    Dl_info self{};
    dladdr(reinterpret_cast<const void*>(&originOf), &self);
    return self.dli_fbase;
}

bool startsWith(const char* s, const char* prefix) {
    return s && std::strncmp(s, prefix, std::strlen(prefix)) == 0;
}

// The solver's memory wrappers: they call the allocators the engine set in
// its configuration record, and when those end in a tail call to malloc, the
// wrapper is the caller malloc sees. Their allocations are the engine's.
bool isSolverMemoryWrapper(const char* name) {
    for (const char* wrapper : {"cholmod_malloc", "cholmod_calloc", "cholmod_realloc",
                                "cholmod_l_malloc", "cholmod_l_calloc", "cholmod_l_realloc",
                                "SuiteSparse_malloc", "SuiteSparse_calloc", "SuiteSparse_realloc"})
        if (name && std::strcmp(name, wrapper) == 0) return true;
    return false;
}

// The statically linked solver's functions, by the prefixes of their names.
bool isSuiteSparseSymbol(const char* name) {
    for (const char* prefix : {"cholmod_", "SuiteSparse_", "amd_", "camd_", "colamd", "ccolamd"})
        if (startsWith(name, prefix)) return true;
    return false;
}

struct LibraryPattern {
    const char* fragment;  // found in the library's file name
    Origin origin;
};
constexpr LibraryPattern kLibraries[] = {
    {"libopencv", Origin::OpenCV},       {"libtbb", Origin::Tbb},
    {"libopenblas", Origin::OpenBlas},   {"libblas", Origin::OpenBlas},
    {"liblapack", Origin::OpenBlas},     {"libgomp", Origin::Gomp},
    {"libstdc++", Origin::StdCxx},       {"libgcc_s", Origin::GccRuntime},
    {"libc.so", Origin::Libc},           {"ld-linux", Origin::Libc},
    {"libcholmod", Origin::SuiteSparse}, {"libsuitesparse", Origin::SuiteSparse},
    {"libmetis", Origin::Metis},
};

const char* baseName(const char* path) {
    const char* slash = path ? std::strrchr(path, '/') : nullptr;
    return slash ? slash + 1 : (path ? path : "?");
}

}  // namespace

Origin originOf(const void* codeAddress) {
    static const void* const exeBase = executableBase();
    Dl_info info{};
    if (!dladdr(codeAddress, &info)) return Origin::Other;
    if (info.dli_fbase == exeBase)
        return isSuiteSparseSymbol(info.dli_sname) && !isSolverMemoryWrapper(info.dli_sname)
                   ? Origin::SuiteSparse
                   : Origin::Engine;
    for (const LibraryPattern& lib : kLibraries)
        if (info.dli_fname && std::strstr(info.dli_fname, lib.fragment)) return lib.origin;
    return Origin::Other;
}

const char* originName(Origin origin) {
    switch (origin) {
        case Origin::Engine:
            return "engine";
        case Origin::SuiteSparse:
            return "suitesparse";
        case Origin::Metis:
            return "libmetis";
        case Origin::OpenCV:
            return "libopencv";
        case Origin::Tbb:
            return "libtbb";
        case Origin::OpenBlas:
            return "libopenblas";
        case Origin::Gomp:
            return "libgomp";
        case Origin::StdCxx:
            return "libstdc++";
        case Origin::GccRuntime:
            return "libgcc_s";
        case Origin::Libc:
            return "libc";
        case Origin::Other:
            return "other";
    }
    return "?";
}

void printStack(std::FILE* out, void* const* frames, int depth, const char* indent) {
    static const void* const exeBase = executableBase();
    // Executable frames: one addr2line run names them all (it reads the local
    // symbols that dladdr cannot see). A return address points after its call,
    // so the address looked up is one byte earlier.
    std::vector<std::string> exeNames;
    std::string command = "addr2line -C -f -p -e /proc/" + std::to_string(getpid()) + "/exe";
    int exeFrames = 0;
    for (int i = 0; i < depth; ++i) {
        Dl_info info{};
        if (dladdr(frames[i], &info) && info.dli_fbase == exeBase) {
            const auto offset = reinterpret_cast<std::uintptr_t>(frames[i]) -
                                reinterpret_cast<std::uintptr_t>(exeBase) - 1;
            char hex[32];
            std::snprintf(hex, sizeof hex, " 0x%jx", static_cast<std::uintmax_t>(offset));
            command += hex;
            ++exeFrames;
        }
    }
    if (exeFrames > 0) {
        if (std::FILE* pipe = popen(command.c_str(), "r")) {
            char line[1024];
            while (std::fgets(line, sizeof line, pipe)) {
                line[std::strcspn(line, "\n")] = 0;
                exeNames.emplace_back(line);
            }
            pclose(pipe);
        }
    }
    std::size_t nextExe = 0;
    for (int i = 0; i < depth; ++i) {
        Dl_info info{};
        const bool known = dladdr(frames[i], &info) != 0;
        if (known && info.dli_fbase == exeBase) {
            const char* name = nextExe < exeNames.size() ? exeNames[nextExe].c_str() : "?";
            ++nextExe;
            std::fprintf(out, "%s#%d %s\n", indent, i, name);
        } else if (known) {
            const auto base = info.dli_saddr ? info.dli_saddr : info.dli_fbase;
            std::fprintf(out, "%s#%d %s(%s+0x%jx)\n", indent, i, baseName(info.dli_fname),
                         info.dli_sname ? info.dli_sname : "",
                         static_cast<std::uintmax_t>(reinterpret_cast<std::uintptr_t>(frames[i]) -
                                                     reinterpret_cast<std::uintptr_t>(base)));
        } else {
            std::fprintf(out, "%s#%d %p\n", indent, i, frames[i]);
        }
    }
}

}  // namespace kc_sweep
