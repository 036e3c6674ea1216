#!/usr/bin/python3
"""Times a batch from one raw file to .npy arrays: the tool, the same by NumPy and OpenCV, and only writing the bytes.

Usage: batch_throughput.py TOOL FOLDER [--frames N] [--outputs LIST] [--rounds N] [--jobs LIST] [--sync]

FOLDER gets a folder of its own in it, which is removed at the end: it should lie on the disk, or in the memory, that is
to be measured. Prints a table of medians over interleaved rounds, with the range."""

import argparse
import multiprocessing
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

import cv2
import numpy as np

sys.path.insert(0, str(pathlib.Path(__file__).parent / "peers"))
import numpy_opencv as peer  # noqa: E402

WIDTH, HEIGHT, BIT_DEPTH, MAXIMUM = 2448, 2048, 12, 65535
PIXELS = WIDTH * HEIGHT
PHASE = 2  # layout 90, the tool's default

# By the tool's names: the peer's bit and name, and the bytes of a pixel.
OUTPUTS = {
    "stokes": (peer.STOKES, "normalized_stokes", 8),
    "power": (peer.POWER, "total_power", 2),
    "hv": (peer.HORIZONTAL_VERTICAL, "horizontal_vertical", 2),
    "diagonal": (peer.DIAGONAL, "diagonal", 2),
    "azimuth": (peer.AZIMUTH, "azimuth", 2),
    "dolp": (peer.DEGREE, "degree_of_linear_polarization", 2),
}


def make_stream(tool, folder, frames):
    """A file of different frames: one simulated frame, moved by whole super-pixels."""
    first = folder / "first.raw"
    subprocess.run([tool, "simulate", first, "--size", f"{WIDTH}x{HEIGHT}", "--bit-depth", str(BIT_DEPTH), "--photons",
                    "10000"], check=True, stdout=subprocess.DEVNULL)
    frame = np.fromfile(first, "<u2").reshape(HEIGHT, WIDTH)
    stream = folder / "run.raw"
    with open(stream, "wb") as file:
        for number in range(frames):
            np.roll(frame, (2 * number, 4 * number), (0, 1)).tofile(file)
    return stream


def single_threaded():
    cv2.setNumThreads(1)


def peer_frame(stream, directory, outputs, number):
    frame = np.fromfile(stream, "<u2", PIXELS, offset=2 * PIXELS * number).reshape(HEIGHT, WIDTH)
    images = peer.six_images(frame, PHASE, BIT_DEPTH, MAXIMUM, sum(OUTPUTS[name][0] for name in outputs))
    for name in outputs:
        np.save(directory / f"run_{number:06}_{name}.npy", images[OUTPUTS[name][1]])


def write_frame(_, directory, outputs, number):
    for name in outputs:
        with open(directory / f"run_{number:06}_{name}.npy", "wb") as file:
            file.write(memoryview(CONTENT)[:PIXELS * OUTPUTS[name][2]])


CONTENT = np.random.default_rng(1).bytes(8 * PIXELS)  # what no disk can compress


def by_python(work, stream, directory, outputs, frames, jobs):
    with multiprocessing.Pool(jobs, single_threaded) as pool:
        pool.starmap(work, [(stream, directory, outputs, number) for number in range(frames)], chunksize=1)


def by_tool(tool, stream, directory, outputs, jobs):
    subprocess.run([tool, "transform", stream, "--raw", f"{WIDTH}x{HEIGHT}", "--pixel-format", "Mono12", "--outputs",
                    ",".join(outputs), "--format", "npy", "--output", directory, "--jobs", str(jobs)],
                   check=True, stdout=subprocess.DEVNULL)


def check_same(one, other, outputs):
    """Both compute the same images, but for the tool's approximations and samples without light or angle."""
    for name in outputs:
        ours, theirs = (np.load(directory / f"run_000001_{name}.npy").astype(float) for directory in (one, other))
        assert ours.shape == theirs.shape
        difference = np.abs(ours - theirs)
        if name == "azimuth":
            difference = np.minimum(difference, MAXIMUM - difference)
        allowed = 1e-3 if name == "stokes" else 70
        share = np.mean(difference > allowed)
        assert share < 1e-3, f"{name}: {share:.2%} of the pixels differ by more than {allowed}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("tool", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--frames", type=int, default=200)
    parser.add_argument("--outputs", default=",".join(OUTPUTS))
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--jobs", default=f"1,{os.cpu_count()}")
    parser.add_argument("--sync", action="store_true", help="count the time until everything is on the disk")
    arguments = parser.parse_args()
    outputs = arguments.outputs.split(",")
    folder = pathlib.Path(tempfile.mkdtemp(dir=arguments.folder))
    times = {}
    try:
        stream = make_stream(arguments.tool, folder, arguments.frames)
        kept = {}
        for _ in range(arguments.rounds):
            for jobs in map(int, arguments.jobs.split(",")):
                for name, run in (
                        ("tool", lambda to: by_tool(arguments.tool, stream, to, outputs, jobs)),
                        ("NumPy and OpenCV",
                         lambda to: by_python(peer_frame, stream, to, outputs, arguments.frames, jobs)),
                        ("writing alone",
                         lambda to: by_python(write_frame, stream, to, outputs, arguments.frames, jobs))):
                    directory = folder / "out"
                    directory.mkdir()
                    os.sync()
                    start = time.perf_counter()
                    run(directory)
                    if arguments.sync:
                        os.sync()
                    times.setdefault((name, jobs), []).append(time.perf_counter() - start)
                    if name not in kept:
                        kept[name] = folder / name
                        kept[name].mkdir()
                        for file in directory.glob("run_000001_*"):
                            shutil.copy(file, kept[name])
                    shutil.rmtree(directory)
        check_same(kept["tool"], kept["NumPy and OpenCV"], outputs)
    finally:
        shutil.rmtree(folder)

    written = arguments.frames * PIXELS * sum(OUTPUTS[name][2] for name in outputs) / 1e9
    print(f"{arguments.frames} frames of {WIDTH} x {HEIGHT}, Mono12, outputs {' '.join(outputs)}: "
          f"{arguments.frames * 2 * PIXELS / 1e9:.1f} GB read, {written:.1f} GB written\n")
    print("| | jobs | seconds | frames/s | GB/s written | ratio to the tool |\n|---|---:|---:|---:|---:|---:|")
    for (name, jobs), seconds in times.items():
        median = statistics.median(seconds)
        print(f"| {name} | {jobs} | {median:.2f} ({min(seconds):.2f}..{max(seconds):.2f}) | "
              f"{arguments.frames / median:.1f} | {written / median:.2f} | "
              f"{median / statistics.median(times['tool', jobs]):.2f} |")


if __name__ == "__main__":
    main()
