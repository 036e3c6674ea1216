#!/usr/bin/python3
"""Builds the wheel from a built tree, installs it in a fresh environment and runs the tests there: with the packages of
the system, or with --newest with the newest NumPy, Dask, pytest, mypy and ruff from the package index."""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts" / "internal"))
from build_wheel import build_wheel  # noqa: E402

PACKAGE = ROOT / "bindings" / "python"
LIBRARIES_OF_TAG = 5


def run(*command, **options):
    print("+", *command, flush=True)
    subprocess.run([str(word) for word in command], check=True, **options)


def check_tag(wheel, environment):
    """The tag is that of the newest symbol of the C library, as another program finds it."""
    (folder,) = environment.glob("lib/python*/site-packages/nerova_zel/lib")
    libraries = sorted(folder.glob("*.so"))
    assert len(libraries) == LIBRARIES_OF_TAG, libraries
    needed = set()
    for library in libraries:
        symbols = subprocess.run(["objdump", "-T", library], check=True, capture_output=True, text=True).stdout
        needed |= {tuple(map(int, found)) for found in re.findall(r"GLIBC_(\d+)\.(\d+)", symbols)}
    major, minor = max(needed)
    assert f"py3-none-manylinux_{major}_{minor}_x86_64" in wheel.name, f"{wheel.name} needs glibc {major}.{minor}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, type=pathlib.Path, help="a built tree")
    parser.add_argument("--newest", action="store_true")
    arguments, more = parser.parse_known_args()
    with tempfile.TemporaryDirectory() as name:
        place = pathlib.Path(name)
        build = arguments.build.resolve()
        wheel = build_wheel(build, place)
        environment = place / "environment"
        run(sys.executable, "-m", "venv", *([] if arguments.newest else ["--system-site-packages"]), environment)
        python = environment / "bin" / "python"
        if arguments.newest:
            run(
                python,
                "-m",
                "pip",
                "install",
                "--quiet",
                "numpy",
                "distributed",
                "dask",
                "matplotlib",
                "pytest",
                "mypy",
                "ruff",
            )
        run(python, "-m", "pip", "install", "--quiet", "--no-index", "--no-deps", wheel)
        check_tag(wheel, environment)
        if arguments.newest:
            run(python, "-m", "mypy", "--strict", "--cache-dir", place / "mypy", "src", cwd=PACKAGE)
            for check in (["check"], ["format", "--check"]):
                run(
                    python,
                    "-m",
                    "ruff",
                    *check,
                    "--no-cache",
                    "bindings/python",
                    "tests/python",
                    "examples",
                    "benchmarks/peers/python_peers.py",
                    cwd=ROOT,
                )
        run(
            python,
            "-m",
            "pytest",
            "-q",
            "-p",
            "no:cacheprovider",
            ROOT / "tests" / "python",
            *more,
            cwd=place,
            env={
                **os.environ,
                "PYTHONDONTWRITEBYTECODE": "1",
                "NEROVA_REFERENCE": str(build / "tests" / "bin" / "reference_results"),
                "NEROVA_TOOL": str(build / "bin" / "nerova-polarize"),
            },
        )
    return 0


if __name__ == "__main__":
    sys.exit(main())
