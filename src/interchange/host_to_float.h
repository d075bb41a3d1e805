// Host pixels into the engine's float containers (0..1): channels separated,
// 8-bit levels scaled by 1/256 and 16-bit levels (0..32768) by 1/32768.
//
// Every form reads the host buffer `buf` (row step `step` bytes) from pixel
// (x, y) on, in the layout of its type code (image_type_codes.h); colour forms
// take codes 1, 3, 5 and 6 (the fourth channel of 5 and 6 is skipped), grey
// forms codes 7 and 8. The float side names the rectangle: the destination's
// region of interest, less a border where a form has one. Nothing is checked:
// the host rectangle must lie inside the buffer and all three planes of a
// planar destination must share one region size. An unsupported code
// converts nothing and returns 0; success returns 1.
//
// The 0.49-of-a-level offset puts each level just short of the middle of its
// interval, which the rest of the engine was tuned with; keep it. The
// extension forms (BExt) leave it out.
#pragma once

#include "core/img.h"

// Makes sure planes[0..2] are w x h float planes (a null plane, or one of
// another size, is destroyed and rebuilt; the caller owns the planes and frees
// them with delete), then converts the w x h host rectangle at (x, y) into
// them. The fourth and fifth arguments (the host's full size) are not used.
// Returns 3, the number of planes.
int initGIMGP32f(int type, void* base, int step, int, int, int x, int y, int w, int h,
                 GIMG<float>** planes);

// Three planes R, G, B.
int convertToIMG332f(int type, const void* buf, int step, int x, int y, GIMG<float>** planes);
// Interleaved R, G, B floats.
int convertToIMG332f(int type, const void* buf, int step, int x, int y, IMG3<float>& dst);
// One grey plane; codes 7 and 8 only.
int convertToIMG332f(int type, const void* buf, int step, int x, int y, GIMG<float>& grey);

// The host rectangle fills dst's region less `border` pixels on every side;
// the border then repeats the nearest edge pixel.
int convertToIMG332fDupBorder(int type, const void* buf, int step, int x, int y, int border,
                              IMG3<float>& dst);
int convertToIMGP32fDupBorder(int type, const void* buf, int step, int x, int y, int border,
                              GIMG<float>** planes);

// Without the offset: the w x h host rectangle goes to the top-left of the
// region; the columns right of w repeat each row's last pixel and the rows
// below h repeat the last row. w and h are clamped to the region. One plane
// takes codes 7 and 8, three planes codes 1, 3, 5 and 6.
int convertToGIMG32fBExt(int type, const void* buf, int step, int x, int y, int w, int h,
                         GIMG<float>& dst);
int convertToGIMG32fBExt(int type, const void* buf, int step, int x, int y, int w, int h,
                         GIMG<float>** planes);
