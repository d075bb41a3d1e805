/* keepcut: the engine's C interface for hosts.

   Conventions, stated once:
   - Every entry has C linkage and may be called from C99 or C++.
   - Results are ints; 1 is success unless an entry says otherwise. Every
     other result also appends a line to the message log (getErrMsg) naming
     the entry, the result and its meaning, e.g.
     "rkKeepCutToAlpha: result -5, not enough keep and cut strokes to compute".
     No entry throws, aborts or hangs: every C++ failure, including running
     out of memory inside the solver, is turned into a result at the boundary.
   - The results an entry can return are listed with it. Their meanings are
     the same everywhere:
        1    success
        0    the solver ran out of memory (pardisoSolverOOC only)
       -1    a piece of the job is too large to solve in the memory
             available: a KD-tree cell with more than 2,000,000 unknown
             pixels, or on the full-resolution pass a reduced problem beyond
             the memory budget (a very thin picture or region); refused
             before the large allocations. The image-record entries
             (keepcut_image.h) return it for records they refuse
       -2    invalid argument (the log line says which)
       -5    not enough keep and cut strokes to compute
       -6    out of memory or an unexpected failure; the log also holds
             "Out of System Memory !! ..." or "Unknown Engine Error."
      102    an image or work buffer could not be allocated
      121, 122, 123
             the direct solver's analysis, factorisation or solve failed
      125    the direct solver ran out of memory, or the machine cannot hold
             the factor the analysis predicted
      130    a matting work array could not be allocated
   - Buffers are owned by the host; the engine never keeps a pointer past the
     call that received it. Pointers returned by the engine are owned by the
     engine unless an entry says otherwise.
   - Threads: computing entries may run at the same time on different host
     threads as long as no two calls share a request record or a buffer
     that one of them writes (mask, brushInfo, foreground, b, and the
     request's region fields); each call's result is then the same as if it
     ran alone. The direct solves of two threads take turns. Each request
     sizes its work to the machine's memory as if it ran alone, so two large
     requests at once can fail with -6 or -1 where either alone would not.
   - Per calling thread: the progress state (setProgProc, setProgRange,
     progressKick, initProgProc, and the stages a request sets up from its
     progProc/progData; progressReady true rebinds the stages set up earlier
     on the same thread) and the stopwatch (startTimer/endTimer). A callback
     is called on the thread of the call that installed it, with that call's
     data, never on another thread.
   - The message log is one for the process and locked: any thread may call
     copyErrMsg, getErrMsg and clearErrMsg; each text lands whole, and texts
     of two threads interleave in the order they were appended. getErrMsg
     returns the log itself, not a copy: while another thread appends or
     clears, the text can change under the reader (cut short or continued by
     newer text, never read past the buffer's end). A host that reads the log
     while other threads compute should copy it at once; clearing it before
     a request keeps only that request's lines only while no other request
     runs.
   - The settings globals (gTempPath, gMKL_PARDISO_OOC_*) are plain process
     variables: set them before starting threads. */
#ifndef KEEPCUT_H
#define KEEPCUT_H

#include <stdbool.h>

#include "keepcut_export.h"
#include "keepcut_image.h"

KC_EXTERN_C_BEGIN

/* ---- progress ----------------------------------------------------------- */

/* Host progress callback: current out of total, with the host's data pointer.
   The value it returns is passed back to the engine's caller and never
   cancels work. */
typedef int (*RKProgressProc)(int current, int total, void* data);

/* Resets the flat progress counter and forgets the callback. Returns 1. */
KC_EXPORT int initProgProc(void);
/* Installs callback and data (borrowed, not owned) with a total and an
   increment per kick; the counter restarts at 0. Returns 1. */
KC_EXPORT int setProgProc(RKProgressProc proc, void* data, int total, int inc);
/* Changes total and increment, keeping the counter; returns the counter. */
KC_EXPORT int setProgRange(int total, int inc);
/* Advances the counter by the increment (falling back to half of the total
   when it reaches the end) and calls the callback; returns its result, or 1
   when no callback or no data is installed: a callback given a null data
   pointer is never called. */
KC_EXPORT int progressKick(void);

/* ---- message log -------------------------------------------------------- */

/* Appends text (without its terminator) to the 40960-byte message ring; the
   newest text overwrites the oldest once the ring is full. Returns the new end
   position. */
KC_EXPORT int copyErrMsg(const char* text);
/* The log, oldest text first, zero-terminated. The pointer is owned by the
   engine and stays valid for the life of the library; reading does not empty
   the log. It is the log itself, shared by all threads (see Threads above). */
KC_EXPORT char* getErrMsg(void);
/* Empties the log. */
KC_EXPORT void clearErrMsg(void);

