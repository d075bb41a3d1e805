"""A Python callable as the engine's progress callback for the length of one call."""
import contextlib
import ctypes

from ._library import ProgressProc


@contextlib.contextmanager
def reporting(req, progress):
    """Installs progress(current, total) on the request while the block runs.
    The engine reports only when the data pointer is non-null, so a dummy one
    is given. An exception raised by the callable cannot cross the C frames:
    it is kept and raised once the entry has returned."""
    if progress is None:
        yield
        return
    failures = []

    def forward(current, total, _data):
        try:
            progress(current, total)
        except BaseException as e:  # noqa: B902 - re-raised after the call
            failures.append(e)
        return 1

    proc = ProgressProc(forward)  # referenced here until the call returns
    anchor = ctypes.c_int(0)
    req.progProc, req.progData = proc, ctypes.addressof(anchor)
    try:
        yield
    finally:
        req.progProc, req.progData = ProgressProc(), None
    if failures:
        raise failures[0]
