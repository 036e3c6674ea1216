#!/usr/bin/python3
"""Checks that the peers compute the same six images as the library's routes, to rounding.

Usage: check_peers.py WORKER, the 64-bit nerova_frame_worker."""

import pathlib
import subprocess
import sys
import tempfile

import cv2
import numpy as np

import numpy_opencv

ALL_OUTPUTS = 63
BIT_DEPTH = 12
IMAGES = ("total_power", "horizontal_vertical", "diagonal", "azimuth", "degree_of_linear_polarization")
AZIMUTH_DEGREES = 0.16  # of the library's arctangent; the peers' are better
# The library divides by a reciprocal estimate good to this fraction.
ESTIMATE = 1.5 * 2**-12


class Worker:
    def __init__(self, program):
        self.process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def ask(self, request):
        self.process.stdin.write(request + "\n")
        self.process.stdin.flush()
        answer = self.process.stdout.readline().strip()
        if not answer or answer.startswith("error"):
            raise RuntimeError(f"{request}: {answer or 'no answer'}")
        return answer

    def images(self, route, width, height, phase, equal):
        with tempfile.TemporaryDirectory() as directory:
            self.ask(f"save {directory} {route} {width} {height} {phase} {ALL_OUTPUTS} {int(equal)} 0 1")
            place = pathlib.Path(directory)
            images = {name: np.fromfile(place / name, np.uint16).reshape(height, width) for name in ("input", *IMAGES)}
            images["normalized_stokes"] = np.fromfile(place / "normalized_stokes", np.float32).reshape(height, width, 2)
        return images


def comparable(route, height, width):
    """The pixels for which a route promises what a peer computes."""
    pixels = np.ones((height, width), bool)
    if width % 2 or height % 2:
        pixels[-1, -1] = False  # takes the matrix of another polarizer
    if route == "sse41":
        pixels[:, 3::4] = False  # takes a polarizer two columns to its left
    return pixels


def differences(route, ours, theirs, maximum):
    """What disagrees, in words, and the largest difference of azimuth in degrees."""
    estimates = ESTIMATE if route in ("sse2", "sse41") else 0  # of the built-in forms, for divisions by a constant
    relative = {"normalized_stokes": estimates + 3e-7, "total_power": 2 * estimates, "horizontal_vertical": estimates,
                "diagonal": estimates, "degree_of_linear_polarization": estimates + ESTIMATE}
    pixels = comparable(route, *ours["input"].shape)
    wrong = []
    if not np.allclose(ours["normalized_stokes"][pixels], theirs["normalized_stokes"][pixels],
                       rtol=relative["normalized_stokes"], atol=0, equal_nan=True):
        wrong.append("normalized_stokes")
    distance = {name: np.abs(ours[name].astype(int) - theirs[name])[pixels] for name in IMAGES}
    # -90 and +90 degrees are one direction.
    azimuth = np.minimum(distance["azimuth"], maximum - distance["azimuth"]).max()
    for name in IMAGES:
        largest = azimuth if name == "azimuth" else distance[name].max()
        allowed = AZIMUTH_DEGREES / 180 if name == "azimuth" else relative[name]
        if largest > allowed * maximum + 1:
            wrong.append(f"{name} by {largest} codes of {maximum}")
    return wrong, azimuth * 180 / maximum


def main():
    cv2.setNumThreads(1)
    worker = Worker(sys.argv[1])
    runnable = worker.ask("routes").split()
    routes = [route for route in ("sse2", "sse41", "avx2", "avx512") if route in runnable]
    peers = [peer for peer in ("plain", "opencv") if peer in runnable]
    failures = 0
    largest_azimuth = dict.fromkeys([*peers, "numpy"], 0.0)
    for width, height in ((640, 64), (641, 65), (1223, 1024)):
        for phase in range(4):
            for equal in (False, True):
                maximum = 2**BIT_DEPTH - 1 if equal else 65535
                ours = {route: worker.images(route, width, height, phase, equal) for route in routes}
                theirs = {peer: worker.images(peer, width, height, phase, equal) for peer in peers}
                frame = next(iter(ours.values()))["input"]
                theirs["numpy"] = numpy_opencv.six_images(frame, phase, BIT_DEPTH, maximum, ALL_OUTPUTS)
                for peer, images in theirs.items():
                    for route in routes:
                        wrong, azimuth = differences(route, ours[route], images, maximum)
                        largest_azimuth[peer] = max(largest_azimuth[peer], azimuth)
                        for what in wrong:
                            print(f"{width}x{height} phase {phase} maximum {maximum}: {peer} and {route}: {what}")
                            failures += 1
    for peer, degrees in largest_azimuth.items():
        print(f"{peer}: azimuth within {degrees:.3f} degrees")
    print(f"{failures} disagreements of {', '.join(theirs)} with {', '.join(routes)}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