/* ---- memory budget, environment, timing --------------------------------- */

/* Usable memory in bytes (physical memory less 300 MB, clamped to
   500 MB .. 2.9 GB), written into both arguments. Returns 1. */
#ifdef __cplusplus
KC_EXPORT int checkMemInBytes(double& usable, double& usableAgain);
#else
KC_EXPORT int checkMemInBytes(double* usable, double* usableAgain);
#endif
/* Usable bytes divided by 1250: the budget unit the tiling code multiplies by
   1000. */
KC_EXPORT int usableMemInMB(void);
/* Sets up the solver's environment (out-of-core factorisation off). Returns 1. */
KC_EXPORT int setRKEnvVars(void);
/* Counterpart of setRKEnvVars; nothing to undo. Returns 1. */
KC_EXPORT int restoreRKEnvVars(void);
/* Starts the engine's stopwatch. */
KC_EXPORT void startTimer(void);
/* Seconds since startTimer. */
KC_EXPORT double endTimer(void);

/* Settings read by nothing in the engine, kept for hosts that set them: a
   temporary directory and the out-of-core solver's directory, in-core size
   limit (MB) and keep-files switch. */
#define KC_SETTINGS_PATH_BYTES 1024
KC_EXPORT extern char gTempPath[KC_SETTINGS_PATH_BYTES];
KC_EXPORT extern char gMKL_PARDISO_OOC_PATH[KC_SETTINGS_PATH_BYTES];
KC_EXPORT extern int gMKL_PARDISO_OOC_MAX_CORE_SIZE;
KC_EXPORT extern int gMKL_PARDISO_OOC_KEEP_FILE;

/* ---- keep/cut compute ---------------------------------------------------- */

/* Mask map byte codes. The lowest bit of a map byte marks a pixel the user
   painted: its value is kept exactly and never recomputed. Unpainted (even)
   bytes are alpha estimates the engine recomputes and writes back with the
   lowest bit cleared. */
enum {
    RK_MASK_KEEP = 255,      /* painted foreground: alpha fixed at 255 */
    RK_MASK_CUT = 1,         /* painted background: alpha fixed at 0 */
    RK_MASK_PAINTED_BIT = 1, /* set on every painted byte */
    RK_MASK_BAND_LOW = 6,    /* unpainted 6..249: the band still to compute; */
    RK_MASK_BAND_HIGH = 249  /* 0..5 count as background, 250..255 as foreground */
};

/* One keep/cut request, filled and owned by the host (160 bytes on 64-bit
   builds, mergeMode last). The engine never frees any buffer it points at and
   keeps no pointer after the call. All maps are row-major, top row first; row
   bytes may exceed width times pixel size. */
typedef struct RKPSStructMsk2 {
    unsigned char* image; /* picture, 4 bytes per pixel (B, G, R, fourth byte) */
    int imageRowBytes;
    unsigned char* mask; /* brush map in (codes above), alpha out; 1 byte per pixel */
    int maskRowBytes;
    unsigned char* foreground; /* recovered colours out, same layout as image */
    int foregroundRowBytes;
    unsigned char* brushInfo; /* scratch map of the picture's size: holds the painted
                                 map during a call */
    int brushInfoRowBytes;
    int width; /* picture size in pixels; all four buffers have it */
    int height;
    int roiX; /* region to compute; widened in place for small regions */
    int roiY;
    int roiWidth;
    int roiHeight;
    int cellMode;            /* 0: whole picture; else a region job merged into the mask */
    bool recoverForeground;  /* also recover foreground colours into `foreground` */
    RKProgressProc progProc; /* may be null */
    void* progData;          /* passed to progProc; progress is reported only when
                                both are non-null: give any non-null pointer when
                                the callback needs no data */
    /* Read only by the selection tools, never by the keep/cut pipeline. */
    const unsigned char* hairForeColor; /* R, G, B of the picked hair colour */
    const unsigned char* hairBackColor; /* R, G, B of the picked background colour */
    void* grabCutBuf;                   /* GrabCut session handle */
    int gcWidth;
    int gcHeight;
    int gcLeft;
    int gcTop;
    int mergeMode; /* region jobs: 0 merge by minimum, 1 by maximum, else as computed */
} RKPSStructMsk2;

