#!/usr/bin/env python3
"""Taking colour frames apart beside what users write: colour_planes.py PROGRAM

PROGRAM is nerova_colour_planes_benchmark. Needs NumPy and OpenCV; polanalyser is measured if it can be imported. Each
way runs in turns with the others, on one core, and the fastest of its rounds counts."""

import json
import subprocess
import sys
import time

import cv2
import numpy as np

try:
    import polanalyser
except ImportError:
    polanalyser = None

WIDTH, HEIGHT = 2448, 2048
ROUNDS = 5


def numpy_slices(frame):
    """Four mosaics of half the size."""
    planes = np.empty((4, HEIGHT // 2, WIDTH // 2), np.uint16)
    for cell in range(4):
        for y in range(2):
            for x in range(2):
                planes[cell, y::2, x::2] = frame[cell // 2 * 2 + y::4, cell % 2 * 2 + x::4]
    return planes


def opencv_colour_step(frame):
    """Three mosaics of the frame's size: each polarizer's Bayer frame of half the size demosaicked by itself."""
    mosaics = np.empty((HEIGHT, WIDTH, 3), np.uint16)
    for y in range(2):
        for x in range(2):
            mosaics[y::2, x::2] = cv2.cvtColor(np.ascontiguousarray(frame[y::2, x::2]), cv2.COLOR_BayerRGGB2BGR)
    return mosaics


def milliseconds(call):
    start = time.perf_counter()
    call()
    return 1e3 * (time.perf_counter() - start)


def native(program):
    """Milliseconds by the name of a benchmark."""
    command = [program, "--benchmark_format=json", "--benchmark_min_time=0.1"]
    report = json.loads(subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout)
    return {run["name"]: run["real_time"] / 1e6 for run in report["benchmarks"]}


def main():
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        print(__doc__)
        return 0 if "--help" in sys.argv else 2
    cv2.setNumThreads(1)
    frame = np.random.default_rng(1).integers(0, 4096, (HEIGHT, WIDTH), np.uint16)
    ways = {"NumPy slices": lambda: numpy_slices(frame), "OpenCV, colour step": lambda: opencv_colour_step(frame)}
    if polanalyser:
        ways["polanalyser demosaicing"] = lambda: polanalyser.demosaicing(frame, polanalyser.COLOR_PolarRGB)
    best = {}
    for _ in range(ROUNDS):
        times = native(sys.argv[1])
        times.update({name: milliseconds(way) for name, way in ways.items()})
        best = {name: min(value, best.get(name, value)) for name, value in times.items()}
    for name, value in best.items():
        print(f"{name:28} {value:8.2f} ms  {WIDTH * HEIGHT / value / 1e3:8.0f} Mpixel/s")
    return 0


if __name__ == "__main__":
    sys.exit(main())
