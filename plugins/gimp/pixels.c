/* keepcut for GIMP: moving pixels between drawables and the engine's buffers. */
#include "pixels.h"

#include <string.h>

static const Babl* formatOf(gint32 drawable, const char* encoding) {
    return babl_format_with_space(encoding, gimp_drawable_get_format(drawable));
}

void readArea(gint32 drawable, const Area* area, const char* encoding, guchar* out) {
    GeglBuffer* buffer = gimp_drawable_get_buffer(drawable);
    gegl_buffer_get(buffer, GEGL_RECTANGLE(area->x, area->y, area->width, area->height), 1.0,
                    formatOf(drawable, encoding), out, GEGL_AUTO_ROWSTRIDE, GEGL_ABYSS_NONE);
    g_object_unref(buffer);
}

void writeArea(gint32 drawable, const Area* area, const char* encoding, const guchar* pixels) {
    GeglBuffer* shadow = gimp_drawable_get_shadow_buffer(drawable);
    gegl_buffer_set(shadow, GEGL_RECTANGLE(area->x, area->y, area->width, area->height), 0,
                    formatOf(drawable, encoding), pixels, GEGL_AUTO_ROWSTRIDE);
    gegl_buffer_flush(shadow);
    g_object_unref(shadow);
    gimp_drawable_merge_shadow(drawable, TRUE);
    gimp_drawable_update(drawable, area->x, area->y, area->width, area->height);
}

void fillNewDrawable(gint32 drawable, const Area* area, const char* encoding,
                     const guchar* pixels) {
    GeglBuffer* buffer = gimp_drawable_get_buffer(drawable);
    gegl_buffer_set(buffer, GEGL_RECTANGLE(area->x, area->y, area->width, area->height), 0,
                    formatOf(drawable, encoding), pixels, GEGL_AUTO_ROWSTRIDE);
    g_object_unref(buffer);
    gimp_drawable_update(drawable, area->x, area->y, area->width, area->height);
}

void readTrimap(gint32 drawable, const Area* area, guchar* out) {
    /* Layers of a perceptual image store R'G'B' or Y' values, channels and
       linear images linear ones; converting between the two would move
       every painted grey except 0 and 255. */
    const char* own = babl_get_name(gimp_drawable_get_format(drawable));
    const gboolean perceptual = strchr(own, '\'') != NULL;
    if (!gimp_drawable_is_rgb(drawable)) {
        readArea(drawable, area, perceptual ? "Y' u8" : "Y u8", out);
        return;
    }
    const gsize n = (gsize)area->width * area->height;
    guchar* rgb = g_malloc(n * 3);
    readArea(drawable, area, perceptual ? "R'G'B' u8" : "RGB u8", rgb);
    for (gsize i = 0; i < n; ++i) out[i] = rgb[3 * i];  // a trimap is grey in every channel
    g_free(rgb);
}

void readPicture(gint32 layer, gint width, gint height, guchar* rgba, guchar* bgrx) {
    const Area all = {0, 0, width, height};
    readArea(layer, &all, "R'G'B'A u8", rgba);
    const gsize n = (gsize)width * height;
    for (gsize i = 0; i < n; ++i) {
        bgrx[4 * i] = rgba[4 * i + 2];
        bgrx[4 * i + 1] = rgba[4 * i + 1];
        bgrx[4 * i + 2] = rgba[4 * i];
        bgrx[4 * i + 3] = 255;  // the fourth byte the tool gives the engine
    }
}

void wholeLayerRequest(RKPSStructMsk2* r, guchar* bgrx, guchar* mask, guchar* brushInfo, gint w,
                       gint h) {
    /* mergeMode 2 leaves a computed region as it is. */
    enum { kMergeAsComputed = 2 };
    memset(r, 0, sizeof *r);
    r->image = bgrx;
    r->imageRowBytes = w * 4;
    r->mask = mask;
    r->maskRowBytes = w;
    r->brushInfo = brushInfo;
    r->brushInfoRowBytes = w;
    r->width = r->roiWidth = r->gcWidth = w;
    r->height = r->roiHeight = r->gcHeight = h;
    r->mergeMode = kMergeAsComputed;
    r->progProc = progressToGimp;
    r->progData = r; /* any non-null pointer: without one no progress is reported */
}

int progressToGimp(int current, int total, void* data) {
    (void)data;
    if (total > 0) gimp_progress_update((gdouble)current / total);
    return 1;
}

const char* lastEngineMessage(void) {
    /* The log is cleared before each call, so its last line is this call's. */
    const char* log = getErrMsg();
    const char* end = log + strlen(log);
    while (end > log && (end[-1] == '\n' || end[-1] == ' ')) --end;
    const char* start = end;
    while (start > log && start[-1] != '\n') --start;
    static char line[512];
    g_strlcpy(line, start, MIN(sizeof line, (gsize)(end - start) + 1));
    return line;
}
