#!/usr/bin/env python3
"""Installs a build into an empty place, then builds and runs a consumer from it: once by its CMake package, once by
its pkg-config file."""

import argparse
import os
import pathlib
import subprocess
import sys
import tempfile


def run(command, **options):
    print("+", " ".join(map(str, command)), flush=True)
    return subprocess.run(command, check=True, text=True, **options)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, help="a built tree")
    parser.add_argument("--flags", default="", help="compiler flags of that build, such as -m32")
    arguments = parser.parse_args()
    source = pathlib.Path(__file__).resolve().parent

    with tempfile.TemporaryDirectory() as folder:
        place = pathlib.Path(folder)
        tree = place / "installed"
        run(["cmake", "--install", arguments.build, "--prefix", tree], stdout=subprocess.DEVNULL)
        libraries = next(tree.rglob("libnerova_zel_polarization_processor.so")).parent

        run(["cmake", "-G", "Ninja", "-S", source, "-B", place / "by-cmake", f"-DCMAKE_PREFIX_PATH={tree}",
             f"-DCMAKE_C_FLAGS={arguments.flags}"], stdout=subprocess.DEVNULL)
        run(["cmake", "--build", place / "by-cmake"], stdout=subprocess.DEVNULL)
        run([place / "by-cmake" / "consumer"])

        environment = dict(os.environ, PKG_CONFIG_PATH=str(libraries / "pkgconfig"))
        flags = run(["pkg-config", "--cflags", "--libs", "nerova_polarization_processor"], env=environment,
                    stdout=subprocess.PIPE).stdout.split()
        run(["cc", *arguments.flags.split(), source.parent.parent / "examples" / "first_frame.c", "-o", place / "by-pkg-config", *flags])
        run([place / "by-pkg-config"], env=dict(os.environ, LD_LIBRARY_PATH=str(libraries)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
