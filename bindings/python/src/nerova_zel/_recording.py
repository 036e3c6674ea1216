"""Raw files of many frames."""

from __future__ import annotations

import ctypes
import json
import os
import pathlib
from collections.abc import Sequence
from typing import Any, Union, overload

import numpy as np
import numpy.typing as npt

from . import _library
from ._arrays import checked_integer, checked_layout, checked_pair
from ._frames import format_bits, frame_bytes, unpack

_Path = Union[str, "os.PathLike[str]"]


class Recording(Sequence["npt.NDArray[np.uint16]"]):
    """Frames of a raw file, unpacked when they are asked for: a sequence of uint16 (H, W). A slice is a recording too.

    The file is mapped into memory and may be larger than it. May be pickled: the path is what is sent.
    """

    def __init__(
        self,
        path: _Path,
        size: tuple[int, int],
        pixel_format: str,
        *,
        layout: int | None = None,
        origin: tuple[int, int] = (0, 0),
        colour: str | None = None,
        bit_depth: int | None = None,
        metadata: dict[str, Any] | None = None,
        _frames: range | None = None,
    ) -> None:
        """
        :param path: of the raw file: frames without header or padding.
        :param size: (height, width).
        :param pixel_format: a name of `pixel_formats`.
        :param layout: polarizer angle of the sensor's top-left pixel, where it is known.
        :param origin: (x, y) of the frames' top-left pixel on the sensor.
        :param colour: the pattern of a colour camera, such as ``"RGGB"``; None for others.
        :param bit_depth: significant bits; those of the format if None.
        :param metadata: what else is known of the recording.
        """
        self.path = pathlib.Path(path)
        self.size = checked_pair("size", size, 2)
        self.pixel_format = pixel_format
        self.layout = None if layout is None else checked_layout(layout)
        self.origin = checked_pair("origin", origin, 0)
        self.bit_depth = (
            format_bits(pixel_format)[0] if bit_depth is None else checked_integer("bit_depth", bit_depth, 1, 16)
        )
        self.colour = colour
        self.metadata = {} if metadata is None else metadata
        self._frame_bytes = frame_bytes(self.size, pixel_format)
        frames, rest = divmod(self.path.stat().st_size, self._frame_bytes)
        if rest or not frames:
            raise ValueError(
                f"{self.path} holds {frames} frames of {self._frame_bytes} bytes and {rest} bytes more; "
                f"is it of {self.size[0]} x {self.size[1]} pixels of {pixel_format}?"
            )
        self._frames = range(frames) if _frames is None else _frames
        self._data: npt.NDArray[np.uint8] = np.memmap(self.path, np.uint8, "r").reshape(frames, self._frame_bytes)

    def __len__(self) -> int:
        return len(self._frames)

    @overload
    def __getitem__(self, index: int) -> npt.NDArray[np.uint16]: ...

    @overload
    def __getitem__(self, index: slice) -> Recording: ...

    def __getitem__(self, index: int | slice) -> npt.NDArray[np.uint16] | Recording:
        if isinstance(index, slice):
            return self._part(self._frames[index])
        return unpack(self._data[self._frames[index]], self.size, self.pixel_format)

    def read(self, *, out: npt.NDArray[np.uint16] | None = None, threads: int = 1) -> npt.NDArray[np.uint16]:
        """All frames as uint16 (N, H, W); of a slice, to read a part: ``recording[10:20].read()``."""
        if not self._frames:
            return np.empty((0, *self.size), np.uint16)
        if self._frames.step == 1:
            data = self._data[self._frames.start : self._frames.stop]
        else:
            data = self._data[list(self._frames)]
        return unpack(data, self.size, self.pixel_format, out=out, threads=threads)

    def _part(self, frames: range) -> Recording:
        return Recording(
            self.path,
            self.size,
            self.pixel_format,
            layout=self.layout,
            origin=self.origin,
            colour=self.colour,
            bit_depth=self.bit_depth,
            metadata=self.metadata,
            _frames=frames,
        )

    def __reduce__(self) -> tuple[Any, tuple[Any, ...]]:
        return _remade, (
            self.path,
            self.size,
            self.pixel_format,
            self.layout,
            self.origin,
            self.colour,
            self.bit_depth,
            self.metadata,
            self._frames,
        )

    def __repr__(self) -> str:
        return f"<Recording {self.path} {len(self)} frames {self.size[0]} x {self.size[1]} {self.pixel_format}>"


def _remade(
    path: pathlib.Path,
    size: tuple[int, int],
    pixel_format: str,
    layout: int | None,
    origin: tuple[int, int],
    colour: str | None,
    bit_depth: int,
    metadata: dict[str, Any],
    frames: range,
) -> Recording:
    return Recording(
        path,
        size,
        pixel_format,
        layout=layout,
        origin=origin,
        colour=colour,
        bit_depth=bit_depth,
        metadata=metadata,
        _frames=frames,
    )


def open_recording(path: _Path) -> Recording:
    """Opens a raw file with the JSON that describes it: ``run.raw`` and ``run.raw.json``; either path will do.

    The JSON says the pixel format, size, origin, layout, colour pattern and number of frames. All of it, also what the
    camera said beside, is the recording's `metadata`.

    :raises ValueError: the JSON describes no recording, or the file does not hold the frames.
    :raises OSError: one of the two cannot be read.
    """
    given = pathlib.Path(path)
    raw = given.with_suffix("") if given.suffix == ".json" else given
    about = raw.with_name(raw.name + ".json")
    text = about.read_bytes()
    found = _library.Recording()
    _library.call("nv_imaging_read_recording", text, len(text), os.fsencode(about), ctypes.byref(found))
    recording = Recording(
        raw,
        (found.height, found.width),
        found.pixel_format.decode(),
        layout=found.layout,
        origin=(found.origin_x, found.origin_y),
        colour=None if found.colour is None else found.colour.decode(),
        metadata=json.loads(text),
    )
    frames = checked_integer(f'"frames" in {about}', found.frames, 0, len(recording))
    return recording[:frames]
