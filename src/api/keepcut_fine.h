/* keepcut: the fine pass, an extension of the keep/cut entry for hosts that
   want full-resolution detail on large pictures.

   rkKeepCutToAlphaFine runs the high-resolution pass of the keep/cut entry
   (rkKeepCutToAlpha with hiResPass 1 on a whole picture, cellMode 0), which
   solves at about half a megapixel and brings alpha up through a local
   colour model, and then restores full-resolution detail: wherever that
   alpha is fractional (and a few pixels around it), alpha is solved again at
   full resolution in overlapping tiles, every other pixel held at the value
   the first pass gave it. Painted pixels and pixels away from soft edges keep
   the first pass's result exactly. When the unpainted band is small (up to
   300 000 pixels) the first pass is skipped: the whole band is solved at full
   resolution in one system, which is then both faster and closer to the
   closed-form solution; every unpainted pixel may then change.

   Cost grows with the soft band, not with the picture alone. Measured on two
   cores with photos enlarged to 10-13 megapixels: 3 to 8 s and 0.5 to 0.8 GB
   above the host's own buffers, where the first pass alone takes 0.4 to
   0.6 s and 0.2 to 0.3 GB; a soft band of 4.7 million pixels took 17 s. At
   half a megapixel it took 0.1 to 1 s, 0.3 s on average (the first pass
   alone 0.25 s).

   The request is read and written as rkKeepCutToAlpha reads and writes it
   (keepcut.h), with these differences: cellMode must be 0 (whole-picture
   job: `brushInfo` holds the painted map); with recoverForeground set the
   foreground colours are recovered once, from the refined alpha, by a
   multi-level estimate (coarse to fine over the whole region, solving the
   compositing equation at every pixel) instead of the keep/cut entry's
   recovery: all three colour bytes of every pixel of the region are
   written (painted and opaque pixels too), the fourth byte is left alone.
   progressReady as for rkKeepCutToAlpha.

   Results: those of rkKeepCutToAlpha (1 success; -2 refused, nothing touched,
   with the same refusals plus a cellMode other than 0; -5, -1, -6, 102, 121,
   122, 123, 125, 130 as there). After every failure past the checks the
   painted bytes are back in `mask`.
   Included from keepcut.h; may also be included on its own. */
#ifndef KEEPCUT_FINE_H
#define KEEPCUT_FINE_H

#include "keepcut.h"

KC_EXTERN_C_BEGIN

KC_EXPORT int rkKeepCutToAlphaFine(RKPSStructMsk2* request, bool progressReady);

KC_EXTERN_C_END

#endif /* KEEPCUT_FINE_H */
