"""What arrays must be to be handed to the libraries, and the sentences that say how to make them so."""

from __future__ import annotations

import operator
from typing import Any, Union

import numpy as np
import numpy.typing as npt

from . import _library

RawFrame = Union[npt.NDArray[np.uint16], npt.NDArray[np.uint8]]


def checked_layout(layout: int) -> int:
    if layout not in (0, 45, 90, 135):
        raise ValueError(
            f"the layout is {layout!r}; it is the polarizer angle of the sensor's top-left pixel: 0, 45, 90 or 135"
        )
    return int(layout)


def checked_integer(name: str, value: Any, least: int, greatest: int) -> int:
    try:
        number = operator.index(value)
    except TypeError:
        raise ValueError(f"{name} is {value!r}; it must be an integer") from None
    if not least <= number <= greatest:
        raise ValueError(f"{name} is {number}; it must be {least} to {greatest}")
    return number


def checked_pair(name: str, values: Any, least: int) -> tuple[int, int]:
    try:
        first, second = values
    except (TypeError, ValueError):
        raise ValueError(f"{name} is {values!r}; it must be a pair of integers") from None
    return checked_integer(name, first, least, 2**31 - 8), checked_integer(name, second, least, 2**31 - 8)


def checked_frame(frame: RawFrame, name: str = "frame") -> npt.NDArray[np.uint16]:
    """The frame, or frames, as 16-bit pixels; a copy only of 8-bit ones."""
    if not isinstance(frame, np.ndarray):
        raise ValueError(f"{name} is no array; convert it with numpy.asarray({name}, numpy.uint16)")
    if frame.ndim not in (2, 3):
        raise ValueError(f"{name} has the shape {frame.shape}; it must be (height, width) or (frames, height, width)")
    if min(frame.shape[-2:]) < 2:
        raise ValueError(f"{name} has the shape {frame.shape}; a mosaic has at least 2 x 2 pixels")
    if max(frame.shape[-2:]) >= 2**31:
        raise ValueError(f"{name} has the shape {frame.shape}; a side must be below 2^31")
    if frame.dtype == np.uint8:
        return np.ascontiguousarray(frame).astype(np.uint16)
    if frame.dtype.kind == "u" and frame.dtype.itemsize == 2 and not frame.dtype.isnative:
        raise ValueError(f"{name} has the other byte order; convert it with {name}.astype(numpy.uint16)")
    if frame.dtype != np.uint16:
        raise ValueError(
            f"{name} has the type {frame.dtype}, but raw frames are unsigned integers of 16 or 8 bits; "
            f"if its values are whole numbers from 0 to 65535, convert it with {name}.astype(numpy.uint16)"
        )
    if not frame.flags.c_contiguous:
        raise ValueError(
            f"{name} is not contiguous, as parts and transposed arrays are not; "
            f"convert it with numpy.ascontiguousarray({name})"
        )
    if not frame.flags.aligned:
        raise ValueError(f"{name} is not aligned to its elements; convert it with {name}.copy()")
    return frame  # type: ignore[return-value,unused-ignore]


def depth_of(frame: npt.NDArray[Any], bit_depth: int) -> int:
    """Arrays of bytes are taken as 8 bits."""
    return 8 if frame.dtype == np.uint8 else bit_depth


def checked_output(
    name: str, array: Any, shape: tuple[int, ...], dtype: npt.DTypeLike, frame: npt.NDArray[Any]
) -> None:
    """An array to write to."""
    wanted = np.dtype(dtype)
    if not isinstance(array, np.ndarray) or array.dtype != wanted or array.shape != shape:
        have = f"{array.dtype} {array.shape}" if isinstance(array, np.ndarray) else type(array).__name__
        raise ValueError(
            f"out[{name!r}] is {have}; it must be an array {wanted} {shape}: numpy.empty({shape}, '{wanted}')"
        )
    if not (array.flags.c_contiguous and array.flags.writeable and array.flags.aligned):
        raise ValueError(f"out[{name!r}] must be contiguous, aligned and writeable: numpy.empty({shape}, '{wanted}')")
    if np.may_share_memory(array, frame):
        raise ValueError(f"out[{name!r}] shares memory with the frame")


def frames_of(frame: npt.NDArray[np.uint16]) -> npt.NDArray[np.uint16]:
    """As (frames, height, width), without a copy."""
    return frame if frame.ndim == 3 else frame[np.newaxis]


def to_frame(pixels: npt.NDArray[np.uint16], layout: int, bit_depth: int, origin: tuple[int, int]) -> _library.Frame:
    """The structure of one frame; the array must outlive it."""
    height, width = pixels.shape
    return _library.Frame(pixels.ctypes.data, width, height, origin[0] % 4, origin[1] % 4, layout, bit_depth)
