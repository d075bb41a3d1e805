// Reads /proc/self/status; writes /proc/self/clear_refs to reset the peak.
#include "support/proc_status.h"

#include <cstring>
#include <fstream>
#include <string>

long procStatusKB(const char* field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    const size_t n = std::strlen(field);
    while (std::getline(status, line))
        if (line.compare(0, n, field) == 0) return std::stol(line.substr(n));
    return -1;
}

void resetPeakResident() {
    // "5" resets the peak resident size to the current one.
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";
}
