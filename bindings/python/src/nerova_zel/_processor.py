"""Frames to images of polarization."""

from __future__ import annotations

import ctypes
import os
import threading
import warnings
from collections.abc import Iterable, Mapping
from typing import Any

import numpy as np
import numpy.typing as npt

from . import _library
from ._arrays import (
    RawFrame,
    checked_frame,
    checked_integer,
    checked_layout,
    checked_output,
    checked_pair,
    depth_of,
    frames_of,
    to_frame,
)
from ._calibration import Calibration, ColourCalibration, load_calibration
from ._frames import split_colours

#: Each output with its type and its elements for a pixel.
_OUTPUTS: dict[str, tuple[type[np.generic], int]] = {
    "stokes": (np.float32, 2),
    "power": (np.uint16, 1),
    "hv": (np.uint16, 1),
    "diagonal": (np.uint16, 1),
    "azimuth": (np.uint16, 1),
    "dolp": (np.uint16, 1),
    "s0": (np.float32, 1),
    "s1": (np.float32, 1),
    "s2": (np.float32, 1),
    "angle": (np.float32, 1),
}
#: The names of all outputs.
OUTPUTS = tuple(_OUTPUTS)


class Processor:
    """Computes images of polarization of raw frames.

    Create one and use it for all frames, from any number of threads and after a fork. It may be pickled.
    """

    def __init__(
        self,
        *,
        layout: int,
        bit_depth: int,
        output_maximum: int = 65535,
        calibration: Calibration | ColourCalibration | str | os.PathLike[str] | None = None,
        threads: int = 1,
        colour: str | None = None,
    ) -> None:
        """
        :param layout: polarizer angle of the sensor's top-left pixel, in degrees: 0 is [0, 135 / 45, 90], 45 is
            [45, 90 / 0, 135], 90 is [90, 45 / 135, 0], 135 is [135, 0 / 90, 45]. It has no default: a wrong one gives
            images that look right and are wrong.
        :param bit_depth: significant bits of a pixel, 1 to 16. Arrays of uint8 are taken as 8 bits.
        :param output_maximum: what full scale, 180 degrees and a degree of 1 map to in 16-bit outputs, 1 to 65535.
        :param calibration: of the camera, or the path of its file. With `colour` also that of each colour. Only vector plugins apply it to every pixel; on other
            routes there is a RuntimeWarning.
        :param threads: up to so many compute one frame, with the same bits.
        :param colour: the pattern of a colour camera, such as ``"RGGB"``, see `split_colours`.
        """
        self._layout = checked_layout(layout)
        self._bit_depth = checked_integer("bit_depth", bit_depth, 1, 16)
        self._output_maximum = checked_integer("output_maximum", output_maximum, 1, 65535)
        self._threads = checked_integer("threads", threads, 1, 1024)
        if colour is not None and colour not in ("RGGB", "GRBG", "GBRG", "BGGR"):
            raise ValueError(f"colour is {colour!r}; it must be 'RGGB', 'GRBG', 'GBRG' or 'BGGR'")
        self._colour = colour
        if calibration is not None and not isinstance(calibration, (Calibration, ColourCalibration)):
            calibration = load_calibration(calibration, colour is not None)
        parts: tuple[Calibration | None, ...]
        if isinstance(calibration, ColourCalibration):
            if colour is None:
                raise ValueError("the calibration is that of a colour camera: say its pattern with colour")
            parts = calibration.parts()
        else:
            parts = (calibration,)
        self._calibration = calibration
        self._scratch = threading.local()
        # One for all frames, or one for each colour.
        self._parts = tuple((_library.new_processor(self), part) for part in parts)
        for handle, part in self._parts:
            if part is not None:
                rows = [np.ascontiguousarray(matrix) for matrix in part.matrices]
                _library.call(
                    "nv_polarization_processor_set_custom_calibration_coefficients",
                    handle,
                    *(matrix.ctypes.data for matrix in rows),
                )
        if calibration is not None:
            if self.route.startswith("built-in"):
                warnings.warn(
                    "no vector plugin serves this computer: the calibration reaches the last columns and rows only",
                    RuntimeWarning,
                    stacklevel=2,
                )

    @property
    def route(self) -> str:
        """What computes frames on this computer: "avx512", "avx2", "built-in SSE4.1" or "built-in SSE2"."""
        return _library.route()

    @property
    def layout(self) -> int:
        """Polarizer angle of the sensor's top-left pixel, in degrees."""
        return self._layout

    @property
    def bit_depth(self) -> int:
        """Significant bits of a pixel."""
        return self._bit_depth

    @property
    def output_maximum(self) -> int:
        """What full scale maps to in 16-bit outputs."""
        return self._output_maximum

    @property
    def calibration(self) -> Calibration | ColourCalibration | None:
        """Of the camera, if any."""
        return self._calibration

    def transform(
        self,
        frame: RawFrame,
        outputs: Iterable[str] = ("angle", "dolp", "stokes"),
        origin: tuple[int, int] = (0, 0),
        out: Mapping[str, npt.NDArray[Any]] | None = None,
    ) -> dict[str, npt.NDArray[Any]]:
        """Computes images of one frame or of many.

        :param frame: uint16 (uint8: 8 bits), (H, W) or (N, H, W), contiguous, native byte order; not changed.
        :param outputs: names of what to compute; S1 = I0 - I90 and S2 = I45 - I135:

            ===========  =========  ==============================================================================
            ``angle``    float32    angle of linear polarization, degrees, 0 to 180 counter-clockwise from the image's
                                    horizontal axis; NaN without light
            ``dolp``     uint16     degree of linear polarization times the output maximum; 0 without light
            ``stokes``   float32    (..., 2): S1 / P and S2 / P; NaN or infinite without light
            ``power``    uint16     P = (I0 + I45 + I90 + I135) / 2 as a share of full scale times the output maximum
            ``hv``       uint16     S1 likewise, 0 where it is negative
            ``diagonal`` uint16     S2 likewise
            ``azimuth``  uint16     the library's own image of the angle: (angle + 90 degrees) modulo 180 degrees, where
                                    180 degrees are the output maximum; within 0.16 degrees
            ``s0``       float32    P in pixel values, not clipped
            ``s1``       float32    S1 likewise, also negative
            ``s2``       float32    S2 likewise
            ===========  =========  ==============================================================================

        :param origin: (x, y) of the frame's top-left pixel on the sensor, at least 0, for frames of a part of it.
        :param out: arrays to write to, by output, such as an earlier result: with fresh ones a call takes 1.6 to 3.2
            times as long. Each is contiguous, of the result's shape and type.
        :return: the images by output: (H, W) or (N, H, W), ``stokes`` with 2 behind; of colour frames (2, 2, H / 2, W / 2)
            in place of (H, W), in the order of `split_colours`.
        :raises ValueError: arguments that cannot be used; the sentence says what to do.
        """
        names = (outputs,) if isinstance(outputs, str) else tuple(outputs)
        unknown = [name for name in names if name not in _OUTPUTS]
        if unknown or not names:
            raise ValueError(f"there is no output {', '.join(map(repr, unknown))}; there are {', '.join(OUTPUTS)}")
        pixels = checked_frame(frame)
        place = checked_pair("origin", origin, 0)
        shape = pixels.shape
        if self._colour is not None:
            if place[0] % 4 or place[1] % 4:
                raise ValueError(f"origin is {place}; of colour frames both numbers must be multiples of 4")
            planes = self._room("planes", (*shape[:-2], 2, 2, shape[-2] // 2, shape[-1] // 2))
            pixels = split_colours(pixels, self._colour, out=planes)
            shape = pixels.shape
            pixels = pixels.reshape(-1, *shape[-2:])
        results: dict[str, npt.NDArray[Any]] = {}
        for name in names:
            dtype, channels = _OUTPUTS[name]
            full = shape if channels == 1 else (*shape, channels)
            if out is None:
                results[name] = np.empty(full, dtype)
            elif name in out:
                checked_output(name, out[name], full, dtype, frame)
                results[name] = out[name]
            else:
                raise ValueError(f"out has no {name!r}")
        if out is not None:
            self._check_apart(results)
        self._compute(frames_of(pixels), depth_of(frame, self._bit_depth), place, results)
        return results

    @staticmethod
    def _check_apart(results: dict[str, npt.NDArray[Any]]) -> None:
        for name, array in results.items():
            for other, another in results.items():
                if name < other and np.may_share_memory(array, another):
                    raise ValueError(f"out[{name!r}] shares memory with out[{other!r}]")

    def _room(self, name: str, shape: tuple[int, ...]) -> npt.NDArray[np.uint16]:
        """Memory of this thread, kept for the next frame."""
        kept: npt.NDArray[np.uint16] | None = getattr(self._scratch, name, None)
        if kept is None or kept.shape != shape:
            kept = np.empty(shape, np.uint16)
            setattr(self._scratch, name, kept)
        return kept

    def _compute(
        self,
        pixels: npt.NDArray[np.uint16],
        bit_depth: int,
        origin: tuple[int, int],
        results: dict[str, npt.NDArray[Any]],
    ) -> None:
        elements = pixels.shape[1] * pixels.shape[2]
        addresses = {
            name: (array.ctypes.data, array.itemsize * elements * _OUTPUTS[name][1]) for name, array in results.items()
        }
        images = _library.Images(output_maximum=self._output_maximum)
        for number, one in enumerate(pixels):
            handle, calibration = self._parts[number % len(self._parts)]
            described = to_frame(one, self._layout, bit_depth, origin)
            if calibration is not None:
                without_dark = self._room("without_dark", one.shape)
                calibration.subtract_dark(one, described, without_dark)
                described.pixels = without_dark.ctypes.data
            for name, (address, step) in addresses.items():
                setattr(images, name, address + number * step)
            _library.call("nv_imaging_transform", handle, ctypes.byref(described), ctypes.byref(images), self._threads)

    def __reduce__(self) -> tuple[Any, tuple[Any, ...]]:
        return _remade, (
            self._layout,
            self._bit_depth,
            self._output_maximum,
            self._calibration,
            self._threads,
            self._colour,
        )

    def __repr__(self) -> str:
        return (
            f"<Processor layout={self._layout} bit_depth={self._bit_depth} output_maximum={self._output_maximum} "
            f"threads={self._threads} route={self.route!r}>"
        )


def _remade(
    layout: int,
    bit_depth: int,
    output_maximum: int,
    calibration: Calibration | ColourCalibration | None,
    threads: int,
    colour: str | None,
) -> Processor:
    return Processor(
        layout=layout,
        bit_depth=bit_depth,
        output_maximum=output_maximum,
        calibration=calibration,
        threads=threads,
        colour=colour,
    )
