/* keepcut: display compositing and brush strokes for the host's masking
   screen. Included by keepcut.h; also usable on its own.

   Buffers: pictures are 4 bytes a pixel (blue, green, red, fourth byte),
   maps 1 byte a pixel, steps in bytes between row starts, all owned by the
   host and changed in place. Map bytes follow the codes of keepcut.h:
   bit 0 set = painted (255 keep, 1 cut), even bytes = computed alpha.

   Refusals, common to every entry here: a null buffer, a negative width or
   height, or a step shorter than a row (width x bytes a pixel) is refused
   with a line in the message log naming the entry and the argument. An
   entry with a result then returns -2; an entry without one returns
   without changing anything. A refused call never touches a buffer.
   A width or height of 0 is accepted and changes nothing. */
#ifndef KEEPCUT_DISPLAY_H
#define KEEPCUT_DISPLAY_H

#include "keepcut_export.h"

KC_EXTERN_C_BEGIN

/* ---- display compositing ------------------------------------------------ */

/* Stretches the alpha range lo..hi of a map to 0..255 in place.
   With hi - lo = 255 (lo 0, hi 255) the map is left as it is. Otherwise
   k = 8160 / (hi - lo) truncated and capped at 255, and every byte a
   becomes round(max(a - lo, 0) x k / 32), saturated at 255 (ties to even).
   With hi below lo, k is negative and the 8-bit multiply takes it modulo
   256, as the primitive does with any int constant.
   keepPainted non-zero: bytes that were odd (painted) before get their old
   value back and every other byte has bit 0 cleared; keepPainted zero: the
   scaled values stand, odd or not.
   Results: 1; -2 for a refused buffer or hi equal to lo (the range would
   divide by zero); 102 or -6 when the copy kept for keepPainted cannot be
   allocated (the map is then unchanged). */
KC_EXPORT int rkScaleAlpha(unsigned char* alpha, int alphaStep, int width, int height,
                           unsigned char hi, unsigned char lo, int keepPainted);

/* Composes the picture `image` with the map `mask` for display, in place:
   1  brush overlay: bytes 0..2 darken to round(v x 7 / 8); then 85 is added
      (saturating) to blue where the map byte is even, to green where it is
      255, to red where it is 1, and to red and green for other odd bytes.
      Byte 3 is left alone.
   2  flat codes: blue, green, red, byte 3 = (0, 0, 255, 255) where the map
      is 0, (0, 255, 0, 255) where 255, (255, 0, 0, 255) elsewhere.
   3, 6  the matte a = map scaled by rkScaleAlpha(hi, lo, keepPainted 0)
      over a colour background: byte c = sat(round(a x v / 256) +
      round((255 - a) x k / 256)), v the picture's byte c, k = color[2 - c]
      (color is red, green, blue, so blue takes color[2]). Each product is
      8-bit with ties to even, so 255 x 255 gives 254. Byte 3 becomes 255.
   4  the same with the colour over the foreground: sat(round((255 - a) x v
      / 256) + round(a x k / 256)); byte 3 becomes 255.
   5  the scaled matte as grey: bytes 0..2 = a, byte 3 = 255.
   Any other mode changes nothing and returns 1. hi, lo matter in modes 3 to
   6 only, color (3 bytes) in modes 3, 4 and 6 only (it may be null in the
   others). `mask` is only read.
   Results: 1; -2 for a refused image or mask, a null color in modes 3, 4
   and 6, or hi equal to lo in modes 3 to 6; 102 or -6 when the planes of
   modes 3 to 6 cannot be allocated (the picture is then unchanged). */
KC_EXPORT int rkShowImageAlpha(unsigned char* image, int imageStep, int width, int height,
                               unsigned char* mask, int maskStep, unsigned char hi,
                               unsigned char lo, int mode, unsigned char* color);

/* Blends src into dst: bytes 0..2 of dst become trunc(src x w + dst x
   (1 - w)) in single precision, saturated to 0..255 (only a weight outside
   0..1 reaches the limits); byte 3 of dst is left alone, src is only read.
   No result: a refused dst or src, or a weight that is not finite, changes
   nothing and leaves a log line. */
KC_EXPORT void rkShowKeepBlend(unsigned char* dst, int dstStep, int width, int height,
                               unsigned char* src, int srcStep, float weight);

/* Desaturates the unpainted part of the picture: through hue, lightness and
   saturation, every pixel whose map byte m is even has its saturation S
   become trunc(S x ((1 - s) + s x (m / 255)^4)), saturated to 0..255; painted
   pixels keep theirs. Every pixel of bytes 0..2 takes the round trip through
   hue, lightness and saturation (so s = 0 may still move a colour by its
   rounding); byte 3 is left alone, `mask` is only read. s = 1 turns alpha-0
   pixels grey and keeps full-alpha ones.
   Results: 1; -2 for a refused image or mask, or a strength that is not
   finite; 102 or -6 when the work buffer cannot be allocated (the picture
   is then unchanged). */
KC_EXPORT int rkDesaturation(unsigned char* image, int imageStep, int width, int height,
                             unsigned char* mask, int maskStep, float strength);

/* ---- brush strokes -------------------------------------------------------- */

/* Draws a straight stroke from (x0, y0) to (x1, y1), 2 x radius + 1 thick,
   8-connected with round ends, clipped to the map. The byte written:
   brushType 0 -> 1 (cut), 1 -> 255 (keep), 2 -> 126 (compute band),
   3 -> value with bit 0 set (a painted alpha), any other -> 0.
   Results: 1; -2 for a refused map or a radius outside 0..16383 (the
   thickest stroke drawn is 32767); -6 for an unexpected failure. */
KC_EXPORT int rkDrawLine8u(unsigned char* map, int step, int width, int height, int x0, int y0,
                           int x1, int y1, int radius, unsigned char brushType,
                           unsigned char value);

/* Draws a stroke whose painted value ramps from startValue at (x0, y0) to
   endValue at (x1, y1).
   - When x1 = x0 or y1 = y0 (any horizontal or vertical stroke, a single
     point included), only a filled disc of the given radius and startValue
     is drawn at (x0, y0); `aux` is not touched.
   - Otherwise every map pixel under the stroke (2 x radius + 1 thick,
     8-connected, round ends, clipped) is projected onto the stroke. In the
     round ends, beyond either end point, the map byte loses bit 0 (it is no
     longer painted) and the aux byte becomes 0. Between the ends the map
     byte becomes the linear blend of startValue and endValue at that foot,
     truncated, with bit 0 set; aux is left alone there. The pixels exactly
     at (x0, y0) and (x1, y1) take startValue and endValue, bit 0 set.
   `aux` is a second 1-byte map of the same size, with its own step.
   No result: a refused map or aux, or a radius outside 0..16383, changes
   nothing and leaves a log line; so does an unexpected failure (the stroke
   buffer cannot be allocated). */
KC_EXPORT void rkDrawGradientLine8u(unsigned char* map, int step, int width, int height,
                                    unsigned char* aux, int auxStep, int x0, int y0, int x1, int y1,
                                    int radius, unsigned char startValue, unsigned char endValue);

KC_EXTERN_C_END

#endif /* KEEPCUT_DISPLAY_H */
