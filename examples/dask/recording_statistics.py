"""Statistics and a few images of a long recording on many machines, by Dask's distributed scheduler.

Tasks get a path and frame numbers and return statistics; frames never pass through the scheduler. All machines must see
the recording and the folder of the images under the same paths. Usage:

    python recording_statistics.py RECORDING.raw [--scheduler ADDRESS] [--frames-per-task N] [--images FOLDER --every N]

Without an address, workers are started on this machine, one for each core.
"""

from __future__ import annotations

import argparse
import pathlib

import nerova_zel as nz
import numpy as np
from distributed import Client


def statistics_of_part(path: str, first: int, end: int, images: str | None = None, every: int = 0) -> nz.Statistics:
    """The statistics of frames `first` to `end` - 1; writes the degree of each `every`-th frame to the folder `images`."""
    recording = nz.open_recording(path)
    processor = nz.Processor(layout=recording.layout, bit_depth=recording.bit_depth)
    total = nz.Statistics()
    for number in range(first, end):
        frame = recording[number]
        total += nz.statistics(
            frame, layout=recording.layout, bit_depth=recording.bit_depth, origin=recording.origin, weight="power"
        )
        if images and number % every == 0:
            degree = processor.transform(frame, ("dolp",), recording.origin)["dolp"]
            np.save(pathlib.Path(images) / f"{number:08d}_dolp.npy", degree)
    return total


def parts(frames: int, frames_per_task: int) -> list[tuple[int, int]]:
    """The first frame of each task and the one behind its last."""
    return [(first, min(first + frames_per_task, frames)) for first in range(0, frames, frames_per_task)]


def statistics_of_recording(
    client: Client, path: str, frames_per_task: int = 100, images: str | None = None, every: int = 0
) -> nz.Statistics:
    """Of all frames. Parts are added in the order of the frames, so that the result has the same bits whoever computes
    them and however often: a task whose worker is lost is computed again by another one."""
    work = parts(len(nz.open_recording(path)), frames_per_task)
    tasks = [client.submit(statistics_of_part, path, first, end, images, every, pure=False) for first, end in work]
    return sum(client.gather(tasks), nz.Statistics())


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("recording")
    parser.add_argument("--scheduler", help="its address; workers on this machine if not given")
    parser.add_argument("--frames-per-task", type=int, default=100)
    parser.add_argument("--images", help="folder for the degree of some frames")
    parser.add_argument("--every", type=int, default=1000, help="frames between those")
    arguments = parser.parse_args()
    with Client(arguments.scheduler) if arguments.scheduler else Client(threads_per_worker=1) as client:
        print(
            statistics_of_recording(
                client, arguments.recording, arguments.frames_per_task, arguments.images, arguments.every
            )
        )


if __name__ == "__main__":
    main()
