#!/usr/bin/env python3
"""The Python package beside what people use in its place, in one run on the same frames: polanalyser as pip installs it,
OpenCV with NumPy, and plain NumPy slices. Values are compared before anything is timed.

Needs the wheel, numpy, opencv-python-headless and polanalyser. Usage: python_peers.py [ROUNDS]

Everything runs on one thread. The package's arrays are used again (out=), as its documents advise; those of the peers
are new ones, as their functions give them. Plain slices make one value of each 2 x 2 pixels, so a quarter of the values of
all others."""

import os

os.environ["OMP_NUM_THREADS"] = os.environ["OPENBLAS_NUM_THREADS"] = "1"

import statistics
import sys
import time

import cv2
import nerova_zel as nz
import numpy as np
import numpy_opencv
import polanalyser

HEIGHT, WIDTH = 2048, 2448
PHASE = 2  # layout 90
QUARTER = "plain slices (a quarter)"


class Frame:
    """A frame with its packed bytes, and each peer's way from it to angle, degree and power."""

    def __init__(self, source_angle=None):
        self.pixels, _ = nz.simulate((HEIGHT, WIDTH), 90, 12, photons=10000, source_angle=source_angle)
        pairs = self.pixels.reshape(-1, 2).astype(np.uint32)
        both = pairs[:, 0] | pairs[:, 1] << 12
        self.packed = np.stack([both & 255, both >> 8 & 255, both >> 16], 1).astype(np.uint8).reshape(-1)
        self.processor = nz.Processor(layout=90, bit_depth=12)
        self.kept = {}

    # The package.

    def package(self, *outputs):
        self.kept[outputs] = self.processor.transform(self.pixels, outputs, out=self.kept.get(outputs))
        return self.kept[outputs]

    def package_unpacked(self):
        out = self.kept.setdefault("pixels", np.empty((HEIGHT, WIDTH), np.uint16))
        return nz.unpack(self.packed, (HEIGHT, WIDTH), "Mono12p", out=out)

    def package_statistics(self):
        found = nz.statistics(self.pixels, layout=90, bit_depth=12)
        return found.mean_angle % 180, found.mean_degree

    # OpenCV with NumPy: 16-bit images of every pixel.

    def opencv(self, bits):
        return numpy_opencv.six_images(self.pixels, PHASE, 12, 65535, bits)

    def opencv_statistics(self):
        pair = self.opencv(numpy_opencv.STOKES)["normalized_stokes"]
        degree, doubled = cv2.cartToPolar(pair[..., 0], pair[..., 1])
        lit = degree > 0
        cosines, sines = cv2.polarToCart(lit.astype(np.float32), doubled)
        return np.degrees(np.arctan2(sines.sum(dtype=float), cosines.sum(dtype=float))) / 2 % 180, np.minimum(
            degree, 1
        ).mean(dtype=float)

    # polanalyser: its own interpolation, floats of every pixel.

    def polanalyser_stokes(self):
        images = polanalyser.demosaicing(self.pixels, polanalyser.COLOR_PolarMono)
        return polanalyser.calcLinearStokes(images, np.radians([0, 45, 90, 135]))

    def polanalyser_angle(self):
        return np.degrees(polanalyser.cvtStokesToAoLP(self.polanalyser_stokes()))

    def polanalyser_degree(self):
        return polanalyser.cvtStokesToDoLP(self.polanalyser_stokes())

    def polanalyser_both(self):
        stokes = self.polanalyser_stokes()
        return np.degrees(polanalyser.cvtStokesToAoLP(stokes)), polanalyser.cvtStokesToDoLP(stokes)

    def polanalyser_statistics(self):
        stokes = self.polanalyser_stokes()
        doubled = 2 * polanalyser.cvtStokesToAoLP(stokes)
        lit = (stokes[..., 1] != 0) | (stokes[..., 2] != 0)
        angle = np.degrees(np.arctan2(np.sin(doubled[lit]).sum(), np.cos(doubled[lit]).sum())) / 2 % 180
        return angle, np.minimum(polanalyser.cvtStokesToDoLP(stokes), 1).mean()

    # Plain slices: one value of each 2 x 2 pixels.

    def slices(self):
        i90, i45 = self.pixels[0::2, 0::2].astype(np.float32), self.pixels[0::2, 1::2].astype(np.float32)
        i135, i0 = self.pixels[1::2, 0::2].astype(np.float32), self.pixels[1::2, 1::2].astype(np.float32)
        return (i0 + i45 + i90 + i135) / 2, i0 - i90, i45 - i135

    def slices_angle(self):
        _, s1, s2 = self.slices()
        return np.degrees(np.arctan2(s2, s1)) / 2 % 180

    def slices_degree(self):
        power, s1, s2 = self.slices()
        return np.hypot(s1, s2) / power

    def slices_both(self):
        power, s1, s2 = self.slices()
        return np.degrees(np.arctan2(s2, s1)) / 2 % 180, np.hypot(s1, s2) / power

    def slices_all(self):
        power, s1, s2 = self.slices()
        full = np.float32(65535 / 4095)
        angle = np.degrees(np.arctan2(s2, s1)) / 2 % 180
        images = (power * full, s1 * full, s2 * full, angle * (65535 / 180), np.hypot(s1, s2) / power * 65535)
        return np.stack([s1 / power, s2 / power], -1), *(
            np.clip(np.rint(i), 0, 65535).astype(np.uint16) for i in images
        )

    def slices_unpacked(self):
        first, middle, last = (self.packed[i::3].astype(np.uint16) for i in range(3))
        pixels = np.empty(HEIGHT * WIDTH, np.uint16)
        pixels[0::2] = first | (middle & 15) << 8
        pixels[1::2] = middle >> 4 | last << 4
        return pixels.reshape(HEIGHT, WIDTH)

    def slices_statistics(self):
        power, s1, s2 = self.slices()
        length = np.hypot(s1, s2)
        lit = length > 0
        sums = [(s[lit] / length[lit]).sum(dtype=float) for s in (s1, s2)]
        degree = np.minimum(length / power, 1).mean(dtype=float)
        return np.degrees(np.arctan2(sums[1], sums[0])) / 2 % 180, degree


