"""Loads the keepcut shared library and declares its C interface for ctypes:
the request record, the progress callback type, the entry prototypes, and the
one call helper that turns a failed result into KeepcutError."""
import ctypes
import ctypes.util
import glob
import os

c_ubyte_p = ctypes.POINTER(ctypes.c_ubyte)
c_int_p = ctypes.POINTER(ctypes.c_int)

# int progress(int current, int total, void* data)
ProgressProc = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_int, ctypes.c_int, ctypes.c_void_p)


class Request(ctypes.Structure):
    """RKPSStructMsk2: one keep/cut request, field for field as keepcut.h declares it."""

    _fields_ = [
        ("image", c_ubyte_p),
        ("imageRowBytes", ctypes.c_int),
        ("mask", c_ubyte_p),
        ("maskRowBytes", ctypes.c_int),
        ("foreground", c_ubyte_p),
        ("foregroundRowBytes", ctypes.c_int),
        ("brushInfo", c_ubyte_p),
        ("brushInfoRowBytes", ctypes.c_int),
        ("width", ctypes.c_int),
        ("height", ctypes.c_int),
        ("roiX", ctypes.c_int),
        ("roiY", ctypes.c_int),
        ("roiWidth", ctypes.c_int),
        ("roiHeight", ctypes.c_int),
        ("cellMode", ctypes.c_int),
        ("recoverForeground", ctypes.c_bool),
        ("progProc", ProgressProc),
        ("progData", ctypes.c_void_p),
        ("hairForeColor", c_ubyte_p),
        ("hairBackColor", c_ubyte_p),
        ("grabCutBuf", ctypes.c_void_p),
        ("gcWidth", ctypes.c_int),
        ("gcHeight", ctypes.c_int),
        ("gcLeft", ctypes.c_int),
        ("gcTop", ctypes.c_int),
        ("mergeMode", ctypes.c_int),
    ]


class MaskImage(ctypes.Structure):
    """RKMaskImage: three colour planes and the alpha plane of rkMaskAlpha."""

    _fields_ = [
        ("planes", c_ubyte_p * 3),
        ("planeRowBytes", ctypes.c_int),
        ("alpha", c_ubyte_p),
        ("alphaRowBytes", ctypes.c_int),
        ("width", ctypes.c_int),
        ("height", ctypes.c_int),
    ]


class KeepcutError(RuntimeError):
    """An engine entry failed: `code` is its result (None for entries without
    one), `log` the message-log lines the call left."""

    def __init__(self, entry, code, log):
        self.entry, self.code, self.log = entry, code, log
        what = "result %d" % code if code is not None else "refused"
        super().__init__("%s: %s\n%s" % (entry, what, log.strip()))


def _candidates():
    env = os.environ.get("KEEPCUT_LIBRARY")
    if env:
        yield env
    here = os.path.dirname(os.path.abspath(__file__))
    for folder in (here, os.path.dirname(here)):
        yield from sorted(glob.glob(os.path.join(folder, "libkeepcut.so*")))
    found = ctypes.util.find_library("keepcut")
    if found:
        yield found
    yield "libkeepcut.so.0"


def _load():
    tried = []
    for path in _candidates():
        try:
            return ctypes.CDLL(path)
        except OSError as e:
            tried.append("%s (%s)" % (path, e))
            if path == os.environ.get("KEEPCUT_LIBRARY"):
                break  # an explicit choice that fails is not silently replaced
    raise OSError("keepcut library not found; set KEEPCUT_LIBRARY. Tried: " + "; ".join(tried))


lib = _load()

_int, _uint8, _bool, _float = ctypes.c_int, ctypes.c_ubyte, ctypes.c_bool, ctypes.c_float
_req = ctypes.POINTER(Request)
_PROTOTYPES = {
    "clearErrMsg": (None, []),
    "getErrMsg": (ctypes.c_char_p, []),
    "rkKeepCutToAlpha": (_int, [_req, _int, _bool]),
    "rkMapToMatte": (_int, [c_ubyte_p, _int, c_ubyte_p, _int, _int, _int]),
    "rkEstimateForeground": (_int, [c_ubyte_p, _int, c_ubyte_p, _int, c_ubyte_p, _int, _int,
                                    _int]),
    "rkRecoverForegroundCell": (_int, [_req, _bool]),
    "rkScaleAlpha": (_int, [c_ubyte_p, _int, _int, _int, _uint8, _uint8, _int]),
    "rkShowImageAlpha": (_int, [c_ubyte_p, _int, _int, _int, c_ubyte_p, _int, _uint8, _uint8,
                                _int, c_ubyte_p]),
    "rkShowKeepBlend": (None, [c_ubyte_p, _int, _int, _int, c_ubyte_p, _int, _float]),
    "rkDesaturation": (_int, [c_ubyte_p, _int, _int, _int, c_ubyte_p, _int, _float]),
    "rkDrawLine8u": (_int, [c_ubyte_p, _int, _int, _int, _int, _int, _int, _int, _int, _uint8,
                            _uint8]),
    "rkDrawGradientLine8u": (None, [c_ubyte_p, _int, _int, _int, c_ubyte_p, _int, _int, _int,
                                    _int, _int, _int, _uint8, _uint8]),
    "rkFloodFillAlpha": (_int, [c_ubyte_p, _int, _int, _int, _int, _int, _uint8, _uint8,
                                ctypes.c_char, _int, c_int_p]),
    "rkColorRangeSelect": (_int, [_req, _int, _int, _int, _int, _int, c_ubyte_p, _int, _bool]),
    "rkHairSelect": (_int, [_req, _int, _int, _int, _int, _int]),
    "rkMergeAlphaRect": (_int, [c_ubyte_p, _int, c_ubyte_p, _int, _int, _int, _int]),
    "rkAlphaMerge": (_int, [c_ubyte_p, _int, _int, _int, c_ubyte_p, _int, _float]),
    "rkMaskAlpha": (_int, [ctypes.POINTER(MaskImage), _int, _int, _int, _int, _int, _int,
                           _float]),
    "rkGrabCut": (_int, [_req, _int]),
    "rkGrabCutDeleteBuf": (None, [_req]),
    "rkGrabCutEdgeGen": (None, [_req, _int]),
}
for _name, (_res, _args) in _PROTOTYPES.items():
    _fn = getattr(lib, _name)
    _fn.restype, _fn.argtypes = _res, _args


def log_text():
    return (lib.getErrMsg() or b"").decode("utf-8", "replace")


def call(name, *args):
    """Runs one entry with the message log cleared first. An int entry raises
    KeepcutError unless it returns 1; an entry without a result raises when it
    left a line in the log, which it does only when it refused or failed."""
    fn = getattr(lib, name)
    lib.clearErrMsg()
    rc = fn(*args)
    if (fn.restype is None and log_text()) or (fn.restype is not None and rc != 1):
        raise KeepcutError(name, rc, log_text())
    return rc
