/* keepcut: GrabCut selection. The user selects an object by its colours: the
   host keeps a GrabCut map in the request's `mask`, calls rkGrabCut after
   every stroke, and at the end turns the selection into a keep / cut /
   compute trimap for rkKeepCutToAlpha with rkGrabCutEdgeGen.

   All entries work on the request's GrabCut region only: gcLeft, gcTop,
   gcWidth x gcHeight, inside the picture (width x height). They read the
   request's image, mask, brushInfo (with their row bytes), progProc,
   progData and grabCutBuf, and nothing else of the record.

   Map byte as rkGrabCut reads it:
     bit 0     the pixel is foreground (else background) for the cut
     bit 1     the pixel is a hard constraint rather than a probable one
     bits 2-7  carried along; any of them set also makes the pixel a hard
               constraint
   So 0 and 2 enter as background, 1 and 3 as foreground, 2, 3 and every
   byte of 4 or more as hard constraints.

   From a rectangle to a brush map for rkKeepCutToAlpha (what the tool's
   `keepcut cutout` does):
     1. mask: 2 (hard background) outside the rectangle, 1 (probable
        foreground) inside; rkGrabCut, and again after each stroke (3 for
        hard foreground, 2 for hard background).
     2. A selected pixel now has bit 0 set in `mask` (it got its entry byte
        back). rkGrabCutEdgeGen reads the selection as 254 or 255 in
        `brushInfo`, so write 254 where bit 0 is set and 0 elsewhere first.
     3. rkGrabCutEdgeGen(request, band width): `mask` becomes 0 / 126 / 254.
     4. rkGrabCutDeleteBuf: ends the session and recodes `mask` (and
        `brushInfo`) to 1 (cut) / 126 (band) / 255 (keep), the brush map.
     Deleting the session before step 3 recodes the selection's 1 bytes as
     painted cut, so the trimap would have no band.
   Session: the handle in grabCutBuf is the only pointer these entries hand
   out. It is made by the first rkGrabCut that finds grabCutBuf null (or by
   rkGrabCutCreateBuf), keeps the colour models and the cut's own mask
   between strokes, and belongs to the host until it gives it back with
   rkGrabCutDeleteBuf; never free() it. rkGrabCutDeleteBuf does not clear
   grabCutBuf: set it to null before the next session. A handle that was
   deleted already, or never made by this library, is refused (logged and
   left alone), never followed.
   A session is made for one region size: it holds the region at its
   working size, the region's sides halved (rounding up) once per level,
   with levels = trunc(log2(longer side / 400)) + 1, within 0..3 (longer
   sides up to 200 pixels: none; 201..799: 1; 800..1599: 2; 1600 and more:
   3). rkGrabCut refuses a session of another size: a host that changes the
   image or the GrabCut region deletes the session and starts a new one.
   One session must not be used by two calls at once. */
#ifndef KEEPCUT_GRABCUT_H
#define KEEPCUT_GRABCUT_H

#include "keepcut_export.h"

KC_EXTERN_C_BEGIN

struct RKPSStructMsk2;

/* One GrabCut stroke over the GrabCut region.

   The cut runs on a reduced copy of the region (see the levels above; the
   selection is carried back to full size by guided upsampling, level by
   level when stepwiseUpsampling is non-zero, else in one pass), with the
   session in grabCutBuf, created there when null. The colour models are
   re-initialised from the map when the sum of the map's constraint bytes
   changed since the last stroke, else only re-evaluated. The same input
   gives the same selection on every call.

   Out: in `mask`, pixels the cut leaves as background lose bit 0 (the rest
   of the byte kept); pixels it selects get their byte back exactly as it
   came in, so a newly selected pixel keeps the bit 0 it had. The region of
   `brushInfo` receives the same bytes. Progress goes to progProc/progData
   (a total of 10000 in steps of 10).

   Results: 1 on success. -2 (nothing touched, no session made) for a null
   request, image, mask or brushInfo, a negative size, rows shorter than the
   width, a GrabCut region outside the picture or narrower or lower than 11
   pixels, or a grabCutBuf that is not a live session or is one of another
   size. When the stroke fails after the checks, the maps are left as far as
   it came (the region of `mask` may hold bit 1 copied into bit 0) and a
   session it made stays in grabCutBuf:
     n - 1000  an engine error code n was raised (e.g. -898: an image buffer
               could not be allocated);
     -1        memory ran out ("Out of System Memory !! ..." in the log);
     -1000     any other failure, among them a map the cut cannot learn
               colours from (fewer than 5 pixels of foreground or of
               background where the colour models are re-initialised).
   Every result but 1 appends a line to the message log. */
KC_EXPORT int rkGrabCut(struct RKPSStructMsk2* request, int stepwiseUpsampling);

/* A new session of width x height pixels (a region's working size), empty:
   the first rkGrabCut on it initialises it. Give it back with
   rkGrabCutDeleteBuf. Returns the handle; null (with a log line) for a side
   of 10 pixels or less, or when memory ran out. */
KC_EXPORT void* rkGrabCutCreateBuf(int width, int height);

/* Ends a session: deletes the session in grabCutBuf (null is fine; the field
   itself is not cleared), then over the GrabCut region rewrites every `mask`
   byte p into the pipeline's coding and stores the same value in
   `brushInfo`: 0 and 1 become 1 (painted cut), 254 and 255 become 255
   (painted keep), 2..253 lose bit 0.
   Refusals, each with a log line: a null request (nothing done); a null mask
   or brushInfo, a negative size, rows shorter than the width, or an empty
   GrabCut region or one outside the picture: the session is still deleted,
   the maps are untouched; a grabCutBuf that is not a live session: it is
   left alone and the maps are rewritten. No result. */
KC_EXPORT void rkGrabCutDeleteBuf(struct RKPSStructMsk2* request);

/* Turns the finished selection in `brushInfo` into a trimap in `mask`, over
   the GrabCut region. A brushInfo byte of 254 or 255 is selected. With a disc
   of diameter brushSize (made odd), the selection is eroded (the picture's
   edge does not eat into it) and dilated (the outside does not grow in);
   where they differ fully the band value 126 is written (the compute band),
   elsewhere 254 inside and 0 outside. Painted (odd) brushInfo bytes are
   copied into `mask` unchanged. `brushInfo` is only read; the session is not
   used.
   Refused with a log line, nothing touched: a null request, mask or
   brushInfo, a negative size, rows shorter than the width, an empty GrabCut
   region or one outside the picture, a brushSize outside 0..1024. A failure
   (memory) leaves a log line and `mask` as far as it came. No result. */
KC_EXPORT void rkGrabCutEdgeGen(struct RKPSStructMsk2* request, int brushSize);

KC_EXTERN_C_END

#endif /* KEEPCUT_GRABCUT_H */