/* Box around the work left in a brush map of width x height (1 byte per pixel,
   or 2 when is16Bit is non-zero; step in bytes): the rows and columns that
   hold a value other than valueA and valueB.
   - The first such row and column, moved 12 pixels out (not below 0), are the
     box's top and left.
   - Its bottom and right are the last such row below the top and column right
     of the left, moved 12 pixels out (not beyond the map). When none lies
     beyond, the box ends at its top row or left column: work only in column 0
     gives a box 1 wide there; work only in row 0 gives a box 1 high.
   - When the box is lower than 24 rows (its width is never tested), x, w, y, h
     get zeros and both counts -1.
   Otherwise the box goes to x, w, y, h, and countA and countB (both may be
   null; counted only when both are given) receive how many box pixels equal
   valueA and valueB. When no column of those rows holds work, nothing is
   written. `ignored` is unused.
   Results: 1; -2 for a null map or box pointer, a negative size or rows
   shorter than the width; -6. */
KC_EXPORT int rkMaskBBox(int is16Bit, const void* map, int step, int width, int height, int* x,
                         int* w, int* y, int* h, int* countA, int* countB, int ignored, int valueA,
                         int valueB);

/* Computes the alpha of the request's region into `mask` (the main entry).

   In: the picture, the brush map in `mask` (codes above) and, for
   whole-picture jobs (cellMode 0), the same painted map in `brushInfo`, which
   the host keeps filled. Region jobs copy the whole mask into `brushInfo`
   themselves (all of it, width x height). `image` is only read, and so is
   `brushInfo` in whole-picture jobs. `foreground` may be null unless recoverForeground is set.
   hiResPass 1 asks for the full-resolution pass, any other value allows the
   coarser strategies. progressReady is false when the host calls: the entry
   then restarts progress reporting with progProc/progData; true rebinds only
   the callback (for callers whose tiling loop set progress up already).

   Out: every painted (odd) byte of the region holds exactly what was painted
   and every other byte a computed alpha with bit 0 cleared (painted cut stays
   1: rkMapToMatte turns the map into a plain matte). A region narrower or
   lower than 1500 pixels is first widened for context, and the request's
   region fields hold the widened region afterwards (calling twice widens
   twice). With w, h the region's size and a = (w + h) / 2 (integers):
     sx = (int)min(max(w * 1.7f, a * 1.4f), width), mx = sx / 2,
     sy = (int)min(max(h * 1.7f, a * 1.4f), height), my = sy / 2;
   the region grows by mx on the left and on the right and by my at the top
   and at the bottom (so by about the whole span sx, sy), is then clipped to
   the picture, and what a side loses at the left or top edge is added to the
   right or bottom side before that clip. A host sizes its dirty rectangle
   from this rule, or simply reads the region fields back.
   Region jobs then merge the result with the earlier map by mergeMode (0
   minimum, 1 maximum, else as computed). The coarse-pass KD-tree strategies
   (whole pictures, and regions of 968 x 968 pixels or more) copy the picture's
   pixel into a given `foreground` where the map is painted keep or cut. With
   recoverForeground set, the foreground colours of the region are then
   recovered into `foreground` (see rkRecoverForegroundCell).

   cellMode is 0 (whole picture) or 1..16383 (a region job; on the coarse pass
   regions of 968 x 968 pixels or more hold a known rim 2 x cellMode + 1
   pixels thick at half size, and a drawn line is at most 32767 thick).

   Results: 1 on success; -2 (nothing touched) for a null request, image, mask
   or brushInfo (or foreground when recoverForeground is set), a negative size,
   rows shorter than the width, an empty region or one outside the picture, or
   a cellMode outside 0..16383; -5 when a whole-picture job lacks keep or cut
   strokes; -1 when one KD-tree cell would outgrow a solve; -6 with
   "Out of System Memory !! ..." in the log when memory ran out or anything
   else failed; 102, 121, 122, 123, 125 or 130 when a buffer, the solver or
   a matting array failed (see the conventions above). On every failure after
   the checks the painted bytes are back in `mask`; other bytes hold whatever
   the failed computation left. */
KC_EXPORT int rkKeepCutToAlpha(RKPSStructMsk2* request, int hiResPass, bool progressReady);

/* The matte a host shows or saves, from a map rkKeepCutToAlpha computed:
   every byte is its alpha except painted cut (1), which becomes 0. map and
   matte (width x height, 1 byte per pixel, row bytes apart) may be the same
   buffer. Returns 1; -2 for a null buffer, a negative size or rows shorter
   than the width (nothing written). */
KC_EXPORT int rkMapToMatte(const unsigned char* map, int mapRowBytes, unsigned char* matte,
                           int matteRowBytes, int width, int height);

/* Over the request's region: where `brushInfo` is odd (painted), `mask` takes
   that byte; elsewhere `mask` keeps its value with bit 0 cleared. Returns 1;
   -2 for a null request, mask or brushInfo, a negative size, rows shorter
   than the width, or an empty region or one outside the picture. */
KC_EXPORT int recoverBrushInfo(RKPSStructMsk2* request);

/* ---- foreground recovery ------------------------------------------------- */

