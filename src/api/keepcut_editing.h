/* keepcut: editing tools of the masking screen — flood fill, colour-range and
   hair brushes on the brush map, feathered pasting of a recomputed rectangle,
   and two per-pixel operations.

   Map bytes follow the codes of keepcut.h: bit 0 set = painted, 255 keep,
   1 cut, even bytes computed alpha; 126 is the fill value of the compute
   band. Pictures are 4 bytes per pixel (blue, green, red, fourth byte);
   picked colours are 3 bytes (red, green, blue). Steps are bytes per row.

   Refusals: every entry refuses a null buffer, request or colour pointer, a
   negative width or height, and rows shorter than a row (step below width
   times bytes per pixel) with result -2 and a log line naming the entry and
   the argument; a refused call changes nothing. Entries that otherwise
   always return 1 return -2 only on refusal, or -6 / 102 when memory for
   their scratch images ran out (with a log line; then nothing was written).
   Included from keepcut.h; may also be included on its own. */
#ifndef KEEPCUT_EDITING_H
#define KEEPCUT_EDITING_H

#include "keepcut.h"

KC_EXTERN_C_BEGIN

/* Flood fill of the brush map from a seed. The map is read in three classes
   (cut = 1, keep = 255, every other byte) and the 8-connected area of the
   seed's class is filled:
   - fillType 0: the area becomes cut (1); fillType 1: keep (255); both
     write only inside `rect`, the area's bounding rectangle;
   - fillType 2: the area becomes the compute band (126) and `rect` is the
     whole map (0, 0, width, height);
   - any other fillType writes nothing but still reports the area's rectangle.
   rect (4 ints: x, y, width, height) is set to (0, 0, 0, 0) first; a seed
   already holding the requested code (1 for type 0, 255 for type 1, 126 for
   type 2) returns 1 at once with that rectangle. A rectangle reaching past
   the map's right or bottom edge is widened to the whole width or height.
   The three unnamed arguments are ignored.
   Results: 1 done or nothing to do; -3 the seed lies outside the map
   (negative seeds included; rect is zeroed); -1 no memory for the fill's
   work buffers (rect is zeroed, the map unchanged); -2 refused (null mask or
   rect, negative size, short rows; nothing written, rect included); -6 any
   other failure. Every result other than 1 leaves a log line. */
KC_EXPORT int rkFloodFillAlpha(unsigned char* mask, int maskStep, int width, int height, int seedX,
                               int seedY, unsigned char ignoredA, unsigned char ignoredB,
                               char fillType, int ignoredC, int* rect);

/* Colour-range brush on the request's `mask`, reading its `image`, `width`
   and `height` (other fields unused). A stroke from (x1, y1) to (x2, y2),
   2 x radius + 1 pixels thick, is drawn inside its bounding box clipped to
   the picture (the end points need not lie on the picture). Every unpainted
   (even) map byte under the stroke whose picture colour lies within
   `tolerance` of `color` — squared distance of blue, green and red strictly
   below tolerance squared — becomes keep (255) when `keep` is true, else
   cut (1). Painted bytes are never changed; tolerance 0 selects nothing and
   1 only the exact colour. An empty picture (width or height 0) is left
   alone.
   Results: 1; -2 refused (null request, image, mask or color, negative size,
   short rows, radius outside 0..16383, since a stroke is at most 32767
   pixels thick); -6 when memory ran out. */
KC_EXPORT int rkColorRangeSelect(RKPSStructMsk2* request, int x1, int y1, int x2, int y2,
                                 int radius, const unsigned char* color, int tolerance, bool keep);

/* Pastes src into dst (both width x height, 1 byte per pixel) with a
   feathered edge: a weight of 255 inside, ramping down over `border` rows at
   top and bottom (row i from the edge weighs (i + 1) x 255 / (border + 1),
   in integers) and then over `border` columns at left and right (scaling the
   weight the rows gave by (i + 1) x 256 / (border + 1) / 256), so corners get
   both ramps; a ramp is shortened to (side - 2) / 2 on sides of
   2 x border + 2 pixels or less, and a border of 0 or less pastes without
   feathering. dst = round((src x w + dst x (255 - w)) / 255).
   Results: 1; -2 refused (null src or dst, negative size, short rows); 102
   when memory ran out. */
KC_EXPORT int rkMergeAlphaRect(const unsigned char* src, int srcStep, unsigned char* dst,
                               int dstStep, int width, int height, int border);

/* For every pixel: the picture's three colour bytes become the low 8 bits of
   (mask byte x colour byte) — not scaled, so masks of 0 and 1 are what the
   operation expects — the fourth byte is kept, and the mask byte becomes
   255. `ignored` is unused.
   Results: 1; -2 refused (null image or mask, negative size, short rows). */
KC_EXPORT int rkAlphaMerge(unsigned char* image, int imageStep, int width, int height,
                           unsigned char* mask, int maskStep, float ignored);

/* Works out the picture's saturation scaled by `factor` where the mask is
   unpainted, in a scratch buffer that is then dropped: the picture and the
   mask are left exactly as they were. Hosts call it for its result only.
   Results: 1; -2 refused (null image or mask, negative size, short rows); -6
   when memory for the scratch buffer ran out. */
KC_EXPORT int rkAlphaShift(const unsigned char* image, int imageStep, int width, int height,
                           const unsigned char* mask, int maskStep, float factor);

/* Hair brush on the request's `mask`, reading its `image`, `width`,
   `height`, `hairForeColor` and `hairBackColor` (other fields unused).
   Under a stroke of radius `radius` between the end points (x1, y1) and
   (x2, y2), each pixel's alpha is its colour projected onto the line from the
   background colour (alpha 0) to the hair colour (alpha 255), clamped. Of
   these, only the pixels whose new alpha is the minimum or the maximum of
   their neighbourhood — the pixels at (-1, -1), (0, -1), (+1, -1), (-1, 0),
   (0, 0), (-2, +1) and (-1, +1) — are written, as painted bytes (alpha with
   bit 0 set), so that the keep/cut computation keeps them. Nothing outside
   the stroke's bounding box (the end points' box grown by radius, clipped to
   the picture) changes, nor the box's outermost ring.
   The stroke is drawn from the box's top-left corner (the smaller x and the
   smaller y of the end points) towards the point radius pixels inside the
   box's bottom-right corner, whatever the direction of the drag.
   An end point outside the picture, or equal hair and background colours
   (no colour line to project onto), changes nothing; the result is 1.
   Results: 1; -2 refused (null request, image, mask, hairForeColor or
   hairBackColor, negative size, short rows, radius outside 0..16383, since a
   stroke is at most 32767 pixels thick); -6 or 102 when memory ran out. */
KC_EXPORT int rkHairSelect(RKPSStructMsk2* request, int x1, int y1, int x2, int y2, int radius);

KC_EXTERN_C_END

#endif /* KEEPCUT_EDITING_H */
