"""Images of polarization from the raw frames of polarization cameras, as NumPy arrays.

>>> import nerova_zel as nz
>>> frame, truth = nz.simulate((512, 612), layout=90, bit_depth=12)
>>> processor = nz.Processor(layout=90, bit_depth=12)
>>> images = processor.transform(frame, outputs=("angle", "dolp"))
>>> images["angle"].dtype, images["angle"].shape
(dtype('float32'), (512, 612))

Frames are uint16 (uint8 for 8 bits), (height, width) or (frames, height, width), contiguous and in native byte order.
Everything may be called from any number of threads; the interpreter lock is released while frames are computed.
"""

from ._arrays import RawFrame
from ._calibration import Calibration, ColourCalibration, Polarizer, calibrate
from ._colour import colour
from ._frames import pixel_formats, split_colours, unpack
from ._processor import OUTPUTS, Processor
from ._recording import Recording, open_recording
from ._simulation import simulate
from ._statistics import Statistics, statistics

__all__ = [
    "OUTPUTS",
    "Calibration",
    "ColourCalibration",
    "Polarizer",
    "Processor",
    "RawFrame",
    "Recording",
    "Statistics",
    "calibrate",
    "colour",
    "open_recording",
    "pixel_formats",
    "simulate",
    "split_colours",
    "statistics",
    "unpack",
]
