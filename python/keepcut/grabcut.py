"""A GrabCut selection session over a picture, driven as a host drives it:
a rectangle, strokes, one cut after each, then the band the matting computes."""
import ctypes

import numpy as np

from . import _arrays as A
from . import screen
from ._library import call, lib
from ._progress import reporting

# GrabCut map bytes: bit 0 foreground, bit 1 a hard constraint.
PROBABLE_FOREGROUND, HARD_BACKGROUND, HARD_FOREGROUND = 1, 2, 3
# How the band entry reads a selected pixel; ending the session turns it into
# a painted keep (and 0 into a painted cut).
SELECTED = 254


class GrabCutSession:
    """One live GrabCut session over an HxWx3 RGB picture (copied into the
    engine's layout), started as probable foreground inside rect = (x, y,
    width, height) and hard background outside. The engine's session handle is
    given back exactly once: by edge(), close(), the end of a `with` block or
    garbage collection, whichever comes first."""

    def __init__(self, image, rect):
        self.image = A.bgrx(image)
        h, w = self.image.shape[:2]
        x, y, rw, rh = rect
        if x < 0 or y < 0 or rw <= 10 or rh <= 10 or x + rw > w or y + rh > h:
            raise ValueError("rect %r must lie inside the %dx%d picture, sides over 10" %
                             (tuple(rect), w, h))
        self.map = np.full((h, w), HARD_BACKGROUND, np.uint8)
        self.map[y:y + rh, x:x + rw] = PROBABLE_FOREGROUND
        self._brush = np.zeros_like(self.map)
        self._req = A.request(self.image, self.map, None, self._brush, gcWidth=w, gcHeight=h)
        self._open = True

    def paint(self, start, end, radius, foreground):
        """A hard foreground or background stroke into the map; the next
        select() takes it into account."""
        drawn = screen.draw_line(np.zeros_like(self.map), start, end, radius, 1)
        self.map[drawn != 0] = HARD_FOREGROUND if foreground else HARD_BACKGROUND

    def select(self, progress=None):
        """One cut; returns the selection as an HxW bool array."""
        self._check_open()
        with reporting(self._req, progress):
            call("rkGrabCut", ctypes.byref(self._req), 1)
        return self.selected

    def stroke(self, start, end, radius, foreground, progress=None):
        """paint() then select()."""
        self.paint(start, end, radius, foreground)
        return self.select(progress)

    @property
    def selected(self):
        return (self.map & 1) != 0

    def edge(self, band):
        """Ends the session: the selection becomes an engine brush map (painted
        cut, painted keep and a band `band` pixels wide to compute), ready for
        keepcut.matte's engine or a host's own request."""
        self._check_open()
        self._brush[:] = np.where(self.selected, SELECTED, 0)
        call("rkGrabCutEdgeGen", ctypes.byref(self._req), band)
        self._open = False
        # Ending the session also codes 0 and 254 as painted cut and keep.
        call("rkGrabCutDeleteBuf", ctypes.byref(self._req))
        self._req.grabCutBuf = None
        return self.map.copy()

    def close(self):
        if getattr(self, "_open", False):
            self._open = False
            if self._req.grabCutBuf:
                lib.rkGrabCutDeleteBuf(ctypes.byref(self._req))
                self._req.grabCutBuf = None

    def _check_open(self):
        if not self._open:
            raise ValueError("the GrabCut session is closed")

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()

    def __del__(self):
        self.close()
