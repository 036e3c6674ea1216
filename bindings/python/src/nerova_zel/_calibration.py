"""Frames of a polarized source to the matrices of a camera."""

from __future__ import annotations

import ctypes
import os
import pathlib
import tempfile
from collections.abc import Iterable, Sequence
from typing import NamedTuple

import numpy as np
import numpy.typing as npt

from . import _library
from ._arrays import RawFrame, checked_frame, checked_integer, checked_layout, checked_pair, depth_of, to_frame


class Polarizer(NamedTuple):
    """What a calibration found of the polarizers of one orientation."""

    angle_error: float
    """Degrees by which they are turned, counter-clockwise."""
    angle_uncertainty: float
    """Its standard error in degrees; covers noise, not a wrong zero of the source's polarizer."""
    extinction: float
    """Ratio of the greatest to the least response to polarized light."""
    extinction_is_bound: bool
    """Whether the ratio is only known to be at least that."""
    gain: float
    """Response to unpolarized light, relative to the mean of the four orientations."""
    residual: float
    """Root mean square of measured less fitted signal, as a share of the source."""


class Calibration:
    """Matrices and dark levels of a camera, from `calibrate` or a file of the tool. Never changes; may be pickled."""

    def __init__(self, text: str | bytes, name: str = "the calibration") -> None:
        """Reads the text of a calibration file; `name` is what errors call it."""
        data = text.encode() if isinstance(text, str) else bytes(text)
        handle = ctypes.c_void_p()
        _library.call("nv_imaging_read_calibration", data, len(data), os.fsencode(name), ctypes.byref(handle))
        self._take(handle)

    def _take(self, handle: ctypes.c_void_p) -> None:
        self._handle = handle
        _library.release_with(self, "nv_imaging_destroy_calibration", handle)
        matrices = (ctypes.c_float * 64)()
        dark = (ctypes.c_double * 4)()
        depth = ctypes.c_int32()
        frames = ctypes.c_size_t()
        _library.call("nv_imaging_calibration_values", handle, matrices, dark, depth, None, ctypes.byref(frames))
        self._matrices = np.array(matrices, np.float32).reshape(4, 4, 4)
        self._dark = np.array(dark, np.float64)
        self._depth = int(depth.value) or None
        self._polarizers: tuple[Polarizer, ...] = ()
        self._residuals = np.empty((frames.value, 4), np.float64)
        self._warnings: tuple[str, ...] = ()
        if frames.value:
            found = (_library.Polarizer * 4)()
            _library.call("nv_imaging_calibration_values", handle, None, None, None, found, None)
            self._polarizers = tuple(
                Polarizer(
                    p.angle_error, p.angle_uncertainty, p.extinction, p.extinction_is_bound != 0, p.gain, p.residual
                )
                for p in found
            )
            warnings = ctypes.c_char_p()
            _library.call(
                "nv_imaging_calibration_residuals", handle, self._residuals.ctypes.data, ctypes.byref(warnings)
            )
            self._warnings = tuple((warnings.value or b"").decode(errors="replace").splitlines())
        for array in (self._matrices, self._dark, self._residuals):
            array.flags.writeable = False

    @classmethod
    def _of(cls, handle: ctypes.c_void_p) -> Calibration:
        calibration = cls.__new__(cls)
        calibration._take(handle)
        return calibration

    @classmethod
    def load(cls, path: str | os.PathLike[str]) -> Calibration:
        """Reads a file of `save` or of ``nerova-polarize calibrate``.

        :raises ValueError: it is no calibration file.
        :raises OSError: it cannot be read.
        """
        return cls(pathlib.Path(path).read_bytes(), os.fspath(path))

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes the calibration as JSON, which the tool reads too. The file appears whole or not at all, and replaces one
        that is there."""
        target = pathlib.Path(path)
        handle, name = tempfile.mkstemp(prefix=f".{target.name}.", dir=target.parent)
        try:
            with os.fdopen(handle, "wb") as file:
                file.write(self.text.encode())
            mask = os.umask(0)
            os.umask(mask)
            os.chmod(name, 0o666 & ~mask)
            os.replace(name, target)
        except BaseException:
            os.unlink(name)
            raise

    @property
    def text(self) -> str:
        """The text of its file: JSON."""
        text = ctypes.c_char_p()
        _library.call("nv_imaging_calibration_text", self._handle, ctypes.byref(text), None)
        return (text.value or b"").decode()

    @property
    def matrices(self) -> npt.NDArray[np.float32]:
        """float32 (4, 4, 4): the matrix of each polarizer 0, 45, 90, 135, as the library's C header describes them."""
        return self._matrices

    @property
    def dark_levels(self) -> npt.NDArray[np.float64]:
        """float64 (4,): pixel values without light, under the polarizers 0, 45, 90, 135."""
        return self._dark

    @property
    def bit_depth(self) -> int | None:
        """Of the frames that it was made from; no others may be corrected by it. None where the file does not say."""
        return self._depth

    @property
    def polarizers(self) -> tuple[Polarizer, ...]:
        """What was found of the polarizers 0, 45, 90, 135; empty where the calibration was loaded."""
        return self._polarizers

    @property
    def residuals(self) -> npt.NDArray[np.float64]:
        """float64 (frames, 4): measured less fitted signal under the polarizers 0, 45, 90, 135, as a share of the source;
        (0, 4) where the calibration was loaded."""
        return self._residuals

    @property
    def warnings(self) -> tuple[str, ...]:
        """A sentence for each frame whose light is uneven or that departs from the fit."""
        return self._warnings

    def subtract_dark(self, pixels: npt.NDArray[np.uint16], frame: _library.Frame, out: npt.NDArray[np.uint16]) -> None:
        """For `Processor`: `pixels` less the dark levels, which `frame` describes, into `out`."""
        _library.call("nv_imaging_subtract_dark", self._handle, ctypes.byref(frame), out.ctypes.data)

    def __reduce__(self) -> tuple[type[Calibration], tuple[str]]:
        return Calibration, (self.text,)

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Calibration) and self.text == other.text

    def __hash__(self) -> int:
        return hash(self.text)

    def __repr__(self) -> str:
        errors = ", ".join(f"{polarizer.angle_error:+.3f}" for polarizer in self._polarizers)
        return f"<Calibration{f', polarizers turned by {errors} degrees' if errors else ''}>"


