/* keepcut: the direct mask entry. A rough 8-bit mask over three colour
   planes becomes a refined alpha in one call, without brush codes or a
   request record: everything strictly between two grey levels of the mask is
   solved by closed-form matting, sharpened, smoothed along the colours, and
   the output range stretched.

   Ownership: every buffer the record points at belongs to the host. The
   engine reads the planes, reads and rewrites the alpha plane in place, and
   keeps no pointer to the record or its buffers after the call returns.
   Included from keepcut.h; may also be included on its own. */
#ifndef KEEPCUT_MASK_H
#define KEEPCUT_MASK_H

#include "keepcut_export.h"

KC_EXTERN_C_BEGIN

/* The picture and mask of one rkMaskAlpha call. */
typedef struct RKMaskImage {
    unsigned char* planes[3]; /* red, green, blue planes, 1 byte per pixel */
    int planeRowBytes;        /* row step of all three planes, in bytes */
    unsigned char* alpha;     /* rough mask in, refined alpha out, 1 byte per pixel */
    int alphaRowBytes;        /* row step of the alpha plane, in bytes */
    int width;                /* size of every plane in pixels */
    int height;
} RKMaskImage;

/* Refines the mask in image->alpha in place.
   - Mask bytes at or below lowCode are background, at or above highCode
     foreground (both taken modulo 256); [lowCode, highCode] is stretched
     onto [0, 255] and every byte strictly inside is solved.
   - Output stretch: with d = outHigh - outLow (at least 1) and d below 255,
     alpha = min(255, (alpha - outLow) x min(16320 / d, 255) / 64), outLow
     taken within 0..255; outHigh equal to outLow gives a steep threshold at
     outLow. A span of 255 or more leaves the range as solved.
   - A pixel ends at 0 only if its mask byte was 0, and at 255 only if it was
     255: others stop at 1 and 254.
   - Work resolution follows memory: load (a host-side count, 0 for none)
     and the picture's area are weighed against the engine's budget
     (usableMemInMB); small jobs run at full size, larger ones at half or
     lower and are brought back to full size along the colour edges.
   `unused` and `spare` are ignored.
   Results: 1 done; -2 (with a log line, nothing touched) for a null image,
   plane or alpha pointer, a width or height below 1, or rows shorter than
   the width; -1 when the matting problem is too large to solve; -6 when
   memory ran out or anything else failed; 102, 121, 122, 123, 125 or 130 when
   a buffer, the solver or a matting array failed (see keepcut.h). On every
   failure the alpha plane is left as it was. */
KC_EXPORT int rkMaskAlpha(const RKMaskImage* image, int unused, int highCode, int lowCode,
                          int outHigh, int outLow, int spare, float load);

KC_EXTERN_C_END

#endif /* KEEPCUT_MASK_H */
