"""Checks numpy arrays before their memory is handed to the engine, converts
host pictures to the engine's 4-byte B,G,R,x layout, and fills request records."""
import ctypes

import numpy as np

from ._library import Request, c_ubyte_p

# Leaves region results as computed instead of merging by minimum or maximum,
# as the tool's whole-picture requests do.
MERGE_AS_COMPUTED = 2


def buffer(a, name, channels=None, size=None, writeable=True):
    """Validates an array the engine reads or writes in place: a C-contiguous,
    uint8 array, HxW (channels None) or HxWxchannels, of `size` (H, W) when
    given, writeable unless told otherwise. Returns it unchanged."""
    if not isinstance(a, np.ndarray):
        raise TypeError("%s must be a numpy array, not %s" % (name, type(a).__name__))
    if a.dtype != np.uint8:
        raise TypeError("%s must be uint8, not %s" % (name, a.dtype))
    want = "HxW" if channels is None else "HxWx%d" % channels
    if a.ndim != (2 if channels is None else 3) or (channels and a.shape[2] != channels):
        raise ValueError("%s must be %s, not shape %s" % (name, want, a.shape))
    if size is not None and a.shape[:2] != tuple(size):
        raise ValueError("%s is %dx%d but must be %dx%d like the picture"
                         % ((name,) + a.shape[:2] + tuple(size)))
    if not a.flags.c_contiguous:
        raise ValueError("%s must be C-contiguous (use numpy.ascontiguousarray)" % name)
    if writeable and not a.flags.writeable:
        raise ValueError("%s must be writeable" % name)
    return a


def ptr(a):
    return None if a is None else a.ctypes.data_as(c_ubyte_p)


def step(a):
    return 0 if a is None else a.strides[0]


def as_bytes(a, name, channels=None, size=None):
    """A copy-free view or an 8-bit conversion of a picture or map given as
    uint8 or as floats in 0..1 (rounded to nearest, as the tool reads float
    images), of the shape `buffer` asks for; any memory layout."""
    a = np.asarray(a)
    if np.issubdtype(a.dtype, np.floating):
        a = np.clip(np.rint(a * 255.0), 0, 255).astype(np.uint8)
    elif a.dtype != np.uint8:
        raise TypeError("%s must be uint8 or float in 0..1, not %s" % (name, a.dtype))
    return buffer(np.ascontiguousarray(a), name, channels, size, writeable=False)


def bgrx(rgb, name="image"):
    """The engine's picture layout from an HxWx3 RGB picture: B, G, R and a
    fourth byte of 255, as the tool fills it."""
    rgb = as_bytes(rgb, name, 3)
    out = np.empty(rgb.shape[:2] + (4,), np.uint8)
    out[..., :3] = rgb[..., ::-1]
    out[..., 3] = 255
    return out


def request(image, mask, foreground=None, brush_info=None, **fields):
    """A whole-picture request over the given buffers (image HxWx4, maps HxW),
    extra record fields set from keywords."""
    r = Request()
    # The record holds raw pointers only: it keeps the arrays alive itself.
    r.buffers = (image, mask, foreground, brush_info)
    r.image, r.imageRowBytes = ptr(image), step(image)
    r.mask, r.maskRowBytes = ptr(mask), step(mask)
    r.foreground, r.foregroundRowBytes = ptr(foreground), step(foreground)
    r.brushInfo, r.brushInfoRowBytes = ptr(brush_info), step(brush_info)
    r.width = r.roiWidth = mask.shape[1]
    r.height = r.roiHeight = mask.shape[0]
    r.mergeMode = MERGE_AS_COMPUTED
    for key, value in fields.items():
        setattr(r, key, value)
    return r


def colour(rgb, name="color"):
    """Three bytes R, G, B for an entry that takes a picked colour."""
    values = [int(v) for v in rgb]
    if len(values) != 3 or not all(0 <= v <= 255 for v in values):
        raise ValueError("%s must be three values in 0..255 (R, G, B), not %r" % (name, rgb))
    return (ctypes.c_ubyte * 3)(*values)
