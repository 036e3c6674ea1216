#!/usr/bin/env python3
"""Runs the raw-frame examples in folders of their own, with plugins beside the library and without, and compares their
images: those of all programs must be the same, bit for bit, also with those of another platform's build."""

import argparse
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

WIDTH, HEIGHT, BIT_DEPTH = 167, 121, 12
IMAGES = {"stokes.f32": 8, "power.u16": 2, "hv.u16": 2, "diagonal.u16": 2, "azimuth.u16": 2, "dolp.u16": 2}


def plugin_serves():
    """Whether this processor has what one of the plugins needs."""
    words = pathlib.Path("/proc/cpuinfo").read_text().split()
    return "avx2" in words and "fma" in words


def images_of(program, files, emulator, frame):
    """The six images that a program makes in an empty folder that holds it, the given files and a frame."""
    with tempfile.TemporaryDirectory() as folder:
        place = pathlib.Path(folder)
        (place / "frame.raw").write_bytes(frame)
        for file in (program, *files):
            shutil.copy(file, place)
        subprocess.run([*emulator, place / program.name, "frame.raw", str(WIDTH), str(HEIGHT), str(BIT_DEPTH), "1", "out"],
                       cwd=place, check=True, env=dict(os.environ, LD_LIBRARY_PATH=folder))
        images = {name: (place / f"out_{name}").read_bytes() for name in IMAGES}
    for name, size in IMAGES.items():
        assert len(images[name]) == size * WIDTH * HEIGHT, f"{program}: {name} has {len(images[name])} bytes"
    return images


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", type=pathlib.Path, nargs="+", required=True)
    parser.add_argument("--library", type=pathlib.Path, required=True)
    parser.add_argument("--plugins", type=pathlib.Path, nargs="+", required=True)
    parser.add_argument("--emulator", type=lambda text: text.split(";"), default=[], help="what runs the programs")
    parser.add_argument("--twin", type=pathlib.Path, help="a Linux build tree with the same programs")
    arguments = parser.parse_args()
    emulator = [part for part in arguments.emulator if part]

    pixels = random.Random(1)
    frame = b"".join(pixels.randint(1, 2**BIT_DEPTH - 1).to_bytes(2, "little") for _ in range(WIDTH * HEIGHT))
    different = 0
    routes = []
    for plugins in ([], arguments.plugins):
        files = [arguments.library, *plugins]
        made = {program: images_of(program, files, emulator, frame) for program in arguments.programs}
        if arguments.twin:
            program = arguments.twin / "tests" / "bin" / "raw_frame_loaded"
            twin_files = [arguments.twin / "lib" / "libnerova_zel_polarization_processor.so"]
            twin_files += [arguments.twin / "lib" / f"{plugin.stem}.so" for plugin in plugins]
            if not program.exists():
                sys.exit(f"{program} does not exist; build and test that preset first")
            made[program] = images_of(program, twin_files, [], frame)
        first, *others = made
        for other in others:
            for name in IMAGES:
                if made[first][name] != made[other][name]:
                    print(f"{name} of {other} differs from that of {first}, {len(plugins)} plugins", file=sys.stderr)
                    different += 1
        routes.append(made[first])
    if routes[0] == routes[1] and plugin_serves():
        sys.exit("the plugins beside the library change no image: they were not used")
    return 1 if different else 0


if __name__ == "__main__":
    sys.exit(main())
