// Conversion of a computed value back to a pixel byte.
#pragma once

#include <cmath>

// Truncates toward zero and saturates to 0..255; NaN gives 0.
inline unsigned char truncateToByte(double v) {
    if (!(v > 0.0)) return 0;
    if (v >= 255.0) return 255;
    return static_cast<unsigned char>(v);
}
