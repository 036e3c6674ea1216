#!/usr/bin/python3
"""Builds the Python package's wheel from the libraries of a built tree, without network. Prints its path.

Usage: scripts/internal/build_wheel.py TREE FOLDER; run by the Python that has setuptools and wheel, Debian's."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]


def build_wheel(tree, folder):
    """A copy of the package is built, so that nothing is left of another build."""
    with tempfile.TemporaryDirectory() as name:
        copy = pathlib.Path(name) / "bindings" / "python"
        left = shutil.ignore_patterns("build", "*.egg-info", "__pycache__")
        shutil.copytree(ROOT / "bindings" / "python", copy, ignore=left)
        shutil.copytree(ROOT / "include", pathlib.Path(name) / "include")  # states the version
        shutil.copy(ROOT / "LICENSE", copy)
        windows = "mingw" in (pathlib.Path(tree) / "CMakeCache.txt").read_text()
        with (copy / "NOTICES").open("w") as notices:
            subprocess.run(
                [ROOT / "scripts" / "internal" / "notices", "wheel-windows" if windows else "wheel-linux"],
                check=True,
                stdout=notices,
            )
        # In the copy only: later releases of setuptools, which users may have, name this setting otherwise.
        project = copy / "pyproject.toml"
        section = "[tool.setuptools]\n"
        project.write_text(project.read_text().replace(section, section + 'license-files = ["LICENSE", "NOTICES"]\n'))
        made = pathlib.Path(name) / "made"
        command = [sys.executable, "-m", "pip", "wheel", "--quiet", "--no-build-isolation", "--no-deps", "--no-index"]
        environment = {**os.environ, "NEROVA_BUILD_TREE": str(pathlib.Path(tree).resolve())}
        subprocess.run([*command, "-w", str(made), str(copy)], check=True, env=environment)
        (wheel,) = made.glob("*.whl")
        return pathlib.Path(shutil.copy(wheel, folder))


if __name__ == "__main__":
    if len(sys.argv) != 3 or sys.argv[1] in ("-h", "--help"):
        sys.exit(__doc__)
    print(build_wheel(*sys.argv[1:]))
