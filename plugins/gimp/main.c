/* keepcut for GIMP: registers the plug-in's two procedures and dispatches
   their runs. */
#include <string.h>

#include "plugin.h"

static void query(void) {
    static const GimpParamDef matteArgs[] = {
        {GIMP_PDB_INT32, "run-mode",
         "The run mode { RUN-INTERACTIVE (0), RUN-NONINTERACTIVE (1) }"},
        {GIMP_PDB_IMAGE, "image", "Input image"},
        {GIMP_PDB_DRAWABLE, "drawable", "The layer to matte"},
        {GIMP_PDB_DRAWABLE, "trimap",
         "Trimap covering the layer (layer or channel): 0 cut, 255 keep, anything else computed"},
        {GIMP_PDB_INT32, "hires", "Run the high-resolution pass (TRUE, FALSE)"},
        {GIMP_PDB_INT32, "recover-foreground",
         "Write recovered foreground colours into the layer (TRUE, FALSE)"},
    };
    static const GimpParamDef trimapArgs[] = {
        {GIMP_PDB_INT32, "run-mode",
         "The run mode { RUN-INTERACTIVE (0), RUN-NONINTERACTIVE (1) }"},
        {GIMP_PDB_IMAGE, "image", "Input image"},
        {GIMP_PDB_DRAWABLE, "drawable", "The layer the subject is on"},
        {GIMP_PDB_INT32, "band", "Width of the band to compute in pixels, 0 for automatic"},
    };
    static const GimpParamDef trimapReturns[] = {
        {GIMP_PDB_CHANNEL, "trimap", "The new trimap channel"},
    };
    gimp_install_procedure(
        KC_MATTE_PROC, "Matte the layer from a trimap into its layer mask",
        "Computes the alpha of the layer where the trimap is neither 0 (cut) nor 255 (keep) and "
        "writes the matte into the layer mask (inside the selection when there is one), adding "
        "one when the layer has none. Optionally replaces the layer's colours by the recovered "
        "foreground colours, so the old background does not show as a halo around hair.",
        "keepcut", "keepcut", "2024", "_Matte from Trimap...", "RGB*, GRAY*", GIMP_PLUGIN,
        G_N_ELEMENTS(matteArgs), 0, matteArgs, NULL);
    gimp_plugin_menu_register(KC_MATTE_PROC, "<Image>/Layer/Mask");
    gimp_install_procedure(
        KC_TRIMAP_PROC, "Make a trimap from the selection by GrabCut",
        "Runs GrabCut on the layer with the selection as probable foreground and everything "
        "outside as background, and adds a channel holding a trimap: 255 keep inside the "
        "selected subject, 0 cut outside, 128 in a band along its edge, for Matte from Trimap.",
        "keepcut", "keepcut", "2024", "_Trimap from Selection (GrabCut)", "RGB*, GRAY*",
        GIMP_PLUGIN, G_N_ELEMENTS(trimapArgs), G_N_ELEMENTS(trimapReturns), trimapArgs,
        trimapReturns);
    gimp_plugin_menu_register(KC_TRIMAP_PROC, "<Image>/Select");
}

/* The matte procedure's options for this run; FALSE when the user cancelled. */
static gboolean matteOptions(gint nparams, const GimpParam* param, MatteArgs* args) {
    const GimpRunMode mode = param[0].data.d_int32;
    if (mode == GIMP_RUN_NONINTERACTIVE) {
        if (nparams != 6) return FALSE;
        args->trimap = param[3].data.d_drawable;
        args->hires = param[4].data.d_int32;
        args->recover = param[5].data.d_int32;
        return TRUE;
    }
    args->trimap = -1;
    args->hires = FALSE;
    args->recover = TRUE;
    gimp_get_data(KC_MATTE_PROC, args);
    if (mode == GIMP_RUN_WITH_LAST_VALS) return TRUE;
    return matteDialog(param[2].data.d_drawable, args);
}

static void run(const gchar* name, gint nparams, const GimpParam* param, gint* nreturn_vals,
                GimpParam** return_vals) {
    static GimpParam values[2];
    static GString* error;
    *nreturn_vals = 1;
    *return_vals = values;
    values[0].type = GIMP_PDB_STATUS;
    values[0].data.d_status = GIMP_PDB_CALLING_ERROR;
    if (nparams < 3) return;
    const GimpRunMode mode = param[0].data.d_int32;
    const gint32 image = param[1].data.d_image;
    const gint32 drawable = param[2].data.d_drawable;
    gegl_init(NULL, NULL);
    error = g_string_new(NULL);

    gboolean ok = FALSE;
    if (strcmp(name, KC_MATTE_PROC) == 0) {
        MatteArgs args;
        if (!matteOptions(nparams, param, &args)) {
            values[0].data.d_status =
                mode == GIMP_RUN_NONINTERACTIVE ? GIMP_PDB_CALLING_ERROR : GIMP_PDB_CANCEL;
            return;
        }
        ok = runMatte(image, drawable, &args, error);
        if (ok && mode == GIMP_RUN_INTERACTIVE) gimp_set_data(KC_MATTE_PROC, &args, sizeof args);
    } else if (strcmp(name, KC_TRIMAP_PROC) == 0) {
        if (mode == GIMP_RUN_NONINTERACTIVE && nparams != 4) return;
        const gint band = mode == GIMP_RUN_NONINTERACTIVE ? param[3].data.d_int32 : 0;
        gint32 channel = -1;
        ok = runTrimapFromSelection(image, drawable, band, &channel, error);
        if (ok) {
            *nreturn_vals = 2;
            values[1].type = GIMP_PDB_CHANNEL;
            values[1].data.d_channel = channel;
        }
    } else {
        return;
    }

    if (ok) {
        values[0].data.d_status = GIMP_PDB_SUCCESS;
        if (mode != GIMP_RUN_NONINTERACTIVE) gimp_displays_flush();
        return;
    }
    g_printerr("keepcut: %s\n", error->str);
    if (mode == GIMP_RUN_INTERACTIVE) gimp_message(error->str);
    values[0].data.d_status = GIMP_PDB_EXECUTION_ERROR;
    *nreturn_vals = 2;
    values[1].type = GIMP_PDB_STRING;
    values[1].data.d_string = error->str;  // lives until the plug-in exits
}

const GimpPlugInInfo PLUG_IN_INFO = {NULL, NULL, query, run};

MAIN()
