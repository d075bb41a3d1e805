/* keepcut for GIMP: mattes a layer from a painted trimap into its mask. */
#include <string.h>

#include "pixels.h"
#include "plugin.h"

/* Unpainted start value of the compute band, as the keepcut tool gives it:
   even (not painted) and mid-way, so the result equals `keepcut matte`'s. */
#define KC_BAND_START 128

/* The area of `trimap` lying under `layer`, in the trimap's coordinates;
   FALSE when the trimap does not cover the whole layer. */
static gboolean trimapUnderLayer(gint32 layer, gint32 trimap, Area* area) {
    gint lx, ly, tx, ty;
    gimp_drawable_offsets(layer, &lx, &ly);
    gimp_drawable_offsets(trimap, &tx, &ty);
    area->x = lx - tx;
    area->y = ly - ty;
    area->width = gimp_drawable_width(layer);
    area->height = gimp_drawable_height(layer);
    return area->x >= 0 && area->y >= 0 && area->x + area->width <= gimp_drawable_width(trimap) &&
           area->y + area->height <= gimp_drawable_height(trimap);
}

/* The layer's mask, added (all white) when it has none. */
static gint32 maskOf(gint32 layer) {
    gint32 mask = gimp_layer_get_mask(layer);
    if (mask == -1) {
        mask = gimp_layer_create_mask(layer, GIMP_ADD_MASK_WHITE);
        gimp_layer_add_mask(layer, mask);
    }
    return mask;
}

/* Puts the recovered colours into the layer, keeping its own alpha. */
static void writeForeground(gint32 layer, const Area* all, const guchar* bgrx, guchar* rgba) {
    const gsize n = (gsize)all->width * all->height;
    for (gsize i = 0; i < n; ++i) {
        rgba[4 * i] = bgrx[4 * i + 2];
        rgba[4 * i + 1] = bgrx[4 * i + 1];
        rgba[4 * i + 2] = bgrx[4 * i];
    }
    writeArea(layer, all, "R'G'B'A u8", rgba);
}

gboolean runMatte(gint32 image, gint32 layer, const MatteArgs* args, GString* error) {
    if (!gimp_item_is_layer(layer) || gimp_item_is_group(layer)) {
        g_string_assign(error, "the drawable to matte must be a layer with pixels of its own");
        return FALSE;
    }
    if (!gimp_item_is_valid(args->trimap) || !gimp_item_is_drawable(args->trimap) ||
        gimp_drawable_is_indexed(args->trimap)) {
        g_string_assign(error, "the trimap must be a grey or colour layer or a channel");
        return FALSE;
    }
    Area trimapArea;
    if (!trimapUnderLayer(layer, args->trimap, &trimapArea)) {
        g_string_assign(error, "the trimap must cover the whole layer");
        return FALSE;
    }
    const gint w = trimapArea.width, h = trimapArea.height;
    const gsize n = (gsize)w * h;
    /* Picture, its colours, foreground, and the engine's two maps. */
    guchar* rgba = g_try_malloc(n * 4);
    guchar* bgrx = g_try_malloc(n * 4);
    guchar* foreground = g_try_malloc(n * 4);
    guchar* mask = g_try_malloc(n);
    guchar* brushInfo = g_try_malloc(n);
    gboolean ok = FALSE;
    if (!rgba || !bgrx || !foreground || !mask || !brushInfo) {
        g_string_assign(error, "not enough memory for the layer's buffers");
        goto done;
    }
    readPicture(layer, w, h, rgba, bgrx);
    readTrimap(args->trimap, &trimapArea, mask);
    for (gsize i = 0; i < n; ++i)
        mask[i] = mask[i] == 0 ? RK_MASK_CUT : mask[i] == 255 ? RK_MASK_KEEP : KC_BAND_START;
    memcpy(brushInfo, mask, n);

    RKPSStructMsk2 r;
    wholeLayerRequest(&r, bgrx, mask, brushInfo, w, h);

    gimp_progress_init("Computing the matte");
    clearErrMsg();
    const int rc = rkKeepCutToAlpha(&r, args->hires ? 1 : 0, false);
    gimp_progress_end();
    if (rc != 1) {
        g_string_printf(error, "the engine failed with code %d: %s", rc, lastEngineMessage());
        goto done;
    }
    rkMapToMatte(mask, w, mask, w, w, h);
    /* Colours estimated for the final matte at full resolution, as the tool's
       cut-outs get them. */
    if (args->recover) {
        const int fc = rkEstimateForeground(bgrx, w * 4, mask, w, foreground, w * 4, w, h);
        if (fc != 1) {
            g_string_printf(error, "the foreground estimate failed with code %d: %s", fc,
                            lastEngineMessage());
            goto done;
        }
    }

    const Area all = {0, 0, w, h};
    gimp_image_undo_group_start(image);
    writeArea(maskOf(layer), &all, "Y u8", mask);  // linear, as masks store alpha
    if (args->recover) writeForeground(layer, &all, foreground, rgba);
    gimp_image_undo_group_end(image);
    g_print("keepcut: matte of %dx%d layer written to its mask%s\n", w, h,
            args->recover ? ", recovered colours to the layer" : "");
    ok = TRUE;
done:
    g_free(rgba);
    g_free(bgrx);
    g_free(foreground);
    g_free(mask);
    g_free(brushInfo);
    return ok;
}
