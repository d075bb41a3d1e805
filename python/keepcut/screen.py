"""The masking screen's entries over numpy arrays, changed in place: display
compositing, brush strokes, flood fill, colour-range and hair brushes, merges.
Pictures are HxWx4 uint8 in the engine's B, G, R, x layout (keepcut.bgrx
makes one from RGB); maps are HxW uint8 brush maps."""
import ctypes

from . import _arrays as A
from ._library import call


def _picture_and_map(image, mask, mask_name="mask"):
    A.buffer(image, "image", 4)
    return A.buffer(mask, mask_name, size=image.shape[:2])


def _size(a):
    return a.shape[1], a.shape[0]


def show_image_alpha(image, mask, mode, hi=255, lo=0, color=None):
    """Composes `image` with `mask` for display (modes 1..6 as rkShowImageAlpha)."""
    _picture_and_map(image, mask)
    rgb = None if color is None else A.colour(color)
    call("rkShowImageAlpha", A.ptr(image), A.step(image), *_size(image), A.ptr(mask),
         A.step(mask), hi, lo, mode, rgb)
    return image


def show_keep_blend(dst, src, weight):
    """Blends the colour bytes of src into dst: src x weight + dst x (1 - weight)."""
    A.buffer(dst, "dst", 4)
    A.buffer(src, "src", 4, dst.shape[:2])
    call("rkShowKeepBlend", A.ptr(dst), A.step(dst), *_size(dst), A.ptr(src), A.step(src), weight)
    return dst


def desaturate(image, mask, strength):
    """Desaturates the unpainted part of the picture by `strength` (0..1)."""
    _picture_and_map(image, mask)
    call("rkDesaturation", A.ptr(image), A.step(image), *_size(image), A.ptr(mask),
         A.step(mask), strength)
    return image


def scale_alpha(alpha, hi, lo, keep_painted=True):
    """Stretches the alpha range lo..hi of a map to 0..255."""
    A.buffer(alpha, "alpha")
    call("rkScaleAlpha", A.ptr(alpha), A.step(alpha), *_size(alpha), hi, lo, int(keep_painted))
    return alpha


def draw_line(map_, start, end, radius, brush_type, value=0):
    """A straight stroke (brush_type 0 cut, 1 keep, 2 band, 3 painted `value`)."""
    A.buffer(map_, "map")
    call("rkDrawLine8u", A.ptr(map_), A.step(map_), *_size(map_), *start, *end, radius,
         brush_type, value)
    return map_


def draw_gradient_line(map_, aux, start, end, radius, start_value, end_value):
    """A stroke whose painted value ramps from start_value to end_value."""
    A.buffer(map_, "map")
    A.buffer(aux, "aux", size=map_.shape)
    call("rkDrawGradientLine8u", A.ptr(map_), A.step(map_), *_size(map_), A.ptr(aux),
         A.step(aux), *start, *end, radius, start_value, end_value)
    return map_


def flood_fill(mask, seed, fill_type):
    """Fills the seed's area (fill_type 0 cut, 1 keep, 2 band); returns the
    area's rectangle (x, y, width, height)."""
    A.buffer(mask, "mask")
    rect = (ctypes.c_int * 4)()
    call("rkFloodFillAlpha", A.ptr(mask), A.step(mask), *_size(mask), *seed, 0, 0,
         bytes([fill_type]), 0, rect)
    return tuple(rect)


def _selection_request(image, mask, **fields):
    _picture_and_map(image, mask)
    return A.request(image, mask, **fields)


def color_range_select(image, mask, start, end, radius, color, tolerance, keep):
    """Marks unpainted pixels under a stroke whose colour (R, G, B) lies
    within `tolerance` as keep (or cut when keep is false)."""
    req = _selection_request(image, mask)
    call("rkColorRangeSelect", ctypes.byref(req), *start, *end, radius, A.colour(color),
         tolerance, keep)
    return mask


def hair_select(image, mask, start, end, radius, hair_color, back_color):
    """Paints hair alpha under a stroke from the hair and background colours (R, G, B)."""
    fore, back = A.colour(hair_color, "hair_color"), A.colour(back_color, "back_color")
    req = _selection_request(image, mask, hairForeColor=ctypes.cast(fore, A.c_ubyte_p),
                             hairBackColor=ctypes.cast(back, A.c_ubyte_p))
    call("rkHairSelect", ctypes.byref(req), *start, *end, radius)
    return mask


def merge_alpha_rect(src, dst, border):
    """Pastes map src into dst with a feathered edge `border` pixels wide."""
    A.buffer(dst, "dst")
    A.buffer(src, "src", size=dst.shape)
    call("rkMergeAlphaRect", A.ptr(src), A.step(src), A.ptr(dst), A.step(dst), *_size(dst),
         border)
    return dst


def alpha_merge(image, mask):
    """Multiplies the colour bytes by the mask byte (0 / 1 masks); the mask becomes 255."""
    _picture_and_map(image, mask)
    call("rkAlphaMerge", A.ptr(image), A.step(image), *_size(image), A.ptr(mask), A.step(mask),
         0.0)
    return image
