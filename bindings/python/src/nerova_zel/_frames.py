"""Bytes to frames, and colour frames to planes."""

from __future__ import annotations

import ctypes
from typing import Any

import numpy as np
import numpy.typing as npt

from ._arrays import RawFrame, checked_frame, checked_integer, checked_output, checked_pair, frames_of
from ._library import call


def pixel_formats() -> tuple[str, ...]:
    """The names of the pixel formats that `unpack` takes, such as ``"Mono12p"``: those of the pixel format naming
    convention (PFNC) of machine vision."""
    names: list[str] = []
    name = ctypes.c_char_p()
    while True:
        call("nv_imaging_pixel_format_name", len(names), ctypes.byref(name))
        if name.value is None:
            return tuple(names)
        names.append(name.value.decode())


def format_bits(pixel_format: str) -> tuple[int, int]:
    """The bit depth of a pixel format, and the bits that a pixel takes."""
    significant = ctypes.c_int32()
    storage = ctypes.c_int32()
    call("nv_imaging_pixel_format", pixel_format.encode(), ctypes.byref(significant), ctypes.byref(storage))
    return significant.value, storage.value


def frame_bytes(size: tuple[int, int], pixel_format: str) -> int:
    """The bytes of one frame of `size` (height, width)."""
    return (size[0] * size[1] * format_bits(pixel_format)[1] + 7) // 8


def unpack(
    data: Any,
    size: tuple[int, int],
    pixel_format: str,
    *,
    out: npt.NDArray[np.uint16] | None = None,
    threads: int = 1,
) -> npt.NDArray[np.uint16]:
    """Unpacks raw frames.

    :param data: bytes-like, also an array such as a ``numpy.memmap``: whole frames one after another, each from a byte
        boundary on, without padding. It must be contiguous.
    :param size: (height, width) in pixels.
    :param pixel_format: a name of `pixel_formats`.
    :param out: an array to fill and return, uint16 of the result's shape; saves the time to get new memory.
    :param threads: how many threads may work on it.
    :return: uint16, (height, width) for one frame; (frames, height, width) for more, or where `data` is an array of two
        dimensions, one row for each frame.
    :raises ValueError: an unknown format, or another number of bytes than of whole frames.
    """
    height, width = checked_pair("size", size, 1)
    one = frame_bytes((height, width), pixel_format)
    try:
        view = memoryview(data)
        stack = view.ndim == 2
        raw = np.frombuffer(view.cast("B"), np.uint8)
    except TypeError:
        raise ValueError(
            "data must be bytes-like and contiguous; convert an array with numpy.ascontiguousarray"
        ) from None
    frames, rest = divmod(raw.size, one)
    if rest or frames == 0:
        raise ValueError(
            f"data has {raw.size} bytes; a frame of {height} x {width} pixels of {pixel_format} takes {one}"
        )
    shape = (frames, height, width) if stack or frames > 1 else (height, width)
    if out is None:
        out = np.empty(shape, np.uint16)
    else:
        checked_output("pixels", out, shape, np.uint16, raw)
    count = checked_integer("threads", threads, 1, 1024)
    call(
        "nv_imaging_unpack",
        pixel_format.encode(),
        raw.ctypes.data,
        raw.size,
        height * width,
        frames,
        out.ctypes.data,
        count,
    )
    return out


def split_colours(frame: RawFrame, colour: str, *, out: npt.NDArray[np.uint16] | None = None) -> npt.NDArray[np.uint16]:
    """Takes frames of a colour polarization camera apart into one ordinary mosaic for each colour, whose layout is the
    frame's.

    :param frame: uint16 or uint8, (H, W) or (N, H, W), with H and W multiples of 4.
    :param colour: the colours of the cells of 2 x 2 pixels at the frame's top left: ``"RGGB"``, ``"GRBG"``, ``"GBRG"`` or
        ``"BGGR"``, in the order of rows.
    :param out: an array to fill and return, uint16 of the result's shape.
    :return: uint16, (2, 2, H / 2, W / 2) or (N, 2, 2, H / 2, W / 2): ``[0, 0]`` red, ``[0, 1]`` the green in the rows of
        red, ``[1, 0]`` the green in the rows of blue, ``[1, 1]`` blue, whatever the pattern.
    """
    pixels = checked_frame(frame)
    height, width = pixels.shape[-2:]
    if height % 4 or width % 4:
        raise ValueError(
            f"a colour frame is made of 4 x 4 pixels, but its shape is {pixels.shape}; "
            f"crop it with numpy.ascontiguousarray(frame[..., :{height // 4 * 4}, :{width // 4 * 4}])"
        )
    shape = (*pixels.shape[:-2], 2, 2, height // 2, width // 2)
    if out is None:
        out = np.empty(shape, np.uint16)
    else:
        checked_output("planes", out, shape, np.uint16, pixels)
    for one, planes in zip(frames_of(pixels), out.reshape(-1, 2, 2, height // 2, width // 2)):
        call("nv_imaging_split_colours", one.ctypes.data, width, height, colour.encode(), planes.ctypes.data)
    return out
