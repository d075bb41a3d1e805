"""The Python binding against the C header, the tool and the engine's refusals.
Run with KEEPCUT_LIBRARY (the shared library) and KEEPCUT_TOOL (the tool)
set, as the ctest `python_binding` does."""
import ctypes
import os
import pathlib
import shutil
import subprocess
import sys

import numpy as np
import pytest

import keepcut
from keepcut import _library

HEADERS = pathlib.Path(__file__).resolve().parents[2] / "src" / "api"
TOOL = os.environ.get("KEEPCUT_TOOL")


def disc_scene(h=90, w=120, radius=28):
    """A warm disc with a soft rim over a colour ramp, its trimap and true alpha."""
    yy, xx = np.mgrid[:h, :w]
    d = np.hypot(yy - h / 2, xx - w / 2)
    alpha = np.clip((radius - d) / 5 + 0.5, 0, 1)[..., None]
    back = np.stack([xx * 200 // w + 20, yy * 150 // h + 60, np.full_like(xx, 90)], -1)
    rgb = np.rint(alpha * [220, 120, 40] + (1 - alpha) * back).astype(np.uint8)
    trimap = np.full((h, w), 128, np.uint8)
    trimap[d < radius - 5] = 255
    trimap[d > radius + 6] = 0
    return rgb, trimap, alpha[..., 0]


# ---- the record matches the C header -----------------------------------------

@pytest.mark.parametrize("struct,ctype", [(_library.Request, "RKPSStructMsk2"),
                                          (_library.MaskImage, "RKMaskImage")])
def test_record_layout_matches_header(tmp_path, struct, ctype):
    cc = shutil.which("cc")
    if not cc:
        pytest.skip("no C compiler")
    names = [f[0] for f in struct._fields_]
    prints = "".join('printf(" %%zu", offsetof(%s, %s));' % (ctype, n) for n in names)
    (tmp_path / "layout.c").write_text(
        '#include <stddef.h>\n#include <stdio.h>\n#include "keepcut.h"\n'
        'int main(void) { printf("%%zu", sizeof(%s)); %s return 0; }\n' % (ctype, prints))
    subprocess.run([cc, "-I", str(HEADERS), "-o", str(tmp_path / "layout"),
                    str(tmp_path / "layout.c")], check=True)
    out = subprocess.run([str(tmp_path / "layout")], check=True, capture_output=True, text=True)
    assert [int(v) for v in out.stdout.split()] == (
        [ctypes.sizeof(struct)] + [getattr(struct, n).offset for n in names])


# ---- results equal the tool's ------------------------------------------------

def read_pnm(path):
    data = path.read_bytes()
    magic, w, h, _maxval, pixels = data.split(maxsplit=4)
    return np.frombuffer(pixels, np.uint8).reshape(int(h), int(w), -1).squeeze()


@pytest.mark.parametrize("hires", [False, True])
def test_matte_and_cutout_equal_the_tool(tmp_path, hires):
    if not TOOL:
        pytest.skip("KEEPCUT_TOOL not set")
    rgb, trimap, _ = disc_scene()
    h, w = trimap.shape
    (tmp_path / "p.ppm").write_bytes(b"P6 %d %d 255\n" % (w, h) + rgb.tobytes())
    (tmp_path / "t.pgm").write_bytes(b"P5 %d %d 255\n" % (w, h) + trimap.tobytes())
    run = [TOOL, "matte", str(tmp_path / "p.ppm"), str(tmp_path / "t.pgm")]
    run += ["--hires"] if hires else ["--coarse"]
    subprocess.run(run + ["-o", str(tmp_path / "a.pgm")], check=True, capture_output=True)
    subprocess.run(run + ["-o", str(tmp_path / "ac.pgm"), "--foreground",
                          str(tmp_path / "f.ppm")], check=True, capture_output=True)

    # Floats in 0..1 are the same picture and trimap to the binding (checked
    # once: the high-resolution pass costs about 0.6 s a call).
    given = (rgb, trimap) if hires else (rgb / 255.0, trimap / 255.0)
    np.testing.assert_array_equal(keepcut.matte(*given, hires), read_pnm(tmp_path / "a.pgm"))
    cut = keepcut.cutout(rgb, trimap, hires)
    np.testing.assert_array_equal(cut[..., :3], read_pnm(tmp_path / "f.ppm"))
    np.testing.assert_array_equal(cut[..., 3], read_pnm(tmp_path / "ac.pgm"))


def test_mattes_are_close_to_the_truth_and_foreground_keeps_opaque_pixels():
    rgb, trimap, truth = disc_scene()
    alpha = keepcut.matte(rgb, trimap)
    assert np.abs(alpha / 255.0 - truth).mean() < 0.01
    # The direct mask entry refines the trimap in place as well.
    assert np.abs(keepcut.mask_alpha(rgb, trimap.copy()) / 255.0 - truth).mean() < 0.01
    fg = keepcut.estimate_foreground(rgb, alpha)
    opaque = alpha == 255
    assert np.abs(fg[opaque].astype(int) - rgb[opaque]).max() <= 2
    rim = (truth > 0.3) & (truth < 0.7)
    # Recovered rim colours are nearer the disc's colour than the mixed pixels.
    target = np.array([220, 120, 40])
    assert (np.abs(fg[rim] - target).mean() < np.abs(rgb[rim].astype(int) - target).mean())


# ---- progress ------------------------------------------------------------------

def test_progress_is_reported_and_its_exception_comes_back():
    rgb, trimap, _ = disc_scene()
    calls = []
    keepcut.matte(rgb, trimap, progress=lambda cur, total: calls.append((cur, total)))
    assert calls and all(0 <= cur <= total for cur, total in calls)

    def fail(cur, total):
        raise KeyError("stop")

    with pytest.raises(KeyError):
        keepcut.matte(rgb, trimap, progress=fail)


# ---- bad arrays and engine refusals -------------------------------------------

MAP = np.zeros((20, 30), np.uint8)
PIC = np.zeros((20, 30, 4), np.uint8)
RGB = np.zeros((20, 30, 3), np.uint8)


@pytest.mark.parametrize("call,error,text", [
    (lambda: keepcut.matte(RGB.astype(np.int16), MAP), TypeError, "uint8 or float"),
    (lambda: keepcut.matte(RGB[..., 0], MAP), ValueError, "HxWx3"),
    (lambda: keepcut.matte(RGB, MAP[:10]), ValueError, "like the picture"),
    (lambda: keepcut.matte(list(RGB), MAP.astype(bool)), TypeError, "trimap must be"),
    (lambda: keepcut.scale_alpha(MAP.astype(np.float32), 200, 10), TypeError, "uint8"),
    (lambda: keepcut.scale_alpha(MAP[:, ::2], 200, 10), ValueError, "C-contiguous"),
    (lambda: keepcut.scale_alpha(np.broadcast_to(MAP, MAP.shape), 200, 10), ValueError,
     "writeable"),
    (lambda: keepcut.desaturate(PIC[..., :3].copy(), MAP, 1.0), ValueError, "HxWx4"),
    (lambda: keepcut.alpha_merge(PIC, MAP.T.copy()), ValueError, "like the picture"),
    (lambda: keepcut.hair_select(PIC, MAP, (0, 0), (5, 5), 2, (1, 2), (0, 0, 0)), ValueError,
     "three values"),
    (lambda: keepcut.GrabCutSession(RGB, (0, 0, 10, 10)), ValueError, "sides over 10"),
])
def test_bad_arrays_raise_clear_errors(call, error, text):
    with pytest.raises(error, match=text):
        call()


@pytest.mark.parametrize("call,code,text", [
    (lambda: keepcut.matte(RGB, np.full((20, 30), 128, np.uint8)), -5,
     "not enough keep and cut strokes"),
    (lambda: keepcut.scale_alpha(MAP.copy(), 7, 7), -2, "rkScaleAlpha"),
    (lambda: keepcut.draw_line(MAP.copy(), (0, 0), (5, 5), 20000, 1), -2, "rkDrawLine8u"),
    (lambda: keepcut.flood_fill(MAP.copy(), (40, 1), 1), -3, "rkFloodFillAlpha"),
    (lambda: keepcut.draw_gradient_line(MAP.copy(), MAP.copy(), (0, 0), (5, 5), -1, 0, 255), None,
     "rkDrawGradientLine8u"),
    (lambda: keepcut.show_keep_blend(PIC.copy(), PIC.copy(), float("nan")), None,
     "rkShowKeepBlend"),
])
def test_engine_refusal_raises_with_the_log(call, code, text):
    with pytest.raises(keepcut.KeepcutError) as e:
        call()
    assert e.value.code == code and text in e.value.log and text in str(e.value)


def test_missing_library_is_a_clear_error(tmp_path):
    env = dict(os.environ, KEEPCUT_LIBRARY=str(tmp_path / "none.so"))
    out = subprocess.run([sys.executable, "-c", "import keepcut"], env=env, capture_output=True,
                         text=True)
    assert out.returncode != 0 and "set KEEPCUT_LIBRARY" in out.stderr


# ---- masking-screen wrappers hand the right buffers over -----------------------

def ramp_scene():
    """An orange B,G,R,x picture (fourth byte 7) and a map holding every code:
    cut, band, keep from left to right."""
    pic = keepcut.bgrx(np.full((40, 60, 3), (200, 100, 10), np.uint8))
    pic[..., 3] = 7
    m = np.full((40, 60), 126, np.uint8)
    m[:, :20], m[:, 40:] = 1, 255
    return pic, m


def _line(pic, m):
    keepcut.draw_line(m, (5, 30), (55, 30), 1, 1)
    return (m[29:32, 5:56] == 255).all() and (m[33:, 20:40] == 126).all()


def _flood(pic, m):
    return keepcut.flood_fill(m, (30, 5), 0) == (20, 0, 20, 40) and (m[:, 20:40] == 1).all()


def _grey(pic, m):
    keepcut.show_image_alpha(pic, m, 5)
    return (pic[..., 0] == np.where(m == 1, 1, m)).all() and (pic[..., 3] == 255).all()


def _colour_range(pic, m):
    pic[:, 25:30, :3] = keepcut.bgrx(np.full((40, 5, 3), (10, 100, 200), np.uint8))[..., :3]
    keepcut.color_range_select(pic, m, (20, 20), (39, 20), 30, (10, 100, 200), 5, True)
    return (m[:, 25:30] == 255).all() and (m[:, 20:25] == 126).all() and (m[:, :20] == 1).all()


def _merge(pic, m):
    src = np.full_like(m, 90)
    keepcut.merge_alpha_rect(src, m, 0)
    return (m == 90).all()


def _alpha_merge(pic, m):
    keepcut.alpha_merge(pic, (m == 255).astype(np.uint8))
    return (pic[:, 40:, :3] == (10, 100, 200)).all() and (pic[:, :40, :3] == 0).all()


def _blend(pic, m):
    src = np.full_like(pic, 50)
    keepcut.show_keep_blend(pic, src, 1.0)
    return (pic[..., :3] == 50).all() and (pic[..., 3] == 7).all()


def _scale(pic, m):
    m[:, 20:40] = 64
    keepcut.scale_alpha(m, 128, 0)  # factor 8160 // 128 = 63: 64 x 63 / 32 = 126
    return (m[:, 20:40] == 126).all() and (m[:, :20] == 1).all()


def _desaturate(pic, m):
    m[:, 20:40] = 0  # unpainted alpha 0: fully desaturated
    keepcut.desaturate(pic, m, 1.0)
    band, painted = pic[:, 20:40], pic[:, :20]
    return ((band[..., 0] == band[..., 1]) & (band[..., 1] == band[..., 2])).all() and (
        painted[..., 2] - painted[..., 0] > 150).all()


def _gradient(pic, m):
    aux = np.full_like(m, 9)
    keepcut.draw_gradient_line(m, aux, (2, 10), (38, 30), 1, 0, 200)
    return m[10, 2] == 1 and m[30, 38] == 201 and set(np.unique(aux)) <= {0, 9}


def _hair(pic, m):
    before = m.copy()
    keepcut.hair_select(pic, m, (22, 5), (37, 30), 3, (200, 100, 10), (0, 0, 0))
    changed = m != before  # the picture is all hair colour: alpha 255, painted
    return changed[:, 20:40].any() and (m[changed] == 255).all() and not changed[34:].any()


@pytest.mark.parametrize("check", [_line, _flood, _grey, _colour_range, _merge, _alpha_merge,
                                   _blend, _scale, _desaturate, _gradient, _hair])
def test_screen_wrapper(check):
    assert check(*ramp_scene())


# ---- GrabCut ---------------------------------------------------------------------

def test_grabcut_session_selects_a_disc_and_frees_once():
    rgb, _, truth = disc_scene(160, 200, 45)
    with keepcut.GrabCutSession(rgb, (40, 20, 120, 120)) as s:
        sel = s.stroke((100, 80), (100, 80), 3, True)
        # The whole disc, most of its soft rim, and nothing of the background.
        assert sel[truth > 0.1].all() and not sel[truth == 0].any()
        brush = s.edge(8)
        assert s._req.grabCutBuf is None
        with pytest.raises(ValueError, match="closed"):
            s.select()
    assert set(np.unique(brush)) == {1, 126, 255}
    assert (brush[truth == 1] != 1).all() and (brush[truth == 0] != 255).all()
    s.close()  # a second close frees nothing
    alpha = keepcut.matte(rgb, brush, is_map=True)
    assert np.abs(alpha / 255.0 - truth).mean() < 0.02
