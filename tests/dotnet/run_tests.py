#!/usr/bin/python3
"""Runs a program of tests of the class library for C# with Mono, compares the pictures it made with the tool's, runs the
example, and proves that the class library needs no type that .NET Standard 2.0 lacks."""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import numpy as np
from matplotlib import image


def run(*command, **options):
    print("+", *command, flush=True)
    return subprocess.run([str(word) for word in command], check=True, text=True, **options).stdout


def check_types(assembly):
    standard = next(pathlib.Path("/usr/lib/mono").glob("4.*-api/Facades/netstandard.dll"))
    known = set(re.findall(r"\.class extern forwarder (\S+)", run("ikdasm", standard, stdout=subprocess.PIPE)))
    used = set(re.findall(r"\[(?:mscorlib|System[^\]]*)\]([\w.`]+)", run("ikdasm", assembly, stdout=subprocess.PIPE)))
    assert "System.Runtime.InteropServices.SafeHandle" in used & known, "the lists cannot be read"
    assert not used - known, f"not in .NET Standard: {used - known}"


def check_pictures(place, tool):
    frame = ("frame.raw", "--raw", "615x301", "--pixel-format", "Mono12", "--layout", "90")
    for style in ("plain", "light", "dark", "composite"):
        run(tool, "transform", *frame, "--outputs", "azimuth-picture", "--azimuth-style", style, "--degree-max", "0.5",
            "--power-max", "0.8", "--output", style, cwd=place, stdout=subprocess.DEVNULL)
        (file,) = (place / style).glob("*.png")
        picture = np.rint(image.imread(file) * 255).astype(np.uint8)[..., :3]
        assert np.array_equal(np.fromfile(place / f"{style}.rgb", np.uint8).reshape(picture.shape), picture), style


def check_example(program, place, environment):
    said = run("mono", program, place / "own.ppm", env=environment, stdout=subprocess.PIPE)
    assert "mean degree 0." in said, said
    run("mono", program, place / "read.ppm", place / "frame.raw", "615", "301", "Mono12", "90", env=environment)
    with open(place / "read.ppm", "rb") as picture:
        assert picture.read(15) == b"P6\n615 301\n255\n" and len(picture.read()) == 3 * 615 * 301
    refused = subprocess.run(["mono", program, place / "x.ppm", place / "own.ppm", "615", "301", "Mono12", "90"],
                             env=environment, capture_output=True, text=True)
    assert refused.returncode == 1 and refused.stderr.startswith("FirstPicture: There are"), refused.stderr


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--folder", type=pathlib.Path, required=True, help="of the assemblies")
    parser.add_argument("--program", required=True)
    parser.add_argument("--libraries", type=pathlib.Path, required=True)
    parser.add_argument("--tool", type=pathlib.Path, required=True)
    parser.add_argument("--definitions", type=pathlib.Path, nargs="+", required=True)
    arguments = parser.parse_args()
    check_types(arguments.folder / "NerovaZel.dll")
    environment = {**os.environ, "LD_LIBRARY_PATH": str(arguments.libraries), "LC_ALL": "C.UTF-8"}
    with tempfile.TemporaryDirectory() as name:
        place = pathlib.Path(name)
        run("mono", "--debug", arguments.folder / arguments.program, place, arguments.tool, *arguments.definitions,
            env=environment)
        check_pictures(place, arguments.tool)
        check_example(arguments.folder / "FirstPicture.exe", place, environment)
    return 0


if __name__ == "__main__":
    sys.exit(main())
