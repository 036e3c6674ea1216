"""Measures what Dask's scheduler costs on this machine: frames a second by path and by array, and by frames for each task.

Usage: python measure.py [FRAMES] [WIDTH] [HEIGHT]; writes a recording of that many frames to a temporary folder."""

import json
import os
import pathlib
import sys
import tempfile
import time

import nerova_zel as nz
import numpy as np
from distributed import Client, LocalCluster
from recording_statistics import parts, statistics_of_part


def write_recording(path, frames, width, height):
    """Frames of noise in Mono12p."""
    bytes_of_frame = width * height * 3 // 2
    generator = np.random.default_rng(1)
    with open(path, "wb") as file:
        for _ in range(frames):
            file.write(generator.bytes(bytes_of_frame))
    about = {
        "format": "nerova-zel-recording",
        "version": 1,
        "pixel_format": "Mono12p",
        "width": width,
        "height": height,
        "origin": {"x": 0, "y": 0},
        "layout": 90,
        "frames": frames,
    }
    pathlib.Path(f"{path}.json").write_text(json.dumps(about))


def statistics_of_array(frames):
    return nz.statistics(frames, layout=90, bit_depth=12, weight="power")


def rate(frames, work):
    start = time.perf_counter()
    work()
    return frames / (time.perf_counter() - start)


def main():
    frames, width, height = (
        int(sys.argv[i]) if len(sys.argv) > i else default for i, default in ((1, 120), (2, 2448), (3, 2048))
    )
    with tempfile.TemporaryDirectory() as folder:
        path = str(pathlib.Path(folder) / "run.raw")
        write_recording(path, frames, width, height)
        statistics_of_part(path, 0, min(frames, 8))
        print(f"{frames} frames of {width} x {height}, Mono12p, {os.cpu_count()} cores, frames a second")
        print(f"one process, no scheduler: {rate(frames, lambda: statistics_of_part(path, 0, frames)):.1f}")

        def read():
            with open(path, "rb") as file:
                while file.read(1 << 24):
                    pass

        print(f"reading the file alone (from the system's cache): {rate(frames, read):.1f}")
        workers = os.cpu_count() or 1
        with LocalCluster(workers, threads_per_worker=1, processes=True, dashboard_address=None) as cluster:
            with Client(cluster) as client:

                def by_path(frames_per_task):
                    work = parts(frames, frames_per_task)
                    tasks = [client.submit(statistics_of_part, path, *part, pure=False) for part in work]
                    client.gather(tasks)

                def by_array():
                    recording = nz.open_recording(path)
                    tasks = [client.submit(statistics_of_array, frame, pure=False) for frame in recording]
                    client.gather(tasks)

                by_path(1)
                for frames_per_task in (1, 2, 4, 8, 16, 32):
                    print(
                        f"paths, {frames_per_task} frames for each task: {rate(frames, lambda n=frames_per_task: by_path(n)):.1f}"
                    )
                print(f"whole arrays: {rate(frames, by_array):.1f}")
                empty = 1000
                tasks = rate(empty, lambda: client.gather([client.submit(abs, n, pure=False) for n in range(empty)]))
                print(f"empty tasks a second: {tasks:.0f}")


if __name__ == "__main__":
    main()
