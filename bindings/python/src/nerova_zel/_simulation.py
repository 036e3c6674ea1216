"""Frames of known light."""

from __future__ import annotations

import ctypes
import math
from collections.abc import Sequence
from typing import Union

import numpy as np
import numpy.typing as npt

from . import _library
from ._arrays import checked_integer, checked_layout, checked_pair

_OfPolarizers = Union[float, Sequence[float]]


def _four(name: str, values: _OfPolarizers) -> list[float]:
    numbers = [float(values)] * 4 if isinstance(values, (int, float)) else [float(value) for value in values]
    if len(numbers) != 4:
        raise ValueError(f"{name} must be one number, or four for the polarizers 0, 45, 90, 135")
    return numbers


def simulate(
    size: tuple[int, int],
    layout: int,
    bit_depth: int,
    photons: float | None = None,
    *,
    origin: tuple[int, int] = (0, 0),
    seed: int = 1,
    source_angle: float | None = None,
    source_power: float = 0.8,
    dark_level: float = 0.0,
    angle_errors: _OfPolarizers = 0.0,
    extinctions: _OfPolarizers = math.inf,
    gains: _OfPolarizers = 1.0,
) -> tuple[npt.NDArray[np.uint16], dict[str, npt.NDArray[np.float32]]]:
    """A raw frame of a glossy sphere and a wheel of polarizers, or of a uniform source, and its true light.

    :param size: (height, width), each at least 2.
    :param layout: polarizer angle of the sensor's top-left pixel: 0, 45, 90 or 135.
    :param bit_depth: 1 to 16.
    :param photons: photo-electrons that fill a pixel, for shot noise; a usual sensor holds 10000. None: no noise.
    :param origin: (x, y) of the frame's top-left pixel on the sensor.
    :param seed: of the noise; the same arguments give the same frame.
    :param source_angle: in place of the scene, a uniform source behind a linear polarizer at that angle, in degrees.
    :param source_power: light of that source, as a share of what fills a pixel behind an aligned polarizer; 0 for a dark
        frame.
    :param dark_level: pixel value without light.
    :param angle_errors: degrees by which the sensor's polarizers are turned: one number, or four for 0, 45, 90, 135.
    :param extinctions: their extinction ratios, likewise, at least 1.
    :param gains: relative response of the pixels below them, likewise.
    :return: the frame, uint16 (height, width), and the truth of each output pixel, at the centre of the 2 x 2 pixels that
        it is computed from, float32 (height, width) each: ``s0``, ``s1``, ``s2`` as shares of full scale, ``angle`` in
        degrees 0 to 180, ``dolp`` 0 to 1.
    """
    height, width = checked_pair("size", size, 2)
    x, y = checked_pair("origin", origin, 0)
    scene = _library.Scene(
        width, height, x % 4, y % 4, checked_layout(layout), checked_integer("bit_depth", bit_depth, 1, 16)
    )
    scene.photons = 0.0 if photons is None else float(photons)
    scene.dark_level = float(dark_level)
    scene.angle_errors[:] = _four("angle_errors", angle_errors)
    scene.extinctions[:] = _four("extinctions", extinctions)
    scene.gains[:] = _four("gains", gains)
    scene.seed = checked_integer("seed", seed, 0, 2**64 - 1)
    if source_angle is not None:
        scene.uniform = 1
        twice = math.radians(2.0 * source_angle)
        scene.light[:] = [source_power, source_power * math.cos(twice), source_power * math.sin(twice)]
    frame = np.empty((height, width), np.uint16)
    s0, s1, s2 = (np.empty((height, width), np.float32) for _ in range(3))
    _library.call(
        "nv_imaging_simulate", ctypes.byref(scene), frame.ctypes.data, s0.ctypes.data, s1.ctypes.data, s2.ctypes.data
    )
    angle = np.degrees(0.5 * np.arctan2(s2, s1, dtype=np.float64)) % 180.0
    light = np.maximum(s0, np.finfo(np.float32).tiny)
    truth: dict[str, npt.NDArray[np.float32]] = {
        "s0": s0,
        "s1": s1,
        "s2": s2,
        "angle": angle.astype(np.float32),
        "dolp": np.asarray(np.hypot(s1, s2) / light, np.float32),
    }
    return frame, truth
