/* A host built against the installed library only: mattes a disc on a small
   picture, takes the matte out with rkMapToMatte and runs one GrabCut stroke,
   checking each result. Prints "consumer ok" on success. */
#include <keepcut/keepcut.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { W = 96, H = 72, BAND = 6 };

static int fail(const char* what) {
    fprintf(stderr, "consumer: %s\n%s", what, getErrMsg());
    return 1;
}

int main(void) {
    static unsigned char image[W * H * 4], mask[W * H], brush[W * H], gc[W * H];
    const int cx = W / 2, cy = H / 2, r = 20;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            const int d2 = (x - cx) * (x - cx) + (y - cy) * (y - cy);
            const int inside = d2 < r * r;
            unsigned char* p = image + (y * W + x) * 4;
            p[0] = inside ? 40 : 200, p[1] = inside ? 180 : 60, p[2] = inside ? 220 : 30,
            p[3] = 255;
            const int near = d2 > (r - BAND) * (r - BAND) && d2 < (r + BAND) * (r + BAND);
            mask[y * W + x] = near ? 126 : (inside ? RK_MASK_KEEP : RK_MASK_CUT);
        }
    memcpy(brush, mask, sizeof mask);
    if (sizeof(void*) == 8 && sizeof(RKPSStructMsk2) != 160)
        return fail("the request record is not 160 bytes");

    RKPSStructMsk2 q;
    memset(&q, 0, sizeof q);
    q.image = image, q.imageRowBytes = W * 4;
    q.mask = mask, q.maskRowBytes = W;
    q.brushInfo = brush, q.brushInfoRowBytes = W;
    q.width = q.roiWidth = W, q.height = q.roiHeight = H;
    if (rkKeepCutToAlpha(&q, 0, false) != 1) return fail("rkKeepCutToAlpha failed");
    if (rkMapToMatte(mask, W, mask, W, W, H) != 1) return fail("rkMapToMatte failed");
    if (mask[0] != 0 || mask[cy * W + cx] != 255) return fail("the matte is not 0 out, 255 in");
    /* Across the edge the matte must fall from the inside to the outside. */
    if (!(mask[cy * W + cx + r - 3] > mask[cy * W + cx + r + 3]))
        return fail("the matte does not fall across the edge");

    /* GrabCut from a rectangle: probable foreground inside, hard background out. */
    memset(gc, 2, sizeof gc);
    for (int y = cy - r - 4; y < cy + r + 4; ++y) memset(gc + y * W + cx - r - 4, 1, 2 * r + 8);
    memset(&q, 0, sizeof q);
    q.image = image, q.imageRowBytes = W * 4;
    q.mask = gc, q.maskRowBytes = W;
    q.brushInfo = brush, q.brushInfoRowBytes = W;
    q.width = q.gcWidth = W, q.height = q.gcHeight = H;
    const int cut = rkGrabCut(&q, 1);
    /* Selected pixels keep bit 0 set, the rest lose it. */
    const int selected = (gc[cy * W + cx] & 1) && !(gc[0] & 1);
    rkGrabCutDeleteBuf(&q);
    if (cut != 1) return fail("rkGrabCut failed");
    if (!selected) return fail("GrabCut missed the disc");
    puts("consumer ok");
    return 0;
}
