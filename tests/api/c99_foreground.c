/* rkEstimateForeground from C99: a two-colour picture with a soft edge gets
   back its foreground colour where alpha is fractional; refusals return -2. */
#include <stdio.h>
#include <string.h>

#include "keepcut.h"

enum { W = 40, H = 8 };

int main(void) {
    static unsigned char image[W * H * 4], alpha[W * H], fg[W * H * 4];
    /* Red foreground over blue background, alpha ramping across columns. */
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            const int a = x < 10 ? 255 : x >= 30 ? 0 : 255 - (x - 10) * 255 / 20;
            unsigned char* p = image + (y * W + x) * 4;
            p[0] = (unsigned char)(255 - a), p[1] = 0, p[2] = (unsigned char)a, p[3] = 7;
            alpha[y * W + x] = (unsigned char)a;
        }
    memset(fg, 9, sizeof fg);
    if (rkEstimateForeground(image, W * 4, alpha, W, fg, W * 4, W, H) != 1) return 1;
    const unsigned char* mid = fg + (4 * W + 20) * 4;
    if (mid[2] < 200 || mid[0] > 55 || mid[3] != 9) {
        fprintf(stderr, "foreground at the ramp's middle: %d %d %d %d\n", mid[0], mid[1], mid[2],
                mid[3]);
        return 1;
    }
    if (rkEstimateForeground(NULL, W * 4, alpha, W, fg, W * 4, W, H) != -2) return 1;
    if (rkEstimateForeground(image, W * 4 - 1, alpha, W, fg, W * 4, W, H) != -2) return 1;
    if (rkEstimateForeground(image, W * 4, alpha, W, fg, W * 4, -1, H) != -2) return 1;
    puts("c99_foreground ok");
    return 0;
}