class ColourCalibration:
    """Matrices and dark levels of each colour of a colour camera, from a file of ``nerova-polarize calibrate --colour``.
    Never changes; may be pickled."""

    def __init__(self, text: str | bytes, name: str = "the calibration") -> None:
        """Reads the text of a calibration file; `name` is what errors call it."""
        data = text.encode() if isinstance(text, str) else bytes(text)
        handles = (ctypes.c_void_p * 4)()
        _library.call("nv_imaging_read_colour_calibration", data, len(data), os.fsencode(name), handles)
        self._text = data.decode()
        self._colours = tuple(Calibration._of(ctypes.c_void_p(handle)) for handle in handles)

    @classmethod
    def load(cls, path: str | os.PathLike[str]) -> ColourCalibration:
        """Reads a file.

        :raises ValueError: it is no calibration file of a colour camera.
        :raises OSError: it cannot be read.
        """
        return cls(pathlib.Path(path).read_bytes(), os.fspath(path))

    @property
    def text(self) -> str:
        """The text of its file: JSON."""
        return self._text

    @property
    def matrices(self) -> npt.NDArray[np.float32]:
        """float32 (4, 4, 4, 4): `Calibration.matrices` of red, green in the rows of red, green in the rows of blue, blue."""
        return np.stack([colour.matrices for colour in self._colours])

    @property
    def dark_levels(self) -> npt.NDArray[np.float64]:
        """float64 (4, 4): `Calibration.dark_levels` of the same."""
        return np.stack([colour.dark_levels for colour in self._colours])

    def parts(self) -> tuple[Calibration, ...]:
        """For `Processor`: one calibration for each colour; none has a text."""
        return self._colours

    def __reduce__(self) -> tuple[type[ColourCalibration], tuple[str]]:
        return ColourCalibration, (self.text,)

    def __eq__(self, other: object) -> bool:
        return isinstance(other, ColourCalibration) and self.text == other.text

    def __hash__(self) -> int:
        return hash(self.text)


