// Environment switches, settings globals, record counter and stopwatch.
#include "runtime/environment.h"

#include <atomic>
#include <chrono>

char gTempPath[KC_SETTINGS_PATH_BYTES] = "";
char gMKL_PARDISO_OOC_PATH[KC_SETTINGS_PATH_BYTES] = "";
int gMKL_PARDISO_OOC_MAX_CORE_SIZE = 0;
int gMKL_PARDISO_OOC_KEEP_FILE = 0;

std::atomic<int> gMKL_PARDISO_OOC_OK{0};
std::atomic<int> g_rkpImgNum{0};
thread_local double g_timer = 0.0;

void setMaxOMPThreads(int) {}
void resetMaxOMPThreads() {}
int isPardisoOOCOk() {
    return 0;
}

int setRKEnvVars(void) {
    gMKL_PARDISO_OOC_OK = 0;
    return 1;
}

int restoreRKEnvVars(void) {
    return 1;
}

void clearRKPNUM() {
    g_rkpImgNum = 0;
}
void changeRKPNUM(int d) {
    g_rkpImgNum += d;
}
int getRKPNUM() {
    return g_rkpImgNum;
}

namespace {
using Clock = std::chrono::steady_clock;
double ticksNow() {
    return static_cast<double>(Clock::now().time_since_epoch().count());
}
constexpr double kTicksPerSecond =
    static_cast<double>(Clock::period::den) / static_cast<double>(Clock::period::num);
}  // namespace

void startTimer(void) {
    g_timer = ticksNow();
}

double endTimer(void) {
    g_timer = (ticksNow() - g_timer) / kTicksPerSecond;
    return g_timer;
}
