"""The two libraries of the wheel, their functions and structures. ctypes releases the interpreter lock during calls."""

from __future__ import annotations

import ctypes
import functools
import os
import pathlib
import sys
import threading
import weakref
from ctypes import POINTER, c_char_p, c_double, c_float, c_int32, c_size_t, c_uint64, c_void_p
from typing import Any

_OUT_OF_MEMORY = (3, 103)
_UNKNOWN = (1, 2, 104)


class Frame(ctypes.Structure):
    _fields_ = (
        ("pixels", c_void_p),
        ("width", c_int32),
        ("height", c_int32),
        ("origin_x", c_int32),
        ("origin_y", c_int32),
        ("layout", c_int32),
        ("bit_depth", c_int32),
    )


class Recording(ctypes.Structure):
    _fields_ = (
        ("frames", c_uint64),
        *((name, c_int32) for name in ("width", "height", "origin_x", "origin_y", "layout", "bit_depth")),
        ("pixel_format", c_char_p),
        ("colour", c_char_p),
    )


class Images(ctypes.Structure):
    _fields_ = (
        *(
            (name, c_void_p)
            for name in ("stokes", "power", "hv", "diagonal", "azimuth", "dolp", "s0", "s1", "s2", "angle")
        ),
        ("output_maximum", c_int32),
    )


class Statistics(ctypes.Structure):
    _fields_ = (
        *((name, c_uint64) for name in ("pixels", "without_angle", "without_degree")),
        ("saturated", c_uint64 * 5),
        ("dark", c_uint64 * 5),
        *((name, c_double) for name in ("mean_angle", "resultant", "angle_deviation", "mean_degree")),
        *((name, c_double) for name in ("cosines", "sines", "angle_weights", "degrees", "degree_weights")),
    )


class Scene(ctypes.Structure):
    _fields_ = (
        *(
            (name, c_int32)
            for name in ("width", "height", "origin_x", "origin_y", "layout", "bit_depth", "uniform", "reserved")
        ),
        ("light", c_double * 3),
        ("photons", c_double),
        ("dark_level", c_double),
        ("angle_errors", c_double * 4),
        ("extinctions", c_double * 4),
        ("gains", c_double * 4),
        ("seed", c_uint64),
    )


class Polarizer(ctypes.Structure):
    _fields_ = tuple(
        (name, c_double)
        for name in ("angle_error", "angle_uncertainty", "extinction", "extinction_is_bound", "gain", "residual")
    )


_PROCESSOR_FUNCTIONS: dict[str, list[Any]] = {
    "nv_polarization_processor_module_initialize": [],
    "nv_polarization_processor_create_polarization_processor": [POINTER(c_void_p)],
    "nv_polarization_processor_destroy_polarization_processor": [c_void_p],
    "nv_polarization_processor_set_custom_calibration_coefficients": [c_void_p] + 4 * [c_void_p],
}
_IMAGING_FUNCTIONS: dict[str, list[Any]] = {
    "nv_imaging_pixel_format_name": [c_int32, POINTER(c_char_p)],
    "nv_imaging_pixel_format": [c_char_p, POINTER(c_int32), POINTER(c_int32)],
    "nv_imaging_unpack": [c_char_p, c_void_p, c_size_t, c_size_t, c_size_t, c_void_p, c_int32],
    "nv_imaging_split_colours": [c_void_p, c_int32, c_int32, c_char_p, c_void_p],
    "nv_imaging_read_recording": [c_char_p, c_size_t, c_char_p, POINTER(Recording)],
    "nv_imaging_transform": [c_void_p, POINTER(Frame), POINTER(Images), c_int32],
    "nv_imaging_route": [POINTER(c_char_p)],
    "nv_imaging_compute_statistics": [c_void_p, POINTER(Frame), c_void_p, c_int32, c_int32, POINTER(Statistics)],
    "nv_imaging_add_statistics": [POINTER(Statistics), POINTER(Statistics)],
    "nv_imaging_create_colours": [c_char_p, c_int32, c_double, c_double, POINTER(c_void_p)],
    "nv_imaging_paint": [c_void_p, c_void_p, c_void_p, c_void_p, c_size_t, c_void_p],
    "nv_imaging_azimuth_of_angles": [c_void_p, c_size_t, c_int32, c_void_p],
    "nv_imaging_simulate": [POINTER(Scene), c_void_p, c_void_p, c_void_p, c_void_p],
    "nv_imaging_create_series": [c_int32, c_int32, c_int32, POINTER(c_void_p)],
    "nv_imaging_add_to_series": [c_void_p, c_char_p, c_double, POINTER(Frame)],
    "nv_imaging_set_dark_frame": [c_void_p, c_char_p, POINTER(Frame)],
    "nv_imaging_fit": [c_void_p, c_int32, POINTER(c_void_p)],
    "nv_imaging_read_calibration": [c_char_p, c_size_t, c_char_p, POINTER(c_void_p)],
    "nv_imaging_read_colour_calibration": [c_char_p, c_size_t, c_char_p, POINTER(c_void_p)],
    "nv_imaging_calibration_text": [c_void_p, POINTER(c_char_p), POINTER(c_size_t)],
    "nv_imaging_calibration_values": [
        c_void_p,
        POINTER(c_float),
        POINTER(c_double),
        POINTER(c_int32),
        POINTER(Polarizer),
        POINTER(c_size_t),
    ],
    "nv_imaging_calibration_residuals": [c_void_p, c_void_p, POINTER(c_char_p)],
    "nv_imaging_subtract_dark": [c_void_p, POINTER(Frame), c_void_p],
}
_RELEASES = ("nv_imaging_destroy_colours", "nv_imaging_destroy_series", "nv_imaging_destroy_calibration")


