#!/usr/bin/python3
"""The six images by NumPy and OpenCV over whole arrays, as a user would write it, and a worker that times it: see
frame_worker.cpp for the requests. Debian's own Python has Debian's NumPy and OpenCV."""

import sys
import time

import cv2
import numpy as np

# Bits of a set of outputs.
STOKES, POWER, HORIZONTAL_VERTICAL, DIAGONAL, AZIMUTH, DEGREE = (1 << bit for bit in range(6))

# Degrees of the polarizers in the top-left super-pixel of each phase, row by row.
MOSAICS = [(0, 135, 45, 90), (45, 90, 0, 135), (90, 45, 135, 0), (135, 0, 90, 45)]

WARM_UP_SECONDS = 0.04
MEASURING_SECONDS = 0.06
FEWEST_BATCHES = 3


def separate(frame, phase):
    """For every pixel the sample under each polarizer in the neighbourhood to its right and below."""
    padded = cv2.copyMakeBorder(frame, 0, 1, 0, 1, cv2.BORDER_REFLECT_101).astype(np.float32)
    height, width = frame.shape
    samples = {}
    for place, degrees in enumerate(MOSAICS[phase]):
        row, column = divmod(place, 2)
        samples[degrees] = np.empty(frame.shape, np.float32)
        for y in range(2):
            for x in range(2):
                shifted = padded[y ^ row:, x ^ column:]
                samples[degrees][y::2, x::2] = shifted[y:height:2, x:width:2]
    return samples


def to_output(values, maximum):
    return np.clip(np.rint(values), 0, maximum).astype(np.uint16)


def six_images(frame, phase, bit_depth, maximum, outputs):
    """The wanted images by name."""
    samples = separate(frame, phase)
    s1 = samples[0] - samples[90]
    s2 = samples[45] - samples[135]
    power = (samples[0] + samples[45] + samples[90] + samples[135]) / 2
    gain = maximum / (2**bit_depth - 1)
    images = {}
    if outputs & STOKES:
        with np.errstate(invalid="ignore"):
            images["normalized_stokes"] = cv2.merge([s1 / power, s2 / power])
    if outputs & POWER:
        images["total_power"] = to_output(power * gain, maximum)
    if outputs & HORIZONTAL_VERTICAL:
        images["horizontal_vertical"] = to_output(s1 * gain, maximum)
    if outputs & DIAGONAL:
        images["diagonal"] = to_output(s2 * gain, maximum)
    if outputs & (AZIMUTH | DEGREE):
        polarized, angle = cv2.cartToPolar(s1, s2, angleInDegrees=True)
        if outputs & AZIMUTH:
            angle[angle > 180] -= 360
            images["azimuth"] = to_output((angle / 2 + 90) * (maximum / 180), maximum)
        if outputs & DEGREE:
            degree = np.divide(polarized, power, out=np.zeros_like(power), where=power > 0)
            images["degree_of_linear_polarization"] = to_output(degree * maximum, maximum)
    return images


def measure(case, frames):
    """Nanoseconds of one call, measured as in the other worker."""
    route, width, height, phase, outputs, equal_maximum, custom_matrices, repetitions = case.split()
    if route != "numpy" or custom_matrices != "0":
        raise ValueError(f"no such route: {route}")
    size = (int(height), int(width))
    if size not in frames:
        frames[size] = np.random.default_rng(1).integers(0, 4096, size, np.uint16)
    maximum = 4095 if equal_maximum == "1" else 65535

    def call():
        six_images(frames[size], int(phase), 12, maximum, int(outputs))

    end_of_warm_up = time.perf_counter() + WARM_UP_SECONDS
    call()
    while time.perf_counter() < end_of_warm_up:
        call()
    end = time.perf_counter() + MEASURING_SECONDS
    batches = []
    while len(batches) < FEWEST_BATCHES or time.perf_counter() < end:
        start = time.perf_counter_ns()
        for _ in range(int(repetitions)):
            call()
        batches.append(time.perf_counter_ns() - start)
    return min(batches) / int(repetitions)


def main():
    cv2.setNumThreads(1)
    frames = {}
    for request in sys.stdin:
        verb, _, case = request.strip().partition(" ")
        try:
            print("numpy" if verb == "routes" else measure(case, frames), flush=True)
        except ValueError as error:
            print("error", error, flush=True)


if __name__ == "__main__":
    main()
