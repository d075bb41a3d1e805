/* keepcut for GIMP: what the plug-in's files share. */
#ifndef KEEPCUT_GIMP_PLUGIN_H
#define KEEPCUT_GIMP_PLUGIN_H

#include <libgimp/gimp.h>

#define KC_MATTE_PROC "plug-in-keepcut-matte"
#define KC_TRIMAP_PROC "plug-in-keepcut-trimap-from-selection"

/* The matte procedure's options, also kept between runs with gimp_set_data. */
typedef struct {
    gint32 trimap; /* drawable holding the trimap */
    gint hires;    /* run the engine's high-resolution pass */
    gint recover;  /* write recovered foreground colours into the layer */
} MatteArgs;

/* Mattes `layer` from `args->trimap` into the layer's mask (made when absent).
   On failure returns FALSE with the reason in `error`. */
gboolean runMatte(gint32 image, gint32 layer, const MatteArgs* args, GString* error);

/* Runs GrabCut over `layer` from the image's selection and adds the resulting
   trimap (0 cut, 255 keep, 128 compute) to the image as a new channel, whose
   id goes to `channel`. `band` is the compute band's width in pixels, 0 for
   the automatic width. On failure returns FALSE with the reason in `error`. */
gboolean runTrimapFromSelection(gint32 image, gint32 layer, gint band, gint32* channel,
                                GString* error);

/* Asks for the matte options; FALSE when the user cancelled. */
gboolean matteDialog(gint32 layer, MatteArgs* args);

#endif
