/* keepcut for GIMP: a trimap from the current selection by GrabCut, the same
   road as `keepcut cutout`: the selection starts the cut, its edge becomes
   the band to compute. */
#include <string.h>

#include "pixels.h"
#include "plugin.h"

/* GrabCut map bytes: bit 0 is foreground, bit 1 a hard constraint. Selected
   pixels are probable foreground, the rest hard background: for a rectangle
   selection exactly the tool's rectangle start. */
#define KC_PROBABLE_FOREGROUND 1
#define KC_HARD_BACKGROUND 2
/* How the band entry reads a selected pixel. */
#define KC_SELECTED 254
/* Selection values from half-selected up count as inside. */
#define KC_INSIDE_FROM 128
/* The GrabCut entries refuse regions of 10 pixels or less a side. */
#define KC_MIN_SIDE 11
/* The automatic band, as `keepcut cutout` picks it: 3% of the shorter side,
   at least 8 pixels (its benchmark found whole-picture error flat for bands
   of 10 to 20 pixels on pictures of about 800 x 500). */
#define KC_BAND_SHARE 0.03
#define KC_MIN_BAND 8
/* Trimap values written: cut, compute, keep. */
#define KC_TRIMAP_CUT 0
#define KC_TRIMAP_COMPUTE 128
#define KC_TRIMAP_KEEP 255

static gint automaticBand(gint w, gint h) {
    return MAX(KC_MIN_BAND, (gint)(MIN(w, h) * KC_BAND_SHARE));
}

/* The selection's bounds inside the layer are large enough for GrabCut. */
static gboolean selectionFits(gint32 image, gint lx, gint ly, gint w, gint h, GString* error) {
    gboolean nonEmpty = FALSE;
    gint x1, y1, x2, y2;
    gimp_selection_bounds(image, &nonEmpty, &x1, &y1, &x2, &y2);
    if (!nonEmpty) {
        g_string_assign(error, "select the subject first (a rectangle around it will do)");
        return FALSE;
    }
    x1 = MAX(x1, lx), y1 = MAX(y1, ly), x2 = MIN(x2, lx + w), y2 = MIN(y2, ly + h);
    if (x2 - x1 < KC_MIN_SIDE || y2 - y1 < KC_MIN_SIDE) {
        g_string_assign(error, "the selection must cover more than 10 x 10 pixels of the layer");
        return FALSE;
    }
    return TRUE;
}

/* Runs the cut and turns its result into a trimap in `map`. */
static gboolean cutToTrimap(RKPSStructMsk2* r, gint band, GString* error) {
    const gsize n = (gsize)r->width * r->height;
    gimp_progress_init("GrabCut selection");
    clearErrMsg();
    const int rc = rkGrabCut(r, 1);
    gimp_progress_end();
    gsize selected = 0;
    for (gsize i = 0; i < n; ++i) selected += r->mask[i] & 1;
    if (rc != 1)
        g_string_printf(error, "the GrabCut selection failed with code %d: %s", rc,
                        lastEngineMessage());
    else if (selected == 0)
        g_string_assign(error, "GrabCut selected nothing inside the selection");
    else if (selected == n)
        g_string_assign(error,
                        "GrabCut selected the whole layer: leave some background outside the "
                        "selection");
    if (error->len) {
        rkGrabCutDeleteBuf(r);
        return FALSE;
    }
    for (gsize i = 0; i < n; ++i) r->brushInfo[i] = (r->mask[i] & 1) ? KC_SELECTED : 0;
    rkGrabCutEdgeGen(r, band);
    rkGrabCutDeleteBuf(r);  // also codes the band's outside and inside as painted cut and keep
    for (gsize i = 0; i < n; ++i)
        r->mask[i] = r->mask[i] == RK_MASK_CUT    ? KC_TRIMAP_CUT
                     : r->mask[i] == RK_MASK_KEEP ? KC_TRIMAP_KEEP
                                                  : KC_TRIMAP_COMPUTE;
    return TRUE;
}

/* A new channel over the image holding `trimap` at the layer's place. */
static gint32 addTrimapChannel(gint32 image, gint lx, gint ly, gint w, gint h,
                               const guchar* trimap) {
    const gint iw = gimp_image_width(image), ih = gimp_image_height(image);
    const GimpRGB shown = {1.0, 0.0, 0.0, 1.0};
    const gint32 channel = gimp_channel_new(image, "keepcut trimap", iw, ih, 50.0, &shown);
    gimp_image_insert_channel(image, channel, -1, 0);
    /* Only the part of the layer inside the image; the rest of the channel
       stays 0 (cut). */
    const gint x1 = MAX(lx, 0), y1 = MAX(ly, 0), x2 = MIN(lx + w, iw), y2 = MIN(ly + h, ih);
    if (x2 <= x1 || y2 <= y1) return channel;
    const Area inside = {x1, y1, x2 - x1, y2 - y1};
    guchar* rows = g_malloc((gsize)inside.width * inside.height);
    for (gint y = 0; y < inside.height; ++y)
        memcpy(rows + (gsize)y * inside.width, trimap + (gsize)(y + y1 - ly) * w + (x1 - lx),
               inside.width);
    fillNewDrawable(channel, &inside, "Y u8", rows);
    g_free(rows);
    return channel;
}

gboolean runTrimapFromSelection(gint32 image, gint32 layer, gint band, gint32* channel,
                                GString* error) {
    if (!gimp_item_is_layer(layer) || gimp_item_is_group(layer)) {
        g_string_assign(error, "the drawable must be a layer with pixels of its own");
        return FALSE;
    }
    if (band < 0 || band > 1024) {
        g_string_assign(error, "the band width must be 0 (automatic) to 1024 pixels");
        return FALSE;
    }
    const gint w = gimp_drawable_width(layer), h = gimp_drawable_height(layer);
    gint lx, ly;
    gimp_drawable_offsets(layer, &lx, &ly);
    if (!selectionFits(image, lx, ly, w, h, error)) return FALSE;

    const gsize n = (gsize)w * h;
    guchar* rgba = g_try_malloc(n * 4);
    guchar* bgrx = g_try_malloc(n * 4);
    guchar* map = g_try_malloc(n);
    guchar* brush = g_try_malloc0(n);
    gboolean ok = FALSE;
    if (!rgba || !bgrx || !map || !brush) {
        g_string_assign(error, "not enough memory for the layer's buffers");
        goto done;
    }
    readPicture(layer, w, h, rgba, bgrx);
    const Area underLayer = {lx, ly, w, h};  // the selection in image coordinates
    readArea(gimp_image_get_selection(image), &underLayer, "Y u8", map);
    for (gsize i = 0; i < n; ++i)
        map[i] = map[i] >= KC_INSIDE_FROM ? KC_PROBABLE_FOREGROUND : KC_HARD_BACKGROUND;

    RKPSStructMsk2 r;
    wholeLayerRequest(&r, bgrx, map, brush, w, h);
    const gint bandWidth = band > 0 ? band : automaticBand(w, h);
    if (!cutToTrimap(&r, bandWidth, error)) goto done;

    gimp_image_undo_group_start(image);
    *channel = addTrimapChannel(image, lx, ly, w, h, map);
    gimp_image_undo_group_end(image);
    g_print("keepcut: trimap of %dx%d layer with a %d pixel band added as channel %d\n", w, h,
            bandWidth, *channel);
    ok = TRUE;
done:
    g_free(rgba);
    g_free(bgrx);
    g_free(map);
    g_free(brush);
    return ok;
}
