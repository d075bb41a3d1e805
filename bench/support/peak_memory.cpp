// Reads VmRSS/VmHWM from /proc/self/status; resets through clear_refs.
#include "support/peak_memory.h"

#include <cstring>
#include <fstream>
#include <string>

namespace {
double statusMB(const char* field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    const size_t n = std::strlen(field);
    while (std::getline(status, line))
        if (line.compare(0, n, field) == 0 && line.size() > n && line[n] == ':')
            return std::stod(line.substr(n + 1)) / 1024.0;  // the kernel reports kB
    return -1.0;
}
}  // namespace

void resetPeakMemory() {
    // "5" resets the peak resident size to the current one.
    std::ofstream("/proc/self/clear_refs") << "5";
}

double residentMB() {
    return statusMB("VmRSS");
}
double peakMB() {
    return statusMB("VmHWM");
}
