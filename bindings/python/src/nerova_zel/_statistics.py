"""Statistics of frames."""

from __future__ import annotations

import ctypes
from dataclasses import dataclass, field
from typing import Any, Union

from . import _library
from ._arrays import (
    RawFrame,
    checked_frame,
    checked_integer,
    checked_layout,
    checked_pair,
    depth_of,
    frames_of,
    to_frame,
)

_COUNTED = ("frame", "power", "hv", "diagonal", "dolp")
_WEIGHTS = ("equal", "power")
_Plain = tuple[tuple[str, Union[int, float, tuple[int, ...]]], ...]


def _values(sums: _library.Statistics) -> _Plain:
    return tuple(
        (name, tuple(value) if isinstance(value, ctypes.Array) else value)
        for name, value in ((field[0], getattr(sums, field[0])) for field in _library.Statistics._fields_)
    )


def _from_values(values: _Plain) -> _library.Statistics:
    sums = _library.Statistics()
    for name, value in values:
        setattr(sums, name, type(getattr(sums, name))(*value) if isinstance(value, tuple) else value)
    return sums


@dataclass(frozen=True)
class Statistics:
    """Statistics of pixels. Those of several frames are added by ``+``, also by ``sum(parts, Statistics())``; all must be
    of one weight. Values that do not exist are NaN. May be pickled."""

    pixels: int = 0
    mean_angle: float = float("nan")
    """Axial mean in degrees, above -90 to 90: the mean of 85 and -85 is 90."""
    resultant: float = float("nan")
    """Mean resultant length of the doubled angles: 1 if all are equal, 0 if no direction prevails."""
    angle_deviation: float = float("nan")
    """Circular standard deviation in degrees."""
    mean_degree: float = float("nan")
    """Mean degree of linear polarization, 0 to 1."""
    without_angle: int = 0
    """Pixels without polarized light."""
    without_degree: int = 0
    """Pixels without light."""
    saturated: dict[str, int] = field(default_factory=lambda: dict.fromkeys(_COUNTED, 0))
    """Pixels at the end of the scale or above, of the frame and of the images power, hv, diagonal and dolp."""
    dark: dict[str, int] = field(default_factory=lambda: dict.fromkeys(_COUNTED, 0))
    """Pixels at 0 of the same."""
    _sums: _Plain = field(default_factory=lambda: _values(_library.Statistics()), repr=False)

    @classmethod
    def _of(cls, sums: _library.Statistics) -> Statistics:
        return cls(
            pixels=sums.pixels,
            mean_angle=sums.mean_angle,
            resultant=sums.resultant,
            angle_deviation=sums.angle_deviation,
            mean_degree=sums.mean_degree,
            without_angle=sums.without_angle,
            without_degree=sums.without_degree,
            saturated=dict(zip(_COUNTED, sums.saturated)),
            dark=dict(zip(_COUNTED, sums.dark)),
            _sums=_values(sums),
        )

    def __add__(self, other: Statistics) -> Statistics:
        if not isinstance(other, Statistics):
            return NotImplemented
        sums = _from_values(self._sums)
        more = _from_values(other._sums)
        _library.call("nv_imaging_add_statistics", ctypes.byref(sums), ctypes.byref(more))
        return Statistics._of(sums)


def statistics(
    frame: RawFrame,
    *,
    layout: int,
    bit_depth: int,
    roi: tuple[int, int, int, int] | None = None,
    origin: tuple[int, int] = (0, 0),
    weight: str = "equal",
    threads: int = 1,
) -> Statistics:
    """Statistics of the angle and degree of polarization, and counts of saturated and dark pixels.

    No image is kept: this is faster than computing images and their means. The result does not depend on `threads`.

    :param frame: uint16 or uint8, (H, W) or (N, H, W); of several frames the statistics are those of all pixels together.
    :param layout: polarizer angle of the sensor's top-left pixel: 0, 45, 90 or 135.
    :param bit_depth: significant bits of a pixel, 1 to 16; arrays of uint8 have 8.
    :param roi: (x, y, width, height) of the part to take, as if the camera had read out no more.
    :param origin: (x, y) of the frame's top-left pixel on the sensor.
    :param weight: ``"equal"``: every pixel counts once. ``"power"``: the degree is weighted by power and the angle by
        polarized power, so that the means are those of all light together.
    :param threads: up to so many work on a frame.
    """
    layout = checked_layout(layout)
    depth = checked_integer("bit_depth", bit_depth, 1, 16)
    place = checked_pair("origin", origin, 0)
    count = checked_integer("threads", threads, 1, 1024)
    if weight not in _WEIGHTS:
        raise ValueError(f"weight is {weight!r}; it must be 'equal' or 'power'")
    region: Any = None
    if roi is not None:
        try:
            x, y, width, height = roi
        except (TypeError, ValueError):
            raise ValueError(f"roi is {roi!r}; it must be (x, y, width, height)") from None
        numbers = [checked_integer("roi", number, 0, 2**31 - 1) for number in (x, y, width, height)]
        region = (ctypes.c_int32 * 4)(*numbers)
    pixels = checked_frame(frame)
    processor = _library.plain_processor()
    total: _library.Statistics | None = None
    for one in frames_of(pixels):
        described = to_frame(one, layout, depth_of(frame, depth), place)
        sums = _library.Statistics()
        _library.call(
            "nv_imaging_compute_statistics",
            processor,
            ctypes.byref(described),
            region,
            _WEIGHTS.index(weight),
            count,
            ctypes.byref(sums),
        )
        if total is None:
            total = sums
        else:
            _library.call("nv_imaging_add_statistics", ctypes.byref(total), ctypes.byref(sums))
    return Statistics() if total is None else Statistics._of(total)
