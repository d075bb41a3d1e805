"""Mattes and cut-outs from a picture and a trimap, as the tool computes them."""
import ctypes

import numpy as np

from . import _arrays as A
from ._library import MaskImage, call
from ._progress import reporting

# Unpainted start value of the band: even (not painted) and mid-way, the
# tool's choice, so results equal the tool's.
BAND_START = 128
CUT, KEEP = 1, 255  # painted cut and keep bytes of a brush map


def brush_map(trimap, size=None):
    """Engine brush map from a trimap (uint8, or float 0..1): 0 painted cut,
    255 painted keep, anything else the band to compute."""
    t = A.as_bytes(trimap, "trimap", size=size)
    m = np.full(t.shape, BAND_START, np.uint8)
    m[t == 0] = CUT
    m[t == 255] = KEEP
    return m


def _compute(image, trimap, hires, progress, is_map):
    picture = A.bgrx(image)
    size = picture.shape[:2]
    mask = A.as_bytes(trimap, "map", size=size).copy() if is_map else brush_map(trimap, size)
    req = A.request(picture, mask, None, mask.copy())
    with reporting(req, progress):
        call("rkKeepCutToAlpha", ctypes.byref(req), 1 if hires else 0, False)
    alpha = np.empty_like(mask)
    call("rkMapToMatte", A.ptr(mask), A.step(mask), A.ptr(alpha), A.step(alpha),
         mask.shape[1], mask.shape[0])
    return picture, alpha


def _foreground(picture, alpha):
    """B,G,R,x foreground colours of a B,G,R,x picture for a uint8 alpha."""
    foreground = picture.copy()
    call("rkEstimateForeground", A.ptr(picture), A.step(picture), A.ptr(alpha), A.step(alpha),
         A.ptr(foreground), A.step(foreground), alpha.shape[1], alpha.shape[0])
    return foreground


def matte(image, trimap, hires=False, progress=None, is_map=False):
    """HxW uint8 alpha of an HxWx3 RGB picture for an HxW trimap (uint8 or
    float 0..1 both), or for an engine brush map when is_map is true (as
    GrabCutSession.edge gives). hires asks for the full-resolution pass;
    progress, if given, is called as progress(current, total)."""
    return _compute(image, trimap, hires, progress, is_map)[1]


def cutout(image, trimap, hires=False, progress=None, is_map=False):
    """HxWx4 RGBA cut-out: foreground colours estimated for the matte, and
    straight alpha (what the tool's cut-outs hold)."""
    picture, alpha = _compute(image, trimap, hires, progress, is_map)
    return np.dstack((_foreground(picture, alpha)[..., 2::-1], alpha))


def estimate_foreground(image, alpha):
    """HxWx3 RGB foreground colours for a known alpha (uint8 or float 0..1),
    estimated at full resolution from coarse to fine (as the tool does)."""
    picture = A.bgrx(image)
    a = np.ascontiguousarray(A.as_bytes(alpha, "alpha", size=picture.shape[:2]))
    return _foreground(picture, a)[..., 2::-1].copy()


def mask_alpha(image, alpha, high_code=255, low_code=0, out_high=255, out_low=0, load=0.0):
    """Refines a rough HxW uint8 mask in place (rkMaskAlpha) against an HxWx3
    RGB picture: bytes at or below low_code are background, at or above
    high_code foreground, the rest is solved. Returns `alpha`."""
    planes = np.ascontiguousarray(np.moveaxis(A.as_bytes(image, "image", 3), 2, 0))
    A.buffer(alpha, "alpha", size=planes.shape[1:])
    rec = MaskImage()
    for i in range(3):
        rec.planes[i] = A.ptr(planes[i])
    rec.planeRowBytes = planes.strides[1]
    rec.alpha, rec.alphaRowBytes = A.ptr(alpha), A.step(alpha)
    rec.height, rec.width = alpha.shape
    call("rkMaskAlpha", ctypes.byref(rec), 0, high_code, low_code, out_high, out_low, 0, load)
    return alpha
