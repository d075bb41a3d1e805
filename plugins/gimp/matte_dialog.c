/* keepcut for GIMP: the matte procedure's dialog (trimap, two options). */
#include <libgimp/gimp.h>
#include <libgimp/gimpui.h>

#include "plugin.h"

/* Offers drawables of the layer's image other than the layer itself. */
static gboolean isTrimapCandidate(gint32 image, gint32 drawable, gpointer data) {
    const gint32 layer = *(const gint32*)data;
    return drawable != layer && image == gimp_item_get_image(layer) &&
           !gimp_drawable_is_indexed(drawable);
}

static void onTrimapChanged(GtkWidget* combo, gpointer data) {
    gimp_int_combo_box_get_active(GIMP_INT_COMBO_BOX(combo), (gint*)data);
}

static GtkWidget* toggle(const char* label, gint* value) {
    GtkWidget* button = gtk_check_button_new_with_mnemonic(label);
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(button), *value);
    g_signal_connect(button, "toggled", G_CALLBACK(gimp_toggle_button_update), value);
    return button;
}

gboolean matteDialog(gint32 layer, MatteArgs* args) {
    static gint32 shownLayer;
    shownLayer = layer;
    gimp_ui_init("keepcut", FALSE);
    GtkWidget* dialog = gimp_dialog_new("Matte from Trimap", "keepcut-matte", NULL, 0,
                                        gimp_standard_help_func, KC_MATTE_PROC, "_Cancel",
                                        GTK_RESPONSE_CANCEL, "_OK", GTK_RESPONSE_OK, NULL);
    GtkWidget* box = gtk_vbox_new(FALSE, 6);
    gtk_container_set_border_width(GTK_CONTAINER(box), 12);
    gtk_box_pack_start(GTK_BOX(gtk_dialog_get_content_area(GTK_DIALOG(dialog))), box, TRUE, TRUE,
                       0);

    GtkWidget* row = gtk_hbox_new(FALSE, 6);
    gtk_box_pack_start(GTK_BOX(row), gtk_label_new_with_mnemonic("_Trimap:"), FALSE, FALSE, 0);
    GtkWidget* combo = gimp_drawable_combo_box_new(isTrimapCandidate, &shownLayer);
    gimp_int_combo_box_connect(GIMP_INT_COMBO_BOX(combo), args->trimap, G_CALLBACK(onTrimapChanged),
                               &args->trimap);
    gtk_box_pack_start(GTK_BOX(row), combo, TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(box), row, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(box), toggle("_High-resolution pass", &args->hires), FALSE, FALSE,
                       0);
    gtk_box_pack_start(GTK_BOX(box), toggle("_Recover foreground colours", &args->recover), FALSE,
                       FALSE, 0);

    gtk_widget_show_all(dialog);
    const gboolean ok = gimp_dialog_run(GIMP_DIALOG(dialog)) == GTK_RESPONSE_OK;
    gtk_widget_destroy(dialog);
    return ok;
}
