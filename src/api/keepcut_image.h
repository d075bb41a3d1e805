/* keepcut: planar image records, the one form in which the engine hands whole
   planar images to a host and takes them back.

   Host layouts the record entries accept: planes of 8-bit unsigned samples
   (IMTYPE_8U) or of 16-bit signed samples (IMTYPE_16S, the engine's short
   range 0..32767), one to four planes of width x height that share one row
   step in bytes. Interleaved host buffers (8-bit R,G,B; 16-bit R,G,B in the
   host range 0..32768; grey) are converted inside the engine and have no
   entry of their own.

   Ownership: a record made by rkRKPImageCreate belongs to the host, which
   gives it back with rkRKPImageDestroy. Planes that a reallocation made
   (flags bit 0, or bit 1 for planes from the general heap) belong to the
   record and are released by rkRKPImageFree, rkRKPImageDestroy or the next
   reallocation; planes a host puts in a record itself (flags 0) are only
   forgotten, never released.

   Every call appends a trace line to the message log, so the log grows with
   normal use. The engine counts the records that hold planes it allocated,
   for its own leak checks. */
#ifndef KEEPCUT_IMAGE_H
#define KEEPCUT_IMAGE_H

#include "keepcut_export.h"

KC_EXTERN_C_BEGIN

/* Sample types of a record. */
enum {
    IMTYPE_8U = 65, /* unsigned 8-bit samples */
    IMTYPE_16S = 66 /* signed 16-bit samples */
};

/* A rectangle of a record: active is always 1, then the origin and size in
   pixels. A record's own roi is (1, 0, 0, width, height). */
typedef struct RKROI {
    int active;
    int x;
    int y;
    int width;
    int height;
} RKROI;

/* A planar image. Read the fields; change them only through the entries
   below (a host may build a record of borrowed planes with flags 0). */
typedef struct RKPImage {
    int type;        /* IMTYPE_8U or IMTYPE_16S */
    int numPlane;    /* 0..4 */
    void* planes[4]; /* plane starts; unused ones are null */
    int step;        /* row step in bytes, shared by all planes */
    int width;       /* plane size in pixels */
    int height;
    struct RKPImage* self; /* the record itself; null once its own planes were released */
    RKROI roi;             /* (1, 0, 0, width, height) */
    int flags; /* bit 0: planes from the aligned allocator, bit 1: from the general heap,
                  0: borrowed */
} RKPImage;

/* A new record of numPlane planes of width x height samples of type
   (planes left null when width or height is 0). Returns null, with a log
   line, when numPlane is negative or above 4, a size is negative or type is
   neither IMTYPE_8U nor IMTYPE_16S, and when memory ran out. The record
   belongs to the caller: give it back with rkRKPImageDestroy. */
KC_EXPORT RKPImage* rkRKPImageCreate(int type, int width, int height, int numPlane);

/* Gives img planes of the new type, size and count. Returns the bytes of all
   planes (numPlane x height x step): unchanged, without touching the record,
   when type, size and count are what it has already; 0 after releasing the
   old planes when width or height is below 1; -1 when numPlane is negative or
   above 4 or type is unknown (nothing touched); -2 for a null img; -6 when a
   plane could not be allocated (the log also holds "rkRKPImageReAlloc
   allocate error"; the record is then left empty and the count unchanged). */
KC_EXPORT long long rkRKPImageReAlloc(RKPImage* img, int type, int width, int height, int numPlane);

/* Releases the planes the record owns (borrowed ones are only forgotten) and
   empties it: no planes, size, step and flags 0, roi (1, 0, 0, 0, 0); the type
   is kept. A null img only leaves a log line. */
KC_EXPORT void rkRKPImageFree(RKPImage* img);

/* rkRKPImageFree, then the record itself. Only for records made by
   rkRKPImageCreate; null does nothing. */
KC_EXPORT void rkRKPImageDestroy(RKPImage* img);

/* Copies the rectangle roi (x, y, width, height; active ignored) of every
   plane of in into out, which is reallocated to the rectangle's size, type
   and plane count. in and out may be the same record (a crop in place).
   Returns 1; -1 when in has a type other than IMTYPE_8U and IMTYPE_16S or a
   plane count other than 1 and 3, out is null, out could not be given planes
   of that size (an empty rectangle included) or the staging buffer could not
   be allocated, each with its line in the log; -2 (nothing touched) for a null
   in or roi, a null plane, a step shorter than a row of in, or a rectangle
   with a negative origin or size or reaching outside in; -6 when memory ran
   out otherwise. */
KC_EXPORT int rkRKPImageROIcopy(RKPImage* in, RKROI* roi, RKPImage* out);

KC_EXTERN_C_END

#endif /* KEEPCUT_IMAGE_H */
