// Terminal progress bar for the engine's progress callback.
#include "progress_bar.h"

#include <unistd.h>

#include <cstdio>

namespace {
// Characters of the bar itself: fits an 80-column terminal with the figure.
constexpr int kBarWidth = 50;
bool g_drawn = false;
}  // namespace

int drawProgressBar(int current, int total, void*) {
    if (!isatty(fileno(stderr)) || total <= 0) return 1;
    const double f = current < 0       ? 0.0
                     : current > total ? 1.0
                                       : static_cast<double>(current) / total;
    const int filled = static_cast<int>(f * kBarWidth);
    std::fprintf(stderr, "\r[%.*s%*s] %3d%%", filled,
                 "##################################################", kBarWidth - filled, "",
                 static_cast<int>(f * 100));
    std::fflush(stderr);
    g_drawn = true;
    return 1;
}

void finishProgressBar() {
    if (g_drawn) std::fputc('\n', stderr);
    g_drawn = false;
}
