/* keepcut for GIMP: moving pixels between drawables and the engine's buffers. */
#ifndef KEEPCUT_GIMP_PIXELS_H
#define KEEPCUT_GIMP_PIXELS_H

#include <libgimp/gimp.h>

#include "keepcut.h"

/* A drawable's area in its own coordinates. */
typedef struct {
    gint x, y, width, height;
} Area;

/* Reads `area` of a drawable in the babl format `encoding` (e.g. "Y u8"),
   taken in the drawable's own colour space, into `out` (rows packed).
   Pixels outside the drawable read as 0. */
void readArea(gint32 drawable, const Area* area, const char* encoding, guchar* out);

/* Writes packed rows of `encoding` pixels over `area` through the drawable's
   shadow buffer and merges it, so the change is one undo step; like GIMP's
   own filters, only inside the selection when there is one. */
void writeArea(gint32 drawable, const Area* area, const char* encoding, const guchar* pixels);

/* Writes into a drawable just made (whose undo step is its creation), all of
   `area` whatever the selection. */
void fillNewDrawable(gint32 drawable, const Area* area, const char* encoding, const guchar* pixels);

/* A trimap drawable's stored 8-bit values over `area` into `out` (one byte a
   pixel): grey drawables give their value, colour ones their first channel,
   each read in the drawable's own tone curve so painted values come back
   unchanged. */
void readTrimap(gint32 drawable, const Area* area, guchar* out);

/* The layer as the engine reads pictures (B, G, R, 255; 4 * width bytes a
   row) into `bgrx`, and its R', G', B', A bytes into `rgba`. */
void readPicture(gint32 layer, gint width, gint height, guchar* rgba, guchar* bgrx);

/* The engine's progress callback, driving GIMP's progress bar. */
int progressToGimp(int current, int total, void* data);

/* A request over a whole w x h layer: the B,G,R,x picture and the two maps
   (1 byte a pixel, tightly packed), the keep/cut and GrabCut regions both the
   whole layer, region results kept as computed, progress to GIMP's bar. */
void wholeLayerRequest(RKPSStructMsk2* r, guchar* bgrx, guchar* mask, guchar* brushInfo, gint w,
                       gint h);

/* The last line of the engine's message log, for error messages. */
const char* lastEngineMessage(void);

#endif
