// Trial mapping and warm-up of the BLAS work buffer.
#include "matting/blas_buffer.h"

#include <sys/mman.h>

#include <atomic>
#include <cstddef>

extern "C" void dsyrk_(const char* uplo, const char* trans, const int* n, const int* k,
                       const double* alpha, const double* a, const int* lda, const double* beta,
                       double* c, const int* ldc);

namespace {

// The buffer the BLAS maps on its first level-3 call: traced at 134,217,728
// bytes (read and write, private, anonymous), kept until the process ends.
constexpr std::size_t kBlasBufferBytes = std::size_t{128} << 20;

std::atomic<bool> g_mapped{false};

}  // namespace

bool blasBufferReady() {
    if (g_mapped.load()) return true;
    void* trial = mmap(nullptr, kBlasBufferBytes, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (trial == MAP_FAILED) return false;
    munmap(trial, kBlasBufferBytes);
    // The smallest level-3 call that takes the buffer (a rank update of a
    // 2 x 2 block did; small matrix products run without it).
    const int n = 2;
    const double one = 1.0, zero = 0.0;
    const double a[n * n] = {1.0, 0.0, 0.0, 1.0};
    double c[n * n] = {};
    dsyrk_("L", "N", &n, &n, &one, a, &n, &zero, c, &n);
    g_mapped = true;
    return true;
}
