// Available memory (/proc/meminfo) and address-space limit headroom.
#include "runtime/machine_headroom.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr double kUnknown = std::numeric_limits<double>::max();
// Both files put the fields we read within their first few kilobytes.
constexpr int kProcReadBytes = 4096;

// The value in kB of "<field>" in a /proc text file, or -1. Raw reads into a
// stack buffer: this runs when memory may be short, so it must not allocate.
double procFieldKb(const char* path, const char* field) {
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return -1.0;
    char text[kProcReadBytes + 1];
    ssize_t got = 0, n = 0;
    while (got < kProcReadBytes && (n = read(fd, text + got, kProcReadBytes - got)) > 0) got += n;
    close(fd);
    text[got] = '\0';
    const char* at = std::strstr(text, field);
    if (!at) return -1.0;
    return std::strtod(at + std::strlen(field), nullptr);
}

double addressSpaceLeft() {
    rlimit lim{};
    if (getrlimit(RLIMIT_AS, &lim) != 0 || lim.rlim_cur == RLIM_INFINITY) return kUnknown;
    const double mappedKb = std::max(0.0, procFieldKb("/proc/self/status", "VmSize:"));
    return std::max(0.0, static_cast<double>(lim.rlim_cur) - mappedKb * 1024.0);
}

}  // namespace

double machineHeadroomBytes() {
    // MemAvailable: free memory plus what the kernel can reclaim without
    // swapping.
    const double availableKb = procFieldKb("/proc/meminfo", "MemAvailable:");
    const double available = availableKb >= 0.0 ? availableKb * 1024.0 : kUnknown;
    return std::min(available, addressSpaceLeft());
}
