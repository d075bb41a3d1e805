// Memory budget from the machine's physical memory.
#include "runtime/memory_budget.h"

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <new>
#include <vector>

#include "core/img.h"

double physicalMemoryBytes() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0) return 0.0;  // unknown: the floor applies
    return static_cast<double>(pages) * static_cast<double>(pageSize);
}

double usableBytesFromPhysical(double physicalBytes) {
    return std::clamp(physicalBytes - kMemReserveBytes, kMemUsableMin, kMemUsableMax);
}

int checkMemInBytes(double& usable, double& usableAgain) {
    usable = usableAgain = usableBytesFromPhysical(physicalMemoryBytes());
    return 1;
}

int usableMemInMB(void) {
    double a = 0.0, b = 0.0;
    checkMemInBytes(a, b);
    return static_cast<int>(a / kMemUnitBytes);
}

bool testMemAlloc(int w, int h, int n) {
    // More than 8 trial images tells nothing more and costs time.
    constexpr int kMaxTrialImages = 8;
    n = std::min(n, kMaxTrialImages);
    std::vector<std::unique_ptr<IMG3<float>>> trial;
    try {
        for (int i = 0; i < n; ++i) trial.push_back(std::make_unique<IMG3<float>>(w, h));
    } catch (int) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}
