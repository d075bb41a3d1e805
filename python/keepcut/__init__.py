"""keepcut from Python: alpha mattes, cut-outs and the masking-screen tools of
the keepcut shared library, over numpy arrays (ctypes, no build step).

The library is looked up in $KEEPCUT_LIBRARY, then next to this package,
then on the system library path."""
from ._arrays import bgrx
from ._library import KeepcutError, Request
from .grabcut import GrabCutSession
from .matting import brush_map, cutout, estimate_foreground, mask_alpha, matte
from .screen import (alpha_merge, color_range_select, desaturate, draw_gradient_line, draw_line,
                     flood_fill, hair_select, merge_alpha_rect, scale_alpha, show_image_alpha,
                     show_keep_blend)

__all__ = [
    "KeepcutError", "Request", "GrabCutSession", "bgrx", "brush_map", "matte", "cutout",
    "estimate_foreground", "mask_alpha", "show_image_alpha", "show_keep_blend", "desaturate",
    "scale_alpha", "draw_line", "draw_gradient_line", "flood_fill", "color_range_select",
    "hair_select", "merge_alpha_rect", "alpha_merge",
]