def _is_companion(name: str) -> bool:
    return "vector" in name or "logger" in name


class _Libraries:
    """The libraries, loaded once in a process and kept until its end; a child process has them by its fork."""

    def __init__(self) -> None:
        folder = pathlib.Path(__file__).resolve().parent / "lib"
        windows = sys.platform == "win32"

        def load(name: str) -> ctypes.CDLL:
            return ctypes.CDLL(os.fspath(folder / (f"{name}.dll" if windows else f"lib{name}.so")))

        # Windows finds companions by their names when they are loaded already, wherever the program lies.
        self.companions = [
            ctypes.CDLL(os.fspath(path)) for path in sorted(folder.glob("*.dll")) if _is_companion(path.stem)
        ]
        processor = load("nerova_zel_polarization_processor")
        imaging = load("nerova_zel_imaging")
        self.functions: dict[str, Any] = {}
        for library, functions in ((processor, _PROCESSOR_FUNCTIONS), (imaging, _IMAGING_FUNCTIONS)):
            for name, arguments in functions.items():
                function = getattr(library, name)
                function.argtypes = arguments
                function.restype = c_int32
                self.functions[name] = function
        for name in _RELEASES:
            function = getattr(imaging, name)
            function.argtypes = [c_void_p]
            function.restype = None
            self.functions[name] = function
        self.error_text = imaging.nv_imaging_error_text
        self.error_text.argtypes = []
        self.error_text.restype = c_char_p
        # Never taken back, so that no thread can be in a call when it is.
        self.functions["nv_polarization_processor_module_initialize"]()


# While the module is imported only one thread is here.
_libraries = _Libraries()
_lock = threading.Lock()


def call(name: str, *arguments: Any) -> None:
    """Calls a function; its error becomes an exception."""
    code = _libraries.functions[name](*arguments)
    if code == 0:
        return
    if code in _OUT_OF_MEMORY:
        raise MemoryError("memory ran out in the polarization processor")
    if name.startswith("nv_imaging"):
        text = _libraries.error_text().decode(errors="replace")
    else:
        text = f"the polarization processor returned error {code}"
    raise RuntimeError(text) if code in _UNKNOWN else ValueError(text)


def release_with(owner: object, release: str, handle: c_void_p) -> None:
    """Releases the handle when the owner is gone; handles do not need one another, so any order is right."""
    weakref.finalize(owner, _libraries.functions[release], handle)


def new_processor(owner: object) -> c_void_p:
    """A processor that lives as long as its owner."""
    handle = c_void_p()
    call("nv_polarization_processor_create_polarization_processor", ctypes.byref(handle))
    release_with(owner, "nv_polarization_processor_destroy_polarization_processor", handle)
    return handle


class _Plain:
    """A processor with the default matrices."""

    def __init__(self) -> None:
        self.handle = new_processor(self)


_plain: list[_Plain] = []


def plain_processor() -> c_void_p:
    """The processor with the default matrices that functions share."""
    with _lock:  # a second one would be released while somebody uses it
        if not _plain:
            _plain.append(_Plain())
    return _plain[0].handle


@functools.cache
def route() -> str:
    """What computes frames on this computer."""
    name = c_char_p()
    call("nv_imaging_route", ctypes.byref(name))
    return (name.value or b"").decode()
