// Thick strokes drawn as chains of filled discs, without OpenCV: the rounding
// offsets below are part of how the strokes look on screen.
#include "tools/brush_raster.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "core/img.h"

namespace {

// Added before truncation: 0.49 widens a disc's runs just short of rounding
// half up; 0.49999 places the line's centres by rounding almost to nearest.
// The two differ on purpose and give the strokes their familiar shape.
constexpr double kHalfWidthOffset = 0.49;
constexpr double kCentreOffset = 0.49999;

// Centre coordinate on the line across the stepping axis: trunc(k t + (c0 -
// k t0) + 0.49999), the sum in single precision before the offset.
int lineCentre(float k, int t, int t0, int c0) {
    const float onLine = k * t + (c0 - k * t0);
    // Far outside any map the sum may leave the int range; such a disc is
    // clipped away either way.
    return static_cast<int>(std::clamp<double>(onLine + kCentreOffset, INT_MIN, INT_MAX));
}

}  // namespace

int drawHLine(unsigned char* map, int step, int width, int height, int xa, int xb, int y,
              unsigned char value) {
    if (y < 0 || y >= height) return 0;
    const int lo = std::max(std::min(xa, xb), 0);
    const int hi = std::min(std::max(xa, xb), width - 1);
    if (lo > hi) return 0;
    std::memset(imgPtr(map, step, lo, y), value, static_cast<size_t>(hi - lo + 1));
    return 1;
}

int drawCircle(unsigned char* map, int step, int width, int height, int cx, int cy, int radius,
               unsigned char value) {
    if (radius < 0) return 0;
    if (radius == 0) {
        if (cx < 0 || cx >= width || cy < 0 || cy >= height) return 0;
        *imgPtr(map, step, cx, cy) = value;
        return 1;
    }
    const long long r2 = static_cast<long long>(radius) * radius;
    for (long long dy = -radius; dy <= radius; ++dy) {
        const long long y = cy + dy;
        if (y < 0 || y >= height) continue;  // clipped rows; skipping them saves the sqrt
        const int half =
            static_cast<int>(std::sqrt(static_cast<double>(r2 - dy * dy)) + kHalfWidthOffset);
        const long long xa = static_cast<long long>(cx) - half,
                        xb = static_cast<long long>(cx) + half;
        drawHLine(map, step, width, height, static_cast<int>(std::clamp<long long>(xa, -1, width)),
                  static_cast<int>(std::clamp<long long>(xb, -1, width)), static_cast<int>(y),
                  value);
    }
    return 1;
}

int drawLineW(unsigned char* map, int step, int width, int height, int x0, int y0, int x1, int y1,
              int radius, unsigned char value) {
    drawCircle(map, step, width, height, x0, y0, radius, value);
    const long long dx = static_cast<long long>(x1) - x0, dy = static_cast<long long>(y1) - y0;
    if (std::llabs(dx) > std::llabs(dy)) {
        const float k = static_cast<float>(dy) / static_cast<float>(dx);
        const int dir = dx > 0 ? 1 : -1;
        for (int x = x0; x != x1;) {
            x += dir;
            drawCircle(map, step, width, height, x, lineCentre(k, x, x0, y0), radius, value);
        }
    } else if (dy != 0) {
        const float k = static_cast<float>(dx) / static_cast<float>(dy);
        const int dir = dy > 0 ? 1 : -1;
        for (int y = y0; y != y1;) {
            y += dir;
            drawCircle(map, step, width, height, lineCentre(k, y, y0, x0), y, radius, value);
        }
    }
    return 1;
}
