/* Strict C99 against the public header, linked to the shared library: a host
   makes a planar record, fills it, crops a rectangle into a second record and
   gives both back. */
#include <stdio.h>
#include <string.h>

#include "keepcut.h"

int main(void) {
    int failures = 0, y;
    RKPImage* whole = rkRKPImageCreate(IMTYPE_16S, 6, 4, 3);
    RKPImage* part = rkRKPImageCreate(IMTYPE_8U, 0, 0, 0);
    RKROI roi = {1, 2, 1, 3, 2};
    if (!whole || !part || whole->numPlane != 3 || whole->step < 12) {
        puts("record not created");
        return 1;
    }
    for (y = 0; y < 4; ++y) {
        short* row = (short*)((char*)whole->planes[2] + y * whole->step);
        int x;
        for (x = 0; x < 6; ++x) row[x] = (short)(1000 * y + x);
    }
    if (rkRKPImageROIcopy(whole, &roi, part) != 1 || part->width != 3 || part->height != 2 ||
        ((short*)((char*)part->planes[2] + part->step))[1] != 2003) {
        puts("rectangle copy wrong");
        ++failures;
    }
    if (rkRKPImageReAlloc(part, 99, 1, 1, 1) != -1 || rkRKPImageCreate(IMTYPE_8U, 1, 1, 5) != NULL) {
        puts("bad arguments accepted");
        ++failures;
    }
    if (strstr(getErrMsg(), "ImageReAlloc done") == NULL) {
        puts("no trace line");
        ++failures;
    }
    rkRKPImageDestroy(part);
    rkRKPImageDestroy(whole);
    return failures == 0 ? 0 : 1;
}