def cases(frame):
    """What is compared: by name the package's way and those of the peers."""
    cv = numpy_opencv
    everything = nz.OUTPUTS[:6]
    return {
        "power": (lambda: frame.package("power"), {
            "OpenCV": lambda: frame.opencv(cv.POWER), QUARTER: lambda: frame.slices()[0]}),
        "azimuth": (lambda: frame.package("azimuth"), {
            "OpenCV": lambda: frame.opencv(cv.AZIMUTH), "polanalyser": frame.polanalyser_angle, QUARTER: frame.slices_angle}),
        "degree": (lambda: frame.package("dolp"), {
            "OpenCV": lambda: frame.opencv(cv.DEGREE), "polanalyser": frame.polanalyser_degree, QUARTER: frame.slices_degree}),
        "azimuth with degree": (lambda: frame.package("azimuth", "dolp"), {
            "OpenCV": lambda: frame.opencv(cv.AZIMUTH | cv.DEGREE), "polanalyser": frame.polanalyser_both,
            QUARTER: frame.slices_both}),
        "angle as floats with degree": (lambda: frame.package("angle", "dolp"), {
            "OpenCV": lambda: frame.opencv(cv.AZIMUTH | cv.DEGREE), "polanalyser": frame.polanalyser_both,
            QUARTER: frame.slices_both}),
        "all six": (lambda: frame.package(*everything), {
            "OpenCV": lambda: frame.opencv(63), QUARTER: frame.slices_all}),
        "unpacking Mono12p": (frame.package_unpacked, {"plain slices": frame.slices_unpacked}),
        "statistics": (frame.package_statistics, {
            "OpenCV": frame.opencv_statistics, "polanalyser": frame.polanalyser_statistics, QUARTER: frame.slices_statistics}),
    }  # fmt: skip


