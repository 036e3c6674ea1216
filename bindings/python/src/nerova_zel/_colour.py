"""Pictures of the angle in colour."""

from __future__ import annotations

import ctypes
import functools
from typing import Any

import numpy as np
import numpy.typing as npt

from . import _library
from ._arrays import checked_integer, checked_output


class _Colours:
    def __init__(self, style: str, output_maximum: int, degree_max: float, power_max: float) -> None:
        self.handle = ctypes.c_void_p()
        _library.call(
            "nv_imaging_create_colours",
            style.encode(),
            output_maximum,
            degree_max,
            power_max,
            ctypes.byref(self.handle),
        )
        _library.release_with(self, "nv_imaging_destroy_colours", self.handle)


_colours = functools.lru_cache(maxsize=16)(_Colours)


def _image(name: str, image: Any, shape: tuple[int, ...]) -> npt.NDArray[np.uint16]:
    if not isinstance(image, np.ndarray) or image.dtype != np.uint16 or image.shape != shape:
        have = f"{image.dtype} {image.shape}" if isinstance(image, np.ndarray) else type(image).__name__
        raise ValueError(f"{name} is {have}; it must be uint16 {shape}, as Processor.transform returns it")
    return np.ascontiguousarray(image)


def colour(
    angle: npt.NDArray[np.float32] | npt.NDArray[np.uint16],
    dolp: npt.NDArray[np.uint16] | None = None,
    power: npt.NDArray[np.uint16] | None = None,
    style: str = "dark",
    *,
    output_maximum: int = 65535,
    degree_max: float = 1.0,
    power_max: float = 1.0,
    out: npt.NDArray[np.uint8] | None = None,
) -> npt.NDArray[np.uint8]:
    """Shows the angle as hue, as the tool's pictures do.

    :param angle: the output ``angle``, float32 degrees, or ``azimuth``, uint16, of any shape (...). From ``azimuth`` the
        picture is the tool's to the last bit.
    :param dolp: the output ``dolp``; not needed in the style ``"plain"``.
    :param power: the output ``power``; needed in the style ``"composite"``.
    :param style: ``"plain"``: hue only. ``"light"``: unpolarized is white. ``"dark"``: unpolarized is black.
        ``"composite"``: the degree as saturation, the power as brightness.
    :param output_maximum: of the 16-bit images.
    :param degree_max,power_max: where the scales of degree and power end, above 0; `power_max` as a share of full scale.
        To compare pictures, choose them once.
    :param out: an array to fill and return, uint8 (..., 3).
    :return: uint8 (..., 3): red, green, blue.
    """
    maximum = checked_integer("output_maximum", output_maximum, 1, 65535)
    if not isinstance(angle, np.ndarray) or angle.dtype not in (np.float32, np.uint16):
        raise ValueError("angle must be an array of float32, the output 'angle', or of uint16, the output 'azimuth'")
    colours = _colours(style, maximum, float(degree_max), float(power_max))
    if angle.dtype == np.uint16:
        azimuth = _image("angle", angle, angle.shape)
    else:
        degrees = np.ascontiguousarray(angle)
        azimuth = np.empty(angle.shape, np.uint16)
        _library.call("nv_imaging_azimuth_of_angles", degrees.ctypes.data, degrees.size, maximum, azimuth.ctypes.data)
    if dolp is None and style != "plain":
        raise ValueError(f"the style {style!r} needs dolp")
    if power is None and style == "composite":
        raise ValueError("the style 'composite' needs power")
    degree = None if dolp is None else _image("dolp", dolp, angle.shape)
    light = None if power is None else _image("power", power, angle.shape)
    if out is None:
        out = np.empty((*angle.shape, 3), np.uint8)
    else:
        checked_output("rgb", out, (*angle.shape, 3), np.uint8, azimuth)
    _library.call(
        "nv_imaging_paint",
        colours.handle,
        azimuth.ctypes.data,
        None if degree is None else degree.ctypes.data,
        None if light is None else light.ctypes.data,
        azimuth.size,
        out.ctypes.data,
    )
    return out
