#!/usr/bin/env python3
"""Runs the same commands by the program for Windows and by that for Linux, on the same frames, and compares all files.

What transform computes and the frames that simulate makes must be the same bytes; of the rest the largest difference is
printed, and must be small. Ends with 77 where there is no program for Linux."""

import argparse
import array
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

COMMANDS = [
    "simulate {0} --size 322x202 --bit-depth 12 --photons 5000 --truth truth",
    "simulate colour.png --size 128x96 --colour RGGB --bit-depth 12",
    "transform f.png -o png --outputs all,s0,s1,s2,angle",
    "transform f.png -o npy -f npy --outputs stokes,power,hv,diagonal,azimuth,dolp,s0,angle",
    "transform f.png -o superpixel -f npy --sampling superpixel --outputs stokes,azimuth,dolp",
    "transform f.png -o bilinear -f npy --sampling bilinear --outputs stokes,azimuth,dolp",
    "transform c.png -o colour --colour RGGB --outputs all,power-picture",
    "transform r.raw -o raw --raw 64x48 --pixel-format Mono12p -f npy --outputs stokes,dolp",
    "stats f.png --json",
    "info f.png c.png --json",
    *(f"simulate a{angle}.png --source-angle {angle} --size 64x64 --bit-depth 12 --angle-errors=1.2,-0.8,-1.5,0.6"
      for angle in (0, 30, 60, 90, 120, 150)),
    "calibrate --output camera.json "
    + " ".join(f"--frame {angle}:a{angle}.png" for angle in (0, 30, 60, 90, 120, 150)),
    # With the calibration that Linux found.
    "transform a30.png -o calibrated --calibration camera.json -f npy --outputs stokes,azimuth",
]


def numbers(document, place=""):
    """The numbers of a JSON document by their places."""
    if isinstance(document, dict):
        for key, value in document.items():
            yield from numbers(value, f"{place}.{key}")
    elif isinstance(document, list):
        for index, value in enumerate(document):
            yield from numbers(value, f"{place}[{index}]")
    elif isinstance(document, (int, float)):
        yield place, document


def largest_difference(texts):
    one, other = (dict(numbers(json.loads(text))) for text in texts)
    assert one.keys() == other.keys(), "other numbers are said"
    return max(abs(one[key] - other[key]) / max(1.0, abs(one[key])) for key in one)


def run(program, folder, command, out):
    environment = dict(os.environ, LC_ALL="C.UTF-8")
    done = subprocess.run(program + command.split(), cwd=folder, env=environment, capture_output=True, check=False)
    assert done.returncode == 0, (command, done.stderr.decode())
    (folder / out).write_bytes(done.stdout)


def settle(folder, names):
    """The same time for both systems' frames: outputs name it."""
    for name in names:
        os.utime(folder / name, (1_700_000_000, 1_700_000_000))


def near(file):
    """Whether a file holds results of the C library's functions, which may differ in their last digits."""
    return file.parts[0] in ("fit.json", "camera.png", "truth") or file.parts[0].startswith("said")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--windows", required=True)
    parser.add_argument("--emulator", required=True)
    parser.add_argument("--linux", required=True)
    arguments = parser.parse_args()
    if not pathlib.Path(arguments.linux).exists():
        print(f"{arguments.linux} is not built")
        sys.exit(77)
    name = "テスト_é.png"
    with tempfile.TemporaryDirectory() as place:
        folders = [pathlib.Path(place) / system for system in ("linux", "windows")]
        programs = [[arguments.linux], [*arguments.emulator.split(";"), arguments.windows]]
        for folder, program in zip(folders, programs):
            folder.mkdir()
            for at, command in enumerate(COMMANDS):
                run(program, folder, command.format(name), f"said{at}.json")
                if at == 1:
                    (folder / name).rename(folder / "f.png")
                    (folder / "colour.png").rename(folder / "c.png")
                    (folder / "r.raw").write_bytes(bytes(i * 37 % 251 for i in range(3 * 64 * 48 * 3 // 2)))
                if (folder / "camera.json").exists() and not (folder / "fit.json").exists():
                    (folder / "camera.json").rename(folder / "fit.json")
                    shutil.copy(folders[0] / "fit.json", folder / "camera.json")
                settle(folder, [path.name for path in folder.glob("[fcra]*.*")])
        files = sorted(path.relative_to(folders[0]) for path in folders[0].rglob("*") if path.is_file())
        assert files == sorted(path.relative_to(folders[1]) for path in folders[1].rglob("*") if path.is_file())
        differ = [file for file in files if (folders[0] / file).read_bytes() != (folders[1] / file).read_bytes()]
        unlike = []
        for file in differ:
            contents = [(folder / file).read_bytes() for folder in folders]
            # Of windows put together otherwise than the library does, the angle comes from each system's C library.
            if file.parts[0] in ("bilinear", "superpixel") and file.name.endswith(("_azimuth.npy", "_dolp.npy")):
                codes = [array.array("H", content[128:]) for content in contents]
                largest = max(abs(a - b) for a, b in zip(*codes))
                print(f"{file} differs by {largest} of 65535")
                unlike += [file] if largest > 1 else []
            elif file.suffix == ".json" and contents[0].startswith((b"{", b"[")):
                print(f"{file} differs by {largest_difference([content.decode() for content in contents]):.3g}")
            else:
                print(f"{file} differs")
                unlike += [file] if not near(file) else []
        print(f"{len(files) - len(differ)} of {len(files)} files are the same bytes")
        assert not unlike, unlike


if __name__ == "__main__":
    main()