def axial(difference):
    return np.abs((difference + 90) % 180 - 90)


def check_agreement(frame):
    """Ends the program where a peer computes something else."""
    images = frame.processor.transform(frame.pixels, ("azimuth", "angle", "dolp", "power"))
    ours = (images["azimuth"] * (180 / 65535) - 90) % 180
    polarized = images["dolp"] > 6554
    faults = []

    def expect(name, found, limit):
        print(f"  {name}: {found:.4g}, allowed {limit}")
        if not found <= limit:
            faults.append(name)

    print("Largest differences from the package:")
    inside = np.s_[:-1, :-1]
    theirs = (frame.opencv(numpy_opencv.AZIMUTH)["azimuth"] * (180 / 65535) - 90) % 180
    expect("OpenCV, angle in degrees", axial(theirs - ours)[inside][polarized[inside]].max(), 0.2)
    degree = frame.opencv(numpy_opencv.DEGREE)["degree_of_linear_polarization"].astype(int)
    expect("OpenCV, degree", np.abs(degree - images["dolp"])[inside].max() / 65535, 0.0005)
    expect(
        "plain slices, angle in degrees", axial(frame.slices_angle() - ours[::2, ::2])[polarized[::2, ::2]].max(), 0.2
    )
    expect(
        "plain slices, degree",
        np.abs(np.minimum(frame.slices_degree(), 1) - images["dolp"][::2, ::2] / 65535).max(),
        0.0005,
    )
    # It interpolates: the same only where the light changes little.
    expect("polanalyser, angle, median", np.median(axial(frame.polanalyser_angle() - ours)[polarized]), 1.0)
    expect(
        "polanalyser, degree, median",
        np.median(np.abs(frame.polanalyser_degree() - images["dolp"] / 65535)[polarized]),
        0.01,
    )
    expect("unpacked pixels", np.count_nonzero(frame.slices_unpacked() != frame.package_unpacked()), 0)
    expect("unpacked pixels and the frame", np.count_nonzero(frame.package_unpacked() != frame.pixels), 0)
    # The scene as a whole has no direction; this light has one.
    even = Frame(source_angle=30)
    angle, degree = even.package_statistics()
    for name, (other, mean) in (
        ("OpenCV", even.opencv_statistics()),
        (QUARTER, even.slices_statistics()),
        ("polanalyser", even.polanalyser_statistics()),
    ):
        expect(f"{name}, mean angle", axial(other - angle), 0.1)
        expect(f"{name}, mean degree", abs(mean - degree), 0.005)
    if faults:
        sys.exit(f"no agreement: {', '.join(faults)}")


def main():
    rounds = int(sys.argv[1]) if len(sys.argv) > 1 else 5
    cv2.setNumThreads(1)
    frame = Frame()
    check_agreement(frame)
    print(
        f"\n{WIDTH} x {HEIGHT}, 12 bits, one thread, route {frame.processor.route}; milliseconds of a frame, the fastest of"
    )
    print(f"{rounds} interleaved rounds; in brackets the median of the rounds' ratios to the package")
    for name, (package, peers) in cases(frame).items():
        ways = {"package": package, **peers}
        times = {way: [] for way in ways}
        for _ in range(rounds + 1):
            for way, work in ways.items():
                start = time.perf_counter()
                work()
                times[way].append(1e3 * (time.perf_counter() - start))
        times = {way: values[1:] for way, values in times.items()}
        ratios = {way: statistics.median(b / a for a, b in zip(times["package"], times[way])) for way in peers}
        shown = [f"{way} {min(times[way]):.1f} [{ratios[way]:.1f}]" for way in peers]
        fastest = min(ratios[way] for way in peers if way != QUARTER)
        print(
            f"{name}: package {min(times['package']):.2f}; {', '.join(shown)}; fastest that makes the same: {fastest:.1f}"
        )


if __name__ == "__main__":
    main()