def load_calibration(path: str | os.PathLike[str], colour: bool) -> Calibration | ColourCalibration:
    """The file of a camera; for a colour camera of either kind."""
    data = pathlib.Path(path).read_bytes()
    return (ColourCalibration if colour and b'"colours"' in data else Calibration)(data, os.fspath(path))


def calibrate(
    frames: RawFrame | Iterable[RawFrame],
    angles: Sequence[float],
    *,
    layout: int,
    bit_depth: int,
    dark: RawFrame | None = None,
    steady: bool = False,
    origin: tuple[int, int] = (0, 0),
) -> Calibration:
    """Finds the matrices of a camera from frames of a uniform, unpolarized source behind a linear polarizer.

    :param frames: uint16 or uint8, (N, H, W), or an iterable of (H, W), of which one at a time is looked at.
    :param angles: of the source's polarizer, for each frame, in degrees from the image's horizontal axis,
        counter-clockwise; at least four, best every 15 degrees over half a turn.
    :param layout: polarizer angle of the sensor's top-left pixel: 0, 45, 90 or 135.
    :param bit_depth: significant bits of a pixel, 1 to 16; arrays of uint8 have 8.
    :param dark: (H, W), a frame without light. Without it a dark level is taken for leakage of the polarizers.
    :param steady: whether the source is known to be equally bright in all frames.
    :param origin: (x, y) of the frames' top-left pixel on the sensor.
    :raises ValueError: what is wrong with the frames or angles: overexposed, dark or uneven frames, angles that do not
        suffice, frames that contradict the layout.
    """
    checked_layout(layout)
    depth = checked_integer("bit_depth", bit_depth, 1, 16)
    place = checked_pair("origin", origin, 0)
    series = _Series(layout, place)
    degrees = [float(angle) for angle in angles]
    count = 0
    for number, frame in enumerate(frames):
        if number >= len(degrees):
            raise ValueError(f"there are more frames than the {len(degrees)} angles")
        series.add(f"frame {number}", degrees[number], frame, depth)
        count += 1
    if count != len(degrees):
        raise ValueError(f"there are {count} frames and {len(degrees)} angles")
    if dark is not None:
        series.add("the dark frame", None, dark, depth)
    return series.fit(steady)


class _Series:
    def __init__(self, layout: int, origin: tuple[int, int]) -> None:
        self._layout = layout
        self._handle = ctypes.c_void_p()
        _library.call("nv_imaging_create_series", layout, origin[0] % 4, origin[1] % 4, ctypes.byref(self._handle))
        _library.release_with(self, "nv_imaging_destroy_series", self._handle)

    def add(self, name: str, angle: float | None, frame: RawFrame, bit_depth: int) -> None:
        pixels = checked_frame(frame, name)
        if pixels.ndim != 2:
            raise ValueError(f"{name} has the shape {pixels.shape}; it must be (height, width)")
        described = to_frame(pixels, self._layout, depth_of(frame, bit_depth), (0, 0))
        if angle is None:
            _library.call("nv_imaging_set_dark_frame", self._handle, name.encode(), ctypes.byref(described))
        else:
            _library.call("nv_imaging_add_to_series", self._handle, name.encode(), angle, ctypes.byref(described))

    def fit(self, steady: bool) -> Calibration:
        handle = ctypes.c_void_p()
        _library.call("nv_imaging_fit", self._handle, int(steady), ctypes.byref(handle))
        return Calibration._of(handle)
