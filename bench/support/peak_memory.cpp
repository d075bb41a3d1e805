// Reads and resets the resident-memory high-water mark through /proc.
#include "support/peak_memory.h"

#include <cstring>
#include <fstream>
#include <string>

long procStatusKB(const char* field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    const size_t n = std::strlen(field);
    while (std::getline(status, line))
        if (line.compare(0, n, field) == 0) return std::stol(line.substr(n + 1));
    return -1;
}

void resetPeakResident() {
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";  // 5: reset the peak resident size to the current one
}