/* Recovers the true foreground colour of the request's region (roiX, roiY,
   roiWidth, roiHeight) from the picture and the alpha in `mask` into
   `foreground` (same layout as `image`; only the three colour bytes are
   written). Colours are estimated on a reduced copy of the region (18% for
   whole-picture jobs, cellJob false; for region jobs full scale up to 200,000
   picture pixels, 33% below 4 M, 20% above), enlarged, and given back the
   picture's fine detail where the mask is fractional (11..249). Where the
   mask is 250 or more, or 5 or less, or `brushInfo` (read when not null) is
   painted keep (255) or cut (1), the new colour is the picture's own.
   `image`, `mask` and `brushInfo` are only read.
   For region jobs (cellJob true) the new colours are feathered into the old
   content of `foreground`: full weight at the region's centre, none at its
   rim, so a host should fill `foreground` (for instance with the picture)
   before the first call. Whole-picture jobs replace the region's colours.
   Returns 1; -2 (with a log line) for a null request, image, mask or
   foreground, a negative size, rows shorter than the width (a given
   brushInfo's included), or an empty region or one outside the picture; -6
   when memory ran out; 102, 121, 122, 123, 125 or 130 when a buffer or the
   colour solve failed (see the conventions above). */
KC_EXPORT int rkRecoverForegroundCell(RKPSStructMsk2* request, bool cellJob);

/* The foreground colours of a whole picture for a given matte, estimated at
   full resolution from coarse to fine (what the tool's cut-outs use; it is
   not the recovery rkKeepCutToAlpha runs). image and foreground are 4 bytes
   per pixel (B, G, R, fourth byte), alpha 1 byte (0..255, e.g. from
   rkMapToMatte), all width x height with their own row bytes; only the three
   colour bytes of foreground are written, and foreground may be image
   itself. Where alpha is 0 the colour is extrapolated from the nearby
   foreground, so a straight-alpha cut-out has no dark fringe. Memory: about
   46 bytes per pixel while it runs. Returns 1; -2 (with a log line, nothing
   written) for a null buffer, a negative size or rows shorter than the
   width; -6 when memory ran out. */
KC_EXPORT int rkEstimateForeground(const unsigned char* image, int imageRowBytes,
                                   const unsigned char* alpha, int alphaRowBytes,
                                   unsigned char* foreground, int foregroundRowBytes, int width,
                                   int height);

/* Computes alpha and recovers the foreground over the whole picture in tiles
   of 130 x 130 at a stride of 100: every tile with mask bytes strictly
   between 5 and 250 runs as a region job (rkKeepCutToAlpha with cellMode 4
   and recoverForeground set, merged into `mask` by mergeMode); other tiles
   only advance the progress. The request's own region and `brushInfo` are
   neither read nor changed (a private copy of the map serves as brushInfo).
   Returns 1 (a tile's failure is in the log, and the pass goes on); -2 for a
   null request, image, mask or foreground, a negative size or rows shorter
   than the width; -6 or 102 when the pass's own memory ran out. */
KC_EXPORT int rkRecoverDuringComputeOnly(RKPSStructMsk2* request);

/* ---- sparse direct solver ------------------------------------------------ */

/* Solves A x = b for a symmetric matrix of order n given by its upper
   triangle, diagonal first in every row, in one-based compressed rows (a:
   values, ia: n + 1 row starts, ja: columns). The solution is written over b
   (nrhs right-hand sides of n values each); x is unused workspace and may be
   null. mtype 2 is positive definite, -2 symmetric indefinite. All arrays are
   the caller's and are only read during the call, except b. Each row's
   columns must ascend strictly (no column twice). Returns 1 on success; 0
   when memory ran out or the machine cannot hold the factor; 121, 122 or 123
   when the analysis, the factorisation or the solve failed; -2 for null
   arrays, a non-positive n or nrhs, an mtype other than 2 or -2, or rows
   that are not upper-triangular one-based compressed rows as described; -6
   for any other failure. */
KC_EXPORT int pardisoSolverOOC(int n, float* a, int* ia, int* ja, float* b, float* x, int nrhs,
                               int mtype);

KC_EXTERN_C_END

/* Editing tools: flood fill, colour-range and hair brushes, feathered paste. */
#include "keepcut_editing.h"
/* Display compositing and brush strokes for the masking screen. */
#include "keepcut_display.h"
/* GrabCut selection over a request record. */
#include "keepcut_grabcut.h"
/* The direct mask entry: a rough mask over colour planes to a refined alpha. */
#include "keepcut_mask.h"
/* The fine pass: the high-resolution pass plus full-resolution detail. */
#include "keepcut_fine.h"

#endif /* KEEPCUT_H */
